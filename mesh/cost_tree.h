#pragma once

#include <algorithm>
#include <bit>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "mesh/lanes.h"
#include "mesh/list_pool.h"

namespace marrowfen {

// Costs of numbered things, of which the cheapest is always known; the lowest number among equals. Each level holds
// the lowest costs of the groups of the level below: a change goes up as far as it matters.
class CostTree {
public:
    static constexpr float kNever = std::numeric_limits<float>::infinity();  // the cost at the start

    explicit CostTree(size_t count) {
        do {
            count = count / kGroupSize + 1;
            levels_.emplace_back(count);
        } while (count > 1);
    }

    float lowestCost() const { return lowest_; }
    float costOf(uint32_t number) const { return levels_[0][number / kGroupSize].costs[number % kGroupSize]; }

    uint32_t cheapest() const {
        uint32_t number = 0;
        for (size_t level = levels_.size(); level-- > 0;) {
            number = number * kGroupSize + firstPlaceOf(lowest_, levels_[level][number]);
        }
        return number;
    }

    // Not for a cost that isn't a number.
    void set(uint32_t number, float cost) {
        assert(!std::isnan(cost));
        for (size_t level = 0; level < levels_.size(); ++level) {
            Group& group = levels_[level][number / kGroupSize];
            const float before = std::exchange(group.costs[number % kGroupSize], cost);
            if (before == cost) return;
            if (level + 1 == levels_.size()) {
                lowest_ = lowestOf(group);
                return;
            }
            number /= kGroupSize;
            const float lowest = levels_[level + 1][number / kGroupSize].costs[number % kGroupSize];
            if (cost < lowest) continue;
            if (before > lowest) return;
            cost = lowestOf(group);
        }
    }

private:
    static constexpr uint32_t kGroupSize = 16;

    // A cache line.
    struct Group {
        alignas(64) float costs[kGroupSize];
        Group() { std::fill_n(costs, kGroupSize, kNever); }
    };
    using Level = std::vector<Group, LineAllocator<Group>>;

    static Lanes lanes(const Group& group, size_t first) { return lanesAt(group.costs + first); }

    static float lowestOf(const Group& group) {
        return marrowfen::lowestOf(
            lower(lower(lanes(group, 0), lanes(group, 4)), lower(lanes(group, 8), lanes(group, 12))))[0];
    }

    // All places are looked at, without branches that would be guessed wrong.
    static uint32_t firstPlaceOf(float cost, const Group& group) {
        uint32_t found = 0;
        for (uint32_t first = 0; first < kGroupSize; first += 4) found |= signsOf(lanes(group, first) == cost) << first;
        return static_cast<uint32_t>(std::countr_zero(found));
    }

    std::vector<Level> levels_;  // from the costs themselves up to one group
    float lowest_ = kNever;
};

}  // namespace marrowfen
