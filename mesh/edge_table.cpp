#include "mesh/edge_table.h"

#include <algorithm>
#include <cassert>

namespace marrowfen {

EdgeTable::EdgeTable(StripFaces& faces, uint32_t vertexCount) : faces_(faces), copies_(faces), ends_(vertexCount) {
    for (size_t f = 0; f < faces.size(); ++f) {
        for (const uint32_t v : faces[f].corners) ++ends_[v].valence;
    }
    edges_.reserve(faces.size() + faces.size() / 2);
}

// Adds a half-edge, which is above all before. The second one of an edge is linked with the first at once.
inline void EdgeTable::add(int32_t halfEdge, uint32_t from, uint32_t to) {
    const Place place = placeOf(from, to);
    const int32_t number = find(place);
    if (number == kNoEdge) {
        addEdge(halfEdge, place);
        return;
    }
    auto& halves = edgeAt(number).halves;
    if (halves[place.half] != HalfEdge::kNone || halves[1 - place.half] < 0) {
        addToChain(number, place.half, halfEdge);
        return;
    }
    halves[place.half] = halfEdge;
    pair(halves[1 - place.half], halfEdge);
}

void EdgeTable::linkGroup(uint32_t first, uint32_t end) {
    groupStart_ += static_cast<int32_t>(edges_.size());
    edges_.clear();
    crowdedEdges_.clear();
    lists_.clear();
    listed_.clear();
    for (uint32_t f = first; f < end; ++f) {
        const auto [a, b, c] = faces_[f].corners;
        add(HalfEdge::of(f, 0), a, b);
        if (faces_[f].sideCount() == 1) continue;
        add(HalfEdge::of(f, 1), b, c);
        add(HalfEdge::of(f, 2), c, a);
    }
    findCopies(first, end);
    for (const int32_t number : crowdedEdges_) linkThroughLists(edgeAt(number));
}

int32_t EdgeTable::edge(uint32_t from, uint32_t to) const {
    const Place place = placeOf(from, to);
    const int32_t number = find(place);
    return number == kNoEdge ? HalfEdge::kNone : edgeAt(number).halves[place.half];
}

void EdgeTable::addEdge(int32_t halfEdge, const Place& place) {
    End& end = ends_[place.end];
    if (end.lastEdge < groupStart_) end.others = {};
    end.others[place.other / 64 % 2] |= bitOf(place.other);
    edges_.push_back({place.other, end.lastEdge, {HalfEdge::kNone, HalfEdge::kNone}});
    edges_.back().halves[place.half] = halfEdge;
    end.lastEdge = groupStart_ + static_cast<int32_t>(edges_.size()) - 1;
}

void EdgeTable::pair(int32_t a, int32_t b) {
    if (!isAdjacentToLater(a, b)) return;
    across(a) = b;
    across(b) = a;
    ++faces_.freeNeighbors(HalfEdge::face(a));
    ++faces_.freeNeighbors(HalfEdge::face(b));
}

void EdgeTable::unpair(int32_t a, int32_t b) {
    if (a == HalfEdge::kNone || b == HalfEdge::kNone || across(a) != b) return;
    across(a) = across(b) = HalfEdge::kNone;
    --faces_.freeNeighbors(HalfEdge::face(a));
    --faces_.freeNeighbors(HalfEdge::face(b));
}

// The half-edges of an edge with many are chained until all are known.
void EdgeTable::addToChain(int32_t number, uint32_t half, int32_t halfEdge) {
    if (chained_.empty()) chained_.resize(4 * faces_.size());
    auto& halves = edgeAt(number).halves;
    if (!isList(halves[0]) && !isList(halves[1])) {
        unpair(halves[0], halves[1]);
        for (int32_t& only : halves) {
            if (only == HalfEdge::kNone) continue;
            chained_[static_cast<size_t>(only)] = HalfEdge::kNone;
            only = chainFrom(only);
        }
        crowdedEdges_.push_back(number);
    }
    chained_[static_cast<size_t>(halfEdge)] = halves[half];
    halves[half] = chainFrom(halfEdge);
}

// The half-edges of a chain, which descend.
template <class Visit>
void EdgeTable::visitChain(int32_t chain, Visit visit) const {
    for (; chain != HalfEdge::kNone; chain = chained_[static_cast<size_t>(chainFrom(chain))]) visit(chainFrom(chain));
}

// Copies only cost where an edge has many faces both ways round.
void EdgeTable::findCopies(uint32_t first, uint32_t end) {
    copies_.clear();
    std::vector<uint32_t> faces, degenerates;
    for (const int32_t number : crowdedEdges_) {
        const auto& halves = edgeAt(number).halves;
        std::array<size_t, 2> lengths{};
        for (size_t half = 0; half < 2; ++half) visitChain(halves[half], [&](int32_t) { ++lengths[half]; });
        if (lengths[0] * lengths[1] <= kFewPairs) continue;
        for (const int32_t chain : halves) visitChain(chain, [&](int32_t h) { faces.push_back(HalfEdge::face(h)); });
    }
    if (faces.empty()) return;
    std::sort(faces.begin(), faces.end());
    faces.erase(std::unique(faces.begin(), faces.end()), faces.end());
    const auto isDegenerate = [&](uint32_t f) { return hasRepeats(faces_[f].corners); };
    std::erase_if(faces, isDegenerate);
    for (uint32_t f = first; f < end; ++f) {
        if (isDegenerate(f)) degenerates.push_back(f);
    }
    copies_.find(faces, degenerates);
}

void EdgeTable::linkThroughLists(Edge& edge) {
    for (int32_t& half : edge.halves) half = listOfChain(half);
    const auto [there, back] = edge.halves;
    const int32_t any = halfEdges(there == HalfEdge::kNone ? back : there).front();
    const StripFace& face = faces_[HalfEdge::face(any)];
    if (face.from(HalfEdge::side(any)) == face.to(HalfEdge::side(any))) {
        linkAcross(halfEdges(edge.halves[0]), there);
        return;
    }
    linkAcross(halfEdges(edge.halves[0]), back);
    linkAcross(halfEdges(edge.halves[1]), there);
}

// The half-edges of a chain as a list, but for those of copies that wait.
int32_t EdgeTable::listOfChain(int32_t chain) {
    const List list{static_cast<uint32_t>(listed_.size()), 0};
    visitChain(chain, [&](int32_t h) {
        if (faces_.isFree(HalfEdge::face(h))) listed_.push_back(h);
    });
    const size_t length = listed_.size() - list.first;
    if (length == 0 || (length == 1 && !copies_.hasCopies(HalfEdge::face(listed_.back())))) {
        const int32_t only = length == 0 ? HalfEdge::kNone : listed_.back();
        listed_.resize(list.first);
        return only;
    }
    std::reverse(listed_.begin() + list.first, listed_.end());
    lists_.push_back({list.first, static_cast<uint32_t>(length)});
    return listAcross(lists_.size() - 1);
}

// One way only: the faces here get what is across.
void EdgeTable::linkAcross(std::span<const int32_t> here, const int32_t& across) {
    const std::span<const int32_t> there = halfEdges(across);
    const bool areFew = here.size() * there.size() <= kFewPairs;
    for (const int32_t halfEdge : here) {
        const uint32_t face = HalfEdge::face(halfEdge);
        const bool isNeighbor = isList(across) || (across != HalfEdge::kNone && areAdjacent(halfEdge, across));
        faces_[face].across[HalfEdge::side(halfEdge)] = isNeighbor ? across : HalfEdge::kNone;
        if (!areFew) continue;
        for (const int32_t other : there) {
            if (areAdjacent(halfEdge, other)) faces_.freeNeighbors(face) += copies_.count(HalfEdge::face(other));
        }
    }
    if (!areFew) countByThirds(here, there);
}

// A face with a third corner is adjacent to those with another one, and to degenerate ones after it; a degenerate one
// to all before it that aren't.
void EdgeTable::countByThirds(std::span<const int32_t> here, std::span<const int32_t> across) {
    const auto thirdOf = [&](int32_t h) { return faces_[HalfEdge::face(h)].third(HalfEdge::side(h)); };
    const StripFace& any = faces_[HalfEdge::face(here.front())];
    const uint32_t side = HalfEdge::side(here.front());
    const auto isDegenerate = [&, from = any.from(side), to = any.to(side)](int32_t h) {
        return thirdOf(h) == from || thirdOf(h) == to;
    };
    std::vector<int32_t> regular, degenerate;  // half-edges, ascending; one for each of the copies
    std::vector<uint32_t> thirds;              // of the regular ones
    for (const int32_t other : across) {
        for (int32_t copy = copies_.count(HalfEdge::face(other)); copy > 0; --copy) {
            (isDegenerate(other) ? degenerate : regular).push_back(other);
            if (!isDegenerate(other)) thirds.push_back(thirdOf(other));
        }
    }
    std::sort(thirds.begin(), thirds.end());
    const auto before = [](const std::vector<int32_t>& list, int32_t h) {
        return std::lower_bound(list.begin(), list.end(), h) - list.begin();
    };
    for (const int32_t h : here) {
        const auto same = std::equal_range(thirds.begin(), thirds.end(), thirdOf(h));
        const auto count = isDegenerate(h) ? before(regular, h)
                                           : std::ssize(regular) - (same.second - same.first) + std::ssize(degenerate) -
                                                 before(degenerate, h);
        faces_.freeNeighbors(HalfEdge::face(h)) += static_cast<int32_t>(count);
    }
}

}  // namespace marrowfen
