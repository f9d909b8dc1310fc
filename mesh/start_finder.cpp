#include "mesh/start_finder.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <utility>

namespace marrowfen {

// Only faces at vertices lately emitted score more than their neighbours, so the best face is at one of them or is the
// one with the most neighbours.
//
// The faces of a vertex are looked at when it has come in. From then on scores fall, but for faces at a vertex that
// came in later, which has those in its own account: the best of the accounts is the best face if its score still
// holds. The faces of hubs aren't all looked at: they are kept in order.

namespace {

constexpr int32_t kScorePerLate = 16;  // worth of one corner lately emitted

}  // namespace

void StartFinder::startGroup(uint32_t first, uint32_t end) {
    first_ = first;
    end_ = end;
    isIndexed_ = false;
    hubFaces_.clear();
    edgeFaces_.clear();
    if (end - first <= kFewFaces) return;
    std::vector<uint32_t> all;
    all.reserve(end - first);
    for (uint32_t f = first; f < end; ++f) {
        if (faces_[f].book == 0) all.push_back(f);
    }
    allFaces_ = FaceQueue(all, faces_, edges_.copies());
}

uint32_t StartFinder::best() {
    if (end_ - first_ <= kFewFaces) return faceOf(bestOfAll());
    Rank best = bestOf(allFaces_);
    books_.visitBestPages([&](uint32_t page) { best = std::max(best, rankOf(page)); });
    if (emitted_.oldestLate() == emitted_.size()) return faceOf(best);
    if (!isIndexed_) indexFaces();
    bringInLate();
    best = std::max(best, bestAtHubs());
    for (;;) {
        Rank highest = std::numeric_limits<Rank>::min();  // with its slot in the lowest four bits
        for (size_t slot = 0; slot < kSlots; ++slot) {
            highest = std::max(highest, bestAtLate_[slot] * Rank{kSlots} + static_cast<Rank>(slot));
        }
        const auto top = static_cast<size_t>(highest) % kSlots;
        if (bestAtLate_[top] <= best) return faceOf(best);
        const uint32_t face = faceOf(bestAtLate_[top]);
        if (rankOf(face) == bestAtLate_[top]) {
            fetchCornersOf(face);
            return face;
        }
        bestAtLate_[top] = bestAt(lateVertex_[top]);
    }
}

// Below 0 for a face that is used. (Without branches: what is asked most.)
inline StartFinder::Rank StartFinder::rankOf(uint32_t number, int32_t lateCorners) const {
    return Rank{books_.freeNeighbors(number) + kScorePerLate * lateCorners} * (Rank{1} << 32) + (UINT32_MAX - number);
}

StartFinder::Rank StartFinder::rankOf(uint32_t number) const {
    int32_t late = 0;
    for (const uint32_t v : faces_[number].corners) late += int32_t{emitted_.isLate(v)};
    return rankOf(number, late);
}

StartFinder::Rank StartFinder::bestOfAll() const {
    Rank best = kNoFace;
    for (uint32_t f = first_; f < end_; ++f) best = std::max(best, rankOf(f));
    return best;
}

StartFinder::Rank StartFinder::bestOf(FaceQueue& queue) const {
    const int32_t face = queue.best(faces_, books_, edges_.copies());
    return face < 0 ? kNoFace : rankOf(static_cast<uint32_t>(face));
}

// Forgets faces that have been used once they are many: loads wait for the stores of every single one.
StartFinder::Rank StartFinder::bestAt(uint32_t vertex) {
    FacesAt& at = facesOf_[vertex];
    const std::span<CornerAt> corners(cornersAt_.data() + at.first, at.count);
    const int32_t oldestLate = emitted_.oldestLate();
    const auto isLate = [&](uint32_t v) { return int32_t{emitted_.lastPosition(v) >= oldestLate}; };
    const int32_t own = isLate(vertex);
    Rank best = kNoFace;
    uint32_t usedCount = 0;
    for (const auto& [face, others] : corners) {
        const Rank rank = rankOf(face, own + isLate(others[0]) + isLate(others[1]));
        best = std::max(best, rank);
        usedCount += rank < 0 ? 1 : 0;
    }
    __builtin_prefetch(&faces_[faceOf(best)]);  // where a strip may well start
    if (usedCount > at.count / 4) dropUsed(at);
    return best;
}

// (Without branches: which are used can't be guessed.)
void StartFinder::dropUsed(FacesAt& at) {
    CornerAt* const corners = &cornersAt_[at.first];
    uint32_t kept = 0;
    for (uint32_t i = 0; i < at.count; ++i) {
        const CornerAt corner = corners[i];
        corners[kept] = corner;
        kept += faces_.isUsed(corner.face) ? 0 : 1;
    }
    at.count = kept;
}

// Its vertices come in soon: the faces in their accounts are on their way to the processor when they do.
void StartFinder::fetchCornersOf(uint32_t face) const {
    for (const uint32_t v : faces_[face].corners) __builtin_prefetch(&cornersAt_[facesOf_[v].first]);
}

// Puts each free face with its vertices.
void StartFinder::indexFaces() {
    isIndexed_ = true;
    hasHubs_ = false;
    hubs_.clear();
    facesOf_.resize(edges_.vertexCount());
    for (uint32_t f = first_; f < end_; ++f) {
        for (const uint32_t v : faces_[f].corners) facesOf_[v] = {};
    }
    const auto forEachCorner = [&](auto visit) {
        for (uint32_t f = first_; f < end_; ++f) {
            if (faces_.isUsed(f)) continue;
            for (const uint32_t v : faces_[f].corners) visit(facesOf_[v]);
        }
    };
    forEachCorner([](FacesAt& at) { ++at.count; });
    uint32_t total = 0;
    forEachCorner([&](FacesAt& at) {
        if (at.first == 0) at.first = total += at.count;
        hasHubs_ |= at.count > kHubValence;
    });
    // Filling from the back turns the ends into starts and leaves the faces of a vertex ascending.
    cornersAt_.resize(total);
    for (uint32_t f = end_; f-- > first_;) {
        if (faces_.isUsed(f)) continue;
        const auto [a, b, c] = faces_[f].corners;
        cornersAt_[--facesOf_[a].first] = {f, {b, c}};
        cornersAt_[--facesOf_[b].first] = {f, {c, a}};
        cornersAt_[--facesOf_[c].first] = {f, {a, b}};
    }
    forgetLate();
}

// Looks for the best face of each vertex that has come in since a start was last looked for, and of all where a hub
// has: its faces score more now.
void StartFinder::bringInLate() {
    if (broughtIn_ < emitted_.oldestLate()) forgetLate();
    bool hubCameIn = false;
    for (; broughtIn_ < emitted_.size(); ++broughtIn_) {
        const uint32_t vertex = emitted_.at(broughtIn_);
        uint32_t& slotOf = facesOf_[vertex].slot;
        Rank best = kNoFace;
        if (lateVertex_[slotOf] == vertex) {
            best = std::exchange(bestAtLate_[slotOf], kNoFace);
            lateVertex_[slotOf] = kNoVertex;
        } else if (isHub(vertex)) {
            hubCameIn = true;
        } else {
            best = bestAt(vertex);
        }
        slotOf = static_cast<uint32_t>(broughtIn_) % kSlots;
        lateVertex_[slotOf] = vertex;
        bestAtLate_[slotOf] = best;
    }
    if (!hasHubs_) return;
    hubs_.clear();
    for (size_t slot = 0; slot < kSlots; ++slot) {
        const uint32_t vertex = lateVertex_[slot];
        if (vertex == kNoVertex) continue;
        if (isHub(vertex))
            hubs_.push_back(vertex);
        else if (hubCameIn)
            bestAtLate_[slot] = bestAt(vertex);
    }
}

void StartFinder::forgetLate() {
    lateVertex_.fill(kNoVertex);
    bestAtLate_.fill(kNoFace);
    broughtIn_ = emitted_.oldestLate();
}

// The best face of a hub with no other corner lately emitted is the one with the most neighbours; one with another is
// met at that vertex or, if that is a hub too, on the edge between the two. The other corner may be the hub again: then
// the edge leads from the hub to itself.
StartFinder::Rank StartFinder::bestAtHubs() {
    Rank best = kNoFace;
    for (const uint32_t hub : hubs_) {
        best = std::max(best, bestOf(facesOfHub(hub)));
        for (const uint32_t other : hubs_) {
            const int32_t edge = edges_.edge(hub, other);
            const std::span<const int32_t> halfEdges = edges_.halfEdges(edge);
            if (halfEdges.size() <= kMostPerEdge) {
                for (const int32_t h : halfEdges) {
                    const int32_t now = edges_.copies().current(h);
                    if (now != HalfEdge::kNone) best = std::max(best, rankOf(HalfEdge::face(now)));
                }
                continue;
            }
            // Nor are those of an edge with many: the best with any third corner, and with each that is a hub.
            best = std::max(best, bestOf(facesOfEdge(hub, other, kAnyThird)));
            for (const uint32_t third : hubs_) best = std::max(best, bestOf(facesOfEdge(hub, other, third)));
        }
    }
    return best;
}

FaceQueue& StartFinder::facesOfHub(uint32_t hub) {
    const auto [entry, isNew] = hubFaces_.try_emplace(hub);
    if (isNew) {
        std::vector<uint32_t> faces;
        for (uint32_t i = 0; i < facesOf_[hub].count; ++i) {
            const uint32_t face = cornersAt_[facesOf_[hub].first + i].face;
            if (!books_.isPageAt(face, hub)) faces.push_back(face);
        }
        entry->second = FaceQueue(faces, faces_, edges_.copies());
    }
    return entry->second;
}

// The faces with the edge from one vertex to another and a third corner, which is one of the two in degenerate faces.
FaceQueue& StartFinder::facesOfEdge(uint32_t from, uint32_t to, uint32_t third) {
    const auto [entry, isNew] = edgeFaces_.try_emplace({from, to, third});
    if (isNew) {
        std::vector<uint32_t> faces;
        const int32_t edge = edges_.edge(from, to);
        for (const int32_t h : edges_.halfEdges(edge)) {
            const Corners& c = faces_[HalfEdge::face(h)].corners;
            const bool isThird = (from == third || to == third) ? hasRepeats(c) : hasCorner(c, third);
            const int32_t now = edges_.copies().current(h);
            if (now != HalfEdge::kNone && (third == kAnyThird || isThird)) faces.push_back(HalfEdge::face(now));
        }
        entry->second = FaceQueue(faces, faces_, edges_.copies());
    }
    return entry->second;
}

}  // namespace marrowfen
