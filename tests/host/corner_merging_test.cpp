#include <random>

#include "host/poly_to_mesh.h"
#include "tests/builder/build_scene.h"
#include "tests/plain/plain_corners.h"

namespace marrowfen {
namespace {

// Random faces over few and over many vertices and texture coordinates, negative ones included.
TEST(CornerMerging, GivesTheNumbersOfALinearSearch) {
    std::mt19937 random(5);
    for (const unsigned range : {1U, 4U, 40U, 3000U}) {
        standin::Scene scene;
        scene.layers = {std::nullopt, "Detail:no_strip"};
        scene.nodes.resize(1);
        scene.nodes[0].layer = 1;
        scene.nodes[0].polyhedron.vertices.resize(range);
        std::vector<plain::Corner> corners;
        for (int f = 0; f < 500; ++f) {
            standin::Face face;
            for (int c = 0; c < 3; ++c) {
                const auto vertex = static_cast<int32_t>(random() % range);
                const int32_t uv = static_cast<int32_t>(random() % range) - 2;
                face.corners.push_back({vertex, uv});
                corners.emplace_back(vertex, uv);
            }
            scene.nodes[0].polyhedron.faces.push_back(face);
        }
        const Build build(scene);
        ASSERT_EQ(build.shape->error(), "");
        EXPECT_EQ(build.shape->meshes.front().indices, plain::mergedCorners(corners)) << range;
    }
}

}  // namespace
}  // namespace marrowfen
