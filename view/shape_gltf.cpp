#include "view/shape_gltf.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <string_view>

#include "ground/ascii.h"
#include "ground/at.h"
#include "ground/excerpt.h"
#include "ground/version.h"
#include "mesh/mesh_words.h"
#include "shape/shape_questions.h"
#include "view/gltf_file.h"
#include "view/materials_gltf.h"
#include "view/mesh_gltf.h"
#include "view/sequence_gltf.h"
#include "view/shape_fault.h"

// A shape's detail levels become scenes. For each, the nodes that its meshes hang on or are skinned to are laid out
// as a tree of glTF nodes, and the meshes are placed in it; what a mesh is made of is added once and shared.

namespace marrowfen::view {

namespace {

using nlohmann::json;

// The glTF nodes of one scene.
struct Tree {
    int32_t root = -1;            // turns Z up into Y up
    std::vector<int32_t> placed;  // glTF node of each shape node, -1 where the scene has no use for it
};

struct Builder {
    const Shape& shape;
    GltfFile file;
    std::vector<std::string> warnings;
    MaterialMap materials;
    int32_t collisionMaterial = -1;  // added on first use, like the next one
    int32_t lineOfSightMaterial = -1;
    std::map<int32_t, GltfMesh> meshes;            // shape mesh -> what was made of it
    std::vector<std::vector<int32_t>> placements;  // shape node -> its glTF nodes in all scenes
    std::vector<const char*> nodeKinds;            // shape node -> what it is to a person
};

constexpr size_t kMostScenes = 1024;

std::string nameOf(const Shape& shape, int32_t index) { return excerpt(at(shape.names, index)); }

// The level that a viewer should see: the largest of the visible ones; else, as sizes below 0 never show, the first
// one that isn't for collisions; else the first one.
size_t defaultLevel(const Shape& shape) {
    size_t best = shape.detailLevels.size();
    for (size_t i = 0; i < shape.detailLevels.size(); ++i) {
        const Shape::DetailLevel& level = shape.detailLevels[i];
        if (levelKind(shape, level) != LevelKind::Visible) continue;
        if (best == shape.detailLevels.size() || level.size > shape.detailLevels[best].size) best = i;
    }
    return best == shape.detailLevels.size() ? 0 : best;
}

// Marks a node and its ancestors.
void need(const Shape& shape, int32_t node, std::vector<bool>& needed) {
    for (int32_t n = node; n >= 0 && !at(needed, n); n = at(shape.nodes, n).parent) at(needed, n) = true;
}

std::vector<bool> neededNodes(const Shape& shape, const std::vector<LevelMesh>& parts, bool all) {
    std::vector<bool> needed(shape.nodes.size(), all);
    for (const LevelMesh& part : parts) {
        const Mesh& mesh = at(shape.meshes, part.mesh);
        if (mesh.type != MeshType::Skin) need(shape, at(shape.objects, part.object).node, needed);
        for (const int32_t bone : mesh.nodeIndex) {
            if (mesh.type == MeshType::Skin) need(shape, bone, needed);
        }
    }
    return needed;
}

json describeNode(const Builder& b, size_t node) {
    const Quaternion q = commonRotation(b.shape.nodeDefRotations[node]);
    const Point3 t = finiteTranslation(b.shape.nodeDefTranslations[node]);
    return {{"name", nameOf(b.shape, b.shape.nodes[node].name)},
            {"rotation", {q.x, q.y, q.z, q.w}},
            {"translation", {t.x, t.y, t.z}},
            {"extras", {{"kind", b.nodeKinds[node]}}}};
}

void addChild(GltfFile& file, int32_t parent, int32_t child) {
    append(at(file.json["nodes"], parent)["children"], child);
}

Tree addTree(Builder& b, const std::string& name, const std::vector<bool>& needed) {
    // A quarter turn about X: Z up becomes Y up.
    const double half = std::sqrt(0.5);
    Tree tree;
    tree.root = b.file.add("nodes", {{"name", name}, {"rotation", {-half, 0, 0, half}}});
    tree.placed.assign(b.shape.nodes.size(), -1);
    for (size_t n = 0; n < b.shape.nodes.size(); ++n) {
        if (!needed[n]) continue;
        tree.placed[n] = b.file.add("nodes", describeNode(b, n));
        b.placements[n].push_back(tree.placed[n]);
    }
    for (size_t n = 0; n < b.shape.nodes.size(); ++n) {
        if (!needed[n]) continue;
        const int32_t parent = b.shape.nodes[n].parent;
        addChild(b.file, parent < 0 ? tree.root : at(tree.placed, parent), tree.placed[n]);
    }
    return tree;
}

MaterialMap materialsFor(Builder& b, LevelKind kind) {
    MaterialMap map = b.materials;
    if (kind == LevelKind::Collision) {
        if (b.collisionMaterial < 0) b.collisionMaterial = addCollisionMaterial(b.file, "(collision)", false);
        map.withoutMaterial = b.collisionMaterial;
    }
    if (kind == LevelKind::LineOfSight) {
        if (b.lineOfSightMaterial < 0) b.lineOfSightMaterial = addCollisionMaterial(b.file, "(line of sight)", true);
        map.withoutMaterial = b.lineOfSightMaterial;
    }
    return map;
}

const GltfMesh& meshOf(Builder& b, const LevelMesh& part, const std::string& name, LevelKind kind) {
    const auto known = b.meshes.find(part.mesh);
    if (known != b.meshes.end()) return known->second;
    const Mesh& mesh = at(b.shape.meshes, part.mesh);
    return b.meshes[part.mesh] = addMesh(b.file, mesh, name, materialsFor(b, kind), b.warnings);
}

int32_t addSkin(Builder& b, const Tree& tree, const Mesh& mesh, const GltfMesh& made) {
    json joints = json::array();
    for (const int32_t bone : mesh.nodeIndex) joints.push_back(at(tree.placed, bone));
    if (made.hasShapeJoint) joints.push_back(tree.root);
    return b.file.add("skins", {{"joints", joints}, {"inverseBindMatrices", made.inverseBindMatrices}});
}

json meshFacts(const Mesh& mesh, const std::string& object) {
    const char* type = meshTypeWord(mesh.type);
    json facts = {{"type", *type == '\0' ? "unknown" : type}, {"object", object}};
    if ((mesh.flags & (Billboard | BillboardZ)) != 0)
        facts["billboard"] = (mesh.flags & BillboardZ) != 0 ? "z" : "free";
    return facts;
}

// Places the mesh below its object's node or, skinned, among the scene's roots: glTF ignores a skinned node's parents.
void placePart(Builder& b, const LevelMesh& part, const std::string& name, LevelKind kind, const Tree& tree,
               json& scene) {
    const Mesh& mesh = at(b.shape.meshes, part.mesh);
    const Shape::Object& object = at(b.shape.objects, part.object);
    const GltfMesh made = meshOf(b, part, name, kind);
    json node = {{"name", name}, {"extras", meshFacts(mesh, nameOf(b.shape, object.name))}};
    if (made.mesh >= 0) node["mesh"] = made.mesh;
    const bool skinned = made.mesh >= 0 && mesh.type == MeshType::Skin;
    if (skinned) node["skin"] = addSkin(b, tree, mesh, made);
    const int32_t index = b.file.add("nodes", std::move(node));
    if (skinned) {
        append(scene["nodes"], index);
    } else {
        const int32_t under = mesh.type == MeshType::Skin ? -1 : object.node;
        addChild(b.file, under < 0 ? tree.root : at(tree.placed, under), index);
    }
    json& facts = scene["extras"];
    facts["triangles"] = facts["triangles"].get<size_t>() + made.triangles;
    facts["vertices"] = facts["vertices"].get<size_t>() + made.vertices;
    facts["primitives"] = facts["primitives"].get<size_t>() + mesh.primitives.size();
}

void addLevel(Builder& b, const Shape::DetailLevel& level, bool isDefault) {
    constexpr const char* kKinds[] = {"detail", "collision", "los"};
    const LevelKind kind = levelKind(b.shape, level);
    const std::string name = nameOf(b.shape, level.name);
    const std::vector<LevelMesh> parts = meshesOf(b.shape, level);
    const Tree tree = addTree(b, name + " (Z up)", neededNodes(b.shape, parts, isDefault));
    json scene = {{"name", name},
                  {"nodes", {tree.root}},
                  {"extras",
                   {{"kind", kKinds[static_cast<size_t>(kind)]},
                    {"size", std::isfinite(level.size) ? level.size : -1},
                    {"triangles", 0},
                    {"vertices", 0},
                    {"primitives", 0}}}};
    for (const LevelMesh& part : parts) {
        const std::string partName =
            parts.size() == 1 ? name : name + " " + nameOf(b.shape, at(b.shape.objects, part.object).name);
        placePart(b, part, partName, kind, tree, scene);
    }
    b.file.add("scenes", std::move(scene));
}

void addScenes(Builder& b) {
    const std::vector<Shape::DetailLevel>& levels = b.shape.detailLevels;
    if (levels.empty()) {
        if (!b.shape.objects.empty()) b.warnings.emplace_back("no detail level: only the nodes are shown");
        const Tree tree = addTree(b, "nodes (Z up)", std::vector<bool>(b.shape.nodes.size(), true));
        b.file.add("scenes", {{"name", "nodes"}, {"nodes", {tree.root}}});
        return;
    }
    const size_t shown = defaultLevel(b.shape);
    addLevel(b, levels[shown], true);
    if (levels.size() > kMostScenes) {
        b.warnings.push_back("of " + std::to_string(levels.size()) + " detail levels the first " +
                             std::to_string(kMostScenes) + " are shown");
    }
    for (size_t i = 0; i < std::min(levels.size(), kMostScenes); ++i) {
        if (i != shown) addLevel(b, levels[i], false);
    }
}

// What each node is to a person. The file doesn't say, but its links do.
std::vector<const char*> kindsOfNodes(const Shape& shape) {
    std::vector<const char*> kinds;
    for (const Shape::Node& node : shape.nodes) {
        const bool isRoot = equalIgnoringCase(nameOf(shape, node.name), "Root");
        kinds.push_back(node.parent >= 0 ? "bone" : isRoot ? "root" : "marker");
    }
    for (const Shape::Node& node : shape.nodes) {
        if (node.parent >= 0) at(kinds, node.parent) = "bone";
    }
    for (const Mesh& mesh : shape.meshes) {
        if (mesh.type != MeshType::Skin) continue;
        for (const int32_t bone : mesh.nodeIndex) {
            const char*& kind = at(kinds, bone);
            if (std::string_view(kind) == "marker") kind = "bone";
        }
    }
    return kinds;
}

json shapeFacts(const Shape& shape, const std::string& title) {
    json facts = {{"title", title}, {"nodes", shape.nodes.size()}, {"materials", shape.materials.size()}};
    const Point3 extent = shape.bounds.max - shape.bounds.min;
    if (std::isfinite(extent.x) && std::isfinite(extent.y) && std::isfinite(extent.z)) {
        const Box& b = shape.bounds;
        facts["bounds"] = {{b.min.x, b.min.y, b.min.z}, {b.max.x, b.max.y, b.max.z}};
    }
    if (std::isfinite(shape.radius)) facts["radius"] = shape.radius;
    return facts;
}

}  // namespace

GltfResult shapeToGltf(const Shape& shape, const std::string& title) {
    GltfResult result;
    result.error = findFault(shape);
    if (!result.error.empty()) return result;

    Builder b{shape, {}, {}, {}, -1, -1, {}, {}, kindsOfNodes(shape)};
    b.placements.resize(shape.nodes.size());
    b.file.json = {{"asset", {{"version", "2.0"}, {"generator", std::string("Marrowfen ") + kVersion}}},
                   {"scene", 0},
                   {"extras", shapeFacts(shape, title)}};
    b.materials = addMaterials(b.file, shape);
    addScenes(b);
    addAnimations(b.file, shape, b.placements, b.warnings);

    result.glb = b.file.glb();
    if (result.glb.empty()) result.error = "too large for a binary glTF file";
    result.warnings = std::move(b.warnings);
    return result;
}

}  // namespace marrowfen::view
