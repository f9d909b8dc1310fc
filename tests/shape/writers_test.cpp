#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <sstream>

#include "ground/block_stream.h"
#include "ground/byte_order.h"
#include "shape/shape.h"
#include "tests/shape/written.h"

namespace marrowfen {
namespace {

using Words = std::vector<uint32_t>;

std::string bytesOf(const Words& words) {
    std::string bytes;
    for (const uint32_t word : words) put32(bytes, word);
    return bytes;
}

Words wordsOf(const std::string& bytes) {
    Words words;
    for (size_t i = 0; i + 4 <= bytes.size(); i += 4) words.push_back(get32(bytes.data() + i));
    return words;
}

Words floats(std::initializer_list<float> values) {
    Words words;
    for (const float value : values) words.push_back(floatBits(value));
    return words;
}

Words joined(std::initializer_list<Words> lists) {
    Words all;
    for (const Words& list : lists) all.insert(all.end(), list.begin(), list.end());
    return all;
}

// The three blocks of a file that BlockWriter flushed.
struct Blocks {
    Words words;
    std::string halves, bytes, rest;

    explicit Blocks(const std::string& file) {
        const Words header = wordsOf(file.substr(0, 16));
        const auto part = [&](uint32_t begin, uint32_t end) { return file.substr(16 + begin * 4, (end - begin) * 4); };
        words = wordsOf(part(0, header[2]));
        halves = part(header[2], header[3]);
        bytes = part(header[3], header[1]);
        rest = file.substr(16 + header[1] * 4);
    }
};

std::string halvesOf(std::initializer_list<uint16_t> values) {
    std::string bytes;
    for (const uint16_t value : values) put16(bytes, value);
    return bytes;
}

Blocks blockOf(const Mesh& mesh) {
    BlockWriter blocks;
    mesh.writeMeshBlock(blocks);
    std::ostringstream out;
    blocks.flush(out);
    return Blocks(out.str());
}

TEST(DtsWriter, EmptyShapeIs269Bytes) {
    const std::string file = dts(Shape());
    EXPECT_EQ(file.size(), 269U);
    EXPECT_EQ(wordsOf(file.substr(0, 16)), (Words{24, 61, 47, 56}));
    EXPECT_EQ(file.substr(260), std::string("\0\0\0\0\1\0\0\0\0", 9));
    EXPECT_EQ(Blocks(file).bytes, std::string("\0\1\2\3\4\5\6\7\10\11\12\13\14\15\16\17\20\0\0\0", 20));
}

TEST(DtsWriter, TablesStandInTheirOrder) {
    Shape shape;
    shape.nodes = {{0, -1, 2, 3, 4}};
    shape.nodeDefRotations = {{0.5F, -0.5F, 0.5F, -0.5F}};
    shape.nodeDefTranslations = {{1, 2, 3}};
    shape.objects = {{1, 1, 0, 0, -1, -1}};
    shape.decals = {{50, 51, 52, 53, 54}};
    shape.IFLmaterials = {{60, 61, 62, 63, 64}};
    shape.subshapes = {{10, 11, 12, 13, 14, 15}, {20, 21, 22, 23, 24, 25}};
    shape.nodeRotations = {{}};
    shape.nodeTranslations = {{4, 5, 6}};
    shape.nodeScalesUniform = {0.25F};
    shape.nodeScalesAligned = {{80, 81, 82}};
    shape.nodeScalesArbitrary = {{83, 84, 85}};
    shape.nodeScaleRotsArbitrary = {{}};
    shape.groundTranslations = {{90, 91, 92}};
    shape.groundRotations = {{}};
    shape.objectStates = {{1, 7, 8}};
    shape.decalStates = {{70}};
    shape.triggers = {{71, 0.5F}};
    shape.detailLevels = {{2, 0, 0, 64, -1, -1, 9}};
    shape.meshes = {Mesh(MeshType::Null)};
    shape.names = {"A", "Bc", ""};
    shape.smallestSize = 2.9F;
    shape.smallestDetailLevel = 1;
    shape.radius = 2.5F;
    shape.sequences.resize(1);
    shape.materials.resize(1);

    const Blocks file(dts(shape, false));
    constexpr uint32_t none = 0xFFFFFFFF;
    EXPECT_EQ(file.words, joined({{1, 1, 1, 2, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 3, 2, 1, 0},
                                  floats({2.5F, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}),
                                  {1, 0, none, 2, 3, 4, 2, 1, 1, 0, 0, none, none, 3},
                                  {50, 51, 52, 53, 54, 4, 60, 61, 62, 63, 64, 5},
                                  {10, 20, 11, 21, 12, 22, 6, 13, 23, 14, 24, 15, 25, 7},
                                  floats({1, 2, 3, 4, 5, 6}),
                                  {8},
                                  floats({0.25F, 80, 81, 82, 83, 84, 85}),
                                  {9},
                                  floats({90, 91, 92}),
                                  {10},
                                  floats({1}),
                                  {7, 8, 11, 70, 12, 71},
                                  floats({0.5F}),
                                  {13, 2, 0, 0},
                                  floats({64, -1, -1}),
                                  {9, 14, 4, 15, 16}}));
    EXPECT_EQ(file.halves, halvesOf({0, 1, 2, 3,     4, 5, 6, 7, 16383, 0xC001, 16383, 0xC001, 0,  0,  0,  32767, 8,
                                     0, 0, 0, 32767, 9, 0, 0, 0, 32767, 10,     11,    12,     13, 14, 15, 16,    0}));
    EXPECT_EQ(file.bytes.substr(16), std::string("A\0Bc\0\0\20\0", 8));
    EXPECT_EQ(file.rest.substr(0, 11), std::string("\0\0\0\0\1\1\0\0\0\0\0", 11));
}

TEST(DtsWriter, SequencesAndMaterialsFollowTheBuffers) {
    Shape shape;
    Shape::Sequence sequence;
    sequence.nameIndex = 3;
    sequence.flags = Shape::Cyclic;
    sequence.rotationMatters.resize(33);
    sequence.rotationMatters.set(0);
    sequence.rotationMatters.set(32);
    shape.sequences = {sequence};
    shape.materials.resize(2);
    shape.materials[0].name = std::string(300, 'x');
    shape.materials[1] = {"y", Shape::SWrap, 1, 2, 3, 0.5F, 0.25F};

    const std::string file = dts(shape);
    const std::string expectedSequences = bytesOf(
        joined({{1, 3, 0x10, 0}, floats({1}), {1, 0, 0, 0, 0, 0, 0, 0, 0, 0}, floats({0}), {2, 2, 1, 1}, Words(14)}));
    EXPECT_EQ(file.substr(260, expectedSequences.size()), expectedSequences);
    EXPECT_EQ(file.substr(260 + expectedSequences.size()),
              "\1" + bytesOf({2}) + "\xFF" + std::string(255, 'x') + "\1y" +
                  bytesOf(joined({{0, 1, ~0U, 1, ~0U, 2, ~0U, 3}, floats({1, 0.5F, 0, 0.25F})})));
}

TEST(DtsWriter, QuaternionComponentsAreCutToWholeNumbers) {
    const std::pair<float, int> cases[] = {
        {0, 0},          {1, 32767}, {-1, -32767},         {0.99999F, 32766}, {0.5F, 16383},
        {-0.5F, -16383}, {2, 32767}, {-HUGE_VALF, -32767}, {std::nanf(""), 0}};
    for (const auto& [value, packed] : cases) EXPECT_EQ(packQuaternionComponent(value), packed) << value;
    // What a reader unpacks is packed to the same number again.
    for (int n = -32767; n <= 32767; ++n) {
        ASSERT_EQ(packQuaternionComponent(static_cast<float>(n) / 32767.0F), n);
    }
}

// Scalars of a mesh with the given first words: frames, parent, bounds and center as they are made.
Words scalars(uint32_t type, uint32_t radius) { return joined({{type, 0, 1, 1, 0xFFFFFFFF}, Words(9), {radius}}); }

TEST(MeshBlock, NullMeshIsOneWordAndEmptyMeshIsCounts) {
    const Blocks null = blockOf(Mesh(MeshType::Null));
    EXPECT_EQ(null.words, Words{4});
    EXPECT_EQ(null.halves + null.bytes, "");

    for (const auto& [radius, whole] : {std::pair{2.9F, 2U}, {0.7F, 0U}, {1e30F, 0x7FFFFFFFU}}) {
        Mesh empty;
        empty.radius = radius;
        EXPECT_EQ(blockOf(empty).words, joined({scalars(0, whole), Words(7), {1}})) << radius;
    }
}

TEST(MeshBlock, SkinHasItsVerticesTwiceThenItsBones) {
    Mesh mesh(MeshType::Skin);
    mesh.vertexes = {{1, 2, 3}};
    mesh.texturevertexes = {{4, 5}};
    mesh.normals = {{6, 7, 8}};
    mesh.encodedNormals = {200};
    mesh.primitives = {{1, 3, 0x60000002, 99}};
    mesh.indices = {10, 11, 12};
    mesh.mindices = {13};
    mesh.setNumFrames(1);
    mesh.flags = HasDetail;
    mesh.boneSlot(5);
    mesh.initialTransforms[0].m[0][3] = 9;
    mesh.vindex = {0};
    mesh.vbone = {0};
    mesh.vweight = {0.5F};

    const Blocks block = blockOf(mesh);
    const Words vertex = floats({1, 2, 3}), normal = floats({6, 7, 8});
    EXPECT_EQ(block.words, joined({scalars(1, 0),
                                   {1},
                                   vertex,
                                   {1},
                                   floats({4, 5}),
                                   normal,
                                   {1, 0x60000002, 3, 1, 1, 0x40000000, 1, 1},
                                   vertex,
                                   normal,
                                   {1},
                                   floats({1, 0, 0, 9, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}),
                                   {1, 0, 0},
                                   floats({0.5F}),
                                   {1, 5, 2}}));
    EXPECT_EQ(block.halves, halvesOf({0, 1, 3, 10, 11, 12, 13, 1, 2, 0}));
    EXPECT_EQ(block.bytes, std::string("\0\xC8\1\xC8\2\0\0\0", 8));
}

TEST(MeshBlock, SortedMeshEndsWithItsClusters) {
    Mesh mesh(MeshType::Sorted);
    mesh.clusters = {{1, 2, {3, 4, 5}, 6, 7, -1}};
    mesh.frameStartCluster = {10};
    mesh.frameVertexCount = {11, 12};
    const Words words = blockOf(mesh).words;
    const Words expected = joined({{1, 1, 1, 2}, floats({3, 4, 5, 6}), {7, 0xFFFFFFFF, 1, 10, 0, 2, 11, 12, 0, 0, 2}});
    EXPECT_EQ(Words(words.end() - static_cast<std::ptrdiff_t>(expected.size()), words.end()), expected);
}

TEST(DsqWriter, NodeNamesStandAsText) {
    Shape shape;
    shape.names = {"Hand", "Root"};
    shape.nodes = {{1}, {0}, {7}};  // the last one has no name
    EXPECT_EQ(dsq(shape), bytesOf({24, 3, 4}) + "Root" + bytesOf({4}) + "Hand" + bytesOf(Words(11)));
}

TEST(DsqWriter, TablesStandInTheirOrder) {
    Shape shape;
    shape.names = {"run"};
    shape.objects.resize(2);
    shape.nodeRotations = {{}};
    shape.nodeTranslations = {{1, 2, 3}};
    shape.nodeScalesUniform = {4};
    shape.nodeScalesAligned = {{5, 6, 7}};
    shape.nodeScaleRotsArbitrary = {{}};
    shape.nodeScalesArbitrary = {{8, 9, 10}};
    shape.groundTranslations = {{11, 12, 13}};
    shape.groundRotations = {{}};
    shape.sequences.resize(1);
    shape.triggers = {{3, 0.5F}};

    const Words identity = {0, 0x7FFF0000};
    EXPECT_EQ(dsq(shape), bytesOf(joined({{24, 0, 0, 2, 1},
                                          identity,
                                          {1},
                                          floats({1, 2, 3}),
                                          {1},
                                          floats({4}),
                                          {1},
                                          floats({5, 6, 7}),
                                          {1},
                                          identity,
                                          floats({8, 9, 10}),
                                          {1},
                                          floats({11, 12, 13}),
                                          identity,
                                          {0, 1, 3}})) +
                              "run" +
                              bytesOf(joined({{0, 0},
                                              floats({1}),
                                              {1, 0, 0, 0, 0, 0, 0, 0, 0, 0},
                                              floats({0}),
                                              Words(16),
                                              {1, 3},
                                              floats({0.5F})})));
}

TEST(DsqWriter, DebugListingGoesToTheFolderThatStandsForDriveC) {
    Shape shape;
    const float nan = std::nanf("");
    const float inf = std::numeric_limits<float>::infinity();
    shape.nodeTranslations = {{1, -2.5F, 1e-7F}, {0.1F, -0.0F, 16777216}, {nan, -nan, -inf}};
    const std::string listing = testing::TempDir() + "temp.txt";

    setenv("MARROWFEN_DRIVE_C", testing::TempDir().c_str(), 1);
    const std::string withListing = dsq(shape);
    std::ifstream in(listing, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}),
              "0: 1.000000 -2.500000 0.000000\r\n"
              "1: 0.100000 -0.000000 16777216.000000\r\n"
              "2: nan nan -inf\r\n");

    setenv("MARROWFEN_DRIVE_C", "/nowhere/at/all", 1);
    EXPECT_EQ(dsq(shape), withListing);
    std::remove(listing.c_str());
    unsetenv("MARROWFEN_DRIVE_C");
    EXPECT_EQ(dsq(shape), withListing);
    EXPECT_FALSE(std::ifstream(listing).good());
}

}  // namespace
}  // namespace marrowfen
