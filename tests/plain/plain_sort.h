#pragma once

#include "mesh/mesh.h"

namespace marrowfen::plain {

// Mesh::sort of a mesh of one frame, with four sets of faces for each face of each node, as the method is defined. Same
// result in quadratic time and memory. Trusts the primitives to be single triangles.
void sort(Mesh& mesh);

}  // namespace marrowfen::plain
