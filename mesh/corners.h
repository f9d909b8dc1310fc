#pragma once

#include <array>
#include <cstdint>

namespace marrowfen {

using Corners = std::array<uint32_t, 3>;  // vertex numbers of a face in winding order

// How many of the corners are at the vertex. (Without branches.)
inline uint32_t countCorners(const Corners& face, uint32_t vertex) {
    return uint32_t{face[0] == vertex} + uint32_t{face[1] == vertex} + uint32_t{face[2] == vertex};
}

inline bool hasCorner(const Corners& face, uint32_t vertex) { return countCorners(face, vertex) != 0; }

// The first of the corners that is at the vertex, where one is. (Without branches.)
inline uint32_t findCorner(const Corners& face, uint32_t vertex) {
    return uint32_t{face[0] != vertex} * (1 + uint32_t{face[1] != vertex});
}

inline bool hasRepeats(const Corners& c) { return c[0] == c[1] || c[1] == c[2] || c[2] == c[0]; }

}  // namespace marrowfen
