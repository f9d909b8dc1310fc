#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "mesh/face_adjacency.h"
#include "mesh/face_queue.h"
#include "mesh/mesh.h"

namespace marrowfen {

// Makes triangle strips of the faces of one group. Run once.
class Stripper {
public:
    // Corners are numbers below vertexCount. kind: gives the strips their material and polyhedron.
    Stripper(std::vector<Corners> faces, uint32_t vertexCount, const Primitive& kind);

    void run();

    std::vector<Primitive> primitives;  // one per strip; after an error the last one is the strip begun
    std::vector<uint32_t> indices;      // corner numbers
    std::string error;                  // the first one; empty for none

private:
    static constexpr int32_t kNone = -1;
    static constexpr uint32_t kAnyThird = UINT32_MAX;
    static constexpr int32_t kUsedScore = -1;
    static constexpr int32_t kUnknownScore = -2;

    // A face turned so that the vertex that it adds to the strip comes last: the shared edge is a-b.
    struct Oriented {
        uint32_t a = 0, b = 0, added = 0;
    };

    // The best of the faces considered so far.
    struct StartFace {
        int32_t face = kNone;
        int32_t score = 0;
    };

    bool startStrip();
    int32_t pickStartFace();
    int32_t bestScoredFace();
    void findBestAt(uint32_t vertex);
    static bool isBetter(const StartFace& a, const StartFace& b);
    int32_t scoreOf(uint32_t face) const;
    void consider(uint32_t face, StartFace& best) const;
    void considerBestOf(FaceQueue& queue, StartFace& best) const;
    void considerHubs(const std::vector<uint32_t>& hubs, StartFace& best);
    FaceQueue& facesOfHub(uint32_t hub);
    FaceQueue& facesOfEdge(uint32_t from, uint32_t to, uint32_t third);

    bool extendStrip();
    bool orient(uint32_t face, Oriented& oriented);
    bool isLastEdge(const Oriented& oriented) const;
    float score(uint32_t face, const Oriented& oriented) const;
    bool joinFirstTriangle(const Oriented& oriented);
    bool join(const Oriented& oriented);
    void takeFace(uint32_t face, int assertion);

    void emit(uint32_t vertex);
    Corners newest() const { return {indices.end()[-3], indices.end()[-2], indices.end()[-1]}; }
    int64_t oldestCached() const;
    bool isCached(uint32_t vertex) const { return lastEmitted_[vertex] >= oldestCached(); }
    void checkNewestAreCornersOf(uint32_t face);
    void checkAllTaken();
    void fail(const std::string& text);
    void failAssertion(int number);

    // Faces of an edge that are looked at one by one. With fewer, looking costs less than keeping them in order.
    static constexpr size_t kMostPerEdge = 2048;

    const std::vector<Corners> faces_;
    const FaceAdjacency adjacency_;
    Primitive stripKind_;                 // an empty strip
    std::vector<uint8_t> used_;           // per face
    std::vector<int32_t> neighborCount_;  // per free face: free faces adjacent to it
    size_t freeCount_;
    std::vector<int64_t> lastEmitted_;  // per vertex: its last position in indices
    bool hubCameIn_ = false;            // since a start was last looked for
    std::vector<StartFace> bestAt_;     // per vertex lately emitted: its best free face when that was last looked for
    std::vector<uint32_t> cached_, hubs_;  // vertices lately emitted, while a start is looked for
    std::array<int32_t, 3> across_{};      // best free face across each edge of the face taken last
    std::vector<uint32_t> candidates_;     // faces that were passed over in this strip
    FaceQueue allFaces_;
    std::map<uint32_t, FaceQueue> hubFaces_;                  // made when a hub is first looked at
    std::map<std::array<uint32_t, 3>, FaceQueue> edgeFaces_;  // the same for edges with many faces, by third corner
};

}  // namespace marrowfen
