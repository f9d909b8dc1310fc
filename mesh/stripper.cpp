#include "mesh/stripper.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <numeric>

#include "ground/at.h"

namespace marrowfen {

// Greedy stripping: a strip grows from face to face across shared edges, preferring faces with few free neighbours,
// faces that need no swap and faces whose new vertex was emitted lately. The vertices emitted lately are simply the
// last ones of the index list, so that a vertex's last position there tells whether it is one of them.
//
// The work is near-linear in the number of faces. Where an edge has m faces one way and n the other, m * n steps are
// added, but no memory.

namespace {

constexpr int64_t kCacheSize = 16;            // emitted vertices that count as lately emitted
constexpr int32_t kStartScorePerCached = 16;  // worth of one such corner when a strip starts
constexpr float kNeighborWeight = 5;
constexpr float kNoSwapWeight = 3;
constexpr float kCachedWeight = 1;
constexpr float kNoFaceScore = -std::numeric_limits<float>::infinity();  // no face never wins over a face

}  // namespace

Stripper::Stripper(std::vector<Corners> faces, uint32_t vertexCount, const Primitive& kind)
    : faces_(std::move(faces)),
      adjacency_(faces_, vertexCount),
      used_(faces_.size()),
      neighborCount_(adjacency_.neighborCounts()),
      freeCount_(faces_.size()),
      lastEmitted_(vertexCount, kNone),
      bestAt_(vertexCount) {
    stripKind_.material = Primitive::Strip | Primitive::Indexed;
    stripKind_.material |=
        (kind.material & Primitive::NoMaterial) != 0 ? Primitive::NoMaterial : kind.material & Primitive::MaterialMask;
    stripKind_.sourcePoly = kind.sourcePoly;
    std::vector<uint32_t> all(faces_.size());
    std::iota(all.begin(), all.end(), 0);
    allFaces_ = FaceQueue(std::move(all), neighborCount_);
    indices.reserve(2 * faces_.size());
}

void Stripper::fail(const std::string& text) {
    if (error.empty()) error = text;
}

void Stripper::failAssertion(int number) { fail("Assertion failed when stripping (" + std::to_string(number) + ")"); }

void Stripper::emit(uint32_t vertex) {
    assert(vertex < lastEmitted_.size());
    if (!isCached(vertex)) {
        bestAt_[vertex] = {kNone, kUnknownScore};
        hubCameIn_ |= adjacency_.isHub(vertex);
    }
    lastEmitted_[vertex] = std::ssize(indices);
    indices.push_back(vertex);
    ++primitives.back().numElements;
}

int64_t Stripper::oldestCached() const { return std::max<int64_t>(0, std::ssize(indices) - kCacheSize); }

void Stripper::checkNewestAreCornersOf(uint32_t face) {
    assert(primitives.back().numElements >= 3);
    const Corners emitted = newest();
    for (int i = 0; i < 3; ++i) {
        if (!hasCorner(emitted, at(faces_[face], i))) failAssertion(8 + i);
    }
}

bool Stripper::startStrip() {
    const int32_t start = pickStartFace();
    if (start == kNone) return false;
    const auto face = static_cast<uint32_t>(start);
    for (const uint32_t v : faces_[face]) emit(v);
    checkNewestAreCornersOf(face);
    takeFace(face, 4);
    return true;
}

// The first free face that the last strip passed over, else the best one by score.
int32_t Stripper::pickStartFace() {
    const auto isFree = [&](uint32_t face) { return !used_[face]; };
    const auto found = std::find_if(candidates_.begin(), candidates_.end(), isFree);
    const int32_t start = found == candidates_.end() ? bestScoredFace() : static_cast<int32_t>(*found);
    candidates_.clear();
    return start;
}

// The free face with the highest score, 16 for each corner lately emitted and 1 for each free neighbour; the lowest
// among equals. Only faces at those vertices score more than their neighbours, so it is one of them or the one with the
// most neighbours.
//
// The faces of a vertex are looked at when it has come in. From then on scores fall, but for faces at a vertex that
// came in later, which has those in its own account: the best of the accounts is the best face if its score still
// holds.
int32_t Stripper::bestScoredFace() {
    if (freeCount_ == 0) return kNone;
    StartFace best;
    hubs_.clear();
    cached_.clear();
    for (int64_t i = oldestCached(); i < std::ssize(indices); ++i) {
        const uint32_t v = at(indices, i);
        if (lastEmitted_[v] != i) continue;  // it comes again later
        (adjacency_.isHub(v) ? hubs_ : cached_).push_back(v);
    }
    considerHubs(hubs_, best);
    considerBestOf(allFaces_, best);

    for (const uint32_t v : cached_) {
        if (hubCameIn_ || bestAt_[v].score == kUnknownScore) findBestAt(v);
    }
    hubCameIn_ = false;
    for (;;) {
        const auto isWorse = [&](uint32_t a, uint32_t b) { return isBetter(bestAt_[b], bestAt_[a]); };
        const auto top = std::max_element(cached_.begin(), cached_.end(), isWorse);
        if (top == cached_.end() || !isBetter(bestAt_[*top], best)) return best.face;
        const StartFace& account = bestAt_[*top];
        if (scoreOf(static_cast<uint32_t>(account.face)) == account.score) return account.face;
        findBestAt(*top);
    }
}

void Stripper::findBestAt(uint32_t vertex) {
    StartFace best;
    adjacency_.visitVertex(vertex, [&](uint32_t face) { consider(face, best); });
    bestAt_[vertex] = best;
}

bool Stripper::isBetter(const StartFace& a, const StartFace& b) {
    if (a.face == kNone || b.face == kNone) return a.face != kNone;
    return a.score > b.score || (a.score == b.score && a.face < b.face);
}

// Less than of any free face for one that is used.
int32_t Stripper::scoreOf(uint32_t face) const {
    if (used_[face]) return kUsedScore;
    int32_t score = neighborCount_[face];
    for (const uint32_t v : faces_[face]) score += isCached(v) ? kStartScorePerCached : 0;
    return score;
}

void Stripper::consider(uint32_t face, StartFace& best) const {
    if (used_[face]) return;
    const StartFace found{static_cast<int32_t>(face), scoreOf(face)};
    if (isBetter(found, best)) best = found;
}

void Stripper::considerBestOf(FaceQueue& queue, StartFace& best) const {
    const int32_t face = queue.best(used_, neighborCount_);
    if (face != kNone) consider(static_cast<uint32_t>(face), best);
}

// The faces of hubs aren't all looked at. The best one with no other corner lately emitted is the one with the most
// neighbours; one with another is met at that vertex or, if that is a hub too, on the edge between the two. The other
// corner may be the hub again: then the edge leads from the hub to itself.
void Stripper::considerHubs(const std::vector<uint32_t>& hubs, StartFace& best) {
    for (const uint32_t hub : hubs) {
        considerBestOf(facesOfHub(hub), best);
        for (const uint32_t other : hubs) {
            if (!adjacency_.isCrowded(hub, other, kMostPerEdge)) {
                adjacency_.visitEdge(hub, other, [&](uint32_t face) { consider(face, best); });
                continue;
            }
            // Nor are those of an edge with many: the best with any third corner, and with each that is a hub.
            considerBestOf(facesOfEdge(hub, other, kAnyThird), best);
            for (const uint32_t third : hubs) considerBestOf(facesOfEdge(hub, other, third), best);
        }
    }
}

FaceQueue& Stripper::facesOfHub(uint32_t hub) {
    const auto [entry, isNew] = hubFaces_.try_emplace(hub);
    if (isNew) {
        std::vector<uint32_t> faces;
        adjacency_.visitVertex(hub, [&](uint32_t face) { faces.push_back(face); });
        std::sort(faces.begin(), faces.end());
        entry->second = FaceQueue(std::move(faces), neighborCount_);
    }
    return entry->second;
}

// The faces with the edge from one vertex to another and a third corner, which is one of the two in degenerate faces.
FaceQueue& Stripper::facesOfEdge(uint32_t from, uint32_t to, uint32_t third) {
    const auto [entry, isNew] = edgeFaces_.try_emplace({from, to, third});
    if (isNew) {
        std::vector<uint32_t> faces;
        adjacency_.visitEdge(from, to, [&](uint32_t face) {
            const Corners& c = faces_[face];
            const bool isThird = (from == third || to == third) ? hasRepeats(c) : hasCorner(c, third);
            if (third == kAnyThird || isThird) faces.push_back(face);
        });
        entry->second = FaceQueue(std::move(faces), neighborCount_);
    }
    return entry->second;
}

// Chooses among the free faces across the edges of the face taken last and adds the choice to the strip.
bool Stripper::extendStrip() {
    if (!error.empty()) return false;

    // Once the strip is under way, only faces at the vertex emitted last can follow.
    std::array<int32_t, 3> next = across_;
    const bool afterFirst = primitives.back().numElements == 3;
    for (int32_t& face : next) {
        if (face != kNone && !afterFirst && !hasCorner(at(faces_, face), indices.back())) face = kNone;
    }
    if (next == std::array{kNone, kNone, kNone}) return false;

    // The best score wins, the earlier edge among equals.
    std::array<Oriented, 3> oriented;
    std::array<float, 3> scores{kNoFaceScore, kNoFaceScore, kNoFaceScore};
    for (size_t i = 0; i < 3; ++i) {
        if (next[i] == kNone) continue;
        const auto face = static_cast<uint32_t>(next[i]);
        if (!orient(face, oriented[i])) return false;
        scores[i] = score(face, oriented[i]);
    }
    const auto choice = static_cast<size_t>(std::max_element(scores.begin(), scores.end()) - scores.begin());

    // Emit it. A later strip may start at the others.
    if (!(afterFirst ? joinFirstTriangle(oriented[choice]) : join(oriented[choice]))) return false;
    const auto chosen = static_cast<uint32_t>(next[choice]);
    checkNewestAreCornersOf(chosen);
    for (const int32_t face : next) {
        if (face != kNone && face != next[choice]) candidates_.push_back(static_cast<uint32_t>(face));
    }
    takeFace(chosen, 7);
    return true;
}

// False, with an error, unless exactly one corner of the face is not among the three vertices emitted last. A face with
// a corner twice can fail this.
bool Stripper::orient(uint32_t face, Oriented& oriented) {
    assert(used_[face] == 0);
    const Corners& p = faces_[face];
    const Corners emitted = newest();
    const bool isNew[3] = {!hasCorner(emitted, p[0]), !hasCorner(emitted, p[1]), !hasCorner(emitted, p[2])};
    if (isNew[0] + isNew[1] + isNew[2] != 1) {
        failAssertion(5);
        return false;
    }
    if (isNew[0]) oriented = {p[1], p[2], p[0]};
    if (isNew[1]) oriented = {p[2], p[0], p[1]};
    if (isNew[2]) oriented = {p[0], p[1], p[2]};
    return true;
}

bool Stripper::isLastEdge(const Oriented& oriented) const {
    const uint32_t last = indices.end()[-1];
    const uint32_t older = indices.end()[-2];
    return (older == oriented.a && last == oriented.b) || (older == oriented.b && last == oriented.a);
}

float Stripper::score(uint32_t face, const Oriented& oriented) const {
    float score = -kNeighborWeight * static_cast<float>(neighborCount_[face]);
    if (primitives.back().numElements != 3 && isLastEdge(oriented)) score += kNoSwapWeight;
    if (isCached(oriented.added)) score += kCachedWeight;
    return score;
}

// Turns the first triangle until the shared edge comes last: [a b c] -> [b c a].
bool Stripper::joinFirstTriangle(const Oriented& oriented) {
    for (int turn = 0; turn < 3; ++turn) {
        if (isLastEdge(oriented)) {
            emit(oriented.added);
            return true;
        }
        std::rotate(indices.end() - 3, indices.end() - 2, indices.end());
        for (int64_t i = std::ssize(indices) - 3; i < std::ssize(indices); ++i) {
            lastEmitted_[at(indices, i)] = i;
        }
    }
    fail("Assertion error while stripping: infinite loop");
    return false;
}

// Swaps when the shared edge isn't last, [.. x y z] -> [.. x y x z], and adds the new vertex.
bool Stripper::join(const Oriented& oriented) {
    if (!isLastEdge(oriented)) {
        const uint32_t last = indices.end()[-1];
        const uint32_t repeated = indices.end()[-3];
        indices.pop_back();
        --primitives.back().numElements;
        emit(repeated);
        emit(last);
    }
    emit(oriented.added);
    return true;
}

// Marks the face used, tells its free neighbours, and finds the one across each edge that has the fewest free
// neighbours left, the lowest among equals.
void Stripper::takeFace(uint32_t face, int assertion) {
    assert(used_[face] == 0 && freeCount_ > 0);
    const bool hasNeighbors = neighborCount_[face] != 0;
    used_[face] = 1;
    neighborCount_[face] = 0;
    --freeCount_;
    across_ = {kNone, kNone, kNone};
    if (!hasNeighbors) return;
    const uint32_t edges = FaceAdjacency::edgeCount(faces_[face]);
    for (uint32_t edge = 0; edge < edges; ++edge) {
        int32_t fewest = std::numeric_limits<int32_t>::max();
        adjacency_.visitAcross(face, edge, [&](uint32_t g) {
            if (used_[g]) return;
            const int32_t count = --neighborCount_[g];
            if (count < 0) failAssertion(assertion);
            if (count >= fewest) return;
            fewest = count;
            across_[edge] = static_cast<int32_t>(g);
        });
    }
    if (edges == 1) across_[1] = across_[2] = across_[0];
}

void Stripper::checkAllTaken() {
    const auto isZero = [](int32_t count) { return count == 0; };
    if (std::find(used_.begin(), used_.end(), 0) != used_.end()) failAssertion(1);
    if (!std::all_of(neighborCount_.begin(), neighborCount_.end(), isZero)) failAssertion(2);
}

void Stripper::run() {
    for (;;) {
        primitives.push_back(stripKind_);
        primitives.back().firstElement = static_cast<uint32_t>(indices.size());
        if (!startStrip()) break;
        while (extendStrip()) {
        }
        if (!error.empty()) return;
    }
    primitives.pop_back();
    checkAllTaken();
}

}  // namespace marrowfen
