#pragma once

#include <vector>

#include "mesh/cost_tree.h"
#include "mesh/face_table.h"
#include "mesh/list_pool.h"
#include "mesh/vertex_state.h"

namespace marrowfen {

// What is known of a mesh while it is decimated, for those that make many collapses at once. It belongs to another, and
// may change between their runs.
struct DecimationTables {
    std::vector<Site>& sites;  // per vertex
    FaceTable& faces;
    ListPool& lists;                   // per vertex: its neighbours and its faces
    std::vector<VertexState>& states;  // per vertex
    CostTree& costs;                   // per vertex
};

}  // namespace marrowfen
