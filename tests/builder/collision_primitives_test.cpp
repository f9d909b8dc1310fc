#include "builder/collision_primitives.h"

#include <gtest/gtest.h>

#include <set>

#include "shape/drawn_triangles.h"

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

// Each edge of a face is that of one other face, the other way round.
TEST(CollisionPrimitives, AreClosed) {
    const Box box = {{-1, -1, -1}, {1, 1, 3}};
    for (const Mesh& mesh : {boxPrimitive(box), cylinderPrimitive(box, 2, 0.1F)}) {
        std::multiset<std::pair<uint32_t, uint32_t>> edges;
        for (const TriangleRun& run : trianglesOf(mesh)) {
            for (const auto& t : run.triangles) edges.insert({{t[0], t[1]}, {t[1], t[2]}, {t[2], t[0]}});
        }
        for (const auto& [a, b] : edges) EXPECT_EQ(edges.count({a, b}) * edges.count({b, a}), 1U) << a << " to " << b;
    }
}

}  // namespace
}  // namespace marrowfen
