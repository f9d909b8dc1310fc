#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string_view>

#include "standin/import/model.h"

// Nodes, their names, and the layers that names make: a node whose name begins with a role, or carries tags, is a
// layer, and so is everything below it down to the next such node.

namespace marrowfen::standin {

namespace {

constexpr std::string_view kDefaultLayer = "Detail:size=1";
constexpr std::string_view kFbxHelper = "_$AssimpFbx$_";
constexpr std::string_view kColladaReader = "Collada Importer";
constexpr size_t kMostNamedLayers = kMostLayers - 1;  // slot 0 has no name

bool beginsWith(std::string_view text, std::string_view lower) {
    return text.size() >= lower.size() && std::equal(lower.begin(), lower.end(), text.begin(), [](char a, char b) {
               return a == static_cast<char>(std::tolower(static_cast<unsigned char>(b)));
           });
}

// The length of the UTF-8 sequence at the start of text, 0 if it isn't one.
size_t sequenceLength(std::string_view text) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const size_t length = byte(0) < 0x80 ? 1 : byte(0) >= 0xF0 ? 4 : byte(0) >= 0xE0 ? 3 : 2;
    if (length == 1) return 1;
    if (byte(0) < 0xC2 || byte(0) > 0xF4 || length > text.size()) return 0;
    for (size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return 0;
    }
    // Overlong forms, surrogates, and what lies beyond Unicode differ in the second byte.
    const unsigned char second = byte(1);
    if ((byte(0) == 0xE0 && second < 0xA0) || (byte(0) == 0xED && second > 0x9F) ||
        (byte(0) == 0xF0 && second < 0x90) || (byte(0) == 0xF4 && second > 0x8F)) {
        return 0;
    }
    return length;
}

// The reader may name its root after the file; that is no name that an artist gave.
bool isNamedAfterFile(const Model& model) {
    const std::filesystem::path file(model.path);
    const std::filesystem::path root(model.nodes[0].source->mName.C_Str());
    return root.filename() == file.filename() || root.filename() == file.stem();
}

bool namesLayer(const Model& model, int32_t index) {
    const ModelNode& node = model.nodes[static_cast<size_t>(index)];
    // The nodes of a skin's skeleton often carry a colon of their own ("rig:hips").
    if (node.helper || node.skinned || node.unnamed) return false;
    if (index == 0 && isNamedAfterFile(model)) return false;
    return namesRole(node) || node.name.find(':') != std::string::npos;
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

// The reader puts the file's unit into the root's transform. Sizes stay what the file says, so it is taken out again.
Matrix withoutUnit(const aiMatrix4x4& root) {
    Matrix matrix(root);
    const double unit = scaleOf(matrix).x;
    if (!(unit > 0)) return matrix;
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 3; ++column) matrix[row][column] /= unit;
    }
    return matrix;
}

// The number in what the glTF reader calls a node without a name: "nodes[3]", which Assimp writes out as "nodes_3". It
// would make the node a layer of markers. Empty for other names.
std::string madeUpNumber(const Model& model, const std::string& name) {
    if (model.format.find("glTF") == std::string::npos || !name.starts_with("nodes") || name.size() < 7) return {};
    const bool isBracket = name[5] == '[' && name.back() == ']';
    const std::string number = name.substr(6, name.size() - (isBracket ? 7 : 6));
    const bool isNumber = number.find_first_not_of("0123456789") == std::string::npos;
    return isNumber && (isBracket || name[5] == '_') ? number : std::string();
}

// Other readers make up names such as "<STL_BINARY>".
bool isMadeUp(const Model& model, const std::string& name) {
    return name.empty() || name.front() == '<' || !madeUpNumber(model, name).empty();
}

// Some formats name meshes only, some nothing at all.
std::string nameOfMesh(const Model& model, unsigned mesh) {
    const std::string name = cleanText(model.source->mMeshes[mesh]->mName);
    if (!isMadeUp(model, name)) return name;
    return cleanText(aiString(std::filesystem::path(model.path).stem().string()));
}

