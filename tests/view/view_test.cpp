#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <functional>

#include "glb_reader.h"
#include "sample_shapes.h"
#include "tests/files.h"
#include "view/added_sequences.h"
#include "view/page_file.h"
#include "view/shape_gltf.h"

namespace marrowfen {

namespace {

using nlohmann::json;
using test::Glb;

// Where the shape's own rules put a point of a node: the pose of nodeWorldTransform, with a sequence's keys.
struct Posing {
    const Shape& shape;
    int sequence = -1;
    size_t key = 0;

    Point3 place(size_t node, Point3 p) const {
        for (auto n = static_cast<int32_t>(node); n >= 0; n = shape.nodes[static_cast<size_t>(n)].parent) {
            const auto i = static_cast<size_t>(n);
            Quaternion q = shape.nodeDefRotations[i];
            Point3 t = shape.nodeDefTranslations[i];
            if (sequence >= 0 && i + 1 < shape.nodes.size()) {
                const Shape::Sequence& s = shape.sequences[static_cast<size_t>(sequence)];
                const size_t entry = i * static_cast<size_t>(s.numKeyFrames) + key;
                q = shape.nodeRotations[static_cast<size_t>(s.baseRotation) + entry];
                t = shape.nodeTranslations[static_cast<size_t>(s.baseTranslation) + entry];
            }
            p = rotate(q, p) + t;
        }
        return p;
    }
};

Point3 transformed(const Matrix44& m, Point3 p) {
    const auto row = [&](size_t r) { return m.m[r][0] * p.x + m.m[r][1] * p.y + m.m[r][2] * p.z + m.m[r][3]; };
    return {row(0), row(1), row(2)};
}

void expectSamePlace(const test::Place& gltf, Point3 shape, const std::string& where) {
    // Y up: z becomes y, y runs away from the viewer.
    EXPECT_NEAR(gltf[0], shape.x, 1e-4) << where;
    EXPECT_NEAR(gltf[1], shape.z, 1e-4) << where;
    EXPECT_NEAR(gltf[2], -shape.y, 1e-4) << where;
}

}  // namespace

TEST(ShapeToGltf, EveryVertexStandsWhereTheShapesRulesPutIt) {
    const Shape shape = test::riggedShape();
    const view::GltfResult result = view::shapeToGltf(shape, "rigged");
    ASSERT_EQ(result.error, "");
    const Glb glb(result.glb);
    constexpr std::pair<int, size_t> kTimes[] = {{-1, 0}, {0, 0}, {0, 1}, {0, 2}, {0, 3}, {1, 0}};
    for (const auto& [sequence, key] : kTimes) {
        const Posing posing{shape, sequence, key};
        const std::string when = "sequence " + std::to_string(sequence) + " key " + std::to_string(key);
        for (const auto& [name, mesh] : {std::pair("Detail64", 0), {"Detail8", 1}}) {
            const Mesh& skin = shape.meshes[static_cast<size_t>(mesh)];
            for (size_t v = 0; v < 4; ++v) {
                const auto slot = static_cast<size_t>(skin.vbone[v]);
                const Point3 inBone = transformed(skin.initialTransforms[slot], skin.vertexes[v]);
                expectSamePlace(glb.placed(glb.nodeNamed(name), v, sequence, key),
                                posing.place(static_cast<size_t>(skin.nodeIndex[slot]), inBone), name + (" " + when));
            }
        }
        const Point3 corner = shape.meshes.back().vertexes[2];
        expectSamePlace(glb.placed(glb.nodeNamed("LOS-9"), 2, sequence, key), posing.place(2, corner), "LOS " + when);
    }
}

TEST(ShapeToGltf, ScenesMaterialsAndSequencesSayWhatTheShapeSays) {
    const Glb glb(view::shapeToGltf(test::riggedShape(), "rigged").glb);
    const json& scenes = glb.json["scenes"];
    std::string names;
    for (const json& scene : scenes) {
        names += scene["name"].get<std::string>() + ":" + scene["extras"]["kind"].get<std::string>() + ":" +
                 scene["extras"]["triangles"].dump() + " ";
    }
    EXPECT_EQ(names, "Detail64:detail:2 Detail8:detail:2 Collision-1:collision:2 LOS-9:los:2 ");
    EXPECT_EQ(glb.json["scene"], 0);
    EXPECT_EQ(glb.json["nodes"][glb.nodeNamed("mount0")]["extras"]["kind"], "marker");
    EXPECT_EQ(glb.json["nodes"][glb.nodeNamed("foot")]["extras"]["kind"], "bone");

    // Clockwise in the shape: 0 1 2 and 0 2 3.
    EXPECT_EQ(glb.numbers(glb.primitiveOf(glb.nodeNamed("Detail8"))["indices"]), (test::Numbers{0, 2, 1, 0, 3, 2}));

    const json& glow = glb.json["materials"][1];
    EXPECT_EQ(glow["name"], "glow");
    EXPECT_EQ(glow["alphaMode"], "BLEND");
    EXPECT_TRUE(glow.contains("emissiveFactor"));
    EXPECT_EQ(glow["extras"]["flags"], json({"translucent", "additive", "selfilluminating"}));
    EXPECT_FALSE(glb.json["materials"][0].contains("alphaMode"));

    const json& walk = glb.json["animations"][0];
    EXPECT_EQ(walk["name"], "walk");
    EXPECT_EQ(walk["extras"]["cyclic"], true);
    EXPECT_EQ(glb.json["animations"][1]["extras"]["blend"], true);
    // Four keys in 0.4 seconds: one every tenth.
    const test::Numbers times = glb.numbers(walk["samplers"][0]["input"]);
    ASSERT_EQ(times.size(), 4U);
    for (size_t i = 0; i < 4; ++i) EXPECT_NEAR(times[i], 0.1 * static_cast<double>(i), 1e-6);
}

TEST(ShapeToGltf, TheDefaultSceneIsTheLargestVisibleLevel) {
    const struct {
        std::vector<std::pair<const char*, float>> levels;
        const char* shown;
    } kCases[] = {
        {{{"Detail64", 64}, {"Detail8", 8}}, "Detail64"},
        {{{"Collision-1", -1}, {"Detail-1", -1}}, "Detail-1"},
        {{{"Detail-1", -1}, {"Detail2", 2}}, "Detail2"},
        {{{"LOS-9", -1}, {"Collision-1", -1}}, "LOS-9"},
        {{}, "nodes"},
    };
    for (const auto& c : kCases) {
        Shape shape;
        shape.subshapes.resize(1);
        for (const auto& [name, size] : c.levels) test::addLevel(shape, name, size);
        const Glb glb(view::shapeToGltf(shape, "").glb);
        EXPECT_EQ(glb.json["scenes"][0]["name"], c.shown);
    }
}

TEST(ShapeToGltf, OddShapesAreDrawnWithWarnings) {
    const view::GltfResult result = view::shapeToGltf(test::oddShape(), "odd");
    ASSERT_EQ(result.error, "");
    std::string all;
    for (const std::string& warning : result.warnings) all += warning + "\n";
    for (const char* expected :
         {"2 triangles with corners at no finite place left out", "initial transform", "\"still\": no usable duration",
          "\"still\": only rotations and translations", "\"never\" moves no node"}) {
        EXPECT_NE(all.find(expected), std::string::npos) << expected << " in\n" << all;
    }
}

#define AFTER(...) []([[maybe_unused]] Shape& s) { __VA_ARGS__; }

TEST(FindFault, NamesTheFirstBrokenProblemOrTheLimit) {
    const struct {
        std::function<void(Shape&)> damage;
        const char* expected;
    } kCases[] = {
        {AFTER(), ""},
        {AFTER(s.meshes[0].normals[0].x = NAN), ""},
        {AFTER(s.nodes[1].parent = 9), "node with a parent that isn't there: nodes[1].parent: 9"},
        {AFTER(s.meshes[0].nodeIndex[1] = s.meshes[0].nodeIndex[0]), "mesh 0: two bone slots name node 2"},
        {AFTER(s.detailLevels.resize(200'000, s.detailLevels[0])), "200000 detail levels are too many to show"},
        {AFTER(s.meshes[0].primitives.resize(13'000'000, s.meshes[0].primitives[0])), "too many triangles to show"},
        {AFTER(s.sequences[0].numKeyFrames = 4'000'001; s.sequences[0].rotationMatters.resize(0);
               s.sequences[0].translationMatters.resize(0)),
         "sequence 0: too many keys to show"},
    };
    for (const auto& c : kCases) {
        Shape shape = test::riggedShape();
        c.damage(shape);
        EXPECT_EQ(view::shapeToGltf(shape, "").error, c.expected);
    }
}

TEST(AddSequences, KeysFindTheirNodesByName) {
    const Shape shape = test::riggedShape();
    // The same sequences with the nodes in reverse: node i's keys stand in block 4 - i, and Root's block comes first.
    Shape dsq;
    dsq.names = shape.names;
    dsq.nodes.assign(shape.nodes.rbegin(), shape.nodes.rend());
    for (Shape::Node& node : dsq.nodes) node.parent = -1;
    dsq.nodeDefRotations.resize(5);
    dsq.nodeDefTranslations.resize(5);
    dsq.nodes[4].name = dsq.findOrAddName("HIP");  // letter case doesn't count
    dsq.nodes[1].name = dsq.findOrAddName("tail");
    const Shape::Sequence& walk = shape.sequences[0];
    dsq.sequences = {walk};
    for (IndexSet* set : {&dsq.sequences[0].rotationMatters, &dsq.sequences[0].translationMatters}) {
        set->resize(5);
        for (size_t i = 0; i < 5; ++i) set->set(i, i != 0);
    }
    for (size_t node : {3, 2, 1, 0}) {
        for (size_t key = 0; key < 4; ++key) {
            dsq.nodeRotations.push_back(shape.nodeRotations[node * 4 + key]);
            dsq.nodeTranslations.push_back(shape.nodeTranslations[node * 4 + key]);
        }
    }
    Shape merged = shape;
    std::vector<std::string> warnings;
    ASSERT_EQ(view::appendSequences(merged, dsq, warnings), "");
    EXPECT_EQ(warnings, std::vector<std::string>{"the shape has no node for the sequences' tail"});
    const Shape::Sequence& added = merged.sequences.back();
    for (size_t node = 0; node < 5; ++node) EXPECT_EQ(added.translationMatters.test(node), node < 3) << node;
    for (size_t i = 0; i < 12; ++i) {
        const auto at = static_cast<size_t>(added.baseTranslation) + i;
        EXPECT_EQ(merged.nodeTranslations[at], shape.nodeTranslations[i]) << i;
        EXPECT_EQ(merged.nodeRotations[at].z, shape.nodeRotations[i].z) << i;
    }
    dsq.nodeRotations.pop_back();
    EXPECT_EQ(view::appendSequences(merged, dsq, warnings),
              "sequence whose keys lie outside their table: sequences[0].rotations");
}

TEST(EmbedInPage, FillsInModelAndEscapedTitle) {
    const std::string page = "<title>%MARROWFEN_TITLE%</title><script>%MARROWFEN_MODEL%</script>";
    EXPECT_EQ(view::embedInPage(page, "Ma", "<%MARROWFEN_MODEL%&>"),
              "<title>&lt;%MARROWFEN_MODEL%&amp;&gt;</title><script>TWE=</script>");
    EXPECT_EQ(view::embedInPage(page, "Man", ""), "<title></title><script>TWFu</script>");
    EXPECT_EQ(view::embedInPage(page, "M", ""), "<title></title><script>TQ==</script>");
    EXPECT_EQ(view::embedInPage("<title>another page</title>", "Man", ""), "");
}

// A large hash of a name once overflowed on its way to a hue.
TEST(ShapeToGltf, EveryNameHasAColour) {
    Shape shape = test::riggedShape();
    for (int i = 0; i < 200; ++i) {
        shape.materials[0].name = "skin" + std::to_string(i);
        const Glb glb(view::shapeToGltf(shape, "names").glb);
        for (const json& channel : glb.json["materials"][0]["pbrMetallicRoughness"]["baseColorFactor"]) {
            ASSERT_GE(channel.get<double>(), 0) << shape.materials[0].name;
            ASSERT_LE(channel.get<double>(), 1) << shape.materials[0].name;
        }
    }
}

// Damaged shapes become files as well as the samples; where a folder is named they are left there, for the validator
// to look at.
TEST(ShapeToGltf, SamplesAndDamagedShapesBecomeFiles) {
    std::mt19937 random(20);
    std::vector<Shape> shapes = {test::riggedShape(), test::oddShape(), Shape()};
    while (shapes.size() < 200) shapes.push_back(test::damagedShape(random));
    const char* folder = std::getenv("MARROWFEN_VIEW_SAMPLES");
    for (size_t i = 0; i < shapes.size(); ++i) {
        const view::GltfResult result = view::shapeToGltf(shapes[i], "sample");
        ASSERT_EQ(result.error, "") << "shape " << i;
        ASSERT_TRUE(Glb(result.glb).json.contains("scenes"));
        if (folder == nullptr) continue;
        test::writeFile(std::filesystem::path(folder) / (std::to_string(i) + ".glb"), result.glb);
    }
}

}  // namespace marrowfen
