#pragma once

// Typed getters over a JSON document. A getter checks kind, length and bounds, and a fault is recorded with the path of
// the value that has it; after a fault everything that is read keeps what it held.

#include <algorithm>
#include <array>
#include <concepts>
#include <cstdint>
#include <limits>
#include <span>
#include <string>

#include "standin/host/json_document.h"
#include "standin/host/scene_place.h"
#include "standin/host/scene_words.h"

namespace marrowfen::standin {

class JsonReader {
public:
    JsonReader(const JsonDocument& document, ScenePlace& place) : document_(document), place_(place) {}

    const JsonDocument& document() const { return document_; }
    ScenePlace& place() const { return place_; }

    const JsonValue& at(uint32_t index) const { return document_.values[index]; }
    bool isNull(uint32_t index) const { return at(index).kind == JsonValue::Null; }
    bool isText(uint32_t index) const { return at(index).kind == JsonValue::Text; }

    // True if the value is of that kind; otherwise a fault.
    bool expect(uint32_t index, JsonValue::Kind kind) {
        return (at(index).kind == kind && place_.ok()) || refuse(index, kind);
    }

    void read(uint32_t index, bool& into);
    void read(uint32_t index, float& into);
    void read(uint32_t index, std::string& into);

    // A whole number within the bounds and within its type.
    template <std::integral Int>
    void read(uint32_t index, Int& into, WholeBounds bounds = {}) {
        bounds.lowest = std::max<int32_t>(bounds.lowest, std::numeric_limits<Int>::min());
        bounds.highest = std::min<int32_t>(bounds.highest, std::numeric_limits<Int>::max());
        into = static_cast<Int>(readWhole(index, into, bounds));
    }

    // One of the words, or a whole number that stands for itself.
    void readType(uint32_t index, int32_t& into, std::span<const TypeWord> words);

    // A list of exactly N numbers.
    template <class T, size_t N>
    void read(uint32_t index, std::array<T, N>& into) {
        if (!expectLength(index, N)) return;
        size_t i = 0;
        forEachEntry(index, [&](uint32_t entry) { read(entry, into[i++]); });
    }

    // Calls act(entry) for each entry of an Array, in place, up to the first fault.
    template <class Act>
    void forEachEntry(uint32_t index, Act act) {
        if (!expect(index, JsonValue::Array)) return;
        size_t i = 0;
        for (uint32_t entry = index + 1; entry < at(index).end && place_.ok(); entry = at(entry).end) {
            const ScenePlace::Step step(place_, i++);
            act(entry);
        }
    }

    // Calls act(key, value) for each member of an Object whose keys are the file's own.
    template <class Act>
    void forEachMember(uint32_t index, Act act) {
        if (!expect(index, JsonValue::Object) || !expectUniqueKeys(index)) return;
        for (uint32_t member = index + 1; member < at(index).end && place_.ok(); member = at(member).end) {
            const ScenePlace::Step step(place_, document_.keyOf(at(member)));
            act(document_.keyOf(at(member)), member);
        }
    }

    // False and a fault if a key is there twice.
    bool expectUniqueKeys(uint32_t index);

private:
    const JsonDocument& document_;
    ScenePlace& place_;

    bool refuse(uint32_t index, JsonValue::Kind kind);
    bool expectLength(uint32_t index, size_t length);
    int32_t readWhole(uint32_t index, int32_t keep, WholeBounds bounds);
};

// The members of an Object that has fixed keys. What no getter asked for is an unknown key when the record is done.
class JsonRecord {
public:
    JsonRecord(JsonReader& reader, uint32_t index);
    ~JsonRecord() { refuseUnknownKeys(); }
    JsonRecord(const JsonRecord&) = delete;
    JsonRecord& operator=(const JsonRecord&) = delete;

    // Calls act(value) in the member's place if it is there. Its absence is a fault if it is required.
    template <class Act>
    void with(const char* key, bool isRequired, Act act) {
        const uint32_t member = find(key, isRequired);
        if (member == kNone || !reader_.place().ok()) return;
        const ScenePlace::Step step(reader_.place(), key);
        act(member);
    }

private:
    static constexpr uint32_t kNone = 0;  // the first value of a text is nobody's member
    static constexpr size_t kMostKeys = 32;

    JsonReader& reader_;
    uint32_t index_;
    bool readable_;
    uint64_t asked_ = 0;  // a bit for each of the first 64 members
    std::array<const char*, kMostKeys> known_{};
    size_t knownCount_ = 0;

    uint32_t find(const char* key, bool isRequired);
    void refuseUnknownKeys();
};

}  // namespace marrowfen::standin
