#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "mesh/face_bounds.h"
#include "mesh/sort_faces.h"

namespace marrowfen {

struct SideCounts {
    int32_t front = 0, behind = 0, spanning = 0;
};

// Finds and counts faces by the side of a plane on which they lie, with the results of sideOf. Neighbours stand
// together in blocks, and blocks in a tree: a part of it whose bounds are clear of the plane is answered at once, in
// the other blocks the faces are compared side by side.
class FaceBlocks {
public:
    FaceBlocks(const SortFaces& faces, const std::vector<uint32_t>& members);

    static constexpr uint32_t kNone = UINT32_MAX;
    static constexpr uint32_t kSize = 16;  // faces of a block

    // The first member from the step on that has a vertex in the half space, another than the one from whose place the
    // steps lead away; kNone when there is none. The step, 0 at first, moves there. Near members come early: they are
    // removed last where layer after layer goes from the outside, so that they serve longest as an answer.
    uint32_t findIn(const HalfSpace& halfSpace, uint32_t from, uint32_t& step) const;

    // Later searches and counts don't find the member.
    void remove(uint32_t face);

    // Where the members lie from the plane of one of them; that one isn't counted. Stops counting when more than
    // mostSpanning span the plane.
    SideCounts countSides(uint32_t planeOf, int32_t mostSpanning) const;

private:
    static constexpr uint32_t kBranches = BoxGroup::kSize;  // of the tree; both are powers of two, for findIn's steps

    struct alignas(64) Block {
        float coordinates[9][kSize];  // x of all first corners, y, z, x of all second, ...; NaN where no face is
        uint32_t face[kSize];
        uint32_t count = 0;
    };

    using Hubs = std::array<uint32_t, Extent::kMostHubs>;  // vertices, then kNone

    // The parts of one size: a part a block, then one for each group of the level below, up to one group.
    struct Level {
        std::vector<BoxGroup> groups;
        std::vector<Hubs> hubs;  // a part; none at all where no part has any
    };

    struct Search;
    struct Count;

    static void addFace(Block& block, const SortFaces& faces, uint32_t face);
    Extent extentOf(const Block& block, const std::vector<uint32_t>& useCounts) const;
    Slab slabOf(const Block& block, const Extent& extent) const;
    Level levelOf(const std::vector<Extent>& extents, const std::vector<int32_t>& counts) const;
    void makeTree(const std::vector<uint32_t>& useCounts);

    bool holdsHub(const Level& level, size_t part, const HalfSpace& halfSpace) const;
    uint32_t partsIn(const Search& search, const Level& level, size_t group) const;
    uint32_t stepInBlock(const Search& search, uint32_t step) const;
    uint32_t stepInGroup(const Search& search, size_t level, uint32_t step) const;
    void countInBlock(uint32_t number, Count& count) const;
    void countInGroup(size_t level, size_t group, Count& count) const;

    const SortFaces& faces_;
    std::vector<Block> blocks_;
    std::vector<Slab> slabs_;  // one per block
    std::vector<Level> levels_;
    std::vector<uint32_t> placeOf_;  // per face of faces_
};

}  // namespace marrowfen
