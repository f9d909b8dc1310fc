#include "mesh/sort_tree.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "mesh/face_blocks.h"

// A node first peels off faces that nothing is behind and faces that nothing is in front of, in cycles; what remains is
// divided by the plane of one of its faces. Whether anything is behind a face is kept as one witness: while that face
// is there, the question needs no new answer, and when it goes, the search goes on from its place. So a face is
// compared with another at most once a side, mostly with a few.

namespace marrowfen {
namespace {

constexpr int kMaxDepth = 2;  // the root has depth 0

constexpr uint32_t kNoFace = FaceBlocks::kNone;

enum Direction : size_t { Behind, InFront };
constexpr Direction kDirections[] = {Behind, InFront};

// Peels the members of one node.
class Peeler {
public:
    // blocks: of the members; what is peeled is taken out.
    Peeler(const SortFaces& faces, FaceBlocks& blocks, const FaceList& members)
        : faces_(faces), blocks_(blocks), isPeeled_(faces.faceCount()) {
        for (const Direction d : kDirections) {
            steps_[d].resize(faces.faceCount());
            firstWaiting_[d].assign(faces.faceCount(), kNoFace);
            nextWaiting_[d].resize(faces.faceCount());
            unanswered_[d] = members;
        }
    }

    // Fills the node's layers and leaves the faces that belong to none.
    void peel(SortNode& node, FaceList& members) {
        for (;;) {
            FaceList first = takeFree(Behind);
            FaceList last = takeFree(InFront);
            if (first.empty() && last.empty()) break;
            for (const uint32_t face : first) withdraw(face);
            for (const uint32_t face : last) withdraw(face);
            if (!first.empty()) node.drawFirst.push_back(std::move(first));
            if (!last.empty()) node.drawLast.push_back(std::move(last));
        }
        std::reverse(node.drawLast.begin(), node.drawLast.end());
        members.erase(std::remove_if(members.begin(), members.end(), [&](uint32_t f) { return isPeeled_[f]; }),
                      members.end());
    }

private:
    // The unpeeled faces that have just turned out to have no other in the direction, in face order. Faces peeled in
    // the same cycle still count as others.
    FaceList takeFree(Direction d) {
        FaceList free;
        for (const uint32_t face : unanswered_[d]) {
            if (isPeeled_[face]) continue;
            const Plane& plane = faces_.planes[face];
            const HalfSpace halfSpace = d == Behind ? plane.behind() : plane.inFront();
            const uint32_t witness = blocks_.findIn(halfSpace, face, steps_[d][face]);
            if (witness == kNoFace) {
                free.push_back(face);
            } else {
                assert(witness != face);
                nextWaiting_[d][face] = firstWaiting_[d][witness];
                firstWaiting_[d][witness] = face;
            }
        }
        unanswered_[d].clear();
        std::sort(free.begin(), free.end());
        for (const uint32_t face : free) isPeeled_[face] = true;
        return free;
    }

    // From the next cycle on the face is nobody's witness.
    void withdraw(uint32_t face) {
        assert(isPeeled_[face]);
        blocks_.remove(face);
        for (const Direction d : kDirections) {
            for (uint32_t f = firstWaiting_[d][face]; f != kNoFace; f = nextWaiting_[d][f]) unanswered_[d].push_back(f);
        }
    }

    const SortFaces& faces_;
    FaceBlocks& blocks_;
    std::vector<bool> isPeeled_;

