#include "view/gltf_file.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "ground/byte_order.h"

namespace marrowfen::view {

namespace {

constexpr int kUnsignedShort = 5123;
constexpr int kUnsignedInt = 5125;
constexpr int kFloat = 5126;
// 65535 itself restarts a primitive.
constexpr uint32_t kLargestShortIndex = 65534;

constexpr uint32_t kGlbMagic = 0x46546C67;
constexpr uint32_t kGlbVersion = 2;
constexpr uint32_t kJsonChunk = 0x4E4F534A;
constexpr uint32_t kBinaryChunk = 0x004E4942;

size_t componentsOf(std::string_view type) {
    if (type == "SCALAR") return 1;
    if (type == "MAT4") return 16;
    return static_cast<size_t>(type.back() - '0');  // VEC2, VEC3, VEC4
}

void padTo4(std::string& out, char filler) { out.resize((out.size() + 3) / 4 * 4, filler); }

}  // namespace

void append(nlohmann::json& list, nlohmann::json entry) {
    if (list.is_null()) list = nlohmann::json::array();
    list.push_back(std::move(entry));
}

int32_t GltfFile::add(const char* list, nlohmann::json entry) {
    append(json[list], std::move(entry));
    return static_cast<int32_t>(json[list].size()) - 1;
}

int32_t GltfFile::addAccessor(const char* type, int componentType, size_t count, const std::string& bytes, Use use) {
    padTo4(buffer_, '\0');
    nlohmann::json view = {{"buffer", 0}, {"byteOffset", buffer_.size()}, {"byteLength", bytes.size()}};
    if (use != Use::Plain) view["target"] = static_cast<int>(use);
    buffer_ += bytes;
    const int32_t viewIndex = add("bufferViews", std::move(view));
    return add("accessors",
               {{"bufferView", viewIndex}, {"componentType", componentType}, {"count", count}, {"type", type}});
}

int32_t GltfFile::addFloats(const char* type, const std::vector<float>& values, Use use, Bounds bounds) {
    const size_t components = componentsOf(type);
    std::string bytes;
    bytes.reserve(values.size() * sizeof(float));
    for (const float value : values) put32(bytes, floatBits(value));
    const int32_t accessor = addAccessor(type, kFloat, values.size() / components, bytes, use);
    if (bounds == Bounds::Given) {
        std::vector<float> min(components, std::numeric_limits<float>::max());
        std::vector<float> max(components, std::numeric_limits<float>::lowest());
        for (size_t i = 0; i < values.size(); ++i) {
            min[i % components] = std::min(min[i % components], values[i]);
            max[i % components] = std::max(max[i % components], values[i]);
        }
        nlohmann::json& entry = json["accessors"].back();
        entry["min"] = min;
        entry["max"] = max;
    }
    return accessor;
}

int32_t GltfFile::addIndices(const std::vector<uint32_t>& values) {
    const bool shorts = *std::max_element(values.begin(), values.end()) <= kLargestShortIndex;
    std::string bytes;
    bytes.reserve(values.size() * (shorts ? 2 : 4));
    for (const uint32_t value : values) shorts ? put16(bytes, static_cast<uint16_t>(value)) : put32(bytes, value);
    return addAccessor("SCALAR", shorts ? kUnsignedShort : kUnsignedInt, values.size(), bytes, Use::Indices);
}

int32_t GltfFile::addJoints(const std::vector<uint16_t>& values) {
    std::string bytes;
    bytes.reserve(values.size() * 2);
    for (const uint16_t value : values) put16(bytes, value);
    return addAccessor("VEC4", kUnsignedShort, values.size() / 4, bytes, Use::Vertices);
}

std::string GltfFile::glb() const {
    nlohmann::json whole = json;
    if (!buffer_.empty()) whole["buffers"] = {{{"byteLength", buffer_.size()}}};
    // Names come from files and may be in any encoding; what isn't UTF-8 becomes U+FFFD.
    std::string text = whole.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    padTo4(text, ' ');
    std::string binary = buffer_;
    padTo4(binary, '\0');

    const size_t headers = binary.empty() ? 20 : 28;
    const size_t total = headers + text.size() + binary.size();
    if (total > std::numeric_limits<uint32_t>::max()) return {};
    std::string out;
    out.reserve(total);
    for (const uint32_t word :
         {kGlbMagic, kGlbVersion, static_cast<uint32_t>(total), static_cast<uint32_t>(text.size()), kJsonChunk}) {
        put32(out, word);
    }
    out += text;
    if (!binary.empty()) {
        put32(out, static_cast<uint32_t>(binary.size()));
        put32(out, kBinaryChunk);
        out += binary;
    }
    return out;
}

}  // namespace marrowfen::view
