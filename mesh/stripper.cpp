#include "mesh/stripper.h"

#include <algorithm>
#include <cassert>
#include <limits>

namespace marrowfen {

// Greedy stripping: a strip grows from face to face across shared edges, preferring faces with few free neighbours,
// faces that need no swap and faces whose new vertex was emitted lately.
//
// The work is near-linear in the number of faces.

namespace {

constexpr float kNeighborWeight = 5;
constexpr float kNoSwapWeight = 3;
constexpr float kLateWeight = 1;

}  // namespace

Stripper::Stripper(StripFaces faces, uint32_t vertexCount, std::vector<uint32_t> storage)
    : faces_(std::move(faces)),
      edges_(faces_, vertexCount),
      books_(faces_, edges_),
      emitted_(std::move(storage), 3 * faces_.size(), vertexCount),
      starts_(faces_, edges_, books_, emitted_) {}

void Stripper::fail(const std::string& text) {
    if (error.empty()) error = text;
}

bool Stripper::stripGroup(uint32_t first, uint32_t end, const Primitive& kind) {
    Primitive empty;
    empty.material = Primitive::Strip | Primitive::Indexed;
    empty.material |=
        (kind.material & Primitive::NoMaterial) != 0 ? Primitive::NoMaterial : kind.material & Primitive::MaterialMask;
    empty.sourcePoly = kind.sourcePoly;

    edges_.linkGroup(first, end);
    books_.startGroup();
    emitted_.startGroup();
    starts_.startGroup(first, end);
    freeCount_ = end - first;
    while (freeCount_ > 0) {
        const int32_t firstIndex = emitted_.size();
        startStrip();
        while (extendStrip()) {
        }
        empty.firstElement = static_cast<uint32_t>(firstIndex);
        empty.numElements = static_cast<uint32_t>(emitted_.size() - firstIndex);
        strips.push_back(empty);
        if (!error.empty()) return false;
    }
    return true;
}

void Stripper::dropStrips(size_t first) {
    for (; strips.size() > first; strips.pop_back()) emitted_.drop(static_cast<int32_t>(strips.back().numElements));
}

void Stripper::startStrip() {
    const uint32_t face = pickStartFace();
    for (const uint32_t v : faces_[face].corners) emitted_.emit(v);
    isFirst_ = true;
    takeFace(face);
}

// The first free face that the last strip passed over, else the best one by score.
uint32_t Stripper::pickStartFace() {
    const auto isFree = [&](uint32_t face) { return faces_.isFree(face); };
    const auto found = std::find_if(candidates_.begin(), candidates_.end(), isFree);
    const uint32_t start = found == candidates_.end() ? starts_.best() : *found;
    candidates_.clear();
    return start;
}

// Chooses among the free faces across the edges of the face taken last and adds the choice to the strip.
bool Stripper::extendStrip() {
    // The best score wins, the earlier edge among equals. Once the strip is under way, only faces at the vertex emitted
    // last can follow.
    Joint best;
    int32_t chosen = HalfEdge::kNone;
    float bestScore = 0;
    for (int32_t& halfEdge : across_) {
        if (halfEdge == HalfEdge::kNone) continue;
        const Joint joint = jointAt(halfEdge);
        if (!isFirst_ && !joint.has(emitted_.fromEnd(1))) {
            halfEdge = HalfEdge::kNone;
            continue;
        }
        // A face with a corner twice can be without a vertex to add.
        if (hasCorner(emitted_.newest(), joint.added)) {
            fail("Assertion failed when stripping (5)");
            return false;
        }
        const float score = scoreOf(halfEdge, joint);
        if (chosen != HalfEdge::kNone && score <= bestScore) continue;
        best = joint;
        chosen = halfEdge;
        bestScore = score;
    }
    if (chosen == HalfEdge::kNone) return false;

    // Emit it. A later strip may start at the others.
    if (!(isFirst_ ? turnFirstTriangle(best) : swapUnlessLast(best))) return false;
    emitted_.emit(best.added);
    isFirst_ = false;
    for (const int32_t halfEdge : across_) {
        if (halfEdge != HalfEdge::kNone && halfEdge != chosen) candidates_.push_back(HalfEdge::face(halfEdge));
    }
    takeFace(HalfEdge::face(chosen));
    return true;
}

Stripper::Joint Stripper::jointAt(int32_t halfEdge) const {
    const StripFace& face = faces_[HalfEdge::face(halfEdge)];
    const uint32_t side = HalfEdge::side(halfEdge);
    return {face.from(side), face.to(side), face.third(side)};
}

bool Stripper::isLast(const Joint& joint) const {
    const uint32_t last = emitted_.fromEnd(1), older = emitted_.fromEnd(2);
    return (older == joint.a && last == joint.b) || (older == joint.b && last == joint.a);
}

float Stripper::scoreOf(int32_t halfEdge, const Joint& joint) const {
    float score = -kNeighborWeight * static_cast<float>(books_.freeNeighbors(HalfEdge::face(halfEdge)));
    if (!isFirst_ && isLast(joint)) score += kNoSwapWeight;
    if (emitted_.isLate(joint.added)) score += kLateWeight;
    return score;
}

// Turns the first triangle until the shared edge comes last: [a b c] -> [b c a].
bool Stripper::turnFirstTriangle(const Joint& joint) {
    for (int turn = 0; turn < 3; ++turn) {
        if (isLast(joint)) return true;
        const auto [a, b, c] = emitted_.newest();
        emitted_.drop(3);
        for (const uint32_t v : {b, c, a}) emitted_.emit(v);
    }
    fail("Assertion error while stripping: infinite loop");
    return false;
}

// Swaps when the shared edge isn't last: [.. x y z] -> [.. x y x z].
bool Stripper::swapUnlessLast(const Joint& joint) {
    if (isLast(joint)) return true;
    const auto [x, y, z] = emitted_.newest();
    emitted_.drop(1);
    emitted_.emit(x);
    emitted_.emit(z);
    return true;
}

// Marks the face used, tells its free neighbours, and finds the one across each edge that has the fewest free
// neighbours left, the lowest among equals.
void Stripper::takeFace(uint32_t number) {
    assert(faces_.isFree(number) && freeCount_ > 0);
    const bool isAlone = books_.freeNeighbors(number) == 0;
    books_.use(number);
    --freeCount_;
    across_.fill(HalfEdge::kNone);
    if (isAlone) return;
    const StripFace& face = faces_[number];
    for (uint32_t side = 0; side < 3; ++side) {
        const int32_t across = face.across[side];
        if (EdgeTable::isList(across)) {
            across_[side] = takeFromList(HalfEdge::of(number, side), across);
        } else if (across != HalfEdge::kNone && faces_.isFree(HalfEdge::face(across))) {
            books_.dropNeighbor(HalfEdge::face(across));
            across_[side] = across;
        }
    }
    if (face.sideCount() == 1) across_[1] = across_[2] = across_[0];
}

int32_t Stripper::takeFromList(int32_t halfEdge, int32_t list) {
    int32_t best = books_.dropNeighborOfPages(HalfEdge::face(halfEdge), list);
    int32_t fewest = std::numeric_limits<int32_t>::max();
    if (best != HalfEdge::kNone) fewest = books_.freeNeighbors(HalfEdge::face(best));
    edges_.filterList(list, [&](int32_t listed) {
        const int32_t other = edges_.copies().current(listed);
        if (other == HalfEdge::kNone || !faces_.isFree(HalfEdge::face(other))) return false;
        const uint32_t face = HalfEdge::face(other);
        if (!edges_.areAdjacent(halfEdge, other)) return true;
        books_.dropNeighbor(face);
        const int32_t count = books_.freeNeighbors(face);
        if (count < fewest || (count == fewest && other < best)) {
            fewest = count;
            best = other;
        }
        return true;
    });
    return best;
}

}  // namespace marrowfen
