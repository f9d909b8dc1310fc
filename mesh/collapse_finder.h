#pragma once

#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "mesh/corners.h"
#include "shape/math.h"

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
    struct Best {
        size_t slot;
        float cost;
        bool isWorse(float otherCost, size_t otherSlot) const {
            return otherCost > cost || (otherCost == cost && otherSlot > slot);
        }
    };

    void collectSides(std::span<const uint32_t> neighbors, std::span<const uint32_t> faces);
    template <class Visit>
    void visitSides(std::span<const uint32_t> neighbors, std::span<const uint32_t> faces, Visit visit) const;
    bool isOnBorder() const;
    void tryNeighbor(size_t slot, float length, bool onBorder, Best& best);
    float leastAlignment(size_t slot, float length, const Best& best);
    float alignment(const Point3& normal, size_t slot) const;

    const std::vector<Point3>& positions_;
    const std::vector<Corners>& corners_;
    const std::vector<Point3>& normals_;

    // Of the vertex looked at.
    std::vector<uint32_t> slotOf_;     // per vertex: its position among the neighbours, if it is one
    std::vector<uint32_t> sideEnds_;   // per neighbour: end of its part of sides_
    std::vector<Point3> sides_;        // normals of the faces shared with each neighbour
    std::vector<Point3> faceNormals_;  // per face
    size_t mostTurned_ = 0;            // face that turned away most from the edge tried last
};

}  // namespace marrowfen
