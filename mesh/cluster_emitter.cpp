#include "mesh/cluster_emitter.h"

#include <algorithm>
#include <cassert>
#include <unordered_map>

#include "ground/at.h"

namespace marrowfen {
namespace {

// A face is left out where its normal and an exclusion direction have a larger dot product.
constexpr float kExclusionThreshold = 0.99F;

constexpr int32_t kEndOfWalk = -1;

class Emitter {
public:
    explicit Emitter(const SortFaces& faces) : faces_(faces) {}

    // Appends the node's clusters, the first of which starts its walk; the walk goes on at next.
    void emitNode(const SortNode& node, int32_t next);

    EmittedClusters out;

private:
    int32_t clusterCount() const { return count32(out.clusters); }
    int32_t primitiveCount() const { return count32(out.primitives); }
    Cluster& cluster(int32_t i) { return at(out.clusters, i); }

    void emitBothOrders(const SortNode& node, int32_t first);
    void emitLeaf(const SortNode& node, int32_t first, int32_t next);
    void emitWithout(const SortNode& node, const Point3& direction, int32_t next);
    void emitLayers(const std::vector<FaceList>& layers, bool continuing);
    void emitFaces(const FaceList& faces, bool continuing);
    void emitRun(const FaceList& run);
    bool isExcluded(uint32_t face) const;

    const SortFaces& faces_;
    std::vector<Point3> exclusionDirections_;
};

void Emitter::emitNode(const SortNode& node, int32_t next) {
    // The first cluster leads into the children, a second one closes the node.
    const int32_t first = clusterCount();
    const int32_t last = first + 1;
    out.clusters.resize(out.clusters.size() + 2);
    cluster(first).planeNormal = node.plane.normal;
    cluster(first).planeConstant = node.plane.constant;
    cluster(first).startPrimitive = primitiveCount();
    emitLayers(node.drawFirst, false);
    cluster(first).endPrimitive = primitiveCount();

    if (!node.front) {
        emitLeaf(node, first, next);
        return;
    }
    if (node.back) {
        emitBothOrders(node, first);
    } else {
        cluster(first).frontCluster = cluster(first).backCluster = clusterCount();
        emitNode(*node.front, last);
    }

    cluster(last).startPrimitive = primitiveCount();
    emitLayers(node.drawLast, false);
    cluster(last).endPrimitive = primitiveCount();
    cluster(last).frontCluster = cluster(last).backCluster = next;
}

// From the front a viewer sees the back child first, then the front child; from behind the other way round.
void Emitter::emitBothOrders(const SortNode& node, int32_t first) {
    const int32_t last = first + 1;
    const int32_t nearFront = clusterCount();
    emitNode(*node.front, last);
    cluster(first).frontCluster = clusterCount();
    emitWithout(*node.back, -node.plane.normal, nearFront);

    const int32_t nearBack = clusterCount();
    emitNode(*node.back, last);
    cluster(first).backCluster = clusterCount();
    emitWithout(*node.front, node.plane.normal, nearBack);
}

// One cluster holds all: it takes the place of the second one.
void Emitter::emitLeaf(const SortNode& node, int32_t first, int32_t next) {
    assert(clusterCount() == first + 2);
    const int32_t start = cluster(first).startPrimitive;
    emitFaces(node.leafOrder, primitiveCount() > start);
    emitLayers(node.drawLast, primitiveCount() > start);
    cluster(first).endPrimitive = primitiveCount();
    cluster(first).frontCluster = cluster(first).backCluster = next;
    out.clusters.pop_back();
}

void Emitter::emitWithout(const SortNode& node, const Point3& direction, int32_t next) {
    [[maybe_unused]] const size_t outside = exclusionDirections_.size();
    exclusionDirections_.push_back(direction);
    emitNode(node, next);
    exclusionDirections_.pop_back();
    assert(exclusionDirections_.size() == outside);
}

void Emitter::emitLayers(const std::vector<FaceList>& layers, bool continuing) {
    const int32_t start = primitiveCount();
    for (const FaceList& layer : layers) emitFaces(layer, continuing || primitiveCount() > start);
}

// One run of primitives per material, in the order in which the materials appear; when continuing, the last primitive
// takes the faces of its material first.
void Emitter::emitFaces(const FaceList& faces, bool continuing) {
    std::vector<FaceList> runs;
    std::unordered_map<uint32_t, size_t> runOf;  // by material
    const auto startRun = [&](uint32_t material) {
        const auto [entry, isNew] = runOf.try_emplace(material, runs.size());
        if (isNew) runs.emplace_back();
        return entry->second;
    };
    continuing = continuing && !out.primitives.empty();
    if (continuing) startRun(out.primitives.back().material);
    for (const uint32_t face : faces) {
        if (!isExcluded(face)) runs[startRun(faces_.primitives[face].material)].push_back(face);
    }

    for (size_t i = 0; i < runs.size(); ++i) {
        const bool isOpen = continuing && i == 0;
        if (!isOpen) {
            assert(!runs[i].empty());
            const auto firstElement = static_cast<uint32_t>(out.indices.size());
            out.primitives.push_back({firstElement, 0, faces_.primitives[runs[i].front()].material, 0});
        }
        emitRun(runs[i]);
    }
}

void Emitter::emitRun(const FaceList& run) {
    assert(run.empty() || !out.primitives.empty());
    for (const uint32_t face : run) {
        const uint32_t* corners = faces_.corners(face);
        out.indices.insert(out.indices.end(), corners, corners + 3);
        out.primitives.back().numElements += 3;
    }
}

bool Emitter::isExcluded(uint32_t face) const {
    const Point3& normal = faces_.planes[face].normal;
    return std::any_of(exclusionDirections_.begin(), exclusionDirections_.end(),
                       [&](const Point3& direction) { return dot(normal, direction) > kExclusionThreshold; });
}

// Does a walk come through the cluster without seeing anything of it?
bool isEmpty(const Cluster& c) { return c.startPrimitive == c.endPrimitive && c.frontCluster == c.backCluster; }

// Links to the removed cluster lead on to where it led.
void removeCluster(std::vector<Cluster>& clusters, int32_t removed) {
    assert(isEmpty(at(clusters, removed)));
    const int32_t next = at(clusters, removed).frontCluster;
    const auto relinked = [&](int32_t link) {
        if (link == removed) link = next;
        return link > removed ? link - 1 : link;
    };
    for (Cluster& c : clusters) {
        c.frontCluster = relinked(c.frontCluster);
        c.backCluster = relinked(c.backCluster);
    }
    clusters.erase(clusters.begin() + removed);
}

void removeEmptyClusters(std::vector<Cluster>& clusters) {
    for (;;) {
        const auto empty = std::find_if(clusters.begin(), clusters.end(), isEmpty);
        if (empty == clusters.end()) return;
        removeCluster(clusters, static_cast<int32_t>(empty - clusters.begin()));
    }
}

}  // namespace

EmittedClusters emitClusters(const SortFaces& faces, const SortNode& root) {
    Emitter emitter(faces);
    emitter.emitNode(root, kEndOfWalk);
    assert(emitter.out.clusters.back().frontCluster < count32(emitter.out.clusters));
    removeEmptyClusters(emitter.out.clusters);
    return std::move(emitter.out);
}

}  // namespace marrowfen
