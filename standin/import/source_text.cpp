#include <algorithm>
#include <string_view>

#include "standin/import/source_model.h"

namespace marrowfen::standin {

namespace {

// The length of the UTF-8 sequence at the start of text, 0 if it isn't one.
size_t sequenceLength(std::string_view text) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const size_t length = byte(0) < 0x80 ? 1 : byte(0) >= 0xF0 ? 4 : byte(0) >= 0xE0 ? 3 : 2;
    if (length == 1) return 1;
    if (byte(0) < 0xC2 || byte(0) > 0xF4 || length > text.size()) return 0;
    for (size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return 0;
    }
    // Overlong forms, surrogates, and what lies beyond Unicode differ in the second byte.
    const unsigned char second = byte(1);
    if ((byte(0) == 0xE0 && second < 0xA0) || (byte(0) == 0xED && second > 0x9F) ||
        (byte(0) == 0xF0 && second < 0x90) || (byte(0) == 0xF4 && second > 0x8F)) {
        return 0;
    }
    return length;
}

}  // namespace

std::string cleanText(std::string_view rest) {
    std::string result;
    while (!rest.empty()) {
        const size_t length = sequenceLength(rest);
        const auto first = static_cast<unsigned char>(rest[0]);
        if (length == 0) {
            result += '?';
        } else if (first < 0x20 || first == 0x7F) {
            result += '_';
        } else {
            result += rest.substr(0, length);
        }
        rest.remove_prefix(std::max<size_t>(length, 1));
    }
    return result;
}

std::string madeUpNumber(std::string_view name) {
    constexpr std::string_view kBegin = "nodes";
    if (!name.starts_with(kBegin) || name.size() < kBegin.size() + 2) return {};
    const bool isBracket = name[kBegin.size()] == '[' && name.back() == ']';
    if (!isBracket && name[kBegin.size()] != '_') return {};
    name.remove_prefix(kBegin.size() + 1);
    if (isBracket) name.remove_suffix(1);
    return name.find_first_not_of("0123456789") == std::string_view::npos ? std::string(name) : std::string();
}

}  // namespace marrowfen::standin
