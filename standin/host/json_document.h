#pragma once

// A JSON text as one flat list of values. A tree of values as nlohmann-json has it doesn't serve a scene file: it drops
// all but one of a doubled key without a word, keeps a number as a double, which rounds a 32-bit float twice, and its
// keys in alphabetical order, where materials and clips' nodes have that of the file. The list also costs few
// allocations, and no depth of nesting costs stack.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace marrowfen::standin {

// Arrays and objects around a value: deep enough for any scene; a limit because readers work recursively.
inline constexpr size_t kDeepestJson = 4096;

struct JsonValue {
    enum Kind : uint8_t { Null, Flag, Number, Text, Array, Object };

    double number = 0;  // of a Number
    union {
        float single;        // of a Number: rounded once from its decimal digits, infinite when it is too large
        uint32_t text;       // of a Text: index into JsonDocument::texts
        uint32_t count = 0;  // of an Array or Object: its entries
    };
    uint32_t key = 0;  // of an object's member: its key, index into JsonDocument::texts
    uint32_t end = 0;  // index past this value and everything in it
    Kind kind = Null;
    bool flag = false;  // of a Flag
};

static_assert(sizeof(JsonValue) == 24);  // most of what a large file takes

struct JsonDocument {
    // In the order of the text: the first is the whole text; an Array or Object stands before its entries.
    std::vector<JsonValue> values;
    std::vector<std::string> texts;  // a key that comes again may be there once

    const std::string& textOf(const JsonValue& value) const { return texts[value.text]; }
    const std::string& keyOf(const JsonValue& value) const { return texts[value.key]; }
};

// Empty on success; else "line:column: what is wrong". Columns are bytes.
std::string parseJson(const std::string& text, JsonDocument& into);

// The value with the given index as compact JSON text.
std::string jsonText(const JsonDocument& document, uint32_t index);

// Text in double quotes, escaped as JSON wants it; bytes that aren't UTF-8 become U+FFFD.
std::string jsonQuoted(const std::string& text);

// The shortest decimal text that reads back to the same bits. JSON has no text for a number that isn't finite: null.
std::string numberText(float number);
std::string numberText(double number);

}  // namespace marrowfen::standin
