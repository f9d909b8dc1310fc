#include "standin/host/scene_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "host/tsxapi.h"
#include "standin/host/json_reader.h"
#include "standin/host/scene_check.h"

// Records are read key by key; what needs more than one of them (indices and references) is checked when all are there.

namespace marrowfen::standin {
namespace {

// In bytes. A value of a text takes two of them at least, and 32 in memory.
constexpr size_t kLargestFile = size_t{1} << 28;

// Every walk through the nodes is recursive, the plug-in's too.
constexpr int kDeepestNode = 1000;

// The host counts layers, the corners of a face and its material in signed 16 bits.
constexpr uint32_t kMostLayers = 32767;
constexpr uint32_t kMostCorners = 32767;
constexpr uint32_t kFewestCorners = 3;
constexpr JsonReader::Bounds kMaterialNumbers = {-32768, 32767};

// Adds the readers of the scene's records to those of plain values.
class SceneReader : public JsonReader {
public:
    using JsonReader::JsonReader;
    using JsonReader::read;

    void readScene(Scene& scene);

private:
    int depth_ = 0;  // nodes around the next one

    template <class T>
    void readList(uint32_t index, std::vector<T>& into) {
        into.reserve(at(index).count);
        forEachEntry(index, [&](uint32_t entry) { readRecord(entry, into.emplace_back()); });
    }

    // Reads an optional key that holds a list.
    template <class T>
    void readList(JsonRecord& record, const char* key, std::vector<T>& into,
                  JsonRecord::Presence presence = JsonRecord::Optional) {
        record.with(key, presence, [&](uint32_t member) { readList(member, into); });
    }

    template <class T>
    void readMap(JsonRecord& record, const char* key, std::vector<std::pair<std::string, T>>& into) {
        record.with(key, JsonRecord::Optional, [&](uint32_t member) { readMap(member, into); });
    }

    template <class T>
    void readMap(uint32_t index, std::vector<std::pair<std::string, T>>& into) {
        forEachMember(index, [&](const std::string& key, uint32_t member) {
            if (key.find('\0') != std::string::npos) place().fail("a zero byte inside a key");
            into.emplace_back(key, T{});
            readRecord(member, into.back().second);
        });
    }

    // What the entries of lists and maps are.
    void readRecord(uint32_t index, int32_t& into) { read(index, into); }
    void readRecord(uint32_t index, Vec2& into) { read(index, into); }
    void readRecord(uint32_t index, Vec3& into) { read(index, into); }
    void readRecord(uint32_t index, std::optional<std::string>& textOrNull);
    void readRecord(uint32_t index, std::vector<int32_t>& into) { readList(index, into); }
    void readRecord(uint32_t index, std::vector<Key>& into) { readList(index, into); }
    void readRecord(uint32_t index, ShaderParameter& parameter);
    void readRecord(uint32_t index, Shader& shader);
    void readRecord(uint32_t index, Material& material);
    void readRecord(uint32_t index, Corner& corner);
    void readRecord(uint32_t index, Face& face);
    void readRecord(uint32_t index, Muscle& muscle);
    void readRecord(uint32_t index, Node& node);
    void readRecord(uint32_t index, Key& key);
    void readRecord(uint32_t index, Clip& clip);
    void readRecord(uint32_t index, HostSettings& host);

