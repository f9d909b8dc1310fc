#include "mesh/face_adjacency.h"

namespace marrowfen {

FaceAdjacency::FaceAdjacency(const std::vector<Corners>& faces, uint32_t vertexCount)
    : faces_(faces), firstEdge_(size_t{vertexCount} + 1), edges_(3 * faces.size()), across_(3 * faces.size()) {
    sortByVertex(vertexCount);
    std::vector<int32_t> faceTo(vertexCount, kNone);
    for (uint32_t v = 0; v < vertexCount; ++v) linkEdgesAt(v, faceTo);
}

// Puts each edge with its first vertex.
void FaceAdjacency::sortByVertex(uint32_t vertexCount) {
    for (const Corners& face : faces_) {
        for (const uint32_t v : face) ++firstEdge_[v];
    }
    for (size_t v = 1; v < firstEdge_.size(); ++v) firstEdge_[v] += firstEdge_[v - 1];
    // Filling from the back turns the ends into starts and leaves the faces of a vertex ascending.
    for (auto f = static_cast<uint32_t>(faces_.size()); f-- > 0;) {
        const Corners& face = faces_[f];
        edges_[--firstEdge_[face[2]]] = edgeTo(face[0], 3 * f + 2);
        edges_[--firstEdge_[face[1]]] = edgeTo(face[2], 3 * f + 1);
        edges_[--firstEdge_[face[0]]] = edgeTo(face[1], 3 * f);
    }
    for (uint32_t v = 0; v < vertexCount; ++v) {
        if (isHub(v)) std::sort(edges_.begin() + firstEdge_[v], edges_.begin() + firstEdge_[v + 1]);
    }
}

// Finds the faces across the edges that arrive at the vertex among the edges that leave it. faceTo: kNone for every
// vertex, before and after.
void FaceAdjacency::linkEdgesAt(uint32_t vertex, std::vector<int32_t>& faceTo) {
    for (const uint64_t edge : edgesFrom(vertex)) {
        int32_t& face = faceTo[end(edge)];
        face = face == kNone ? static_cast<int32_t>(faceOf(edge)) : kSeveral;
    }
    for (const uint64_t edge : edgesFrom(vertex)) {
        const uint32_t face = faceOf(edge);
        const uint32_t arriving = (numberOf(edge) - 3 * face + 2) % 3;
        const int32_t other = faceTo[faces_[face][arriving]];
        const bool isNeighbor = other < 0 || isAdjacent(face, static_cast<uint32_t>(other));
        across_[3 * size_t{face} + arriving] = isNeighbor ? other : kNone;
    }
    for (const uint64_t edge : edgesFrom(vertex)) faceTo[end(edge)] = kNone;
}

bool FaceAdjacency::isAdjacent(uint32_t f, uint32_t g) const {
    if (f == g) return false;
    const Corners& lower = faces_[std::min(f, g)];
    const Corners& higher = faces_[std::max(f, g)];
    return !(hasCorner(higher, lower[0]) && hasCorner(higher, lower[1]) && hasCorner(higher, lower[2]));
}

}  // namespace marrowfen
