#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "mesh/face_copies.h"

namespace marrowfen {

// Which faces of a group are adjacent: one has an edge of the other the other way round, and not all corners of the
// lower-numbered one are corners of the other. An edge stands with its end of fewer faces, which keeps the lists to be
// searched shorter than the root of the number of edges (Chiba and Nishizeki). Where more than two faces share an edge
// they are kept by edge, never by pair.
class EdgeTable {
public:
    // The corners are numbers below vertexCount. The faces must outlive this.
    EdgeTable(StripFaces& faces, uint32_t vertexCount);

    // Links the faces from first to before end with each other: fills in their counts and what is across. Only what
    // stands in the faces is left of the group before.
    void linkGroup(uint32_t first, uint32_t end);

    // Several half-edges of one edge, as they stand in StripFace::across.
    static bool isList(int32_t across) { return across < HalfEdge::kNone; }

    // The half-edges behind StripFace::across or edge(), in ascending order: none, this one, or those of a list.
    std::span<const int32_t> halfEdges(const int32_t& across) const {
        if (across == HalfEdge::kNone) return {};
        if (!isList(across)) return {&across, 1};
        const List& list = lists_[listNumber(across)];
        return {listed_.data() + list.first, list.length};
    }

    // Calls keep(halfEdge) for each one of a list, and takes those out for which it answers no.
    template <class Keep>
    void filterList(int32_t across, Keep keep) {
        List& list = lists_[listNumber(across)];
        int32_t* halves = listed_.data() + list.first;
        list.length = static_cast<uint32_t>(std::remove_if(halves, halves + list.length, std::not_fn(keep)) - halves);
    }

    // Calls visit(list, list across) for each edge with more than two faces, either of which may be a half-edge or
    // kNone.
    template <class Visit>
    void visitLists(Visit visit) const {
        for (const int32_t number : crowdedEdges_) visit(edgeAt(number).halves[0], edgeAt(number).halves[1]);
    }

    static size_t listNumber(int32_t across) { return static_cast<size_t>(-2 - across); }
    size_t listCount() const { return lists_.size(); }

    // Whether two faces are adjacent, by their half-edges of one edge, this way round and that.
    bool areAdjacent(int32_t a, int32_t b) const { return a < b ? isAdjacentToLater(a, b) : isAdjacentToLater(b, a); }

    // The half-edges of the group that lead from one vertex to another, as in StripFace::across.
    int32_t edge(uint32_t from, uint32_t to) const;

    size_t vertexCount() const { return ends_.size(); }

    // Of the faces of edges with many: in lists stands the first of them.
    const FaceCopies& copies() const { return copies_; }
    FaceCopies& copies() { return copies_; }

private:
    static constexpr int32_t kNoEdge = -1;
    static constexpr size_t kFewPairs = 4096;  // are counted one by one

    struct End {
        uint32_t valence = 0;
        int32_t lastEdge = kNoEdge;        // that stands with it; the number of one of an earlier group means none
        std::array<uint64_t, 2> others{};  // a bit for each other end, by its number modulo 128: a Bloom filter
    };

    struct Edge {
        uint32_t other;                 // end than the one that it stands with
        int32_t previous;               // edge that stands with that end
        std::array<int32_t, 2> halves;  // as in StripFace::across: towards the other end, and back
    };

    struct List {
        uint32_t first = 0, length = 0;  // in listed_
    };

    // Where a half-edge belongs.
    struct Place {
        uint32_t end, other, half;
    };

    static int32_t listAcross(size_t number) { return -2 - static_cast<int32_t>(number); }
    static constexpr auto chainFrom = [](int32_t halfEdge) { return -2 - halfEdge; };  // while a group is being linked

    Place placeOf(uint32_t from, uint32_t to) const {
        const uint32_t a = ends_[from].valence, b = ends_[to].valence;
        if (a < b || (a == b && from <= to)) return {from, to, 0};
        return {to, from, 1};
    }
    // The lower-numbered face has the edge's ends in common with the other; only its third corner may be one more.
    bool isAdjacentToLater(int32_t low, int32_t high) const {
        const StripFace& lower = faces_[HalfEdge::face(low)];
        const StripFace& higher = faces_[HalfEdge::face(high)];
        const uint32_t side = HalfEdge::side(low);
        const uint32_t third = lower.third(side);
        return &lower != &higher && third != lower.from(side) && third != lower.to(side) &&
               third != higher.third(HalfEdge::side(high));
    }
    int32_t find(const Place& place) const {
        if ((ends_[place.end].others[place.other / 64 % 2] & bitOf(place.other)) == 0) return kNoEdge;
        int32_t number = ends_[place.end].lastEdge;
        while (number >= groupStart_ && edgeAt(number).other != place.other) number = edgeAt(number).previous;
        return number >= groupStart_ ? number : kNoEdge;
    }
    static uint64_t bitOf(uint32_t vertex) { return uint64_t{1} << vertex % 64; }
    const Edge& edgeAt(int32_t number) const { return edges_[static_cast<size_t>(number - groupStart_)]; }
    Edge& edgeAt(int32_t number) { return edges_[static_cast<size_t>(number - groupStart_)]; }
    int32_t& across(int32_t halfEdge) { return faces_[HalfEdge::face(halfEdge)].across[HalfEdge::side(halfEdge)]; }

    void add(int32_t halfEdge, uint32_t from, uint32_t to);
    void addEdge(int32_t halfEdge, const Place& place);
    void pair(int32_t a, int32_t b);
    void unpair(int32_t a, int32_t b);
    void addToChain(int32_t number, uint32_t half, int32_t halfEdge);
    template <class Visit>
    void visitChain(int32_t chain, Visit visit) const;
    void findCopies(uint32_t first, uint32_t end);
    void linkThroughLists(Edge& edge);
    int32_t listOfChain(int32_t chain);
    void linkAcross(std::span<const int32_t> here, const int32_t& across);
    void countByThirds(std::span<const int32_t> here, std::span<const int32_t> across);

    StripFaces& faces_;
    FaceCopies copies_;
    std::vector<End> ends_;              // per vertex
    std::vector<Edge> edges_;            // of the group
    int32_t groupStart_ = 0;             // number of the group's first edge
    std::vector<int32_t> crowdedEdges_;  // of more than two faces, or leading from a vertex to itself
    std::vector<int32_t> chained_;       // per half-edge of those: the one that was added before it
    std::vector<List> lists_;
    std::vector<int32_t> listed_;  // half-edges, list by list
};

}  // namespace marrowfen
