#include "builder/collision_primitives.h"

#include <gtest/gtest.h>

namespace marrowfen {
namespace {

TEST(CylinderPrimitive, HasAnEvenNumberOfSidesBetween4And64) {
    const struct {
        float detail;
        size_t sides;
    } cases[] = {{0.02F, 4}, {-1, 4},      {0.078F, 4}, {0.08F, 4}, {0.1F, 6},
                 {0.5F, 32}, {0.985F, 62}, {1, 64},     {1e30F, 64}};
    for (const auto& [detail, sides] : cases) {
        const Mesh mesh = cylinderPrimitive({{-1, -1, -1}, {1, 1, 3}}, 2, detail);
        EXPECT_EQ(mesh.vertexes.size(), 2 * sides + 2) << detail;
        EXPECT_EQ(mesh.primitives.size(), 3 * sides) << detail;
        EXPECT_EQ(mesh.faceCount(), static_cast<int32_t>(4 * sides)) << detail;
    }
}

}  // namespace
}  // namespace marrowfen
