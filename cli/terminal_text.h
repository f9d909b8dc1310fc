#pragma once

#include <string>
#include <string_view>

namespace marrowfen::cli {

// A text with nothing in it that a terminal acts on, and that shows what it is: control characters, marks that turn
// the direction of writing or have no width, and bytes that aren't UTF-8 become \n, \x1B or \u{202E}. A backslash is
// left as it is. keepsLines: line feeds and tabs stay.
std::string forTerminal(std::string_view text, bool keepsLines = false);

}  // namespace marrowfen::cli
