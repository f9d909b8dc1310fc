#pragma once

// Vectors as these algorithms reckon with them, apart from ground/math.h, which they help to check: 32-bit floats in
// the order written.

#include <cmath>

#include "ground/math.h"

namespace marrowfen::plain {

inline float inner(const Point3& a, const Point3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline Point3 outer(const Point3& a, const Point3& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline float measure(const Point3& v) { return std::sqrt(inner(v, v)); }

// A vector of no length stays one.
inline Point3 unit(const Point3& v) {
    const float size = measure(v);
    return size == 0 ? Point3{0, 0, 0} : Point3{v.x / size, v.y / size, v.z / size};
}

}  // namespace marrowfen::plain
