#include <bit>
#include <cfloat>
#include <fstream>
#include <iterator>
#include <random>

#include "host/tsxapi.h"
#include "standin/host/host.h"
#include "tests/standin/scene_of.h"

namespace marrowfen::standin {
namespace {

// Every key of the format, with a value that isn't its default.
const char kEverything[] = R"(
  "host": {"major": 700, "minor": 2, "directory": "C:\\ts", "frameRate": 25, "playMode": 1, "activeTime": 0.5},
  "layers": [null, "Detail:size=64", null, "nodes"],
  "materials": {
    "wood": {"color": [1, 2, 3, 4], "texture": "D:\\wood.bmp", "reflection": [0.1, 0.2, 0.3, 0.4]},
    "plain": {},
    "glass": {"shader": {"name": "c_envr_map", "valid": false, "parameters": [
      {"name": "on", "type": "flag", "value": 1}, {"name": "mirror factor", "type": "float", "value": 0.4},
      {"name": "file name", "type": "text", "value": "sky"}, {"name": "odd", "type": 4, "value": {"a": [1.5, true]}},
      {"name": "bare", "type": 5}]}}},
  "nodes": [
    {"type": "polyhedron", "name": "hüll", "id": "hull", "layer": -3, "location": [1, 2, 3], "rotation": [0.1, 0, -0.0],
     "transform": [1,0,0,0, 0,1,0,0, 0,0,1,9], "axes": [4, 5, 6], "vertices": [[0,0,0],[1,0,0],[0,1e30,0],[0,0,1e-40]],
     "normals": [[0,0,1],[0,0,1],[0,0,1],[0,0,1]], "uvs": [[0.25, 0.1]], "materials": ["glass", null, "wood"],
     "faces": [{"corners": [[0,0],[1,0],[2,0],[3,0]], "material": 2}, {"corners": [[0,0],[1,0],[2,0]], "material": -7}],
     "vertexTransform": [2,0,0,0, 0,2,0,0, 0,0,2,0]},
    {"type": "skeleton", "name": "rig", "children": [
      {"type": "bone", "name": "b", "muscles": [{"joint": "j", "vertices": {"hull": [3, 0]}}], "children": [
        {"type": "joint", "name": "j", "tendon": {"hull": [1]}}]}, {"type": 999}, {"type": "ikgroup"}]}],
  "clips": [{"name": "walk:fps=12", "start": 1.5, "end": 9, "length": 7, "toggle": 1, "loop": 2, "enabled": false,
    "keys": {"j": [], "b": [{"frame": 1}, {"frame": 2.5, "location": [1,2,3], "rotation": [1,2,3],
             "transform": [1,0,0,0, 0,1,0,0, 0,0,1,0]}]}}])";

TEST(SceneFile, EveryKeyIsRead) {
    const Scene scene = sceneOf(kEverything);
    EXPECT_EQ(scene.host, (HostSettings{700, 2, "C:\\ts", 25, 1, 0.5F}));
    EXPECT_EQ(scene.layers, (std::vector<std::optional<std::string>>{{}, "Detail:size=64", {}, "nodes"}));

    ASSERT_EQ(scene.materials.size(), 3U);
    EXPECT_EQ(scene.materials[0].first, "wood");  // in the file's order, not the alphabet's
    EXPECT_EQ(scene.materials[0].second,
              (HostMaterial{{1, 2, 3, 4}, "D:\\wood.bmp", {0.1F, 0.2F, 0.3F, 0.4F}, std::nullopt}));
    EXPECT_EQ(scene.materials[1].second, HostMaterial{});
    const Shader glass{"c_envr_map",
                       false,
                       {{"on", 1, true},
                        {"mirror factor", 7, 0.4F},
                        {"file name", 9, "sky"},
                        {"odd", 4, R"({"a": [1.5, true]})"},
                        {"bare", 5, {}}}};
    EXPECT_EQ(scene.materials[2].second.shader, glass);

    ASSERT_EQ(scene.nodes.size(), 2U);
    const Node& hull = scene.nodes[0];
    EXPECT_EQ(std::tie(hull.type, hull.name, hull.id, hull.layer), std::tuple(201, "hüll", "hull", -3));
    EXPECT_EQ(hull.location, (Vec3{1, 2, 3}));
    EXPECT_TRUE(std::signbit(hull.rotation[2]));
    EXPECT_EQ(hull.transform->at(11), 9);
    EXPECT_EQ(hull.axes, (Vec3{4, 5, 6}));
    EXPECT_EQ(hull.polyhedron.vertices[3], (Vec3{0, 0, 1e-40F}));
    EXPECT_EQ(hull.polyhedron.normals->size(), 4U);
    EXPECT_EQ(hull.polyhedron.uvs, (std::vector<Vec2>{{0.25F, 0.1F}}));
    EXPECT_EQ(hull.polyhedron.faces[1], (Face{{{0, 0}, {1, 0}, {2, 0}}, -7}));
    EXPECT_EQ(hull.polyhedron.materials, (std::vector<std::optional<std::string>>{"glass", {}, "wood"}));
    EXPECT_EQ(hull.polyhedron.vertexTransform->at(0), 2);

    const Node& bone = scene.nodes[1].children[0];
    EXPECT_EQ(bone.muscles, (std::vector<Muscle>{{"j", {{"hull", {3, 0}}}}}));
    EXPECT_EQ(bone.children[0].tendon, (HeldVertices{{"hull", {1}}}));
    EXPECT_EQ(scene.nodes[1].children[1].type, 999);
    EXPECT_EQ(scene.nodes[1].children[2].type, 206);

    const Clip& walk = scene.clips.at(0);
    EXPECT_EQ(std::tie(walk.name, walk.start, walk.end, walk.toggle, walk.loop, walk.enabled),
              std::tuple("walk:fps=12", 1.5F, 9.0F, 1, 2, false));
    EXPECT_EQ(walk.length, 7);
    EXPECT_EQ(walk.keys[0].first, "j");
    EXPECT_EQ(walk.keys[1].second[0], (Key{1, {}, {}, {}}));
    EXPECT_EQ(walk.keys[1].second[1].rotation, (Vec3{1, 2, 3}));
}

TEST(SceneFile, TextOfASceneReadsBackToIt) {
    for (const char* members : {kEverything, R"("layers": [], "nodes": [])"}) {
        const Scene scene = sceneOf(members);
        const std::string text = sceneText(scene);
        const LoadResult again = parseScene(text, "again");
        ASSERT_TRUE(again.scene) << again.error << "\n" << text;
        EXPECT_EQ(*again.scene, scene);
        EXPECT_EQ(sceneText(*again.scene), text);  // negative zeros and map orders too, which == might not see
    }
}

TEST(SceneFile, TextLeavesDefaultsOutAndFillsLines) {
    Scene scene = sceneOf(R"("host": {"minor": 11}, "layers": [null, "a"], "materials": {"m": {"texture": ""}},
        "nodes": [{"type": "group", "layer": 0, "children": []}], "clips": [])");
    scene.nodes[0].type = 201;
    scene.nodes[0].polyhedron.vertices.assign(15, {0.1F, 1e30F, 16777216});
    EXPECT_EQ(sceneText(scene), R"({
  "format": "marrowfen-scene",
  "version": 1,
  "layers": [null, "a"],
  "materials": {"m": {}},
  "nodes": [
    {
      "type": "polyhedron",
      "vertices": [
        [0.1, 1e+30, 16777216], [0.1, 1e+30, 16777216], [0.1, 1e+30, 16777216], [0.1, 1e+30, 16777216],
        [0.1, 1e+30, 16777216], [0.1, 1e+30, 16777216], [0.1, 1e+30, 16777216], [0.1, 1e+30, 16777216],
        [0.1, 1e+30, 16777216], [0.1, 1e+30, 16777216], [0.1, 1e+30, 16777216], [0.1, 1e+30, 16777216],
        [0.1, 1e+30, 16777216], [0.1, 1e+30, 16777216], [0.1, 1e+30, 16777216]
      ]
    }
  ]
}
)");
}

