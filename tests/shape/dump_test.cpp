#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "ground/shape_dumper.h"
#include "shape/shape.h"
#include "tests/shape/written.h"

namespace marrowfen {
namespace {

std::string dumpOf(const Mesh& mesh) {
    std::ostringstream out;
    ShapeDumper dumper(out);
    mesh.dump(dumper);
    return out.str();
}

// The text between two texts.
std::string between(const std::string& text, const std::string& before, const std::string& after) {
    const size_t begin = text.find(before) + before.size();
    return text.substr(begin, text.find(after, begin) - begin);
}

// One of every record, as tests/shape/every_record.txt shows it.
Shape everyRecord() {
    Shape shape;
    shape.names = {"Root", "Ball", "Detail64"};
    shape.nodes = {{0, -1}, {1, 0}};
    shape.objects = {{1, 1, 0, 1, 5, 6}};
    shape.decals = {{1, 2, 3, 4, -1}};
    shape.IFLmaterials = {{0, 1, 2, 3, 4}};
    shape.subshapes = {{1, 2, 3, 4, 5, 6}};
    shape.nodeDefRotations = {{}, {0.5F, -0.5F, 0.25F, 1e-7F}};
    shape.nodeDefTranslations = {{}, {1, 2.5F, -1234567}};
    shape.nodeRotations = {{}};
    shape.nodeTranslations = {{1, 2, 3}};
    shape.nodeScalesUniform = {0.25F, 1};
    shape.nodeScalesAligned = {{1, 1, 2}};
    shape.nodeScalesArbitrary = {{3, 4, 5}};
    shape.nodeScaleRotsArbitrary = {{}};
    shape.groundTranslations = {{6, 7, 8}};
    shape.groundRotations = {{}};
    shape.objectStates = {{0.5F, 1, 2}};
    shape.decalStates = {{3}};
    shape.triggers = {{0x80000001, 0.75F}};
    shape.detailLevels = {{2, 0, 0, 64, -1, -1, 12}};
    shape.materials = {
        {"skin", Shape::SWrap | Shape::Translucent | Shape::ReflectionMapFlag | 0x200, 0, -1, 2, 1, 0.5F}};
    shape.bounds = {{-1, -2, -3}, {4, 5, 6}};
    shape.center = {1.5F, 1.5F, 1.5F};
    shape.radius = 2.5F;
    shape.tubeRadius = 2;
    shape.smallestSize = 1;
    shape.smallestDetailLevel = 1;

    Mesh mesh(MeshType::Skin);
    mesh.vertexes = {{1, 2, 3}};
    mesh.texturevertexes = {{0.5F, 1}};
    mesh.normals = {{0, 0, 1}};
    mesh.primitives = {{0, 3, Primitive::Strip | Primitive::Indexed | 7}};
    mesh.indices = {0, 40000};
    mesh.mindices = {1};
    mesh.vbone = {2};
    mesh.nodeIndex = {1, 0};
    mesh.flags = Billboard | EncodedNormals;
    mesh.vertsPerFrame = 1;
    mesh.radius = 3.5F;
    shape.meshes = {mesh};

    Shape::Sequence sequence;
    sequence.flags = Shape::Cyclic | Shape::UniformScale | 0x100;
    sequence.numKeyFrames = 3;
    sequence.rotationMatters.resize(3);
    sequence.rotationMatters.set(0);
    sequence.rotationMatters.set(2);
    sequence.frameMatters.resize(1);
    shape.sequences = {sequence};
    return shape;
}

TEST(TextDump, EveryRecordPrintsAsTheReviewedTextSays) {
    std::ifstream in(MARROWFEN_SOURCE_DIR "/tests/shape/every_record.txt");
    std::stringstream expected;
    expected << in.rdbuf();
    EXPECT_EQ(dumpOf(everyRecord()), expected.str());
}

TEST(MeshDump, OddTypesAndFlags) {
    Mesh mesh(MeshType{7});
    mesh.primitives = {{0, 0, 0xD0000000}, {0, 0, 0x20000001}, {0, 0, 0xFFFFFFFF}};
    const std::string text = dumpOf(mesh);
    EXPECT_EQ(between(text, "mesh\n", "\tnumFrames"), "{\n\ttype = \n");
    EXPECT_EQ(between(text, "\tflags = ", "\n"), "( )");
    EXPECT_EQ(between(text, "\t\ttype = ", "\n"), "( strip fan nomaterial )");
    EXPECT_NE(text.find("\t\t\ttype = ( triangles indexed )\n\t\t\tmaterial = 1\n"), std::string::npos);
    EXPECT_NE(text.find("\tmaterial = 268435455\n"), std::string::npos);
    EXPECT_NE(dumpOf(Mesh(MeshType::Null)).find("\n\tnodeIndex\n\t{\n\t}\n}\n"), std::string::npos);
}

}  // namespace
}  // namespace marrowfen
