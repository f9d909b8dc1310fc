#pragma once

#include <cstdint>
#include <vector>

#include "mesh/strip_faces.h"

namespace marrowfen {

// Faces with the same corners the same way round: copies. They have the same neighbours and are none of each other, so
// that the lowest free one stands for all, in lists and counts. The others wait until it is used.
class FaceCopies {
public:
    explicit FaceCopies(StripFaces& faces) : faces_(faces) {}

    void clear();

    // Finds the copies among faces without a corner twice. Whether such a face is adjacent to a degenerate one depends
    // on which comes first: no degenerate face stands between copies. Both lists ascend.
    void find(const std::vector<uint32_t>& faces, const std::vector<uint32_t>& degenerates);

    bool hasCopies(uint32_t face) const { return !groupOf_.empty() && groupOf_[face] != kNoGroup; }

    // How many faces the first of its copies stands for; 1 for a face without copies.
    int32_t count(uint32_t face) const {
        return hasCopies(face) ? static_cast<int32_t>(groups_[groupOf_[face]].end - groups_[groupOf_[face]].next) : 1;
    }

    // That half-edge of the copy that stands for all now; kNone when none is left.
    int32_t current(int32_t halfEdge) const { return groupOf_.empty() ? halfEdge : currentOfGroup(halfEdge); }

    // The face that stands for all now, -1 for none.
    int32_t standIn(uint32_t face) const {
        const Group& group = groups_[groupOf_[face]];
        return group.next == group.end ? -1 : static_cast<int32_t>(copies_[group.next].face);
    }

    // The face was used, which had so many free neighbours: the next copy stands for all.
    void passOn(uint32_t face, int32_t freeNeighbors);

private:
    static constexpr uint32_t kNoGroup = UINT32_MAX;

    struct Copy {
        uint32_t face = 0;
        uint32_t turn = 0;  // the place of the lowest corner
    };
    struct Group {
        uint32_t first = 0, next = 0, end = 0;  // in copies_: the first of all, the first that isn't used
    };
    struct Candidate;

    int32_t currentOfGroup(int32_t halfEdge) const;

    StripFaces& faces_;
    std::vector<uint32_t> groupOf_;  // per face; empty while there are no copies
    std::vector<Group> groups_;
    std::vector<Copy> copies_;  // group by group, ascending
};

}  // namespace marrowfen
