#include <assimp/GltfMaterial.h>
#include <assimp/material.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <set>

#include "standin/import/model.h"

namespace marrowfen::standin {

namespace {

uint8_t toByte(float value) {
    if (!(value > 0)) return 0;  // and what isn't a number
    return value >= 1 ? 255 : static_cast<uint8_t>(std::lround(value * 255));
}

float opacityOf(const aiMaterial& source, const aiColor4D& color) {
    float opacity = 1;
    aiString mode;
    // glTF keeps the opacity in the colour, and tells whether it counts.
    if (source.Get(AI_MATKEY_GLTF_ALPHAMODE, mode) == aiReturn_SUCCESS) {
        return std::string_view(mode.C_Str()) == "BLEND" ? color.a : 1;
    }
    source.Get(AI_MATKEY_OPACITY, opacity);
    return opacity;
}

std::array<uint8_t, 4> colorOf(const aiMaterial& source) {
    aiColor4D color(1, 1, 1, 1);
    if (source.Get(AI_MATKEY_BASE_COLOR, color) != aiReturn_SUCCESS) source.Get(AI_MATKEY_COLOR_DIFFUSE, color);
    return {toByte(color.r), toByte(color.g), toByte(color.b), toByte(opacityOf(source, color))};
}

// The path of the texture that gives a material its colour, empty for none.
std::string texturePath(const aiMaterial& source) {
    for (const aiTextureType type : {aiTextureType_DIFFUSE, aiTextureType_BASE_COLOR, aiTextureType_EMISSIVE}) {
        aiString path;
        if (source.GetTexture(type, 0, &path) == aiReturn_SUCCESS && path.length > 0) return cleanText(path);
    }
    return {};
}

std::string lastPartOf(const std::string& path) { return path.substr(path.find_last_of("/\\") + 1); }

// The exporter keeps of a texture's name what stands before its last full stop and after its last backslash. A name
// that is no file name has to survive that whole.
std::string asTextureName(std::string name) {
    std::replace(name.begin(), name.end(), '\\', '/');
    if (name.find('.') != std::string::npos) name += '.';
    return name;
}

bool isThere(const Model& model, const std::string& texture) {
    std::string path = texture;
    std::replace(path.begin(), path.end(), '\\', '/');
    const std::filesystem::path folder = std::filesystem::path(model.path).parent_path();
    std::error_code fault;
    return std::filesystem::exists(folder / path, fault) || std::filesystem::exists(folder / lastPartOf(path), fault);
}

// Only the file's name is kept: the folders of the machine that made the model mean nothing to the engine, which looks
// textures up by name.
std::string textureName(Model& model, const aiMaterial& source, const std::string& name) {
    const std::string path = texturePath(source);
    if (path.empty()) return asTextureName(name);
    if (const aiTexture* embedded = model.source->GetEmbeddedTexture(path.c_str())) {
        ++model.notes.embeddedTextures;
        const std::string file = lastPartOf(cleanText(embedded->mFilename));
        if (!file.empty() && file[0] != '*') return file;
        return path[0] == '*' ? asTextureName(name) : lastPartOf(path);
    }
    const std::string file = lastPartOf(path);
    if (file.empty()) return asTextureName(name);
    if (!isThere(model, path)) model.notes.missingTextures.push_back(file);
    return file;
}

// Emission is what the environment shader's ambient factor says: above 0, the material lights itself.
std::optional<Shader> emissionShader(const aiMaterial& source) {
    aiColor3D emission(0, 0, 0);
    source.Get(AI_MATKEY_COLOR_EMISSIVE, emission);
    const float factor = std::max({emission.r, emission.g, emission.b});
    if (!(factor > 0) || !std::isfinite(factor)) return std::nullopt;
    constexpr int32_t kFloat = 7;
    return Shader{"c_envr_map", true, {{"ambient factor", kFloat, factor}}};
}

bool blendsByTexture(const aiMaterial& source, uint8_t opacity) {
    aiString mode;
    source.Get(AI_MATKEY_GLTF_ALPHAMODE, mode);
    return std::string_view(mode.C_Str()) == "BLEND" && opacity == 255;
}

std::vector<bool> usedMaterials(const Model& model) {
    std::vector<bool> used(model.source->mNumMaterials, false);
    for (const ModelNode& node : model.nodes) {
        for (unsigned m = 0; m < node.source->mNumMeshes; ++m) {
            used[model.source->mMeshes[node.source->mMeshes[m]]->mMaterialIndex] = true;
        }
    }
    return used;
}

}  // namespace

void convertMaterials(Model& model) {
    const std::vector<bool> used = usedMaterials(model);
    std::set<std::string> keys;
    model.materialKeys.resize(model.source->mNumMaterials);
    for (unsigned m = 0; m < model.source->mNumMaterials; ++m) {
        if (!used[m]) continue;
        const aiMaterial& source = *model.source->mMaterials[m];
        aiString given;
        source.Get(AI_MATKEY_NAME, given);
        const std::string name = cleanText(given);

        HostMaterial material;
        material.color = colorOf(source);
        material.texture = textureName(model, source, name);
        material.shader = emissionShader(source);
        if (blendsByTexture(source, material.color[3])) ++model.notes.alphaTextures;

        std::string key = name.empty() ? "material " + std::to_string(m) : name;
        for (int copy = 2; !keys.insert(key).second; ++copy) key = name + "#" + std::to_string(copy);
        model.materialKeys[m] = key;
        model.scene.materials.emplace_back(key, std::move(material));
    }
}

}  // namespace marrowfen::standin
