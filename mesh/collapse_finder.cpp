#include "mesh/collapse_finder.h"

#include <algorithm>

namespace marrowfen {

// The curvature of an edge is the largest over the vertex's faces of the smallest over the edge's faces of
// (1 - dot) / 2, dot being that of the two normals. Rounding keeps the order of numbers, so that it is computed once
// from the smallest over the faces of the largest dot: the face's alignment with the edge.

namespace {

// A dot that isn't a number counts for nothing; alignments without any dot are infinite.
constexpr float kInfinity = std::numeric_limits<float>::infinity();

float curvatureOf(float alignment) { return std::max(0.0F, std::min(1.0F, (1.0F - alignment) / 2.0F)); }

}  // namespace

// Calls visit(slot, face) for each face and each neighbour that it uses. The vertex can be its own neighbour, through a
// face that has it twice.
template <class Visit>
void CollapseFinder::visitSides(std::span<const uint32_t> neighbors, std::span<const uint32_t> faces,
                                Visit visit) const {
    for (size_t f = 0; f < faces.size(); ++f) {
        const Corners& c = corners_[faces[f]];
        for (size_t i = 0; i < 3; ++i) {
            const size_t slot = slotOf_[c[i]];
            const bool isRepeated = (i > 0 && c[i] == c[0]) || (i > 1 && c[i] == c[1]);
            if (slot < neighbors.size() && neighbors[slot] == c[i] && !isRepeated) visit(slot, f);
        }
    }
}

void CollapseFinder::collectSides(std::span<const uint32_t> neighbors, std::span<const uint32_t> faces) {
    faceNormals_.clear();
    for (const uint32_t face : faces) faceNormals_.push_back(normals_[face]);
    for (size_t i = 0; i < neighbors.size(); ++i) slotOf_[neighbors[i]] = static_cast<uint32_t>(i);

    // Count each neighbour's faces, then fill from the starts, which turns them into ends.
    sideEnds_.assign(neighbors.size() + 1, 0);
    visitSides(neighbors, faces, [&](size_t slot, size_t) { ++sideEnds_[slot + 1]; });
    for (size_t i = 1; i < sideEnds_.size(); ++i) sideEnds_[i] += sideEnds_[i - 1];
    sides_.resize(sideEnds_.back());
    visitSides(neighbors, faces, [&](size_t slot, size_t f) { sides_[sideEnds_[slot]++] = faceNormals_[f]; });
}

bool CollapseFinder::isOnBorder() const {
    uint32_t begin = 0;
    for (size_t i = 0; i + 1 < sideEnds_.size(); ++i) {
        if (sideEnds_[i] - begin == 1) return true;
        begin = sideEnds_[i];
    }
    return false;
}

float CollapseFinder::alignment(const Point3& normal, size_t slot) const {
    float largest = -kInfinity;
    for (uint32_t i = slot == 0 ? 0 : sideEnds_[slot - 1]; i < sideEnds_[slot]; ++i) {
        const float d = dot(normal, sides_[i]);
        largest = d > largest ? d : largest;
    }
    return largest;
}

// The smallest alignment of a face, or any that shows that the neighbour is worse than the best. The face that decided
// for the last neighbour is looked at first: it often shows just that.
float CollapseFinder::leastAlignment(size_t slot, float length, const Best& best) {
    float least = kInfinity;
    for (size_t i = 0; i <= faceNormals_.size(); ++i) {
        const size_t face = i == 0 ? mostTurned_ : i - 1;
        const float a = face < faceNormals_.size() ? alignment(faceNormals_[face], slot) : kInfinity;
        if (!(a < least)) continue;
        least = a;
        mostTurned_ = face;
        if (best.isWorse(length * curvatureOf(least), slot)) break;
    }
    return least;
}

void CollapseFinder::tryNeighbor(size_t slot, float length, bool onBorder, Best& best) {
    if (best.isWorse(0, slot)) return;  // no cost is less than 0
    const float cost = onBorder ? length : length * curvatureOf(leastAlignment(slot, length, best));
    if (cost < best.cost || (cost == best.cost && cost < kInfinity && slot < best.slot)) best = {slot, cost};
}

CollapseFinder::Collapse CollapseFinder::cheapest(uint32_t vertex, std::span<const uint32_t> neighbors,
                                                  std::span<const uint32_t> faces, uint32_t hint) {
    collectSides(neighbors, faces);
    const bool onBorder = isOnBorder();
    const auto lengthTo = [&](size_t slot) { return length(positions_[neighbors[slot]] - positions_[vertex]); };
    Best best{neighbors.size(), kInfinity};
    if (hint != kNone && slotOf_[hint] < neighbors.size() && neighbors[slotOf_[hint]] == hint) {
        tryNeighbor(slotOf_[hint], lengthTo(slotOf_[hint]), onBorder, best);
    }
    for (size_t i = 0; i < neighbors.size(); ++i) tryNeighbor(i, lengthTo(i), onBorder, best);
    return best.slot == neighbors.size() ? Collapse{} : Collapse{neighbors[best.slot], best.cost};
}

}  // namespace marrowfen
