#include "fuzz/damage.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

#include "ground/byte_order.h"

namespace marrowfen::fuzz {

namespace {

constexpr size_t kDepth = 100000;
constexpr uint32_t kMostCounted = 1 << 16;  // a larger word is no count, offset or index of a small file
constexpr uint32_t kNone = 0xFFFFFFFF;

// Beside one more than it is, which comes first in both lists.
constexpr uint32_t kCounts[] = {0, 0x7FFFFFFF, 0xFFFFFFFF};
constexpr uint32_t kNumbers[] = {0x7FC00000, 0x7F800000, 0x60AD78EC};  // NaN, infinity, 1e20

std::string repeated(const char* text) {
    std::string result;
    for (size_t i = 0; i < kDepth; ++i) result += text;
    return result;
}

// What a token of a text becomes; the first is one more than a number, and of a word its second half.
const std::vector<std::string>& tokens() {
    static const std::vector<std::string> kTokens = {
        "",
        "",
        "0",
        "-1",
        "2147483647",
        "4294967296",
        "1e999",
        "-1e20",
        "nan",
        "0.5",
        "null",
        "true",
        "\"text\"",
        "\"\xFF\xC0 \\u0000\"",
        "[]",
        "{}",
        "[[1, 2], [3, 4]]",
        "{\"a\": 1, \"a\": 2}",
        repeated("["),
        repeated("{\"children\":[{\"type\":\"group\",\"children\":["),
        "\"" + std::string(10000, 'x') + "\"",
    };
    return kTokens;
}

bool isBlank(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }
bool isPlain(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '-' || c == '+' || c == '.'; }

std::string oneMore(const std::string& token) {
    char* end = nullptr;
    const long number = std::strtol(token.c_str(), &end, 10);
    return end != token.c_str() && *end == '\0' ? std::to_string(number + 1) : token.substr(token.size() / 2);
}

}  // namespace

Damages::Damages(std::string seed) : seed_(std::move(seed)) {
    const std::string head = seed_.substr(0, 1024);
    if (isGlb()) {
        addTokensOfJson(20, std::min<size_t>(seed_.size(), 20 + get32(&seed_[12])));
        addWords();
    } else if (head.find('\0') != std::string::npos) {
        addWords();
    } else if (const size_t first = head.find_first_not_of(" \t\r\n"); first < head.size() && head[first] == '{') {
        addTokensOfJson(0, seed_.size());
    } else {
        addTokensOfText();
    }
}

bool Damages::isGlb() const { return seed_.size() > 20 && seed_.starts_with("glTF"); }

// Sequence files and most others don't keep words at whole numbers of words.
void Damages::addWords() {
    for (uint32_t at = 0; at + 4 <= seed_.size(); ++at) {
        const uint32_t word = get32(&seed_[at]);
        const bool isCount = word <= kMostCounted || word == kNone;
        if (at % 4 != 0 && (!isCount || word == 0)) continue;
        for (uint8_t i = 0; i < 4; ++i) changes_.push_back({at, 4, Change::Word, i});
        const uint16_t half = get16(&seed_[at]);
        if (at % 2 != 0 || half > 0xFFF) continue;
        for (uint8_t i = 0; i < 4; ++i) changes_.push_back({at, 2, Change::Half, i});
    }
}

void Damages::addToken(size_t at, size_t length) {
    for (size_t i = 0; i < tokens().size(); ++i) {
        changes_.push_back(
            {static_cast<uint32_t>(at), static_cast<uint32_t>(length), Change::Token, static_cast<uint8_t>(i)});
    }
}

void Damages::addTokensOfJson(size_t begin, size_t end) {
    for (size_t at = begin; at < end;) {
        size_t next = at + 1;
        if (seed_[at] == '"') {
            while (next < end && seed_[next] != '"') next += seed_[next] == '\\' ? 2 : 1;
            next = std::min(next + 1, end);
        } else {
            while (isPlain(seed_[at]) && next < end && isPlain(seed_[next])) ++next;
        }
        if (!isBlank(seed_[at])) addToken(at, next - at);
        at = next;
    }
}

void Damages::addTokensOfText() {
    for (size_t at = 0; at < seed_.size();) {
        size_t next = at + 1;
        while (isPlain(seed_[at]) && next < seed_.size() && isPlain(seed_[next])) ++next;
        if (!isBlank(seed_[at])) addToken(at, next - at);
        at = next;
    }
}

std::string Damages::insteadOf(const Change& change) const {
    const std::string old = seed_.substr(change.at, change.length);
    if (change.kind == Change::Token) return change.instead == 1 ? oneMore(old) : tokens()[change.instead];
    std::string bytes;
    if (change.kind == Change::Half) {
        const uint16_t half = get16(old.data());
        const uint16_t list[] = {static_cast<uint16_t>(half + 1), 0, 0x7FFF, 0xFFFF};
        put16(bytes, list[change.instead]);
        return bytes;
    }
    const uint32_t word = get32(old.data());
    const bool isCount = word <= kMostCounted || word == kNone;
    const auto& list = isCount ? kCounts : kNumbers;
    put32(bytes, change.instead == 0 ? word + 1 : list[change.instead - 1]);
    return bytes;
}

std::string Damages::change(size_t number) const {
    const Change& change = changes_[number];
    const std::string instead = insteadOf(change);
    std::string file = seed_.substr(0, change.at) + instead + seed_.substr(change.at + change.length);
    if (!isGlb() || change.kind != Change::Token) return file;
    // The lengths of the file and of its first chunk go with the text.
    const size_t grown = file.size() - seed_.size();
    for (const size_t place : {size_t{8}, size_t{12}}) {
        std::string length;
        put32(length, get32(&seed_[place]) + static_cast<uint32_t>(grown));
        file.replace(place, 4, length);
    }
    return file;
}

}  // namespace marrowfen::fuzz
