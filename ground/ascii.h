#pragma once

// Letter case of ASCII text, whatever the locale.

#include <algorithm>
#include <string_view>

namespace marrowfen {

inline char lowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

inline bool equalIgnoringCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return lowerCase(x) == lowerCase(y); });
}

inline bool beginsWithIgnoringCase(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size() && equalIgnoringCase(text.substr(0, prefix.size()), prefix);
}

inline bool endsWithIgnoringCase(std::string_view text, std::string_view ending) {
    return text.size() >= ending.size() && equalIgnoringCase(text.substr(text.size() - ending.size()), ending);
}

}  // namespace marrowfen
