#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace marrowfen {

// What stands between the separators; nothing behind one at the end. (A string stream would do the same, but keeps to
// itself that it got no memory, and ends early.)
inline std::vector<std::string> piecesOf(std::string_view text, char separator) {
    std::vector<std::string> pieces;
    while (!text.empty()) {
        const size_t end = std::min(text.find(separator), text.size());
        pieces.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return pieces;
}

}  // namespace marrowfen
