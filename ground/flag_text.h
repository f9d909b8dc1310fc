#pragma once

// The words that text output has for flags.

#include <cstddef>
#include <cstdint>
#include <string>

namespace marrowfen {

struct FlagWord {
    uint32_t bit;
    const char* word;
};

// "( word word )" for the bits that are set, in the order of the table; a bit without a word says nothing.
template <size_t N>
std::string flagsText(uint32_t flags, const FlagWord (&words)[N]) {
    std::string text = "( ";
    for (const auto& [bit, word] : words) {
        if ((flags & bit) != 0) text.append(word).append(" ");
    }
    return text + ")";
}

}  // namespace marrowfen
