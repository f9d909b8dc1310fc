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

std::array<uint8_t, 4> colorOf(const SourceMaterial& source) {
    return {toByte(source.color[0]), toByte(source.color[1]), toByte(source.color[2]), toByte(source.color[3])};
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
std::string textureName(Model& model, const SourceMaterial& source) {
    if (source.texture.empty() && source.image == kNone) return asTextureName(source.name);
    if (source.image != kNone) {
        ++model.notes.embeddedTextures;
        const std::string file = lastPartOf(model.source.images[static_cast<size_t>(source.image)].name);
        if (!file.empty()) return file;
        return source.texture.empty() || source.texture[0] == '*' ? asTextureName(source.name)
                                                                  : lastPartOf(source.texture);
    }
    const std::string file = lastPartOf(source.texture);
    if (file.empty()) return asTextureName(source.name);
    if (!isThere(model, source.texture)) model.notes.missingTextures.push_back(file);
    return file;
}

// Emission is what the environment shader's ambient factor says: above 0, the material lights itself.
std::optional<Shader> emissionShader(const SourceMaterial& source) {
    if (!(source.emission > 0) || !std::isfinite(source.emission)) return std::nullopt;
    constexpr int32_t kFloat = 7;
    return Shader{"c_envr_map", true, {{"ambient factor", kFloat, source.emission}}};
}

std::vector<bool> usedMaterials(const Model& model) {
    std::vector<bool> used(model.source.materials.size(), false);
    for (const ModelNode& node : model.nodes) {
        for (const int32_t mesh : node.source->meshes) {
            used[static_cast<size_t>(model.source.meshes[static_cast<size_t>(mesh)].material)] = true;
        }
    }
    return used;
}

}  // namespace

void convertMaterials(Model& model) {
    const std::vector<bool> used = usedMaterials(model);
    std::set<std::string> keys;
    const std::vector<SourceMaterial>& materials = model.source.materials;
    model.materialKeys.resize(materials.size());
    for (size_t m = 0; m < materials.size(); ++m) {
        if (!used[m]) continue;
        const SourceMaterial& source = materials[m];
        HostMaterial material;
        material.color = colorOf(source);
        material.texture = textureName(model, source);
        material.shader = emissionShader(source);
        if (source.alpha == SourceMaterial::Alpha::Blend && material.color[3] == 255) ++model.notes.alphaTextures;

        std::string key = source.name.empty() ? "material " + std::to_string(m) : source.name;
        for (int copy = 2; !keys.insert(key).second; ++copy) key = source.name + "#" + std::to_string(copy);
        model.materialKeys[m] = key;
        model.scene.materials.emplace_back(key, std::move(material));
    }
}

}  // namespace marrowfen::standin
