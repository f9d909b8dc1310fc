#include "standin/import/pose.h"

#include <algorithm>
#include <array>
#include <cmath>

// The nearest rotation is the orthogonal factor of the polar decomposition, found by Newton's iteration: a matrix and
// its inverse transpose have the same factor, and their mean is closer to it than either.

namespace marrowfen::standin {

namespace {

// An axis shorter than this part of the longest one has no direction worth keeping.
constexpr double kFlatAxis = 1e-9;
// Below this cosine of the middle angle the outer two turn about the same axis (gimbal lock).
constexpr double kGimbalLock = 1e-6;
constexpr int kMostSteps = 60;

using Axes = std::array<Vector, 3>;  // the columns of a rotation and scale part

Axes axesOf(const Matrix& m) { return {Vector(m.a1, m.b1, m.c1), Vector(m.a2, m.b2, m.c2), Vector(m.a3, m.b3, m.c3)}; }

Vector cross(const Vector& a, const Vector& b) { return a ^ b; }

Vector anyPerpendicular(const Vector& v) {
    const Vector axis = std::fabs(v.x) < 0.6 * v.Length() ? Vector(1, 0, 0) : Vector(0, 1, 0);
    return cross(v, axis).Normalize();
}

// Unit axes, with axes of no length made perpendicular to the others. False when all three have none.
bool makeUnit(Axes& axes) {
    std::array<double, 3> lengths;
    double longest = 0;
    for (size_t k = 0; k < 3; ++k) {
        lengths[k] = axes[k].Length();
        longest = std::max(longest, lengths[k]);
    }
    if (!(longest > 0)) return false;
    std::array<bool, 3> flat;
    for (size_t k = 0; k < 3; ++k) {
        flat[k] = lengths[k] <= kFlatAxis * longest;
        if (!flat[k]) axes[k] /= lengths[k];
    }
    // The other two decide; where one of them is flat as well, any direction across the third will do.
    for (size_t k = 0; k < 3; ++k) {
        const size_t next = (k + 1) % 3, last = (k + 2) % 3;
        if (!flat[k]) continue;
        if (flat[next] && flat[last]) return false;
        if (flat[next] || flat[last]) {
            axes[k] = anyPerpendicular(axes[flat[next] ? last : next]);
        } else {
            axes[k] = cross(axes[next], axes[last]);
            if (axes[k].Length() <= kFlatAxis) return false;
            axes[k].Normalize();
        }
        flat[k] = false;
    }
    return true;
}

double volume(const Axes& axes) { return axes[0] * cross(axes[1], axes[2]); }

void makeOrthogonal(Axes& axes) {
    for (int step = 0; step < kMostSteps; ++step) {
        const double size = volume(axes);
        if (!(std::fabs(size) > 1e-12)) break;
        // The columns of the inverse transpose are the cross products over the volume.
        const Axes dual = {cross(axes[1], axes[2]) / size, cross(axes[2], axes[0]) / size,
                           cross(axes[0], axes[1]) / size};
        double moved = 0;  // squared
        for (size_t k = 0; k < 3; ++k) {
            const Vector mean = (axes[k] + dual[k]) * 0.5;
            moved = std::max(moved, (mean - axes[k]).SquareLength());
            axes[k] = mean;
        }
        if (moved < 1e-30) break;
    }
    // Whatever rounding or a degenerate shear left is straightened out.
    axes[0].Normalize();
    axes[1] = axes[1] - axes[0] * (axes[0] * axes[1]);
    if (axes[1].Length() <= kFlatAxis) axes[1] = anyPerpendicular(axes[0]);
    axes[1].Normalize();
    axes[2] = cross(axes[0], axes[1]);
}

}  // namespace

// Assimp's own constructor turns first and scales then.
Matrix matrixOf(const TransformParts& parts) {
    const aiMatrix3x3t<double> turn = parts.rotation.GetMatrix();
    const auto& [size, rotation, place] = parts;
    return {turn.a1 * size.x,
            turn.a2 * size.y,
            turn.a3 * size.z,
            place.x,
            turn.b1 * size.x,
            turn.b2 * size.y,
            turn.b3 * size.z,
            place.y,
            turn.c1 * size.x,
            turn.c2 * size.y,
            turn.c3 * size.z,
            place.z,
            0,
            0,
            0,
            1};
}

TransformParts partsOf(const Matrix& matrix) {
    TransformParts parts;
    matrix.Decompose(parts.scale, parts.rotation, parts.location);
    return parts;
}

std::optional<Matrix> inverseOf(const Matrix& matrix) {
    const double size = matrix.Determinant();
    if (size == 0 || !std::isfinite(size)) return std::nullopt;
    Matrix inverse = matrix;
    inverse.Inverse();
    if (!isFinite(inverse)) return std::nullopt;
    return inverse;
}

bool isFinite(const Matrix& matrix) {
    for (unsigned row = 0; row < 4; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            if (!std::isfinite(matrix[row][column])) return false;
        }
    }
    return true;
}

Vector scaleOf(const Matrix& matrix) {
    const Axes axes = axesOf(matrix);
    return {axes[0].Length(), axes[1].Length(), axes[2].Length()};
}

Matrix rigidPose(const Matrix& matrix) {
    Axes axes = axesOf(matrix);
    if (volume(axes) < 0) {
        for (Vector& axis : axes) axis = -axis;
    }
    if (makeUnit(axes)) {
        makeOrthogonal(axes);
    } else {
        axes = axesOf(Matrix());
    }
    return {axes[0].x, axes[1].x, axes[2].x, matrix.a4, axes[0].y, axes[1].y, axes[2].y, matrix.b4,
            axes[0].z, axes[1].z, axes[2].z, matrix.c4, 0,         0,         0,         1};
}

Transform toTransform(const Matrix& matrix) {
    Transform transform;
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            // Adding zero makes a negative zero positive.
            transform[row * 4 + column] = static_cast<float>(matrix[row][column]) + 0.0F;
        }
    }
    return transform;
}

Vec3 locationOf(const Matrix& matrix) {
    const Transform transform = toTransform(matrix);
    return {transform[3], transform[7], transform[11]};
}

Vec3 anglesOf(const Matrix& rigid) {
    // Written out, the product of the three rotations by x, y and z is
    //   [ ...                        ...          ...            ]
    //   [ sin z                      cos z cos x  -cos z sin x   ]
    //   [ -sin y cos z               ...          ...            ]
    // with cos y cos z in the first corner.
    const double middle = std::hypot(rigid.b2, rigid.b3);
    const double z = std::atan2(rigid.b1, middle);
    const bool locked = middle < kGimbalLock;
    const double x = locked ? 0 : std::atan2(-rigid.b3, rigid.b2);
    const double y = locked ? std::atan2(rigid.a3, rigid.c3) : std::atan2(-rigid.c1, rigid.a1);
    return {static_cast<float>(0 - x), static_cast<float>(0 - y), static_cast<float>(0 - z)};
}

}  // namespace marrowfen::standin
