#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "mesh/sort_faces.h"

namespace marrowfen {

struct SideCounts {
    int32_t front = 0, behind = 0, spanning = 0;
};

// Finds and counts faces by the side of a plane on which they lie, with the results of sideOf. Neighbours stand
// together in blocks, and blocks in a tree: a part of it whose bounding box is clear of the plane is answered at once,
// in the other blocks the faces are compared side by side, which the compiler turns into vector instructions.
class FaceBlocks {
public:
    FaceBlocks(const SortFaces& faces, const std::vector<uint32_t>& members);

    static constexpr uint32_t kNone = UINT32_MAX;

    // The first member from the step on that has a vertex in the half space, another than the one from whose place the
    // steps lead away; kNone when there is none. The step, 0 at first, moves there. Near members come early: they are
    // removed last where layer after layer goes from the outside, so that they serve longest as an answer.
    uint32_t findIn(const HalfSpace& halfSpace, uint32_t from, uint32_t& step) const;

    // Takes a member out of later searches, not out of the counts.
    void remove(uint32_t face);

    // Where the members lie from the plane of one of them; that one isn't counted. Stops counting when more than
    // mostSpanning span the plane.
    SideCounts countSides(uint32_t planeOf, int32_t mostSpanning) const;

private:
    static constexpr uint32_t kSize = 16;
    static constexpr uint32_t kBranches = 4;  // of the tree; both are powers of two, for findIn's steps
    static constexpr uint32_t kMostHubs = 4;

    struct Block {
        std::array<std::array<float, kSize>, 9> coordinates;  // x of all first corners, y, z, x of all second, ...
        std::array<uint32_t, kSize> face;
        std::array<uint32_t, kSize> isPresent{};
        uint32_t count = 0;
    };

    // What bounds the faces of a part of the tree. Vertices of many faces stand for themselves: the box around the
    // others doesn't reach to them, and each face has one in it.
    struct Bounds {
        std::array<double, 3> center{}, halfSize{};  // of the box, with room for rounding; NaN where it isn't finite
        std::array<uint32_t, kMostHubs> hubs{};      // vertices
        uint32_t hubCount = 0;
    };
    struct Node {
        Bounds bounds;
        int32_t count = 0;          // of faces
        uint32_t presentCount = 0;  // of those not removed
    };

    using Flags = std::array<uint32_t, kSize>;

    enum class Overlap { None, Some, All };

    struct Extent;
    // The normal of a plane, and the sizes of its components.
    struct Direction {
        explicit Direction(const Point3& n);
        std::array<double, 3> normal, sizes;
    };

    // Between which dot products with a direction a box lies; NaN for a box that isn't finite.
    struct Reach {
        Reach(const Bounds& bounds, const Direction& direction);
        double low = 0, high = 0;
    };

    bool holdsHub(const Bounds& bounds, const HalfSpace& halfSpace) const;
    Overlap overlapOf(const Bounds& bounds, const HalfSpace& halfSpace, const Direction& direction) const;
    bool countClear(const Node& node, const Plane& plane, const Direction& direction, SideCounts& counts) const;
    static Flags facesIn(const Block& block, const HalfSpace& halfSpace);
    static void addFace(Block& block, const SortFaces& faces, uint32_t face);
    Extent extentOf(const Block& block, const std::vector<uint32_t>& useCounts) const;
    void makeTree(const std::vector<uint32_t>& useCounts);
    static void countInBlock(const Block& block, const Plane& plane, SideCounts& counts);
    uint32_t findInBlock(const HalfSpace& halfSpace, bool all, uint32_t from, uint32_t& step) const;

    const SortFaces& faces_;
    std::vector<Block> blocks_;
    std::vector<std::vector<Node>> levels_;  // a node a block, then one for each few of the level below, up to one
    std::vector<uint32_t> placeOf_;          // per face of faces_
};

}  // namespace marrowfen
