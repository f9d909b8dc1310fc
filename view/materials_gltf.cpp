#include "view/materials_gltf.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "ground/ascii.h"
#include "shape/shape_words.h"

namespace marrowfen::view {

namespace {

using Color = std::array<double, 3>;

constexpr double kSaturation = 0.5;
constexpr double kValue = 0.85;
constexpr double kTranslucentAlpha = 0.5;
constexpr double kCollisionAlpha = 0.35;
constexpr double kRoughness = 0.85;
constexpr Color kCollisionColor = {0.05, 0.6, 0.2};
constexpr Color kLineOfSightColor = {0.8, 0.45, 0.03};

// Words in a material's name that say what it looks like, in sRGB.
constexpr std::pair<const char*, Color> kColorWords[] = {
    {"white", {0.9, 0.89, 0.86}},  {"black", {0.09, 0.09, 0.1}},  {"grey", {0.5, 0.51, 0.52}},
    {"gray", {0.5, 0.51, 0.52}},   {"red", {0.72, 0.18, 0.15}},   {"orange", {0.85, 0.45, 0.15}},
    {"yellow", {0.9, 0.77, 0.27}}, {"green", {0.35, 0.55, 0.25}}, {"blue", {0.3, 0.47, 0.7}},
    {"purple", {0.5, 0.3, 0.62}},  {"pink", {0.86, 0.55, 0.63}},  {"brown", {0.45, 0.31, 0.2}},
};

// FNV-1a with its bits stirred once more, so that the colour is the same on every machine.
uint32_t hashOf(const std::string& text) {
    uint32_t hash = 2166136261U;
    for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619U;
    return (hash ^ hash >> 15) * 2654435769U;
}

double linearFromSrgb(double c) { return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); }

Color linear(const Color& srgb) { return {linearFromSrgb(srgb[0]), linearFromSrgb(srgb[1]), linearFromSrgb(srgb[2])}; }

// One of 360 hues.
Color hueOf(uint32_t hash) {
    const double hue = (hash >> 8) % 360 / 60.0;
    Color color;
    for (size_t channel = 0; channel < color.size(); ++channel) {
        // How far the hue is from this channel's own, along the circle of six.
        const double distance = std::abs(std::remainder(hue - 2.0 * static_cast<double>(channel), 6));
        const double full = std::fmin(1, std::fmax(0, 2 - distance));
        color[channel] = kValue * (1 - kSaturation * (1 - full));
    }
    return color;
}

// The colour that the name names last, as in "grass_green", else one of its own; glTF colours are linear.
Color colorOf(const std::string& name) {
    std::string lower = name;
    std::transform(lower.begin(), lower.end(), lower.begin(), lowerCase);
    size_t latest = 0;
    const Color* named = nullptr;
    for (const auto& [word, color] : kColorWords) {
        const size_t at = lower.rfind(word);
        if (at == std::string::npos || at < latest) continue;
        latest = at;
        named = &color;
    }
    return linear(named != nullptr ? *named : hueOf(hashOf(lower)));
}

nlohmann::json surface(const Color& color, double alpha) {
    return {{"baseColorFactor", {color[0], color[1], color[2], alpha}},
            {"metallicFactor", 0},
            {"roughnessFactor", kRoughness}};
}

nlohmann::json describe(const Shape::Material& material) {
    constexpr uint32_t kSeeThrough = Shape::Translucent | Shape::Additive | Shape::Subtractive;
    const bool seeThrough = (material.flags & kSeeThrough) != 0;
    const Color color = colorOf(material.name);
    nlohmann::json entry = {{"name", material.name},
                            {"pbrMetallicRoughness", surface(color, seeThrough ? kTranslucentAlpha : 1)},
                            {"extras", {{"flags", flagWords(material.flags, kMaterialFlagWords)}}}};
    if (seeThrough) entry["alphaMode"] = "BLEND";
    if ((material.flags & Shape::SelfIlluminating) != 0) entry["emissiveFactor"] = color;
    return entry;
}

}  // namespace

MaterialMap addMaterials(GltfFile& file, const Shape& shape) {
    MaterialMap map;
    for (const Shape::Material& material : shape.materials) {
        map.ofShape.push_back(file.add("materials", describe(material)));
    }
    return map;
}

int32_t addCollisionMaterial(GltfFile& file, const char* name, bool lineOfSight) {
    return file.add("materials", {{"name", name},
                                  {"pbrMetallicRoughness",
                                   surface(lineOfSight ? kLineOfSightColor : kCollisionColor, kCollisionAlpha)},
                                  {"alphaMode", "BLEND"},
                                  {"doubleSided", true}});
}

}  // namespace marrowfen::view
