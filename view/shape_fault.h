#pragma once

#include <string>

#include "shape/shape.h"

namespace marrowfen::view {

// The first thing that keeps a shape from being drawn, as one line ("mesh 2: index 7 names vertex 80 of 12"): a link
// out of range, nodes in a circle, key tables that are too short, more triangles than any file means. Empty for none.
std::string findFault(const Shape& shape);

}  // namespace marrowfen::view
