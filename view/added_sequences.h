#pragma once

#include <string>
#include <vector>

#include "shape/shape.h"

namespace marrowfen::view {

// Appends the sequences of a shape that was read from a DSQ file, whose nodes are names and nothing else: each moves
// the nodes of the same name. Names that the shape hasn't got are warned of and left out. An error is one line; the
// shape is then unchanged.
std::string appendSequences(Shape& shape, const Shape& dsq, std::vector<std::string>& warnings);

}  // namespace marrowfen::view
