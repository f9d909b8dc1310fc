#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <set>

#include "ground/ascii.h"
#include "ground/at.h"
#include "standin/import/model.h"
#include "standin/import/own_files.h"
#include "standin/import/plain_png.h"

namespace marrowfen::standin {

namespace {

uint8_t toByte(float value) {
    if (!(value > 0)) return 0;  // and what isn't a number
    return value >= 1 ? 255 : static_cast<uint8_t>(std::lround(value * 255));
}

std::array<uint8_t, 4> colorOf(const SourceMaterial& source) {
    return {toByte(source.color[0]), toByte(source.color[1]), toByte(source.color[2]), toByte(source.color[3])};
}

std::string lowerCased(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), lowerCase);
    return text;
}

std::string lastPartOf(const std::string& path) { return path.substr(path.find_last_of("/\\") + 1); }

// The exporter keeps of a texture's name what stands before its last full stop and after its last backslash. A name
// that is no file name has to survive that whole.
std::string asTextureName(std::string name) {
    std::replace(name.begin(), name.end(), '\\', '/');
    if (name.find('.') != std::string::npos) name += '.';
    return name;
}

bool isFileThere(Model& model, const std::filesystem::path& place) {
    const FilePlace there = placeOfFile(model.path, place);
    if (there != FilePlace::Outside) model.source.files.push_back({place.string(), there == FilePlace::There});
    return there == FilePlace::There;
}

// Models of games leave the ending of a texture's file to the game.
bool isThere(Model& model, const std::string& texture) {
    constexpr const char* kEndings[] = {".png", ".jpg", ".tga", ".bmp", ".dds"};
    std::string path = texture;
    std::replace(path.begin(), path.end(), '\\', '/');
    const std::filesystem::path folder = std::filesystem::path(model.path).parent_path();
    for (const std::filesystem::path& place : {folder / path, folder / lastPartOf(path)}) {
        if (isFileThere(model, place)) return true;
        if (place.has_extension()) continue;
        for (const char* ending : kEndings) {
            if (isFileThere(model, place.string() + ending)) return true;
        }
    }
    return false;
}

// A file's name without what has a meaning on some system; the ending isn't part of it.
std::string safeBaseName(const std::string& path) {
    constexpr size_t kMostBytes = 60;
    std::string name = std::filesystem::path(lastPartOf(path)).stem().string();
    for (char& c : name) {
        const bool plain = std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '-';
        if (!plain) c = '_';
    }
    return name.substr(0, kMostBytes);
}

// Materials are told apart by what stands before their textures' endings, so no two textures that are written share
// that.
std::string untakenBase(Model& model, const std::string& base) {
    std::string tried = base;
    for (int copy = 2; !model.textureBases.insert(lowerCased(tried)).second; ++copy) {
        tried = base + "_" + std::to_string(copy);
    }
    return tried;
}

// The file name that an embedded texture is written under.
std::string embeddedName(Model& model, int32_t index) {
    const SourceImage& image = at(model.source.images, index);
    std::string& name = model.imageNames[index];
    if (!name.empty()) return name;
    std::string base = safeBaseName(image.name);
    if (base.empty()) base = safeBaseName(model.path) + "_" + std::to_string(index);
    name = untakenBase(model, base) + image.ending;
    if (image.bytes.empty() || image.ending.empty()) {
        model.notes.missingTextures.insert(name);
    } else if (!model.options.noTextures) {
        model.textures.emplace_back(name, image.bytes);
    }
    return name;
}

// Only the file's name is kept: the folders of the machine that made the model mean nothing to the engine, which looks
// textures up by name.
std::string textureName(Model& model, const SourceMaterial& source, const std::string& key) {
    if (source.image != kNone) return embeddedName(model, source.image);
    std::string file = lastPartOf(source.texture), place = source.texture;
    // ".skin" is a file of the model's own folder to some games; as an ending it would leave no name.
    if (file.rfind('.') == 0) place = file.erase(0, 1);
    if (file.empty() && model.options.plainTextures) {
        const std::string written = untakenBase(model, safeBaseName(key + ".")) + ".png";
        model.textures.emplace_back(written, plainPng(colorOf(source)));
        return written;
    }
    if (file.empty()) {
        model.notes.plainMaterials.push_back(key);
        return asTextureName(key);
    }
    if (!isThere(model, place)) model.notes.missingTextures.insert(file);
    return file;
}

// Whether a texture can be seen through, as far as its bytes tell without being decoded: not if it is a JPEG, or a PNG
// without an alpha channel.
bool mayHaveAlpha(const Model& model, const SourceMaterial& source) {
    if (source.image == kNone) return !source.texture.empty();
    constexpr size_t kPngColorType = 25;
    const std::string& bytes = at(model.source.images, source.image).bytes;
    if (bytes.starts_with("\xFF\xD8")) return false;
    if (!bytes.starts_with("\x89PNG") || bytes.size() <= kPngColorType) return true;
    return bytes[kPngColorType] != 0 && bytes[kPngColorType] != 2;
}

// A translucent material is one whose opacity is below what the exporter takes for opaque; the engine then goes by the
// texture's alpha.
uint8_t opacityOf(Model& model, const SourceMaterial& source, uint8_t factor) {
    constexpr uint8_t kMostTranslucent = 174;
    if (source.alpha == SourceMaterial::Alpha::Opaque) return factor;
    const bool byTexture = mayHaveAlpha(model, source);
    if (source.alpha == SourceMaterial::Alpha::Mask) {
        if (byTexture) ++model.notes.cutOuts;
        return byTexture ? kMostTranslucent : 255;
    }
    return byTexture || factor < 255 ? std::min(factor, kMostTranslucent) : factor;
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
            at(used, model.source.meshes[static_cast<size_t>(mesh)].material) = true;
        }
    }
    return used;
}

bool isSame(const SourceMaterial& a, const SourceMaterial& b) {
    return a.name == b.name && a.color == b.color && a.emission == b.emission && a.texture == b.texture &&
           a.image == b.image && a.alpha == b.alpha;
}

}  // namespace

void convertMaterials(Model& model) {
    const std::vector<bool> used = usedMaterials(model);
    std::set<std::string> keys;
    std::vector<size_t> converted;
    const std::vector<SourceMaterial>& materials = model.source.materials;
    model.materialKeys.resize(materials.size());
    for (size_t m = 0; m < materials.size(); ++m) {
        if (!used[m]) continue;
        const SourceMaterial& source = materials[m];
        const auto known = std::find_if(converted.begin(), converted.end(),
                                        [&](size_t other) { return isSame(materials[other], source); });
        if (known != converted.end()) {
            model.materialKeys[m] = model.materialKeys[*known];
            continue;
        }
        if (model.source.materialsByMesh) converted.push_back(m);
        HostMaterial material;
        material.color = colorOf(source);
        material.shader = emissionShader(source);
        const std::string base = source.name.empty() ? "material " + std::to_string(m) : source.name;
        std::string key = base;
        for (int copy = 2; !keys.insert(key).second; ++copy) key = base + "#" + std::to_string(copy);
        model.materialKeys[m] = key;
        material.color[3] = opacityOf(model, source, material.color[3]);
        material.texture = textureName(model, source, key);
        const bool hasTexture = source.image != kNone || !source.texture.empty();
        const bool isWhite =
            std::all_of(source.color.begin(), source.color.begin() + 3, [](float c) { return c > 0.99F; });
        if (source.tintsTexture && hasTexture && !isWhite) ++model.notes.tinted;
        model.scene.materials.emplace_back(key, std::move(material));
    }
}

}  // namespace marrowfen::standin
