#include "builder/collision_primitives.h"

#include <gtest/gtest.h>

namespace marrowfen {
namespace {

TEST(CylinderPrimitive, HasAnEvenNumberOfSidesBetween4And64) {
    const struct {
        float detail;
        size_t sides;
    } cases[] = {{0.02F, 4}, {-1, 4}, {0.078F, 4}, {0.08F, 4}, {0.1F, 6}, {0.5F, 32}, {1, 64}, {1e30F, 64}};
    for (const auto& [detail, sides] : cases) {
        const Mesh mesh = cylinderPrimitive({{-1, -1, -1}, {1, 1, 3}}, 2, detail);
        EXPECT_EQ(mesh.vertexes.size(), 2 * sides + 2) << detail;
        EXPECT_EQ(mesh.primitives.size(), 3 * sides) << detail;
        EXPECT_EQ(mesh.faceCount(), static_cast<int32_t>(4 * sides)) << detail;
    }
}

// Each triangle, strips unrolled, has a side; true when it looks away from the middle.
std::vector<bool> looksOutward(const Mesh& mesh, const Point3& middle) {
    std::vector<bool> outward;
    for (const Primitive& p : mesh.primitives) {
        for (uint32_t e = 0; e + 2 < p.numElements; ++e) {
            const uint32_t* i = &mesh.indices[p.firstElement + e];
            const Point3 a = mesh.vertexes[i[0]];
            const Point3 b = mesh.vertexes[i[e % 2 == 0 ? 1 : 2]];
            const Point3 c = mesh.vertexes[i[e % 2 == 0 ? 2 : 1]];
            outward.push_back(dot(cross(c - a, b - a), a - middle) > 0);
        }
    }
    return outward;
}

TEST(CollisionPrimitives, LookOutward) {
    const Box box = {{2, 3, 4}, {4, 9, 5}};
    const Point3 middle = {3, 6, 4.5F};
    EXPECT_EQ(looksOutward(boxPrimitive(box), middle), std::vector<bool>(12, true));
    EXPECT_EQ(looksOutward(cylinderPrimitive(box, 3, 0.2F), middle), std::vector<bool>(48, true));
}

}  // namespace
}  // namespace marrowfen
