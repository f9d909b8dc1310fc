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
    twinOf_.assign(faces_.size(), kNoTwin);
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
    std::vector<Twin> twins;
    makeSide(there, thirdsThere, thirdsBack, isOnMore, twins);
    makeSide(back, thirdsBack, thirdsThere, isOnMore, twins);
    ends_.resize(sides_.size(), ends);
    std::sort(twins.begin(), twins.end());
    for (size_t i = 0; i < twins.size(); i += 2) {
        assert(twins[i].first == twins[i + 1].first);
        twinOf_[twins[i].second] = twins[i + 1].second;
        twinOf_[twins[i + 1].second] = twins[i].second;
    }
}

Books::Thirds Books::thirdsOf(int32_t list) const {
    Thirds thirds;
    for (const int32_t h : edges_.halfEdges(list)) {
        const uint32_t face = HalfEdge::face(h), third = faces_[face].third(HalfEdge::side(h));
        thirds.insert(thirds.end(), static_cast<size_t>(edges_.copies().count(face)), third);
    }
    std::sort(thirds.begin(), thirds.end());
    return thirds;
}

void Books::makeSide(int32_t list, const Thirds& thirds, const Thirds& thirdsAcross, const std::vector<bool>& isOnMore,
                     std::vector<Twin>& twins) {
    const auto isPageWith = [&](uint32_t third, std::ptrdiff_t twinCount) {
        const auto alike = std::equal_range(thirds.begin(), thirds.end(), third);
        return twinCount == 0 || (twinCount == 1 && alike.second - alike.first == 1);
    };
    const auto across = static_cast<int32_t>(thirdsAcross.size());
    std::vector<int32_t> pages, otherNeighbors;
    edges_.filterList(list, [&](int32_t h) {
        const uint32_t face = HalfEdge::face(h), third = faces_[face].third(HalfEdge::side(h));
        const auto alike = std::equal_range(thirdsAcross.begin(), thirdsAcross.end(), third);
        const auto twinCount = alike.second - alike.first;
        if (!isPageWith(third, twinCount) || isOnMore[face] || edges_.copies().hasCopies(face)) return true;
        faces_[face].book = static_cast<uint32_t>(sides_.size());
        pages.push_back(h);
        otherNeighbors.push_back(faces_.freeNeighbors(face) -= across);
        if (twinCount == 1) twins.emplace_back(third, face);
        return false;
    });
    if (pages.empty()) return;
    bookOfList_[EdgeTable::listNumber(list)] = static_cast<uint32_t>(sides_.size());
    sides_.emplace_back(std::move(pages), otherNeighbors);
    across_.push_back(across);
}

}  // namespace marrowfen
