#include "mesh/collapse_finder.h"

#include <algorithm>

namespace marrowfen {

// The curvature of an edge is the largest over the vertex's faces of the smallest over the edge's faces of
// (1 - dot) / 2, dot being that of the two normals. Rounding keeps the order of numbers, so that it is computed once
// from the smallest over the faces of the largest dot: the face's alignment with the edge. A dot that isn't a number
// counts for nothing.

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

float curvatureOf(float alignment) { return std::max(0.0F, std::min(1.0F, (1.0F - alignment) / 2.0F)); }

}  // namespace

void CollapseFinder::collectNormals(std::span<const uint32_t> faces) {
    blocks_.resize((faces.size() + Block::kSize - 1) / Block::kSize);
    for (size_t i = 0; i < blocks_.size() * Block::kSize; ++i) {
        const Point3& normal = normals_[faces[std::min(i, faces.size() - 1)]];
        Block& block = blocks_[i / Block::kSize];
        block.x[i % Block::kSize] = normal.x;
        block.y[i % Block::kSize] = normal.y;
        block.z[i % Block::kSize] = normal.z;
    }
}

// Finds the faces that each neighbour shares with the vertex. The vertex can be its own neighbour, through a face that
// has it twice.
void CollapseFinder::collectSides(uint32_t vertex, std::span<const uint32_t> neighbors,
                                  std::span<const uint32_t> faces) {
    slotOf_[vertex] = CollapseFinder::kNone;
    for (size_t i = 0; i < neighbors.size(); ++i) slotOf_[neighbors[i]] = static_cast<uint32_t>(i);

    // Count each neighbour's faces, each once however often it uses the neighbour.
    sideEnds_.assign(neighbors.size() + 1, 0);
    sidesByFace_.resize(3 * faces.size());
    size_t count = 0;
    const auto add = [&](uint32_t corner, uint32_t face) {
        const uint32_t slot = slotOf_[corner];
        if (slot == kNone) return;
        ++sideEnds_[slot + 1];
        sidesByFace_[count++] = {slot, face};
    };
    for (uint32_t f = 0; f < faces.size(); ++f) {
        const auto [a, b, c] = corners_[faces[f]];
        add(a, f);
        if (b != a) add(b, f);
        if (c != a && c != b) add(c, f);
    }

    // Fill from the starts, which turns them into ends.
    for (size_t i = 1; i < sideEnds_.size(); ++i) sideEnds_[i] += sideEnds_[i - 1];
    sides_.resize(count);
    for (size_t i = 0; i < count; ++i) sides_[sideEnds_[sidesByFace_[i].slot]++] = sidesByFace_[i].face;
}

bool CollapseFinder::isOnBorder() const {
    uint32_t begin = 0;
    for (size_t i = 0; i + 1 < sideEnds_.size(); ++i) {
        if (sideEnds_[i] - begin == 1) return true;
        begin = sideEnds_[i];
    }
    return false;
}

// The smallest alignment of the block's faces.
float CollapseFinder::leastAlignment(size_t slot, const Block& block) const {
    Lanes largest = Lanes{} - kInfinity;
    for (uint32_t i = slot == 0 ? 0 : sideEnds_[slot - 1]; i < sideEnds_[slot]; ++i) {
        const Block& other = blocks_[sides_[i] / Block::kSize];
        const size_t at = sides_[i] % Block::kSize;
        const Lanes dot = block.x * other.x[at] + block.y * other.y[at] + block.z * other.z[at];
        largest = dot > largest ? dot : largest;
    }
    return std::min(std::min(largest[0], largest[1]), std::min(largest[2], largest[3]));
}

// The smallest alignment of a face, or any that shows that the neighbour is worse than the best. Blocks are taken in
// turn after and before the one that decided about the last neighbour: neighbours that follow one another are often
// decided by the same faces or those beside them.
float CollapseFinder::leastAlignment(size_t slot, float length, const Best& best) {
    const size_t count = blocks_.size();
    const size_t first = decidingBlock_ < count ? decidingBlock_ : 0;
    float least = kInfinity;
    for (size_t i = 0; i < count; ++i) {
        const size_t step = (i + 1) / 2;
        const size_t wrapped = i % 2 == 1 ? first + step : first + count - step;
        const size_t at = wrapped < count ? wrapped : wrapped - count;
        const float alignment = leastAlignment(slot, blocks_[at]);
        if (!(alignment < least)) continue;
        least = alignment;
        decidingBlock_ = at;
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
    collectSides(vertex, neighbors, faces);
    const bool onBorder = isOnBorder();
    if (!onBorder) collectNormals(faces);
    const auto lengthTo = [&](size_t slot) { return length(positions_[neighbors[slot]] - positions_[vertex]); };
    Best best{neighbors.size(), kInfinity};
    if (hint != kNone && slotOf_[hint] < neighbors.size() && neighbors[slotOf_[hint]] == hint) {
        tryNeighbor(slotOf_[hint], lengthTo(slotOf_[hint]), onBorder, best);
    }
    for (size_t i = 0; i < neighbors.size(); ++i) tryNeighbor(i, lengthTo(i), onBorder, best);
    return best.slot == neighbors.size() ? Collapse{} : Collapse{neighbors[best.slot], best.cost};
}

}  // namespace marrowfen
