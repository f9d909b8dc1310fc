#include "mesh/face_blocks.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <limits>
#include <utility>

#include "mesh/face_order.h"

namespace marrowfen {
namespace {

constexpr uint32_t kMostUses = 64;  // by faces, of a vertex that lies in boxes

constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();

Lanes dotAt(const Point3& n, const float (*xyz)[FaceBlocks::kSize], uint32_t first) {
    return n.x * lanesAt(xyz[0] + first) + n.y * lanesAt(xyz[1] + first) + n.z * lanesAt(xyz[2] + first);
}

}  // namespace

void FaceBlocks::addFace(Block& block, const SortFaces& faces, uint32_t face) {
    assert(block.count < kSize);
    const uint32_t lane = block.count++;
    block.face[lane] = face;
    for (size_t corner = 0; corner < 3; ++corner) {
        const Point3& p = faces.position(face, static_cast<int>(corner));
        block.coordinates[3 * corner][lane] = p.x;
        block.coordinates[3 * corner + 1][lane] = p.y;
        block.coordinates[3 * corner + 2][lane] = p.z;
    }
}

Extent FaceBlocks::extentOf(const Block& block, const std::vector<uint32_t>& useCounts) const {
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
    extent.limitHubs(faces_.vertexes);
    return extent;
}

// Hubs aren't in it.
Slab FaceBlocks::slabOf(const Block& block, const Extent& extent) const {
    if (!extent.hubs.empty()) return {};
    Point3 direction;
    for (uint32_t lane = 0; lane < block.count; ++lane) {
        direction = direction + faces_.planes[block.face[lane]].normal;
    }
    Slab slab(direction);
    for (uint32_t lane = 0; lane < block.count; ++lane) {
        for (int corner = 0; corner < 3; ++corner) slab.addPoint(faces_.position(block.face[lane], corner));
    }
    slab.finish(extent);
    return slab;
}

FaceBlocks::Level FaceBlocks::levelOf(const std::vector<Extent>& extents, const std::vector<int32_t>& counts) const {
    Level level;
    level.groups.resize((extents.size() + kBranches - 1) / kBranches);
    for (uint32_t part = 0; part < extents.size(); ++part) {
        level.groups[part / kBranches].set(part % kBranches, extents[part], counts[part]);
        const std::vector<uint32_t>& hubs = extents[part].hubs;
        if (hubs.empty()) continue;
        if (level.hubs.empty()) level.hubs.resize(extents.size(), {kNone, kNone, kNone, kNone});
        std::copy(hubs.begin(), hubs.end(), level.hubs[part].begin());
        level.groups[part / kBranches].hasHubs |= 1U << part % kBranches;
    }
    return level;
}

void FaceBlocks::makeTree(const std::vector<uint32_t>& useCounts) {
    std::vector<Extent> extents;
    std::vector<int32_t> counts;
    for (const Block& block : blocks_) {
        extents.push_back(extentOf(block, useCounts));
        slabs_.push_back(slabOf(block, extents.back()));
        counts.push_back(static_cast<int32_t>(block.count));
    }
    levels_.push_back(levelOf(extents, counts));
    while (levels_.back().groups.size() > 1) {
        std::vector<Extent> wider(levels_.back().groups.size());
        std::vector<int32_t> sums(wider.size());
        for (size_t i = 0; i < extents.size(); ++i) {
            wider[i / kBranches].add(extents[i]);
            sums[i / kBranches] += counts[i];
        }
        for (Extent& extent : wider) extent.limitHubs(faces_.vertexes);
        extents = std::move(wider);
        counts = std::move(sums);
        levels_.push_back(levelOf(extents, counts));
    }
}

FaceBlocks::FaceBlocks(const SortFaces& faces, const std::vector<uint32_t>& members)
    : faces_(faces), placeOf_(faces.faceCount(), kNone) {
    std::vector<uint32_t> useCounts(faces.vertexes.size());
    blocks_.reserve((members.size() + kSize - 1) / kSize);
    uint32_t place = 0;
    for (const uint32_t face : neighborsTogether(faces, members, kSize)) {
        if (place % kSize == 0) {
            Block& block = blocks_.emplace_back();
            for (auto& row : block.coordinates) std::fill_n(row, kSize, kNotANumber);  // on no side
        }
        addFace(blocks_.back(), faces, face);
        placeOf_[face] = place++;
        for (uint32_t corner = 0; corner < 3; ++corner) ++useCounts[faces.corners(face)[corner]];
    }
    makeTree(useCounts);
}

void FaceBlocks::remove(uint32_t face) {
    uint32_t part = placeOf_[face] / kSize;
    assert(part < blocks_.size());
    const uint32_t lane = placeOf_[face] % kSize;
    Block& block = blocks_[part];
    --block.count;
    for (auto& row : block.coordinates) row[lane] = kNotANumber;
    for (Level& level : levels_) {
        --level.groups[part / kBranches].counts[part % kBranches];
        part /= kBranches;
    }
}

bool FaceBlocks::holdsHub(const Level& level, size_t part, const HalfSpace& halfSpace) const {
    const auto isIn = [&](uint32_t hub) { return hub != kNone && halfSpace.holds(faces_.vertexes[hub]); };
    return std::any_of(level.hubs[part].begin(), level.hubs[part].end(), isIn);
}

struct FaceBlocks::Search {
    const HalfSpace& halfSpace;
    BoxReach reach;
    uint32_t first;  // the place from which the steps lead away
};

// The place after so many steps is the first one with the bits of their number turned over: all of a small part of the
// tree comes before what is beside it.
uint32_t FaceBlocks::findIn(const HalfSpace& halfSpace, uint32_t from, uint32_t& step) const {
    const Search search{halfSpace, BoxReach(halfSpace.normal), placeOf_[from]};
    uint32_t found = stepInBlock(search, std::max(step, 1U));
    if (found == kNone && partsIn(search, levels_.back(), 0) == 0) return kNone;
    uint32_t width = kSize;  // places of a part of the level
    for (size_t level = 0; found == kNone && level < levels_.size(); ++level, width *= kBranches) {
        const uint32_t next = (step / width + 1) * width;
        if (next % (width * kBranches) != 0) found = stepInGroup(search, level, next);
    }
    if (found == kNone) return kNone;
    step = found;
    const uint32_t place = search.first ^ step;
    return blocks_[place / kSize].face[place % kSize];
}

// Which parts of a group may have a face there, and have faces: a bit each. A box that isn't finite always may.
inline uint32_t FaceBlocks::partsIn(const Search& search, const Level& level, size_t group) const {
    const BoxGroup& boxes = level.groups[group];
    const Bits isClear = search.reach.low(boxes) >= search.halfSpace.bound;
    const Bits isEmpty = bitsAt(boxes.counts) == 0;
    uint32_t parts = signsOf(~(isClear | isEmpty));
    for (uint32_t others = boxes.hasHubs & ~parts; others != 0; others &= others - 1) {
        const auto lane = static_cast<uint32_t>(std::countr_zero(others));
        if (boxes.counts[lane] > 0 && holdsHub(level, group * kBranches + lane, search.halfSpace)) parts |= 1U << lane;
    }
    return parts;
}

// From the step on, among the parts of its group.
uint32_t FaceBlocks::stepInGroup(const Search& search, size_t level, uint32_t step) const {
    const uint32_t width = kSize << 2 * level;
    const size_t group = (search.first ^ step) / width / kBranches;
    if (group >= levels_[level].groups.size()) return kNone;
    const uint32_t parts = partsIn(search, levels_[level], group);
    do {
        const uint32_t part = (search.first ^ step) / width % kBranches;
        if ((parts >> part & 1) != 0) {
            const uint32_t found = level == 0 ? stepInBlock(search, step) : stepInGroup(search, level - 1, step);
            if (found != kNone) return found;
        }
        step += width;
    } while (step % (width * kBranches) != 0);
    return kNone;
}

// From the step on, in its block.
uint32_t FaceBlocks::stepInBlock(const Search& search, uint32_t step) const {
    const uint32_t place = search.first ^ step;
    const Block& b = blocks_[place / kSize];
    const Slab& slab = slabs_[place / kSize];
    const HalfSpace& halfSpace = search.halfSpace;
    if (slab.isThin() && slab.reach(halfSpace.normal).low >= halfSpace.bound) return kNone;

    uint32_t lanes = 0;
    for (uint32_t four = 0; four < kSize; four += 4) {
        Bits isIn{};
        for (size_t row = 0; row < 9; row += 3)
            isIn |= dotAt(halfSpace.normal, &b.coordinates[row], four) < halfSpace.bound;
        lanes |= signsOf(isIn) << four;
    }
    for (uint32_t end = step / kSize * kSize + kSize; lanes != 0 && step < end; ++step) {
        if ((lanes >> (search.first ^ step) % kSize & 1) != 0) return step;
    }
    return kNone;
}

struct FaceBlocks::Count {
    const Plane& plane;
    BoxReach reach;
    int32_t mostSpanning;
    SideCounts counts;
    float lower = plane.behind().bound, upper = -plane.inFront().bound;  // of what is on the plane

