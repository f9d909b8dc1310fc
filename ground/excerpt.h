#pragma once

#include <string>
#include <string_view>

namespace marrowfen {

// As many bytes of a name as a person reads. What is shown of names that are shared, or stand in many messages, would
// grow with the product of their length and their number.
inline constexpr size_t kMostShown = 255;

// A text as it is, or its beginning, whole characters of UTF-8, with "..." behind it.
inline std::string excerpt(std::string_view text, size_t most = kMostShown) {
    constexpr auto isInsideCharacter = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; };
    if (text.size() <= most) return std::string(text);
    size_t end = most;
    while (end > most - 4 && isInsideCharacter(text[end])) --end;
    return std::string(text.substr(0, end)) + "...";
}

}  // namespace marrowfen
