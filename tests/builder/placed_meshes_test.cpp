// Where meshes come out, seen through the nodes that they hang on.

#include "tests/builder/build_scene.h"

namespace marrowfen {
namespace {

const Point3 kVertices[] = {{0, 0, 0}, {0, 2, 0}, {1, 0, 5}};

// A triangle of two bones in a row; first and second: the vertices that each holds.
Build triangleOn(const std::string& first, const std::string& second) {
    const auto joint = [](const std::string& vertices) {
        return R"({"type": "joint", "layer": 1, "tendon": {"hull": [)" + vertices + "]}}";
    };
    return Build(sceneOf(R"("layers": [null, "Detail:no_strip"], "nodes": [{"type": "polyhedron", "name": "hull",
        "layer": 1, "vertices": [[0,0,0],[0,2,0],[1,0,5]], "uvs": [[0.25, 0.1], [0.5, 1]],
        "faces": [{"corners": [[0,0],[1,0],[2,1]]}]},
        {"type": "skeleton", "layer": 1, "children": [{"type": "bone", "name": "a", "layer": 1, "location": [1, 2, 3],
         "rotation": [0.3, -1, 2], "children": [)" +
                         joint(first) + R"(, {"type": "bone", "name": "b", "layer": 1, "location": [-4, 0, 9],
         "rotation": [1, 0.5, -0.7], "children": [)" +
                         joint(second) + "]}]}]}]"));
}

Point3 placed(const Shape& shape, int32_t node, const Point3& v) {
    const Shape::Pose pose = shape.nodeWorldTransform(node);
    return rotate(pose.rotation, v) + pose.translation;
}

TEST(PlacedMeshes, OfOneBoneStandInItsSpace) {
    const Build build = triangleOn("", "0, 1, 2");
    const Mesh& mesh = build.shape->meshes.at(0);
    EXPECT_EQ(mesh.type, MeshType::Standard);
    for (size_t v = 0; v < 3; ++v) {
        EXPECT_LT(length(placed(*build.shape, build.shape->objects.at(0).node, mesh.vertexes[v]) - kVertices[v]),
                  1e-5F);
    }
    EXPECT_EQ(mesh.texturevertexes, (std::vector<Point2D>{{0.25F, 1 - 0.1F}, {0.25F, 1 - 0.1F}, {0.5F, 0}}));
}

TEST(PlacedMeshes, OfTwoBonesHaveTransformsIntoTheirSpaces) {
    const Build build = triangleOn("1", "0, 2");
    const Mesh& mesh = build.shape->meshes.at(0);
    EXPECT_EQ(mesh.type, MeshType::Skin);
    EXPECT_EQ(mesh.vindex, (std::vector<int32_t>{0, 1, 2}));
    EXPECT_EQ(mesh.vbone, (std::vector<int32_t>{0, 1, 0}));
    for (size_t v = 0; v < 3; ++v) {
        EXPECT_EQ(mesh.vertexes[v], kVertices[v]);
        const auto slot = static_cast<size_t>(mesh.vbone[v]);
        const auto& m = mesh.initialTransforms.at(slot).m;
        const auto row = [&](int r) { return dot({m[r][0], m[r][1], m[r][2]}, kVertices[v]) + m[r][3]; };
        const Point3 inBone = {row(0), row(1), row(2)};
        EXPECT_LT(length(placed(*build.shape, mesh.nodeIndex[slot], inBone) - kVertices[v]), 1e-5F) << v;
    }
}

}  // namespace
}  // namespace marrowfen
