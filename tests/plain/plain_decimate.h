#pragma once

#include "mesh/mesh.h"

namespace marrowfen::plain {

// Mesh::decimate without an index: a search over all vertices for each collapse. Same result, in time that grows with
// the number of collapses times the number of vertices.
void decimate(Mesh& mesh, int32_t percent);

}  // namespace marrowfen::plain
