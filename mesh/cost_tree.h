#pragma once

#include <algorithm>
#include <bit>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

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

    using Lanes = float __attribute__((vector_size(16)));
    using Bits = int32_t __attribute__((vector_size(16)));

    static Lanes lanes(const Group& group, size_t first) {
        Lanes four;
        std::memcpy(&four, group.costs + first, sizeof four);
        return four;
    }

    static float lowestOf(const Group& group) {
        const auto lower = [](const Lanes& a, const Lanes& b) { return a < b ? a : b; };
        const Lanes l = lower(lower(lanes(group, 0), lanes(group, 4)), lower(lanes(group, 8), lanes(group, 12)));
        const Lanes halves = lower(l, __builtin_shufflevector(l, l, 2, 3, 0, 1));
        return halves[1] < halves[0] ? halves[1] : halves[0];
    }

    // All places are looked at, without branches that would be guessed wrong.
    static uint32_t firstPlaceOf(float cost, const Group& group) {
        Bits found{};
        for (int32_t first = 0; first < static_cast<int32_t>(kGroupSize); first += 4) {
            found |= (lanes(group, static_cast<size_t>(first)) == cost) & (Bits{1, 2, 4, 8} << first);
        }
        found |= __builtin_shufflevector(found, found, 2, 3, 0, 1);
        return static_cast<uint32_t>(std::countr_zero(static_cast<uint32_t>(found[0] | found[1])));
    }

    std::vector<Level> levels_;  // from the costs themselves up to one group
    float lowest_ = kNever;
};

}  // namespace marrowfen
