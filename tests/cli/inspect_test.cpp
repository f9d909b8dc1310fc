#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

#include "cli/inspect_report.h"
#include "cli/shape_diff.h"
#include "cli/shape_facts.h"

namespace marrowfen::cli {
namespace {

Shape lamp() {
    Shape shape;
    shape.names = {"Root", "lamp", "light", "ShapeObject", "Detail64", "Collision-1", "blink"};
    shape.nodes = {{2, 1}, {1, 2}, {0, -1}};
    shape.nodeDefRotations.resize(3);
    shape.nodeDefTranslations.resize(3);
    shape.objects = {{3, 2, 0, 2}};
    shape.objectStates.resize(1);
    shape.subshapes = {{0, 0, 0, 3, 1, 0}};
    shape.detailLevels = {{4, 0, 0, 64}, {5, 0, 1, -1}};
    Mesh mesh;
    mesh.vertexes.resize(4);
    mesh.texturevertexes.resize(4);
    mesh.normals.resize(4);
    mesh.encodedNormals.resize(4);
    mesh.indices = {0, 1, 2, 3, 0, 1, 2};
    mesh.primitives = {{0, 4, Primitive::Strip | Primitive::Indexed}, {4, 3, Primitive::Indexed | 1}};
    mesh.setNumFrames(1);
    mesh.flags = Billboard;
    shape.meshes = {mesh, mesh};
    shape.materials.resize(2);
    shape.materials[0].name = "glass";
    shape.materials[0].flags = Shape::SWrap | Shape::Translucent | 0x200;
    shape.materials[1].name = "bell\a";
    shape.bounds.max = {1, 2, 2.5F};
    shape.radius = 3;
    Shape::Sequence blink;
    blink.nameIndex = 6;
    blink.flags = Shape::Cyclic;
    blink.numKeyFrames = 11;
    blink.duration = 0.44F;
    blink.rotationMatters.resize(2);
    blink.rotationMatters.set(1);
    shape.sequences = {blink};
    shape.nodeRotations.resize(11);
    return shape;
}

ShapeFile load(const Shape& shape, const char* name, const char* more = "") {
    std::ofstream out(name, std::ios::binary);
    const bool dts = std::string(name).ends_with("dts");
    dts ? shape.writeDts(out, true) : shape.writeDsq(out);
    out << more;
    out.close();
    ShapeFile file;
    EXPECT_EQ(loadShapeFile(name, file), "");
    std::remove(name);
    return file;
}

// The facts of the examples show the rest.
TEST(Inspect, TextHasWhatExamplesHaveNot) {
    const ShapeFile file = load(lamp(), "lamp.dts");
    const std::string text = inspectText(file, problemsOf(file));
    for (const char* line :
         {"  blocks of 32, 16 and 8 bits: 856, 200 and 84 bytes; sequences and materials: 197 bytes\n",
          "  Detail64    64          3       1         4          2  standard billboard\n",
          "  0  glass     swrap translucent 0x200\n  1  bell\\x07  -\n", "\nNo problems found.\n"}) {
        EXPECT_NE(text.find(line), std::string::npos) << line << "in\n" << text;
    }
}

TEST(Inspect, DsqTextHasNodesAndSequencesAndProblems) {
    Shape shape = lamp();
    shape.nodeRotations.resize(3);
    const ShapeFile file = load(shape, "lamp.dsq", "xx");
    EXPECT_EQ(inspectText(file, problemsOf(file)), R"(lamp.dsq: DSQ sequences, version 24, 236 bytes

Nodes (3)
  light
  lamp
  Root

Sequences (1)
  name   frames  seconds  a second  priority  nodes  flags
  blink      11     0.44        25         1      1  cyclic

Problems (2)
  error SEQUENCE_KEYS_RANGE sequences[0].rotations (sequence whose keys lie outside their table)
  warning FILE_SURPLUS offset 234: 2 bytes too many at the end of the file (bytes that belong to nothing)
)");
}

TEST(Inspect, JsonHasTheSameFactsUnderStableKeys) {
    Shape shape = lamp();
    shape.names[1] = "\xFF";
    shape.nodes[0].parent = 9;
    shape.radius = NAN;
    const ShapeFile file = load(shape, "lamp.dts");
    const auto json = nlohmann::json::parse(inspectJson(file, problemsOf(file)));
    EXPECT_EQ(json["format"], "dts");
    EXPECT_EQ(json["bounds"]["max"], (nlohmann::json{1, 2, 2.5}));
    EXPECT_TRUE(json["radius"].is_null());
    EXPECT_EQ(json["nodes"][1]["name"], "\xEF\xBF\xBD");
    EXPECT_EQ(json["detailLevels"][1]["kind"], "collision");
    EXPECT_EQ(json["detailLevels"][0]["materials"], (nlohmann::json{0, 1}));
    EXPECT_EQ(json["meshes"][0]["flags"], nlohmann::json{"billboard"});
    EXPECT_EQ(json["sequences"][0]["seconds"], 0.44);
    EXPECT_EQ(json["problems"][0]["where"], nlohmann::json{"nodes[0].parent: 9"});
    EXPECT_EQ(json["problems"][0]["severity"], "error");
    EXPECT_EQ(json["problems"][0]["code"], "NODE_PARENT");
    const char* keys[] = {"file",         "version", "versionWord",  "bytes",     "blocks",    "center",  "tubeRadius",
                          "smallestSize", "objects", "detailLevels", "materials", "sequences", "problems"};
    for (const char* key : keys) EXPECT_TRUE(json.contains(key)) << key;
}

TEST(Diff, TellsHowMuchOfTheGeometryDiffers) {
    struct Case {
        void (*change)(Mesh& mesh);
        const char* words;
    };
    for (const Case& c :
         {Case{[](Mesh& m) {
                   m.vertexes[1] = {0, 0, 2};
               },
               "1 of 4 vertices moved, by up to 2"},
          Case{[](Mesh& m) { m.normals[3].x = m.normals[2].x = 0.5F; },
               "2 of 4 vertices have another normal, by up to 0.5"},
          Case{[](Mesh& m) { m.texturevertexes[0].y = NAN; }, "1 of 4 vertices have other texture coordinates"},
          Case{[](Mesh& m) { m.indices[6] = 3; }, "1 triangle gone, 1 triangle new"},
          Case{[](Mesh& m) { m.indices = {0, 1, 2, 3, 1, 2, 0}; }, "the same triangles are drawn in another order"},
          Case{[](Mesh& m) {
                   m.vertexes.push_back({9, 9, 9});
                   m.normals.resize(5), m.encodedNormals.resize(5), m.texturevertexes.resize(5);
                   m.setNumFrames(1);
               },
               "vertices 4 -> 5, 1 vertex new"}}) {
        Shape changed = lamp();
        c.change(changed.meshes[0]);
        const auto lines = differences(load(lamp(), "old.dts"), load(changed, "new.dts"));
        EXPECT_EQ(lines, std::vector<std::string>{std::string("! level Detail64: ") + c.words});
    }
}

// Exporters keep what they like beside the version.
TEST(Inspect, VersionWordsAreShownWhole) {
    const struct {
        uint32_t word;
        const char *title, *problem;
    } cases[] = {{24, "version 24,", ""},
                 {0x00220018, "version 24 (version word 0x00220018),", ""},
                 {25, "version 24 (version word 0x00000019),",
                  "warning FILE_VERSION version 25, read as 24 (version that isn't known)"}};
    ShapeFile file = load(lamp(), "lamp.dts");
    for (const auto& [word, title, problem] : cases) {
        file.version.word = word;
        const std::string text = inspectText(file, problemsOf(file));
        EXPECT_NE(text.find(title), std::string::npos) << text;
        EXPECT_NE(text.find(*problem == '\0' ? "No problems found." : problem), std::string::npos) << text;
    }
}

TEST(Inspect, TreeOfNodesInACircleEnds) {
    Shape shape = lamp();
    shape.nodes[2].parent = 0;
    EXPECT_EQ(nodeTree(shape).size(), 3U);
    EXPECT_EQ(nodeTree(shape)[2].depth, 0U);
}

TEST(Inspect, FilesThatCannotBeReadAreOneLine) {
    ShapeFile file;
    EXPECT_EQ(loadShapeFile("nowhere.dts", file), "nowhere.dts: No such file or directory");
    EXPECT_EQ(loadShapeFile("/", file), "/: is a folder");
    EXPECT_EQ(loadShapeFile("/dev/null", file), "/dev/null: offset 0: the data ends here, 4 bytes too early");
}

}  // namespace
}  // namespace marrowfen::cli
