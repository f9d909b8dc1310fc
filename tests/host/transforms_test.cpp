#include "host/transforms.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

namespace marrowfen {
namespace {

constexpr double kPi = std::numbers::pi;

Point3 apply(const HostTransform& t, const Point3& v) {
    return {dot({t.m[0][0], t.m[0][1], t.m[0][2]}, v), dot({t.m[1][0], t.m[1][1], t.m[1][2]}, v),
            dot({t.m[2][0], t.m[2][1], t.m[2][2]}, v)};
}

HostTransform aboutAxis(const Point3& axis, double angle) {
    const double c = std::cos(angle), s = std::sin(angle);
    const double a[3] = {axis.x, axis.y, axis.z};
    HostTransform t;
    for (int r = 0; r < 3; ++r) {
        for (int k = 0; k < 3; ++k) {
            const double crossTerm = r == k ? 0 : ((k - r + 3) % 3 == 1 ? -1 : 1) * a[3 - r - k] * s;
            t.m[r][k] = static_cast<float>((r == k ? c : 0) + crossTerm + (1 - c) * a[r] * a[k]);
        }
    }
    return t;
}

// Directions all around the sphere, and those where a conversion changes its branch.
std::vector<Point3> axes() {
    std::vector<Point3> found = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {-1, 0, 0}, {0, -1, 0}, {0, 0, -1}};
    for (const Point3& diagonal :
         {Point3{1, 1, 0}, Point3{1, 0, -1}, Point3{0, 1, 1}, Point3{-1, 1, 1}, Point3{1, 1e-4F, 0}}) {
        found.push_back(normalized(diagonal));
    }
    constexpr int kPoints = 200;
    for (int i = 0; i < kPoints; ++i) {
        const double z = 1 - (2 * i + 1.0) / kPoints, r = std::sqrt(1 - z * z), turn = i * 2.399963;
        found.push_back(normalized(
            {static_cast<float>(r * std::cos(turn)), static_cast<float>(r * std::sin(turn)), static_cast<float>(z)}));
    }
    return found;
}

void expectRotates(const Quaternion& q, const HostTransform& rotation, const std::string& what) {
    const double squared = double{q.x} * q.x + double{q.y} * q.y + double{q.z} * q.z + double{q.w} * q.w;
    EXPECT_NEAR(squared, 1, 1.1e-5) << what;
    EXPECT_GE(q.w, 0) << what;
    for (const Point3& v : {Point3{1, 0, 0}, Point3{0, 1, 0}, Point3{0, 0, 1}, Point3{0.5F, -0.7F, 0.3F}}) {
        EXPECT_LT(length(rotate(q, v) - apply(rotation, v)), 2e-5F)
            << what << " of " << v.x << ' ' << v.y << ' ' << v.z;
    }
}

TEST(RotationFromTransform, TurnsPointsAsTheTransformDoes) {
    for (const Point3& axis : axes()) {
        for (const double angle : {0.0, 1e-4, 0.3, kPi / 2, 2.0, 3.03, 3.1, kPi - 1e-3, kPi - 1e-5, kPi, 1e-6 - kPi}) {
            const HostTransform rotation = aboutAxis(axis, angle);
            const std::string what = std::to_string(angle) + " about " + std::to_string(axis.x) + ' ' +
                                     std::to_string(axis.y) + ' ' + std::to_string(axis.z);
            expectRotates(rotationFromTransform(rotation), rotation, what);

            HostTransform scaled = rotation, mirrored = rotation, sheared = rotation;
            for (auto& row : scaled.m) row[0] *= 0.25F, row[1] *= 3, row[2] *= 70, row[3] = 9;
            for (auto& row : mirrored.m) row[0] = -row[0], row[1] = -row[1], row[2] = -row[2];
            expectRotates(rotationFromTransform(scaled), rotation, "scaled " + what);
            for (auto& row : sheared.m) row[1] = 0.8F * row[1] + 0.6F * row[0];
            expectRotates(rotationFromTransform(mirrored), rotation, "mirrored " + what);
            expectRotates(rotationFromTransform(sheared), rotation, "sheared " + what);
            for (int k = 0; k < 3; ++k) {
                HostTransform stretched = rotation;
                for (auto& row : stretched.m) row[k] *= 3;
                expectRotates(rotationFromTransform(stretched), rotation, "stretched " + what);
            }
        }
    }
}

TEST(TranslationFromTransform, IsItsLastColumn) {
    HostTransform t;
    for (int r = 0; r < 3; ++r) t.m[r][3] = static_cast<float>(r + 1);
    EXPECT_EQ(translationFromTransform(t), (Point3{1, 2, 3}));
}

// Of the two quaternions for it, the one with the positive component.
TEST(RotationFromTransform, OfHalfATurnLooksAlongItsAxis) {
    for (int axis = 0; axis < 3; ++axis) {
        HostTransform t;
        for (int k = 0; k < 3; ++k) t.m[k][k] = k == axis ? 1 : -1;
        const Quaternion q = rotationFromTransform(t);
        EXPECT_TRUE((Point3{q.x, q.y, q.z} == Point3{float(axis == 0), float(axis == 1), float(axis == 2)})) << axis;
        EXPECT_EQ(q.w, 0);
    }
}

TEST(RotationFromTransform, IsTheIdentityWhereThereIsNoRotation) {
    const float inf = std::numeric_limits<float>::infinity();
    for (const float diagonal : {0.0F, std::nanf(""), inf, -inf, std::numeric_limits<float>::denorm_min(), 1e38F}) {
        HostTransform t;
        for (int k = 0; k < 3; ++k) t.m[k][k] = diagonal;
        const Quaternion q = rotationFromTransform(t);
        EXPECT_TRUE(q.x == 0 && q.y == 0 && q.z == 0 && q.w == 1) << diagonal;
    }
}

TEST(RotationFromEuler, TurnsAboutXThenZThenYAgainstTheAngles) {
    const float values[] = {0, 0.4F, -1.3F, 2.9F, static_cast<float>(kPi)};
    for (const float ax : values) {
        for (const float ay : values) {
            for (const float az : values) {
                const Quaternion q = rotationFromEuler({ax, ay, az});
                for (const Point3& v : {Point3{1, 0, 0}, Point3{0, 1, 0}, Point3{0, 0, 1}}) {
                    const Point3 x = apply(aboutAxis({1, 0, 0}, -double{ax}), v);
                    const Point3 z = apply(aboutAxis({0, 0, 1}, -double{az}), x);
                    const Point3 d = rotate(q, v) - apply(aboutAxis({0, 1, 0}, -double{ay}), z);
                    EXPECT_LT(length(d), 1e-5F) << ax << ' ' << ay << ' ' << az;
                }
            }
        }
    }
}

}  // namespace
}  // namespace marrowfen
