#include "mesh/face_adjacency.h"

#include <algorithm>

namespace marrowfen {

// Every face edge is put into the bucket of its lower vertex, and each bucket, a handful of edges in ordinary meshes,
// is sorted by the other vertex and the direction. The faces of an edge and those of its reverse then stand side by
// side, and each side gets the other as its faces across.

namespace {

// Turns counts at [i + 1] into starts at [i] and the total at the end.
void accumulate(std::vector<uint32_t>& counts) {
    for (size_t i = 1; i < counts.size(); ++i) counts[i] += counts[i - 1];
}

}  // namespace

FaceAdjacency::FaceAdjacency(const std::vector<Corners>& faces, uint32_t vertexCount) {
    collectFacesOfVertices(faces, vertexCount);
    sortEdges(faces, vertexCount);
    edgeFaces_.reserve(edges_.size());
    across_.resize(edges_.size());
    for (uint32_t v = 0; v < vertexCount; ++v) linkEdgesOf(v);
}

void FaceAdjacency::collectFacesOfVertices(const std::vector<Corners>& faces, uint32_t vertexCount) {
    firstFace_.assign(vertexCount + 1, 0);
    for (const Corners& face : faces) {
        for (const uint32_t v : face) ++firstFace_[v + 1];
    }
    accumulate(firstFace_);
    vertexFaces_.resize(3 * faces.size());
    std::vector<uint32_t> next(firstFace_.begin(), firstFace_.end() - 1);
    for (uint32_t f = 0; f < faces.size(); ++f) {
        for (const uint32_t v : faces[f]) vertexFaces_[next[v]++] = f;
    }
}

void FaceAdjacency::sortEdges(const std::vector<Corners>& faces, uint32_t vertexCount) {
    firstEdge_.assign(vertexCount + 1, 0);
    for (const Corners& face : faces) {
        for (int i = 0; i < 3; ++i) ++firstEdge_[std::min(face[i], face[(i + 1) % 3]) + 1];
    }
    accumulate(firstEdge_);
    edges_.resize(3 * faces.size());
    std::vector<uint32_t> next(firstEdge_.begin(), firstEdge_.end() - 1);
    uint32_t halfEdge = 0;
    for (const Corners& face : faces) {
        for (int i = 0; i < 3; ++i, ++halfEdge) {
            const uint32_t p = face[i], q = face[(i + 1) % 3];
            edges_[next[std::min(p, q)]++] = edgeKey(std::max(p, q), p > q, halfEdge);
        }
    }
    for (uint32_t v = 0; v < vertexCount; ++v) {
        std::sort(edges_.begin() + firstEdge_[v], edges_.begin() + firstEdge_[v + 1]);
    }
}

// Gives each edge of the bucket the faces of the reversed edge.
void FaceAdjacency::linkEdgesOf(uint32_t lowVertex) {
    const uint32_t end = firstEdge_[lowVertex + 1];
    for (uint32_t begin = firstEdge_[lowVertex]; begin < end;) {
        const uint32_t other = otherEnd(edges_[begin]);
        const uint32_t middle = directedEnd(edges_[begin]) % 2 == 0 ? runEnd(begin, end) : begin;
        const bool hasBackward = middle < end && otherEnd(edges_[middle]) == other;
        const uint32_t last = hasBackward ? runEnd(middle, end) : middle;
        const Range forward = addFaces(begin, middle);
        const Range backward = addFaces(middle, last);
        const bool joinsItself = other == lowVertex;  // then the reversed edge is the edge itself
        for (uint32_t i = begin; i < middle; ++i) across_[halfEdge(edges_[i])] = joinsItself ? forward : backward;
        for (uint32_t i = middle; i < last; ++i) across_[halfEdge(edges_[i])] = forward;
        begin = last;
    }
}

// End of the run of equal directed edges that starts at begin.
uint32_t FaceAdjacency::runEnd(uint32_t begin, uint32_t end) const {
    uint32_t i = begin + 1;
    while (i < end && directedEnd(edges_[i]) == directedEnd(edges_[begin])) ++i;
    return i;
}

// Appends the faces of a run of equal directed edges, each once: a face whose corners are all one vertex has its edge
// three times.
FaceAdjacency::Range FaceAdjacency::addFaces(uint32_t begin, uint32_t end) {
    const auto first = static_cast<uint32_t>(edgeFaces_.size());
    for (uint32_t i = begin; i < end; ++i) {
        const uint32_t face = halfEdge(edges_[i]) / 3;
        if (edgeFaces_.size() == first || edgeFaces_.back() != face) edgeFaces_.push_back(face);
    }
    return {first, static_cast<uint32_t>(edgeFaces_.size()) - first};
}

// First edge of the lower vertex's bucket that leads to the higher vertex or beyond.
uint32_t FaceAdjacency::lowerBound(uint32_t low, uint32_t high) const {
    const auto begin = edges_.begin() + firstEdge_[low], end = edges_.begin() + firstEdge_[low + 1];
    return static_cast<uint32_t>(std::lower_bound(begin, end, edgeKey(high, false, 0)) - edges_.begin());
}

}  // namespace marrowfen
