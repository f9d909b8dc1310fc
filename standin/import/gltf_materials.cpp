#include <algorithm>

#include "ground/at.h"
#include "ground/counted.h"
#include "standin/import/gltf_reading.h"

// The materials and images of a glTF file, extensions of the colour's texture included.

namespace marrowfen::standin {

namespace {

constexpr const char* kSpecularGlossiness = "KHR_materials_pbrSpecularGlossiness";
constexpr const char* kTextureTransform = "KHR_texture_transform";

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
    for (size_t k = 0; k < 4; ++k) material.color[k] = static_cast<float>(numberOr(factor, k, 1));
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
    for (size_t k = 0; k < 3; ++k) emission = std::max(emission, numberOr(source.emissiveFactor, k, 0));
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

}  // namespace

void addMaterials(GltfReading& reading) {
    addImages(reading);
    size_t partlyGlowing = 0;
    for (const tinygltf::Material& source : reading.file().materials) addMaterial(reading, source, partlyGlowing);
    // Of primitives without one.
    reading.model.materials.emplace_back();
    reading.uvsOf.emplace_back();
    if (partlyGlowing > 0) {
        reading.model.remarks.push_back(aboutScene(
            load::kMaterialGlow,
            counted(partlyGlowing, "material glows", "materials glow") + " in parts only, which isn't carried over"));
    }
}

}  // namespace marrowfen::standin
