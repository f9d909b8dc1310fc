#include "mesh/sort_faces.h"

#include <cassert>
#include <cmath>

namespace marrowfen {
namespace {

// The cross product of the two shorter edges keeps most of its digits.
Plane planeThrough(const Point3& p0, const Point3& p1, const Point3& p2) {
    const Point3 e0 = p1 - p0, e1 = p2 - p1, e2 = p0 - p2;
    const float d0 = squaredLength(e0), d1 = squaredLength(e1), d2 = squaredLength(e2);
    Point3 n;
    if (d1 <= d0 && d2 <= d0) {
        n = -cross(e1, e2);
    } else if (d2 <= d1 && d0 <= d1) {
        n = -cross(e2, e0);
    } else {
        n = -cross(e0, e1);
    }
    const Point3 normal = normalized(n);
    return {normal, dot(normal, p0)};
}

// Appends the vertex at the fraction t of the way from one vertex to another.
uint32_t addVertexBetween(SortFaces& faces, uint32_t from, uint32_t to, float t) {
    assert(from < faces.vertexes.size() && to < faces.vertexes.size());
    const auto between = [&](const auto& table) { return table[from] + (table[to] - table[from]) * t; };
    faces.vertexes.push_back(between(faces.vertexes));
    faces.texturevertexes.push_back(between(faces.texturevertexes));
    faces.normals.push_back(normalized(between(faces.normals)));
    return static_cast<uint32_t>(faces.vertexes.size() - 1);
}

void addFace(SortFaces& faces, uint32_t material, uint32_t a, uint32_t b, uint32_t c) {
    faces.primitives.push_back({static_cast<uint32_t>(faces.indices.size()), 3, material, 0});
    faces.indices.insert(faces.indices.end(), {a, b, c});
}

// A triangle that starts at the corner where a cut begins: [0 1 2] -> [a b e], with the corners' distances.
struct TurnedFace {
    TurnedFace(const uint32_t* corners, const float* distances, int first)
        : a(corners[first]),
          b(corners[(first + 1) % 3]),
          e(corners[(first + 2) % 3]),
          distanceA(distances[first]),
          distanceB(distances[(first + 1) % 3]),
          distanceE(distances[(first + 2) % 3]) {}
    uint32_t a, b, e;
    float distanceA, distanceB, distanceE;
};

// Cuts off the corner a, which has no other on its side.
void splitAcrossTwoEdges(SortFaces& faces, uint32_t material, const TurnedFace& f, float constant) {
    const float t1 = (constant - f.distanceA) / (f.distanceB - f.distanceA);
    const float t2 = (constant - f.distanceA) / (f.distanceE - f.distanceA);
    const uint32_t m1 = addVertexBetween(faces, f.a, f.b, t1);
    const uint32_t m2 = addVertexBetween(faces, f.a, f.e, t2);
    addFace(faces, material, f.a, m1, m2);
    addFace(faces, material, m1, f.b, m2);
    addFace(faces, material, f.e, m2, f.b);
}

// Cuts through the corner a, which lies on the plane.
void splitAcrossOppositeEdge(SortFaces& faces, uint32_t material, const TurnedFace& f, float constant) {
    const float t = (constant - f.distanceB) / (f.distanceE - f.distanceB);
    const uint32_t m = addVertexBetween(faces, f.b, f.e, t);
    addFace(faces, material, f.a, f.b, m);
    addFace(faces, material, f.a, m, f.e);
}

}  // namespace

void SortFaces::addMissingPlanes() {
    for (auto f = static_cast<uint32_t>(planes.size()); f < faceCount(); ++f) {
        planes.push_back(planeThrough(position(f, 0), position(f, 1), position(f, 2)));
    }
    assert(planes.size() == faceCount());
}

Side sideOf(const SortFaces& faces, uint32_t face, const Plane& plane) {
    bool anyInFront = false, anyBehind = false;
    for (int corner = 0; corner < 3; ++corner) {
        anyInFront |= plane.inFront().holds(faces.position(face, corner));
        anyBehind |= plane.behind().holds(faces.position(face, corner));
    }
    if (anyInFront) return anyBehind ? Side::Spanning : Side::Front;
    return anyBehind ? Side::Behind : Side::Coplanar;
}

void splitFace(SortFaces& faces, uint32_t face, const Plane& plane) {
    assert(face < faces.faceCount());
    const uint32_t corners[] = {faces.corners(face)[0], faces.corners(face)[1], faces.corners(face)[2]};
    const uint32_t material = faces.primitives[face].material;
    float distances[3];
    int onPlane = -1;         // the first corner on the plane
    unsigned behindMask = 0;  // bit i for corner i
    for (int i = 2; i >= 0; --i) {
        distances[i] = dot(plane.normal, faces.vertexes[corners[i]]);
        if (std::fabs(distances[i] - plane.constant) < Plane::kTolerance) onPlane = i;
        if (distances[i] < plane.constant) behindMask |= 1U << i;
    }

    if (onPlane >= 0) {
        splitAcrossOppositeEdge(faces, material, {corners, distances, onPlane}, plane.constant);
        return;
    }
    constexpr int kNone = -1;
    constexpr int kLoneCorner[] = {kNone, 0, 1, 2, 2, 1, 0, kNone};  // by behindMask
    const int lone = kLoneCorner[behindMask];
    if (lone != kNone) splitAcrossTwoEdges(faces, material, {corners, distances, lone}, plane.constant);
}

}  // namespace marrowfen
