#include "mesh/face_adjacency.h"

#include <cassert>

namespace marrowfen {

namespace {

// The corner of a face that an edge of it leaves out, kNoThird for one of the edge's own: the face is degenerate.
constexpr uint32_t kNoThird = UINT32_MAX;
uint32_t thirdCorner(const Corners& face, uint32_t a, uint32_t b) {
    for (const uint32_t corner : face) {
        if (corner != a && corner != b) return corner;
    }
    return kNoThird;
}

}  // namespace

FaceAdjacency::FaceAdjacency(const std::vector<Corners>& faces, uint32_t vertexCount)
    : faces_(faces), firstEdge_(size_t{vertexCount} + 1), edges_(3 * faces.size()), across_(3 * faces.size()) {
    sortByVertex(vertexCount);
    std::vector<int32_t> faceTo(vertexCount, kNone);
    for (uint32_t v = 0; v < vertexCount; ++v) linkEdgesAt(v, faceTo);
    countNeighbors();
    assert(firstEdge_.back() == edges_.size());
}

// The faces across an edge that many faces have are counted for all of them together.
void FaceAdjacency::countNeighbors() {
    neighborCounts_.resize(faces_.size());
    for (uint32_t f = 0; f < faces_.size(); ++f) {
        for (uint32_t edge = 0; edge < edgeCount(faces_[f]); ++edge) {
            const uint32_t from = faces_[f][edge], to = faces_[f][(edge + 1) % 3];
            const bool manyAcross = across_[3 * size_t{f} + edge] == kSeveral && isCrowded(from, to, kHubValence);
            if (!manyAcross) {
                visitAcross(f, edge, [&](uint32_t) { ++neighborCounts_[f]; });
            } else if (faceOf(edgesBetween(from, to).front()) == f) {
                countAcrossCrowded(from, to);
            }
        }
    }
}

// A face with a third corner is adjacent to those with another one, and to degenerate ones after it; a degenerate one
// to all before it that aren't.
void FaceAdjacency::countAcrossCrowded(uint32_t from, uint32_t to) {
    std::vector<uint32_t> thirds, regular, degenerate;  // of the faces across; the faces are ascending
    uint32_t last = UINT32_MAX;
    visitEdge(to, from, [&](uint32_t g) {
        if (g == last) return;  // a face that is a single point has its edge three times
        last = g;
        const uint32_t third = thirdCorner(faces_[g], from, to);
        (third == kNoThird ? degenerate : regular).push_back(g);
        if (third != kNoThird) thirds.push_back(third);
    });
    std::sort(thirds.begin(), thirds.end());
    const auto below = [](const std::vector<uint32_t>& list, uint32_t n) {
        return std::lower_bound(list.begin(), list.end(), n) - list.begin();
    };

    last = UINT32_MAX;
    visitEdge(from, to, [&](uint32_t f) {
        if (f == last) return;
        last = f;
        const uint32_t third = thirdCorner(faces_[f], from, to);
        const auto same = third == kNoThird ? 0 : below(thirds, third + 1) - below(thirds, third);
        const auto count = third == kNoThird
                               ? below(regular, f)
                               : std::ssize(regular) - same + std::ssize(degenerate) - below(degenerate, f + 1);
        neighborCounts_[f] += static_cast<int32_t>(count);
    });
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
