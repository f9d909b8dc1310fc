#pragma once

#include <cstdint>

#include "ground/math.h"

namespace marrowfen {

// Index of the entry of kNormalTable nearest to the normal's direction: the first one with the largest dot product.
// The zero vector and a normal that holds a NaN give 0.
uint8_t encodeNormal(const Point3& normal);

}  // namespace marrowfen
