#include "host/transforms.h"

#include <cmath>

#include "host/tsxapi.h"

// A matrix becomes a quaternion by its trace, and near a half turn, where the trace says nothing, by its largest
// diagonal element (Shepperd, Quaternion from Rotation Matrix, Journal of Guidance and Control, 1978).

namespace marrowfen {

namespace {

// Four times w squared below which the trace formula loses its precision: a rotation beyond 174 degrees.
constexpr float kSmallestTrace = 0.01F;
// Deviation of the squared length from 1 up to which a quaternion, or an axis, is one of a rotation: above what the
// rounding of 32-bit floats leaves, and below half a step of the 16-bit components that files hold.
constexpr float kUnitTolerance = 1e-5F;

float squaredLength(const Quaternion& q) { return q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w; }

bool isUnit(float squared) { return std::fabs(squared - 1) < kUnitTolerance; }

bool isFinite(const Quaternion& q) {
    return std::isfinite(q.x) && std::isfinite(q.y) && std::isfinite(q.z) && std::isfinite(q.w);
}

Quaternion scaled(const Quaternion& q, float s) { return {q.x * s, q.y * s, q.z * s, q.w * s}; }

Point3 axis(const HostTransform& transform, int column) {
    return {transform.m[0][column], transform.m[1][column], transform.m[2][column]};
}

bool isRotation(const HostTransform& transform) {
    const Point3 x = axis(transform, 0), y = axis(transform, 1), z = axis(transform, 2);
    return isUnit(squaredLength(x)) && isUnit(squaredLength(y)) && isUnit(squaredLength(z)) &&
           std::fabs(dot(x, y)) < kUnitTolerance && std::fabs(dot(y, z)) < kUnitTolerance &&
           std::fabs(dot(z, x)) < kUnitTolerance && dot(cross(x, y), z) > 0;
}

// The quaternion of a rotation matrix I, by the branch that is precise for it.
Quaternion quaternionOf(const HostTransform& inverse) {
    const auto& I = inverse.m;
    const float trace = 1 + I[0][0] + I[1][1] + I[2][2];
    if (!(trace < kSmallestTrace)) {
        const float w = std::sqrt(trace * 0.25F);
        const float k = 0.25F / w;
        return {(I[2][1] - I[1][2]) * k, (I[0][2] - I[2][0]) * k, (I[1][0] - I[0][1]) * k, w};
    }
    if (I[0][0] >= I[1][1] && I[0][0] >= I[2][2]) {
        const float x = std::sqrt((1 + I[0][0] - I[1][1] - I[2][2]) * 0.25F);
        const float k = 0.25F / x;
        return {x, (I[0][1] + I[1][0]) * k, (I[0][2] + I[2][0]) * k, (I[2][1] - I[1][2]) * k};
    }
    if (I[1][1] >= I[2][2]) {
        const float y = std::sqrt((1 - I[0][0] + I[1][1] - I[2][2]) * 0.25F);
        const float k = 0.25F / y;
        return {(I[0][1] + I[1][0]) * k, y, (I[1][2] + I[2][1]) * k, (I[0][2] - I[2][0]) * k};
    }
    const float z = std::sqrt((1 - I[0][0] - I[1][1] + I[2][2]) * 0.25F);
    const float k = 0.25F / z;
    return {(I[0][2] + I[2][0]) * k, (I[1][2] + I[2][1]) * k, z, (I[1][0] - I[0][1]) * k};
}

// w stays positive, as the trace formula gives it.
Quaternion withPositiveW(const Quaternion& q) { return q.w < 0 ? scaled(q, -1) : q; }

// The transform with unit axes at right angles and the handedness of a rotation.
HostTransform withoutScale(const HostTransform& transform) {
    Point3 x = normalized(axis(transform, 0));
    Point3 y = axis(transform, 1);
    Point3 z = axis(transform, 2);
    if (dot(cross(x, y), z) < 0) {
        x = -x;
        y = -y;
        z = -z;
    }
    y = normalized(y - x * dot(x, y));
    z = cross(x, y);
    return {{{x.x, y.x, z.x, 0}, {x.y, y.y, z.y, 0}, {x.z, y.z, z.z, 0}}};
}

Quaternion aboutAxis(float x, float y, float z, float angle) {
    const double half = static_cast<double>(angle) / 2;
    const auto sine = static_cast<float>(std::sin(half));
    return {x * sine, y * sine, z * sine, static_cast<float>(std::cos(half))};
}

}  // namespace

HostTransform inverseTransform(const HostTransform& transform) {
    HostTransform inverse;
    tsxInvertMx3f(inverse.data(), transform.data());
    return inverse;
}

HostTransform relativeTransform(const HostTransform& sceneFromChild, const HostTransform& sceneFromParent) {
    const HostTransform parentFromScene = inverseTransform(sceneFromParent);
    HostTransform relative = sceneFromChild;
    tsxXProdMx3f(relative.data(), parentFromScene.data(), relative.data());
    return relative;
}

Point3 translationFromTransform(const HostTransform& transform) { return axis(transform, 3); }

Quaternion rotationFromTransform(const HostTransform& transform) {
    const HostTransform rotation = isRotation(transform) ? transform : withoutScale(transform);
    const Quaternion q = withPositiveW(quaternionOf(inverseTransform(rotation)));
    const float squared = squaredLength(q);
    if (!isFinite(q) || squared == 0) return {};
    return isUnit(squared) ? q : scaled(q, 1 / std::sqrt(squared));
}

Quaternion rotationFromEuler(const Point3& angles) {
    const Quaternion x = aboutAxis(1, 0, 0, angles.x);
    const Quaternion y = aboutAxis(0, 1, 0, angles.y);
    const Quaternion z = aboutAxis(0, 0, 1, angles.z);
    return (x * z) * y;
}

}  // namespace marrowfen
