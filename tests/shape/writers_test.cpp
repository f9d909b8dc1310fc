#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdlib>

#include "ground/byte_stream.h"
#include "tests/files.h"
#include "tests/shape/written.h"

// What the files of every record and the format pages don't show.

namespace marrowfen {
namespace {

TEST(Writers, QuaternionComponentsAreCutToWholeNumbers) {
    const std::pair<float, int> cases[] = {
        {0, 0},          {1, 32767}, {-1, -32767},         {0.99999F, 32766}, {0.5F, 16383},
        {-0.5F, -16383}, {2, 32767}, {-HUGE_VALF, -32767}, {std::nanf(""), 0}};
    for (const auto& [value, packed] : cases) EXPECT_EQ(packQuaternionComponent(value), packed) << value;
    // What a reader unpacks is packed to the same number again.
    for (int n = -32767; n <= 32767; ++n) {
        ASSERT_EQ(packQuaternionComponent(static_cast<float>(n) / 32767.0F), n);
    }
}

TEST(Writers, DebugListingGoesToTheFolderThatStandsForDriveC) {
    const test::TestFolder drive;
    Shape shape;
    shape.nodeTranslations = {{1, -2.5F, 1e-7F}, {0.1F, -0.0F, -FLT_MAX}, {std::nanf(""), -std::nanf(""), -HUGE_VALF}};
    setenv("MARROWFEN_DRIVE_C", drive.folder.c_str(), 1);
    const std::string withListing = dsq(shape);
    EXPECT_EQ(test::readFile(drive.folder / "temp.txt"),
              "0: 1.000000 -2.500000 0.000000\r\n"
              "1: 0.100000 -0.000000 -340282346638528859811704183484516925440.000000\r\n"
              "2: nan nan -inf\r\n");
    setenv("MARROWFEN_DRIVE_C", "/nowhere/at/all", 1);
    EXPECT_EQ(dsq(shape), withListing);
    unsetenv("MARROWFEN_DRIVE_C");
    EXPECT_EQ(dsq(shape), withListing);
}

}  // namespace
}  // namespace marrowfen
