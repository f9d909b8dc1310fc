#pragma once

// Points, boxes, quaternions and matrices. All arithmetic is 32-bit float in the order written, so that every platform
// gives the same bits. Frames are right-handed with Z up.

#include <cmath>
#include <cstdint>

namespace marrowfen {

struct Point3 {
    float x = 0, y = 0, z = 0;
};

struct Point2D {
    float x = 0, y = 0;
};

struct Box {
    Point3 min, max;
};

// x, y, z, w with the identity (0, 0, 0, 1). rotate() gives the rule by which one turns a point.
struct Quaternion {
    float x = 0, y = 0, z = 0, w = 1;
};

// Stored row by row; the translation is the fourth column of the first three rows.
struct Matrix44 {
    float m[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
};

// The whole part of value, or the nearest end of the 32-bit range; 0 for a value that isn't a number. (A plain cast
// of such values is undefined and differs between processors.)
inline int32_t truncatedToInt32(float value) {
    if (value != value) return 0;
    if (value >= 2147483648.0F) return INT32_MAX;
    if (value <= -2147483648.0F) return INT32_MIN;
    return static_cast<int32_t>(value);
}

inline bool operator==(const Point3& a, const Point3& b) { return a.x == b.x && a.y == b.y && a.z == b.z; }
inline bool operator==(const Point2D& a, const Point2D& b) { return a.x == b.x && a.y == b.y; }

inline Point3 operator+(const Point3& a, const Point3& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Point3 operator-(const Point3& a, const Point3& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline Point3 operator-(const Point3& a) { return {-a.x, -a.y, -a.z}; }
inline Point3 operator*(const Point3& a, float s) { return {a.x * s, a.y * s, a.z * s}; }
inline Point2D operator+(const Point2D& a, const Point2D& b) { return {a.x + b.x, a.y + b.y}; }
inline Point2D operator-(const Point2D& a, const Point2D& b) { return {a.x - b.x, a.y - b.y}; }
inline Point2D operator*(const Point2D& a, float s) { return {a.x * s, a.y * s}; }

inline float dot(const Point3& a, const Point3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

inline Point3 cross(const Point3& a, const Point3& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

inline bool isFinite(const Point3& a) { return std::isfinite(a.x) && std::isfinite(a.y) && std::isfinite(a.z); }

inline float squaredLength(const Point3& a) { return dot(a, a); }
inline float length(const Point3& a) { return std::sqrt(squaredLength(a)); }

// The unit vector along a, each component divided by the length; a vector of no length gives (0, 0, 0).
inline Point3 normalized(const Point3& a) {
    const float len = length(a);
    return len == 0 ? Point3{} : Point3{a.x / len, a.y / len, a.z / len};
}

// The Hamilton product.
inline Quaternion operator*(const Quaternion& a, const Quaternion& b) {
    return {a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y, a.w * b.y - a.x * b.z + a.y * b.w + a.z * b.x,
            a.w * b.z + a.x * b.y - a.y * b.x + a.z * b.w, a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z};
}

inline Quaternion conjugate(const Quaternion& q) { return {-q.x, -q.y, -q.z, q.w}; }

// The conjugate divided by the squared length.
inline Quaternion inverse(const Quaternion& q) {
    const float s = q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w;
    return {-q.x / s, -q.y / s, -q.z / s, q.w / s};
}

// v turned by q: conj(q) · (v, 0) · q. The conjugate stands on the left, so q is the inverse of the quaternion that
// the more common q · v · conj(q) would need for the same turn.
inline Point3 rotate(const Quaternion& q, const Point3& v) {
    const Quaternion r = conjugate(q) * Quaternion{v.x, v.y, v.z, 0} * q;
    return {r.x, r.y, r.z};
}

// The empty box that any point widens: min at 1e31 and max at -1e31 on every axis.
inline constexpr float kUnboundedExtent = 1e31F;
inline Box emptyBox() {
    return {{kUnboundedExtent, kUnboundedExtent, kUnboundedExtent},
            {-kUnboundedExtent, -kUnboundedExtent, -kUnboundedExtent}};
}

// Widens box so that it holds the other one; an empty other box widens nothing.
inline void widen(Box& box, const Box& other) {
    if (other.min.x < box.min.x) box.min.x = other.min.x;
    if (other.min.y < box.min.y) box.min.y = other.min.y;
    if (other.min.z < box.min.z) box.min.z = other.min.z;
    if (other.max.x > box.max.x) box.max.x = other.max.x;
    if (other.max.y > box.max.y) box.max.y = other.max.y;
    if (other.max.z > box.max.z) box.max.z = other.max.z;
}

// The point in the middle, halved from the maximum: 32-bit floats round differently from the other end.
inline Point3 boxCenter(const Box& box) {
    const auto& [min, max] = box;
    return {max.x + (min.x - max.x) / 2, max.y + (min.y - max.y) / 2, max.z + (min.z - max.z) / 2};
}

// Widens box so that it holds p. A coordinate that isn't a number widens nothing.
inline void widen(Box& box, const Point3& p) { widen(box, Box{p, p}); }

}  // namespace marrowfen
