#include <algorithm>

#include "ground/at.h"
#include "standin/import/model.h"
#include "standin/import/simplify.h"

// Levels of detail that the model doesn't have: copies of its polyhedra with fewer triangles, on layers of their own.

namespace marrowfen::standin {

namespace {

constexpr size_t kLeastTriangles = 4;

size_t trianglesOn(std::vector<Node>& nodes, int16_t layer) {
    size_t count = 0;
    eachNode(nodes, [&](Node& node) { count += node.layer == layer ? node.polyhedron.faces.size() : 0; });
    return count;
}

// The vertices of a polyhedron that a bone holds, on the simpler one.
std::vector<int32_t> stillHeld(const std::vector<int32_t>& vertices, const std::vector<int32_t>& vertexOf) {
    std::vector<int32_t> result;
    for (const int32_t vertex : vertices) {
        const int32_t now = at(vertexOf, vertex);
        if (now != kNone) result.push_back(now);
    }
    std::sort(result.begin(), result.end());
    return result;
}

void reduceInPlace(Node& node, size_t triangles, BoneVertices& held) {
    SimplerPolyhedron simpler = simplify(node.polyhedron, triangles);
    for (auto& [place, lists] : held) {
        for (auto& [polyhedron, vertices] : lists) {
            if (polyhedron == *node.id) vertices = stillHeld(vertices, simpler.vertexOf);
        }
    }
    node.polyhedron = std::move(simpler.polyhedron);
}

Node simplerCopy(const Node& node, int16_t layer, double part, BoneVertices& held) {
    const auto wanted = static_cast<size_t>(static_cast<double>(node.polyhedron.faces.size()) * part);
    SimplerPolyhedron simpler = simplify(node.polyhedron, std::max(wanted, kLeastTriangles));
    Node copy = node;
    copy.children.clear();
    copy.layer = layer;
    copy.id = *node.id + " on layer " + std::to_string(layer);
    copy.polyhedron = std::move(simpler.polyhedron);
    std::vector<std::pair<int32_t, std::vector<int32_t>>> taken;
    for (const auto& [place, lists] : held) {
        if (place.first != node.layer) continue;
        for (const auto& [polyhedron, vertices] : lists) {
            if (polyhedron == *node.id) taken.emplace_back(place.second, stillHeld(vertices, simpler.vertexOf));
        }
    }
    for (auto& [bone, vertices] : taken) held[{layer, bone}].emplace_back(*copy.id, std::move(vertices));
    return copy;
}

void limitTriangles(Model& model, BoneVertices& held) {
    for (size_t i = 1; i < model.scene.layers.size(); ++i) {
        const auto layer = static_cast<int16_t>(i);
        const size_t count = trianglesOn(model.scene.nodes, layer);
        if (count <= model.options.mostTriangles || !isDetailLayer(model, layer)) continue;
        const double part = static_cast<double>(model.options.mostTriangles) / static_cast<double>(count);
        eachNode(model.scene.nodes, [&](Node& node) {
            if (node.layer != layer || node.polyhedron.faces.empty()) return;
            const auto wanted = static_cast<size_t>(static_cast<double>(node.polyhedron.faces.size()) * part);
            reduceInPlace(node, std::max(wanted, size_t{1}), held);
        });
        const std::string& name = *model.scene.layers[i];
        model.notes.others.push_back({&load::kFewerTriangles, Message::Place::Layer, name,
                                      "layer " + name + " has " +
                                          std::to_string(trianglesOn(model.scene.nodes, layer)) + " of " +
                                          std::to_string(count) + " triangles left, as --max-triangles asks"});
    }
}

}  // namespace

void addLevels(Model& model, BoneVertices& held) {
    if (model.options.mostTriangles > 0) limitTriangles(model, held);
    if (model.firstLevel == kNoLayer) return;
    for (size_t k = 1; k < model.options.levels.size(); ++k) {
        const LevelOption& level = model.options.levels[k];
        if (k < model.levelsFound) continue;  // the model has one of its own
        const auto layer = static_cast<int16_t>(model.scene.layers.size());
        model.scene.layers.emplace_back("Detail" + std::to_string(k + 1) + ":size=" + std::to_string(level.size));
        std::vector<Node> copies;
        eachNode(model.scene.nodes, [&](Node& node) {
            if (node.layer != model.firstLevel || node.polyhedron.faces.empty()) return;
            copies.push_back(simplerCopy(node, layer, level.percent / 100.0, held));
        });
        std::move(copies.begin(), copies.end(), std::back_inserter(model.scene.nodes));
    }
}

}  // namespace marrowfen::standin
