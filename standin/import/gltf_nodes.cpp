#include <algorithm>
#include <cmath>
#include <tuple>

#include "ground/at.h"
#include "ground/counted.h"
#include "standin/import/gltf_reading.h"

// The nodes of a glTF file: their transforms, the copies that stand for one mesh, and levels of detail.

namespace marrowfen::standin {

namespace {

TransformParts statedParts(const tinygltf::Node& node) {
    TransformParts parts;
    parts.scale = {numberOr(node.scale, 0, 1), numberOr(node.scale, 1, 1), numberOr(node.scale, 2, 1)};
    parts.location = {numberOr(node.translation, 0, 0), numberOr(node.translation, 1, 0),
                      numberOr(node.translation, 2, 0)};
    const Quaternion q(numberOr(node.rotation, 3, 1), numberOr(node.rotation, 0, 0), numberOr(node.rotation, 1, 0),
                       numberOr(node.rotation, 2, 0));
    const double length = std::sqrt(q.w * q.w + q.x * q.x + q.y * q.y + q.z * q.z);
    if (length > 0) parts.rotation = {q.w / length, q.x / length, q.y / length, q.z / length};
    return parts;
}

void setTransform(const tinygltf::Node& source, SourceNode& node) {
    if (source.matrix.size() == 16) {
        node.local = matrixOfColumns(source.matrix.data());
    } else {
        node.parts = statedParts(source);
        node.local = matrixOf(*node.parts);
    }
}

// Where copies of a node's mesh stand: so many of each list, or none.
struct Places {
    std::vector<float> translations, rotations, scales;
    size_t count = 0;

    tinygltf::Node nodeAt(size_t index) const {
        const auto part = [&](const std::vector<float>& numbers, size_t width) {
            if (numbers.empty()) return std::vector<double>();
            const float* first = &numbers[index * width];
            return std::vector<double>(first, first + width);
        };
        tinygltf::Node node;
        node.translation = part(translations, 3);
        node.rotation = part(rotations, 4);
        node.scale = part(scales, 3);
        return node;
    }
};

// Empty, else what is wrong.
std::string readPlaces(GltfDocument& document, const tinygltf::Node& node, Places& places) {
    const auto extension = node.extensions.find("EXT_mesh_gpu_instancing");
    if (extension == node.extensions.end() || !extension->second.Has("attributes")) return {};
    const tinygltf::Value& attributes = extension->second.Get("attributes");
    const std::tuple<const char*, size_t, std::vector<float>&> kLists[] = {
        {"TRANSLATION", 3, places.translations}, {"ROTATION", 4, places.rotations}, {"SCALE", 3, places.scales}};
    for (const auto& [name, width, numbers] : kLists) {
        if (!attributes.Has(name) || !attributes.Get(name).IsInt()) continue;
        const std::string fault = document.readFloats(attributes.Get(name).GetNumberAsInt(), width, numbers);
        if (!fault.empty()) return fault;
        const size_t count = numbers.size() / width;
        if (places.count != 0 && count != places.count) return "its copies have lists of different lengths";
        places.count = count;
    }
    return {};
}

// A node whose mesh stands in several places has a copy for each below it.
std::string addCopies(GltfReading& reading, const tinygltf::Node& source, int32_t node) {
    Places places;
    const std::string fault = readPlaces(reading.document, source, places);
    for (size_t i = 0; i < places.count && fault.empty(); ++i) {
        SourceNode copy;
        copy.name = at(reading.model.nodes, node).name + "_" + std::to_string(i + 1);
        copy.unnamed = true;
        copy.parent = node;
        setTransform(places.nodeAt(i), copy);
        reading.copiesOf[node].push_back(static_cast<int32_t>(reading.model.nodes.size()));
        reading.model.nodes.push_back(std::move(copy));
    }
    return fault;
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
    node.unnamed = node.name.empty() || !madeUpNumber(node.name).empty();
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

}  // namespace

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
            aboutScene(load::kMoreScenes,
                       counted(file.scenes.size() - 1, "further scene is", "further scenes are") + " left out"));
    }
}

}  // namespace marrowfen::standin
