#include "view/triangles.h"

#include <algorithm>
#include <set>

namespace marrowfen::view {

namespace {

int32_t materialOf(const Primitive& primitive) {
    if ((primitive.material & Primitive::NoMaterial) != 0) return -1;
    return static_cast<int32_t>(primitive.material & Primitive::MaterialMask);
}

// Calls visit with the corners of each triangle of the primitive, clockwise, degenerate ones included.
template <class Visit>
void forEachTriangle(const Mesh& mesh, const Primitive& primitive, Visit visit) {
    const auto corner = [&](uint32_t element) {
        const uint32_t i = primitive.firstElement + element;
        return (primitive.material & Primitive::Indexed) != 0 ? mesh.indices[i] : i;
    };
    const uint32_t n = primitive.numElements;
    if ((primitive.material & Primitive::Strip) != 0) {
        // Every second triangle of a strip is wound the other way.
        for (uint32_t i = 0; i + 2 < n; ++i) visit(corner(i + i % 2), corner(i + 1 - i % 2), corner(i + 2));
    } else if ((primitive.material & Primitive::Fan) != 0) {
        for (uint32_t i = 0; i + 2 < n; ++i) visit(corner(0), corner(i + 1), corner(i + 2));
    } else {
        for (uint32_t i = 0; i + 2 < n; i += 3) visit(corner(i), corner(i + 1), corner(i + 2));
    }
}

// The primitives of a sorted mesh's first frame, along every walk that a viewer's position can choose.
std::vector<size_t> reachablePrimitives(const Mesh& mesh) {
    std::vector<size_t> primitives;
    std::vector<bool> seen(mesh.clusters.size(), false);
    std::vector<int32_t> open;
    const auto visit = [&](int32_t cluster) {
        if (cluster < 0 || seen[static_cast<size_t>(cluster)]) return;
        seen[static_cast<size_t>(cluster)] = true;
        open.push_back(cluster);
    };
    visit(mesh.frameStartCluster.empty() ? 0 : mesh.frameStartCluster.front());
    while (!open.empty()) {
        const Cluster& cluster = mesh.clusters[static_cast<size_t>(open.back())];
        open.pop_back();
        for (int32_t p = cluster.startPrimitive; p < cluster.endPrimitive; ++p) {
            primitives.push_back(static_cast<size_t>(p));
        }
        visit(cluster.backCluster);
        visit(cluster.frontCluster);
    }
    return primitives;
}

std::vector<size_t> drawnPrimitives(const Mesh& mesh) {
    if (mesh.type == MeshType::Sorted && !mesh.clusters.empty()) return reachablePrimitives(mesh);
    std::vector<size_t> all(mesh.primitives.size());
    for (size_t i = 0; i < all.size(); ++i) all[i] = i;
    return all;
}

// The same triangle wherever it starts: its smallest vertex first.
Triangle startingAtSmallest(Triangle t) {
    std::rotate(t.begin(), std::min_element(t.begin(), t.end()), t.end());
    return t;
}

TriangleRun& runOf(std::vector<TriangleRun>& runs, int32_t material) {
    const auto found =
        std::find_if(runs.begin(), runs.end(), [&](const TriangleRun& run) { return run.material == material; });
    return found != runs.end() ? *found : runs.emplace_back(TriangleRun{material, {}});
}

}  // namespace

std::vector<TriangleRun> trianglesOf(const Mesh& mesh) {
    std::vector<TriangleRun> runs;
    std::set<std::pair<int32_t, Triangle>> drawn;
    for (const size_t p : drawnPrimitives(mesh)) {
        const int32_t material = materialOf(mesh.primitives[p]);
        forEachTriangle(mesh, mesh.primitives[p], [&](uint32_t a, uint32_t b, uint32_t c) {
            if (a == b || b == c || c == a) return;
            const Triangle flipped = {a, c, b};
            if (mesh.type == MeshType::Sorted && !drawn.emplace(material, startingAtSmallest(flipped)).second) return;
            runOf(runs, material).triangles.push_back(flipped);
        });
    }
    return runs;
}

}  // namespace marrowfen::view
