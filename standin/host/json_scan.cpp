#include "standin/host/json_scan.h"

#include <array>
#include <bit>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>
#include <string>
#include <system_error>

// One pass that copies nothing but texts; of a key that comes again and again there is one.

namespace marrowfen::standin {

namespace {

constexpr size_t kMostWholeDigits = 18;      // any such number fits 64 bits
constexpr uint64_t kMostExact = 1ull << 53;  // whole numbers up to here are doubles
constexpr std::array kTens = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8, 1e9,
                              1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18};  // doubles too

bool isDigit(char c) { return c >= '0' && c <= '9'; }

class Scanner {
public:
    Scanner(const std::string& text, JsonDocument& into) : text_(text), document_(into) {}

    bool scan() {
        if (!takeValue()) return false;
        while (!open_.empty()) {
            const bool isObject = document_.values[open_.back()].kind == JsonValue::Object;
            if (skipBlanks() == (isObject ? '}' : ']')) {
                close();
                continue;
            }
            if (!isFirst_ && !takeMark(',')) return false;
            if (isObject && !takeKey()) return false;
            if (!takeValue()) return false;
        }
        skipBlanks();
        return at_ == text_.size();
    }

private:
    static constexpr size_t kKeySlots = 64;

    const std::string& text_;
    JsonDocument& document_;
    size_t at_ = 0;  // never beyond the zero behind the text
    std::string unescaped_;
    std::vector<uint32_t> open_;  // the Arrays and Objects around the next value
    bool isFirst_ = false;        // nothing is in the last one yet
    uint32_t key_ = 0;
    std::array<uint32_t, kKeySlots> knownKeys_{};  // 1 + index into texts

    char here() const { return text_[at_]; }
    std::string_view since(size_t begin) const { return std::string_view(text_).substr(begin, at_ - begin); }

    char skipBlanks() {
        while (here() == ' ' || here() == '\n' || here() == '\t' || here() == '\r') ++at_;
        return here();
    }

    bool takeMark(char mark) {
        if (skipBlanks() != mark) return false;
        ++at_;
        return true;
    }

    JsonValue& add(JsonValue::Kind kind) {
        if (!open_.empty()) ++document_.values[open_.back()].count;
        isFirst_ = false;
        JsonValue& value = document_.values.emplace_back();
        value.kind = kind;
        value.key = key_;
        value.end = static_cast<uint32_t>(document_.values.size());
        return value;
    }

    bool takeValue() {
        switch (skipBlanks()) {
            case '{':
                return open(JsonValue::Object);
            case '[':
                return open(JsonValue::Array);
            case '"': {
                std::string_view text;
                if (!takeText(text)) return false;
                add(JsonValue::Text).text = keep(text);
                return true;
            }
            case 't':
                return takeWord("true") && addFlag(true);
            case 'f':
                return takeWord("false") && addFlag(false);
            case 'n':
                if (!takeWord("null")) return false;
                add(JsonValue::Null);
                return true;
            default:
                return takeNumber();
        }
    }

    bool addFlag(bool flag) {
        add(JsonValue::Flag).flag = flag;
        return true;
    }

    bool open(JsonValue::Kind kind) {
        if (open_.size() == kDeepestJson) return false;
        add(kind);
        open_.push_back(static_cast<uint32_t>(document_.values.size() - 1));
        isFirst_ = true;
        ++at_;
        return true;
    }

    void close() {
        document_.values[open_.back()].end = static_cast<uint32_t>(document_.values.size());
        open_.pop_back();
        isFirst_ = false;
        ++at_;
    }

    bool takeWord(std::string_view word) {
        if (text_.compare(at_, word.size(), word) != 0) return false;
        at_ += word.size();
        return true;
    }

    uint32_t keep(std::string_view text) {
        document_.texts.emplace_back(text);
        return static_cast<uint32_t>(document_.texts.size() - 1);
    }

    bool takeKey() {
        std::string_view text;
        if (skipBlanks() != '"' || !takeText(text) || !takeMark(':')) return false;
        const auto letter = [&](size_t i) { return text.empty() ? 0U : static_cast<unsigned char>(text[i]); };
        uint32_t& known = knownKeys_[(letter(0) + 31 * letter(text.size() - 1) + 7 * text.size()) % kKeySlots];
        if (known == 0 || document_.texts[known - 1] != text) known = keep(text) + 1;
        key_ = known - 1;
        return true;
    }

