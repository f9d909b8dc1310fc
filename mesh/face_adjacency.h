#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace marrowfen {

using Corners = std::array<uint32_t, 3>;  // vertex numbers of a face in winding order

inline bool hasCorner(const Corners& face, uint32_t vertex) {
    return face[0] == vertex || face[1] == vertex || face[2] == vertex;
}

// Which faces meet at which edges and vertices. Memory and time follow the number of faces, also where thousands of
// faces share an edge: faces are kept per edge, never per pair of faces. All lists ascend.
class FaceAdjacency {
public:
    // The corners are numbers below vertexCount.
    FaceAdjacency(const std::vector<Corners>& faces, uint32_t vertexCount);

    // Faces that have the edge-th edge of the face (from its corner `edge` to the next) the other way round, each
    // once. The face itself is among them where the edge joins a vertex to itself.
    std::span<const uint32_t> across(uint32_t face, uint32_t edge) const {
        const Range& range = across_[3 * face + edge];
        return {edgeFaces_.data() + range.begin, range.count};
    }

    // Faces that use the vertex; a face that uses it twice is listed twice.
    std::span<const uint32_t> around(uint32_t vertex) const {
        return {vertexFaces_.data() + firstFace_[vertex], vertexFaces_.data() + firstFace_[vertex + 1]};
    }

    // Calls visit(face) for each face that has an edge between the two vertices, either way round.
    template <class Visit>
    void visitEdge(uint32_t a, uint32_t b, Visit visit) const {
        const auto [low, high] = a < b ? std::array{a, b} : std::array{b, a};
        for (uint32_t i = lowerBound(low, high); i < firstEdge_[low + 1] && otherEnd(edges_[i]) == high; ++i) {
            visit(halfEdge(edges_[i]) / 3);
        }
    }

private:
    struct Range {
        uint32_t begin, count;
    };

    // A face's edge as sort key among the edges of its lower vertex: other vertex, then way round, then half-edge
    // number (3 * face + edge), which puts the faces of an edge in order.
    static uint64_t edgeKey(uint32_t other, bool backward, uint32_t halfEdge) {
        return static_cast<uint64_t>(2 * other + (backward ? 1 : 0)) << 32 | halfEdge;
    }
    static uint32_t otherEnd(uint64_t key) { return static_cast<uint32_t>(key >> 33); }
    static uint32_t directedEnd(uint64_t key) { return static_cast<uint32_t>(key >> 32); }
    static uint32_t halfEdge(uint64_t key) { return static_cast<uint32_t>(key); }

    void collectFacesOfVertices(const std::vector<Corners>& faces, uint32_t vertexCount);
    void sortEdges(const std::vector<Corners>& faces, uint32_t vertexCount);
    void linkEdgesOf(uint32_t lowVertex);
    uint32_t runEnd(uint32_t begin, uint32_t end) const;
    Range addFaces(uint32_t begin, uint32_t end);
    uint32_t lowerBound(uint32_t low, uint32_t high) const;

    std::vector<uint32_t> firstFace_;  // per vertex and one more: its part of vertexFaces_
    std::vector<uint32_t> vertexFaces_;
    std::vector<uint32_t> firstEdge_;  // per vertex and one more: its part of edges_
    std::vector<uint64_t> edges_;      // keys, each at the lower of its two vertices
    std::vector<uint32_t> edgeFaces_;  // the faces of each directed edge side by side
    std::vector<Range> across_;        // per half-edge: a part of edgeFaces_
};

}  // namespace marrowfen
