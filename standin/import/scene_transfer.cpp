#include "standin/import/scene_transfer.h"

#include <cstring>
#include <type_traits>

namespace marrowfen::standin {

namespace {

// One list of fields per record serves both directions: transfer(archive, value) writes the value or fills it.

struct Writer {
    std::string bytes;

    bool reads() const { return false; }
    void raw(const void* data, size_t size) { bytes.append(static_cast<const char*>(data), size); }
};

struct Reader {
    const std::string& bytes;
    size_t at = 0;
    bool ok = true;

    bool reads() const { return true; }
    void raw(void* data, size_t size) {
        ok = ok && size <= bytes.size() - at;
        if (!ok || size == 0) return;
        std::memcpy(data, bytes.data() + at, size);
        at += size;
    }
};

// Numbers and records of numbers, where every pattern of bits is a value.
template <typename T>
constexpr bool kPlain = std::is_trivially_copyable_v<T> && !std::is_same_v<T, bool>;

template <typename Archive>
size_t transferCount(Archive& archive, size_t count) {
    uint64_t n = count;
    archive.raw(&n, sizeof n);
    if constexpr (std::is_same_v<Archive, Reader>) {
        // An element takes a byte at least, so a count beyond what is left is wrong.
        archive.ok = archive.ok && n <= archive.bytes.size() - archive.at;
        return archive.ok ? static_cast<size_t>(n) : 0;
    }
    return count;
}

template <typename Archive>
void transfer(Archive& archive, bool& value) {
    uint8_t byte = value ? 1 : 0;
    archive.raw(&byte, 1);
    value = byte != 0;
}

template <typename Archive, typename T>
requires std::is_arithmetic_v<T>
void transfer(Archive& archive, T& value) { archive.raw(&value, sizeof value); }

template <typename Archive, typename T, size_t N>
void transfer(Archive& archive, std::array<T, N>& value) {
    static_assert(kPlain<T>);
    archive.raw(value.data(), sizeof value);
}

template <typename Archive>
void transfer(Archive& archive, std::string& value) {
    value.resize(transferCount(archive, value.size()));
    archive.raw(value.data(), value.size());
}

template <typename Archive>
void transfer(Archive& archive, Corner& corner) {
    archive.raw(&corner, sizeof corner);
}

template <typename Archive, typename T>
void transfer(Archive& archive, std::vector<T>& values) {
    const size_t count = transferCount(archive, values.size());
    if constexpr (kPlain<T>) {
        const bool fits = !archive.reads() || count <= values.max_size();
        values.resize(fits ? count : 0);
        archive.raw(values.data(), values.size() * sizeof(T));
    } else {
        values.resize(count);
        for (T& value : values) transfer(archive, value);
    }
}

template <typename Archive, typename First, typename Second>
void transfer(Archive& archive, std::pair<First, Second>& value) {
    transfer(archive, value.first);
    transfer(archive, value.second);
}

template <typename Archive, typename T>
void transfer(Archive& archive, std::optional<T>& value) {
    bool there = value.has_value();
    transfer(archive, there);
    if (there && !value) value.emplace();
    if (there) transfer(archive, *value);
}

template <typename Archive, typename... T>
void transferAll(Archive& archive, T&... values) {
    (transfer(archive, values), ...);
}

template <typename Archive>
void transfer(Archive& archive, HostSettings& host) {
    transferAll(archive, host.major, host.minor, host.directory, host.frameRate, host.playMode, host.activeTime);
}

template <typename Archive>
void transfer(Archive& archive, ShaderParameter& parameter) {
    uint8_t kind = static_cast<uint8_t>(parameter.value.index());
    transferAll(archive, parameter.name, parameter.type, kind);
    if (archive.reads() && kind == 1) parameter.value = 0.0F;
    if (archive.reads() && kind == 2) parameter.value = std::string();
    std::visit([&](auto& value) { transfer(archive, value); }, parameter.value);
}

template <typename Archive>
void transfer(Archive& archive, Shader& shader) {
    transferAll(archive, shader.name, shader.valid, shader.parameters);
}

template <typename Archive>
void transfer(Archive& archive, Material& material) {
    transferAll(archive, material.color, material.texture, material.reflection, material.shader);
}

template <typename Archive>
void transfer(Archive& archive, Face& face) {
    transferAll(archive, face.corners, face.material);
}

template <typename Archive>
void transfer(Archive& archive, Polyhedron& polyhedron) {
    transferAll(archive, polyhedron.vertices, polyhedron.normals, polyhedron.uvs, polyhedron.faces,
                polyhedron.materials, polyhedron.vertexTransform);
}

template <typename Archive>
void transfer(Archive& archive, Muscle& muscle) {
    transferAll(archive, muscle.joint, muscle.vertices);
}

template <typename Archive>
void transfer(Archive& archive, Node& node) {
    transferAll(archive, node.type, node.name, node.id, node.layer, node.location, node.rotation, node.transform,
                node.axes, node.children, node.polyhedron, node.muscles, node.tendon);
}

template <typename Archive>
void transfer(Archive& archive, Key& key) {
    transferAll(archive, key.frame, key.location, key.rotation, key.transform);
}

template <typename Archive>
void transfer(Archive& archive, Clip& clip) {
    transferAll(archive, clip.name, clip.start, clip.end, clip.length, clip.toggle, clip.loop, clip.enabled, clip.keys);
}

template <typename Archive>
void transfer(Archive& archive, Scene& scene) {
    transferAll(archive, scene.host, scene.layers, scene.materials, scene.nodes, scene.clips);
}

template <typename Archive>
void transfer(Archive& archive, LoadResult& result) {
    transferAll(archive, result.scene, result.error, result.warnings);
}

}  // namespace

std::string packResult(const LoadResult& result) {
    Writer writer;
    // Writing leaves every value as it is; only the shared field lists ask for changeable ones.
    transfer(writer, const_cast<LoadResult&>(result));
    return std::move(writer.bytes);
}

std::optional<LoadResult> unpackResult(const std::string& bytes) {
    Reader reader{bytes};
    LoadResult result;
    transfer(reader, result);
    if (!reader.ok || reader.at != bytes.size()) return std::nullopt;
    return result;
}

}  // namespace marrowfen::standin
