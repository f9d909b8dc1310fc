#include "mesh/collapse_finder.h"

#include <algorithm>
#include <bit>
#include <cassert>

#include "mesh/few_faces.h"

namespace marrowfen {

// The curvature of an edge is the largest over the vertex's faces of the smallest over the edge's faces of
// (1 - dot) / 2, dot being that of the two normals. Rounding keeps the order of numbers, so that it is computed once
// from the smallest over the faces of the largest dot: the face's alignment with the edge. A dot that isn't a number
// counts for nothing.

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();

Lanes curvatureOf(Lanes alignments) { return higher(lower((1.0F - alignments) / 2.0F, allLanes(1)), allLanes(0)); }

}  // namespace

// Written so that it becomes a minimum and a maximum of the processor.
float curvatureOf(float alignment) {
    const float turn = (1.0F - alignment) / 2.0F;
    const float most = turn < 1.0F ? turn : 1.0F;
    return most > 0.0F ? most : 0.0F;
}

float CollapseFinder::lengthTo(uint32_t vertex, uint32_t neighbor) const {
    return length(sites_[neighbor].position - sites_[vertex].position);
}

template <size_t kBlocks>
CollapseFinder::Collapse CollapseFinder::cheapestOfFew(uint32_t vertex, std::span<const uint32_t> neighbors,
                                                       std::span<const uint32_t> faces) {
    FewFaces<kBlocks> few;
    bits_[vertex] = 0;  // unless it is its own neighbour
    few.setNeighbors(neighbors, sites_, bits_);
    few.setFaces(faces, faces_, bits_);

    // A cost that isn't a number counts as an infinite one.
    Lanes costs[kBlocks], alignments[kBlocks] = {};
    few.computeLengths(sites_[vertex].position, costs);
    const size_t border = few.computeAlignments(alignments);
    Lanes lowest = allLanes(kInfinity);
    for (size_t b = 0; b < kBlocks; ++b) {
        if (border == few.kMost) costs[b] *= curvatureOf(alignments[b]);
        lowest = lower(costs[b], lowest);
    }
    lowest = lowestOf(lowest);

    // The first among equals.
    if (lowest[0] == kInfinity) return {};
    uint32_t places = 0;
    for (size_t b = 0; b < kBlocks; ++b) places |= signsOf(costs[b] == lowest) << 4 * b;
    return {neighbors[static_cast<size_t>(std::countr_zero(places))], lowest[0],
            border == few.kMost ? kNone : neighbors[border]};
}

// All edges have the same curvature.
CollapseFinder::Collapse CollapseFinder::closest(uint32_t vertex, std::span<const uint32_t> neighbors,
                                                 float curvature) const {
    Collapse best;
    for (const uint32_t neighbor : neighbors) {
        const float cost = lengthTo(vertex, neighbor) * curvature;
        if (cost < best.cost) best = {neighbor, cost};
        if (best.cost == 0) break;
    }
    return best;
}

// Where most faces lie in few planes, the same few normals come again and again.
uint32_t CollapseFinder::placeOfNormal(const Point3& normal) {
    constexpr size_t kMostCompared = 4;
    for (size_t i = 0; i < std::min(normals_.size(), kMostCompared); ++i) {
        if (normals_[i] == normal) return static_cast<uint32_t>(i);
    }
    normals_.push_back(normal);
    return static_cast<uint32_t>(normals_.size() - 1);
}

void CollapseFinder::collectNormals(std::span<const uint32_t> faces) {
    normals_.clear();
    normalsOf_.resize(faces.size());
    for (size_t i = 0; i < faces.size(); ++i) normalsOf_[i] = placeOfNormal(faces_.normal(faces[i]));
    blocks_.resize((normals_.size() + Block::kSize - 1) / Block::kSize);
    for (size_t i = 0; i < blocks_.size() * Block::kSize; ++i) {
        const Point3& normal = normals_[std::min(i, normals_.size() - 1)];
        Block& block = blocks_[i / Block::kSize];
        block.x[i % Block::kSize] = normal.x;
        block.y[i % Block::kSize] = normal.y;
        block.z[i % Block::kSize] = normal.z;
    }
}

// Calls work with the slot of each of the face's neighbours, each once however often the face uses it. The vertex can
// be its own neighbour, through a face that has it twice.
template <class Work>
void CollapseFinder::forEachSlot(uint32_t face, const Work& work) const {
    const auto [a, b, c] = faces_.corners(face);
    const uint32_t slots[] = {sites_[a].slot, b == a ? kNone : sites_[b].slot,
                              c == a || c == b ? kNone : sites_[c].slot};
    for (const uint32_t slot : slots) {
        if (slot != kNone) work(slot);
    }
}

