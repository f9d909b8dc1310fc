#include "shape/drawn_triangles.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "ground/at.h"

namespace marrowfen {

namespace {

int32_t materialOf(const Primitive& primitive) {
    if ((primitive.material & Primitive::NoMaterial) != 0) return -1;
    return static_cast<int32_t>(primitive.material & Primitive::MaterialMask);
}

// The vertices of a primitive's elements.
class ElementVertices {
public:
    ElementVertices(const Mesh& mesh, const Primitive& primitive)
        : mesh_(mesh),
          isIndexed_((primitive.material & Primitive::Indexed) != 0),
          first_(primitive.firstElement),
          count_(primitive.numElements) {
        const size_t there = isIndexed_ ? mesh.indices.size() : mesh.vertexes.size();
        count_ = std::min(count_, there - std::min(first_, there));
    }

    size_t count() const { return count_; }
    uint32_t operator[](size_t element) const {
        assert(element < count_);
        return isIndexed_ ? at(mesh_.indices, first_ + element) : static_cast<uint32_t>(first_ + element);
    }

private:
    const Mesh& mesh_;
    bool isIndexed_;
    size_t first_, count_;
};

// Calls visit(triangle) for each triangle of the primitive, those that aren't drawn included.
template <class Visit>
void unroll(const Mesh& mesh, const Primitive& primitive, Visit visit) {
    const ElementVertices corner(mesh, primitive);
    const size_t n = corner.count();
    if ((primitive.material & Primitive::Strip) != 0) {
        // Every second triangle of a strip is wound the other way.
        for (size_t i = 0; i + 2 < n; ++i) visit({corner[i + i % 2], corner[i + 1 - i % 2], corner[i + 2]});
    } else if ((primitive.material & Primitive::Fan) != 0) {
        for (size_t i = 0; i + 2 < n; ++i) visit({corner[0], corner[i + 1], corner[i + 2]});
    } else {
        for (size_t i = 0; i + 2 < n; i += 3) visit({corner[i], corner[i + 1], corner[i + 2]});
    }
}

bool isDrawn(const Triangle& t) { return t[0] != t[1] && t[1] != t[2] && t[2] != t[0]; }

// The primitives of a sorted mesh's first frame, along every walk that a viewer's position can choose.
std::vector<size_t> reachablePrimitives(const Mesh& mesh) {
    std::vector<size_t> primitives;
    std::vector<bool> isListed(mesh.primitives.size());
    for (const int32_t c : reachableClusters(mesh, 1)) {
        const Cluster& cluster = at(mesh.clusters, c);
        const int32_t end = std::min(cluster.endPrimitive, count32(mesh.primitives));
        for (int32_t p = std::max(cluster.startPrimitive, 0); p < end; ++p) {
            if (!at(isListed, p)) primitives.push_back(static_cast<size_t>(p));
            at(isListed, p) = true;
        }
    }
    assert(primitives.size() <= mesh.primitives.size());
    return primitives;
}

// The same triangle wherever it starts: its smallest vertex first.
Triangle startingAtSmallest(Triangle t) {
    std::rotate(t.begin(), std::min_element(t.begin(), t.end()), t.end());
    return t;
}

// Calls visit(material, triangle) for each triangle that is drawn.
template <class Visit>
void forEachDrawn(const Mesh& mesh, Visit visit) {
    if (mesh.type != MeshType::Sorted) {
        for (const Primitive& primitive : mesh.primitives) {
            unroll(mesh, primitive, [&](const Triangle& t) {
                if (isDrawn(t)) visit(materialOf(primitive), t);
            });
        }
        return;
    }
    std::set<std::pair<int32_t, Triangle>> seen;
    const auto visitNew = [&](const Primitive& primitive) {
        unroll(mesh, primitive, [&](const Triangle& t) {
            const int32_t material = materialOf(primitive);
            if (isDrawn(t) && seen.emplace(material, startingAtSmallest(t)).second) visit(material, t);
        });
    };
    if (mesh.clusters.empty()) {
        for (const Primitive& primitive : mesh.primitives) visitNew(primitive);
    }
    for (const size_t p : reachablePrimitives(mesh)) visitNew(at(mesh.primitives, p));
}

TriangleRun& runOf(std::vector<TriangleRun>& runs, int32_t material) {
    const auto found =
        std::find_if(runs.begin(), runs.end(), [&](const TriangleRun& run) { return run.material == material; });
    return found != runs.end() ? *found : runs.emplace_back(TriangleRun{material, {}});
}

}  // namespace

std::vector<int32_t> reachableClusters(const Mesh& mesh, size_t frames) {
    std::vector<int32_t> order, open;
    std::vector<bool> isReached(mesh.clusters.size());
    const auto reach = [&](int32_t cluster) {
        if (!hasIndex(mesh.clusters, cluster) || at(isReached, cluster)) return;
        at(isReached, cluster) = true;
        open.push_back(cluster);
    };
    const auto walk = [&](int32_t start) {
        reach(start);
        while (!open.empty()) {
            order.push_back(open.back());
            open.pop_back();
            const Cluster& cluster = at(mesh.clusters, order.back());
            reach(cluster.backCluster);
            reach(cluster.frontCluster);
        }
    };
    const std::vector<int32_t>& starts = mesh.frameStartCluster;
    if (starts.empty()) walk(0);
    for (size_t f = 0; f < std::min(frames, starts.size()); ++f) walk(starts[f]);
    return order;
}

std::vector<TriangleRun> trianglesOf(const Mesh& mesh) {
    std::vector<TriangleRun> runs;
    forEachDrawn(mesh, [&](int32_t material, const Triangle& t) { runOf(runs, material).triangles.push_back(t); });
    return runs;
}

int64_t countTriangles(const Mesh& mesh) {
    int64_t count = 0;
    forEachDrawn(mesh, [&](int32_t, const Triangle&) { ++count; });
    return count;
}

double drawnArea(const Mesh& mesh) {
    std::set<std::pair<int32_t, std::array<std::array<float, 3>, 3>>> seen;
    double area = 0;
    forEachDrawn(mesh, [&](int32_t material, const Triangle& t) {
        std::array<std::array<float, 3>, 3> corners;
        for (size_t c = 0; c < 3; ++c) {
            const Point3& p = at(mesh.vertexes, t[c]);
            corners[c] = {p.x, p.y, p.z};
        }
        const auto edge = [&](size_t c, size_t axis) { return double{corners[c][axis]} - corners[0][axis]; };
        const double x = edge(1, 1) * edge(2, 2) - edge(1, 2) * edge(2, 1);
        const double y = edge(1, 2) * edge(2, 0) - edge(1, 0) * edge(2, 2);
        const double z = edge(1, 0) * edge(2, 1) - edge(1, 1) * edge(2, 0);
        std::rotate(corners.begin(), std::min_element(corners.begin(), corners.end()), corners.end());
        if (seen.emplace(material, corners).second) area += std::sqrt(x * x + y * y + z * z) / 2;
    });
    return area;
}

uint64_t stepsToDraw(const Mesh& mesh) {
    uint64_t steps = 0;
    for (const Primitive& primitive : mesh.primitives) steps += primitive.numElements;
    for (const Cluster& cluster : mesh.clusters) {
        const int64_t primitives = int64_t{cluster.endPrimitive} - cluster.startPrimitive;
        steps += static_cast<uint64_t>(std::clamp<int64_t>(primitives, 0, count32(mesh.primitives)));
    }
    return steps;
}

}  // namespace marrowfen
