#include <gtest/gtest.h>

#include <sstream>

#include "ground/block_stream.h"
#include "ground/byte_order.h"
#include "shape/shape.h"

namespace marrowfen {
namespace {

void putWords(std::string& out, std::initializer_list<int32_t> values) {
    for (const int32_t value : values) put32(out, static_cast<uint32_t>(value));
}

void putSet(std::string& out, uint32_t word) {
    for (const uint32_t value : {99U, 1U, word}) put32(out, value);  // only the second count counts
}

// One node, one object with one mesh, two keys, a trigger and a name, as a file of an older version holds them.
std::string tables(uint32_t version, bool scaleMark, bool wordTooMany = false) {
    BlockWriter out;
    const auto words = [&](auto... values) { out.words.values(values...); };
    words(1, 1, 0, 1, 0);
    version < 22 ? words(1 + 2) : words(2, 2, 1, 1, 1);
    words(1, 0, 1, 1, 1);
    if (version < 23) words(77);  // skins
    words(1, 5, 1);               // names and the smallest size and level
    out.checkpoint();
    for (int i = 0; i < 11; ++i) words(2.5F);
    out.checkpoint();
    words(0, -1, -1, -1, -1);
    out.checkpoint();
    words(0, 1, 0, 0, -1, -1);
    for (int i = 0; i < 3; ++i) out.checkpoint();
    words(0, 0, 0);
    out.checkpoint();
    words(1, 1, 0);
    out.checkpoint();
    out.halves.value(Quaternion{});
    words(Point3{1, 2, 3}, Point3{4, 5, 6}, Point3{4, 5, 6});
    out.halves.values(Quaternion{1, 0, 0, 0}, Quaternion{1, 0, 0, 0});
    out.checkpoint();
    if (version > 21) {
        words(7.0F, Point3{8, 8, 8}, Point3{9, 9, 9});
        out.halves.value(Quaternion{});
    }
    if (scaleMark) out.checkpoint();
    words(0.5F, 0, 0);
    out.checkpoint();
    out.checkpoint();
    words(3, 0.25F);
    out.checkpoint();
    words(0, 0, 0, 64.0F, -1.0F, -1.0F, 12);
    out.checkpoint();
    Mesh mesh;
    mesh.indices = {1, 2, 3};
    mesh.writeMeshBlock(out);
    out.checkpoint();
    out.bytes.zeroEnded("Root");
    out.checkpoint();
    if (wordTooMany) words(0);

    std::ostringstream stream;
    out.flush(stream);
    std::string bytes = stream.str();
    bytes[0] = static_cast<char>(version);
    return bytes;
}

std::string sequenceAndMaterial(uint32_t version) {
    std::string out;
    putWords(out, {1, 0});
    if (version > 21) putWords(out, {Shape::Cyclic | Shape::Blend});
    putWords(out, {2, 0x3F800000});
    if (version < 22) out += std::string("\7\1\0", 3);
    putWords(out, {6, 0, 0});
    version < 21 ? putWords(out, {10, 12, 13}) : putWords(out, {10, 11, 14, 12, 13});
    putWords(out, {0, 1, 0});
    putSet(out, 0x80000001);
    if (version > 21) {
        putSet(out, 1);
        putSet(out, 2);
    }
    for (uint32_t i = 0; i < 5; ++i) putSet(out, 4 << i);
    return out + '\1' + std::string("\1\0\0\0\3red", 8) + std::string(24, '\0');
}

std::vector<size_t> members(const IndexSet& set) {
    std::vector<size_t> found;
    for (size_t i = 0; i < set.size(); ++i) {
        if (set.test(i)) found.push_back(i);
    }
    return found;
}

TEST(OldVersions, DifferFromVersion24AsStated) {
    const std::pair<uint32_t, bool> layouts[] = {{19, true},  {19, false}, {20, true}, {21, true},
                                                 {21, false}, {22, true},  {23, true}};
    for (const auto& [version, scaleMark] : layouts) {
        SCOPED_TRACE(std::to_string(version) + (scaleMark ? "" : " without the mark after the scales"));
        const std::string file = tables(version, scaleMark) + sequenceAndMaterial(version);
        const std::string longBlock = tables(version, scaleMark, true) + sequenceAndMaterial(version);
        const auto offset = [](size_t place) { return "offset " + std::to_string(place); };
        const std::pair<std::string, std::string> surpluses[] = {
            {longBlock, offset(12 + 4 * get32(longBlock.data() + 8)) + ": 4 bytes too many in the 32-bit block"},
            {file + "xyz", offset(file.size()) + ": 3 bytes too many at the end of the file"},
            {file, ""}};
        Shape shape;
        for (const auto& [bytes, told] : surpluses) {
            std::istringstream in(bytes);
            std::string surplus;
            shape = Shape();
            shape.readDts(in, &surplus);
            ASSERT_EQ(shape.error() + surplus, told);
        }

        EXPECT_EQ(shape.names, std::vector<std::string>{"Root"});
        EXPECT_EQ(shape.smallestSize, 5);
        EXPECT_EQ(shape.meshes.at(0).indices.size(), 3U);
        EXPECT_EQ(shape.nodeTranslations.size() + shape.nodeRotations.size(), 4U);
        EXPECT_EQ(shape.nodeRotations[1].x, 1);
        EXPECT_EQ(shape.nodeScalesUniform.size() + shape.nodeScalesArbitrary.size(), version > 21 ? 2U : 0U);
        EXPECT_EQ(shape.objectStates.at(0).vis, 0.5F);
        EXPECT_EQ(shape.detailLevels.at(0).polyCount, 12);
        EXPECT_EQ(shape.materials.at(0).name, "red");

        const Shape::Sequence& sequence = shape.sequences.at(0);
        EXPECT_EQ(sequence.flags, Shape::Cyclic | Shape::Blend);
        EXPECT_EQ(sequence.priority, 6);
        EXPECT_EQ(sequence.baseRotation, 10);
        EXPECT_EQ(sequence.baseTranslation, version < 21 ? 10 : 11);
        EXPECT_EQ(sequence.baseScale, version < 21 ? 0 : 14);
        EXPECT_EQ(sequence.baseDecalState, 13);
        EXPECT_EQ(sequence.numTriggers, 1);
        EXPECT_EQ(members(sequence.rotationMatters), (std::vector<size_t>{0, 31}));
        EXPECT_EQ(members(sequence.translationMatters),
                  version < 22 ? members(sequence.rotationMatters) : std::vector<size_t>{0});
        EXPECT_EQ(sequence.scaleMatters.size(), version < 22 ? 0U : 32U);
        EXPECT_EQ(members(sequence.decalMatters), std::vector<size_t>{2});
        EXPECT_EQ(members(sequence.matFrameMatters), std::vector<size_t>{6});
    }
}

}  // namespace
}  // namespace marrowfen
