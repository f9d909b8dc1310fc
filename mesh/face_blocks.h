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
// together in blocks: a block whose bounding box is clear of the plane is answered at once, in the others the faces are
// compared side by side, which the compiler turns into vector instructions.
class FaceBlocks {
public:
    FaceBlocks(const SortFaces& faces, const std::vector<uint32_t>& members);

    static constexpr uint32_t kNone = UINT32_MAX;

    // The first member from the place on that has a vertex in the half space, the excluded face apart; kNone when there
    // is none. The place, 0 at first, moves there.
    uint32_t findIn(const HalfSpace& halfSpace, uint32_t excluded, uint32_t& place) const;

    // Takes a member out of later searches, not out of the counts.
    void remove(uint32_t face);

    // Where the members lie from the plane of one of them; that one isn't counted. Stops counting when more than
    // mostSpanning span the plane.
    SideCounts countSides(uint32_t planeOf, int32_t mostSpanning) const;

private:
    static constexpr uint32_t kSize = 16;

    struct Block {
        std::array<std::array<float, kSize>, 9> coordinates;  // x of all first corners, y, z, x of all second, ...
        std::array<uint32_t, kSize> face;
        std::array<uint32_t, kSize> isPresent{};
        uint32_t count = 0;
        std::array<double, 3> center, halfSize, largest;  // of the bounding box; NaN where it isn't finite
    };

    using Flags = std::array<uint32_t, kSize>;

    enum class Overlap { None, Some, All };

    static Overlap overlapOf(const Block& block, const HalfSpace& halfSpace);
    static Flags facesIn(const Block& block, const HalfSpace& halfSpace);
    static void addFace(Block& block, const SortFaces& faces, uint32_t face);
    static void computeBox(Block& block);
    static void countInBlock(const Block& block, const Plane& plane, SideCounts& counts);

    const SortFaces& faces_;
    std::vector<Block> blocks_;
    std::vector<uint32_t> placeOf_;  // per face of faces_
};

}  // namespace marrowfen
