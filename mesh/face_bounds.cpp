#include "mesh/face_bounds.h"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace marrowfen {
namespace {

// Of coordinates whose dot products stay finite whatever their terms: with larger ones, rounding has no such bound.
constexpr double kMostSize = 1e37;

constexpr double kThin = 0.25;  // width of a thin slab as a fraction of its box

}  // namespace

void Extent::addPoint(const Point3& p) {
    const float c[] = {p.x, p.y, p.z};
    for (size_t axis = 0; axis < 3; ++axis) {
        if (!std::isfinite(c[axis])) low[axis] = high[axis] = std::numeric_limits<float>::quiet_NaN();  // for good
        if (c[axis] < low[axis]) low[axis] = c[axis];
        if (c[axis] > high[axis]) high[axis] = c[axis];
    }
}

void Extent::addHub(uint32_t vertex) {
    if (std::find(hubs.begin(), hubs.end(), vertex) == hubs.end()) hubs.push_back(vertex);
}

void Extent::add(const Extent& other) {
    for (size_t axis = 0; axis < 3; ++axis) {
        if (other.low[axis] < low[axis] || std::isnan(other.low[axis])) low[axis] = other.low[axis];
        if (other.high[axis] > high[axis] || std::isnan(other.high[axis])) high[axis] = other.high[axis];
    }
    for (const uint32_t hub : other.hubs) addHub(hub);
}

void Extent::limitHubs(const std::vector<Point3>& positions) {
    if (hubs.size() <= kMostHubs) return;
    for (const uint32_t hub : hubs) addPoint(positions[hub]);
    hubs.clear();
}

void BoxGroup::set(uint32_t lane, const Extent& extent, int32_t count) {
    for (size_t axis = 0; axis < 3; ++axis) {
        low[axis][lane] = extent.low[axis];
        high[axis][lane] = extent.high[axis];
    }
    counts[lane] = count;
}

Slab::Slab(const Point3& direction) : normal_{direction.x, direction.y, direction.z} {
    const double length = std::sqrt(along(normal_));
    for (double& n : normal_) n /= length;
}

void Slab::finish(const Extent& box) {
    middle_ = (low_ + high_) / 2;
    halfWidth_ = (high_ - low_) / 2;
    bool isBounded = true;
    for (size_t axis = 0; axis < 3; ++axis) {
        const double least = box.low[axis], greatest = box.high[axis];
        const double size = std::max(std::fabs(least), std::fabs(greatest)), rounding = kRelativeRounding * size;
        isBounded &= size < kMostSize;
        center_[axis] = (least + greatest) / 2;
        halfSize_[axis] = (greatest - least) / 2 + rounding;
        halfWidth_ += std::fabs(normal_[axis]) * rounding;
    }
    isThin_ = isBounded && halfWidth_ < kThin * *std::max_element(halfSize_.begin(), halfSize_.end());
}

}  // namespace marrowfen
