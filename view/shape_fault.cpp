#include "view/shape_fault.h"

#include <algorithm>
#include <cstdint>

namespace marrowfen::view {

namespace {

// Runs may overlap, so that a small file can ask for any number of triangles and keys. These stop it.
constexpr uint64_t kMostElements = 50'000'000;
constexpr uint64_t kMostKeys = 50'000'000;
constexpr uint64_t kMostPlacedNodes = 1'000'000;
constexpr int32_t kMostKeysOfANode = 4'000'000;  // more can't be told apart as seconds in 32-bit floats
constexpr size_t kMostBones = 65'535;            // glTF numbers joints in 16 bits

// Collects the first fault: each check says what it looks at, and nothing is looked at after a fault.
class Faults {
public:
    const std::string& text() const { return text_; }
    bool any() const { return !text_.empty(); }

    void report(const std::string& what) {
        if (!any()) text_ = what;
    }

    // link must lie in [0, count), or be -1 where that means none.
    void checkLink(const std::string& where, const char* to, int64_t link, size_t count, bool noneAllowed = false) {
        if (link >= 0 && link < static_cast<int64_t>(count)) return;
        if (noneAllowed && link == -1) return;
        report(where + to + " " + std::to_string(link) + " of " + std::to_string(count));
    }

    void checkRange(const std::string& where, const char* of, int64_t first, int64_t length, size_t count) {
        if (first >= 0 && length >= 0 && first + length <= static_cast<int64_t>(count)) return;
        report(where + of + " " + std::to_string(first) + " to " + std::to_string(first + length - 1) + " of " +
               std::to_string(count));
    }