TEST(SceneFile, FloatsKeepTheirBits) {
    Scene scene;
    std::mt19937 random(1);
    Node& node = scene.nodes.emplace_back();
    node.polyhedron.vertices = {{-0.0F, FLT_MAX, FLT_TRUE_MIN}, {FLT_MIN, 16777216, 0.1F}};
    while (node.polyhedron.vertices.size() < 20000) {
        Vec3 vertex;
        for (float& number : vertex) {
            do number = std::bit_cast<float>(static_cast<uint32_t>(random()));
            while (!std::isfinite(number));
        }
        node.polyhedron.vertices.push_back(vertex);
    }
    const LoadResult again = parseScene(sceneText(scene), "again");
    ASSERT_TRUE(again.scene) << again.error;
    for (size_t i = 0; i < node.polyhedron.vertices.size(); ++i) {
        using Bits = std::array<uint32_t, 3>;
        ASSERT_EQ(std::bit_cast<Bits>(again.scene->nodes[0].polyhedron.vertices[i]),
                  std::bit_cast<Bits>(node.polyhedron.vertices[i]));
    }
}

// Halfway between two floats but for its last digit: by way of a double it would be rounded twice, to the even one.
TEST(SceneFile, NumbersAreRoundedOnce) {
    const Scene scene = sceneOfNodes(R"({"type": "group", "location": [1.00000005960464477540, 0, 0]})");
    EXPECT_EQ(scene.nodes[0].location[0], 1.00000012F);
}

