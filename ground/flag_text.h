#pragma once

// The words that text output has for flags.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace marrowfen {

struct FlagWord {
    uint32_t bit;
    const char* word;
};

// The words of the bits that are set, in the order of the table; a bit without a word says nothing.
template <size_t N>
std::vector<std::string> flagWords(uint32_t flags, const FlagWord (&words)[N]) {
    std::vector<std::string> found;
    for (const auto& [bit, word] : words) {
        if ((flags & bit) != 0) found.emplace_back(word);
    }
    return found;
}

// "( word word )"
template <size_t N>
std::string flagsText(uint32_t flags, const FlagWord (&words)[N]) {
    std::string text = "( ";
    for (const std::string& word : flagWords(flags, words)) text += word + " ";
    return text + ")";
}

}  // namespace marrowfen
