#pragma once

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <vector>

#include "ground/math.h"
#include "mesh/corners.h"

namespace marrowfen {

// The lists of a vertex while a mesh is decimated, by their numbers in one pool: vertices that share a face with it,
// each once, and its faces.
inline uint32_t neighborsOf(uint32_t vertex) { return 2 * vertex; }
inline uint32_t facesOf(uint32_t vertex) { return 2 * vertex + 1; }

// A vertex while a mesh is decimated.
struct Site {
    Point3 position;
    uint32_t slot = 0;  // its position among the neighbours of the vertex looked at, if it is one
};

// The faces while a mesh is decimated, with their normals, which are computed when they are first asked for after a
// face has moved: where collapses cost nothing, most never are.
class FaceTable {
public:
    // Half of a cache line.
    struct alignas(32) Face {
        Point3 normal;
        uint32_t isTurned = 1;  // since the normal was computed
        Corners corners;
    };

    // The sites must outlive this.
    FaceTable(const std::vector<Site>& sites, size_t faceCount) : sites_(sites), faces_(faceCount) {}

    size_t size() const { return faces_.size(); }
    const Corners& corners(uint32_t face) const { return faces_[face].corners; }
    bool isGone(uint32_t face) const { return faces_[face].corners[0] == kGone; }

    void setCorners(uint32_t face, const Corners& corners) {
        faces_[face].corners = corners;
        faces_[face].isTurned = 1;
    }

    // The first corner that is at one vertex goes to another.
    void moveCorner(uint32_t face, uint32_t from, uint32_t onto) {
        Corners& corners = faces_[face].corners;
        assert(hasCorner(corners, from));
        corners[findCorner(corners, from)] = onto;
        faces_[face].isTurned = 1;
    }

    void remove(uint32_t face) { faces_[face].corners = {kGone, kGone, kGone}; }

    // Of length 1, or 0 for a face without a direction; which of the two ways it points doesn't matter.
    const Point3& normal(uint32_t face) { return withNormal(face).normal; }

    const Face& withNormal(uint32_t face) {
        Face& f = faces_[face];
        if (f.isTurned != 0) computeNormal(f);
        return f;
    }

    void fetch(uint32_t face) const { __builtin_prefetch(&faces_[face]); }

private:
    static constexpr uint32_t kGone = UINT32_MAX;

    [[gnu::noinline]] void computeNormal(Face& f) const {
        const auto& [a, b, c] = f.corners;
        const Point3 &pa = sites_[a].position, &pb = sites_[b].position, &pc = sites_[c].position;
        f.normal = normalized(cross(pc - pb, pb - pa));
        f.isTurned = 0;
    }

    const std::vector<Site>& sites_;
    std::vector<Face> faces_;
};

}  // namespace marrowfen
