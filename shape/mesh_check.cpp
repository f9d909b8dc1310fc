#include <algorithm>

#include "mesh/mesh_words.h"
#include "shape/drawn_triangles.h"
#include "shape/problem_list.h"
#include "shape/shape_questions.h"

namespace marrowfen {

namespace {

constexpr float kFarTexture = 1000;        // beyond, steps of 32-bit floats show in large textures
constexpr float kWeightTolerance = 1e-3F;  // of the sum of a vertex's weights

template <class Entry, class Good>
bool all(const std::vector<Entry>& entries, Good good) {
    return std::all_of(entries.begin(), entries.end(), good);
}

void checkFrames(const Mesh& mesh, size_t i, ProblemList& list) {
    const auto at = [&] { return place("meshes", i); };
    if (mesh.numFrames < 1 || mesh.matFrames < 1 || mesh.vertsPerFrame < 0) {
        return list.add(problem::kMeshFrames, at);
    }
    // A sorted mesh has its own table of each frame's vertices.
    if (mesh.type == MeshType::Sorted) return;
    const int64_t perFrame = mesh.vertsPerFrame;
    if (perFrame * mesh.numFrames != static_cast<int64_t>(mesh.vertexes.size())) {
        list.add(problem::kMeshFrameVertices, at);
    }
    if (perFrame * mesh.matFrames != static_cast<int64_t>(mesh.texturevertexes.size())) {
        list.add(problem::kMeshTextureCount, at);
    }
}

void checkPrimitives(const Shape& shape, const Mesh& mesh, size_t i, ProblemList& list) {
    const size_t vertices = mesh.vertexes.size();
    for (size_t p = 0; p < mesh.primitives.size(); ++p) {
        const Primitive& primitive = mesh.primitives[p];
        const bool indexed = (primitive.material & Primitive::Indexed) != 0;
        const size_t end = size_t{primitive.firstElement} + primitive.numElements;
        if (end > (indexed ? mesh.indices.size() : vertices)) {
            list.add(problem::kMeshRunRange, [&] {
                return place(place("meshes", i) + ".primitives", p, "firstElement", primitive.firstElement);
            });
        }
        const uint32_t material = primitive.material & Primitive::MaterialMask;
        if ((primitive.material & Primitive::NoMaterial) == 0 && material >= shape.materials.size()) {
            list.add(problem::kMeshRunMaterial,
                     [&] { return place(place("meshes", i) + ".primitives", p, "material", material); });
        }
        if ((primitive.material & Primitive::TypeMask) == Primitive::Triangles && primitive.numElements % 3 != 0) {
            list.add(problem::kMeshRunPart, [&] { return place("meshes", i); });
        }
    }
    // The indices count within a frame; a sorted mesh has its own table of frames and no vertsPerFrame.
    const auto perFrame = static_cast<size_t>(std::max(mesh.vertsPerFrame, 0));
    const size_t limit = mesh.type == MeshType::Sorted ? vertices : std::min(vertices, perFrame);
    const auto check = [&](const std::vector<uint32_t>& indices, const char* table) {
        for (size_t k = 0; k < indices.size(); ++k) {
            if (indices[k] < limit) continue;
            list.add(problem::kMeshIndexRange, [&] {
                return place(place("meshes", i) + table, k) + ": " + std::to_string(indices[k]) + " of " +
                       std::to_string(limit);
            });
        }
    };
    check(mesh.indices, ".indices");
    check(mesh.mindices, ".mindices");
}

void checkWeights(const Mesh& mesh, size_t i, ProblemList& list) {
    assert(mesh.vbone.size() == mesh.vindex.size() && mesh.vweight.size() == mesh.vindex.size());
    if (mesh.vertexes.empty()) return;
    if (mesh.vindex.empty()) return list.add(problem::kSkinUnweighted, [&] { return place("meshes", i); });
    std::vector<float> sums(mesh.vertexes.size());
    for (size_t w = 0; w < mesh.vindex.size(); ++w) {
        if (hasIndex(sums, mesh.vindex[w])) at(sums, mesh.vindex[w]) += mesh.vweight[w];
    }
    if (!all(sums, [](float sum) { return std::fabs(sum - 1) <= kWeightTolerance; })) {
        list.add(problem::kSkinWeightSum, [&] { return place("meshes", i); });
    }
}

void checkSkin(const Shape& shape, const Mesh& mesh, size_t i, ProblemList& list) {
    assert(mesh.initialTransforms.size() == mesh.nodeIndex.size());
    if (!all(mesh.nodeIndex, [&](int32_t node) { return hasIndex(shape.nodes, node); })) {
        list.add(problem::kSkinBone, [&] { return place("meshes", i); });
    }
    if (!all(mesh.vindex, [&](int32_t vertex) { return hasIndex(mesh.vertexes, vertex); }) ||
        !all(mesh.vbone, [&](int32_t bone) { return hasIndex(mesh.nodeIndex, bone); })) {
        list.add(problem::kSkinWeightLink, [&] { return place("meshes", i); });
    }
    checkWeights(mesh, i, list);
}

// Whether a walk along the clusters can come back to where it was. Clusters without an unvisited predecessor are taken
// away until none is left but those on circles.
bool hasCircle(const std::vector<Cluster>& clusters) {
    std::vector<int> predecessors(clusters.size());
    const auto forNext = [&](const Cluster& cluster, auto visit) {
        for (const int32_t next : {cluster.frontCluster, cluster.backCluster}) {
            if (hasIndex(clusters, next)) visit(static_cast<size_t>(next));
        }
    };
    for (const Cluster& cluster : clusters) forNext(cluster, [&](size_t next) { ++predecessors[next]; });

    std::vector<size_t> free;
    for (size_t c = 0; c < clusters.size(); ++c) {
        if (predecessors[c] == 0) free.push_back(c);
    }
    size_t taken = 0;
    for (; taken < free.size(); ++taken) {
        forNext(clusters[free[taken]], [&](size_t next) {
            if (--predecessors[next] == 0) free.push_back(next);
        });
    }
    assert(taken == free.size() && taken <= clusters.size());
    return taken < clusters.size();
}

void checkSorted(const Mesh& mesh, size_t i, ProblemList& list) {
    const auto at = [&] { return place("meshes", i); };
    const auto good = [&](const Cluster& c) {
        return isRange(c.startPrimitive, int64_t{c.endPrimitive} - c.startPrimitive, mesh.primitives) &&
               isIndexOrNone(c.frontCluster, mesh.clusters) && isIndexOrNone(c.backCluster, mesh.clusters);
    };
    if (!all(mesh.clusters, good)) list.add(problem::kSortedClusterLink, at);
    if (hasCircle(mesh.clusters)) list.add(problem::kSortedCircle, at);

    if (mesh.clusters.empty() && !mesh.primitives.empty()) list.add(problem::kSortedNoCluster, at);
    const size_t unreached = mesh.clusters.size() - reachableClusters(mesh, SIZE_MAX).size();
    if (unreached > 0) {
        list.add(problem::kSortedUnreached, [&] { return place("meshes", i, "clusters", unreached); });
    }

    // A mesh without faces keeps no cluster, and its walk starts at the end.
    const auto isStart = [&](int32_t c) { return hasIndex(mesh.clusters, c) || (c == 0 && mesh.clusters.empty()); };
    bool frames = mesh.frameFirstVertex.size() == mesh.frameVertexCount.size() &&
                  all(mesh.frameStartCluster, isStart) &&
                  all(mesh.frameFirstTexVertex, [&](int32_t t) { return isRange(t, 0, mesh.texturevertexes); });
    for (size_t f = 0; frames && f < mesh.frameFirstVertex.size(); ++f) {
        // The count is from before equal vertices were merged, so it may reach beyond the list.
        frames = isRange(mesh.frameFirstVertex[f], 0, mesh.vertexes) && mesh.frameVertexCount[f] >= 0;
    }
    if (!frames) list.add(problem::kSortedFrames, at);
}

}  // namespace

void checkMeshes(const Shape& shape, ProblemList& list) {
    for (size_t i = 0; i < shape.meshes.size(); ++i) {
        const Mesh& mesh = shape.meshes[i];
        if (mesh.type == MeshType::Null) continue;
        if (*meshTypeWord(mesh.type) == '\0') {
            list.add(problem::kMeshType, [&] { return place("meshes", i, "type", static_cast<int32_t>(mesh.type)); });
        }
        if (!isIndexOrNone(mesh.parent, shape.meshes)) {
            list.add(problem::kMeshParent, [&] { return place("meshes", i, "parent", mesh.parent); });
        }
        if (!isFinite(mesh)) list.add(problem::kMeshNumber, [&] { return place("meshes", i); });
        const auto isNear = [](const Point2D& t) {
            return std::fabs(t.x) <= kFarTexture && std::fabs(t.y) <= kFarTexture;
        };
        if (!all(mesh.texturevertexes, isNear)) {
            list.add(problem::kMeshTextureFar, [&] { return place("meshes", i); });
        }
        checkFrames(mesh, i, list);
        checkPrimitives(shape, mesh, i, list);
        if (mesh.type == MeshType::Skin) checkSkin(shape, mesh, i, list);
        if (mesh.type == MeshType::Sorted) checkSorted(mesh, i, list);
    }
}

}  // namespace marrowfen
