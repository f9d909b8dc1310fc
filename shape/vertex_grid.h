#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace marrowfen {

// Positions and texture coordinates closer than this on every axis count as the same.
inline constexpr float kVertexTolerance = 5e-05F;
static_assert(std::bit_cast<uint32_t>(kVertexTolerance) == 0x3851B717);

// False for a NaN, and for two infinities, whose difference isn't a number.
inline bool isWithinTolerance(float a, float b) { return std::fabs(a - b) < kVertexTolerance; }

// Finds the items whose coordinates are all within the tolerance of given ones. Items are numbered in the order in
// which they are added; those of another salt are never found.
//
// Space is cut into cells far wider than the tolerance, so that a search looks into one cell most of the time and into
// two an axis at worst. Cells are spread over buckets by their hash; each bucket is a list from the last item to the
// first. Cell numbers are doubles and exact: no coordinate is too large for them. From 512 on, neighbouring floats are
// further apart than the tolerance, so there only identical coordinates can be near and their own cell is enough.
template <size_t Axes>
class VertexGrid {
public:
    using Coordinates = std::array<float, Axes>;

    explicit VertexGrid(size_t expectedItems) : first_(std::bit_ceil(expectedItems + 1), kNone) {
        items_.reserve(expectedItems);
    }

    void add(const Coordinates& at, uint32_t salt = 0) {
        assert(items_.size() < kNone);
        Item item{at, kNone, kNone, salt};
        if (isFinite(at)) {
            item.bucket = bucketOf(at, salt);
            item.next = first_[item.bucket];
            first_[item.bucket] = static_cast<uint32_t>(items_.size());
        }
        items_.push_back(item);
    }

    void removeLast() {
        assert(!items_.empty());
        const Item& last = items_.back();
        assert(last.bucket == kNone || first_[last.bucket] == items_.size() - 1);
        if (last.bucket != kNone) first_[last.bucket] = last.next;
        items_.pop_back();
    }

    size_t size() const { return items_.size(); }

    static constexpr size_t kNotFound = SIZE_MAX;

    // The last item at exactly these coordinates.
    size_t findSame(const Coordinates& at, uint32_t salt) const {
        if (!isFinite(at)) return kNotFound;
        for (uint32_t i = first_[bucketOf(at, salt)]; i != kNone; i = items_[i].next) {
            if (items_[i].salt == salt && items_[i].at == at) return i;
        }
        return kNotFound;
    }

    // Calls visit(item) once for each item near the coordinates, bucket by bucket, in each from the last to the first
    // until visit returns false.
    template <class Visit>
    void visitNear(const Coordinates& at, uint32_t salt, Visit visit) const {
        if (!isFinite(at)) return;
        Buckets buckets;
        for (const uint32_t bucket : bucketsAround(at, salt, buckets)) visitBucket(bucket, at, salt, visit);
    }

private:
    static constexpr uint32_t kNone = UINT32_MAX;
    static constexpr double kCellsPerUnit = 2048;  // a power of two keeps cell numbers exact
    static_assert(2 * kVertexTolerance * kCellsPerUnit < 1);

    using Buckets = std::array<uint32_t, size_t{1} << Axes>;

    struct Item {
        Coordinates at;
        uint32_t next;    // in its bucket
        uint32_t bucket;  // kNone when a coordinate isn't finite: nothing is near it
        uint32_t salt;
    };

    static bool isFinite(const Coordinates& at) {
        for (const float c : at) {
            if (!std::isfinite(c)) return false;
        }
        return true;
    }

    // The finalizer of splitmix64 (Steele, Lea and Flood 2014).
    static uint64_t mixed(uint64_t bits) {
        bits = (bits ^ bits >> 30) * 0xBF58476D1CE4E5B9;
        bits = (bits ^ bits >> 27) * 0x94D049BB133111EB;
        return bits ^ bits >> 31;
    }

    static uint64_t hashAlongAxis(double coordinate, size_t axis) {
        // Round coordinates stand in the middle of a cell, where a search needs no other. (No cell is -0.)
        const double cell = std::floor(coordinate * kCellsPerUnit + 0.5) + 0.0;
        return mixed(std::bit_cast<uint64_t>(cell) + axis);
    }

    uint32_t bucketOf(uint64_t sumOfHashes) const {
        return static_cast<uint32_t>(mixed(sumOfHashes) & (first_.size() - 1));
    }

    uint32_t bucketOf(const Coordinates& at, uint32_t salt) const {
        uint64_t sum = salt;
        for (size_t axis = 0; axis < Axes; ++axis) sum += hashAlongAxis(at[axis], axis);
        return bucketOf(sum);
    }

    // The buckets of all cells that the surroundings touch, each once although cells may share one.
    std::span<const uint32_t> bucketsAround(const Coordinates& at, uint32_t salt, Buckets& buckets) const {
        std::array<uint64_t, size_t{1} << Axes> sums{salt};
        size_t cells = 1;
        for (size_t axis = 0; axis < Axes; ++axis) {
            const double center = at[axis];
            const uint64_t low = hashAlongAxis(center - kVertexTolerance, axis);
            const uint64_t high = hashAlongAxis(center + kVertexTolerance, axis);
            for (size_t i = 0; i < cells; ++i) {
                sums[cells + i] = sums[i] + high;
                sums[i] += low;
            }
            if (low != high) cells *= 2;
        }

        size_t count = 0;
        for (size_t i = 0; i < cells; ++i) {
            const uint32_t bucket = bucketOf(sums[i]);
            const auto end = buckets.begin() + static_cast<std::ptrdiff_t>(count);
            if (std::find(buckets.begin(), end, bucket) == end) buckets[count++] = bucket;
        }
        assert(1 <= count && count <= cells && cells <= buckets.size());
        return {buckets.data(), count};
    }

    template <class Visit>
    void visitBucket(uint32_t bucket, const Coordinates& at, uint32_t salt, Visit& visit) const {
        for (uint32_t i = first_[bucket]; i != kNone; i = items_[i].next) {
            const Item& item = items_[i];
            if (item.salt == salt && isNear(item.at, at) && !visit(static_cast<size_t>(i))) return;
        }
    }

    static bool isNear(const Coordinates& a, const Coordinates& b) {
        for (size_t axis = 0; axis < Axes; ++axis) {
            if (!isWithinTolerance(a[axis], b[axis])) return false;
        }
        return true;
    }

    std::vector<uint32_t> first_;  // last item of each bucket
    std::vector<Item> items_;
};

}  // namespace marrowfen
