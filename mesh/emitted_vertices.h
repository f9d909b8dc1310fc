#pragma once

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <utility>
#include <vector>

#include "mesh/corners.h"

namespace marrowfen {

// The vertices of the strips made so far. The last 16 of a group are those lately emitted; a vertex's last position
// tells whether it is one of them.
class EmittedVertices {
public:
    // storage: its room is used for the list, which must not grow beyond capacity.
    EmittedVertices(std::vector<uint32_t> storage, size_t capacity, uint32_t vertexCount)
        : list_(std::move(storage)), lastPosition_(vertexCount, -1) {
        list_.resize(std::max(list_.size(), capacity));
    }

    void startGroup() { groupStart_ = size_; }

    void emit(uint32_t vertex) {
        assert(size_ < std::ssize(list_));
        lastPosition_[vertex] = size_;
        list_[static_cast<size_t>(size_++)] = vertex;
    }

    // Takes back the last n.
    void drop(int32_t n) { size_ -= n; }

    int32_t size() const { return size_; }
    uint32_t fromEnd(int32_t n) const { return list_[static_cast<size_t>(size_ - n)]; }  // 1: the last
    Corners newest() const { return {fromEnd(3), fromEnd(2), fromEnd(1)}; }

    int32_t oldestLate() const { return std::max(groupStart_, size_ - kLate); }
    bool isLate(uint32_t vertex) const { return lastPosition_[vertex] >= oldestLate(); }
    bool isLastAt(int32_t position) const { return lastPosition_[at(position)] == position; }
    uint32_t at(int32_t position) const { return list_[static_cast<size_t>(position)]; }
    int32_t lastPosition(uint32_t vertex) const { return lastPosition_[vertex]; }

    std::vector<uint32_t> take() {
        list_.resize(static_cast<size_t>(size_));
        return std::move(list_);
    }

    static constexpr int32_t kLate = 16;  // emitted vertices that count as lately emitted

private:
    std::vector<uint32_t> list_;
    int32_t size_ = 0;
    int32_t groupStart_ = 0;
    std::vector<int32_t> lastPosition_;  // per vertex; -1 for none
};

}  // namespace marrowfen