void addNode(Model& model, const aiNode& source, int32_t parent, const Matrix& sceneFromParent) {
    const auto index = static_cast<int32_t>(model.nodes.size());
    ModelNode node;
    node.source = &source;
    node.parent = parent;
    node.helper = std::string_view(source.mName.C_Str()).find(kFbxHelper) != std::string_view::npos;
    node.name = cleanText(source.mName);
    node.unnamed = isMadeUp(model, node.name);
    // A bone needs some name.
    const std::string number = madeUpNumber(model, node.name);
    if (!number.empty()) node.name = "node" + number;
    if (node.unnamed && source.mNumMeshes > 0) node.name = nameOfMesh(model, source.mMeshes[0]);
    const bool hasUnit = parent == kNoNode && model.format == kColladaReader;
    node.local = hasUnit ? withoutUnit(source.mTransformation) : Matrix(source.mTransformation);
    node.world = sceneFromParent * node.local;
    node.bind = node.world;
    if (!isFinite(node.world)) model.fail("node " + node.name + ": its transform is beyond all numbers");
    const Matrix world = node.world;
    model.nodeByName.emplace(source.mName.C_Str(), index);
    model.nodes.push_back(std::move(node));
    for (unsigned c = 0; c < source.mNumChildren; ++c) addNode(model, *source.mChildren[c], index, world);
}

bool hasTagOfAutoLod(const std::string& name) {
    const std::string_view key = "autolod=";
    for (size_t at = 0; at + key.size() <= name.size(); ++at) {
        if (beginsWith(std::string_view(name).substr(at), key)) return true;
    }
    return false;
}

}  // namespace

// Whatever begins with a role is a layer even when nothing is on it: a bounds layer's tags count without a box.
bool namesRole(const ModelNode& node) {
    constexpr std::string_view kRoles[] = {"collision", "loscollision", "bounds", "nodes", "detail"};
    return !node.unnamed && std::any_of(std::begin(kRoles), std::end(kRoles),
                                        [&](std::string_view role) { return beginsWith(node.name, role); });
}

std::string cleanText(const aiString& text) {
    std::string result;
    std::string_view rest = text.C_Str();
    while (!rest.empty()) {
        const size_t length = sequenceLength(rest);
        const auto first = static_cast<unsigned char>(rest[0]);
        if (length == 0) {
            result += '?';
        } else if (first < 0x20 || first == 0x7F) {
            result += '_';
        } else {
            result += rest.substr(0, length);
        }
        rest.remove_prefix(std::max<size_t>(length, 1));
    }
    return result;
}

void listNodes(Model& model) { addNode(model, *model.source->mRootNode, kNoNode, sceneFromModel(model)); }

void assignLayers(Model& model) {
    model.scene.layers.emplace_back();  // slot 0 never holds anything
    for (size_t i = 0; i < model.nodes.size() && model.error.empty(); ++i) {
        ModelNode& node = model.nodes[i];
        // Parents come first, so theirs is known.
        if (node.parent != kNoNode) {
            const ModelNode& parent = model.nodes[static_cast<size_t>(node.parent)];
            node.layerName = parent.layerName;
            node.belowNodes = beginsWith(parent.layerName, "nodes");
        }
        if (namesLayer(model, static_cast<int32_t>(i))) {
            node.layerName = node.name;
            node.belowNodes = false;
            if (namesRole(node) || hasTagOfAutoLod(node.name)) layerNamed(model, node.name);
        }
        const bool marker = node.belowNodes && !node.helper;
        if (node.source->mNumMeshes == 0 && !marker) continue;
        node.layer = layerNamed(model, node.layerName.empty() ? std::string(kDefaultLayer) : node.layerName);
        node.marker = marker && node.source->mNumMeshes == 0;
    }
}

bool isDetailLayer(const Model& model, int16_t layer) {
    const std::string& name = *model.scene.layers[static_cast<size_t>(layer)];
    constexpr std::string_view kOthers[] = {"collision", "loscollision", "bounds", "nodes"};
    return std::none_of(std::begin(kOthers), std::end(kOthers),
                        [&](std::string_view role) { return beginsWith(name, role); });
}

}  // namespace marrowfen::standin
