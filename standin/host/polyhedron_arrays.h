#pragma once

// A polyhedron in the arrays and records that the host hands out by address.

#include <cstddef>
#include <vector>

#include "standin/host/scene.h"

namespace marrowfen::standin {

enum class FaceForm { AsWritten, Triangles };

class PolyhedronArrays {
public:
    // Triangles: a face of n corners becomes the fan (0, 1, 2), (0, 2, 3), ... in its place.
    PolyhedronArrays(const Polyhedron& polyhedron, FaceForm form);

    float* vertices() { return vertices_.data(); }
    float* normals() { return normals_.data(); }
    float* uvs() { return uvs_.data(); }  // at least one entry, (0, 0), whatever uvCount says
    void** faces() { return faces_.data(); }

    int vertexCount() const { return vertexCount_; }
    int uvCount() const { return uvCount_; }
    int faceCount() const { return static_cast<int>(faces_.size()); }

private:
    int vertexCount_ = 0;
    int uvCount_ = 0;
    std::vector<float> vertices_, normals_, uvs_;
    std::vector<std::byte> faceRecords_, cornerRecords_;
    std::vector<void*> faces_;  // into faceRecords_

    void addFaces(const Polyhedron& polyhedron, FaceForm form);
};

// One normal per vertex, pointing inward: the unit vector along the sum of (p1 - p0) × (p2 - p0) over the first three
// corners of each face that uses the vertex; (0, 0, 0) if that has no length.
std::vector<Vec3> computedNormals(const Polyhedron& polyhedron);

}  // namespace marrowfen::standin
