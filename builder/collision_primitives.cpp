#include "builder/collision_primitives.h"

#include <algorithm>
#include <cmath>

#include "mesh/normal_encoding.h"
#include "ground/coding.h"

namespace marrowfen {

namespace {

constexpr uint32_t kPrimitiveMaterial = Primitive::Strip | Primitive::Indexed | Primitive::NoMaterial;
constexpr int32_t kMinSegments = 4;
constexpr int32_t kMaxSegments = 64;
constexpr float kTwoPi = 6.28318530717958647692F;

// The centre in the form that a box is halved in for a cylinder: from its minimum.
Point3 centerOf(const Box& box) {
    return {box.min.x + (box.max.x - box.min.x) / 2, box.min.y + (box.max.y - box.min.y) / 2,
            box.min.z + (box.max.z - box.min.z) / 2};
}

}  // namespace

void CollisionPrimitive::addPrimitive(std::initializer_list<uint32_t> elements) {
    mesh_.primitives.push_back(
        {static_cast<uint32_t>(mesh_.indices.size()), static_cast<uint32_t>(elements.size()), kPrimitiveMaterial, 0});
    mesh_.indices.insert(mesh_.indices.end(), elements);
}

void CollisionPrimitive::addVertex(const Point3& position, const Point2D& texture, const Point3& normal) {
    mesh_.vertexes.push_back(position);
    mesh_.texturevertexes.push_back(texture);
    mesh_.normals.push_back(normal);
    mesh_.encodedNormals.push_back(encodeNormal(normal));
}

CylinderPrimitive::CylinderPrimitive(const Box& box, float radius, float detail) : segmentDetail_(detail) {
    mesh_.bounds = box;
    mesh_.center = centerOf(box);
    mesh_.radius = radius;
    CylinderPrimitive::generate();
}

void CylinderPrimitive::addPrimitiveVertex(const Point3& p) {
    addVertex(p, {p.x + p.z, p.y + p.z}, normalized(p - mesh_.center));
}

// The middle of the cap, then its rim.
void CylinderPrimitive::addRing(float z, uint32_t segments) {
    const Point3& middle = mesh_.center;
    addPrimitiveVertex({middle.x, middle.y, z});
    float angle = 0;
    for (uint32_t i = 0; i < segments; ++i) {
        const auto cosine = static_cast<float>(std::cos(static_cast<double>(angle)));
        const auto sine = static_cast<float>(std::sin(static_cast<double>(angle)));
        addPrimitiveVertex({middle.x + cosine * mesh_.radius, middle.y + sine * mesh_.radius, z});
        angle += kTwoPi / static_cast<float>(segments);
    }
}

void CylinderPrimitive::generate() {
    const int32_t wanted = std::clamp(truncatedToInt32(segmentDetail_ * 64), kMinSegments, kMaxSegments);
    const auto n = static_cast<uint32_t>(wanted) & ~1U;
    const auto next = [n](uint32_t i) { return i == n ? 1 : i + 1; };

    addRing(mesh_.bounds.min.z, n);
    for (uint32_t i = 1; i <= n; ++i) addPrimitive({0, i, next(i)});
    const auto t = static_cast<uint32_t>(mesh_.vertexes.size());
    addRing(mesh_.bounds.max.z, n);
    for (uint32_t i = 1; i <= n; ++i) addPrimitive({t, t + next(i), t + i});
    for (uint32_t i = 1; i <= n; ++i) addPrimitive({i, t + i, next(i), t + next(i)});

    mesh_.setNumFrames(1);
    mesh_.parent = -1;
    mesh_.computeBounds();
    mesh_.computeCenter();
    mesh_.computeRadius();
}

BoxPrimitive::BoxPrimitive(const Box& box) {
    mesh_.bounds = box;
    BoxPrimitive::generate();
}

void BoxPrimitive::generate() {
    const Point3& min = mesh_.bounds.min;
    const Point3& max = mesh_.bounds.max;
    // Normals point away from half the extent, which is the middle of the box only if it begins at the origin.
    const Point3 half = {(max.x - min.x) / 2, (max.y - min.y) / 2, (max.z - min.z) / 2};
    for (uint32_t k = 0; k < 8; ++k) {
        const Point3 corner = {(k & 1) != 0 ? max.x : min.x, (k & 2) != 0 ? max.y : min.y,
                               (k & 4) != 0 ? max.z : min.z};
        addVertex(corner, {0, 0}, normalized(corner - half));
    }
    addPrimitive({0, 4, 1, 5, 3, 7, 2, 6, 0, 4});  // the sides
    addPrimitive({6, 7, 4, 5});                    // the top
    addPrimitive({0, 1, 2, 3});                    // the bottom

    // The bounds stay those of the shape.
    mesh_.setNumFrames(1);
    mesh_.parent = -1;
    mesh_.computeCenter();
    mesh_.computeRadius();
}

}  // namespace marrowfen
