#include "standin/host/scene_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "ground/whole_file.h"
#include "standin/host/json_reader.h"
#include "standin/host/large_pages.h"
#include "standin/host/scene_check.h"
#include "standin/host/scene_fields.h"

// Records are read field by field; what needs more than one of them (indices and references) is checked when all are
// there.

namespace marrowfen::standin {
namespace {

// In bytes. A value of a text takes two of them at least, and 32 in memory.
constexpr size_t kLargestFile = size_t{1} << 28;

// Adds the readers of the scene's records to those of plain values.
class SceneReader : public JsonReader {
public:
    using JsonReader::JsonReader;

    void readScene(Scene& scene);

private:
    int depth_ = 0;  // nodes around the next one

    using JsonReader::read;
    void read(uint32_t index, std::optional<std::string>& textOrNull);
    void read(uint32_t index, Corner& corner);
    void read(uint32_t index, Node& node);

    template <SceneRecord Record>
    void read(uint32_t index, Record& record) {
        JsonRecord members(*this, index);
        readFields(members, record);
    }

    template <class T>
    void read(uint32_t index, std::vector<T>& list) {
        // A record takes a hundred times the bytes that may stand for it before it is looked at.
        constexpr uint32_t kMostUnseen = SceneRecord<T> ? 1024 : UINT32_MAX;
        list.reserve(std::min(at(index).count, kMostUnseen));
        forEachEntry(index, [&](uint32_t entry) { read(entry, list.emplace_back()); });
    }

    template <class T>
    void read(uint32_t index, std::vector<std::pair<std::string, T>>& map) {
        forEachMember(
            index, [&](const std::string& key, uint32_t member) { read(member, map.emplace_back(key, T{}).second); });
    }

    template <SceneRecord Record>
    void readFields(JsonRecord& members, Record& record) {
        forEachField<Record>([&](const auto& field) {
            if (isIn(record, field)) readField(members, record, field);
        });
    }

    template <class Record, class T>
    void readField(JsonRecord& members, Record& record, const Field<Record, T>& field) {
        T& value = record.*field.member;
        if constexpr (SceneRecord<T>) {
            if (field.key == nullptr) return readFields(members, value);
        }
        members.with(field.key, field.rules.isRequired, [&](uint32_t member) {
            if constexpr (kIsOptional<T>) {
                read(member, value.emplace());
            } else if constexpr (kIsWhole<T>) {
                readWhole(member, value, field.rules);
            } else {
                read(member, value);
            }
        });
    }
    void readField(JsonRecord& members, ShaderParameter& parameter,
                   const Field<ShaderParameter, ShaderParameter::Value>& field);

    void readWhole(uint32_t index, int16_t& into, const FieldRules& rules) { read(index, into, rules.whole); }
    void readWhole(uint32_t index, int32_t& into, const FieldRules& rules) {
        rules.words.empty() ? read(index, into, rules.whole) : readType(index, into, rules.words);
    }

    void readFormat(JsonRecord& members);
    void readParameterValue(uint32_t index, ShaderParameter& parameter);
};

void SceneReader::read(uint32_t index, std::optional<std::string>& textOrNull) {
    if (!isNull(index)) read(index, textOrNull.emplace());
}

void SceneReader::read(uint32_t index, Corner& corner) {
    std::array<int32_t, 2> numbers{};
    read(index, numbers);
    corner = {numbers[0], numbers[1]};
}

void SceneReader::read(uint32_t index, Node& node) {
    if (depth_ == kDeepestNode) return place().fail(tooDeepText());
    ++depth_;
    read<Node>(index, node);
    --depth_;
}

void SceneReader::readParameterValue(uint32_t index, ShaderParameter& parameter) {
    switch (parameter.type) {
        case TsxFlagParameter: {
            int32_t flag = 0;
            read(index, flag, {0, 1});
            parameter.value = flag == 1;
            break;
        }
        case TsxFloatParameter:
            read(index, parameter.value.emplace<float>());
            break;
        case TsxTextParameter:
            read(index, parameter.value.emplace<std::string>());
            break;
        default:
            parameter.value = jsonText(document(), index);
            break;
    }
}

// Of a type that the exporter doesn't know, any value or none is right.
void SceneReader::readField(JsonRecord& members, ShaderParameter& parameter,
                            const Field<ShaderParameter, ShaderParameter::Value>& field) {
    const bool isKnown = std::any_of(std::begin(kParameterTypes), std::end(kParameterTypes),
                                     [&](const TypeWord& type) { return type.code == parameter.type; });
    members.with(field.key, isKnown, [&](uint32_t value) { readParameterValue(value, parameter); });
}

// These come first: of another format or version nothing else can be judged.
void SceneReader::readFormat(JsonRecord& members) {
    members.with("format", true, [&](uint32_t index) {
        std::string format;
        read(index, format);
        if (format != kSceneFormat) place().fail(jsonQuoted(format) + " instead of " + jsonQuoted(kSceneFormat));
    });
    members.with("version", true, [&](uint32_t index) {
        int32_t version = 0;
        read(index, version);
        if (version != kSceneVersion) {
            place().fail("version " + std::to_string(version) + " instead of " + std::to_string(kSceneVersion));
        }
    });
}

void SceneReader::readScene(Scene& scene) {
    JsonRecord members(*this, 0);
    readFormat(members);
    readFields(members, scene);
}

// The whole file; empty with an error on failure.
std::string readFile(const std::string& path, std::string& error) {
    std::error_code code;
    if (std::filesystem::is_directory(path, code)) {
        error = "is a folder, not a scene file";
        return {};
    }
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        error = std::string("can't be opened: ") + (errno != 0 ? std::strerror(errno) : "unknown reason");
        return {};
    }

    std::string text;
    const WholeRead read = readWhole(file, kLargestFile, text);
    if (read == WholeRead::Failed) error = "can't be read to its end";
    if (read == WholeRead::TooLarge) error = "is larger than 256 MiB";
    return error.empty() ? text : std::string();
}

}  // namespace

LoadResult parseScene(const std::string& text, const std::string& name) {
    constexpr size_t kGrowth = 16;  // of a text, on its way to a host's scene
    LoadResult result;
    useLargePages(text.size() * kGrowth);
    JsonDocument document;
    const std::string syntaxError = parseJson(text, document);
    if (!syntaxError.empty()) {
        result.error = name + ":" + syntaxError;
        return result;
    }

    ScenePlace place;
    Scene scene;
    SceneReader(document, place).readScene(scene);
    if (place.ok()) checkScene(scene, place, result.warnings);
    if (place.ok()) {
        result.scene = std::move(scene);
    } else {
        result.error = name + ": " + place.error();
    }
    return result;
}

LoadResult readSceneFile(const std::string& path) {
    LoadResult result;
    std::string error;
    const std::string text = readFile(path, error);
    if (error.empty()) return parseScene(text, path);
    result.error = path + ": " + error;
    return result;
}

}  // namespace marrowfen::standin
