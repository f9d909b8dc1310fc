#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "mesh/corners.h"

namespace marrowfen {

// An edge of a face as that face goes round it: from corner `side` to the next.
struct HalfEdge {
    static constexpr int32_t kNone = -1;

    static int32_t of(uint32_t face, uint32_t side) { return static_cast<int32_t>(4 * face + side); }
    static uint32_t face(int32_t halfEdge) { return static_cast<uint32_t>(halfEdge) / 4; }
    static uint32_t side(int32_t halfEdge) { return static_cast<uint32_t>(halfEdge) % 4; }
};

// What stripping keeps of a face, together in half a cache line.
struct alignas(32) StripFace {
    Corners corners{};
    // Per side: the half-edge of the only face adjacent across it, kNone, or below that a list, see EdgeTable.
    std::array<int32_t, 3> across{HalfEdge::kNone, HalfEdge::kNone, HalfEdge::kNone};
    uint32_t book = 0;  // of Books; 0 for none

    uint32_t from(uint32_t side) const { return corners[side]; }
    uint32_t to(uint32_t side) const { return corners[side == 2 ? 0 : side + 1]; }
    uint32_t third(uint32_t side) const { return corners[side == 0 ? 2 : side - 1]; }  // the corner off that edge

    // Sides to look across: all three, but one where they are one and the same.
    uint32_t sideCount() const { return corners[0] == corners[1] && corners[1] == corners[2] ? 1 : 3; }
};

// The faces of a mesh. Their counts are asked for more often than all else, in no order, and stand by themselves.
class StripFaces {
public:
    explicit StripFaces(size_t count) : faces_(count), freeNeighbors_(count) {}

    size_t size() const { return faces_.size(); }
    StripFace& operator[](size_t face) { return faces_[face]; }
    const StripFace& operator[](size_t face) const { return faces_[face]; }

    // Faces adjacent to a free one that are not yet in a strip, without those across the edge of its book,
    // of which a twin is taken off here.
    int32_t& freeNeighbors(size_t face) { return freeNeighbors_[face]; }
    int32_t freeNeighbors(size_t face) const { return freeNeighbors_[face]; }

    bool isFree(size_t face) const { return freeNeighbors_[face] > kWaiting; }
    bool isUsed(size_t face) const { return freeNeighbors_[face] == kUsed; }
    void use(size_t face) { freeNeighbors_[face] = kUsed; }
    void wait(size_t face) { freeNeighbors_[face] = kWaiting; }  // neither free nor used

private:
    static constexpr int32_t kWaiting = INT32_MIN / 2 + 1;
    static constexpr int32_t kUsed = INT32_MIN / 2;  // stays below 0 with all that is added to counts

    std::vector<StripFace> faces_;
    std::vector<int32_t> freeNeighbors_;
};

}  // namespace marrowfen
