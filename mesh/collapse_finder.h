#pragma once

#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "ground/math.h"
#include "mesh/corners.h"
#include "mesh/face_table.h"
#include "mesh/lanes.h"

namespace marrowfen {

// The curvature of an edge whose faces are turned least away from all others by this dot product of normals: from 0 for
// the same direction to 1 for the opposite one.
float curvatureOf(float alignment);

// Finds the neighbour onto which a vertex collapses most cheaply. The cost is the length of the edge times a curvature
// from 0 to 1: how far the vertex's faces turn away from those at the edge. On a border the curvature is 1.
class CollapseFinder {
public:
    static constexpr uint32_t kNone = 0xFFFFFFFF;

    // The tables must outlive this; faces may change.
    CollapseFinder(std::vector<Site>& sites, FaceTable& faces) : sites_(sites), faces_(faces), bits_(sites.size()) {}

    struct Collapse {
        uint32_t target = kNone;
        float cost = std::numeric_limits<float>::infinity();
        uint32_t border = kNone;  // a neighbour with which it shares exactly one face, if any
    };

    // The first neighbour among equals; none when no cost is finite. hint: a neighbour that may be the one, which saves
    // work and changes nothing.
    Collapse cheapest(uint32_t vertex, std::span<const uint32_t> neighbors, std::span<const uint32_t> faces,
                      uint32_t hint);

private:
    static constexpr size_t kFew =
        16;  // faces, and neighbours, of a vertex whose dot products are all computed at once

    // Four normals.
    struct Block {
        static constexpr size_t kSize = 4;
        Lanes x, y, z;
    };

    struct Best {
        size_t slot;
        float cost;
        bool isWorse(float otherCost, size_t otherSlot) const {
            return otherCost > cost || (otherCost == cost && otherSlot > slot);
        }
    };

    float lengthTo(uint32_t vertex, uint32_t neighbor) const;
    template <size_t kBlocks>
    Collapse cheapestOfFew(uint32_t vertex, std::span<const uint32_t> neighbors, std::span<const uint32_t> faces);
    Collapse closest(uint32_t vertex, std::span<const uint32_t> neighbors, float curvature) const;
    Collapse cheapestOfMany(uint32_t vertex, std::span<const uint32_t> neighbors, std::span<const uint32_t> faces,
                            uint32_t hint);
    void collectNormals(std::span<const uint32_t> faces);
    uint32_t placeOfNormal(const Point3& normal);
    template <class Work>
    void forEachSlot(uint32_t face, const Work& work) const;
    void countSides(uint32_t vertex, std::span<const uint32_t> neighbors, std::span<const uint32_t> faces);
    void collectSides(std::span<const uint32_t> faces);
    size_t borderSlot() const;
    void tryNeighbor(uint32_t vertex, uint32_t neighbor, Best& best);
    float leastAlignment(size_t slot, float length, const Best& best);
    float leastAlignment(size_t slot, const Block& block) const;

    std::vector<Site>& sites_;  // per vertex; the slots are changed
    FaceTable& faces_;

    std::vector<uint16_t> bits_;  // per vertex, in a cache line with many: its place among a few neighbours

    // Of the vertex looked at.
    std::vector<Point3> normals_;      // of its faces, equal ones once where that is seen at once
    std::vector<uint32_t> normalsOf_;  // per face: position of its normal
    std::vector<Block> blocks_;        // the normals; the last one fills up the last block
    std::vector<uint32_t> sideEnds_;   // per neighbour: how many faces it shares; then the end of its part of sides_
    std::vector<uint32_t> sides_;      // positions of the normals of the faces shared with each neighbour
    size_t decidingBlock_ = 0;         // block that decided about the neighbour tried last
};

}  // namespace marrowfen
