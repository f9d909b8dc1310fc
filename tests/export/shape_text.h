#pragma once

#include <string>

#include "shape/shape.h"

namespace marrowfen {

// One section of a shape as lines for a person to review: "names", "nodes", "objects", "detail levels", "meshes",
// "materials", "sequences" or "measures". Names stand where the shape holds their indices.
std::string shapeText(const Shape& shape, const std::string& section);

}  // namespace marrowfen
