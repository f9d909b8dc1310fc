#include <bit>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <random>

#include "tests/files.h"
#include "tests/standin/every_field.h"
#include "tests/standin/scene_of.h"

namespace marrowfen::standin {
namespace {

TEST(SceneFile, EveryKeyIsRead) {
    const Scene scene = sceneOf(kEveryFieldText);
    EXPECT_EQ(scene, everyField());
    EXPECT_TRUE(std::signbit(scene.nodes.at(0).rotation[2]));  // which == doesn't see
}

TEST(SceneFile, TextOfASceneReadsBackToIt) {
    for (const char* members : {kEveryFieldText, R"("layers": [], "nodes": [])"}) {
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
    scene.nodes[0].polyhedron.vertices.assign(5, {0.1F, 1e30F, 16777216});
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
        [0.1, 1e+30, 16777216]
      ]
    }
  ]
}
)");
}

TEST(SceneFile, FloatsKeepTheirBits) {
    std::mt19937 random(1);
    std::vector<float> numbers = {-0.0F, FLT_MAX, FLT_TRUE_MIN, FLT_MIN, 16777216, 0.1F};
    while (numbers.size() < 60000) {
        const float number = std::bit_cast<float>(static_cast<uint32_t>(random()));
        if (std::isfinite(number)) numbers.push_back(number);
    }
    Scene scene;
    std::vector<Vec3>& points = scene.nodes.emplace_back().polyhedron.vertices;
    points.resize(numbers.size() / 3);
    std::memcpy(points.data(), numbers.data(), points.size() * sizeof(Vec3));
    const LoadResult again = parseScene(sceneText(scene), "again");
    ASSERT_TRUE(again.scene) << again.error;
    const std::vector<Vec3>& back = again.scene->nodes[0].polyhedron.vertices;
    ASSERT_EQ(back.size(), points.size());
    EXPECT_EQ(std::memcmp(back.data(), points.data(), points.size() * sizeof(Vec3)), 0);
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

// The worked example of the format's page.
TEST(SceneFile, ExampleOfTheDocumentationLoads) {
    const std::string page = test::readFile(MARROWFEN_SOURCE_DIR "/docs/scene-file.md");
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
