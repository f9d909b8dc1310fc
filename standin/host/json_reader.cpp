#include "standin/host/json_reader.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace marrowfen::standin {
namespace {

// Up to here, comparing all keys of an object with one another is cheaper than a set.
constexpr uint32_t kFewKeys = 16;

// A key that is further from every known one isn't meant to be any of them.
constexpr size_t kFarthestGuess = 2;

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

// Letters to add, drop or change to make one word of the other.
size_t editDistance(const std::string& a, const std::string& b) {
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t changed = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({changed, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row[b.size()];
}

// The known key that is nearest to this one, null if none is near.
const char* nearestKey(const std::string& key, std::span<const char* const> known) {
    const char* nearest = nullptr;
    size_t distance = std::min(kFarthestGuess, key.size() / 2) + 1;
    for (const char* candidate : known) {
        const std::string word = candidate;
        if (key.size() > word.size() + kFarthestGuess) continue;
        const size_t candidateDistance = editDistance(key, word);
        if (candidateDistance < distance) {
            nearest = candidate;
            distance = candidateDistance;
        }
    }
    return nearest;
}

}  // namespace

bool JsonReader::expect(uint32_t index, JsonValue::Kind kind) {
    if (!place_.ok()) return false;
    if (at(index).kind == kind) return true;
    place_.fail(std::string("expected ") + kindWord(kind) + ", found " + kindWord(at(index).kind));
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
    if (number != std::floor(number)) {
        place_.fail("number " + numberText(number) + " isn't whole");
        return keep;
    }
    if (number < bounds.lowest || number > bounds.highest) {
        place_.failOutside(number, bounds);
        return keep;
    }
    return static_cast<int32_t>(number);
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
        known += (known.empty() ? "" : ", ") + std::string(type.word);
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
        const char* guess = nearestKey(key, {known_.data(), knownCount_});
        reader_.place().fail("unknown key " + jsonQuoted(key) +
                             (guess ? ", did you mean " + jsonQuoted(guess) + "?" : ""));
        return;
    }
}

}  // namespace marrowfen::standin
