// How large a layer may be: what counts is what is written.

#include "tests/builder/build_scene.h"

namespace marrowfen {
namespace {

using standin::Node;

// A sheet of quads in the xy plane, two triangles each.
Node sheet(int columns, int rows, int16_t layer) {
    Node node;
    node.layer = layer;
    for (int y = 0; y <= rows; ++y) {
        for (int x = 0; x <= columns; ++x) {
            node.polyhedron.vertices.push_back({static_cast<float>(x), static_cast<float>(y), 0});
        }
    }
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < columns; ++x) {
            const int v = y * (columns + 1) + x;
            node.polyhedron.faces.push_back({{{v, 0}, {v + columns + 1, 0}, {v + columns + 2, 0}, {v + 1, 0}}, 0});
        }
    }
    return node;
}

// Triangles that share no corner, and one more corner for each of extraCorners.
Node loose(int triangles, int extraCorners, int16_t layer) {
    Node node;
    node.layer = layer;
    node.polyhedron.vertices = {{0, 0, 0}, {0, 1, 0}, {1, 0, 0}};
    for (int t = 0; t < triangles; ++t) node.polyhedron.faces.push_back({{{0, t}, {1, t}, {2, t}}, 0});
    for (int t = 0; t < extraCorners; ++t) node.polyhedron.faces.push_back({{{0, 0}, {1, 0}, {2, triangles + t}}, 0});
    return node;
}

std::string errorOf(const std::vector<std::string>& layers, const std::vector<Node>& nodes) {
    standin::Scene scene;
    scene.layers = {std::nullopt};
    for (const std::string& layer : layers) scene.layers.emplace_back(layer);
    scene.nodes = nodes;
    return Build(scene).shape->error();
}

TEST(LayerLimits, Allow65535MergedVertices) {
    EXPECT_EQ(errorOf({"Detail:no_strip"}, {loose(21845, 0, 1)}), "");
    EXPECT_EQ(errorOf({"Detail:no_strip"}, {loose(21845, 1, 1)}),
              "Layer Detail:no_strip has 65536 vertices, a mesh holds at most 65535.");
    EXPECT_EQ(errorOf({"Detail", "collision hull"}, {sheet(1, 1, 1), loose(21845, 1, 2)}),
              "Layer collision hull has 65536 vertices, a mesh holds at most 65535.");
}

TEST(LayerLimits, CountIndicesAsTheyAreWritten) {
    const Node large = sheet(150, 150, 1);
    EXPECT_EQ(errorOf({"Detail:no_strip"}, {large}),
              "Layer Detail:no_strip has 135000 indices, a mesh holds at most 65535.");
    EXPECT_EQ(errorOf({"Detail"}, {large}), "");
    EXPECT_EQ(errorOf({"Detail:size=9", "far:autolod=20,no_strip"}, {large}), "");
    EXPECT_EQ(errorOf({"Detail:size=9", "far:autolod=90,no_strip"}, {large}),
              "Layer far:autolod=90,no_strip has 121500 indices, a mesh holds at most 65535.");
}

TEST(LayerLimits, Allow65535IndicesBeforeTheLastFace) {
    Node full = loose(21845, 0, 1);
    for (const char* error : {"", "Layer Detail:no_strip has 65541 indices, a mesh holds at most 65535."}) {
        full.polyhedron.faces.push_back(full.polyhedron.faces.front());
        EXPECT_EQ(errorOf({"Detail:no_strip"}, {full}), error);
    }
}

TEST(LayerLimits, CountCopies) {
    const auto layersWith = [](size_t copies) {
        std::vector<std::string> layers(copies + 1, "far:autolod=9");
        layers.front() = "Detail:size=9";
        return layers;
    };
    const Node large = loose(2800, 0, 1);
    EXPECT_EQ(errorOf(layersWith(256), {large}), "");
    EXPECT_EQ(errorOf(layersWith(257), {large}),
              "A shape holds at most 256 of 257 copies of a mesh with 8400 vertices.");
    EXPECT_EQ(errorOf(layersWith(300), {sheet(4, 4, 1)}), "");
}

}  // namespace
}  // namespace marrowfen
