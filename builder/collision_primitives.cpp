#include "builder/collision_primitives.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

#include "ground/math.h"
#include "mesh/normal_encoding.h"

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

uint32_t segmentsOf(float detail) {
    const auto steps = static_cast<float>(kMaxSegments);
    const int32_t wanted = std::clamp(truncatedToInt32(detail * steps), kMinSegments, kMaxSegments);
    return static_cast<uint32_t>(wanted) & ~1U;
}

void addPrimitive(Mesh& mesh, std::initializer_list<uint32_t> elements) {
    mesh.primitives.push_back(
        {static_cast<uint32_t>(mesh.indices.size()), static_cast<uint32_t>(elements.size()), kPrimitiveMaterial});
    mesh.indices.insert(mesh.indices.end(), elements);
}

void addVertex(Mesh& mesh, const Point3& position, const Point2D& texture, const Point3& normal) {
    mesh.vertexes.push_back(position);
    mesh.texturevertexes.push_back(texture);
    mesh.normals.push_back(normal);
    mesh.encodedNormals.push_back(encodeNormal(normal));
}

void addCylinderVertex(Mesh& mesh, const Point3& p) {
    addVertex(mesh, p, {p.x + p.z, p.y + p.z}, normalized(p - mesh.center));
}

// The middle of the cap, then its rim.
void addRing(Mesh& mesh, float z, float radius, uint32_t segments) {
    const Point3 middle = mesh.center;
    addCylinderVertex(mesh, {middle.x, middle.y, z});
    float angle = 0;
    for (uint32_t i = 0; i < segments; ++i) {
        const auto cosine = static_cast<float>(std::cos(static_cast<double>(angle)));
        const auto sine = static_cast<float>(std::sin(static_cast<double>(angle)));
        addCylinderVertex(mesh, {middle.x + cosine * radius, middle.y + sine * radius, z});
        angle += kTwoPi / static_cast<float>(segments);
    }
}

}  // namespace

Mesh cylinderPrimitive(const Box& box, float radius, float detail) {
    Mesh mesh;
    mesh.center = centerOf(box);
    const uint32_t n = segmentsOf(detail);
    const auto next = [n](uint32_t i) { return i == n ? 1 : i + 1; };

    addRing(mesh, box.min.z, radius, n);
    for (uint32_t i = 1; i <= n; ++i) addPrimitive(mesh, {0, i, next(i)});
    const auto t = static_cast<uint32_t>(mesh.vertexes.size());
    addRing(mesh, box.max.z, radius, n);
    for (uint32_t i = 1; i <= n; ++i) addPrimitive(mesh, {t, t + next(i), t + i});
    for (uint32_t i = 1; i <= n; ++i) addPrimitive(mesh, {i, t + i, next(i), t + next(i)});

    mesh.setNumFrames(1);
    mesh.parent = -1;
    mesh.computeBounds();
    mesh.computeCenter();
    mesh.computeRadius();
    return mesh;
}

Mesh boxPrimitive(const Box& box) {
    Mesh mesh;
    mesh.bounds = box;  // they stay those of the shape
    const Point3& min = box.min;
    const Point3& max = box.max;
    // Normals point away from half the extent, which is the middle of the box only if it begins at the origin.
    const Point3 half = {(max.x - min.x) / 2, (max.y - min.y) / 2, (max.z - min.z) / 2};
    for (uint32_t k = 0; k < 8; ++k) {
        const Point3 corner = {(k & 1) != 0 ? max.x : min.x, (k & 2) != 0 ? max.y : min.y,
                               (k & 4) != 0 ? max.z : min.z};
        addVertex(mesh, corner, {0, 0}, normalized(corner - half));
    }
    addPrimitive(mesh, {0, 4, 1, 5, 3, 7, 2, 6, 0, 4});  // the sides
    addPrimitive(mesh, {6, 7, 4, 5});                    // the top
    addPrimitive(mesh, {0, 1, 2, 3});                    // the bottom

    mesh.setNumFrames(1);
    mesh.parent = -1;
    mesh.computeCenter();
    mesh.computeRadius();
    return mesh;
}

}  // namespace marrowfen