// Counts the faces that each neighbour shares with the vertex.
void CollapseFinder::countSides(uint32_t vertex, std::span<const uint32_t> neighbors, std::span<const uint32_t> faces) {
    sites_[vertex].slot = kNone;
    for (size_t i = 0; i < neighbors.size(); ++i) sites_[neighbors[i]].slot = static_cast<uint32_t>(i);
    sideEnds_.assign(neighbors.size() + 1, 0);
    for (const uint32_t face : faces) {
        forEachSlot(face, [&](uint32_t slot) { ++sideEnds_[slot + 1]; });
    }
}

// Lists them by their normals.
void CollapseFinder::collectSides(std::span<const uint32_t> faces) {
    for (size_t i = 1; i < sideEnds_.size(); ++i) sideEnds_[i] += sideEnds_[i - 1];
    sides_.resize(sideEnds_.back());
    for (size_t f = 0; f < faces.size(); ++f) {
        // Each is filled from its start, which turns that into its end.
        forEachSlot(faces[f], [&](uint32_t slot) { sides_[sideEnds_[slot]++] = normalsOf_[f]; });
    }
}

// The last neighbour that shares exactly one face; the number of neighbours for none.
size_t CollapseFinder::borderSlot() const {
    const size_t count = sideEnds_.size() - 1;
    for (size_t i = count; i-- > 0;) {
        if (sideEnds_[i + 1] == 1) return i;
    }
    return count;
}

// The smallest alignment of the block's faces.
float CollapseFinder::leastAlignment(size_t slot, const Block& block) const {
    assert(slot + 1 < sideEnds_.size());
    Lanes largest = allLanes(-kInfinity);
    for (uint32_t i = slot == 0 ? 0 : sideEnds_[slot - 1]; i < sideEnds_[slot]; ++i) {
        const Block& other = blocks_[sides_[i] / Block::kSize];
        const size_t at = sides_[i] % Block::kSize;
        const Lanes dot = block.x * other.x[at] + block.y * other.y[at] + block.z * other.z[at];
        largest = higher(dot, largest);
    }
    return lowestOf(largest)[0];
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

void CollapseFinder::tryNeighbor(uint32_t vertex, uint32_t neighbor, Best& best) {
    const uint32_t slot = sites_[neighbor].slot;
    if (best.isWorse(0, slot)) return;  // no cost is less than 0
    const float length = lengthTo(vertex, neighbor);
    const float cost = length == 0 ? length : length * curvatureOf(leastAlignment(slot, length, best));
    if (cost < best.cost || (cost == best.cost && cost < kInfinity && slot < best.slot)) best = {slot, cost};
}

CollapseFinder::Collapse CollapseFinder::cheapestOfMany(uint32_t vertex, std::span<const uint32_t> neighbors,
                                                        std::span<const uint32_t> faces, uint32_t hint) {
    // On a border, or with all faces in one plane, no edge has another curvature.
    countSides(vertex, neighbors, faces);
    const size_t border = borderSlot();
    if (border < neighbors.size()) {
        Collapse found = closest(vertex, neighbors, 1);
        found.border = neighbors[border];
        return found;
    }
    collectNormals(faces);
    if (normals_.size() == 1) return closest(vertex, neighbors, curvatureOf(dot(normals_[0], normals_[0])));

    collectSides(faces);
    Best best{neighbors.size(), kInfinity};
    if (hint != kNone && sites_[hint].slot < neighbors.size() && neighbors[sites_[hint].slot] == hint) {
        tryNeighbor(vertex, hint, best);
    }
    for (const uint32_t neighbor : neighbors) tryNeighbor(vertex, neighbor, best);
    if (best.slot == neighbors.size()) return {};
    return {neighbors[best.slot], best.cost};
}

CollapseFinder::Collapse CollapseFinder::cheapest(uint32_t vertex, std::span<const uint32_t> neighbors,
                                                  std::span<const uint32_t> faces, uint32_t hint) {
    assert(!neighbors.empty());  // a vertex without faces can have itself as its only neighbour
    if (faces.size() <= kFew && neighbors.size() <= kFew && !faces.empty()) {
        switch ((std::max(faces.size(), neighbors.size()) - 1) / 4) {
            case 0:
                return cheapestOfFew<1>(vertex, neighbors, faces);
            case 1:
                return cheapestOfFew<2>(vertex, neighbors, faces);
            case 2:
                return cheapestOfFew<3>(vertex, neighbors, faces);
            default:
                return cheapestOfFew<4>(vertex, neighbors, faces);
        }
    }
    return cheapestOfMany(vertex, neighbors, faces, hint);
}

}  // namespace marrowfen
