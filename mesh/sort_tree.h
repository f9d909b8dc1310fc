#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "mesh/sort_faces.h"

namespace marrowfen {

using FaceList = std::vector<uint32_t>;

// A part of the faces, in layers that need no order within: first drawFirst, then the two children on either side of
// the plane or the faces of leafOrder, at last drawLast.
struct SortNode {
    std::vector<FaceList> drawFirst;  // in drawing order
    std::vector<FaceList> drawLast;   // in drawing order
    FaceList leafOrder;               // in drawing order; at the depth limit only
    Plane plane;                      // of the division, zero without one
    std::unique_ptr<SortNode> front;  // both or none, or the front child alone
    std::unique_ptr<SortNode> back;
};

// Divides all faces; those that cross a node's plane are split, which appends to the faces.
std::unique_ptr<SortNode> makeSortTree(SortFaces& faces);

}  // namespace marrowfen
