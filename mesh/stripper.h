#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "mesh/books.h"
#include "mesh/edge_table.h"
#include "mesh/emitted_vertices.h"
#include "mesh/mesh.h"
#include "mesh/start_finder.h"

namespace marrowfen {

// Makes triangle strips of groups of faces.
class Stripper {
public:
    // Corners are numbers below vertexCount. storage: its room is used for the indices.
    Stripper(StripFaces faces, uint32_t vertexCount, std::vector<uint32_t> storage);

    // Strips the faces from first to before end; groups ascend. kind: gives the strips their material and polyhedron.
    // False after an error; the last strip is then the one begun.
    bool stripGroup(uint32_t first, uint32_t end, const Primitive& kind);

    // Takes back the strips from one on.
    void dropStrips(size_t first);

    std::vector<Primitive> strips;
    std::string error;  // the first one; empty for none

    // Of the strips: corner numbers. Afterwards there are none.
    std::vector<uint32_t> takeIndices() { return emitted_.take(); }

private:
    // Where a face joins the strip: the edge a-b that they share, and the vertex that it adds.
    struct Joint {
        uint32_t a = 0, b = 0, added = 0;
        bool has(uint32_t vertex) const { return a == vertex || b == vertex || added == vertex; }
    };

    void startStrip();
    uint32_t pickStartFace();
    bool extendStrip();
    Joint jointAt(int32_t halfEdge) const;
    bool isLast(const Joint& joint) const;
    float scoreOf(int32_t halfEdge, const Joint& joint) const;
    bool turnFirstTriangle(const Joint& joint);
    bool swapUnlessLast(const Joint& joint);
    void takeFace(uint32_t number);
    int32_t takeFromList(int32_t halfEdge, int32_t list);
    void fail(const std::string& text);

    StripFaces faces_;
    EdgeTable edges_;
    Books books_;
    EmittedVertices emitted_;
    StartFinder starts_;
    uint32_t freeCount_ = 0;            // of the group
    bool isFirst_ = false;              // one face is in the strip
    std::array<int32_t, 3> across_{};   // per side of the face taken last: half-edge of the best free face, or none
    std::vector<uint32_t> candidates_;  // faces that were passed over in this strip
};

}  // namespace marrowfen
