#include "shape/shape_questions.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "ground/ascii.h"
#include "ground/at.h"
#include "shape/drawn_triangles.h"

namespace marrowfen {

namespace {

constexpr uint64_t kMostSteps = 50'000'000;  // of stepsToDraw, thousands of times what models have

}  // namespace

LevelKind levelKind(const Shape& shape, const Shape::DetailLevel& level) {
    if (!hasIndex(shape.names, level.name)) return LevelKind::Visible;
    const std::string& name = at(shape.names, level.name);
    if (beginsWithIgnoringCase(name, "Collision")) return LevelKind::Collision;
    return beginsWithIgnoringCase(name, "LOS") ? LevelKind::LineOfSight : LevelKind::Visible;
}

std::vector<LevelMesh> meshesOf(const Shape& shape, const Shape::DetailLevel& level) {
    std::vector<LevelMesh> found;
    if (!hasIndex(shape.subshapes, level.subshape)) return found;
    const Shape::SubShape& subshape = at(shape.subshapes, level.subshape);
    const int64_t end = std::min(int64_t{subshape.firstObject} + subshape.numObjects, int64_t{count32(shape.objects)});
    for (int64_t i = std::max(subshape.firstObject, 0); i < end; ++i) {
        const Shape::Object& object = at(shape.objects, i);
        const int64_t mesh = int64_t{object.firstMesh} + level.objectDetail;
        if (level.objectDetail < 0 || level.objectDetail >= object.numMeshes || !hasIndex(shape.meshes, mesh)) continue;
        if (at(shape.meshes, mesh).type == MeshType::Null) continue;
        found.push_back({static_cast<int32_t>(i), static_cast<int32_t>(mesh)});
    }
    return found;
}

bool drawsAnything(const Shape& shape, const Shape::DetailLevel& level) {
    const std::vector<LevelMesh> meshes = meshesOf(shape, level);
    return std::any_of(meshes.begin(), meshes.end(),
                       [&](const LevelMesh& part) { return !at(shape.meshes, part.mesh).primitives.empty(); });
}

std::vector<size_t> levelsThatNeverShow(const Shape& shape) {
    std::vector<size_t> hidden;
    float taken = INFINITY;
    for (size_t i = 0; i < shape.detailLevels.size(); ++i) {
        const Shape::DetailLevel& level = shape.detailLevels[i];
        if (levelKind(shape, level) != LevelKind::Visible) continue;
        if (level.size >= 0 && level.size < taken) {
            taken = level.size;
        } else {
            hidden.push_back(i);
        }
    }
    return hidden;
}

float reachOf(const Box& bounds) {
    const auto [min, max] = bounds;
    if (!isFinite(min) || !isFinite(max)) return std::numeric_limits<float>::infinity();
    return std::max({-min.x, -min.y, -min.z, max.x, max.y, max.z});
}

bool isFinite(const Mesh& mesh) {
    const auto areFinite = [](const std::vector<Point3>& points) {
        return std::all_of(points.begin(), points.end(), [](const Point3& point) { return isFinite(point); });
    };
    return areFinite(mesh.vertexes) && areFinite(mesh.normals);
}

bool drawsWithoutEnd(const Shape& shape) {
    uint64_t steps = 0;
    for (const Mesh& mesh : shape.meshes) steps += stepsToDraw(mesh);
    return steps > kMostSteps;
}

std::vector<int64_t> trianglesPerMesh(const Shape& shape) {
    std::vector<int64_t> counts(shape.meshes.size());
    if (drawsWithoutEnd(shape)) return counts;
    std::transform(shape.meshes.begin(), shape.meshes.end(), counts.begin(),
                   [](const Mesh& mesh) { return countTriangles(mesh); });
    return counts;
}

int64_t countTriangles(const Shape& shape, const Shape::DetailLevel& level, const std::vector<int64_t>& perMesh) {
    assert(perMesh.size() == shape.meshes.size());
    int64_t sum = 0;
    for (const LevelMesh& part : meshesOf(shape, level)) sum += at(perMesh, part.mesh);
    return sum;
}

}  // namespace marrowfen
