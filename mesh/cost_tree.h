#pragma once

#include <bit>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace marrowfen {

// Costs of numbered things, of which the cheapest is always known; the lowest number among equals. A knock-out
// tournament: a change is played out along one path to the root.
class CostTree {
public:
    static constexpr float kNever = std::numeric_limits<float>::infinity();  // the cost at the start

    explicit CostTree(size_t count) : leafCount_(std::bit_ceil(count + 1)), nodes_(2 * leafCount_) {
        for (size_t i = 0; i < leafCount_; ++i) nodes_[leafCount_ + i].number = static_cast<uint32_t>(i);
        for (size_t node = leafCount_; node-- > 1;) nodes_[node] = nodes_[2 * node];
    }

    uint32_t cheapest() const { return nodes_[1].number; }
    float lowestCost() const { return nodes_[1].cost; }

    // Not for a cost that isn't a number.
    void set(uint32_t number, float cost) {
        assert(number < leafCount_ && !std::isnan(cost));
        if (nodes_[leafCount_ + number].cost == cost) return;
        nodes_[leafCount_ + number].cost = cost;
        for (size_t node = (leafCount_ + number) / 2; node > 0; node /= 2) {
            const Entry& left = nodes_[2 * node];
            const Entry& right = nodes_[2 * node + 1];
            const Entry winner = right.cost < left.cost ? right : left;
            if (winner.number == nodes_[node].number && winner.cost == nodes_[node].cost) break;
            nodes_[node] = winner;
        }
    }

private:
    struct Entry {
        float cost = kNever;
        uint32_t number = 0;
    };

    size_t leafCount_;
    std::vector<Entry> nodes_;  // node n is the winner of 2n and 2n + 1; leaves are at the end
};

}  // namespace marrowfen
