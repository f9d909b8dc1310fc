#pragma once

#include <cstdint>
#include <vector>

#include "mesh/sort_faces.h"

namespace marrowfen {

// The members in an order in which neighbours stand in one part of a tree: in the same run of so many, a power of two,
// or of twice as many, and so on, runs that begin at multiples of their length. First come faces nearly as large as
// all together, the largest first: most planes cut them, and they would spoil the boxes of the others.
std::vector<uint32_t> neighborsTogether(const SortFaces& faces, const std::vector<uint32_t>& members, size_t runLength);

}  // namespace marrowfen
