#include "standin/host/json_reader.h"

#include <cmath>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "ground/comma_list.h"
#include "ground/near_word.h"

namespace marrowfen::standin {
namespace {

// Up to here, comparing all keys of an object with one another is cheaper than a set.
constexpr uint32_t kFewKeys = 16;

const char* kindWord(JsonValue::Kind kind) {
    switch (kind) {
        case JsonValue::Null:
            return "null";
        case JsonValue::Flag:
            return "true or false";
        case JsonValue::Number:
            return "a number";
        case JsonValue::Text:
            return "a text";
        case JsonValue::Array:
            return "an array";
        default:
            return "an object";
    }
}

}  // namespace

// Nothing after the first fault.
bool JsonReader::refuse(uint32_t index, JsonValue::Kind kind) {
    if (place_.ok()) place_.fail(std::string("expected ") + kindWord(kind) + ", found " + kindWord(at(index).kind));
    return false;
}

bool JsonReader::expectLength(uint32_t index, size_t length) {
    if (!expect(index, JsonValue::Array)) return false;
    if (at(index).count == length) return true;
    place_.fail("expected " + std::to_string(length) + " entries, found " + std::to_string(at(index).count));
    return false;
}

bool JsonReader::expectUniqueKeys(uint32_t index) {
    const JsonValue& object = at(index);
    std::unordered_set<std::string_view> seen;
    const auto isSeen = [&](uint32_t member, const std::string& key) {
        if (object.count > kFewKeys) return !seen.insert(key).second;
        for (uint32_t earlier = index + 1; earlier < member; earlier = at(earlier).end) {
            if (document_.keyOf(at(earlier)) == key) return true;
        }
        return false;
    };
    for (uint32_t member = index + 1; member < object.end; member = at(member).end) {
        const std::string& key = document_.keyOf(at(member));
        if (!isSeen(member, key)) continue;
        place_.fail("key " + jsonQuoted(key) + " is there twice");
        return false;
    }
    return true;
}

void JsonReader::read(uint32_t index, bool& into) {
    if (expect(index, JsonValue::Flag)) into = at(index).flag;
}

void JsonReader::read(uint32_t index, float& into) {
    if (!expect(index, JsonValue::Number)) return;
    if (std::isfinite(at(index).single)) {
        into = at(index).single;
    } else {
        place_.fail("number " + numberText(at(index).number) + " doesn't fit a 32-bit float");
    }
}

void JsonReader::read(uint32_t index, std::string& into) {
    if (expect(index, JsonValue::Text)) into = document_.textOf(at(index));
}

int32_t JsonReader::readWhole(uint32_t index, int32_t keep, WholeBounds bounds) {
    if (!expect(index, JsonValue::Number)) return keep;
    const double number = at(index).number;
    const bool fits = number >= bounds.lowest && number <= bounds.highest;
    if (fits && static_cast<int32_t>(number) == number) return static_cast<int32_t>(number);
    if (number != std::floor(number)) {
        place_.fail("number " + numberText(number) + " isn't whole");
    } else {
        place_.failOutside(number, bounds);
    }
    return keep;
}

void JsonReader::readType(uint32_t index, int32_t& into, std::span<const TypeWord> words) {
    if (!isText(index)) {
        read(index, into);
        return;
    }
    std::string known;
    for (const TypeWord& type : words) {
        if (document_.textOf(at(index)) == type.word) {
            into = type.code;
            return;
        }
        addToList(known, type.word);
    }
    place_.fail("unknown type " + jsonQuoted(document_.textOf(at(index))) + ", expected " + known +
                " or a whole number");
}

JsonRecord::JsonRecord(JsonReader& reader, uint32_t index)
    : reader_(reader),
      index_(index),
      readable_(reader.expect(index, JsonValue::Object) && reader.expectUniqueKeys(index)) {}

uint32_t JsonRecord::find(const char* key, bool isRequired) {
    if (!readable_) return kNone;
    if (knownCount_ < kMostKeys) known_[knownCount_++] = key;
    uint64_t bit = 1;
    for (uint32_t member = index_ + 1; member < reader_.at(index_).end; member = reader_.at(member).end) {
        if (reader_.document().keyOf(reader_.at(member)) == key) {
            asked_ |= bit;
            return member;
        }
        bit <<= 1;  // none is left beyond 64 members, where an unknown one is certain
    }
    if (isRequired) reader_.place().fail("key " + jsonQuoted(key) + " is missing");
    return kNone;
}

void JsonRecord::refuseUnknownKeys() {
    if (!readable_ || !reader_.place().ok()) return;
    uint64_t bit = 1;
    for (uint32_t member = index_ + 1; member < reader_.at(index_).end; member = reader_.at(member).end, bit <<= 1) {
        if (asked_ & bit) continue;
        const std::string& key = reader_.document().keyOf(reader_.at(member));
        const std::string guess(nearWord(key, {known_.begin(), known_.begin() + knownCount_}));
        reader_.place().fail("unknown key " + jsonQuoted(key) +
                             (guess.empty() ? "" : ", did you mean " + jsonQuoted(guess) + "?"));
        return;
    }
}

}  // namespace marrowfen::standin
