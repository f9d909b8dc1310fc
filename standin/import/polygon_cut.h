#pragma once

#include <assimp/types.h>

#include <cstdint>
#include <vector>

namespace marrowfen::standin {

// Cuts a polygon into triangles that keep its side: always two fewer than it has corners, whatever its form. Concave
// ones are cut along diagonals within them. corners: indices into positions, which hold.
std::vector<uint32_t> cutPolygon(const std::vector<aiVector3D>& positions, const std::vector<uint32_t>& corners);

}  // namespace marrowfen::standin
