#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "mesh/collapse_finder.h"
#include "mesh/cost_tree.h"
#include "mesh/fetch_ahead.h"
#include "mesh/hub_bounds.h"
#include "mesh/hub_runs.h"
#include "mesh/list_pool.h"
#include "mesh/mesh.h"
#include "mesh/vertex_state.h"

namespace marrowfen {

// Collapses the vertices of a mesh of single triangles, the cheapest first.
class Decimator {
public:
    // The mesh must outlive this. Its corners are numbers of its vertices.
    explicit Decimator(const Mesh& mesh);

    // Collapses until no more than this many faces are left, or no vertex has a collapse of finite cost. Later runs go
    // on from there.
    void run(int32_t targetCount);

    MeshFaces faces() const;  // those left, in their first order

private:
    void addFace(uint32_t face, const Corners& corners);
    void connectCorners(const Corners& c);
    void connectMoved(const Corners& c, uint32_t moved);
    void markNeighbors(uint32_t vertex);
    void connectMarked(const Corners& c, uint32_t from, uint32_t onto);
    bool areNeighbors(uint32_t a, uint32_t b) const;
    bool shareFace(uint32_t a, uint32_t b) const;
    void partUnlessSharingFace(uint32_t a, uint32_t b);

    void touch(uint32_t vertex, uint32_t from, uint32_t onto);
    bool touchOnBorder(uint32_t vertex, uint32_t from, uint32_t onto);
    void setBound(uint32_t vertex, float bound);
    void findCollapse(uint32_t vertex);
    uint32_t findCheapest();
    void collapse(uint32_t from, uint32_t onto);
    void destroyCommonFaces(uint32_t from, uint32_t onto);
    void moveFaces(uint32_t from, uint32_t onto);
    void destroyFace(uint32_t face, uint32_t from);
    void destroyVertex(uint32_t vertex, uint32_t onto);

    static constexpr uint32_t kNone = CollapseFinder::kNone;

    const std::vector<Primitive>& primitives_;  // per face, gone ones too: material and polyhedron
    std::vector<Site> sites_;                   // per vertex
    FaceTable faces_;
    int32_t faceCount_;
    ListPool lists_;                   // per vertex: its neighbours and its faces
    std::vector<VertexState> states_;  // per vertex, and for the padding of costs_
    CostTree costs_;                   // per vertex
    CollapseFinder finder_;
    FetchAhead fetchAhead_;
    HubBounds hubBounds_;
    HubRuns hubRuns_;
    std::vector<uint32_t> touched_;  // neighbours of the vertex that collapses
    std::vector<uint32_t> moved_;    // its faces that go on with another vertex
    uint32_t isNeighbor_ = 2;        // the mark of one that was its neighbour before
    uint32_t hasJoined_ = 3;         // of one that has become its neighbour and is no longer the other's
    std::vector<uint32_t> neighborScratch_, faceScratch_;
};

}  // namespace marrowfen
