#pragma once

// Poses from the host's transforms and angles.

#include "ground/math.h"

namespace marrowfen {

// 12 floats, three rows of four: the first three of a row are rotation and scale, the fourth its translation.
struct HostTransform {
    float m[3][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}};

    float* data() { return &m[0][0]; }
    const float* data() const { return &m[0][0]; }
};

HostTransform inverseTransform(const HostTransform& transform);

// parent-from-node of two scene-space transforms.
HostTransform relativeTransform(const HostTransform& sceneFromChild, const HostTransform& sceneFromParent);

Point3 translationFromTransform(const HostTransform& transform);

// The rotation as the quaternion that rotate() turns into it; always of unit length. A scaled or sheared transform
// gives the rotation of its orthogonalised axes, a mirrored one that of the axes turned back through the origin, and
// one without a rotation to speak of (singular, or not a number) the identity.
Quaternion rotationFromTransform(const HostTransform& transform);

// Angles in radians about x, y and z, turned about x, then z, then y.
Quaternion rotationFromEuler(const Point3& angles);

}  // namespace marrowfen
