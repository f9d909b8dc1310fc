#include <gtest/gtest.h>

#include <sstream>

#include "ground/byte_order.h"
#include "shape/shape.h"
#include "tests/shape/every_record.h"
#include "tests/shape/written.h"

namespace marrowfen {
namespace {

std::string withWord(std::string bytes, size_t word, uint32_t value) {
    std::string replaced;
    put32(replaced, value);
    return bytes.replace(word * 4, 4, replaced);
}

// Read back, a DSQ file has neither objects nor names that are none.
Shape forDsq() {
    Shape shape = everyRecord();
    shape.objects.clear();
    shape.nodes.back().name = 0;
    return shape;
}

TEST(Readers, OnlyTheLowByteIsTheVersion) {
    const std::string file = dts(everyRecord());
    for (const uint32_t word : {0x18U, 0x00220018U, 0xFFFFFF18U, 25U, 255U, 0x1234U}) {
        EXPECT_TRUE(dts(readDts(withWord(file, 0, word))) == file) << word;
    }
}

// What damaged words do, and whether other files keep their bytes, fuzzing looks at.
TEST(Readers, EveryCutIsAFault) {
    const std::string dtsFile = dts(everyRecord()), dsqFile = dsq(forDsq());
    for (size_t n = 0; n < dtsFile.size(); ++n) ASSERT_TRUE(readDts(dtsFile.substr(0, n)).hasError()) << n;
    for (size_t n = 0; n < dsqFile.size(); ++n) ASSERT_TRUE(readDsq(dsqFile.substr(0, n)).hasError()) << n;
}

TEST(Readers, FaultsSayWhatAndWhere) {
    const std::string empty = dts(Shape());
    Shape withSkin;
    withSkin.meshes.emplace_back(MeshType::Skin).boneSlot(0);
    const std::string skin = dts(withSkin);
    // The 32-bit block ends with the skin's bone count, its one bone and three marks.
    const size_t boneCount = 4 + get32(skin.data() + 8) - 5;
    // And with the counts of the clusters and four more lists, a word that isn't used, and three marks.
    Shape withSorted;
    withSorted.meshes.emplace_back(MeshType::Sorted);
    const std::string sorted = dts(withSorted);
    const size_t clusterCount = 4 + get32(sorted.data() + 8) - 9;
    Shape manyMeshes;
    manyMeshes.meshes.assign(32769, Mesh(MeshType::Null));
    const std::string old = "The DTS file is of a older, unsupported version";
    const struct {
        std::string file, fault;
    } cases[] = {
        {"", "offset 0: the data ends here, 4 bytes too early"},
        {"\x12", "offset 0: the data ends here, 3 bytes too early"},
        {withWord(empty, 0, 18), old},
        {withWord(empty, 0, 0), old},
        {withWord(empty, 0, 25).substr(0, 99), "offset 0: this is no DTS file: version word 25"},
        {"# Blender", "offset 0: this is no DTS file: version word 1816272931"},
        {empty.substr(0, 12), "offset 12: header: the data ends here, 4 bytes too early"},
        {withWord(empty, 1, 64), "offset 4: header: blocks of 64 words that start at 47 and 56 don't fit 253 bytes"},
        {withWord(empty, 3, 46), "offset 4: header: blocks of 61 words that start at 47 and 46 don't fit 253 bytes"},
        {withWord(empty, 4, 0xFFFFFFFF), "offset 144: nodes: the count is -1"},
        {withWord(empty, 4, 1000), "offset 144: nodes: the count is 1000, each takes 20 bytes, 60 bytes are left"},
        {withWord(empty, 19, 2), "offset 204: mesh 0: the data ends here, 4 bytes too early"},
        {dts(manyMeshes), "offset 196: meshes: 32769 meshes, at most 32768 are read"},
        {withWord(empty, 20, 5), "offset 256: names: the count is 5, each takes 1 bytes, 4 bytes are left"},
        {withWord(empty, 65, 9), "offset 264: sequences: the count is 9, each takes 99 bytes, 5 bytes are left"},
        {empty.substr(0, 264), "offset 264: materials: the data ends here, 1 bytes too early"},
        {empty.substr(0, 265) + std::string(4, '\x7F'),
         "offset 269: materials: the count is 2139062143, each takes 25 bytes, 0 bytes are left"},
        {withWord(skin, boneCount, 0),
         "offset " + std::to_string(boneCount * 4 + 4) + ": mesh 0: a skin with 0 bones has 1 bone transforms"},
        {withWord(sorted, clusterCount, 1000),
         "offset " + std::to_string(clusterCount * 4 + 4) +
             ": mesh 0: the count is 1000, each takes 32 bytes, 32 bytes are left"},
    };
    for (const auto& [file, fault] : cases) EXPECT_EQ(readDts(file).error(), fault);
}

TEST(Readers, BytesThatBelongToNothingAreTold) {
    const std::string empty = dts(Shape());
    std::string surplus;
    readDts(empty + "xyz", &surplus);
    EXPECT_EQ(surplus, "offset 269: 3 bytes too many at the end of the file");
    // A word more at the end of the 32-bit block.
    std::string longBlock = withWord(withWord(withWord(empty, 1, 62), 2, 48), 3, 57);
    longBlock.insert(204, 4, '\0');
    readDts(longBlock, &surplus);
    EXPECT_EQ(surplus, "offset 204: 4 bytes too many in the 32-bit block");
    readDsq(dsq(Shape()) + "x", &surplus);
    EXPECT_EQ(surplus, "offset 52: 1 bytes too many at the end of the file");
    // A material list of an unknown version isn't read.
    EXPECT_EQ(readDts(empty.substr(0, 264) + "\2").error(), "");
}

}  // namespace
}  // namespace marrowfen