    // Valid until the next one.
    bool takeText(std::string_view& into) {
        const size_t begin = at_++;
        const auto isPlain = [](char c) { return c >= ' ' && c < '\x7F' && c != '"' && c != '\\'; };
        while (isPlain(here())) ++at_;
        if (here() != '"') return takeOtherText(begin, into);
        into = since(begin + 1);
        ++at_;
        return true;
    }

    // Escapes and bytes of UTF-8 are the library's.
    bool takeOtherText(size_t begin, std::string_view& into) {
        while (at_ < text_.size() && here() != '"') at_ += here() == '\\' ? 2 : 1;
        if (at_ >= text_.size()) return false;
        ++at_;
        const std::string_view quoted = since(begin);
        const auto parsed = nlohmann::json::parse(quoted.begin(), quoted.end(), nullptr, false);
        if (!parsed.is_string()) return false;
        into = unescaped_ = parsed.get_ref<const std::string&>();
        return true;
    }

    // Adds the digits from here on to a number.
    size_t takeDigits(uint64_t& number) {
        const size_t begin = at_;
        for (; isDigit(here()); ++at_) number = 10 * number + static_cast<uint64_t>(here() - '0');
        return at_ - begin;
    }

    bool takeNumber() {
        const size_t begin = at_;
        const bool isNegative = here() == '-';
        at_ += isNegative ? 1 : 0;
        const bool isZeroFirst = here() == '0';
        uint64_t digits = 0;
        const size_t whole = takeDigits(digits);
        if (whole == 0 || (whole > 1 && isZeroFirst)) return false;
        const bool hasPoint = here() == '.';
        if (!hasPoint && !isExponent()) return whole <= kMostWholeDigits && addWhole(digits, isNegative);
        at_ += hasPoint ? 1 : 0;
        const size_t behindPoint = takeDigits(digits);
        if (hasPoint && behindPoint == 0) return false;
        if (isExponent() || whole + behindPoint > kMostWholeDigits || digits > kMostExact) return takeLongNumber(begin);
        // Of two doubles that are exact, the quotient is rounded once.
        const double number = static_cast<double>(digits) / kTens[behindPoint];
        return addNumber(isNegative ? -number : number, since(begin));
    }

    bool isExponent() const { return here() == 'e' || here() == 'E'; }

    // From behind its digits on.
    bool takeLongNumber(size_t begin) {
        if (isExponent()) {
            ++at_;
            at_ += here() == '+' || here() == '-' ? 1 : 0;
            uint64_t exponent = 0;
            if (takeDigits(exponent) == 0) return false;
        }
        double number = 0;
        const auto result = std::from_chars(text_.data() + begin, text_.data() + at_, number);
        return result.ec == std::errc{} && addNumber(number, since(begin));
    }

    bool addWhole(uint64_t digits, bool isNegative) {
        const auto number = static_cast<int64_t>(digits) * (isNegative ? -1 : 1);
        JsonValue& value = add(JsonValue::Number);
        value.number = static_cast<double>(number);
        value.single = static_cast<float>(number);
        return true;
    }

    bool addNumber(double number, std::string_view digits) {
        JsonValue& value = add(JsonValue::Number);
        value.number = number;
        value.single = singleFromDigits(digits, number);
        return true;
    }
};

}  // namespace

bool scanJson(const std::string& text, JsonDocument& into) { return Scanner(text, into).scan(); }

float singleFromDigits(std::string_view digits, double number) {
    // What lies between two floats, but not in their middle, has the same neighbour as the digits it was rounded from.
    constexpr uint64_t kMiddle = 1ull << 28, kBelowFloat = 2 * kMiddle - 1;
    const double size = std::fabs(number);
    const bool isNormal = size >= FLT_MIN && size <= FLT_MAX;
    if (isNormal && (std::bit_cast<uint64_t>(number) & kBelowFloat) != kMiddle) return static_cast<float>(number);
    float single = 0;
    const std::from_chars_result result = std::from_chars(digits.data(), digits.data() + digits.size(), single);
    return result.ec == std::errc{} ? single : static_cast<float>(number);
}

}  // namespace marrowfen::standin
