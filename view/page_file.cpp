#include "view/page_file.h"

#include <cstdint>

namespace marrowfen::view {

namespace {

// Where the page wants what it shows; view/page/index.html has each once.
constexpr std::string_view kTitlePlace = "%MARROWFEN_TITLE%";
constexpr std::string_view kModelPlace = "%MARROWFEN_MODEL%";

std::string escapeHtml(std::string_view text) {
    std::string out;
    for (const char c : text) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

std::string base64(std::string_view bytes) {
    constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    out.reserve((bytes.size() + 2) / 3 * 4);
    for (size_t i = 0; i < bytes.size(); i += 3) {
        uint32_t group = 0;
        for (size_t j = 0; j < 3; ++j) {
            group = group << 8 | (i + j < bytes.size() ? static_cast<unsigned char>(bytes[i + j]) : 0U);
        }
        for (size_t digit = 0; digit < 4; ++digit) {
            out += i + digit > bytes.size() ? '=' : kDigits[group >> (18 - 6 * digit) & 63];
        }
    }
    return out;
}

bool replaceOnce(std::string& text, std::string_view place, const std::string& with) {
    const size_t at = text.find(place);
    if (at == std::string::npos) return false;
    text.replace(at, place.size(), with);
    return true;
}

}  // namespace

std::string embedInPage(std::string_view page, std::string_view glb, std::string_view title) {
    std::string out(page);
    // The model first: a title may say anything, the model's digits can't be mistaken for a place.
    const bool whole = replaceOnce(out, kModelPlace, base64(glb)) && replaceOnce(out, kTitlePlace, escapeHtml(title));
    return whole ? out : std::string();
}

}  // namespace marrowfen::view
