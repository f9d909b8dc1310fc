#include "standin/import/assimp_reading.h"

namespace marrowfen::standin {

namespace {

constexpr std::string_view kColladaNameless = "$ColladaAutoName$";
constexpr std::string_view kFbxHelper = "_$AssimpFbx$_";

// The reader may name its root after the file; that is no name that an artist gave.
bool isNamedAfterFile(const AssimpReading& reading, const aiNode& root) {
    const std::filesystem::path name(root.mName.C_Str());
    return name.filename() == reading.path.filename() || name.filename() == reading.path.stem();
}

// What a person calls a node. named: the same node with the other names, or null.
std::string nameOf(const aiNode& source, const aiNode* named) {
    const std::string name = named == nullptr ? std::string() : textOf(named->mName);
    return name.empty() || name.starts_with(kColladaNameless) ? textOf(source.mName) : name;
}

void addNode(AssimpReading& reading, const aiNode& source, const aiNode* named, int32_t parent) {
    const auto index = static_cast<int32_t>(reading.model.nodes.size());
    if (named != nullptr && named->mNumChildren != source.mNumChildren) named = nullptr;
    SourceNode node;
    node.parent = parent;
    node.helper = std::string_view(source.mName.C_Str()).find(kFbxHelper) != std::string_view::npos;
    node.name = nameOf(source, named);
    const std::string number = madeUpNumber(reading, node.name);
    // Other readers make up names such as "<STL_BINARY>".
    node.unnamed =
        node.name.empty() || node.name.front() == '<' || !number.empty() || node.name.starts_with(kColladaNameless);
    if (!number.empty()) node.name = "node" + number;
    if (parent == kNone && isNamedAfterFile(reading, source)) node.unnamed = true;
    node.local = Matrix(source.mTransformation);
    for (unsigned m = 0; m < source.mNumMeshes; ++m) node.meshes.push_back(static_cast<int32_t>(source.mMeshes[m]));
    reading.nodeByName.emplace(source.mName.C_Str(), index);
    reading.model.nodes.push_back(std::move(node));
    for (unsigned c = 0; c < source.mNumChildren; ++c) {
        const aiNode* child = named == nullptr ? nullptr : named->mChildren[c];
        if (source.mChildren[c] != nullptr) addNode(reading, *source.mChildren[c], child, index);
    }
}

}  // namespace

void addNodes(AssimpReading& reading) {
    addNode(reading, *reading.scene.mRootNode, reading.named == nullptr ? nullptr : reading.named->mRootNode, kNone);
}

std::string madeUpNumber(const AssimpReading& reading, const std::string& name) {
    return reading.format.find("glTF") == std::string_view::npos ? std::string() : madeUpNumber(name);
}

int32_t findNode(const AssimpReading& reading, const aiString& name) {
    const auto found = reading.nodeByName.find(name.C_Str());
    return found == reading.nodeByName.end() ? kNone : found->second;
}

}  // namespace marrowfen::standin
