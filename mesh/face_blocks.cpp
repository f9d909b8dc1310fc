#include "mesh/face_blocks.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <limits>
#include <utility>

#include "mesh/face_order.h"

namespace marrowfen {
namespace {

// Bound on the rounding of a 32-bit dot product, as a fraction of the sum of its terms' sizes, twice over. The second
// covers the smallest numbers, whose products round in absolute steps.
constexpr double kRelativeRounding = 1e-6;
constexpr double kAbsoluteRounding = 1e-40;

constexpr uint32_t kMostUses = 64;  // by faces, of a vertex that lies in boxes

constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();

}  // namespace

void FaceBlocks::addFace(Block& block, const SortFaces& faces, uint32_t face) {
    assert(block.count < kSize);
    const uint32_t lane = block.count++;
    block.face[lane] = face;
    block.isPresent[lane] = 1;
    for (size_t corner = 0; corner < 3; ++corner) {
        const Point3& p = faces.position(face, static_cast<int>(corner));
        block.coordinates[3 * corner][lane] = p.x;
        block.coordinates[3 * corner + 1][lane] = p.y;
        block.coordinates[3 * corner + 2][lane] = p.z;
    }
}

// The box and the hubs of some faces while they are gathered.
struct FaceBlocks::Extent {
    std::array<double, 3> low, high;
    std::vector<uint32_t> hubs;

    Extent() {
        low.fill(std::numeric_limits<double>::infinity());
        high.fill(-std::numeric_limits<double>::infinity());
    }

    void addPoint(const Point3& p) {
        const double c[] = {p.x, p.y, p.z};
        for (size_t axis = 0; axis < 3; ++axis) {
            if (!std::isfinite(c[axis])) low[axis] = high[axis] = kNotANumber;  // stays: no comparison is true any more
            if (c[axis] < low[axis]) low[axis] = c[axis];
            if (c[axis] > high[axis]) high[axis] = c[axis];
        }
    }

    void addHub(uint32_t vertex) {
        if (std::find(hubs.begin(), hubs.end(), vertex) == hubs.end()) hubs.push_back(vertex);
    }

    void add(const Extent& other) {
        for (size_t axis = 0; axis < 3; ++axis) {
            const bool isFinite = low[axis] == low[axis] && other.low[axis] == other.low[axis];
            low[axis] = isFinite ? std::min(low[axis], other.low[axis]) : kNotANumber;
            high[axis] = isFinite ? std::max(high[axis], other.high[axis]) : kNotANumber;
        }
        for (const uint32_t hub : other.hubs) addHub(hub);
    }

