#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "mesh/lanes.h"
#include "mesh/sort_faces.h"

namespace marrowfen {

// What bounds some faces: their box. Vertices of many faces, hubs, stand for themselves: the box around the others
// doesn't reach to them, and each face has one of the others in it.
struct Extent {
    static constexpr size_t kMostHubs = 4;

    std::array<float, 3> low = filled(std::numeric_limits<float>::infinity());  // NaN where the box isn't finite
    std::array<float, 3> high = filled(-std::numeric_limits<float>::infinity());
    std::vector<uint32_t> hubs;  // vertices, each once

    void addPoint(const Point3& p);
    void addHub(uint32_t vertex);
    void add(const Extent& other);

    // Where there are too many hubs, they are in the box like all vertices.
    void limitHubs(const std::vector<Point3>& positions);

private:
    static std::array<float, 3> filled(float value) { return {value, value, value}; }
};

// The boxes of four parts side by side, and how many faces are in each.
struct alignas(64) BoxGroup {
    static constexpr uint32_t kSize = 4;

    float low[3][kSize] = {}, high[3][kSize] = {};
    int32_t counts[kSize] = {};
    uint32_t hasHubs = 0;  // a bit for each part

    void set(uint32_t lane, const Extent& extent, int32_t count);
};

// Between which dot products with a direction all points of a box lie: those of the corners with the least and the
// greatest. Products and sums keep the order of what is rounded, so that these bound the products of the points to the
// last bit. NaN for a box that isn't finite.
class BoxReach {
public:
    explicit BoxReach(const Point3& direction) : direction_(direction) {}

    Lanes low(const BoxGroup& boxes) const { return along(boxes.low, boxes.high); }
    Lanes high(const BoxGroup& boxes) const { return along(boxes.high, boxes.low); }

private:
    using Rows = float[3][BoxGroup::kSize];
    Lanes along(const Rows& whereUp, const Rows& whereDown) const {
        return direction_.x * lanesAt(direction_.x < 0 ? whereDown[0] : whereUp[0]) +
               direction_.y * lanesAt(direction_.y < 0 ? whereDown[1] : whereUp[1]) +
               direction_.z * lanesAt(direction_.z < 0 ? whereDown[2] : whereUp[2]);
    }

    Point3 direction_;
};

// The space between two planes across the way in which some faces look, within their box: around a part of a smooth
// surface, far less than the box. What a direction has of the slab's own is bounded by the slab, the rest by the box.
class Slab {
public:
    Slab() = default;
    // direction: about the way in which the faces look, of any length.
    explicit Slab(const Point3& direction);

    void addPoint(const Point3& p) {
        const double d = along({p.x, p.y, p.z});
        low_ = std::min(low_, d);
        high_ = std::max(high_, d);
    }

    // Afterwards it can be asked. box: of the same points.
    void finish(const Extent& box);

    // Is it worth asking beside the box?
    bool isThin() const { return isThin_; }

    // Between which dot products with a direction all points lie, computed in 32 bits.
    struct Reach {
        double low = 0, high = 0;
    };
    Reach reach(const Point3& direction) const {
        const Vector d{direction.x, direction.y, direction.z};
        const double share = along(d);  // of the slab's own direction in this one
        double middle = share * middle_, half = std::fabs(share) * halfWidth_ + kAbsoluteRounding;
        for (size_t axis = 0; axis < 3; ++axis) {
            const double rest = d[axis] - share * normal_[axis];
            middle += rest * center_[axis];
            half += std::fabs(rest) * halfSize_[axis];
        }
        return {middle - half, middle + half};
    }

private:
    using Vector = std::array<double, 3>;

    // Bound on the rounding of a 32-bit dot product, as a fraction of the sum of its terms' sizes, twice over. The
    // second covers the smallest numbers, whose products round in absolute steps.
    static constexpr double kRelativeRounding = 1e-6;
    static constexpr double kAbsoluteRounding = 1e-40;

    double along(const Vector& v) const { return v[0] * normal_[0] + v[1] * normal_[1] + v[2] * normal_[2]; }

    Vector normal_{}, center_{}, halfSize_{};  // of the box, with room for rounding
    double low_ = std::numeric_limits<double>::infinity(), high_ = -low_;
    double middle_ = 0, halfWidth_ = 0;  // of the slab, with room for rounding
    bool isThin_ = false;
};

}  // namespace marrowfen
