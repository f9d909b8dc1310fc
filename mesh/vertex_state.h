#pragma once

#include <cstdint>

#include "mesh/collapse_finder.h"

namespace marrowfen {

// What is known of a vertex's cheapest collapse while a mesh is decimated, apart from its cost.
struct VertexState {
    uint32_t target = CollapseFinder::kNone;  // where it goes, kNone for nowhere
    uint32_t border = CollapseFinder::kNone;  // shared one face with the vertex when its cost was found, which made all
                                              // costs lengths; kNone for no such neighbour
    bool isBound = false;                     // the cost is only known to be no less
    uint32_t mark = 0;                        // relation to the vertex onto which another collapses, in that collapse
};

}  // namespace marrowfen
