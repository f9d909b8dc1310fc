#include "mesh/collapse_finder.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstring>

namespace marrowfen {

// The curvature of an edge is the largest over the vertex's faces of the smallest over the edge's faces of
// (1 - dot) / 2, dot being that of the two normals. Rounding keeps the order of numbers, so that it is computed once
// from the smallest over the faces of the largest dot: the face's alignment with the edge. A dot that isn't a number
// counts for nothing.

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

}  // namespace

float curvatureOf(float alignment) { return std::max(0.0F, std::min(1.0F, (1.0F - alignment) / 2.0F)); }

float CollapseFinder::lengthTo(uint32_t vertex, uint32_t neighbor) const {
    return length(positions_[neighbor] - positions_[vertex]);
}

// All dot products of the faces' normals are computed, each face's with four others at once, and each neighbour takes
// the lines of its faces. A neighbour's faces are a bit each.
CollapseFinder::Collapse CollapseFinder::cheapestOfFew(uint32_t vertex, std::span<const uint32_t> neighbors,
                                                       std::span<const uint32_t> faces) {
    constexpr size_t kBlocks = kFew / Block::kSize;
    assert(faces.size() <= kFew && neighbors.size() <= kFew);

    // The faces of each neighbour, and of the vertex itself unless it is its own neighbour.
    uint32_t sides[kFew + 1];
    slotOf_[vertex] = kFew;
    sides[kFew] = 0;
    for (uint32_t i = 0; i < neighbors.size(); ++i) {
        slotOf_[neighbors[i]] = i;
        sides[i] = 0;
    }
    float x[kFew], y[kFew], z[kFew];
    for (size_t f = 0; f < faces.size(); ++f) {
        const DecimationFace& face = faces_[faces[f]];
        for (const uint32_t corner : face.corners) sides[slotOf_[corner]] |= 1U << f;
        x[f] = face.normal.x;
        y[f] = face.normal.y;
        z[f] = face.normal.z;
    }

    Collapse best;
    for (size_t i = 0; i < neighbors.size(); ++i) {
        if (std::has_single_bit(sides[i])) best.border = neighbors[i];
    }
    if (best.border != kNone) {
        for (const uint32_t neighbor : neighbors) {
            const float cost = lengthTo(vertex, neighbor);
            if (cost < best.cost) best = {neighbor, cost, best.border};
        }
        return best;
    }

    // The dot products of each face's normal with all, four at once; the last face fills up the last four.
    const size_t blockCount = (faces.size() + Block::kSize - 1) / Block::kSize;
    for (size_t f = faces.size(); f < blockCount * Block::kSize; ++f) {
        x[f] = x[f - 1];
        y[f] = y[f - 1];
        z[f] = z[f - 1];
    }
    Lanes dots[kFew][kBlocks];
    for (size_t b = 0; b < blockCount; ++b) {
        Block block;
        std::memcpy(&block.x, x + b * Block::kSize, sizeof block.x);
        std::memcpy(&block.y, y + b * Block::kSize, sizeof block.y);
        std::memcpy(&block.z, z + b * Block::kSize, sizeof block.z);
        for (size_t f = 0; f < faces.size(); ++f) dots[f][b] = block.x * x[f] + block.y * y[f] + block.z * z[f];
    }

    for (size_t i = 0; i < neighbors.size(); ++i) {
        Lanes least = Lanes{} + kInfinity;
        for (size_t b = 0; b < blockCount; ++b) {
            Lanes largest = Lanes{} - kInfinity;
            for (uint32_t left = sides[i]; left != 0; left &= left - 1) {
                const Lanes dot = dots[std::countr_zero(left)][b];
                largest = dot > largest ? dot : largest;
            }
            least = largest < least ? largest : least;
        }
        const float alignment = std::min(std::min(least[0], least[1]), std::min(least[2], least[3]));
        const float cost = lengthTo(vertex, neighbors[i]) * curvatureOf(alignment);
        if (cost < best.cost) best = {neighbors[i], cost, kNone};
    }
    return best;
}

void CollapseFinder::collectNormals(std::span<const uint32_t> faces) {
    blocks_.resize((faces.size() + Block::kSize - 1) / Block::kSize);
    for (size_t i = 0; i < blocks_.size() * Block::kSize; ++i) {
        const Point3& normal = faces_[faces[std::min(i, faces.size() - 1)]].normal;
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
    facesAtNeighbors_.resize(3 * faces.size());
    size_t count = 0;
    const auto add = [&](uint32_t corner, uint32_t face) {
        const uint32_t slot = slotOf_[corner];
        if (slot == kNone) return;
        ++sideEnds_[slot + 1];
        facesAtNeighbors_[count++] = {slot, face};
    };
    for (uint32_t f = 0; f < faces.size(); ++f) {
        const auto [a, b, c] = faces_[faces[f]].corners;
        add(a, f);
        if (b != a) add(b, f);
        if (c != a && c != b) add(c, f);
    }

    // Fill from the starts, which turns them into ends.
    for (size_t i = 1; i < sideEnds_.size(); ++i) sideEnds_[i] += sideEnds_[i - 1];
    sides_.resize(count);
    for (size_t i = 0; i < count; ++i) sides_[sideEnds_[facesAtNeighbors_[i].slot]++] = facesAtNeighbors_[i].face;
}

// The last neighbour that shares exactly one face; the number of neighbours for none.
size_t CollapseFinder::borderSlot() const {
    const size_t count = sideEnds_.size() - 1;
    for (size_t i = count; i-- > 0;) {
        if (sideEnds_[i] - (i == 0 ? 0 : sideEnds_[i - 1]) == 1) return i;
    }
    return count;
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
    const float cost = onBorder || length == 0 ? length : length * curvatureOf(leastAlignment(slot, length, best));
    if (cost < best.cost || (cost == best.cost && cost < kInfinity && slot < best.slot)) best = {slot, cost};
}

CollapseFinder::Collapse CollapseFinder::cheapestOfMany(uint32_t vertex, std::span<const uint32_t> neighbors,
                                                        std::span<const uint32_t> faces, uint32_t hint) {
    collectSides(vertex, neighbors, faces);
    const size_t border = borderSlot();
    const bool onBorder = border < neighbors.size();
    if (!onBorder) collectNormals(faces);
    Best best{neighbors.size(), kInfinity};
    if (hint != kNone && slotOf_[hint] < neighbors.size() && neighbors[slotOf_[hint]] == hint) {
        tryNeighbor(slotOf_[hint], lengthTo(vertex, hint), onBorder, best);
    }
    for (size_t i = 0; i < neighbors.size(); ++i) tryNeighbor(i, lengthTo(vertex, neighbors[i]), onBorder, best);

    Collapse found;
    if (onBorder) found.border = neighbors[border];
    if (best.slot < neighbors.size()) {
        found.target = neighbors[best.slot];
        found.cost = best.cost;
    }
    return found;
}

CollapseFinder::Collapse CollapseFinder::cheapest(uint32_t vertex, std::span<const uint32_t> neighbors,
                                                  std::span<const uint32_t> faces, uint32_t hint) {
    assert(!neighbors.empty() && !faces.empty());
    if (faces.size() <= kFew && neighbors.size() <= kFew) return cheapestOfFew(vertex, neighbors, faces);
    return cheapestOfMany(vertex, neighbors, faces, hint);
}

}  // namespace marrowfen
