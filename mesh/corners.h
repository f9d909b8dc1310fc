#pragma once

#include <array>
#include <cstdint>

namespace marrowfen {

using Corners = std::array<uint32_t, 3>;  // vertex numbers of a face in winding order

inline bool hasCorner(const Corners& face, uint32_t vertex) {
    return (face[0] == vertex) + (face[1] == vertex) + (face[2] == vertex) != 0;  // without branches
}

}  // namespace marrowfen
