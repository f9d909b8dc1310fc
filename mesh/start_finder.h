#pragma once

#include <array>
#include <map>
#include <span>
#include <vector>

#include "mesh/edge_table.h"
#include "mesh/emitted_vertices.h"
#include "mesh/face_queue.h"

namespace marrowfen {

// Finds the face at which a strip starts: the free one with the highest score, 16 for each corner lately emitted and 1
// for each free neighbour; the lowest among equals.
class StartFinder {
public:
    // What they are made of must outlive this.
    StartFinder(const StripFaces& faces, const EdgeTable& edges, const Books& books, const EmittedVertices& emitted)
        : faces_(faces), edges_(edges), books_(books), emitted_(emitted) {}

    // The faces from first to before end are those to find starts among.
    void startGroup(uint32_t first, uint32_t end);

    // One at least must be free.
    uint32_t best();

private:
    static constexpr uint32_t kAnyThird = UINT32_MAX;

    // A face with its score as one number: the larger the better.
    using Rank = int64_t;
    static constexpr Rank kNoFace = -1;
    static uint32_t faceOf(Rank rank) { return UINT32_MAX - static_cast<uint32_t>(rank); }
    Rank rankOf(uint32_t number, int32_t lateCorners) const;
    Rank rankOf(uint32_t number) const;

    // A face at a vertex, with its two other corners: the faces themselves lie in no order.
    struct CornerAt {
        uint32_t face;
        std::array<uint32_t, 2> others;
    };

    // Of a vertex.
    struct FacesAt {
        uint32_t first = 0, count = 0;  // in cornersAt_: those that were free when last looked at; all of a hub
        uint32_t slot = 0;              // of the late vertices: where it was put last
    };

    void indexFaces();
    Rank bestOfAll() const;
    Rank bestOf(FaceQueue& queue) const;
    Rank bestAt(uint32_t vertex);
    void dropUsed(FacesAt& at);
    void fetchCornersOf(uint32_t face) const;
    Rank bestAtHubs();
    void bringInLate();
    void forgetLate();
    FaceQueue& facesOfHub(uint32_t hub);
    FaceQueue& facesOfEdge(uint32_t from, uint32_t to, uint32_t third);
    bool isHub(uint32_t vertex) const { return facesOf_[vertex].count > kHubValence; }

    // Fewer faces than these are looked at one by one, which costs less than to keep them in order: those of a group,
    // of a vertex and of an edge.
    static constexpr uint32_t kFewFaces = 64;
    static constexpr uint32_t kHubValence = 512;
    static constexpr size_t kMostPerEdge = 2048;

    const StripFaces& faces_;
    const EdgeTable& edges_;
    const Books& books_;
    const EmittedVertices& emitted_;
    uint32_t first_ = 0, end_ = 0;
    FaceQueue allFaces_;  // but for pages of books
    bool isIndexed_ = false, hasHubs_ = false;
    std::vector<FacesAt> facesOf_;     // per vertex
    std::vector<CornerAt> cornersAt_;  // by vertex
    // By position modulo their number: vertices lately emitted, kNoVertex for one that comes again later, and the best
    // face of each when that was last looked for, kNoFace for hubs.
    static constexpr uint32_t kNoVertex = UINT32_MAX;
    static constexpr size_t kSlots = EmittedVertices::kLate;
    std::array<uint32_t, kSlots> lateVertex_{};
    std::array<Rank, kSlots> bestAtLate_{};
    int32_t broughtIn_ = 0;                                   // vertices emitted before this position
    std::vector<uint32_t> hubs_;                              // lately emitted
    std::map<uint32_t, FaceQueue> hubFaces_;                  // made when a hub is first looked at
    std::map<std::array<uint32_t, 3>, FaceQueue> edgeFaces_;  // the same for edges with many faces, by third corner
};

}  // namespace marrowfen