    // Where there are too many hubs, they are in the box like all vertices.
    Bounds bounds(const std::vector<Point3>& positions) {
        if (hubs.size() > kMostHubs) {
            for (const uint32_t hub : hubs) addPoint(positions[hub]);
            hubs.clear();
        }
        Bounds b;
        for (size_t axis = 0; axis < 3; ++axis) {
            b.center[axis] = (low[axis] + high[axis]) / 2;
            b.halfSize[axis] = (high[axis] - low[axis]) / 2 +
                               kRelativeRounding * std::max(std::fabs(low[axis]), std::fabs(high[axis]));
        }
        std::copy(hubs.begin(), hubs.end(), b.hubs.begin());
        b.hubCount = static_cast<uint32_t>(hubs.size());
        return b;
    }
};

FaceBlocks::Extent FaceBlocks::extentOf(const Block& block, const std::vector<uint32_t>& useCounts) const {
    Extent extent;
    for (uint32_t lane = 0; lane < block.count; ++lane) {
        const uint32_t* corners = faces_.corners(block.face[lane]);
        const auto isHub = [&](uint32_t vertex) { return useCounts[vertex] > kMostUses; };
        const bool onHubsAlone = std::all_of(corners, corners + 3, isHub);
        for (const uint32_t* corner = corners; corner != corners + 3; ++corner) {
            if (isHub(*corner) && !onHubsAlone) {
                extent.addHub(*corner);
            } else {
                extent.addPoint(faces_.vertexes[*corner]);
            }
        }
    }
    return extent;
}

void FaceBlocks::makeTree(const std::vector<uint32_t>& useCounts) {
    std::vector<Extent> extents;
    std::vector<Node> nodes;
    for (const Block& block : blocks_) {
        Extent extent = extentOf(block, useCounts);
        nodes.push_back({extent.bounds(faces_.vertexes), static_cast<int32_t>(block.count), block.count});
        extents.push_back(std::move(extent));
    }
    while (nodes.size() > 1) {
        std::vector<Extent> parentExtents((nodes.size() + kBranches - 1) / kBranches);
        std::vector<Node> parents(parentExtents.size());
        for (size_t i = 0; i < nodes.size(); ++i) {
            parentExtents[i / kBranches].add(extents[i]);
            parents[i / kBranches].count += nodes[i].count;
            parents[i / kBranches].presentCount += nodes[i].presentCount;
        }
        for (size_t i = 0; i < parents.size(); ++i) parents[i].bounds = parentExtents[i].bounds(faces_.vertexes);
        levels_.push_back(std::move(nodes));
        nodes = std::move(parents);
        extents = std::move(parentExtents);
    }
    levels_.push_back(std::move(nodes));
}

FaceBlocks::FaceBlocks(const SortFaces& faces, const std::vector<uint32_t>& members)
    : faces_(faces), placeOf_(faces.faceCount(), kNone) {
    std::vector<uint32_t> useCounts(faces.vertexes.size());
    blocks_.reserve((members.size() + kSize - 1) / kSize);
    uint32_t place = 0;
    for (const uint32_t face : neighborsTogether(faces, members, kSize)) {
        if (place % kSize == 0) {
            Block& block = blocks_.emplace_back();
            for (auto& row : block.coordinates) row.fill(kNotANumber);  // an unused lane is on no side
        }
        addFace(blocks_.back(), faces, face);
        placeOf_[face] = place++;
        for (uint32_t corner = 0; corner < 3; ++corner) ++useCounts[faces.corners(face)[corner]];
    }
    makeTree(useCounts);
}

void FaceBlocks::remove(uint32_t face) {
    uint32_t node = placeOf_[face] / kSize;
    assert(node < blocks_.size());
    blocks_[node].isPresent[placeOf_[face] % kSize] = 0;
    for (std::vector<Node>& level : levels_) {
        --level[node].presentCount;
        node /= kBranches;
    }
}

FaceBlocks::Direction::Direction(const Point3& n)
    : normal{n.x, n.y, n.z}, sizes{std::fabs(normal[0]), std::fabs(normal[1]), std::fabs(normal[2])} {}

inline FaceBlocks::Reach::Reach(const Bounds& bounds, const Direction& direction) {
    double middle = 0, reach = kAbsoluteRounding;
    for (size_t axis = 0; axis < 3; ++axis) {
        middle += direction.normal[axis] * bounds.center[axis];
        reach += direction.sizes[axis] * bounds.halfSize[axis];
    }
    low = middle - reach;
    high = middle + reach;
}

bool FaceBlocks::holdsHub(const Bounds& bounds, const HalfSpace& halfSpace) const {
    const auto* end = bounds.hubs.begin() + bounds.hubCount;
    return std::any_of(bounds.hubs.begin(), end, [&](uint32_t hub) { return halfSpace.holds(faces_.vertexes[hub]); });
}

// A box that isn't finite always overlaps in part.
inline FaceBlocks::Overlap FaceBlocks::overlapOf(const Bounds& bounds, const HalfSpace& halfSpace,
                                                 const Direction& direction) const {
    const Reach reach(bounds, direction);
    if (reach.high < halfSpace.bound) return Overlap::All;
    if (reach.low >= halfSpace.bound && !holdsHub(bounds, halfSpace)) return Overlap::None;
    return Overlap::Some;
}

// 1 for each face that has a vertex in the half space.
FaceBlocks::Flags FaceBlocks::facesIn(const Block& block, const HalfSpace& halfSpace) {
    Flags flags{};
    for (size_t corner = 0; corner < 3; ++corner) {
        const auto* xyz = &block.coordinates[3 * corner];
        for (uint32_t lane = 0; lane < kSize; ++lane) {
            flags[lane] |= halfSpace.holds({xyz[0][lane], xyz[1][lane], xyz[2][lane]}) ? 1U : 0U;
        }
    }
    return flags;
}

// all: the half space holds the whole block.
uint32_t FaceBlocks::findInBlock(const HalfSpace& halfSpace, bool all, uint32_t from, uint32_t& step) const {
    const Block& b = blocks_[(placeOf_[from] ^ step) / kSize];
    const Flags flags = all ? b.isPresent : facesIn(b, halfSpace);
    const uint32_t end = step / kSize * kSize + kSize;
    for (uint32_t s = step; s < end; ++s) {
        const uint32_t lane = (placeOf_[from] ^ s) % kSize;
        if (flags[lane] == 0 || b.isPresent[lane] == 0 || b.face[lane] == from) continue;
        step = s;
        return b.face[lane];
    }
    return kNone;
}

// The place after so many steps is the first one with the bits of their number turned over: all of a small part of the
// tree comes before what is beside it.
uint32_t FaceBlocks::findIn(const HalfSpace& halfSpace, uint32_t from, uint32_t& step) const {
    const Direction direction(halfSpace.normal);
    const uint32_t first = placeOf_[from];
    size_t level = 0;
    for (uint32_t width = kSize;; step = step / width * width + width) {  // places of a node of the level
        // Up while a node begins here, down where it isn't clear.
        while (step % (width * kBranches) == 0 && level + 1 < levels_.size()) {
            ++level;
            width *= kBranches;
        }
        if (step / width > 0 && level + 1 == levels_.size()) return kNone;
        const auto overlap = [&] {
            const uint32_t number = (first ^ step) / width;
            if (number >= levels_[level].size() || levels_[level][number].presentCount == 0) return Overlap::None;
            return overlapOf(levels_[level][number].bounds, halfSpace, direction);
        };
        Overlap found = overlap();
        for (; found != Overlap::None && level > 0; found = overlap()) {
            --level;
            width /= kBranches;
        }
        if (found == Overlap::None) continue;
        const uint32_t face = findInBlock(halfSpace, found == Overlap::All, from, step);
        if (face != kNone) return face;
    }
}

void FaceBlocks::countInBlock(const Block& block, const Plane& plane, SideCounts& counts) {
    Flags anyBehind{}, anyInFront{};
    const float lower = plane.behind().bound, upper = -plane.inFront().bound;
    for (size_t corner = 0; corner < 3; ++corner) {
        const auto* xyz = &block.coordinates[3 * corner];
        for (uint32_t lane = 0; lane < kSize; ++lane) {
            const float d = dot(plane.normal, {xyz[0][lane], xyz[1][lane], xyz[2][lane]});
            anyBehind[lane] |= d < lower ? 1U : 0U;
            anyInFront[lane] |= d > upper ? 1U : 0U;
        }
    }
    for (uint32_t lane = 0; lane < kSize; ++lane) {
        counts.behind += static_cast<int32_t>(anyBehind[lane] & ~anyInFront[lane]);
        counts.front += static_cast<int32_t>(anyInFront[lane] & ~anyBehind[lane]);
        counts.spanning += static_cast<int32_t>(anyInFront[lane] & anyBehind[lane]);
    }
}

// False, and nothing counted, where the faces of the node have to be looked at.
inline bool FaceBlocks::countClear(const Node& node, const Plane& plane, const Direction& direction,
                                   SideCounts& counts) const {
    const HalfSpace behind = plane.behind(), inFront = plane.inFront();
    const Reach reach(node.bounds, direction);
    const bool allBehind = reach.high<behind.bound, allInFront = reach.low> - inFront.bound;
    const bool noneBehind = reach.low >= behind.bound, noneInFront = reach.high <= -inFront.bound;
    if ((!allBehind && !noneBehind) || (!allInFront && !noneInFront)) return false;
    if (noneBehind && holdsHub(node.bounds, behind)) return false;
    if (noneInFront && holdsHub(node.bounds, inFront)) return false;
    if (allBehind) counts.behind += node.count;
    if (allInFront) counts.front += node.count;
    return true;
}

SideCounts FaceBlocks::countSides(uint32_t planeOf, int32_t mostSpanning) const {
    const Plane& plane = faces_.planes[planeOf];
    const Direction direction(plane.normal);
    SideCounts counts;

    // Rounding may put a face off its own plane; the loop counts it there.
    const Side own = sideOf(faces_, planeOf, plane);
    if (own == Side::Front) --counts.front;
    if (own == Side::Behind) --counts.behind;
    if (own == Side::Spanning) --counts.spanning;

    const auto end = static_cast<uint32_t>(blocks_.size());
    size_t level = 0;
    for (uint32_t block = 0, width = 1; block < end && counts.spanning <= mostSpanning; block += width) {
        while (level + 1 < levels_.size() && block % (width * kBranches) == 0) {
            ++level;
            width *= kBranches;
        }
        const auto isClear = [&] { return countClear(levels_[level][block / width], plane, direction, counts); };
        bool clear = isClear();
        for (; !clear && level > 0; clear = isClear()) {
            --level;
            width /= kBranches;
        }
        if (!clear) countInBlock(blocks_[block], plane, counts);
    }
    return counts;
}

}  // namespace marrowfen
