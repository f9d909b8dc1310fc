#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

#include "mesh/corners.h"

namespace marrowfen {

// Which faces are adjacent: one has an edge of the other the other way round, and not all corners of the lower-numbered
// one are corners of the other. Memory and building time follow the number of faces, also where thousands of faces
// share an edge: such faces are kept by edge, never by pair.
class FaceAdjacency {
public:
    static constexpr size_t kHubValence = 32;  // edges that leave a vertex; those of a hub are sorted

    // The corners are numbers below vertexCount. The faces must outlive this.
    FaceAdjacency(const std::vector<Corners>& faces, uint32_t vertexCount);

    // Edges to look across: all three, but one where they are one and the same.
    static uint32_t edgeCount(const Corners& face) { return face[0] == face[1] && face[1] == face[2] ? 1 : 3; }

    // Calls visit(g) for each face g that is adjacent to the face across its edge from corner `edge` to the next, in
    // ascending order. No face is adjacent across two edges.
    template <class Visit>
    void visitAcross(uint32_t face, uint32_t edge, Visit visit) const {
        const int32_t only = across_[3 * size_t{face} + edge];
        if (only >= 0) visit(static_cast<uint32_t>(only));
        if (only != kSeveral) return;
        const Corners& corners = faces_[face];
        uint32_t last = face;
        visitEdge(corners[(edge + 1) % 3], corners[edge], [&](uint32_t g) {
            if (g != last && isAdjacent(face, g)) visit(g);
            last = g;  // a face that is a single point has its edge three times
        });
    }

    // Per face: how many are adjacent to it.
    const std::vector<int32_t>& neighborCounts() const { return neighborCounts_; }

    // Calls visit(g) for each face that has the edge from one vertex to another this way round, in ascending order.
    template <class Visit>
    void visitEdge(uint32_t from, uint32_t to, Visit visit) const {
        for (const uint64_t edge : isHub(from) ? edgesBetween(from, to) : edgesFrom(from)) {
            if (end(edge) == to) visit(faceOf(edge));
        }
    }

    // Calls visit(g) for each face that uses the vertex; twice for one that uses it twice. Hubs give no order.
    template <class Visit>
    void visitVertex(uint32_t vertex, Visit visit) const {
        for (const uint64_t edge : edgesFrom(vertex)) visit(faceOf(edge));
    }

    // Whether more than so many faces have the edge this way round.
    bool isCrowded(uint32_t from, uint32_t to, size_t most) const {
        return isHub(from) && edgesBetween(from, to).size() > most;
    }

    bool isHub(uint32_t vertex) const { return firstEdge_[vertex + 1] - firstEdge_[vertex] > kHubValence; }

private:
    static constexpr int32_t kNone = -1;
    static constexpr int32_t kSeveral = -2;

    // An edge as it stands with its first vertex: the second vertex above its number, 3 * face + edge.
    static uint64_t edgeTo(uint32_t vertex, uint32_t number) { return uint64_t{vertex} << 32 | number; }
    static uint32_t end(uint64_t edge) { return static_cast<uint32_t>(edge >> 32); }
    static uint32_t numberOf(uint64_t edge) { return static_cast<uint32_t>(edge); }
    static uint32_t faceOf(uint64_t edge) { return numberOf(edge) / 3; }

    static size_t lowerBound(std::span<const uint64_t> edges, uint32_t vertex) {
        return static_cast<size_t>(std::lower_bound(edges.begin(), edges.end(), edgeTo(vertex, 0)) - edges.begin());
    }

    std::span<const uint64_t> edgesFrom(uint32_t vertex) const {
        return {edges_.data() + firstEdge_[vertex], edges_.data() + firstEdge_[vertex + 1]};
    }

    // Of a hub.
    std::span<const uint64_t> edgesBetween(uint32_t hub, uint32_t to) const {
        const auto edges = edgesFrom(hub);
        const size_t first = lowerBound(edges, to);
        return edges.subspan(first, lowerBound(edges, to + 1) - first);
    }

    bool isAdjacent(uint32_t f, uint32_t g) const;
    void countNeighbors();
    void countAcrossCrowded(uint32_t from, uint32_t to);
    void sortByVertex(uint32_t vertexCount);
    void linkEdgesAt(uint32_t vertex, std::vector<int32_t>& faceTo);

    const std::vector<Corners>& faces_;
    std::vector<uint32_t> firstEdge_;  // per vertex and one more: its part of edges_
    std::vector<uint64_t> edges_;      // by first vertex, then by face, those of hubs by second vertex first
    std::vector<int32_t> neighborCounts_;
    std::vector<int32_t> across_;  // per face and edge: the only adjacent face across, kNone or kSeveral
};

}  // namespace marrowfen
