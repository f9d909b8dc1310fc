#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "mesh/collapse_finder.h"
#include "mesh/face_table.h"
#include "mesh/list_pool.h"

namespace marrowfen {

// Bounds below which no collapse of a hub, a vertex with many faces, can cost. While a hub's bound is above the
// cheapest collapse of all, the hub's own needn't be found again when a few of its many faces change.
//
// A hub's curvatures are bounded from below by what a few of its faces, the witnesses, say about them. Where the hub
// lies on a border, a neighbour that shares exactly one face with it shows that the lengths alone count.
class HubBounds {
public:
    static constexpr size_t kFewestFaces = 64;

    // The tables must outlive this and may change.
    HubBounds(const std::vector<Site>& sites, FaceTable& faces, const ListPool& lists)
        : sites_(sites), faces_(faces), lists_(lists), boundOf_(sites.size()) {}

    bool isHub(uint32_t vertex) const { return isLarge(vertex); }

    // Starts to watch a hub whose cheapest collapse has just been found.
    void watch(uint32_t hub, const CollapseFinder::Collapse& cheapest);

    void forget(uint32_t vertex) {
        if (!hubs_.empty()) boundOf_[vertex] = 0;
    }

    // To be called when the face was moved or turned, for each of its corners, once all lists and normals are right
    // again; no call is needed for a face that is gone.
    void faceChanged(uint32_t face) {
        if (hubs_.empty()) return;
        const auto& [a, b, c] = faces_.corners(face);
        if ((boundOf_[a] | boundOf_[b] | boundOf_[c]) != 0) enterBounds(faces_.corners(face));
    }

    // No collapse of the vertex costs less. 0 where nothing is known.
    float boundOf(uint32_t vertex);

private:
    static constexpr size_t kWitnesses = 8;

    // No collapse of the hub onto the neighbour costs less.
    struct Bound {
        float bound = 0;
        uint32_t neighbor = 0;
    };
    static bool isDearer(const Bound& a, const Bound& b) { return a.bound > b.bound; }

    struct Hub {
        std::vector<Bound> bounds;  // a heap, the lowest first; also old ones, and of vertices that were neighbours
        uint32_t border = CollapseFinder::kNone;  // shares one face with the hub
        std::array<uint32_t, kWitnesses> witnesses{};
        std::array<Point3, kWitnesses> normals{};  // of the witnesses when they were chosen
    };

    bool isLarge(uint32_t vertex) const { return lists_.size(facesOf(vertex)) >= kFewestFaces; }
    void enterBounds(const Corners& corners);
    void pickWitnesses(uint32_t vertex, Hub& hub);
    bool holds(uint32_t vertex, const Hub& hub);
    float boundOnto(uint32_t vertex, uint32_t neighbor, const Hub& hub);

    const std::vector<Site>& sites_;
    FaceTable& faces_;
    const ListPool& lists_;
    std::vector<uint32_t> boundOf_;  // per vertex: its place in hubs_ and 1 more, 0 for one that isn't watched
    std::vector<Hub> hubs_;
};

}  // namespace marrowfen
