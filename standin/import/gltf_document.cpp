#include "standin/import/gltf_document.h"

#include <meshoptimizer.h>

#include <algorithm>
#include <cstring>
#include <limits>

#include "ground/at.h"
#include "standin/import/source_model.h"

namespace marrowfen::standin {

namespace {

constexpr size_t kMostElements = size_t{1} << 28;
constexpr size_t kMostZeros = size_t{1} << 20;  // elements without data, most of which are replaced
constexpr size_t kMostGrowth = 256;             // times the compressed bytes, more than any of its codecs has
constexpr const char* kMeshopt = "EXT_meshopt_compression";

constexpr std::string_view kKnownExtensions[] = {
    "KHR_mesh_quantization",   "KHR_texture_transform", "KHR_draco_mesh_compression",
    "EXT_meshopt_compression", "KHR_lights_punctual",   "EXT_lights_image_based",
    "EXT_texture_webp",        "KHR_texture_basisu",    "KHR_xmp",
    "KHR_xmp_json_ld",         "KHR_animation_pointer", "MSFT_lod",
    "MSFT_texture_dds",        "EXT_mesh_manifold",     "EXT_texture_avif",
    "EXT_mesh_gpu_instancing",
};

bool isKnown(std::string_view extension) {
    return extension.starts_with("KHR_materials_") ||
           std::find(std::begin(kKnownExtensions), std::end(kKnownExtensions), extension) != std::end(kKnownExtensions);
}

size_t numberOf(const tinygltf::Value& object, const char* key) {
    if (!object.Has(key) || !object.Get(key).IsNumber()) return 0;
    const double value = object.Get(key).GetNumberAsDouble();
    return value >= 0 && value < 1e15 ? static_cast<size_t>(value) : 0;
}

std::string wordOf(const tinygltf::Value& object, const char* key) {
    return object.Has(key) && object.Get(key).IsString() ? object.Get(key).Get<std::string>() : std::string();
}

std::string oneLine(std::string text) {
    while (!text.empty() && text.back() == '\n') text.pop_back();
    std::replace(text.begin(), text.end(), '\n', ' ');
    return cleanText(text);
}

bool decode(const std::string& mode, std::string_view source, size_t count, size_t stride, std::string& bytes) {
    const auto* data = reinterpret_cast<const unsigned char*>(source.data());
    if (mode == "ATTRIBUTES") {
        if (stride == 0 || stride > 256 || stride % 4 != 0) return false;
        return meshopt_decodeVertexBuffer(bytes.data(), count, stride, data, source.size()) == 0;
    }
    if (stride != 2 && stride != 4) return false;
    if (mode == "INDICES") return meshopt_decodeIndexSequence(bytes.data(), count, stride, data, source.size()) == 0;
    if (mode != "TRIANGLES" || count % 3 != 0) return false;
    return meshopt_decodeIndexBuffer(bytes.data(), count, stride, data, source.size()) == 0;
}

bool filter(const std::string& name, size_t count, size_t stride, std::string& bytes) {
    if (name.empty() || name == "NONE") return true;
    if (name == "OCTAHEDRAL" && (stride == 4 || stride == 8)) {
        meshopt_decodeFilterOct(bytes.data(), count, stride);
    } else if (name == "QUATERNION" && stride == 8) {
        meshopt_decodeFilterQuat(bytes.data(), count, stride);
    } else if (name == "EXPONENTIAL" && stride % 4 == 0) {
        meshopt_decodeFilterExp(bytes.data(), count, stride);
    } else {
        return false;
    }
    return true;
}

// One number of a type, as a float or an index.
template <typename Type, typename Number>
Number numberAt(const char* at, bool normalized) {
    Type value;
    std::memcpy(&value, at, sizeof value);
    if constexpr (std::is_same_v<Number, float> && !std::is_same_v<Type, float>) {
        if (!normalized) return static_cast<float>(value);
        return std::max(static_cast<float>(value) / static_cast<float>(std::numeric_limits<Type>::max()), -1.0F);
    } else {
        return static_cast<Number>(value);
    }
}

// One number of an accessor's type; null for a type that can't be read so.
template <typename Number>
Number (*numberReader(int componentType))(const char*, bool) {
    switch (componentType) {
        case TINYGLTF_COMPONENT_TYPE_BYTE:
            return std::is_same_v<Number, float> ? numberAt<int8_t, Number> : nullptr;
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE:
            return numberAt<uint8_t, Number>;
        case TINYGLTF_COMPONENT_TYPE_SHORT:
            return std::is_same_v<Number, float> ? numberAt<int16_t, Number> : nullptr;
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT:
            return numberAt<uint16_t, Number>;
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT:
            return numberAt<uint32_t, Number>;
        case TINYGLTF_COMPONENT_TYPE_FLOAT:
            return std::is_same_v<Number, float> ? numberAt<float, Number> : nullptr;
        default:
            return nullptr;
    }
}

}  // namespace

int32_t indexWithin(int32_t index, size_t count) {
    return index >= 0 && static_cast<size_t>(index) < count ? index : kNone;
}

GltfDocument::GltfDocument(const std::string& path) : bytes_(readGltfBytes(path)) {
    error_ = bytes_.error;
    if (!error_.empty()) return;
    tinygltf::TinyGLTF reader;
    // Buffers and images are read already: nothing is opened from here.
    reader.SetFsCallbacks(
        {[](const std::string&, void*) { return false; }, [](const std::string&, void*) { return std::string(); },
         [](std::vector<unsigned char>*, std::string*, const std::string&, void*) { return false; },
         [](std::string*, const std::string&, const std::vector<unsigned char>&, void*) { return false; }, nullptr});
    std::string fault, warning;
    const bool good =
        reader.LoadASCIIFromString(&model_, &fault, &warning, bytes_.json.data(),
                                   static_cast<unsigned>(bytes_.json.size()), "", tinygltf::REQUIRE_VERSION);
    if (!good) {
        error_ = gltfTextFault(path);
        if (error_.empty()) error_ = fault.empty() ? "isn't glTF 2.0" : oneLine(fault);
    }
    for (const std::string& extension : model_.extensionsRequired) {
        if (!isKnown(extension))
            error_ = "needs the glTF extension " + cleanText(extension) + ", which isn't known here";
    }
}

std::string GltfDocument::decompressView(const tinygltf::BufferView& view, std::string& bytes) {
    const tinygltf::Value& extension = view.extensions.at(kMeshopt);
    const int32_t buffer = indexWithin(static_cast<int32_t>(numberOf(extension, "buffer")), bytes_.buffers.size());
    const size_t offset = numberOf(extension, "byteOffset"), size = numberOf(extension, "byteLength");
    const size_t stride = numberOf(extension, "byteStride"), count = numberOf(extension, "count");
    if (buffer == kNone || count > kMostElements || stride > 256) return "a compressed view doesn't hold";
    if (count * stride > (size + 64) * kMostGrowth) return "a compressed view is damaged";
    const std::string& source = at(bytes_.buffers, buffer).bytes;
    if (offset > source.size() || size > source.size() - offset) return "a compressed view ends beyond its buffer";
    bytes.resize(count * stride);
    if (!decode(wordOf(extension, "mode"), std::string_view(source).substr(offset, size), count, stride, bytes) ||
        !filter(wordOf(extension, "filter"), count, stride, bytes)) {
        return "a compressed view is damaged";
    }
    return {};
}

bool GltfDocument::viewBytes(int32_t index, std::string_view& bytes, std::string& fault) {
    const std::string where = "buffer view " + std::to_string(index) + ": ";
    if (indexWithin(index, model_.bufferViews.size()) == kNone) {
        fault = where + "isn't there";
        return false;
    }
    const tinygltf::BufferView& view = at(model_.bufferViews, index);
    if (view.extensions.count(kMeshopt) > 0) {
        const auto [entry, isNew] = decompressed_.try_emplace(index);
        if (isNew) fault = decompressView(view, entry->second);
        if (!fault.empty()) fault = where + fault;
        bytes = entry->second;
        return fault.empty();
    }
    const int32_t buffer = indexWithin(view.buffer, bytes_.buffers.size());
    if (buffer == kNone || !at(bytes_.buffers, buffer).isThere) {
        fault = where + "its buffer isn't there";
        return false;
    }
    const std::string& source = at(bytes_.buffers, buffer).bytes;
    if (view.byteOffset > source.size() || view.byteLength > source.size() - view.byteOffset) {
        fault = where + "ends beyond its buffer";
        return false;
    }
    bytes = std::string_view(source).substr(view.byteOffset, view.byteLength);
    return true;
}

// Where the elements of an accessor lie; without data they are zeros.
struct GltfDocument::Elements {
    const char* data = nullptr;
    size_t stride = 0;
    size_t count = 0;
};

std::string GltfDocument::findElements(int32_t index, size_t components, Elements& elements) {
    const tinygltf::Accessor& accessor = at(model_.accessors, index);
    const int size = tinygltf::GetComponentSizeInBytes(static_cast<uint32_t>(accessor.componentType));
    if (tinygltf::GetNumComponentsInType(static_cast<uint32_t>(accessor.type)) != static_cast<int>(components)) {
        return "has elements of another shape than is needed here";
    }
    if (size <= 0 || accessor.count > kMostElements) return "has more elements than can be";
    elements.count = accessor.count;
    if (accessor.bufferView < 0 || accessor.byteOffset == kNoViewOffset) {
        return accessor.count > kMostZeros ? "has more elements than can be" : std::string();
    }
    std::string_view bytes;
    std::string fault;
    if (!viewBytes(accessor.bufferView, bytes, fault)) return fault;
    const size_t element = static_cast<size_t>(size) * components;
    const size_t stride = at(model_.bufferViews, accessor.bufferView).byteStride;
    elements.stride = stride == 0 ? element : stride;
    if (elements.count == 0) return {};
    if (accessor.byteOffset > bytes.size() ||
        elements.stride * (elements.count - 1) + element > bytes.size() - accessor.byteOffset) {
        return "ends beyond its buffer view";
    }
    elements.data = bytes.data() + accessor.byteOffset;
    return {};
}

template <typename Number>
std::string GltfDocument::readSparse(const tinygltf::Accessor& accessor, size_t components,
                                     std::vector<Number>& values) {
    const auto& sparse = accessor.sparse;
    const size_t indexSize = static_cast<size_t>(
        std::max(0, tinygltf::GetComponentSizeInBytes(static_cast<uint32_t>(sparse.indices.componentType))));
    const size_t size =
        static_cast<size_t>(tinygltf::GetComponentSizeInBytes(static_cast<uint32_t>(accessor.componentType)));
    const auto readIndex = numberReader<uint32_t>(sparse.indices.componentType);
    const auto readValue = numberReader<Number>(accessor.componentType);
    std::string_view indices, replacements;
    std::string fault;
    if (!viewBytes(sparse.indices.bufferView, indices, fault)) return fault;
    if (!viewBytes(sparse.values.bufferView, replacements, fault)) return fault;
    const auto fits = [&](std::string_view bytes, int offset, size_t element) {
        return offset >= 0 && static_cast<size_t>(offset) <= bytes.size() && sparse.count >= 0 &&
               static_cast<size_t>(sparse.count) <= (bytes.size() - static_cast<size_t>(offset)) / element;
    };
    if (readIndex == nullptr || indexSize == 0 || !fits(indices, sparse.indices.byteOffset, indexSize) ||
        !fits(replacements, sparse.values.byteOffset, size * components)) {
        return "its sparse elements end beyond their buffer view";
    }
    for (size_t i = 0; i < static_cast<size_t>(sparse.count); ++i) {
        const size_t at =
            readIndex(indices.data() + static_cast<size_t>(sparse.indices.byteOffset) + i * indexSize, false);
        if (at >= accessor.count)
            return "replaces element " + std::to_string(at) + " of " + std::to_string(accessor.count);
        const char* from = replacements.data() + static_cast<size_t>(sparse.values.byteOffset) + i * size * components;
        for (size_t k = 0; k < components; ++k) {
            values[at * components + k] = readValue(from + k * size, accessor.normalized);
        }
    }
    return {};
}

template <typename Number>
std::string GltfDocument::readNumbers(int32_t index, size_t components, std::vector<Number>& values) {
    const std::string where = "accessor " + std::to_string(index) + ": ";
    if (indexWithin(index, model_.accessors.size()) == kNone) return where + "isn't there";
    const tinygltf::Accessor& accessor = at(model_.accessors, index);
    Elements elements;
    std::string fault = findElements(index, components, elements);
    const auto read = numberReader<Number>(accessor.componentType);
    if (fault.empty() && read == nullptr) fault = "has numbers of a type that isn't allowed here";
    if (!fault.empty()) return where + fault;
    values.assign(elements.count * components, Number());
    const auto size =
        static_cast<size_t>(tinygltf::GetComponentSizeInBytes(static_cast<uint32_t>(accessor.componentType)));
    const bool isPlain =
        elements.stride == size * components && (accessor.componentType == TINYGLTF_COMPONENT_TYPE_FLOAT ||
                                                 (!std::is_same_v<Number, float> && size == sizeof(Number)));
    if (elements.data != nullptr && isPlain) {
        std::memcpy(values.data(), elements.data, values.size() * sizeof(Number));
    } else if (elements.data != nullptr) {
        for (size_t i = 0; i < elements.count; ++i) {
            const char* from = elements.data + i * elements.stride;
            for (size_t k = 0; k < components; ++k) {
                values[i * components + k] = read(from + k * size, accessor.normalized);
            }
        }
    }
    if (accessor.sparse.isSparse) fault = readSparse(accessor, components, values);
    return fault.empty() ? fault : where + fault;
}

std::string GltfDocument::readFloats(int32_t accessor, size_t components, std::vector<float>& values) {
    return readNumbers(accessor, components, values);
}

std::string GltfDocument::readIntegers(int32_t accessor, size_t components, std::vector<uint32_t>& values) {
    return readNumbers(accessor, components, values);
}

}  // namespace marrowfen::standin
