#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <functional>

#include "glb_reader.h"
#include "sample_shapes.h"
#include "tests/shape/random_shape.h"
#include "view/added_sequences.h"
#include "view/page_file.h"
#include "view/shape_fault.h"
#include "view/shape_gltf.h"
#include "view/triangles.h"

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

void expectSamePlace(const std::array<double, 3>& gltf, Point3 shape, const std::string& where) {
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

TEST(Triangles, EveryDrawTypeGivesTheSameTwoFacesTurnedRound) {
    for (const uint32_t type : {Primitive::Triangles, Primitive::Strip, Primitive::Fan}) {
        const auto runs = view::trianglesOf(test::quadMesh(MeshType::Standard, 1, type));
        ASSERT_EQ(runs.size(), 1U);
        std::vector<view::Triangle> faces = runs[0].triangles;
        for (view::Triangle& t : faces) std::rotate(t.begin(), std::min_element(t.begin(), t.end()), t.end());
        std::sort(faces.begin(), faces.end());
        EXPECT_EQ(faces, (std::vector<view::Triangle>{{0, 2, 1}, {0, 3, 2}})) << std::hex << type;
    }
}

TEST(Triangles, ASwappedStripKeepsItsWindingAndLosesItsDegenerateTriangles) {
    Mesh mesh;
    mesh.indices = {0, 1, 2, 1, 3, 3, 4};  // 0 1 2, then 1 2 1 drops out, 2 1 3, then two that drop out
    mesh.primitives = {{0, 7, Primitive::Strip | Primitive::Indexed | Primitive::NoMaterial, 0}};
    const auto runs = view::trianglesOf(mesh);
    ASSERT_EQ(runs.size(), 1U);
    EXPECT_EQ(runs[0].material, -1);
    EXPECT_EQ(runs[0].triangles, (std::vector<view::Triangle>{{0, 2, 1}, {2, 3, 1}}));
}

TEST(Triangles, ASortedMeshDrawsEveryFaceOfItsWalksOnce) {
    const auto runs = view::trianglesOf(test::sortedShape().meshes[0]);
    ASSERT_EQ(runs.size(), 1U);
    EXPECT_EQ(runs[0].triangles.size(), 2U);
}

TEST(FindFault, NamesWhatIsWrong) {
    const struct {
        std::function<void(Shape&)> damage;
        const char* expected;
    } kCases[] = {
        {[](Shape& s) { s.nodes[1].parent = 9; }, "node 1: parent 9 of 5"},
        {[](Shape& s) { s.nodes[0].parent = 2; }, "node 0: is its own ancestor"},
        {[](Shape& s) { s.nodes[0].name = -1; }, "node 0: name -1 of 14"},
        {[](Shape& s) { s.nodeDefRotations.pop_back(); }, "nodes: 4 default rotations, expected 5"},
        {[](Shape& s) { s.objects[0].node = 5; }, "object 0: node 5 of 5"},
        {[](Shape& s) { s.objects[1].numMeshes = 1 << 30; }, "object 1: meshes 2 to 1073741825 of 9"},
        {[](Shape& s) { s.objects[0].firstMesh = -1; }, "object 0: meshes -1 to 0 of 9"},
        {[](Shape& s) { s.subshapes[0].numObjects = 4; }, "subshape 0: objects 0 to 3 of 3"},
        {[](Shape& s) { s.detailLevels[2].subshape = 1; }, "detail level 2: subshape 1 of 1"},
        {[](Shape& s) { s.meshes[0].indices[2] = 4; }, "mesh 0: index 2 names vertex 4 of 4"},
        {[](Shape& s) { s.meshes[0].primitives[0].numElements = 5; }, "mesh 0: a primitive draws elements 0 to 4 of 4"},
        {[](Shape& s) { s.meshes[1].primitives[0].material |= 7; }, "mesh 1: a primitive has material 7 of 2"},
        {[](Shape& s) { s.meshes[1].primitives[0].material = Primitive::Strip; },
         "mesh 1: a primitive draws vertices 0 to 5 of 4"},
        {[](Shape& s) { s.meshes[0].vbone[0] = 3; }, "mesh 0: a weight is for bone slot 3 of 3"},
        {[](Shape& s) { s.meshes[0].vindex[0] = -4; }, "mesh 0: a weight is for vertex -4 of 4"},
        {[](Shape& s) { s.meshes[0].vweight.pop_back(); }, "mesh 0: 3 weights, expected 4"},
        {[](Shape& s) { s.meshes[0].nodeIndex[1] = s.meshes[0].nodeIndex[0]; }, "mesh 0: two bone slots name node 2"},
        {[](Shape& s) { s.sequences[0].baseRotation = 5; }, "sequence 0: rotation keys 5 to 20 of 20"},
        {[](Shape& s) { s.sequences[1].numKeyFrames = -7; }, "sequence 1: rotation keys 16 to -13 of 20"},
        {[](Shape& s) {
             s.sequences[1].rotationMatters.resize(64);
             s.sequences[1].rotationMatters.set(63);
         },
         "sequence 1: moves node 63 of 5"},
    };
    ASSERT_EQ(view::findFault(test::riggedShape()), "");
    for (const auto& c : kCases) {
        Shape shape = test::riggedShape();
        c.damage(shape);
        EXPECT_EQ(view::findFault(shape), c.expected);
        EXPECT_EQ(view::shapeToGltf(shape, "").error, c.expected);
    }
    Shape sorted = test::sortedShape();
    sorted.meshes[0].clusters[1].backCluster = 4;
    EXPECT_EQ(view::findFault(sorted), "mesh 0: cluster 1: links to cluster 4 of 4");
    sorted = test::sortedShape();
    sorted.meshes[0].clusters[2].endPrimitive = 4;
    EXPECT_EQ(view::findFault(sorted), "mesh 0: cluster 2: draws primitives 1 to 3 of 3");
}

TEST(AddSequences, KeysFindTheirNodesByName) {
    const Shape shape = test::riggedShape();
    // The same sequences with the nodes in reverse: node i's keys stand in block 4 - i, and Root's block comes first.
    Shape dsq;
    dsq.names = shape.names;
    dsq.nodes.assign(shape.nodes.rbegin(), shape.nodes.rend());
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
    ASSERT_EQ(view::addSequences(merged, dsq, warnings), "");
    EXPECT_EQ(warnings, std::vector<std::string>{"the shape has no node for the sequences' tail"});
    const Shape::Sequence& added = merged.sequences.back();
    for (size_t node = 0; node < 5; ++node) EXPECT_EQ(added.translationMatters.test(node), node < 3) << node;
    for (size_t i = 0; i < 12; ++i) {
        const auto at = static_cast<size_t>(added.baseTranslation) + i;
        EXPECT_EQ(merged.nodeTranslations[at], shape.nodeTranslations[i]) << i;
        EXPECT_EQ(merged.nodeRotations[at].z, shape.nodeRotations[i].z) << i;
    }
    dsq.nodeRotations.pop_back();
    EXPECT_EQ(view::addSequences(merged, dsq, warnings), "sequence 0: rotation keys 0 to 15 of 15");
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

TEST(ShapeToGltf, NonsenseIsRefusedOrDrawn) {
    for (uint32_t seed = 0; seed < 3000; ++seed) {
        const view::GltfResult result = view::shapeToGltf(RandomShape(seed).make(), "nonsense");
        ASSERT_NE(result.error.empty(), result.glb.empty()) << "seed " << seed;
    }
}

// Random shapes become files as well as the samples; where a folder is named they are left there, for the validator
// to look at.
TEST(ShapeToGltf, SamplesAndRandomShapesBecomeFiles) {
    std::mt19937 random(20);
    std::vector<Shape> shapes = {test::riggedShape(), test::oddShape(), test::sortedShape(), Shape()};
    while (shapes.size() < 60) shapes.push_back(test::randomShape(random));
    const char* folder = std::getenv("MARROWFEN_VIEW_SAMPLES");
    for (size_t i = 0; i < shapes.size(); ++i) {
        const view::GltfResult result = view::shapeToGltf(shapes[i], "sample");
        ASSERT_EQ(result.error, "") << "shape " << i;
        ASSERT_TRUE(Glb(result.glb).json.contains("scenes"));
        if (folder == nullptr) continue;
        std::ofstream file(folder + ("/" + std::to_string(i)) + ".glb", std::ios::binary);
        file << result.glb;
        ASSERT_TRUE(file.flush());
    }
}

}  // namespace marrowfen
