#include "mesh/flat_star.h"

#include <algorithm>
#include <cassert>
#include <limits>

namespace marrowfen {

// In a plane across an axis the cross product of two edges has zeros but for one component, twice the triangle's area.
// Unless squares of it over- or underflow, its length is that component without its sign (the root of a rounded
// square is the number itself), and the normal has a 1 or -1 there. So all depends on the signs of the areas.
//
// An area is a difference of two products of differences of coordinates. With extents X and Y of all corners, each
// product is off by at most 3 * 2^-24 * XY, and the rounding of their difference by 2 * 2^-24 * XY: 2^-21 * XY
// altogether. An area that comes out as 2^-19 * XY or more therefore has the sign that it has from every corner. The
// vertex is then also apart from each corner by 2^-21 * X or 2^-21 * Y at least.

namespace {

constexpr float kLeastArea = 0x1p-19F;                           // as a part of the extents' product
constexpr float kLeastExtent = 0x1p-19F, kMostExtent = 0x1p29F;  // keep squares of areas among the normal numbers

float along(const Point3& p, int axis) { return axis == 0 ? p.x : axis == 1 ? p.y : p.z; }

}  // namespace

bool FlatStar::begin(const std::vector<Point3>& points) {
    blocks_.clear();
    count_ = 0;
    const Point3& first = points.front();
    for (axis_ = 2; axis_ >= 0; --axis_) {
        level_ = along(first, axis_);
        if (!std::all_of(points.begin(), points.end(), [&](const Point3& p) { return contains(p); })) continue;
        least_ = most_ = inPlane(first);
        for (const Point3& p : points) stretch(inPlane(p));
        return true;
    }
    return false;
}

bool FlatStar::contains(const Point3& p) const { return along(p, axis_) == level_ && isFinite(p); }

// The other two coordinates, in the order of the cross product.
FlatStar::Corner FlatStar::inPlane(const Point3& p) const {
    return {along(p, (axis_ + 1) % 3), along(p, (axis_ + 2) % 3)};
}

void FlatStar::stretch(const Corner& c) {
    least_ = {std::min(least_.x, c.x), std::min(least_.y, c.y)};
    most_ = {std::max(most_.x, c.x), std::max(most_.y, c.y)};
}

// The rest of the block, too.
void FlatStar::fill(size_t number, const Corner& a, const Corner& b) {
    Block& block = blocks_[number / Block::kSize];
    for (size_t i = number % Block::kSize; i < Block::kSize; ++i) {
        block.ax[i] = a.x, block.ay[i] = a.y, block.bx[i] = b.x, block.by[i] = b.y;
    }
}

void FlatStar::add(const Point3& a, const Point3& b) {
    assert(contains(a) && contains(b));
    if (count_ % Block::kSize == 0) blocks_.emplace_back();
    stretch(inPlane(a));
    stretch(inPlane(b));
    fill(count_++, inPlane(a), inPlane(b));
}

void FlatStar::remove(size_t number) {
    assert(number < count_);
    const auto cornersOf = [&](size_t n, Corner& a, Corner& b) {
        const Block& block = blocks_[n / Block::kSize];
        const size_t i = n % Block::kSize;
        a = {block.ax[i], block.ay[i]}, b = {block.bx[i], block.by[i]};
    };
    Corner a, b;
    cornersOf(--count_, a, b);
    if (number != count_) {
        Block& block = blocks_[number / Block::kSize];
        const size_t i = number % Block::kSize;
        block.ax[i] = a.x, block.ay[i] = a.y, block.bx[i] = b.x, block.by[i] = b.y;
    }
    if (count_ % Block::kSize == 0) {
        blocks_.pop_back();
    } else {
        cornersOf(count_ - 1, a, b);
        fill(count_, a, b);
    }
}

bool FlatStar::facesOneWay(const Point3& vertex) const {
    const Corner at = inPlane(vertex);
    const float width = most_.x - least_.x, height = most_.y - least_.y;
    if (!(std::min(width, height) >= kLeastExtent && std::max(width, height) <= kMostExtent)) return false;
    const float leastArea = width * height * kLeastArea;
    Lanes least = allLanes(std::numeric_limits<float>::infinity()), most = -least;
    for (const Block& b : blocks_) {
        const Lanes area = (b.ax - at.x) * (b.by - at.y) - (b.ay - at.y) * (b.bx - at.x);
        least = lower(area, least);
        most = higher(area, most);
    }
    const float low = lowestOf(least)[0];
    const float high = std::max(std::max(most[0], most[1]), std::max(most[2], most[3]));
    return low >= leastArea || high <= -leastArea;
}

}  // namespace marrowfen