    // Where all faces of a part lie whose vertices have dot products from low to high; Spanning where they must be
    // looked at.
    Side sideOf(double low, double high) const {
        const bool noneBehind = low >= lower, noneInFront = high <= upper;
        if (noneBehind && noneInFront) return Side::Coplanar;
        if (noneBehind && low > upper) return Side::Front;
        return noneInFront && high < lower ? Side::Behind : Side::Spanning;
    }

    void add(Side side, int32_t number) {
        if (side == Side::Front) counts.front += number;
        if (side == Side::Behind) counts.behind += number;
    }
};

void FaceBlocks::countInBlock(uint32_t number, Count& count) const {
    const Block& b = blocks_[number];
    if (slabs_[number].isThin()) {
        const Slab::Reach reach = slabs_[number].reach(count.plane.normal);
        const Side side = count.sideOf(reach.low, reach.high);
        if (side != Side::Spanning) return count.add(side, static_cast<int32_t>(b.count));
    }
    Bits behind{}, front{}, both{};
    for (uint32_t four = 0; four < kSize; four += 4) {
        Bits anyBehind{}, anyInFront{};
        for (size_t row = 0; row < 9; row += 3) {
            const Lanes d = dotAt(count.plane.normal, &b.coordinates[row], four);
            anyBehind |= d < count.lower;
            anyInFront |= d > count.upper;
        }
        behind -= anyBehind;
        front -= anyInFront;
        both -= anyBehind & anyInFront;
    }
    const int32_t spanning = sum(both);
    count.counts.behind += sum(behind) - spanning;
    count.counts.front += sum(front) - spanning;
    count.counts.spanning += spanning;
}

// Parts that are clear of the plane are counted at once. A box that isn't finite never is.
void FaceBlocks::countInGroup(size_t level, size_t group, Count& count) const {
    const BoxGroup& boxes = levels_[level].groups[group];
    const Lanes low = count.reach.low(boxes), high = count.reach.high(boxes);
    const Bits noneBehind = low >= count.lower, noneInFront = high <= count.upper;
    Bits inFront = (low > count.upper) & noneBehind, behind = (high < count.lower) & noneInFront;
    uint32_t open = signsOf(~(inFront | behind | (noneBehind & noneInFront)));
    for (uint32_t others = boxes.hasHubs & ~open; others != 0; others &= others - 1) {
        const auto lane = static_cast<uint32_t>(std::countr_zero(others));
        const size_t part = group * kBranches + lane;
        const bool isOff = (inFront[lane] == 0 && holdsHub(levels_[level], part, count.plane.inFront())) ||
                           (behind[lane] == 0 && holdsHub(levels_[level], part, count.plane.behind()));
        if (!isOff) continue;
        open |= 1U << lane;
        inFront[lane] = behind[lane] = 0;
    }
    count.counts.front += sum(inFront & bitsAt(boxes.counts));
    count.counts.behind += sum(behind & bitsAt(boxes.counts));
    for (; open != 0 && count.counts.spanning <= count.mostSpanning; open &= open - 1) {
        const auto lane = static_cast<uint32_t>(std::countr_zero(open));
        const auto part = static_cast<uint32_t>(group * kBranches + lane);
        if (boxes.counts[lane] == 0) continue;
        if (level == 0) {
            countInBlock(part, count);
        } else {
            countInGroup(level - 1, part, count);
        }
    }
}

SideCounts FaceBlocks::countSides(uint32_t planeOf, int32_t mostSpanning) const {
    const Plane& plane = faces_.planes[planeOf];
    Count count{plane, BoxReach(plane.normal), mostSpanning, {}};

    // Rounding may put a face off its own plane; the loop counts it there.
    const Side own = sideOf(faces_, planeOf, plane);
    if (own == Side::Front) --count.counts.front;
    if (own == Side::Behind) --count.counts.behind;
    if (own == Side::Spanning) --count.counts.spanning;
    countInGroup(levels_.size() - 1, 0, count);
    return count.counts;
}

}  // namespace marrowfen
