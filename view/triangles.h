#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "mesh/mesh.h"

namespace marrowfen::view {

// Vertex numbers, counter-clockwise seen from the front, as glTF wants them (a shape's faces are clockwise).
using Triangle = std::array<uint32_t, 3>;

struct TriangleRun {
    int32_t material = -1;  // -1 for a run that has none
    std::vector<Triangle> triangles;
};

// The triangles that a mesh draws, one run a material in the order of first use. Strips and fans are unrolled,
// triangles with two corners at one vertex left out. A sorted mesh holds its faces once for each of its drawing orders;
// here every face stands once, in the order of the walk from its first cluster. The mesh has passed findFault.
std::vector<TriangleRun> trianglesOf(const Mesh& mesh);

}  // namespace marrowfen::view
