#pragma once

#include <string>

#include "shape/shape_check.h"

namespace marrowfen::view {

// What keeps a shape from being drawn, as one line: the first error of findProblems(), or more levels, bones,
// triangles or keys than glTF or a page can hold. Empty for nothing.
std::string findFault(const Shape& shape, ShapeFileKind kind = ShapeFileKind::Dts);

}  // namespace marrowfen::view
