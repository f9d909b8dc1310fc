#include "cli/terminal_text.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>

namespace marrowfen::cli {

namespace {

struct Range {
    uint32_t first, last;
};

// Code points that are obeyed, or not seen.
constexpr Range kUnshown[] = {
    {0x00, 0x1F},     {0x7F, 0x9F},     {0xAD, 0xAD},     {0x61C, 0x61C},   {0x180E, 0x180E},   {0x200B, 0x200F},
    {0x2028, 0x202E}, {0x2060, 0x206F}, {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB}, {0xE0000, 0xE0FFF},
};

bool isUnshown(uint32_t code) {
    return std::any_of(std::begin(kUnshown), std::end(kUnshown),
                       [code](const Range& range) { return code >= range.first && code <= range.last; });
}

// The character of UTF-8 at the beginning, and how many bytes it has: 0 for none.
size_t readCharacter(std::string_view text, uint32_t& code) {
    constexpr uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};  // by size: others could be said shorter
    const auto lead = static_cast<unsigned char>(text[0]);
    const size_t size = lead < 0x80 ? 1 : lead >> 5 == 0x6 ? 2 : lead >> 4 == 0xE ? 3 : lead >> 3 == 0x1E ? 4 : 0;
    if (size == 0 || size > text.size()) return 0;
    code = size == 1 ? lead : lead & (0x7FU >> size);
    for (size_t i = 1; i < size; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0) != 0x80) return 0;
        code = code << 6 | (next & 0x3FU);
    }
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    return code < kSmallest[size] || code > 0x10FFFF || isSurrogate ? 0 : size;
}

std::string escaped(uint32_t code, bool isByte) {
    if (code == '\n') return "\\n";
    if (code == '\r') return "\\r";
    if (code == '\t') return "\\t";
    char text[16];
    std::snprintf(text, sizeof text, isByte || code < 0x80 ? "\\x%02X" : "\\u{%X}", static_cast<unsigned>(code));
    return text;
}

}  // namespace

std::string forTerminal(std::string_view text, bool keepsLines) {
    std::string shown;
    while (!text.empty()) {
        uint32_t code = 0;
        const size_t size = readCharacter(text, code);
        const bool isKept = keepsLines && (code == '\n' || code == '\t');
        if (size == 0) {
            shown += escaped(static_cast<unsigned char>(text[0]), true);
        } else if (isUnshown(code) && !isKept) {
            shown += escaped(code, false);
        } else {
            shown += text.substr(0, size);
        }
        text.remove_prefix(std::max(size, size_t{1}));
    }
    return shown;
}

}  // namespace marrowfen::cli
