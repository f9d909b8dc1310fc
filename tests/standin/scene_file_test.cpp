#include <bit>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <random>
#include <tuple>

#include "standin/host/json_document.h"
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

// Behind a byte order mark a text is the library's; both must take the same ones, and make the same values of them.
TEST(JsonText, PlainTextIsReadAsTheLibraryReadsIt) {
    std::vector<std::string> texts = {"",
                                      " ",
                                      "[]",
                                      " { } ",
                                      "[1,]",
                                      "[,1]",
                                      "[1 2]",
                                      "[1}",
                                      "{\"a\":1,}",
                                      "{\"a\" 1}",
                                      "{a:1}",
                                      "[[1],{\"b\":[]},2] ",
                                      "[] []",
                                      "[true,false,null]",
                                      "[tru]",
                                      "nullx",
                                      R"("a\u00e9\n")",
                                      R"("a\x")",
                                      "\"\xC3\xA4\"",
                                      "\"\xC3\"",
                                      "\"a\nb\"",
                                      "\"a",
                                      R"({"k":{"k":1,"j":2},"k":"k","":[{"":0}]})",
                                      R"(["\"","\\"])",
                                      std::string("[1]\0[", 5),
                                      std::string("\"\0\"", 3),
                                      std::string(5000, '['),
                                      std::string(4096, '[') + std::string(4096, ']')};
    for (const char* number : {"0",
                               "-0",
                               "00",
                               "01",
                               "-",
                               "+1",
                               ".5",
                               "1.",
                               "1.e5",
                               "1e",
                               "1e+",
                               "1E5",
                               "-1.50e-3",
                               "0.1",
                               "-0.0",
                               "16777217",
                               "16777217.000000001",
                               "16777217.0",
                               "123456789012345678",
                               "1234567890123456789",
                               "18446744073709551616",
                               "9007199254740993.0",
                               "0.30000001192092896",
                               "3.4028235677973366e38",
                               "3.5e38",
                               "1e400",
                               "1e-400",
                               "1e-40",
                               "1.17549429e-38",
                               "0.000000000000000001",
                               "5e-324"}) {
        texts.push_back(number);
    }
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        const float number = std::bit_cast<float>(static_cast<uint32_t>(random()));
        texts.push_back(i % 2 == 0 ? numberText(number)
                                   : numberText((double{number} + std::nextafterf(number, 9)) / 2));
    }
    for (const std::string& text : texts) {
        JsonDocument own, library;
        const bool isRead = parseJson(text, own).empty();
        ASSERT_EQ(isRead, parseJson("\xEF\xBB\xBF" + text, library).empty()) << text;
        if (!isRead) continue;
        ASSERT_EQ(jsonText(own, 0), jsonText(library, 0)) << text;
        ASSERT_EQ(own.values.size(), library.values.size()) << text;
        for (size_t i = 0; i < own.values.size(); ++i) {
            const JsonValue &a = own.values[i], &b = library.values[i];
            ASSERT_EQ(std::tie(a.kind, a.end), std::tie(b.kind, b.end)) << text;
            // Of a number its bits as a float; of a text the index, which differs.
            ASSERT_TRUE(a.kind == JsonValue::Text || a.count == b.count) << text;
            ASSERT_EQ(std::bit_cast<uint64_t>(a.number), std::bit_cast<uint64_t>(b.number)) << text;
        }
    }
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
