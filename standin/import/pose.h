#pragma once

// Poses as the host scene holds them, from the matrices of a model: a rotation and a place, without scale.

#include <assimp/matrix4x4.h>
#include <assimp/quaternion.h>
#include <assimp/types.h>

#include <optional>

#include "standin/host/scene.h"

namespace marrowfen::standin {

// Products are made in double precision, so that a deep hierarchy comes out as exact as its numbers are.
using Matrix = aiMatrix4x4t<double>;
using Vector = aiVector3t<double>;

using Quaternion = aiQuaterniont<double>;

// A transform in parts: what it holds is scaled, then turned, then moved.
struct TransformParts {
    Vector scale = {1, 1, 1};
    Quaternion rotation;
    Vector location;
};

Matrix matrixOf(const TransformParts& parts);
// Of a mirrored matrix all three sizes are below 0.
TransformParts partsOf(const Matrix& matrix);

// None for a matrix that flattens space.
std::optional<Matrix> inverseOf(const Matrix& matrix);

bool isFinite(const Matrix& matrix);

// Lengths of the three axes: the scale.
Vector scaleOf(const Matrix& matrix);

// The pose of a node: its place, and the rotation nearest to its axes. Scale and shear are taken off, since a bone's
// keys hold none. A mirrored matrix is turned inside out first (all three axes reversed), in every pose alike, so that
// what hangs on the bone moves as it does in the model.
Matrix rigidPose(const Matrix& matrix);

Transform toTransform(const Matrix& matrix);
Vec3 locationOf(const Matrix& matrix);

// The angles (ax, ay, az) for which Ry(-ay) * Rz(-az) * Rx(-ax) is the matrix's rotation.
Vec3 anglesOf(const Matrix& rigid);

}  // namespace marrowfen::standin
