// One of every record, with a value of its own in every field, as it is printed and as it stands in files. The texts
// beside this test are for a person to review.

#include <algorithm>
#include <cmath>

#include "ground/byte_order.h"
#include "tests/files.h"
#include "tests/shape/every_record.h"
#include "tests/shape/written.h"

namespace marrowfen {

namespace {

// A word as what it looks like: letters, a whole number, a float, or bits.
std::string shown(const std::string& bytes, uint32_t word) {
    const auto isLetter = [](unsigned char c) { return c >= 'A' && c <= 'z'; };
    if (bytes.size() != 2 && std::all_of(bytes.begin(), bytes.end(), isLetter)) return bytes;
    const auto number = static_cast<int32_t>(word);
    const float real = floatFromBits(word);
    std::ostringstream out;
    if (number > -1000000 && number < 1000000) {
        out << number;
    } else if (std::abs(real) > 1e-3F && std::abs(real) < 1e7F) {
        out << real << 'f';
    } else {
        out << "0x" << std::hex << word;
    }
    return out.str();
}

// Words of so many bytes, ten a line.
std::string listing(const std::string& title, const std::string& bytes, size_t width = 4) {
    std::string text = title;
    size_t i = 0;
    for (const uint32_t word : wordsOf(bytes, width)) {
        text += (i % 10 == 0 ? "\n    " : " ") + shown(bytes.substr(width * i, width), word);
        ++i;
    }
    return text + "\n";
}

const std::filesystem::path kFolder = MARROWFEN_SOURCE_DIR "/tests/shape";

TEST(EveryRecord, IsPrinted) { test::expectReviewed(kFolder / "every_record.txt", dumpOf(everyRecord())); }

std::string listingOfDts(const Shape& shape) {
    const std::string file = dts(shape);
    const std::vector<uint32_t> header = wordsOf(file.substr(0, 16));
    const auto part = [&](uint32_t begin, uint32_t end) { return file.substr(16 + begin * 4, (end - begin) * 4); };
    return listing("header", file.substr(0, 16)) + listing("32-bit block", part(0, header[2])) +
           listing("16-bit block", part(header[2], header[3]), 2) +
           listing("8-bit block", part(header[3], header[1]), 1) +
           listing("sequences and materials", file.substr(16 + header[1] * 4), 1);
}

TEST(EveryRecord, StandsInADtsFile) {
    test::expectReviewed(kFolder / "every_record.dts.txt", listingOfDts(everyRecord()));
}

TEST(EveryRecord, BeginsWithoutAnything) {
    test::expectReviewed(kFolder / "new_records.dts.txt", listingOfDts(newRecords()));
}

TEST(EveryRecord, StandsInADsqFile) {
    test::expectReviewed(kFolder / "every_record.dsq.txt", listing("words", dsq(everyRecord())));
}

TEST(EveryRecord, SequencesMayStayOutOfADtsFile) {
    Shape without = everyRecord();
    without.sequences.clear();
    EXPECT_EQ(dts(everyRecord(), false), dts(without));
}

// The text between two texts.
std::string between(const std::string& text, const std::string& before, const std::string& after) {
    const size_t begin = text.find(before) + before.size();
    return text.substr(begin, text.find(after, begin) - begin);
}

TEST(MeshDump, OddTypesAndFlags) {
    Shape shape;
    Mesh& mesh = shape.meshes.emplace_back(MeshType{7});
    mesh.primitives = {{0, 0, 0xD0000000}, {0, 0, 0x20000001}, {0, 0, 0xFFFFFFFF}};
    std::string text = dumpOf(shape);
    std::erase(text, '\t');
    EXPECT_EQ(between(text, "\nmesh\n", "numFrames"), "{\ntype = \n");
    EXPECT_EQ(between(text, "\nflags = ", "\n"), "( )");
    EXPECT_EQ(between(text, "numElements = 0\ntype = ", "\n"), "( strip fan nomaterial )");
    EXPECT_NE(text.find("type = ( triangles indexed )\nmaterial = 1\n"), std::string::npos);
    EXPECT_NE(text.find("material = 268435455\n"), std::string::npos);
}

}  // namespace
}  // namespace marrowfen