TEST(SceneFile, BytesThatAreNoTextAreReplaced) {
    Scene scene;
    scene.layers = {"caf\xe9", "tab\t\"\\"};
    const LoadResult again = parseScene(sceneText(scene), "again");
    ASSERT_TRUE(again.scene) << again.error;
    EXPECT_EQ(again.scene->layers[0], "caf\xef\xbf\xbd");
    EXPECT_EQ(again.scene->layers[1], scene.layers[1]);
}

// Whatever becomes of the text, it is an error of one line or a scene that a host can open and that reads back.
TEST(SceneFile, DamagedTextIsRefusedOrReadsBack) {
    const std::string text = sceneWith(kEverything);
    const std::string pieces[] = {"0", "-", "9", "1e39", ".5", "[", "]", "{", "}", ",", "null", "\"", "\\", "\xff"};
    std::mt19937 random(7);
    int accepted = 0;
    for (int i = 0; i < 1500; ++i) {
        std::string damaged = text;
        damaged.replace(random() % text.size(), random() % 3, pieces[random() % std::size(pieces)]);
        const LoadResult result = parseScene(damaged, "damaged");
        ASSERT_NE(result.scene.has_value(), !result.error.empty()) << damaged;
        ASSERT_EQ(result.error.find('\n'), std::string::npos) << result.error;
        if (!result.scene) continue;
        ++accepted;
        const LoadResult again = parseScene(sceneText(*result.scene), "again");
        ASSERT_TRUE(again.scene) << again.error << "\n" << damaged;
        ASSERT_EQ(*again.scene, *result.scene) << damaged;
        const Host host(*result.scene);
        tsxSobjDelete(tsxMNodeGetTriangulatedPolyhedron(tsxSceneGetFirstNode()));
        ASSERT_EQ(host.liveHandles(), 0);
    }
    EXPECT_GT(accepted, 75);
    EXPECT_LT(accepted, 1425);
}

// The worked example of the format's page.
TEST(SceneFile, ExampleOfTheDocumentationLoads) {
    std::ifstream file(MARROWFEN_SOURCE_DIR "/docs/scene-file.md");
    const std::string page{std::istreambuf_iterator<char>(file), {}};
    const size_t start = page.find("```json\n");
    ASSERT_NE(start, std::string::npos);
    const LoadResult result = parseScene(page.substr(start + 8, page.find("```", start + 8) - start - 8), "example");
    ASSERT_TRUE(result.scene) << result.error;
    EXPECT_EQ(result.scene->layers.size(), 3U);
    EXPECT_EQ(result.scene->nodes.size(), 3U);
    EXPECT_EQ(result.scene->clips.size(), 1U);
}

}  // namespace
}  // namespace marrowfen::standin
