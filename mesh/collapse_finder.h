#pragma once

#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "ground/math.h"
#include "mesh/corners.h"

namespace marrowfen {

// Finds the neighbour onto which a vertex collapses most cheaply. The cost is the length of the edge times a curvature
// from 0 to 1: how far the vertex's faces turn away from those at the edge. On a border the curvature is 1.
class CollapseFinder {
public:
    static constexpr uint32_t kNone = 0xFFFFFFFF;

    // The tables must outlive this; corners and normals may change.
    CollapseFinder(const std::vector<Point3>& positions, const std::vector<Corners>& corners,
                   const std::vector<Point3>& normals)
        : positions_(positions), corners_(corners), normals_(normals), slotOf_(positions.size()) {}

    struct Collapse {
        uint32_t target = kNone;
        float cost = std::numeric_limits<float>::infinity();
    };

    // The first neighbour among equals; none when no cost is finite. hint: a neighbour that may be the one, which saves
    // work and changes nothing.
    Collapse cheapest(uint32_t vertex, std::span<const uint32_t> neighbors, std::span<const uint32_t> faces,
                      uint32_t hint);

private:
    // Four numbers that are computed with at once. Each comes out as it would alone.
    using Lanes = float __attribute__((vector_size(16)));

    // Four normals.
    struct Block {
        static constexpr size_t kSize = 4;
        Lanes x, y, z;
    };

    // A face, by its position among the vertex's faces, and a neighbour that it uses.
    struct Side {
        uint32_t slot, face;
    };

    struct Best {
        size_t slot;
        float cost;
        bool isWorse(float otherCost, size_t otherSlot) const {
            return otherCost > cost || (otherCost == cost && otherSlot > slot);
        }
    };

    void collectNormals(std::span<const uint32_t> faces);
    void collectSides(uint32_t vertex, std::span<const uint32_t> neighbors, std::span<const uint32_t> faces);
    bool isOnBorder() const;
    void tryNeighbor(size_t slot, float length, bool onBorder, Best& best);
    float leastAlignment(size_t slot, float length, const Best& best);
    float leastAlignment(size_t slot, const Block& block) const;

    const std::vector<Point3>& positions_;
    const std::vector<Corners>& corners_;
    const std::vector<Point3>& normals_;

    // Of the vertex looked at.
    std::vector<Block> blocks_;     // normals of its faces; the last one fills up the last block
    std::vector<uint32_t> slotOf_;  // per vertex: its position among the neighbours, if it is one
    std::vector<Side> sidesByFace_;
    std::vector<uint32_t> sideEnds_;  // per neighbour: end of its part of sides_
    std::vector<uint32_t> sides_;     // positions of the faces shared with each neighbour
    size_t decidingBlock_ = 0;        // block that decided about the neighbour tried last
};

}  // namespace marrowfen
