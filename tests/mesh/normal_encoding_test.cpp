#include "mesh/normal_encoding.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "mesh/normal_table.h"

namespace marrowfen {
namespace {

// The search as it is defined.
uint8_t scanned(const Point3& n) {
    float best = -1e31F;
    uint8_t index = 0;
    for (int i = 0; i < 256; ++i) {
        const float d = dot(n, kNormalTable[i]);
        if (d > best) {
            best = d;
            index = static_cast<uint8_t>(i);
        }
    }
    return index;
}

TEST(NormalEncoding, KnownNormals) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const struct {
        Point3 normal;
        int index;
    } cases[] = {
        {{0, 0, 1}, 108},       {{0, 0, 5}, 108},         {{1, 0, 0}, 84},
        {{0, 0, 0}, 0},         {{nan, 0, 1}, 0},         {kNormalTable[205], 64},  // stands in the table twice
        {kNormalTable[97], 22}, {kNormalTable[255], 255},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(encodeNormal(c.normal), c.index) << c.normal.x << ' ' << c.normal.y << ' ' << c.normal.z;
    }
}

// A mistyped value would hardly leave a unit vector; the sums hold for the whole table.
TEST(NormalEncoding, TableHoldsUnitVectors) {
    double x = 0, y = 0, z = 0;
    for (const Point3& n : kNormalTable) {
        EXPECT_NEAR(length(n), 1, 2e-5);
        x += n.x, y += n.y, z += n.z;
    }
    EXPECT_NEAR(x, 1.049723, 1e-4);
    EXPECT_NEAR(y, 0.061858, 1e-4);
    EXPECT_NEAR(z, 0.066841, 1e-4);
}

TEST(NormalEncoding, AgreesWithTheScan) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> unit(-1, 1);
    const float inf = std::numeric_limits<float>::infinity();
    const float odd[] = {0, -0.0F, 1, -1, 1e30F, -1e31F, 3e38F, -3e38F, 1e-45F, inf, -inf, inf - inf};
    for (int round = 0; round < 20000; ++round) {
        float n[3];
        for (float& c : n) c = round % 4 == 0 ? odd[random() % std::size(odd)] : unit(random);
        const Point3 normal{n[0], n[1], n[2]};
        ASSERT_EQ(encodeNormal(normal), scanned(normal)) << n[0] << ' ' << n[1] << ' ' << n[2];
    }
}

}  // namespace
}  // namespace marrowfen
