#include "mesh/face_blocks.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <limits>
#include <utility>

namespace marrowfen {
namespace {

// Bound on the rounding of a 32-bit dot product, as a fraction of the sum of its terms' sizes, twice over. The second
// covers the smallest numbers, whose products round in absolute steps.
constexpr double kRelativeRounding = 1e-6;
constexpr double kAbsoluteRounding = 1e-40;

constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();

// A position along a curve through space that keeps neighbours together (Morton 1966): the bits of the three
// coordinates, each scaled to 10 bits of the members' extent, interleaved.
uint32_t spreadBits(uint32_t bits) {
    bits = (bits | bits << 16) & 0x030000FF;
    bits = (bits | bits << 8) & 0x0300F00F;
    bits = (bits | bits << 4) & 0x030C30C3;
    return (bits | bits << 2) & 0x09249249;
}

uint32_t scaled(double value, double low, double high) {
    const double fraction = (value - low) / (high - low);
    return fraction > 0 && fraction <= 1 ? static_cast<uint32_t>(fraction * 1023) : 0;  // 0 for a NaN as well
}

uint32_t mortonCode(const Point3& p, const Box& box) {
    return spreadBits(scaled(p.x, box.min.x, box.max.x)) | spreadBits(scaled(p.y, box.min.y, box.max.y)) << 1 |
           spreadBits(scaled(p.z, box.min.z, box.max.z)) << 2;
}

Point3 centerOf(const SortFaces& faces, uint32_t face) {
    const float third = 1.0F / 3;
    return faces.position(face, 0) * third + faces.position(face, 1) * third + faces.position(face, 2) * third;
}

// The members so that neighbours follow one another. The order decides how fast answers come, never what they are.
std::vector<uint32_t> alongCurve(const SortFaces& faces, const std::vector<uint32_t>& members) {
    Box box = emptyBox();
    for (const uint32_t face : members) widen(box, centerOf(faces, face));

    std::vector<std::pair<uint32_t, uint32_t>> order;
    order.reserve(members.size());
    for (const uint32_t face : members) order.emplace_back(mortonCode(centerOf(faces, face), box), face);
    std::sort(order.begin(), order.end());

    std::vector<uint32_t> sorted;
    sorted.reserve(order.size());
    for (const auto& [code, face] : order) sorted.push_back(face);
    return sorted;
}

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

void FaceBlocks::computeBox(Block& block) {
    for (size_t axis = 0; axis < 3; ++axis) {
        double low = std::numeric_limits<double>::infinity(), high = -low;
        for (size_t row = axis; row < 9; row += 3) {
            for (uint32_t lane = 0; lane < block.count; ++lane) {
                const double c = block.coordinates[row][lane];
                if (!std::isfinite(c)) low = high = kNotANumber;  // stays: no comparison below is true any more
                if (c < low) low = c;
                if (c > high) high = c;
            }
        }
        block.center[axis] = (low + high) / 2;
        block.halfSize[axis] = (high - low) / 2;
        block.largest[axis] = std::max(std::fabs(low), std::fabs(high));
    }
}

FaceBlocks::FaceBlocks(const SortFaces& faces, const std::vector<uint32_t>& members)
    : faces_(faces), placeOf_(faces.faceCount(), kNone) {
    blocks_.reserve((members.size() + kSize - 1) / kSize);
    uint32_t place = 0;
    for (const uint32_t face : alongCurve(faces, members)) {
        if (place % kSize == 0) {
            Block& block = blocks_.emplace_back();
            for (auto& row : block.coordinates) row.fill(kNotANumber);  // an unused lane is on no side
        }
        addFace(blocks_.back(), faces, face);
        placeOf_[face] = place++;
    }
    for (Block& block : blocks_) computeBox(block);
}

void FaceBlocks::remove(uint32_t face) {
    assert(placeOf_[face] / kSize < blocks_.size());
    blocks_[placeOf_[face] / kSize].isPresent[placeOf_[face] % kSize] = 0;
}

// A box that isn't finite always overlaps in part.
FaceBlocks::Overlap FaceBlocks::overlapOf(const Block& block, const HalfSpace& halfSpace) {
    const double n[] = {halfSpace.normal.x, halfSpace.normal.y, halfSpace.normal.z};
    double middle = 0, reach = kAbsoluteRounding;
    for (size_t axis = 0; axis < 3; ++axis) {
        middle += n[axis] * block.center[axis];
        reach += std::fabs(n[axis]) * (block.halfSize[axis] + kRelativeRounding * block.largest[axis]);
    }
    if (middle - reach >= halfSpace.bound) return Overlap::None;
    return middle + reach < halfSpace.bound ? Overlap::All : Overlap::Some;
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

uint32_t FaceBlocks::findIn(const HalfSpace& halfSpace, uint32_t excluded, uint32_t& place) const {
    assert(place <= blocks_.size() * kSize);
    uint32_t lane = place % kSize;
    for (uint32_t b = place / kSize; b < blocks_.size(); ++b, lane = 0) {
        const Block& block = blocks_[b];
        const Overlap overlap = overlapOf(block, halfSpace);
        if (overlap == Overlap::None) continue;
        const Flags flags = overlap == Overlap::All ? block.isPresent : facesIn(block, halfSpace);
        for (; lane < block.count; ++lane) {
            if (flags[lane] == 0 || block.isPresent[lane] == 0 || block.face[lane] == excluded) continue;
            place = b * kSize + lane;
            return block.face[lane];
        }
    }
    place = static_cast<uint32_t>(blocks_.size()) * kSize;
    return kNone;
}

void FaceBlocks::countInBlock(const Block& block, const Plane& plane, SideCounts& counts) {
    const Overlap behind = overlapOf(block, plane.behind());
    const Overlap front = overlapOf(block, plane.inFront());
    const auto all = static_cast<int32_t>(block.count);
    if (behind != Overlap::Some && front != Overlap::Some) {
        if (behind == Overlap::All) counts.behind += all;
        if (front == Overlap::All) counts.front += all;
        return;
    }
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

SideCounts FaceBlocks::countSides(uint32_t planeOf, int32_t mostSpanning) const {
    const Plane& plane = faces_.planes[planeOf];
    SideCounts counts;

    // Rounding may put a face off its own plane; the loop counts it there.
    const Side own = sideOf(faces_, planeOf, plane);
    if (own == Side::Front) --counts.front;
    if (own == Side::Behind) --counts.behind;
    if (own == Side::Spanning) --counts.spanning;

    for (const Block& block : blocks_) {
        countInBlock(block, plane, counts);
        if (counts.spanning > mostSpanning) break;
    }
    return counts;
}

}  // namespace marrowfen