    // Per direction and face.
    std::array<std::vector<uint32_t>, 2> steps_;         // to the witness
    std::array<std::vector<uint32_t>, 2> firstWaiting_;  // faces whose witness this one is, a linked list
    std::array<std::vector<uint32_t>, 2> nextWaiting_;
    std::array<FaceList, 2> unanswered_;  // faces that need a new witness
};

// The fewest members that the plane of one of a few others cuts: those whose planes pass farthest from the middle,
// which cut few. Known beforehand, it ends the counts of most of the others early.
int32_t fewestCutFarOut(const SortFaces& faces, const FaceList& members, const FaceBlocks& blocks) {
    constexpr size_t kTried = 8;
    Point3 middle;
    for (const uint32_t face : members) {
        middle = middle + faces.position(face, 0) * (1.0F / static_cast<float>(members.size()));
    }
    std::vector<std::pair<float, uint32_t>> nearness;
    for (const uint32_t face : members) {
        const Plane& plane = faces.planes[face];
        const float distance = std::fabs(dot(plane.normal, middle) - plane.constant);
        if (distance > 0) nearness.emplace_back(-distance, face);  // a number, that is
    }
    const auto tried = nearness.begin() + static_cast<std::ptrdiff_t>(std::min(kTried, nearness.size()));
    std::partial_sort(nearness.begin(), tried, nearness.end());
    int32_t fewest = INT32_MAX;
    for (auto n = nearness.begin(); n != tried; ++n) {
        fewest = std::min(fewest, blocks.countSides(n->second, fewest).spanning);
    }
    return fewest;
}

// The member whose plane cuts the fewest others; among equals the one that divides them most evenly, then the first.
uint32_t pickDivider(const SortFaces& faces, const FaceBlocks& blocks, const FaceList& members) {
    uint32_t best = kNoFace;
    SideCounts bestCounts{0, 0, fewestCutFarOut(faces, members, blocks)};
    const auto imbalance = [](const SideCounts& c) { return std::abs(c.front - c.behind); };
    for (const uint32_t face : members) {
        const SideCounts counts = blocks.countSides(face, bestCounts.spanning);
        if (counts.spanning > bestCounts.spanning) continue;
        if (best == kNoFace || counts.spanning < bestCounts.spanning || imbalance(counts) < imbalance(bestCounts)) {
            best = face;
            bestCounts = counts;
        }
    }
    assert(best != FaceBlocks::kNone);
    return best;
}

struct Division {
    FaceList front, back;
};

// Coplanar faces go to the side that they face. What neither side claims is lost: a face at a right angle to the plane
// that still lies within its tolerance, and a piece that rounding leaves on both sides.
Division divideFaces(SortFaces& faces, const FaceList& members, uint32_t divider) {
    assert(faces.planes.size() == faces.faceCount());
    const Plane plane = faces.planes[divider];
    Division division;
    const auto assign = [&](uint32_t face) {
        const Side side = face == divider ? Side::Coplanar : sideOf(faces, face, plane);
        const float facing = dot(faces.planes[face].normal, plane.normal);
        if (side == Side::Behind || (side == Side::Coplanar && facing < 0)) division.back.push_back(face);
        if (side == Side::Front || (side == Side::Coplanar && facing > 0)) division.front.push_back(face);
        return side;
    };

    const uint32_t firstPiece = faces.faceCount();
    for (const uint32_t face : members) {
        if (assign(face) == Side::Spanning) splitFace(faces, face, plane);
    }
    faces.addMissingPlanes();
    for (uint32_t piece = firstPiece; piece < faces.faceCount(); ++piece) assign(piece);
    assert(division.front.size() + division.back.size() <= members.size() + faces.faceCount() - firstPiece);
    return division;
}

// Faces that look down from the highest to the lowest, then those that look up from the lowest to the highest.
FaceList orderedByHeight(const SortFaces& faces, const FaceList& members) {
    const auto top = [&](uint32_t f) {
        return std::max({faces.position(f, 0).z, faces.position(f, 1).z, faces.position(f, 2).z});
    };
    FaceList order = members;
    const auto looksDown = [&](uint32_t f) { return faces.planes[f].normal.z <= 0; };
    const auto up = std::stable_partition(order.begin(), order.end(), looksDown);
    std::stable_sort(order.begin(), up, [&](uint32_t a, uint32_t b) { return top(a) > top(b); });
    std::stable_sort(up, order.end(), [&](uint32_t a, uint32_t b) { return top(a) < top(b); });
    return order;
}

// None when there are no members.
std::unique_ptr<SortNode> makeNode(SortFaces& faces, FaceList members, int depth) {
    if (members.empty()) return nullptr;
    assert(depth <= kMaxDepth && faces.planes.size() == faces.faceCount());
    auto node = std::make_unique<SortNode>();
    const size_t peelable = members.size();
    auto blocks = std::make_unique<FaceBlocks>(faces, members);
    Peeler(faces, *blocks, members).peel(*node, members);
    if (members.empty()) return node;
    if (depth >= kMaxDepth) {
        node->leafOrder = orderedByHeight(faces, members);
        return node;
    }

    // Few of many would stand in blocks with gaps.
    if (members.size() < peelable - peelable / 4) blocks = std::make_unique<FaceBlocks>(faces, members);
    const uint32_t divider = pickDivider(faces, *blocks, members);
    blocks.reset();
    node->plane = faces.planes[divider];
    Division division = divideFaces(faces, members, divider);
    node->back = makeNode(faces, std::move(division.back), depth + 1);
    node->front = makeNode(faces, std::move(division.front), depth + 1);
    return node;
}

}  // namespace

std::unique_ptr<SortNode> makeSortTree(SortFaces& faces) {
    faces.addMissingPlanes();
    FaceList all(faces.faceCount());
    for (uint32_t f = 0; f < faces.faceCount(); ++f) all[f] = f;
    auto root = makeNode(faces, std::move(all), 0);
    return root ? std::move(root) : std::make_unique<SortNode>();
}

}  // namespace marrowfen
