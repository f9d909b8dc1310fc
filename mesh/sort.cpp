#include <algorithm>
#include <cassert>

#include "mesh/cluster_emitter.h"
#include "mesh/mesh.h"
#include "mesh/sort_faces.h"
#include "mesh/sort_tree.h"

// Translucent faces must be drawn back to front from any viewpoint. Each frame's faces become a tree of layers and
// dividing planes (sort_tree), which is laid out as clusters that a viewer walks along (cluster_emitter).

namespace marrowfen {
namespace {

// Are all faces single triangles on the vertices of a frame, and are the tables long enough for every frame?
bool canBeSorted(const Mesh& mesh) {
    if (mesh.numFrames < 1 || mesh.matFrames < 1 || mesh.vertsPerFrame < 0) return false;
    const auto perFrame = static_cast<size_t>(mesh.vertsPerFrame);
    const size_t needed = perFrame * static_cast<size_t>(mesh.numFrames);
    const auto isOfVertices = [&](const Primitive& p) {
        if (!p.isIndexedTriangle() || p.firstElement + size_t{3} > mesh.indices.size()) return false;
        const uint32_t* corners = &mesh.indices[p.firstElement];
        return std::all_of(corners, corners + 3, [&](uint32_t corner) { return corner < perFrame; });
    };
    return needed <= mesh.vertexes.size() && needed <= mesh.normals.size() && needed <= mesh.texturevertexes.size() &&
           std::all_of(mesh.primitives.begin(), mesh.primitives.end(), isOfVertices);
}

template <class T>
std::vector<T> slice(const std::vector<T>& table, size_t start, size_t count) {
    const auto first = table.begin() + static_cast<std::ptrdiff_t>(start);
    return {first, first + static_cast<std::ptrdiff_t>(count)};
}

template <class T>
void append(std::vector<T>& table, const std::vector<T>& more) {
    table.insert(table.end(), more.begin(), more.end());
}

SortFaces facesOfFrame(const Mesh& mesh, int32_t frame) {
    const auto perFrame = static_cast<size_t>(mesh.vertsPerFrame);
    const size_t start = static_cast<size_t>(frame) * perFrame;
    assert(start + perFrame <= mesh.vertexes.size());
    SortFaces faces;
    faces.primitives = mesh.primitives;
    faces.indices = mesh.indices;
    faces.vertexes = slice(mesh.vertexes, start, perFrame);
    faces.normals = slice(mesh.normals, start, perFrame);
    faces.texturevertexes = slice(mesh.texturevertexes, start, perFrame);
    return faces;
}

// The tables of all frames, one after the other.
struct Gathered {
    EmittedClusters emitted;
    std::vector<Point3> vertexes;
    std::vector<Point3> normals;
    std::vector<Point2D> texturevertexes;
};

// A frame counts its clusters, primitives and indices from 0. The end of a walk stays the end.
void shift(EmittedClusters& emitted, const EmittedClusters& earlier) {
    const auto clusters = static_cast<int32_t>(earlier.clusters.size());
    const auto primitives = static_cast<int32_t>(earlier.primitives.size());
    for (Cluster& c : emitted.clusters) {
        c.startPrimitive += primitives;
        c.endPrimitive += primitives;
        if (c.frontCluster >= 0) c.frontCluster += clusters;
        if (c.backCluster >= 0) c.backCluster += clusters;
    }
    for (Primitive& p : emitted.primitives) p.firstElement += static_cast<uint32_t>(earlier.indices.size());
}

void gather(Gathered& all, const SortFaces& faces, EmittedClusters emitted) {
    assert(emitted.clusters.empty() ||
           emitted.clusters.back().endPrimitive <= static_cast<int32_t>(emitted.primitives.size()));
    shift(emitted, all.emitted);
    append(all.emitted.clusters, emitted.clusters);
    append(all.emitted.primitives, emitted.primitives);
    append(all.emitted.indices, emitted.indices);
    append(all.vertexes, faces.vertexes);
    append(all.normals, faces.normals);
    append(all.texturevertexes, faces.texturevertexes);
}

}  // namespace

void Mesh::sort() {
    if (!canBeSorted(*this)) {
        setError("A mesh whose primitives are not single triangles of its vertices cannot be sorted");
        return;
    }

    Gathered all;
    for (int32_t frame = 0; frame < numFrames; ++frame) {
        for (int32_t matFrame = 0; matFrame < matFrames; ++matFrame) {
            SortFaces faces = facesOfFrame(*this, frame);
            const std::unique_ptr<SortNode> root = makeSortTree(faces);
            if (matFrame == 0) {
                frameStartCluster.push_back(static_cast<int32_t>(all.emitted.clusters.size()));
                frameFirstVertex.push_back(static_cast<int32_t>(all.vertexes.size()));
                frameVertexCount.push_back(static_cast<int32_t>(faces.vertexes.size()));
            }
            frameFirstTexVertex.push_back(static_cast<int32_t>(all.texturevertexes.size()));
            gather(all, faces, emitClusters(faces, *root));
        }
    }

    assert(all.vertexes.size() == all.normals.size() && all.vertexes.size() == all.texturevertexes.size());
    clusters = std::move(all.emitted.clusters);
    primitives = std::move(all.emitted.primitives);
    indices = std::move(all.emitted.indices);
    vertexes = std::move(all.vertexes);
    normals = std::move(all.normals);
    texturevertexes = std::move(all.texturevertexes);
}

}  // namespace marrowfen
