#pragma once

#include <cstdint>
#include <vector>

#include "ground/math.h"
#include "mesh/mesh.h"

namespace marrowfen {

// Points p with dot(normal, p) < bound.
struct HalfSpace {
    Point3 normal;
    float bound = 0;

    bool holds(const Point3& p) const { return dot(normal, p) < bound; }
};

struct Plane {
    static constexpr float kTolerance = 0.0001F;  // distance up to which a vertex lies on a plane

    Point3 normal;  // of length 1, or (0, 0, 0) for a face without a direction
    float constant = 0;

    // The points clearly behind and in front of the plane. In front, a negated normal and bound give the comparison
    // dot(normal, p) > constant + tolerance to the bit.
    HalfSpace behind() const { return {normal, constant - kTolerance}; }
    HalfSpace inFront() const { return {-normal, -(constant + kTolerance)}; }
};

// Where a face lies as seen from a plane. Vertices on the plane don't count; Coplanar has no others.
enum class Side { Front, Behind, Spanning, Coplanar };

// The triangles of one frame while they are sorted, face f being primitives[f]. Splits append faces and vertices;
// nothing is ever removed.
struct SortFaces {
    std::vector<Primitive> primitives;  // single triangles
    std::vector<uint32_t> indices;
    std::vector<Point3> vertexes;
    std::vector<Point3> normals;           // one per vertex
    std::vector<Point2D> texturevertexes;  // one per vertex
    std::vector<Plane> planes;             // one per face, by addMissingPlanes()

    uint32_t faceCount() const { return static_cast<uint32_t>(primitives.size()); }
    const uint32_t* corners(uint32_t face) const { return &indices[primitives[face].firstElement]; }
    const Point3& position(uint32_t face, int corner) const { return vertexes[corners(face)[corner]]; }

    void addMissingPlanes();
};

Side sideOf(const SortFaces& faces, uint32_t face, const Plane& plane);

// Appends the two or three faces into which the plane cuts a face that spans it.
void splitFace(SortFaces& faces, uint32_t face, const Plane& plane);

}  // namespace marrowfen
