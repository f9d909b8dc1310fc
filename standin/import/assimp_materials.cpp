#include <assimp/GltfMaterial.h>

#include <algorithm>
#include <optional>

#include "standin/import/assimp_files.h"
#include "standin/import/assimp_reading.h"

namespace marrowfen::standin {

namespace {

// They say of every material that it shows from both sides, which their files don't.
constexpr std::string_view kTwoSidedReaders[] = {"Stanford Polygon Library (PLY) Importer", "OFF Importer"};

void findAlpha(const aiMaterial& source, SourceMaterial& material) {
    aiString mode;
    // glTF keeps the opacity in the colour, and tells whether it counts.
    if (source.Get(AI_MATKEY_GLTF_ALPHAMODE, mode) == aiReturn_SUCCESS) {
        const std::string_view word = mode.C_Str();
        if (word == "BLEND") material.alpha = SourceMaterial::Alpha::Blend;
        if (word == "MASK") material.alpha = SourceMaterial::Alpha::Mask;
        if (word != "BLEND") material.color[3] = 1;
        return;
    }
    float opacity = 1;
    source.Get(AI_MATKEY_OPACITY, opacity);
    material.color[3] = opacity;
    aiString mask;
    const bool hasMask = source.GetTexture(aiTextureType_OPACITY, 0, &mask) == aiReturn_SUCCESS && mask.length > 0;
    if (opacity < 1 || hasMask) material.alpha = SourceMaterial::Alpha::Blend;
}

void findTexture(const aiScene& scene, const aiMaterial& source, SourceMaterial& material) {
    for (const aiTextureType type : {aiTextureType_DIFFUSE, aiTextureType_BASE_COLOR, aiTextureType_EMISSIVE}) {
        aiString path;
        if (source.GetTexture(type, 0, &path) != aiReturn_SUCCESS || path.length == 0) continue;
        const auto [texture, index] = scene.GetEmbeddedTextureAndIndex(path.C_Str());
        if (texture != nullptr) material.image = index;
        material.texture = textOf(path);
        // What Blender works out has no picture.
        if (material.texture.starts_with("Procedural,num=")) material.texture.clear();
        return;
    }
}

void addMaterial(AssimpReading& reading, const aiMaterial& source) {
    SourceMaterial material;
    aiString name;
    source.Get(AI_MATKEY_NAME, name);
    material.name = textOf(name);
    const std::optional<int> kind = surfaceKind(source);
    if (kind) material.name = cleanText(std::string(name.C_Str(), std::string_view(name.C_Str()).find(kKindMark)));
    // Of a file without meshes, Assimp draws the skeleton.
    if (material.name == "SkeletonMaterial") reading.model.stickFigure = true;
    aiColor4D color(1, 1, 1, 1);
    if (source.Get(AI_MATKEY_BASE_COLOR, color) != aiReturn_SUCCESS) source.Get(AI_MATKEY_COLOR_DIFFUSE, color);
    material.color = {color.r, color.g, color.b, color.a};
    findAlpha(source, material);
    findTexture(reading.scene, source, material);
    aiColor3D emission(0, 0, 0);
    source.Get(AI_MATKEY_COLOR_EMISSIVE, emission);
    material.emission = std::max({emission.r, emission.g, emission.b});
    int twoSided = 0;
    const bool isSaid = std::find(std::begin(kTwoSidedReaders), std::end(kTwoSidedReaders), reading.format) ==
                        std::end(kTwoSidedReaders);
    material.doubleSided = isSaid && source.Get(AI_MATKEY_TWOSIDED, twoSided) == aiReturn_SUCCESS && twoSided != 0;
    if (kind) material.doubleSided = (*kind & kTwoSidedSurface) != 0;
    reading.model.materials.push_back(std::move(material));
}

void addImage(AssimpReading& reading, const aiTexture& source) {
    SourceImage image;
    image.name = textOf(source.mFilename);
    if (!image.name.empty() && image.name[0] == '*') image.name.clear();
    // With a height, it is pixels and not a file's bytes.
    if (source.mHeight == 0 && source.pcData != nullptr) {
        image.bytes.assign(reinterpret_cast<const char*>(source.pcData), source.mWidth);
        const std::string ending = cleanText(source.achFormatHint);
        if (!ending.empty()) image.ending = "." + ending;
    }
    reading.model.images.push_back(std::move(image));
}

}  // namespace

std::optional<int> surfaceKind(const aiMaterial& material) {
    aiString text;
    material.Get(AI_MATKEY_NAME, text);
    const std::string_view name = text.C_Str();
    const size_t mark = name.find(kKindMark);
    if (mark == std::string_view::npos || mark + 1 >= name.size()) return std::nullopt;
    return name[mark + 1] - '0';
}

void addMaterials(AssimpReading& reading) {
    const aiScene& scene = reading.scene;
    for (unsigned m = 0; m < scene.mNumMaterials; ++m) addMaterial(reading, *scene.mMaterials[m]);
    for (unsigned t = 0; t < scene.mNumTextures; ++t) addImage(reading, *scene.mTextures[t]);
}

}  // namespace marrowfen::standin
