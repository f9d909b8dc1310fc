#include "standin/import/gltf_bytes.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>

#include "ground/whole_file.h"
#include "standin/host/json_document.h"
#include "standin/import/own_files.h"

// The glTF library would open whatever a URI names and decode images; both lists are taken out of its hands. They are
// found in the text by a scan of the top level, so that the rest is parsed only once.

namespace marrowfen::standin {

namespace {

using Json = nlohmann::json;

constexpr size_t kGlbHeader = 12;
constexpr size_t kChunkHeader = 8;
constexpr uint32_t kJsonChunk = 0x4E4F534A;
constexpr uint32_t kBinaryChunk = 0x004E4942;
constexpr std::string_view kEmptyBuffer = R"({"byteLength":1,"uri":"data:application/octet-stream;base64,AA=="})";

struct Glb {
    std::string_view json;
    std::optional<std::string_view> binary;
};

uint32_t numberAt(std::string_view bytes, size_t at) {
    uint32_t value = 0;
    for (size_t k = 4; k-- > 0;) value = value << 8 | static_cast<unsigned char>(bytes[at + k]);
    return value;
}

// Empty on success.
std::string split(std::string_view file, Glb& glb) {
    if (!file.starts_with("glTF")) {
        glb.json = file;
        return {};
    }
    if (file.size() < kGlbHeader) return "the GLB header is cut off";
    if (numberAt(file, 4) != 2) return "GLB version " + std::to_string(numberAt(file, 4)) + " isn't 2";
    if (numberAt(file, 8) > file.size()) return "the file is shorter than its GLB header says";
    for (size_t at = kGlbHeader; at + kChunkHeader <= file.size();) {
        const size_t size = numberAt(file, at), type = numberAt(file, at + 4);
        at += kChunkHeader;
        if (size > file.size() - at) return "a GLB chunk ends beyond the file";
        if (type == kJsonChunk && glb.json.empty()) glb.json = file.substr(at, size);
        if (type == kBinaryChunk && !glb.binary) glb.binary = file.substr(at, size);
        at += size;
    }
    return glb.json.empty() ? "the GLB file holds no JSON" : "";
}

struct Member {
    std::string_view key;
    size_t begin = 0, end = 0;  // of the value
};

// The end of a string whose first quote is at the place given.
size_t stringEnd(std::string_view text, size_t at) {
    for (++at; at < text.size() && text[at] != '"'; ++at) {
        if (text[at] == '\\') ++at;
    }
    return std::min(at + 1, text.size());
}

struct TopLevel {
    std::vector<Member> members;
    int64_t depth = 0;  // of the deepest value
};

// The members of the top-level object. What isn't JSON gives members without sense, which the parsers refuse.
TopLevel topLevel(std::string_view text) {
    TopLevel top;
    Member member;
    int64_t depth = 0;
    bool inValue = false;
    for (size_t at = 0; at < text.size();) {
        const char c = text[at];
        if (c == '"') {
            const size_t end = stringEnd(text, at);
            if (depth == 1 && !inValue) member.key = text.substr(at + 1, end - at - 2);
            at = end;
            continue;
        }
        const bool endsMember = depth == 1 && inValue && (c == ',' || c == '}');
        if (endsMember) {
            member.end = at;
            top.members.push_back(member);
            inValue = false;
        }
        if (c == ':' && depth == 1 && !inValue) {
            member.begin = at + 1;
            inValue = true;
        }
        if (c == '{' || c == '[') ++depth;
        if (c == '}' || c == ']') --depth;
        top.depth = std::max(top.depth, depth);
        ++at;
    }
    return top;
}

std::string decodedBase64(std::string_view text) {
    static const std::array<int8_t, 256> kValues = [] {
        std::array<int8_t, 256> values;
        values.fill(-1);
        const std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        for (size_t i = 0; i < digits.size(); ++i)
            values[static_cast<unsigned char>(digits[i])] = static_cast<int8_t>(i);
        return values;
    }();
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3);
    uint32_t word = 0;
    int bits = 0;
    for (const char c : text) {
        const int8_t value = kValues[static_cast<unsigned char>(c)];
        if (value < 0) continue;  // padding and line ends
        word = word << 6 | static_cast<uint32_t>(value);
        bits += 6;
        if (bits < 8) continue;
        bits -= 8;
        bytes += static_cast<char>(word >> bits & 0xFF);
    }
    return bytes;
}

std::string decodedPercent(std::string_view text) {
    const auto digit = [](char c) { return c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10; };
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
        const bool coded = text[i] == '%' && i + 2 < text.size() &&
                           std::isxdigit(static_cast<unsigned char>(text[i + 1])) &&
                           std::isxdigit(static_cast<unsigned char>(text[i + 2]));
        result += coded ? static_cast<char>(digit(text[i + 1]) * 16 + digit(text[i + 2])) : text[i];
        if (coded) i += 2;
    }
    return result;
}

struct DataUri {
    std::string mimeType, bytes;
};

std::optional<DataUri> parseDataUri(std::string_view uri) {
    if (!uri.starts_with("data:")) return std::nullopt;
    uri.remove_prefix(5);
    const size_t comma = std::min(uri.find(','), uri.size());
    const std::string_view head = uri.substr(0, comma);
    const std::string_view data = uri.substr(std::min(comma + 1, uri.size()));
    return DataUri{std::string(head.substr(0, head.find(';'))),
                   head.ends_with(";base64") ? decodedBase64(data) : decodedPercent(data)};
}

