#include "cli/terminal_text.h"

#include <gtest/gtest.h>

namespace marrowfen::cli {

TEST(TerminalText, HoldsNothingThatATerminalObeys) {
    struct Case {
        std::string_view text, shown;
    };
    using namespace std::string_view_literals;
    for (const Case& c : {
             Case{"plain \\ \xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80", "plain \\ \xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80"},
             Case{"a\nb\r\tc\0d"sv, "a\\nb\\r\\tc\\x00d"},
             Case{"\x1B[2J\x07\x7F", "\\x1B[2J\\x07\\x7F"},
             Case{"\xC2\x9B"
                  "1m \xE2\x80\xAE\xE2\x81\xA6 \xEF\xBB\xBF",
                  "\\u{9B}1m \\u{202E}\\u{2066} \\u{FEFF}"},
             Case{"\xC0\x8A \xE2\x80 \xED\xA0\x80 \xFF \x9B", "\\xC0\\x8A \\xE2\\x80 \\xED\\xA0\\x80 \\xFF \\x9B"},
             Case{"\xF4\x90\x80\x80 \xF0\x9F", "\\xF4\\x90\\x80\\x80 \\xF0\\x9F"},
         }) {
        EXPECT_EQ(forTerminal(c.text), c.shown);
    }
    EXPECT_EQ(forTerminal("a\n\tb\x1B", true), "a\n\tb\\x1B");
}

}  // namespace marrowfen::cli
