#include "standin/import/gltf_primitives.h"

#include <draco/compression/decode.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace marrowfen::standin {

namespace {

constexpr const char* kDraco = "KHR_draco_mesh_compression";

// A primitive on its way into a mesh. Its attributes come out of accessors, or out of one block of Draco's.
class PrimitiveReader {
public:
    PrimitiveReader(GltfDocument& document, const tinygltf::Primitive& primitive)
        : document_(document), primitive_(primitive) {}

    std::string open();
    bool has(const std::string& attribute) const { return primitive_.attributes.count(attribute) > 0; }
    std::string readFloats(const std::string& attribute, size_t components, std::vector<float>& values);
    std::string readIntegers(const std::string& attribute, size_t components, std::vector<uint32_t>& values);
    std::string readIndices(size_t vertices, std::vector<uint32_t>& indices);
    size_t componentsOf(const std::string& attribute) const;

private:
    const draco::PointAttribute* compressed(const std::string& attribute) const;
    template <typename Number>
    void decode(const draco::PointAttribute& source, int accessor, size_t components,
                std::vector<Number>& values) const;

    GltfDocument& document_;
    const tinygltf::Primitive& primitive_;
    std::unique_ptr<draco::Mesh> draco_;
};

std::string PrimitiveReader::open() {
    const auto extension = primitive_.extensions.find(kDraco);
    if (extension == primitive_.extensions.end()) return {};
    const tinygltf::Value& view = extension->second.Get("bufferView");
    std::string_view bytes;
    std::string fault;
    if (!document_.viewBytes(view.IsInt() ? view.GetNumberAsInt() : kNone, bytes, fault)) return fault;
    draco::DecoderBuffer buffer;
    buffer.Init(bytes.data(), bytes.size());
    draco::Decoder decoder;
    auto decoded = decoder.DecodeMeshFromBuffer(&buffer);
    if (!decoded.ok()) return "its Draco block is damaged";
    draco_ = std::move(decoded).value();
    return {};
}

const draco::PointAttribute* PrimitiveReader::compressed(const std::string& attribute) const {
    if (draco_ == nullptr) return nullptr;
    const tinygltf::Value& extension = primitive_.extensions.at(kDraco);
    if (!extension.Has("attributes") || !extension.Get("attributes").Has(attribute)) return nullptr;
    const tinygltf::Value& id = extension.Get("attributes").Get(attribute);
    return id.IsInt() && id.GetNumberAsInt() >= 0
               ? draco_->GetAttributeByUniqueId(static_cast<uint32_t>(id.GetNumberAsInt()))
               : nullptr;
}

double largestOf(int componentType) {
    switch (componentType) {
        case TINYGLTF_COMPONENT_TYPE_BYTE:
            return 127;
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE:
            return 255;
        case TINYGLTF_COMPONENT_TYPE_SHORT:
            return 32767;
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT:
            return 65535;
        default:
            return 1;
    }
}

template <typename Number>
void PrimitiveReader::decode(const draco::PointAttribute& source, int accessor, size_t components,
                             std::vector<Number>& values) const {
    const size_t points = draco_->num_points();
    values.assign(points * components, Number());
    std::array<Number, 4> element{};
    for (size_t p = 0; p < points; ++p) {
        const draco::AttributeValueIndex at = source.mapped_index(draco::PointIndex(static_cast<uint32_t>(p)));
        if (at.value() >= source.size()) continue;
        source.ConvertValue<Number>(at, static_cast<int8_t>(components), element.data());
        std::copy_n(element.begin(), components, values.begin() + static_cast<std::ptrdiff_t>(p * components));
    }
    // What the accessor says to be normalised counts, whatever the block says.
    const int32_t index = indexWithin(accessor, document_.model().accessors.size());
    if (!std::is_same_v<Number, float> || index == kNone || source.normalized()) return;
    const tinygltf::Accessor& said = document_.model().accessors[static_cast<size_t>(index)];
    if (!said.normalized) return;
    const auto largest = static_cast<Number>(largestOf(said.componentType));
    for (Number& value : values) value /= largest;
}

std::string PrimitiveReader::readFloats(const std::string& attribute, size_t components, std::vector<float>& values) {
    const int accessor = primitive_.attributes.at(attribute);
    const draco::PointAttribute* block = compressed(attribute);
    if (block == nullptr) return document_.readFloats(accessor, components, values);
    decode(*block, accessor, components, values);
    return {};
}

std::string PrimitiveReader::readIntegers(const std::string& attribute, size_t components,
                                          std::vector<uint32_t>& values) {
    const int accessor = primitive_.attributes.at(attribute);
    const draco::PointAttribute* block = compressed(attribute);
    if (block == nullptr) return document_.readIntegers(accessor, components, values);
    decode(*block, accessor, components, values);
    return {};
}

std::string PrimitiveReader::readIndices(size_t vertices, std::vector<uint32_t>& indices) {
    if (draco_ != nullptr) {
        for (uint32_t f = 0; f < draco_->num_faces(); ++f) {
            for (const draco::PointIndex& point : draco_->face(draco::FaceIndex(f))) indices.push_back(point.value());
        }
    } else if (primitive_.indices >= 0) {
        const std::string fault = document_.readIntegers(primitive_.indices, 1, indices);
        if (!fault.empty()) return fault;
    } else {
        indices.resize(vertices);
        std::iota(indices.begin(), indices.end(), 0U);
    }
    const auto beyond = std::find_if(indices.begin(), indices.end(), [&](uint32_t index) { return index >= vertices; });
    if (beyond == indices.end()) return {};
    return "vertex " + std::to_string(*beyond) + " of " + std::to_string(vertices);
}

size_t PrimitiveReader::componentsOf(const std::string& attribute) const {
    const int32_t accessor = indexWithin(primitive_.attributes.at(attribute), document_.model().accessors.size());
    if (accessor == kNone) return 0;
    return static_cast<size_t>(tinygltf::GetNumComponentsInType(
        static_cast<uint32_t>(document_.model().accessors[static_cast<size_t>(accessor)].type)));
}

std::vector<aiVector3D> asVectors(const std::vector<float>& numbers) {
    std::vector<aiVector3D> vectors;
    vectors.reserve(numbers.size() / 3);
    for (size_t i = 0; i + 2 < numbers.size(); i += 3) vectors.emplace_back(numbers[i], numbers[i + 1], numbers[i + 2]);
    return vectors;
}

// Draco's triangles are whole, whatever the mode says.
void addTriangles(const std::vector<uint32_t>& indices, int mode, std::vector<uint32_t>& corners, size_t& others) {
    if (indices.empty()) return;
    const auto add = [&](uint32_t a, uint32_t b, uint32_t c) {
        // Strips turn back on themselves through triangles without an area.
        if (mode != TINYGLTF_MODE_TRIANGLES && (a == b || b == c || c == a)) return;
        corners.insert(corners.end(), {a, b, c});
    };
    switch (mode) {
        case TINYGLTF_MODE_TRIANGLES:
            for (size_t i = 0; i + 2 < indices.size(); i += 3) add(indices[i], indices[i + 1], indices[i + 2]);
            break;
        case TINYGLTF_MODE_TRIANGLE_STRIP:
            for (size_t i = 0; i + 2 < indices.size(); ++i) {
                add(indices[i + i % 2], indices[i + 1 - i % 2], indices[i + 2]);
            }
            break;
        case TINYGLTF_MODE_TRIANGLE_FAN:
            for (size_t i = 1; i + 1 < indices.size(); ++i) add(indices[0], indices[i], indices[i + 1]);
            break;
        case TINYGLTF_MODE_LINE:
            others += indices.size() / 2;
            break;
        default:
            others += indices.size();
    }
}

std::string readUvs(PrimitiveReader& reader, const GltfUvs& uvs, SourceMesh& mesh) {
    std::string name = "TEXCOORD_" + std::to_string(uvs.set);
    if (!reader.has(name)) name = "TEXCOORD_0";
    if (!reader.has(name)) return {};
    std::vector<float> numbers;
    const std::string fault = reader.readFloats(name, 2, numbers);
    if (!fault.empty()) return fault;
    const double sine = std::sin(uvs.rotation), cosine = std::cos(uvs.rotation);
    const bool plain =
        uvs.rotation == 0 && uvs.scale[0] == 1 && uvs.scale[1] == 1 && uvs.offset[0] == 0 && uvs.offset[1] == 0;
    for (size_t i = 0; i + 1 < numbers.size(); i += 2) {
        float u = numbers[i], v = numbers[i + 1];
        if (!plain) {
            const double x = static_cast<double>(u) * uvs.scale[0], y = static_cast<double>(v) * uvs.scale[1];
            u = static_cast<float>(cosine * x + sine * y + uvs.offset[0]);
            v = static_cast<float>(cosine * y - sine * x + uvs.offset[1]);
        }
        mesh.uvs.push_back({u, 1 - v});  // v runs downward in the file
    }
    return {};
}

// The heaviest joint of each vertex, over all sets of four.
std::string readHolds(PrimitiveReader& reader, const GltfSkin& skin, SourceMesh& mesh) {
    std::vector<float> heaviest(mesh.positions.size(), 0);
    std::vector<uint8_t> noticed(mesh.positions.size(), 0);
    mesh.bones = skin.bones;
    mesh.holds.resize(mesh.positions.size());
    for (int set = 0;; ++set) {
        const std::string jointsName = "JOINTS_" + std::to_string(set), weightsName = "WEIGHTS_" + std::to_string(set);
        if (!reader.has(jointsName) || !reader.has(weightsName)) return {};
        std::vector<uint32_t> joints;
        std::vector<float> weights;
        std::string fault = reader.readIntegers(jointsName, 4, joints);
        if (fault.empty()) fault = reader.readFloats(weightsName, 4, weights);
        if (fault.empty() && (joints.size() != weights.size() || joints.size() != mesh.positions.size() * 4)) {
            fault = "has another count of weights than of vertices";
        }
        if (!fault.empty()) return fault;
        for (size_t i = 0; i < joints.size(); ++i) {
            if (!(weights[i] > 0)) continue;
            if (joints[i] >= skin.bones.size()) {
                return "joint " + std::to_string(joints[i]) + " of " + std::to_string(skin.bones.size());
            }
            VertexHold& hold = mesh.holds[i / 4];
            if (weights[i] > kNoticeableWeight) {
                hold.several = noticed[i / 4] != 0;
                noticed[i / 4] = 1;
            }
            if (weights[i] <= heaviest[i / 4]) continue;
            heaviest[i / 4] = weights[i];
            hold.bone = static_cast<int32_t>(joints[i]);
        }
    }
}

// Colours that are all white say nothing.
bool hasTint(PrimitiveReader& reader) {
    if (!reader.has("COLOR_0")) return false;
    const size_t components = reader.componentsOf("COLOR_0");
    std::vector<float> colors;
    if ((components != 3 && components != 4) || !reader.readFloats("COLOR_0", components, colors).empty()) return true;
    return std::any_of(colors.begin(), colors.end(), [](float c) { return c < 0.995F; });
}

// Morph targets as the model shows them at rest.
std::string addRestingMorphs(GltfDocument& document, const tinygltf::Primitive& primitive,
                             const std::vector<double>& weights, SourceMesh& mesh) {
    for (size_t t = 0; t < std::min(weights.size(), primitive.targets.size()); ++t) {
        const auto position = primitive.targets[t].find("POSITION");
        if (weights[t] == 0 || position == primitive.targets[t].end()) continue;
        std::vector<float> moves;
        const std::string fault = document.readFloats(position->second, 3, moves);
        if (!fault.empty()) return fault;
        const auto weight = static_cast<float>(weights[t]);
        for (size_t v = 0; v < std::min(mesh.positions.size(), moves.size() / 3); ++v) {
            mesh.positions[v] += aiVector3D(moves[v * 3], moves[v * 3 + 1], moves[v * 3 + 2]) * weight;
        }
    }
    return {};
}

template <typename Value>
void pick(const std::vector<uint32_t>& used, std::vector<Value>& values) {
    if (values.empty()) return;
    std::vector<Value> picked;
    picked.reserve(used.size());
    for (const uint32_t index : used) picked.push_back(values[index]);
    values = std::move(picked);
}

// Primitives often share one long list of vertices and use a few of it each.
void keepUsedVertices(SourceMesh& mesh) {
    if (mesh.positions.size() <= mesh.corners.size()) return;
    std::vector<uint32_t> used, newIndex(mesh.positions.size(), ~0U);
    for (uint32_t& corner : mesh.corners) {
        if (newIndex[corner] == ~0U) {
            newIndex[corner] = static_cast<uint32_t>(used.size());
            used.push_back(corner);
        }
        corner = newIndex[corner];
    }
    pick(used, mesh.positions);
    pick(used, mesh.normals);
    pick(used, mesh.uvs);
    pick(used, mesh.holds);
}

}  // namespace

