#include "standin/host/json_document.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>
#include <string_view>

#include "standin/host/json_scan.h"

// What scanJson() leaves goes to the parser of nlohmann-json, which has the words for what is wrong with a text. It
// reports what it meets, event by event, and keeps no stack of its own but one bit a level. An open Array or Object
// gets its count and end when it closes.

namespace marrowfen::standin {
namespace {

// A syntax error quotes what was read; a runaway string would quote the rest of the file.
constexpr size_t kLongestMessage = 240;

// Memory for more values is taken only as they come.
constexpr size_t kMostReserved = size_t{1} << 24;

class DocumentBuilder {
public:
    explicit DocumentBuilder(JsonDocument& into) : document(into) {}

    std::string error;
    size_t errorAt = 0;  // the number of bytes read; none for nesting that is too deep

    bool null() { return add(JsonValue::Null); }

    bool boolean(bool flag) {
        add(JsonValue::Flag);
        last().flag = flag;
        return true;
    }

    bool number_integer(int64_t number) { return addNumber(static_cast<double>(number), static_cast<float>(number)); }
    bool number_unsigned(uint64_t number) { return addNumber(static_cast<double>(number), static_cast<float>(number)); }

    bool number_float(double number, const std::string& digits) {
        return addNumber(number, singleFromDigits(digits, number));
    }

    bool string(std::string& text) {
        add(JsonValue::Text);
        last().text = keep(text);
        return true;
    }

    bool binary(std::vector<uint8_t>&) { return false; }  // never in JSON text

    bool key(std::string& text) {
        key_ = keep(text);
        return true;
    }

    bool start_object(size_t) { return open(JsonValue::Object); }
    bool start_array(size_t) { return open(JsonValue::Array); }
    bool end_object() { return close(); }
    bool end_array() { return close(); }

    bool parse_error(size_t at, const std::string&, const nlohmann::detail::exception& exception) {
        // The parser writes "[...] parse error at line L, column C: TEXT", and other errors as "[...] TEXT".
        std::string text = exception.what();
        text.erase(0, text.find("] ") + 2);
        if (text.starts_with("parse error at ")) text.erase(0, text.find(": ") + 2);
        if (text.size() > kLongestMessage) text = text.substr(0, kLongestMessage) + "...";
        error = text;
        errorAt = at;
        return false;
    }

private:
    JsonDocument& document;
    std::vector<uint32_t> open_;  // the Arrays and Objects around the next value
    uint32_t key_ = 0;

    JsonValue& last() { return document.values.back(); }

    uint32_t keep(std::string& text) {
        document.texts.push_back(std::move(text));
        return static_cast<uint32_t>(document.texts.size() - 1);
    }

    bool add(JsonValue::Kind kind) {
        if (!open_.empty()) ++document.values[open_.back()].count;
        JsonValue value;
        value.kind = kind;
        value.key = key_;
        value.end = static_cast<uint32_t>(document.values.size() + 1);
        document.values.push_back(value);
        return true;
    }

    bool addNumber(double number, float single) {
        add(JsonValue::Number);
        last().number = number;
        last().single = single;
        return true;
    }

    bool open(JsonValue::Kind kind) {
        if (open_.size() == kDeepestJson) {
            error = "arrays and objects are nested more than " + std::to_string(kDeepestJson) + " deep";
            return false;
        }
        add(kind);
        open_.push_back(static_cast<uint32_t>(document.values.size() - 1));
        return true;
    }

    bool close() {
        document.values[open_.back()].end = static_cast<uint32_t>(document.values.size());
        open_.pop_back();
        return true;
    }
};

// The number of bytes up to the bracket that opens one level too many.
size_t tooDeepAt(const std::string& text) {
    size_t depth = 0;
    bool isQuoted = false;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '"') isQuoted = !isQuoted;
        if (isQuoted) {
            if (text[i] == '\\') ++i;
            continue;
        }
        if (text[i] == ']' || text[i] == '}') --depth;
        if ((text[i] == '[' || text[i] == '{') && ++depth > kDeepestJson) return i + 1;
    }
    return text.size();
}

// "line:column" of the last of so many bytes.
std::string placeInText(const std::string& text, size_t bytes) {
    const std::string_view read = std::string_view(text).substr(0, bytes);
    const size_t lineEnd = read.rfind('\n');
    const size_t column = lineEnd == std::string_view::npos ? bytes : bytes - lineEnd - 1;
    return std::to_string(1 + std::count(read.begin(), read.end(), '\n')) + ":" + std::to_string(column);
}

template <class Float>
std::string shortestText(Float number) {
    if (!std::isfinite(number)) return "null";
    // A plain "-0" is a whole number to most readers, and whole numbers have no negative zero.
    if (number == 0 && std::signbit(number)) return "-0.0";
    char buffer[64];
    const std::to_chars_result result = std::to_chars(buffer, buffer + sizeof buffer, number);
    return {buffer, result.ptr};
}

}  // namespace

std::string parseJson(const std::string& text, JsonDocument& into) {
    // A value of a text takes two bytes at least, and most take six.
    into.values.reserve(std::min(text.size() / 5 + 1, kMostReserved));
    if (scanJson(text, into)) return {};
    into.values.clear();
    into.texts.clear();
    DocumentBuilder builder(into);
    if (nlohmann::json::sax_parse(text.begin(), text.end(), &builder)) return {};
    return placeInText(text, builder.errorAt > 0 ? builder.errorAt : tooDeepAt(text)) + ": " + builder.error;
}

std::string jsonText(const JsonDocument& document, uint32_t index) {
    const JsonValue& value = document.values[index];
    switch (value.kind) {
        case JsonValue::Null:
            return "null";
        case JsonValue::Flag:
            return value.flag ? "true" : "false";
        case JsonValue::Number:
            return numberText(value.number);
        case JsonValue::Text:
            return jsonQuoted(document.textOf(value));
        default:
            break;
    }

    const bool isObject = value.kind == JsonValue::Object;
    std::string text(1, isObject ? '{' : '[');
    for (uint32_t entry = index + 1; entry < value.end; entry = document.values[entry].end) {
        if (text.size() > 1) text += ", ";
        if (isObject) text += jsonQuoted(document.keyOf(document.values[entry])) + ": ";
        text += jsonText(document, entry);
    }
    return text + (isObject ? '}' : ']');
}

std::string jsonQuoted(const std::string& text) {
    return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string numberText(float number) { return shortestText(number); }
std::string numberText(double number) { return shortestText(number); }

}  // namespace marrowfen::standin
