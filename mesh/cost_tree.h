#pragma once

#include <bit>
#include <cstdint>
#include <limits>
#include <vector>

namespace marrowfen {

// Costs of numbered things, of which the cheapest is always known; the lowest number among equals. A knock-out
// tournament: a change is played out along one path to the root.
class CostTree {
public:
    static constexpr float kNever = std::numeric_limits<float>::infinity();  // the cost at the start

    explicit CostTree(size_t count)
        : leafCount_(std::bit_ceil(count + 1)), costs_(leafCount_, kNever), winners_(2 * leafCount_) {
        for (size_t i = 0; i < leafCount_; ++i) winners_[leafCount_ + i] = static_cast<uint32_t>(i);
        for (size_t node = leafCount_; node-- > 1;) winners_[node] = winners_[2 * node];
    }

    uint32_t cheapest() const { return winners_[1]; }
    float cost(uint32_t number) const { return costs_[number]; }

    // Not for a cost that isn't a number.
    void set(uint32_t number, float cost) {
        costs_[number] = cost;
        for (size_t node = (leafCount_ + number) / 2; node > 0; node /= 2) {
            const uint32_t left = winners_[2 * node], right = winners_[2 * node + 1];
            const uint32_t winner = costs_[right] < costs_[left] ? right : left;
            if (winner == winners_[node] && winner != number) break;  // nothing changes from here on
            winners_[node] = winner;
        }
    }

private:
    size_t leafCount_;
    std::vector<float> costs_;
    std::vector<uint32_t> winners_;  // node n plays the winners of 2n and 2n + 1; leaves are at the end
};

}  // namespace marrowfen
