#include <fnmatch.h>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string_view>

#include "builder/layer_names.h"
#include "builder/tags.h"
#include "ground/ascii.h"
#include "ground/at.h"
#include "standin/import/model.h"

// Nodes, their names, and the layers that names make: a node whose name begins with a role, or carries tags that the
// exporter knows, is a layer, and so is everything below it down to the next such node.

namespace marrowfen::standin {

namespace {

constexpr std::string_view kDetailRole = "detail";  // any other name makes a detail level as well
constexpr std::string_view kDefaultLayer = "Detail";
constexpr int32_t kOnlySize = 1;                      // of the default layer when it is the only level: it always shows
constexpr int32_t kUsualSize = 64;                    // of a level that says none
constexpr size_t kMostNamedLayers = kMostLayers - 1;  // slot 0 has no name

// What the exporter finds in a layer's tags.
struct LayerTags {
    bool anyKnown = false;
    int32_t size = 0;
    bool autoLod = false;
};

LayerTags tagsOf(const std::string& name) {
    constexpr TagRole kLayerRoles[] = {TagRole::DetailLayer, TagRole::CollisionLayer, TagRole::BoundsLayer};
    LayerInfo layer;
    layer.name = name;
    std::ostringstream unheard;
    const MessageListener nobody;
    Notices notices(unheard, nobody);
    parseDetailTags(layer, notices);
    const bool anyKnown = std::any_of(std::begin(kLayerRoles), std::end(kLayerRoles),
                                      [&](TagRole role) { return !splitTags(name, role).understood.empty(); });
    return {anyKnown, layer.size, layer.autoLod};
}

// A role may go on with a number or a word of its own, but not be part of another one ("detailed").
bool beginsWithRole(std::string_view name) {
    constexpr std::string_view kAfterRole = "0123456789 :_-";
    const auto begins = [&](std::string_view role) {
        return beginsWithIgnoringCase(name, role) &&
               (name.size() == role.size() || kAfterRole.find(name[role.size()]) != std::string_view::npos);
    };
    return begins(kDetailRole) || std::any_of(std::begin(kRoleWords), std::end(kRoleWords),
                                              [&](const RoleWord& known) { return begins(known.word); });
}

// The layer that a node's name makes, empty for none. The exporter reads tags after the first ':', so what stands
// before the last two parts (the namespaces of a scene) goes.
std::string layerOfName(const std::string& name) {
    if (beginsWithRole(name)) return name;
    const size_t last = name.rfind(':');
    if (last == std::string::npos || last == 0) return {};
    const size_t before = name.rfind(':', last - 1);
    std::string layer = before == std::string::npos ? name : name.substr(before + 1);
    return tagsOf(layer).anyKnown ? layer : std::string();
}

constexpr std::string_view kDigits = "0123456789";

// The number of digits, as far as sizes go; 0 for none.
int32_t numberOf(std::string_view digits) {
    constexpr int32_t kMostSize = 32767;
    int32_t number = 0;
    for (const char c : digits) number = std::min(number * 10 + (c - '0'), kMostSize);
    return number;
}

// The number that a level is called by, "Detail64" or "Detail64.001"; 0 for none.
int32_t numberInName(std::string_view name) {
    name = name.substr(0, name.find(':'));
    name.remove_prefix(std::min(name.find_first_of(kDigits), name.size()));
    return numberOf(name.substr(0, name.find_first_not_of(kDigits)));
}

// "Detail64" of "Detail64_1": what programs call the nodes that they make of a mesh, one for each material. Empty for
// other names: "Detail_64" is a level of its own.
std::string_view nameOfWhole(std::string_view name) {
    const size_t mark = std::min(name.find_last_not_of(kDigits), name.size());
    const bool isPiece = mark > 0 && mark + 1 < name.size() && (name[mark] == '_' || name[mark] == '.') &&
                         kDigits.find(name[mark - 1]) != std::string_view::npos;
    return isPiece ? name.substr(0, mark) : std::string_view();
}

// True for nodes of one mesh: the upper one may have the mesh's name or a number too.
bool isPieceOf(std::string_view name, std::string_view upper) {
    const std::string_view whole = nameOfWhole(name);
    return !whole.empty() && (whole == upper || whole == nameOfWhole(upper));
}

// The number of a level of detail that a modelling program made: "tree_LOD2". kNone for other names.
int32_t lodOf(const ModelNode& node) {
    constexpr std::string_view kMark = "_lod";
    if (node.source->lod != kNone) return node.source->lod;
    const std::string& name = node.name;
    const size_t digits = name.find_last_not_of(kDigits) + 1;
    if (digits == name.size() || digits < kMark.size() || node.source->unnamed) return kNone;
    const std::string_view mark = std::string_view(name).substr(digits - kMark.size(), kMark.size());
    constexpr int32_t kMostLevels = 8;
    const int32_t number = numberOf(std::string_view(name).substr(digits));
    return equalIgnoringCase(mark, kMark) && number < kMostLevels ? number : kNone;
}

std::string levelName(const Model& model, int32_t level) {
    const std::vector<LevelOption>& levels = model.options.levels;
    const auto k = static_cast<size_t>(level);
    const int size = k < levels.size() ? levels[k].size : std::max(1, kUsualSize >> level);
    return "Detail" + std::to_string(level + 1) + ":size=" + std::to_string(size);
}

std::string layerOfNode(Model& model, const ModelNode& node, std::vector<size_t>& patternUses) {
    if (node.source->helper) return {};
    if (node.parent != kNoNode && isPieceOf(node.name, at(model.nodes, node.parent).name)) return {};
    for (size_t p = 0; p < model.options.layers.size(); ++p) {
        if (!matches(model.options.layers[p].pattern, node.name)) continue;
        ++patternUses[p];
        return model.options.layers[p].layer;
    }
    // The nodes of a skin's skeleton are no layers, whatever they are called.
    if (node.skinned) return {};
    const int32_t lod = model.levelsFound > 1 ? lodOf(node) : kNone;
    if (lod != kNone) return levelName(model, lod);
    return node.source->unnamed ? std::string() : layerOfName(node.name);
}

int16_t layerNamed(Model& model, const std::string& name) {
    auto& layers = model.scene.layers;
    const auto found = model.layerByName.find(name);
    if (found != model.layerByName.end()) return found->second;
    if (layers.size() > kMostNamedLayers) {
        model.fail("more than " + std::to_string(kMostNamedLayers) + " layers");
        return kNoLayer;
    }
    const auto layer = static_cast<int16_t>(layers.size());
    layers.emplace_back(name);
    model.layerByName.emplace(name, layer);
    return layer;
}

// Some formats name meshes only, some nothing at all.
std::string nameOf(const Model& model, const SourceNode& source) {
    if (!source.unnamed || source.meshes.empty()) return source.name;
    const std::string& mesh = at(model.source.meshes, source.meshes[0]).name;
    return mesh.empty() ? cleanText(std::filesystem::path(model.path).stem().string()) : mesh;
}

void findLods(Model& model) {
    std::set<int32_t> found;
    for (const ModelNode& node : model.nodes) {
        if (const int32_t lod = lodOf(node); lod != kNone) found.insert(lod);
    }
    model.levelsFound = found.size();
    if (found.size() > 1) {
        model.notes.others.push_back(aboutScene(
            load::kLevelsFound, std::to_string(found.size()) +
                                    " levels of detail are taken from nodes with _LOD in their names or the extension "
                                    "MSFT_lod"));
    }
}

// The name of the layer of what is on none: the first level's, where levels are asked for or found.
std::string defaultLayer(const Model& model) {
    return model.levelsFound > 1 || !model.options.levels.empty() ? levelName(model, 0) : std::string(kDefaultLayer);
}

void findFirstLevel(Model& model) {
    int32_t largest = 0;
    for (size_t i = 1; i < model.scene.layers.size(); ++i) {
        const LayerTags tags = tagsOf(*model.scene.layers[i]);
        if (!isDetailLayer(model, static_cast<int16_t>(i)) || tags.autoLod || tags.size <= largest) continue;
        largest = tags.size;
        model.firstLevel = static_cast<int16_t>(i);
    }
}

// A level without a size would never show. Every one gets a size: by its number, or above all others.
void giveSizes(Model& model) {
    std::vector<std::string*> unsized;
    int32_t largest = 0;
    for (size_t i = 1; i < model.scene.layers.size(); ++i) {
        if (!isDetailLayer(model, static_cast<int16_t>(i))) continue;
        std::string& name = *model.scene.layers[i];
        const int32_t size = tagsOf(name).size;
        if (size <= 0) unsized.push_back(&name);
        largest = std::max(largest, size);
    }
    for (std::string* name : unsized) largest = std::max(largest, numberInName(*name));
    for (std::string* name : unsized) {
        const bool isDefault = *name == kDefaultLayer && model.usesDefaultLayer;
        int32_t size = numberInName(*name);
        if (size == 0 && largest == 0 && isDefault) size = kOnlySize;
        if (size == 0) size = largest = largest < kUsualSize ? kUsualSize : largest + 1;
        const std::string before = *name;
        *name += (name->find(':') == std::string::npos ? ":size=" : ",size=") + std::to_string(size);
        if (isDefault && size == kOnlySize) continue;
        model.notes.others.push_back({&load::kLevelSize, Message::Place::Layer, *name,
                                      "layer " + before + " says no size that shows: it is taken as " + *name});
    }
}

}  // namespace

bool matches(const std::string& pattern, const std::string& name) {
    return fnmatch(pattern.c_str(), name.c_str(), FNM_CASEFOLD) == 0;
}

bool namesRole(const ModelNode& node) { return !node.source->unnamed && beginsWithRole(node.name); }

void listNodes(Model& model) {
    const Matrix root = sceneFromModel(model);
    for (const SourceNode& source : model.source.nodes) {
        ModelNode node;
        node.source = &source;
        node.parent = source.parent;
        node.name = nameOf(model, source);
        node.world = (node.parent == kNoNode ? root : at(model.nodes, node.parent).world) * source.local;
        node.bind = node.world;
        if (!isFinite(node.world)) model.fail("node " + node.name + ": its transform is beyond all numbers");
        model.nodes.push_back(std::move(node));
    }
}

void assignLayers(Model& model) {
    model.scene.layers.emplace_back();  // slot 0 never holds anything
    findLods(model);
    const std::string others = defaultLayer(model);
    std::vector<size_t> patternUses(model.options.layers.size());
    for (ModelNode& node : model.nodes) {
        // Parents come first, so theirs is known.
        if (node.parent != kNoNode) {
            const ModelNode& parent = at(model.nodes, node.parent);
            node.layerName = parent.layerName;
            node.belowNodes = roleOfName(parent.layerName) == LayerRole::Nodes;
        }
        const std::string own = layerOfNode(model, node, patternUses);
        if (!own.empty()) {
            node.layerName = own;
            node.belowNodes = false;
            // Whatever begins with a role is a layer even when nothing is on it: a bounds layer's tags count without a
            // box, and a level that is made from another has nothing of its own.
            if (beginsWithRole(own) || tagsOf(own).autoLod) layerNamed(model, own);
        }
        const bool marker = node.belowNodes && !node.source->helper;
        if (node.source->meshes.empty() && !marker) continue;
        if (node.layerName.empty()) model.usesDefaultLayer = true;
        node.layer = layerNamed(model, node.layerName.empty() ? others : node.layerName);
        node.marker = marker && node.source->meshes.empty();
        if (!model.error.empty()) return;
    }
    // Bones alone need a layer too.
    if (model.source.meshes.empty() && model.scene.layers.size() == 1) {
        model.usesDefaultLayer = true;
        layerNamed(model, others);
    }
    giveSizes(model);
    findFirstLevel(model);
    for (size_t p = 0; p < patternUses.size(); ++p) {
        if (patternUses[p] > 0) continue;
        model.notes.others.push_back(
            aboutScene(load::kPatternUnused,
                       "no node is called like " + model.options.layers[p].pattern + ", which --layer gives"));
    }
}

bool isDetailLayer(const Model& model, int16_t layer) {
    return roleOfName(*at(model.scene.layers, layer)) == LayerRole::Detail;
}

}  // namespace marrowfen::standin
