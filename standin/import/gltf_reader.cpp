#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <tuple>

#include "ground/ascii.h"
#include "ground/at.h"
#include "ground/comma_list.h"
#include "ground/whole_file.h"
#include "standin/import/assimp_axes.h"
#include "standin/import/gltf_document.h"
#include "standin/import/gltf_primitives.h"

// glTF 2.0 as a source model: the nodes of the scene that the file opens with, and what hangs on them.

namespace marrowfen::standin {

namespace {

constexpr const char* kSpecularGlossiness = "KHR_materials_pbrSpecularGlossiness";
constexpr const char* kTextureTransform = "KHR_texture_transform";

struct GltfReading {
    GltfDocument document;
    SourceModel model;
    std::vector<int32_t> nodeOf;  // by the file's node, in the source model; kNone for those of other scenes
    std::vector<GltfUvs> uvsOf;   // by material
    std::vector<GltfSkin> skins;
    std::map<int32_t, std::vector<int32_t>> copiesOf;  // by node: those that hold its mesh in its stead
    // By the file's mesh and skin, and how far the node pushes its morph targets.
    std::map<std::tuple<int, int, std::vector<double>>, std::vector<int32_t>> meshesOf;

    const tinygltf::Model& file() const { return document.model(); }
};

void noteExtensions(GltfReading& reading) {
    constexpr std::string_view kCarriedOver[] = {"EXT_mesh_gpu_instancing",
                                                 "EXT_texture_avif",
                                                 "EXT_texture_webp",
                                                 "KHR_texture_basisu",
                                                 "MSFT_texture_dds",
                                                 "KHR_mesh_quantization",
                                                 "KHR_texture_transform",
                                                 "KHR_draco_mesh_compression",
                                                 "EXT_meshopt_compression",
                                                 "KHR_materials_unlit",
                                                 "KHR_materials_pbrSpecularGlossiness",
                                                 "MSFT_lod"};
    std::set<std::string> others;
    for (const std::string& extension : reading.file().extensionsUsed) {
        if (std::find(std::begin(kCarriedOver), std::end(kCarriedOver), extension) == std::end(kCarriedOver)) {
            others.insert(cleanText(extension));
        }
    }
    if (!others.empty()) {
        reading.model.remarks.push_back(aboutScene(
            load::kExtension,
            (others.size() == 1 ? "extension is ignored: " : "extensions are ignored: ") + commaList(others)));
    }
}

// Nodes.

double numberAt(const std::vector<double>& numbers, size_t index, double otherwise) {
    return index < numbers.size() ? numbers[index] : otherwise;
}

TransformParts statedParts(const tinygltf::Node& node) {
    TransformParts parts;
    parts.scale = {numberAt(node.scale, 0, 1), numberAt(node.scale, 1, 1), numberAt(node.scale, 2, 1)};
    parts.location = {numberAt(node.translation, 0, 0), numberAt(node.translation, 1, 0),
                      numberAt(node.translation, 2, 0)};
    const Quaternion q(numberAt(node.rotation, 3, 1), numberAt(node.rotation, 0, 0), numberAt(node.rotation, 1, 0),
                       numberAt(node.rotation, 2, 0));
    const double length = std::sqrt(q.w * q.w + q.x * q.x + q.y * q.y + q.z * q.z);
    if (length > 0) parts.rotation = {q.w / length, q.x / length, q.y / length, q.z / length};
    return parts;
}

void setTransform(const tinygltf::Node& source, SourceNode& node) {
    if (source.matrix.size() == 16) {
        const std::vector<double>& m = source.matrix;  // by columns
        node.local = {m[0], m[4], m[8],  m[12], m[1], m[5], m[9],  m[13],
                      m[2], m[6], m[10], m[14], m[3], m[7], m[11], m[15]};
    } else {
        node.parts = statedParts(source);
        node.local = matrixOf(*node.parts);
    }
}

// Some exporters write out what a reader made up for nodes without names: "nodes[3]", "nodes_3". Taken for a name it
// would make the node a layer of markers.
bool isMadeUp(std::string_view name) {
    if (!name.starts_with("nodes") || name.size() < 7 || (name[5] != '_' && name[5] != '[')) return false;
    name.remove_prefix(6);
    if (name.back() == ']') name.remove_suffix(1);
    return name.find_first_not_of("0123456789") == std::string_view::npos;
}

// A node whose mesh stands in several places has a copy for each below it.
std::string addCopies(GltfReading& reading, const tinygltf::Node& source, int32_t node) {
    const auto extension = source.extensions.find("EXT_mesh_gpu_instancing");
    if (extension == source.extensions.end() || !extension->second.Has("attributes")) return {};
    const tinygltf::Value& attributes = extension->second.Get("attributes");
    std::vector<float> places, turns, sizes;
    const std::tuple<const char*, size_t, std::vector<float>*> kLists[] = {
        {"TRANSLATION", 3, &places}, {"ROTATION", 4, &turns}, {"SCALE", 3, &sizes}};
    size_t count = 0;
    for (const auto& [name, width, numbers] : kLists) {
        if (!attributes.Has(name) || !attributes.Get(name).IsInt()) continue;
        const std::string fault = reading.document.readFloats(attributes.Get(name).GetNumberAsInt(), width, *numbers);
        if (!fault.empty()) return fault;
        if (count != 0 && numbers->size() / width != count) return "its copies have lists of different lengths";
        count = numbers->size() / width;
    }
    const auto part = [](const std::vector<float>& numbers, size_t from, size_t width) {
        if (numbers.empty()) return std::vector<double>();
        const auto first = numbers.begin() + static_cast<std::ptrdiff_t>(from * width);
        return std::vector<double>(first, first + static_cast<std::ptrdiff_t>(width));
    };
    std::vector<int32_t>& copies = reading.copiesOf[node];
    for (size_t i = 0; i < count; ++i) {
        tinygltf::Node place;
        place.translation = part(places, i, 3);
        place.rotation = part(turns, i, 4);
        place.scale = part(sizes, i, 3);
        SourceNode copy;
        copy.name = at(reading.model.nodes, node).name + "_" + std::to_string(i + 1);
        copy.unnamed = true;
        copy.parent = node;
        setTransform(place, copy);
        copies.push_back(static_cast<int32_t>(reading.model.nodes.size()));
        reading.model.nodes.push_back(std::move(copy));
    }
    return {};
}

std::vector<int> lodsOf(const tinygltf::Node& node) {
    std::vector<int> lods;
    const auto extension = node.extensions.find("MSFT_lod");
    if (extension == node.extensions.end() || !extension->second.Has("ids")) return lods;
    const tinygltf::Value& ids = extension->second.Get("ids");
    for (int k = 0; ids.IsArray() && k < static_cast<int>(ids.ArrayLen()); ++k) {
        if (ids.Get(k).IsInt()) lods.push_back(ids.Get(k).GetNumberAsInt());
    }
    return lods;
}

void addNode(GltfReading& reading, int index, int32_t parent, int level) {
    const std::vector<tinygltf::Node>& nodes = reading.file().nodes;
    if (indexWithin(index, nodes.size()) == kNone) {
        return reading.model.fail("node " + std::to_string(index) + " of " + std::to_string(nodes.size()));
    }
    int32_t& place = at(reading.nodeOf, index);
    if (place != kNone) return reading.model.fail("node " + std::to_string(index) + " hangs in two places");
    if (level > kDeepestNode) return reading.model.fail("nodes are nested deeper than " + std::to_string(kDeepestNode));
    const tinygltf::Node& source = at(nodes, index);
    place = static_cast<int32_t>(reading.model.nodes.size());
    SourceNode node;
    node.name = cleanText(source.name);
    node.unnamed = node.name.empty() || isMadeUp(node.name);
    if (node.unnamed) node.name = "node" + std::to_string(index);
    node.parent = parent;
    setTransform(source, node);
    const std::vector<int> lods = lodsOf(source);
    if (!lods.empty()) node.lod = 0;
    reading.model.nodes.push_back(std::move(node));
    const int32_t self = place;
    const std::string fault = addCopies(reading, source, self);
    if (!fault.empty()) return reading.model.fail("node " + std::to_string(index) + ": " + fault);
    for (const int child : source.children) {
        if (reading.model.error.empty()) addNode(reading, child, self, level + 1);
    }
    // The lower levels are in no scene; they stand where the first one does.
    for (size_t k = 0; k < lods.size() && reading.model.error.empty(); ++k) {
        const size_t at = reading.model.nodes.size();
        addNode(reading, lods[k], parent, level);
        if (reading.model.error.empty()) reading.model.nodes[at].lod = static_cast<int32_t>(k) + 1;
    }
}

std::vector<int> rootsOf(const tinygltf::Model& file) {
    const int32_t scene = indexWithin(std::max(file.defaultScene, 0), file.scenes.size());
    if (scene != kNone) return at(file.scenes, scene).nodes;
    std::vector<bool> isChild(file.nodes.size());
    for (const tinygltf::Node& node : file.nodes) {
        for (const int child : node.children) {
            if (indexWithin(child, file.nodes.size()) != kNone) at(isChild, child) = true;
        }
    }
    std::vector<int> roots;
    for (size_t n = 0; n < file.nodes.size(); ++n) {
        if (!isChild[n]) roots.push_back(static_cast<int>(n));
    }
    return roots;
}

void addNodes(GltfReading& reading) {
    const tinygltf::Model& file = reading.file();
    reading.nodeOf.assign(file.nodes.size(), kNone);
    SourceNode root;
    root.unnamed = true;
    reading.model.nodes.push_back(std::move(root));
    for (const int index : rootsOf(file)) {
        if (reading.model.error.empty()) addNode(reading, index, 0, 1);
    }
    if (file.scenes.size() > 1) {
        reading.model.remarks.push_back(
            aboutScene(load::kMoreScenes, std::to_string(file.scenes.size() - 1) +
                                              (file.scenes.size() == 2 ? " further scene is" : " further scenes are") +
                                              " left out"));
    }
}

// Materials.

const tinygltf::Value* memberOf(const tinygltf::Value& object, const char* key) {
    return object.Has(key) ? &object.Get(key) : nullptr;
}

double numberOf(const tinygltf::Value* value, double otherwise) {
    return value != nullptr && value->IsNumber() ? value->GetNumberAsDouble() : otherwise;
}

double numberIn(const tinygltf::Value* list, size_t index, double otherwise) {
    if (list == nullptr || !list->IsArray() || index >= list->ArrayLen()) return otherwise;
    return numberOf(&list->Get(static_cast<int>(index)), otherwise);
}

// A texture reference of the core or of an extension.
struct TextureUse {
    int texture = kNone;
    int set = 0;
    const tinygltf::Value* transform = nullptr;
};

TextureUse useOf(const tinygltf::TextureInfo& info) {
    const auto transform = info.extensions.find(kTextureTransform);
    return {info.index, info.texCoord, transform == info.extensions.end() ? nullptr : &transform->second};
}

TextureUse useOf(const tinygltf::Value* info) {
    if (info == nullptr) return {};
    TextureUse use;
    use.texture = static_cast<int>(numberOf(memberOf(*info, "index"), kNone));
    use.set = static_cast<int>(numberOf(memberOf(*info, "texCoord"), 0));
    const tinygltf::Value* extensions = memberOf(*info, "extensions");
    use.transform = extensions == nullptr ? nullptr : memberOf(*extensions, kTextureTransform);
    return use;
}

GltfUvs uvsOf(const TextureUse& use) {
    GltfUvs uvs;
    uvs.set = use.set;
    if (use.transform == nullptr) return uvs;
    uvs.set = static_cast<int>(numberOf(memberOf(*use.transform, "texCoord"), uvs.set));
    uvs.rotation = numberOf(memberOf(*use.transform, "rotation"), 0);
    for (size_t k = 0; k < 2; ++k) {
        uvs.scale[k] = numberIn(memberOf(*use.transform, "scale"), k, 1);
        uvs.offset[k] = numberIn(memberOf(*use.transform, "offset"), k, 0);
    }
    return uvs;
}

int32_t imageOf(const tinygltf::Model& file, int texture) {
    if (indexWithin(texture, file.textures.size()) == kNone) return kNone;
    const tinygltf::Texture& found = at(file.textures, texture);
    int image = found.source;
    for (const char* extension : {"EXT_texture_webp", "EXT_texture_avif", "MSFT_texture_dds", "KHR_texture_basisu"}) {
        const auto entry = found.extensions.find(extension);
        if (image < 0 && entry != found.extensions.end()) {
            image = static_cast<int>(numberOf(memberOf(entry->second, "source"), kNone));
        }
    }
    return image;
}

void setTexture(GltfReading& reading, const TextureUse& use, SourceMaterial& material) {
    const std::vector<GltfImage>& images = reading.document.images();
    const int32_t image = indexWithin(imageOf(reading.file(), use.texture), images.size());
    if (image == kNone) return;
    const GltfImage& source = at(images, image);
    if (source.path.empty()) {
        material.image = image;
    } else {
        material.texture = cleanText(source.path);
    }
}

// The texture of the colour; false for none.
TextureUse colorTexture(const tinygltf::Material& source, SourceMaterial& material) {
    const std::vector<double>& factor = source.pbrMetallicRoughness.baseColorFactor;
    for (size_t k = 0; k < 4; ++k) material.color[k] = static_cast<float>(numberAt(factor, k, 1));
    const auto other = source.extensions.find(kSpecularGlossiness);
    if (other == source.extensions.end()) return useOf(source.pbrMetallicRoughness.baseColorTexture);
    const tinygltf::Value* diffuse = memberOf(other->second, "diffuseFactor");
    for (size_t k = 0; k < 4; ++k) material.color[k] = static_cast<float>(numberIn(diffuse, k, 1));
    return useOf(memberOf(other->second, "diffuseTexture"));
}

void addMaterial(GltfReading& reading, const tinygltf::Material& source, size_t& partlyGlowing) {
    SourceMaterial material;
    material.name = cleanText(source.name);
    TextureUse use = colorTexture(source, material);
    const TextureUse glow = useOf(source.emissiveTexture);
    double emission = 0;
    for (size_t k = 0; k < 3; ++k) emission = std::max(emission, numberAt(source.emissiveFactor, k, 0));
    const bool sharesGlow = glow.texture < 0 || use.texture < 0 ||
                            imageOf(reading.file(), glow.texture) == imageOf(reading.file(), use.texture);
    if (emission > 0 && !sharesGlow) {
        // The engine lights a material as a whole.
        ++partlyGlowing;
        emission = 0;
    }
    if (use.texture < 0 && emission > 0) use = glow;
    if (source.extensions.count("KHR_materials_unlit") > 0) emission = 1;
    material.emission = static_cast<float>(emission);
    if (source.alphaMode == "BLEND") material.alpha = SourceMaterial::Alpha::Blend;
    if (source.alphaMode == "MASK") material.alpha = SourceMaterial::Alpha::Mask;
    if (material.alpha != SourceMaterial::Alpha::Blend) material.color[3] = 1;
    material.tintsTexture = true;
    material.doubleSided = source.doubleSided;
    setTexture(reading, use, material);
    reading.uvsOf.push_back(uvsOf(use));
    reading.model.materials.push_back(std::move(material));
}

std::string endingOf(std::string_view bytes, std::string_view mimeType) {
    const struct {
        std::string_view magic, mimeType, ending;
    } kKinds[] = {{"\x89PNG", "image/png", ".png"},     {"\xFF\xD8\xFF", "image/jpeg", ".jpg"},
                  {"RIFF", "image/webp", ".webp"},      {"\xABKTX", "image/ktx2", ".ktx2"},
                  {"DDS ", "image/vnd-ms.dds", ".dds"}, {"BM", "image/bmp", ".bmp"},
                  {"GIF8", "image/gif", ".gif"},        {"", "image/avif", ".avif"}};
    for (const auto& kind : kKinds) {
        if (!kind.magic.empty() && bytes.starts_with(kind.magic)) return std::string(kind.ending);
    }
    for (const auto& kind : kKinds) {
        if (mimeType == kind.mimeType) return std::string(kind.ending);
    }
    return {};
}

void addImages(GltfReading& reading) {
    for (const GltfImage& source : reading.document.images()) {
        SourceImage image;
        image.name = cleanText(source.name);
        image.bytes = source.bytes;
        std::string_view bytes;
        std::string fault;
        if (source.bufferView >= 0 && reading.document.viewBytes(source.bufferView, bytes, fault)) image.bytes = bytes;
        if (!fault.empty()) {
            reading.model.remarks.push_back(aboutScene(load::kBadImage, "image " + image.name + ": " + fault));
        }
        image.ending = endingOf(image.bytes, source.mimeType);
        reading.model.images.push_back(std::move(image));
    }
}

void addMaterials(GltfReading& reading) {
    addImages(reading);
    size_t partlyGlowing = 0;
    for (const tinygltf::Material& source : reading.file().materials) addMaterial(reading, source, partlyGlowing);
    // Of primitives without one.
    reading.model.materials.emplace_back();
    reading.uvsOf.emplace_back();
    if (partlyGlowing > 0) {
        reading.model.remarks.push_back(
            aboutScene(load::kMaterialGlow, std::to_string(partlyGlowing) +
                                                (partlyGlowing == 1 ? " material glows" : " materials glow") +
                                                " in parts only, which isn't carried over"));
    }
}

// Meshes and skins.

void addSkins(GltfReading& reading) {
    for (const tinygltf::Skin& source : reading.file().skins) {
        GltfSkin skin;
        std::vector<float> inverses;
        if (source.inverseBindMatrices >= 0) {
            const std::string fault = reading.document.readFloats(source.inverseBindMatrices, 16, inverses);
            if (!fault.empty()) return reading.model.fail(fault);
            if (inverses.size() < source.joints.size() * 16) {
                return reading.model.fail("a skin has fewer bind matrices than joints");
            }
        }
        for (size_t j = 0; j < source.joints.size(); ++j) {
            SourceBone bone;
            const int32_t node = indexWithin(source.joints[j], reading.nodeOf.size());
            if (node != kNone) bone.node = at(reading.nodeOf, node);
            const auto number = [&](size_t k) { return static_cast<double>(inverses[j * 16 + k]); };
            if (!inverses.empty()) {
                bone.boneFromMesh = {number(0), number(4),  number(8),  number(12), number(1),  number(5),
                                     number(9), number(13), number(2),  number(6),  number(10), number(14),
                                     number(3), number(7),  number(11), number(15)};
            }
            if (bone.node == kNone)
                return reading.model.fail("a skin names joint node " + std::to_string(source.joints[j]) +
                                          ", which isn't in the scene");
            skin.bones.push_back(bone);
        }
        reading.skins.push_back(std::move(skin));
    }
}

std::vector<int32_t> addMesh(GltfReading& reading, int meshIndex, int skinIndex, const std::vector<double>& weights) {
    const tinygltf::Mesh& source = reading.file().meshes[static_cast<size_t>(meshIndex)];
    const GltfSkin* skin = skinIndex == kNone ? nullptr : &at(reading.skins, skinIndex);
    std::vector<int32_t> meshes;
    for (size_t p = 0; p < source.primitives.size(); ++p) {
        const tinygltf::Primitive& primitive = source.primitives[p];
        const size_t materials = reading.model.materials.size();
        SourceMesh mesh;
        mesh.name = cleanText(source.name);
        mesh.material = static_cast<int32_t>(materials) - 1;
        if (primitive.material >= 0) mesh.material = indexWithin(primitive.material, materials - 1);
        std::string fault =
            mesh.material == kNone ? "material " + std::to_string(primitive.material) + " isn't there" : "";
        if (fault.empty()) {
            fault = readPrimitive(reading.document, primitive, at(reading.uvsOf, mesh.material), skin,
                                  weights.empty() ? source.weights : weights, mesh, reading.model.linesAndPoints);
        }
        if (!fault.empty()) {
            reading.model.fail("mesh " + std::to_string(meshIndex) + (mesh.name.empty() ? "" : " (" + mesh.name + ")") +
                               ", primitive " + std::to_string(p) + ": " + fault);
            return meshes;
        }
        if (mesh.positions.empty()) continue;
        meshes.push_back(static_cast<int32_t>(reading.model.meshes.size()));
        reading.model.meshes.push_back(std::move(mesh));
    }
    return meshes;
}

void addMeshes(GltfReading& reading) {
    const tinygltf::Model& file = reading.file();
    for (size_t n = 0; n < file.nodes.size() && reading.model.error.empty(); ++n) {
        const tinygltf::Node& node = file.nodes[n];
        if (reading.nodeOf[n] == kNone || node.mesh < 0) continue;
        if (indexWithin(node.mesh, file.meshes.size()) == kNone) {
            return reading.model.fail("node " + std::to_string(n) + ": mesh " + std::to_string(node.mesh) + " of " +
                                      std::to_string(file.meshes.size()));
        }
        const int32_t skin = indexWithin(node.skin, reading.skins.size());
        if (node.skin >= 0 && skin == kNone) {
            return reading.model.fail("node " + std::to_string(n) + ": skin " + std::to_string(node.skin) + " of " +
                                      std::to_string(reading.skins.size()));
        }
        const auto [entry, isNew] = reading.meshesOf.try_emplace({node.mesh, skin, node.weights});
        if (isNew) entry->second = addMesh(reading, node.mesh, skin, node.weights);
        const auto copies = reading.copiesOf.find(reading.nodeOf[n]);
        if (copies == reading.copiesOf.end()) {
            at(reading.model.nodes, reading.nodeOf[n]).meshes = entry->second;
        } else {
            for (const int32_t copy : copies->second) at(reading.model.nodes, copy).meshes = entry->second;
        }
    }
}

// Animations.

std::string readTrack(GltfDocument& document, const tinygltf::AnimationSampler& sampler, size_t width,
                      SourceTrack& track) {
    std::vector<float> times;
    std::string fault = document.readFloats(sampler.input, 1, times);
    if (fault.empty()) fault = document.readFloats(sampler.output, width, track.values);
    if (!fault.empty()) return fault;
    if (sampler.interpolation == "STEP") track.interpolation = Interpolation::Step;
    if (sampler.interpolation == "CUBICSPLINE") track.interpolation = Interpolation::Cubic;
    const size_t parts = track.interpolation == Interpolation::Cubic ? 3 : 1;
    if (track.values.size() < times.size() * parts * width) return "it has fewer values than times";
    track.times.assign(times.begin(), times.end());
    return {};
}

SourceTrack* trackOf(SourceChannel& channel, const std::string& path) {
    if (path == "translation") return &channel.location;
    if (path == "rotation") return &channel.rotation;
    return path == "scale" ? &channel.scale : nullptr;
}

// Empty, else what is wrong.
std::string fillClip(GltfReading& reading, const tinygltf::Animation& source, SourceClip& clip) {
    std::map<int32_t, size_t> channelOf;
    bool hasShapes = false;
    for (const tinygltf::AnimationChannel& channel : source.channels) {
        if (channel.target_path == "weights") hasShapes = true;
        const int32_t target = indexWithin(channel.target_node, reading.nodeOf.size());
        const int32_t sampler = indexWithin(channel.sampler, source.samplers.size());
        if (target == kNone || at(reading.nodeOf, target) == kNone) continue;
        if (sampler == kNone) return "sampler " + std::to_string(channel.sampler) + " isn't there";
        const int32_t node = at(reading.nodeOf, target);
        const auto [entry, isNew] = channelOf.try_emplace(node, clip.channels.size());
        if (isNew) clip.channels.emplace_back().node = node;
        SourceTrack* track = trackOf(clip.channels[entry->second], channel.target_path);
        if (track == nullptr) continue;
        const std::string fault = readTrack(reading.document, at(source.samplers, sampler),
                                            channel.target_path == "rotation" ? 4 : 3, *track);
        if (!fault.empty()) return fault;
        if (!track->times.empty()) clip.seconds = std::max(clip.seconds, track->times.back());
    }
    if (hasShapes) ++reading.model.shapeClips;
    return {};
}

// glTF states no frame rate, but exporters write keys at whole frames: the first usual rate that all times fit, 0 for
// none.
double frameRateOf(const std::vector<SourceClip>& clips) {
    constexpr double kUsualRates[] = {30, 24, 25, 60, 50, 120};
    constexpr double kOffFrame = 0.01;  // of a frame
    const auto isWhole = [](double frames) { return std::fabs(frames - std::round(frames)) < kOffFrame; };
    for (const double rate : kUsualRates) {
        bool fits = !clips.empty();
        for (const SourceClip& clip : clips) {
            for (const SourceChannel& channel : clip.channels) {
                for (const SourceTrack* track : {&channel.location, &channel.rotation, &channel.scale}) {
                    fits = fits && std::all_of(track->times.begin(), track->times.end(),
                                               [&](double time) { return isWhole(time * rate); });
                }
            }
        }
        if (fits) return rate;
    }
    return 0;
}

void addClips(GltfReading& reading) {
    for (size_t a = 0; a < reading.file().animations.size(); ++a) {
        const tinygltf::Animation& source = reading.file().animations[a];
        SourceClip clip;
        clip.name = cleanText(source.name);
        clip.loops =
            source.extras.Has("loop") && source.extras.Get("loop").IsBool() && source.extras.Get("loop").Get<bool>();
        const std::string fault = fillClip(reading, source, clip);
        if (!fault.empty()) {
            // An animation's fault is none of the meshes'.
            reading.model.remarks.push_back(
                skippedAnimation(clip.name.empty() ? std::to_string(a) : clip.name, " is skipped: " + fault));
        } else if (!clip.channels.empty()) {
            reading.model.clips.push_back(std::move(clip));
        }
    }
    reading.model.frameRate = frameRateOf(reading.model.clips);
}

}  // namespace

bool isGltf2(const std::string& path) {
    const std::string ending = std::filesystem::path(path).extension().string();
    if (equalIgnoringCase(ending, ".vrm")) return true;
    if (!equalIgnoringCase(ending, ".gltf") && !equalIgnoringCase(ending, ".glb")) return false;
    // Version 1 is another format, which Assimp reads.
    std::ifstream file(path, std::ios::binary);
    std::string head(8, '\0');
    file.read(head.data(), static_cast<std::streamsize>(head.size()));
    if (head.starts_with("glTF")) return head[4] != 1;
    const std::string text = readWholeFile(path);
    return text.find("\"version\":\"1.") == std::string::npos && text.find("\"version\": \"1.") == std::string::npos;
}

SourceModel readGltf(const std::string& path) {
    GltfReading reading{GltfDocument(path), {}, {}, {}, {}, {}, {}};
    SourceModel& model = reading.model;
    model.error = reading.document.error();
    model.files = reading.document.files();
    if (!model.error.empty()) return model;
    model.upright = uprightFrom(0, 1, 1, 1);
    model.unit = 1;
    model.skinsStandAlone = true;
    noteExtensions(reading);
    addNodes(reading);
    if (model.error.empty()) addMaterials(reading);
    if (model.error.empty()) addSkins(reading);
    if (model.error.empty()) addMeshes(reading);
    if (model.error.empty()) addClips(reading);
    return std::move(model);
}

}  // namespace marrowfen::standin
