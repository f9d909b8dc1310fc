#include "ground/crlf_stream.h"

#include <sstream>

#include "tests/files.h"

namespace marrowfen {
namespace {

TEST(CrLfStream, EveryLineFeedGetsACarriageReturn) {
    std::stringbuf bytes;
    CrLfBuffer buffer(bytes);
    std::ostream out(&buffer);
    out << "one" << std::endl
        << std::endl
        << "a\nb\n"
        << '\n'
        << 2.5F << "\r\n"
        << "open";
    EXPECT_EQ(bytes.str(), "one\r\n\r\na\r\nb\r\n\r\n2.5\r\r\nopen");
    EXPECT_TRUE(out.good());
}

TEST(CrLfStream, FileIsOnDiskAtEachEndOfLineAndReplacesAnOlderOne) {
    const std::string path = testing::TempDir() + "crlf_stream_test.txt";
    std::ofstream(path) << "a longer text that was here before";
    CrLfFile file(path);
    file << "line" << std::endl << "rest";
    EXPECT_EQ(test::readFile(path), "line\r\n");
    file.close();
    EXPECT_TRUE(file.good());
    EXPECT_EQ(test::readFile(path), "line\r\nrest");
}

}  // namespace
}  // namespace marrowfen
