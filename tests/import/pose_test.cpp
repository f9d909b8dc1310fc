#include "standin/import/pose.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace marrowfen::standin {
namespace {

// The rotation part that the host gives a node with these angles: Ry(-ay) * Rz(-az) * Rx(-ax).
Matrix hostRotation(const Vec3& angles) {
    Matrix x, y, z;
    Matrix::RotationX(-static_cast<double>(angles[0]), x);
    Matrix::RotationY(-static_cast<double>(angles[1]), y);
    Matrix::RotationZ(-static_cast<double>(angles[2]), z);
    return y * z * x;
}

double distance(const Matrix& a, const Matrix& b) {
    double most = 0;
    for (unsigned k = 0; k < 16; ++k) most = std::max(most, std::fabs(a[k / 4][k % 4] - b[k / 4][k % 4]));
    return most;
}

TEST(Pose, AnglesGiveTheRotationBack) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> angle(-3.2F, 3.2F);
    for (int i = 0; i < 300; ++i) {
        // Every third rotation is in gimbal lock, or next to it.
        const float quarter = std::acos(0.0F) * (i % 2 == 0 ? 1.0F : -1.0F);
        const Vec3 angles = {angle(random), angle(random), i % 3 == 0 ? quarter + (i % 4) * 1e-7F : angle(random)};
        const Matrix rotation = hostRotation(angles);
        EXPECT_LT(distance(hostRotation(anglesOf(rotation)), rotation), 2e-6) << i;
    }
}

TEST(Pose, ScaleAndMirrorsComeOff) {
    const Matrix turn = hostRotation({0.3F, -1.2F, 2});
    const Vector scales[] = {{2, 2, 2}, {1e-6, 5, 300}, {-1, -1, -1},         {-3, -3, -3},
                             {2, 3, 0}, {0, 4, 4},      {1e-30, 1e-30, 1e-30}};
    for (const Vector& scale : scales) {
        Matrix scaled = turn * Matrix(scale, aiQuaterniont<double>(), Vector());
        scaled.a4 = 7;
        const Matrix pose = rigidPose(scaled);
        EXPECT_EQ(pose.a4, 7);
        Matrix expected = turn;
        expected.a4 = 7;
        EXPECT_LT(distance(pose, expected), 1e-9) << scale.x << " " << scale.y << " " << scale.z;
    }
    // What has no direction left still gets a rotation, and so does a shear.
    for (const Matrix& odd : {Matrix(0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 1),
                              Matrix(1, 1, 1, 0, 1, 1, 1, 0, 1, 1, 1, 0, 0, 0, 0, 1),
                              Matrix(1, 0.5, 0, 0, 0, -1, 3, 0, 0, 0, 1, 0, 0, 0, 0, 1)}) {
        const Matrix pose = rigidPose(odd);
        Matrix transposed = pose;
        transposed.a4 = transposed.b4 = transposed.c4 = 0;
        const Matrix rotation = transposed;
        EXPECT_LT(distance(transposed.Transpose() * rotation, Matrix()), 1e-9);
        EXPECT_NEAR(rotation.Determinant(), 1, 1e-9);
    }
}

}  // namespace
}  // namespace marrowfen::standin