std::string readPrimitive(GltfDocument& document, const tinygltf::Primitive& primitive, const GltfUvs& uvs,
                          const GltfSkin* skin, const std::vector<double>& weights, SourceMesh& mesh,
                          size_t& linesAndPoints) {
    PrimitiveReader reader(document, primitive);
    if (!reader.has("POSITION")) return {};
    std::string fault = reader.open();
    std::vector<float> numbers;
    if (fault.empty()) fault = reader.readFloats("POSITION", 3, numbers);
    mesh.positions = asVectors(numbers);
    if (fault.empty() && reader.has("NORMAL")) {
        fault = reader.readFloats("NORMAL", 3, numbers);
        mesh.normals = asVectors(numbers);
    }
    if (fault.empty()) fault = readUvs(reader, uvs, mesh);
    if (fault.empty() && skin != nullptr) fault = readHolds(reader, *skin, mesh);
    if (fault.empty()) fault = addRestingMorphs(document, primitive, weights, mesh);
    std::vector<uint32_t> indices;
    if (fault.empty()) fault = reader.readIndices(mesh.positions.size(), indices);
    const auto fits = [&](size_t count) { return count == 0 || count == mesh.positions.size(); };
    if (fault.empty() && (!fits(mesh.normals.size()) || !fits(mesh.uvs.size()))) {
        fault = "its attributes have different counts";
    }
    if (!fault.empty()) return fault;
    const bool compressed = primitive.extensions.count(kDraco) > 0;
    const int mode = primitive.mode < 0 || compressed ? TINYGLTF_MODE_TRIANGLES : primitive.mode;
    addTriangles(indices, mode, mesh.corners, linesAndPoints);
    mesh.flat = mesh.normals.empty();
    mesh.hasMorphs = !primitive.targets.empty();
    mesh.hasColors = hasTint(reader);
    mesh.hasMoreUvs = reader.has("TEXCOORD_1");
    keepUsedVertices(mesh);
    return {};
}

}  // namespace marrowfen::standin