// "http://..." and "C:/...".
bool leadsElsewhere(const std::string& path) { return path.find(":/") != std::string::npos; }

bool readFile(const std::filesystem::path& path, std::string& bytes) {
    std::error_code fault;
    std::ifstream file(path, std::ios::binary);
    bytes.resize(static_cast<size_t>(std::filesystem::file_size(path, fault)));
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<size_t>(file.gcount()));
    return !file.bad();
}

// Of an object that may be anything.
std::string textOf(const Json& object, const char* key) {
    const auto found = object.is_object() ? object.find(key) : object.end();
    return object.is_object() && found != object.end() && found->is_string() ? found->get<std::string>()
                                                                             : std::string();
}

std::string externalBytes(const std::filesystem::path& model, const std::string& uri, GltfBytes& result,
                          std::string& bytes) {
    const std::string name = decodedPercent(uri);
    const std::filesystem::path path = model.parent_path() / name;
    const FilePlace place = leadsElsewhere(name) ? FilePlace::Outside : placeOfFile(model, path);
    if (place == FilePlace::Outside) return "buffer " + uri + " lies outside the model's folder and isn't opened";
    const bool isRead = place == FilePlace::There && readFile(path, bytes);
    result.files.push_back({path.string(), isRead});
    return isRead ? std::string() : "buffer " + uri + " can't be read";
}

void readBuffers(const Json& list, const std::filesystem::path& model, std::optional<std::string_view> binary,
                 GltfBytes& result) {
    for (size_t b = 0; b < list.size() && result.error.empty(); ++b) {
        const std::string uri = textOf(list[b], "uri");
        GltfBuffer buffer;
        if (std::optional<DataUri> data = parseDataUri(uri)) {
            buffer.bytes = std::move(data->bytes);
        } else if (!uri.empty()) {
            result.error = externalBytes(model, uri, result, buffer.bytes);
        } else if (b == 0 && binary) {
            buffer.bytes = *binary;
        } else {
            buffer.isThere = false;
        }
        result.buffers.push_back(std::move(buffer));
    }
}

void readImages(const Json& list, GltfBytes& result) {
    for (const Json& source : list) {
        GltfImage image;
        image.name = textOf(source, "name");
        image.mimeType = textOf(source, "mimeType");
        const std::string uri = textOf(source, "uri");
        if (std::optional<DataUri> data = parseDataUri(uri)) {
            image.bytes = std::move(data->bytes);
            image.mimeType = data->mimeType;
        } else {
            image.path = decodedPercent(uri);
        }
        if (source.is_object() && source.contains("bufferView") && source["bufferView"].is_number_unsigned()) {
            image.bufferView = source["bufferView"].get<int32_t>();
        }
        result.images.push_back(std::move(image));
    }
}

// The library wants a view for every accessor of indices; compressed and sparse ones needn't have one. They are told
// apart by an offset that no file can have.
std::string withViewsForAll(Json accessors) {
    for (Json& accessor : accessors) {
        if (!accessor.is_object() || accessor.contains("bufferView")) continue;
        accessor["bufferView"] = 0;
        accessor["byteOffset"] = kNoViewOffset;
    }
    return accessors.dump();
}

Json listOf(std::string_view text) {
    Json list = Json::parse(text, nullptr, false);
    return list.is_array() ? list : Json::array();
}

}  // namespace

std::string gltfTextFault(const std::string& path) {
    const std::string file = readWholeFile(path);
    Glb glb;
    split(file, glb);
    JsonDocument document;
    return parseJson(std::string(glb.json), document);
}

GltfBytes readGltfBytes(const std::string& path) {
    GltfBytes result;
    std::string file;
    if (!readFile(path, file)) {
        result.error = "can't be read";
        return result;
    }
    Glb glb;
    result.error = split(file, glb);
    if (!result.error.empty()) return result;

    const std::string_view text = glb.json;
    const bool lacksViews = text.find("KHR_draco_mesh_compression") != std::string_view::npos ||
                            text.find("\"sparse\"") != std::string_view::npos;
    size_t copied = 0;
    const TopLevel top = topLevel(text);
    // The parsers would go as deep.
    if (top.depth > static_cast<int64_t>(kDeepestJson)) {
        result.error = gltfTextFault(path);
        return result;
    }
    for (const Member& member : top.members) {
        const std::string_view value = text.substr(member.begin, member.end - member.begin);
        std::string instead;
        if (member.key == "buffers" && result.buffers.empty()) {
            readBuffers(listOf(value), path, glb.binary, result);
            for (size_t b = 0; b < result.buffers.size(); ++b)
                instead += (b > 0 ? "," : "") + std::string(kEmptyBuffer);
            instead = "[" + instead + "]";
        } else if (member.key == "buffers" || member.key == "images") {
            if (member.key == "images" && result.images.empty()) readImages(listOf(value), result);
            instead = "[]";
        } else if (member.key == "accessors" && lacksViews) {
            instead = withViewsForAll(listOf(value));
        } else {
            continue;
        }
        result.json += text.substr(copied, member.begin - copied);
        result.json += instead;
        copied = member.end;
    }
    result.json += text.substr(copied);
    return result;
}

}  // namespace marrowfen::standin