    void checkEqual(const std::string& where, const char* what, size_t count, size_t expected) {
        if (count == expected) return;
        report(where + std::to_string(count) + " " + what + ", expected " + std::to_string(expected));
    }

private:
    std::string text_;
};

std::string at(const char* kind, size_t index) { return std::string(kind) + " " + std::to_string(index) + ": "; }

// Follows every node to its root at most once.
void checkForCircles(const Shape& shape, Faults& faults) {
    enum : char { New, OnThisWay, Good };
    std::vector<char> state(shape.nodes.size(), New);
    std::vector<size_t> way;
    for (size_t n = 0; n < shape.nodes.size() && !faults.any(); ++n) {
        way.clear();
        for (auto m = static_cast<int32_t>(n); m >= 0 && state[static_cast<size_t>(m)] != Good;) {
            const auto i = static_cast<size_t>(m);
            if (state[i] == OnThisWay) return faults.report(at("node", i) + "is its own ancestor");
            state[i] = OnThisWay;
            way.push_back(i);
            m = shape.nodes[i].parent;
        }
        for (const size_t i : way) state[i] = Good;
    }
}

void checkNodes(const Shape& shape, Faults& faults) {
    for (size_t n = 0; n < shape.nodes.size(); ++n) {
        const std::string where = at("node", n);
        faults.checkLink(where, "name", shape.nodes[n].name, shape.names.size());
        faults.checkLink(where, "parent", shape.nodes[n].parent, shape.nodes.size(), true);
    }
    faults.checkEqual("nodes: ", "default rotations", shape.nodeDefRotations.size(), shape.nodes.size());
    faults.checkEqual("nodes: ", "default translations", shape.nodeDefTranslations.size(), shape.nodes.size());
    if (!faults.any()) checkForCircles(shape, faults);
}

void checkObjects(const Shape& shape, Faults& faults) {
    for (size_t i = 0; i < shape.objects.size(); ++i) {
        const Shape::Object& object = shape.objects[i];
        const std::string where = at("object", i);
        faults.checkLink(where, "name", object.name, shape.names.size());
        faults.checkLink(where, "node", object.node, shape.nodes.size(), true);
        faults.checkRange(where, "meshes", object.firstMesh, object.numMeshes, shape.meshes.size());
    }
    for (size_t i = 0; i < shape.detailLevels.size(); ++i) {
        const std::string where = at("detail level", i);
        faults.checkLink(where, "name", shape.detailLevels[i].name, shape.names.size());
        if (shape.subshapes.empty()) continue;
        faults.checkLink(where, "subshape", shape.detailLevels[i].subshape, shape.subshapes.size(), true);
    }
    for (size_t i = 0; i < shape.subshapes.size(); ++i) {
        const Shape::SubShape& part = shape.subshapes[i];
        faults.checkRange(at("subshape", i), "objects", part.firstObject, part.numObjects, shape.objects.size());
    }
    if (shape.detailLevels.size() * (shape.objects.size() + shape.nodes.size()) > kMostPlacedNodes) {
        faults.report(std::to_string(shape.detailLevels.size()) + " detail levels are too many to show");
    }
}

void checkPrimitives(const Shape& shape, const Mesh& mesh, const std::string& where, Faults& faults) {
    for (const Primitive& p : mesh.primitives) {
        const bool indexed = (p.material & Primitive::Indexed) != 0;
        faults.checkRange(where, indexed ? "a primitive draws elements" : "a primitive draws vertices", p.firstElement,
                          p.numElements, indexed ? mesh.indices.size() : mesh.vertexes.size());
        if ((p.material & Primitive::NoMaterial) == 0) {
            faults.checkLink(where, "a primitive has material", p.material & Primitive::MaterialMask,
                             shape.materials.size());
        }
        if (faults.any()) return;
    }
    for (size_t i = 0; i < mesh.indices.size(); ++i) {
        if (mesh.indices[i] < mesh.vertexes.size()) continue;
        return faults.checkLink(where + "index " + std::to_string(i), " names vertex", mesh.indices[i],
                                mesh.vertexes.size());
    }
}

void checkSkin(const Shape& shape, const Mesh& mesh, const std::string& where, Faults& faults) {
    faults.checkEqual(where, "initial transforms", mesh.initialTransforms.size(), mesh.nodeIndex.size());
    faults.checkEqual(where, "weighted bones", mesh.vbone.size(), mesh.vindex.size());
    faults.checkEqual(where, "weights", mesh.vweight.size(), mesh.vindex.size());
    for (const int32_t node : mesh.nodeIndex) {
        faults.checkLink(where, "a bone is node", node, shape.nodes.size());
    }
    if (mesh.nodeIndex.size() > kMostBones) faults.report(where + "too many bones to show");
    std::vector<int32_t> bones = mesh.nodeIndex;
    std::sort(bones.begin(), bones.end());
    const auto twice = std::adjacent_find(bones.begin(), bones.end());
    if (twice != bones.end()) faults.report(where + "two bone slots name node " + std::to_string(*twice));
    for (size_t i = 0; i < mesh.vindex.size() && !faults.any(); ++i) {
        faults.checkLink(where, "a weight is for vertex", mesh.vindex[i], mesh.vertexes.size());
        faults.checkLink(where, "a weight is for bone slot", mesh.vbone[i], mesh.nodeIndex.size());
    }
}

void checkClusters(const Mesh& mesh, const std::string& where, Faults& faults) {
    for (size_t i = 0; i < mesh.clusters.size() && !faults.any(); ++i) {
        const Cluster& c = mesh.clusters[i];
        const std::string cluster = where + at("cluster", i);
        faults.checkRange(cluster, "draws primitives", c.startPrimitive,
                          static_cast<int64_t>(c.endPrimitive) - c.startPrimitive, mesh.primitives.size());
        faults.checkLink(cluster, "links to cluster", c.frontCluster, mesh.clusters.size(), true);
        faults.checkLink(cluster, "links to cluster", c.backCluster, mesh.clusters.size(), true);
    }
    if (!mesh.clusters.empty() && !mesh.frameStartCluster.empty()) {
        faults.checkLink(where, "starts at cluster", mesh.frameStartCluster.front(), mesh.clusters.size(), true);
    }
}

void checkMeshes(const Shape& shape, Faults& faults) {
    uint64_t elements = 0;
    for (size_t i = 0; i < shape.meshes.size() && !faults.any(); ++i) {
        const Mesh& mesh = shape.meshes[i];
        const std::string where = at("mesh", i);
        checkPrimitives(shape, mesh, where, faults);
        if (mesh.type == MeshType::Skin) checkSkin(shape, mesh, where, faults);
        if (mesh.type == MeshType::Sorted) checkClusters(mesh, where, faults);
        for (const Primitive& p : mesh.primitives) elements += p.numElements;
        if (elements > kMostElements) faults.report(where + "too many triangles to show");
    }
}

size_t membersOf(const IndexSet& set, size_t limit) {
    size_t members = 0;
    for (size_t i = 0; i < std::min(set.size(), limit); ++i) members += set.test(i) ? 1 : 0;
    return members;
}

// Padding bits beyond the nodes may be there; set ones may not.
void checkMatters(const IndexSet& set, size_t nodes, const std::string& where, Faults& faults) {
    for (size_t i = nodes; i < set.size(); ++i) {
        if (set.test(i)) faults.checkLink(where, "moves node", static_cast<int64_t>(i), nodes);
    }
}

void checkSequences(const Shape& shape, Faults& faults) {
    uint64_t keys = 0;
    for (size_t i = 0; i < shape.sequences.size() && !faults.any(); ++i) {
        const Shape::Sequence& s = shape.sequences[i];
        const std::string where = at("sequence", i);
        const size_t nodes = shape.nodes.size();
        faults.checkLink(where, "name", s.nameIndex, shape.names.size());
        checkMatters(s.rotationMatters, nodes, where, faults);
        checkMatters(s.translationMatters, nodes, where, faults);
        const auto rotations = static_cast<int64_t>(membersOf(s.rotationMatters, nodes)) * s.numKeyFrames;
        const auto translations = static_cast<int64_t>(membersOf(s.translationMatters, nodes)) * s.numKeyFrames;
        if (rotations != 0) {
            faults.checkRange(where, "rotation keys", s.baseRotation, rotations, shape.nodeRotations.size());
        }
        if (translations != 0) {
            faults.checkRange(where, "translation keys", s.baseTranslation, translations,
                              shape.nodeTranslations.size());
        }
        keys += static_cast<uint64_t>(rotations) + static_cast<uint64_t>(translations);
        if (keys > kMostKeys || s.numKeyFrames > kMostKeysOfANode) faults.report(where + "too many keys to show");
    }
}

}  // namespace

std::string findFault(const Shape& shape) {
    Faults faults;
    checkNodes(shape, faults);
    checkObjects(shape, faults);
    checkMeshes(shape, faults);
    checkSequences(shape, faults);
    return faults.text();
}

}  // namespace marrowfen::view
