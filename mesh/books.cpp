#include "mesh/books.h"

#include <algorithm>

namespace marrowfen {

void Books::startGroup() {
    areNone_ = true;
    sides_.resize(1);
    across_.resize(1);
    ends_.resize(1);

    // Find the edges and how many of them each face is on, one or more.
    std::vector<std::pair<int32_t, int32_t>> edges;
    edges_.visitLists([&](int32_t there, int32_t back) {
        const bool areMany = edges_.halfEdges(there).size() * edges_.halfEdges(back).size() > kFewPairs;
        if (areMany && EdgeTable::isList(there) && EdgeTable::isList(back)) edges.emplace_back(there, back);
    });
    if (edges.empty()) return;
    std::vector<bool> isOnOne(faces_.size()), isOnMore(faces_.size());
    const auto count = [&](int32_t halfEdge) {
        const uint32_t face = HalfEdge::face(halfEdge);
        isOnMore[face] = isOnOne[face];
        isOnOne[face] = true;
    };
    for (const auto& [there, back] : edges) {
        for (const int32_t h : edges_.halfEdges(there)) count(h);
        for (const int32_t h : edges_.halfEdges(back)) count(h);
    }

    bookOfList_.assign(edges_.listCount(), 0);
    for (const auto& [there, back] : edges) makeBook(there, back, isOnMore);
    areNone_ = sides_.size() == 1;
}

// A book has no degenerate pages: whether one is adjacent to another depends on which comes first.
void Books::makeBook(int32_t there, int32_t back, const std::vector<bool>& isOnMore) {
    const std::vector<uint32_t> thirdsThere = thirdsOf(there), thirdsBack = thirdsOf(back);
    const int32_t any = edges_.halfEdges(there).front();
    const StripFace& face = faces_[HalfEdge::face(any)];
    const std::pair<uint32_t, uint32_t> ends{face.from(HalfEdge::side(any)), face.to(HalfEdge::side(any))};
    for (const uint32_t end : {ends.first, ends.second}) {
        if (std::binary_search(thirdsThere.begin(), thirdsThere.end(), end)) return;
        if (std::binary_search(thirdsBack.begin(), thirdsBack.end(), end)) return;
    }
    makeSide(there, thirdsBack, isOnMore);
    makeSide(back, thirdsThere, isOnMore);
    ends_.resize(sides_.size(), ends);
}

std::vector<uint32_t> Books::thirdsOf(int32_t list) const {
    std::vector<uint32_t> thirds;
    for (const int32_t h : edges_.halfEdges(list)) thirds.push_back(faces_[HalfEdge::face(h)].third(HalfEdge::side(h)));
    std::sort(thirds.begin(), thirds.end());
    return thirds;
}

void Books::makeSide(int32_t list, const std::vector<uint32_t>& thirdsAcross, const std::vector<bool>& isOnMore) {
    const auto across = static_cast<int32_t>(thirdsAcross.size());
    std::vector<int32_t> pages, otherNeighbors;
    edges_.filterList(list, [&](int32_t h) {
        StripFace& face = faces_[HalfEdge::face(h)];
        const uint32_t third = face.third(HalfEdge::side(h));
        const bool hasTwin = std::binary_search(thirdsAcross.begin(), thirdsAcross.end(), third);
        if (hasTwin || isOnMore[HalfEdge::face(h)]) return true;
        face.book = static_cast<uint32_t>(sides_.size());
        pages.push_back(h);
        otherNeighbors.push_back(faces_.freeNeighbors(HalfEdge::face(h)) -= across);
        return false;
    });
    if (pages.empty()) return;
    bookOfList_[EdgeTable::listNumber(list)] = static_cast<uint32_t>(sides_.size());
    sides_.emplace_back(std::move(pages), otherNeighbors);
    across_.push_back(across);
}

}  // namespace marrowfen
