#include <algorithm>
#include <functional>

#include "ground/at.h"
#include "host/tsxapi.h"
#include "standin/import/model.h"

// The model's nodes as nodes of the scene: a node with meshes is a polyhedron, a marker is one without geometry,
// anything else that holds such nodes is a group. Positions and normals stand in scene space already, since the host's
// vertex transform moves positions and leaves normals as they are; the node's own pose still says where the node is.

namespace marrowfen::standin {

namespace {

constexpr Transform kIdentity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};

Node newNode(const Model& model, int32_t index, int32_t type) {
    const ModelNode& source = at(model.nodes, index);
    Node node;
    node.type = type;
    node.name = source.name;
    node.id = nodeId(index);
    node.layer = source.layer;
    const Matrix pose = poseInScene(model, source.world);
    node.location = locationOf(pose);
    node.rotation = anglesOf(pose);
    return node;
}

// What becomes of one node, given its children: a node, or the children in its place.
std::vector<Node> placeNode(Model& model, int32_t index, std::vector<Node> children, BoneVertices& held) {
    const ModelNode& source = at(model.nodes, index);
    const bool hasMeshes = !source.source->meshes.empty();
    if (!hasMeshes && !source.marker) {
        // Groups that hold nothing are left out, and so are the nodes that a reader adds on its own.
        if (children.empty() || source.source->helper || source.parent == kNoNode) return children;
        std::vector<Node> group(1, newNode(model, index, TsxGroup));
        group[0].children = std::move(children);
        return group;
    }
    std::vector<Node> result(1, newNode(model, index, TsxPolyhedron));
    if (hasMeshes) result[0].polyhedron = convertMeshes(model, index, held);
    result[0].polyhedron.vertexTransform = kIdentity;
    result[0].children = std::move(children);
    if (hasMeshes && result[0].polyhedron.faces.empty()) return std::move(result[0].children);
    return result;
}

}  // namespace

void eachNode(std::vector<Node>& nodes, const std::function<void(Node&)>& act) {
    for (Node& node : nodes) {
        act(node);
        eachNode(node.children, act);
    }
}

std::string nodeId(int32_t node) { return "node " + std::to_string(node); }

std::string boneId(int32_t node, int16_t layer) {
    return "bone " + std::to_string(node) + " on layer " + std::to_string(layer);
}

void placeNodes(Model& model, BoneVertices& held) {
    // Children come after their parents, so going backwards every node finds its children made. They are gathered last
    // one first.
    std::vector<std::vector<Node>> childrenOf(model.nodes.size() + 1);
    const size_t top = model.nodes.size();
    for (size_t i = model.nodes.size(); i-- > 0 && model.error.empty();) {
        std::reverse(childrenOf[i].begin(), childrenOf[i].end());
        std::vector<Node> placed = placeNode(model, static_cast<int32_t>(i), std::move(childrenOf[i]), held);
        const int32_t parent = model.nodes[i].parent;
        auto& siblings = childrenOf[parent == kNoNode ? top : static_cast<size_t>(parent)];
        std::move(placed.rbegin(), placed.rend(), std::back_inserter(siblings));
        childrenOf[i].clear();
    }
    std::reverse(childrenOf[top].begin(), childrenOf[top].end());
    model.scene.nodes = std::move(childrenOf[top]);
}

void shortenIds(Scene& scene) {
    std::map<std::string, int> uses;
    eachNode(scene.nodes, [&](Node& node) { ++uses[node.name]; });

    std::unordered_map<std::string, std::string> shorter;
    std::map<std::string, int> copies;
    eachNode(scene.nodes, [&](Node& node) {
        std::string id = node.name;
        if (uses[node.name] > 1 || node.name.empty()) {
            do {
                id = node.name + "#" + std::to_string(++copies[node.name]);
            } while (uses.count(id) > 0);
        }
        shorter.emplace(*node.id, id);
        node.id = id == node.name ? std::nullopt : std::optional<std::string>(id);
    });

    const auto rename = [&](std::string& id) { id = shorter.at(id); };
    eachNode(scene.nodes, [&](Node& node) {
        for (auto& [polyhedron, vertices] : node.tendon) rename(polyhedron);
    });
    for (Clip& clip : scene.clips) {
        for (auto& [node, keys] : clip.keys) rename(node);
    }
}

}  // namespace marrowfen::standin