    void readFormat(JsonRecord& record);
    void readParameterValue(uint32_t index, ShaderParameter& parameter);
    void readPolyhedron(JsonRecord& record, Polyhedron& polyhedron);
};

void SceneReader::readRecord(uint32_t index, std::optional<std::string>& textOrNull) {
    if (!isNull(index)) read(index, textOrNull.emplace());
}

void SceneReader::readRecord(uint32_t index, HostSettings& host) {
    JsonRecord record(*this, index);
    record.get("major", host.major);
    record.get("minor", host.minor);
    record.get("directory", host.directory);
    record.get("frameRate", host.frameRate);
    record.get("playMode", host.playMode);
    record.get("activeTime", host.activeTime);
}

void SceneReader::readParameterValue(uint32_t index, ShaderParameter& parameter) {
    switch (parameter.type) {
        case TsxFlagParameter:
            parameter.value = readWhole(index, 0, {0, 1}) == 1;
            break;
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

void SceneReader::readRecord(uint32_t index, ShaderParameter& parameter) {
    JsonRecord record(*this, index);
    record.get("name", parameter.name, JsonRecord::Required);
    record.with("type", JsonRecord::Required, [&](uint32_t type) { readType(type, parameter.type, kParameterTypes); });
    const bool isKnown = std::any_of(std::begin(kParameterTypes), std::end(kParameterTypes),
                                     [&](const TypeWord& type) { return type.code == parameter.type; });
    record.with("value", isKnown ? JsonRecord::Required : JsonRecord::Optional,
                [&](uint32_t value) { readParameterValue(value, parameter); });
}

void SceneReader::readRecord(uint32_t index, Shader& shader) {
    JsonRecord record(*this, index);
    record.get("name", shader.name, JsonRecord::Required);
    record.get("valid", shader.valid);
    readList(record, "parameters", shader.parameters);
}

void SceneReader::readRecord(uint32_t index, Material& material) {
    JsonRecord record(*this, index);
    record.get("color", material.color);
    record.get("texture", material.texture);
    record.get("reflection", material.reflection);
    record.with("shader", JsonRecord::Optional,
                [&](uint32_t shader) { readRecord(shader, material.shader.emplace()); });
}

void SceneReader::readRecord(uint32_t index, Corner& corner) {
    std::array<int32_t, 2> numbers{};
    read(index, numbers);
    corner = {numbers[0], numbers[1]};
}

void SceneReader::readRecord(uint32_t index, Face& face) {
    JsonRecord record(*this, index);
    record.with("corners", JsonRecord::Required, [&](uint32_t corners) {
        if (!expect(corners, JsonValue::Array)) return;
        const uint32_t count = at(corners).count;
        if (count < kFewestCorners || count > kMostCorners) {
            place().fail(std::to_string(count) + " corners, a face has " + std::to_string(kFewestCorners) + " to " +
                         std::to_string(kMostCorners));
        }
        readList(corners, face.corners);
    });
    record.with("material", JsonRecord::Optional,
                [&](uint32_t material) { face.material = readWhole(material, 0, kMaterialNumbers); });
}

void SceneReader::readPolyhedron(JsonRecord& record, Polyhedron& polyhedron) {
    readList(record, "vertices", polyhedron.vertices, JsonRecord::Required);
    record.with("normals", JsonRecord::Optional,
                [&](uint32_t normals) { readList(normals, polyhedron.normals.emplace()); });
    readList(record, "uvs", polyhedron.uvs);
    readList(record, "faces", polyhedron.faces);
    readList(record, "materials", polyhedron.materials);
    record.get("vertexTransform", polyhedron.vertexTransform);
}

void SceneReader::readRecord(uint32_t index, Muscle& muscle) {
    JsonRecord record(*this, index);
    record.get("joint", muscle.joint, JsonRecord::Required);
    readMap(record, "vertices", muscle.vertices);
}

void SceneReader::readRecord(uint32_t index, Node& node) {
    if (depth_ == kDeepestNode) {
        place().fail("nodes are nested more than " + std::to_string(kDeepestNode) + " deep");
        return;
    }
    ++depth_;
    JsonRecord record(*this, index);
    record.with("type", JsonRecord::Required, [&](uint32_t type) { readType(type, node.type, kNodeTypes); });
    record.get("name", node.name);
    record.get("id", node.id);
    record.get("layer", node.layer);
    record.get("location", node.location);
    record.get("rotation", node.rotation);
    record.get("transform", node.transform);
    record.get("axes", node.axes);
    readList(record, "children", node.children);
    if (node.type == TsxPolyhedron) readPolyhedron(record, node.polyhedron);
    if (node.type == TsxBone) readList(record, "muscles", node.muscles);
    if (node.type == TsxJoint) readMap(record, "tendon", node.tendon);
    --depth_;
}

void SceneReader::readRecord(uint32_t index, Key& key) {
    JsonRecord record(*this, index);
    record.get("frame", key.frame, JsonRecord::Required);
    record.get("location", key.location);
    record.get("rotation", key.rotation);
    record.get("transform", key.transform);
}

void SceneReader::readRecord(uint32_t index, Clip& clip) {
    JsonRecord record(*this, index);
    record.get("name", clip.name, JsonRecord::Required);
    record.get("start", clip.start, JsonRecord::Required);
    record.get("end", clip.end, JsonRecord::Required);
    record.get("length", clip.length);
    record.get("toggle", clip.toggle);
    record.get("loop", clip.loop);
    record.get("enabled", clip.enabled);
    readMap(record, "keys", clip.keys);
}

// These come first: of another format or version nothing else can be judged.
void SceneReader::readFormat(JsonRecord& record) {
    record.with("format", JsonRecord::Required, [&](uint32_t index) {
        std::string format;
        read(index, format);
        if (format != kSceneFormat) place().fail(jsonQuoted(format) + " instead of " + jsonQuoted(kSceneFormat));
    });
    record.with("version", JsonRecord::Required, [&](uint32_t index) {
        int32_t version = 0;
        read(index, version);
        if (version != kSceneVersion) {
            place().fail("version " + std::to_string(version) + " instead of " + std::to_string(kSceneVersion));
        }
    });
}

void SceneReader::readScene(Scene& scene) {
    JsonRecord record(*this, 0);
    readFormat(record);
    record.with("host", JsonRecord::Optional, [&](uint32_t host) { readRecord(host, scene.host); });
    record.with("layers", JsonRecord::Required, [&](uint32_t layers) {
        if (at(layers).count > kMostLayers) {
            place().fail(std::to_string(at(layers).count) + " layers, a host has at most " +
                         std::to_string(kMostLayers));
        }
        readList(layers, scene.layers);
    });
    readMap(record, "materials", scene.materials);
    readList(record, "nodes", scene.nodes, JsonRecord::Required);
    readList(record, "clips", scene.clips);
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

    // In blocks, since the size of a pipe or device isn't known before.
    std::string text;
    std::vector<char> block(size_t{1} << 20);
    while (file.read(block.data(), static_cast<std::streamsize>(block.size())) || file.gcount() > 0) {
        text.append(block.data(), static_cast<size_t>(file.gcount()));
        if (text.size() > kLargestFile) {
            error = "is larger than 256 MiB";
            return {};
        }
    }
    if (file.bad()) error = "can't be read to its end";
    return text;
}

}  // namespace

LoadResult parseScene(const std::string& text, const std::string& name) {
    LoadResult result;
    JsonDocument document;
    const std::string syntaxError = parseJson(text, document);
    if (!syntaxError.empty()) {
        const bool hasPlace = syntaxError[0] >= '0' && syntaxError[0] <= '9';
        result.error = name + (hasPlace ? ":" : ": ") + syntaxError;
        return result;
    }

    ScenePlace place;
    Scene scene;
    SceneReader(document, place).readScene(scene);
    if (place.ok()) checkScene(scene, place);
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
