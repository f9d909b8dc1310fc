#include "mesh/face_copies.h"

#include <algorithm>
#include <cassert>
#include <tuple>

namespace marrowfen {

struct FaceCopies::Candidate {
    Corners corners{};         // the lowest first
    uint32_t degenerates = 0;  // before the face
    Copy copy;

    bool isCopyOf(const Candidate& other) const { return corners == other.corners && degenerates == other.degenerates; }
    bool operator<(const Candidate& other) const {
        return std::tie(corners, degenerates, copy.face) < std::tie(other.corners, other.degenerates, other.copy.face);
    }
};

void FaceCopies::clear() {
    groupOf_.clear();
    groups_.clear();
    copies_.clear();
}

void FaceCopies::find(const std::vector<uint32_t>& faces, const std::vector<uint32_t>& degenerates) {
    std::vector<Candidate> candidates;
    for (const uint32_t face : faces) {
        const Corners& corners = faces_[face].corners;
        assert(!hasRepeats(corners));
        const auto turn = static_cast<uint32_t>(std::min_element(corners.begin(), corners.end()) - corners.begin());
        const auto before = std::lower_bound(degenerates.begin(), degenerates.end(), face) - degenerates.begin();
        candidates.push_back({{corners[turn], corners[(turn + 1) % 3], corners[(turn + 2) % 3]},
                              static_cast<uint32_t>(before),
                              {face, turn}});
    }
    std::sort(candidates.begin(), candidates.end());

    for (size_t first = 0, end = 0; first < candidates.size(); first = end) {
        for (end = first + 1; end < candidates.size() && candidates[end].isCopyOf(candidates[first]);) ++end;
        if (end - first == 1) continue;
        if (groupOf_.empty()) groupOf_.assign(faces_.size(), kNoGroup);
        const auto start = static_cast<uint32_t>(copies_.size());
        for (size_t i = first; i < end; ++i) {
            groupOf_[candidates[i].copy.face] = static_cast<uint32_t>(groups_.size());
            copies_.push_back(candidates[i].copy);
            if (i > first) faces_.wait(candidates[i].copy.face);
        }
        groups_.push_back({start, start, static_cast<uint32_t>(copies_.size())});
    }
}

int32_t FaceCopies::currentOfGroup(int32_t halfEdge) const {
    const uint32_t number = groupOf_[HalfEdge::face(halfEdge)];
    if (number == kNoGroup) return halfEdge;
    const Group& group = groups_[number];
    assert(HalfEdge::face(halfEdge) == copies_[group.first].face);
    if (group.next == group.end) return HalfEdge::kNone;
    const Copy& copy = copies_[group.next];
    return HalfEdge::of(copy.face, (HalfEdge::side(halfEdge) + 3 - copies_[group.first].turn + copy.turn) % 3);
}

void FaceCopies::passOn(uint32_t face, int32_t freeNeighbors) {
    if (!hasCopies(face)) return;
    Group& group = groups_[groupOf_[face]];
    assert(copies_[group.next].face == face);
    const Copy& used = copies_[group.next++];
    if (group.next == group.end) return;
    const Copy& copy = copies_[group.next];
    faces_.freeNeighbors(copy.face) = freeNeighbors;
    for (uint32_t side = 0; side < 3; ++side) {
        faces_[copy.face].across[(side + copy.turn) % 3] = faces_[face].across[(side + used.turn) % 3];
    }
}

}  // namespace marrowfen
