// Files with anything in every table, as no exporter fills them: what is read of them is written, and reads back whole.

#include <gtest/gtest.h>

#include "tests/plain/mesh_makers.h"
#include "tests/shape/every_record.h"
#include "tests/shape/written.h"

namespace marrowfen {
namespace {

void expectReadsBack(const std::string& file, bool isDts) {
    const auto read = [&](const std::string& bytes) { return isDts ? readDts(bytes) : readDsq(bytes); };
    const auto written = [&](const Shape& shape) { return isDts ? dts(shape) : dsq(shape); };
    const Shape shape = read(file), back = read(written(shape));
    ASSERT_EQ(shape.error() + back.error(), "");
    ASSERT_EQ(dumpOf(back), dumpOf(shape));
    ASSERT_TRUE(written(back) == written(shape));
}

TEST(ChangedFiles, AreReadAsWhatIsWrittenOfThem) {
    std::mt19937 random(1);
    int read = 0;
    for (uint32_t i = 0; i < makers::rounds(4000); ++i) {
        for (const Shape& shape : {everyRecord(), newRecords()}) {
            const std::string file = changed(dts(shape), random), sequences = changed(dsq(shape), random);
            SCOPED_TRACE(i);
            if (!readDts(file).hasError()) expectReadsBack(file, true), ++read;
            if (!readDsq(sequences).hasError()) expectReadsBack(sequences, false), ++read;
            if (HasFatalFailure()) return;
        }
    }
    EXPECT_GT(read, 1000) << "files that can still be read";
}

}  // namespace
}  // namespace marrowfen
