#pragma once

#include "mesh/mesh.h"

namespace marrowfen::plain {

// Mesh::strip without an index: a faces x faces matrix and searches over all faces. Same result in quadratic time.
void strip(Mesh& mesh);

}  // namespace marrowfen::plain
