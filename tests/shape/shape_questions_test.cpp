#include "shape/shape_questions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "shape/drawn_triangles.h"

namespace marrowfen {
namespace {

constexpr uint32_t kStrip = Primitive::Strip | Primitive::Indexed;
constexpr uint32_t kFan = Primitive::Fan | Primitive::Indexed;
constexpr uint32_t kList = Primitive::Triangles | Primitive::Indexed;

Mesh meshOf(std::vector<uint32_t> indices, std::vector<Primitive> primitives, MeshType type = MeshType::Standard) {
    Mesh mesh(type);
    mesh.vertexes.resize(6);
    mesh.indices = std::move(indices);
    mesh.primitives = std::move(primitives);
    return mesh;
}

// A sorted mesh whose clusters draw its first two primitives in both orders, and its third in none.
Mesh sortedMesh() {
    Mesh mesh = meshOf({0, 1, 2, 0, 2, 3, 3, 0, 2, 2, 0, 1, 0, 1, 3}, {{0, 6, kList}, {6, 6, kList}, {12, 3, kList}},
                       MeshType::Sorted);
    mesh.clusters = {{0, 0, {}, 0, 1, 2}, {0, 1, {}, 0, -1, -1}, {1, 2, {}, 0, -1, -1}, {2, 3, {}, 0, 0, 0}};
    mesh.frameStartCluster = {0};
    return mesh;
}

TEST(DrawnTriangles, AreTheSameFacesInEveryForm) {
    Mesh damaged = sortedMesh(), unstarted = damaged;
    unstarted.frameStartCluster.clear();
    unstarted.clusters[1].endPrimitive = 0;
    damaged.clusters[1].endPrimitive = 99;
    damaged.clusters[2].frontCluster = 77;
    const std::vector<Triangle> quad = {{0, 1, 2}, {0, 2, 3}};
    const struct {
        const char* name;
        Mesh mesh;
        std::vector<Triangle> faces;
    } cases[] = {
        {"list", meshOf({0, 1, 2, 0, 2, 3}, {{0, 6, kList}}), quad},
        {"strip", meshOf({1, 2, 0, 3}, {{0, 4, kStrip}}), quad},
        {"fan", meshOf({0, 1, 2, 3}, {{0, 4, kFan}}), quad},
        {"without indices", meshOf({}, {{1, 3, Primitive::Triangles}}), {{1, 2, 3}}},
        // 0 1 2, then 1 2 1 and two at the end that aren't drawn.
        {"joined strip", meshOf({0, 1, 2, 1, 3, 3, 4}, {{0, 7, kStrip}}), {{0, 1, 2}, {1, 3, 2}}},
        {"sorted", sortedMesh(), quad},
        {"sorted without a first cluster", unstarted, quad},
        {"sorted without clusters", meshOf({0, 1, 2, 0, 2, 3}, {{0, 6, kList}}, MeshType::Sorted), quad},
        {"elements that aren't there", meshOf({0, 1, 2, 0, 2, 3}, {{0, 99, kList}, {7, 3, kList}}), quad},
        {"clusters that aren't there", damaged, {{0, 1, 2}, {0, 1, 3}, {0, 2, 3}}},
    };
    for (const auto& [name, mesh, faces] : cases) {
        std::vector<Triangle> drawn;
        for (const TriangleRun& run : trianglesOf(mesh))
            drawn.insert(drawn.end(), run.triangles.begin(), run.triangles.end());
        for (Triangle& t : drawn) std::rotate(t.begin(), std::min_element(t.begin(), t.end()), t.end());
        std::sort(drawn.begin(), drawn.end());
        EXPECT_EQ(drawn, faces) << name;
        EXPECT_EQ(countTriangles(mesh), static_cast<int64_t>(faces.size())) << name;
    }
}

TEST(DrawnTriangles, HaveTheAreaOfTheirPlaces) {
    Mesh mesh = meshOf({0, 1, 2}, {{0, 3, kList}});
    mesh.vertexes = {{1, 1, 1}, {2, 3, 4}, {-1, 2, 6}};
    EXPECT_DOUBLE_EQ(drawnArea(mesh), std::sqrt(7 * 7 + 11 * 11 + 5 * 5) / 2);
}

TEST(ShapeQuestions, LevelsAreKnownByTheirNamesAndCountTheirMeshes) {
    Shape shape;
    shape.names = {"Detail8", "collision-1", "LOS-9", "Glossary"};
    shape.subshapes = {{0, 0, 0, 0, 3, 0}};
    shape.objects = {{0, 2, 0}, {0, 1, 2}, {0, 9, 2}};
    shape.meshes = {sortedMesh(), meshOf({1, 2, 0, 3}, {{0, 4, kStrip}}), Mesh(MeshType::Null), sortedMesh()};
    const struct {
        Shape::DetailLevel level;  // name, subshape, mesh of each object
        LevelKind kind;
        std::vector<int32_t> meshes;
        int64_t triangles;
    } cases[] = {
        {{0, 0, 0}, LevelKind::Visible, {0}, 2},    {{1, 0, 1}, LevelKind::Collision, {1, 3}, 4},
        {{2, 0, 2}, LevelKind::LineOfSight, {}, 0}, {{3, 7, 0}, LevelKind::Visible, {}, 0},
        {{-1, -1, -1}, LevelKind::Visible, {}, 0},
    };
    const std::vector<int64_t> perMesh = trianglesPerMesh(shape);
    for (const auto& [level, kind, meshes, triangles] : cases) {
        EXPECT_EQ(levelKind(shape, level), kind) << level.name;
        std::vector<int32_t> found;
        for (const LevelMesh& part : meshesOf(shape, level)) found.push_back(part.mesh);
        EXPECT_EQ(found, meshes) << level.name;
        EXPECT_EQ(countTriangles(shape, level, perMesh), triangles) << level.name;
        EXPECT_EQ(drawsAnything(shape, level), triangles != 0) << level.name;
    }
    // Many clusters may draw one primitive.
    shape.meshes[3].primitives.resize(1);
    shape.meshes[3].clusters.assign(99, {0, 1, {}, 0, -1, -1});
    EXPECT_EQ(trianglesPerMesh(shape), (std::vector<int64_t>{2, 2, 0, 2}));
    shape.meshes[0].primitives.assign(9'000'000, {0, 6, kList});
    EXPECT_EQ(trianglesPerMesh(shape), std::vector<int64_t>(4));
}

// On a node that is moved and turned a quarter about z, x to -y, and on its child that is moved along its y.
TEST(ShapeMeasures, AreThoseOfTheMeshesWhereTheirNodesPutThem) {
    const float r = std::sqrt(0.5F);
    Shape shape;
    shape.names = {"Root"};
    EXPECT_EQ(shape.findOrAddName("hand"), 1);
    EXPECT_EQ(shape.findOrAddName("ROOT"), 0);
    shape.nodes = {{0, -1}, {1, 0}};
    shape.nodeDefRotations = {{0, 0, r, r}, {0, 0, 0, 1}};
    shape.nodeDefTranslations = {{1, 0, 0}, {0, 0.3F, 0}};
    shape.objects = {{0, 1, 0, 0}, {1, 1, 1, 1}};
    shape.meshes.resize(2);
    shape.meshes[0].vertexes = {{0, 0, 0}, {0.2F, 0, 0}};
    shape.meshes[1].vertexes = {{0, 0, 0.4F}};
    shape.computeBounds();
    shape.computeCenter();
    shape.radius = shape.tubeRadius = 9;
    shape.computeRadius();
    shape.computeTubeRadius();
    EXPECT_LT(length(shape.bounds.min - Point3{1, -0.2F, 0}), 1e-5F);
    EXPECT_LT(length(shape.bounds.max - Point3{1.3F, 0, 0.4F}), 1e-5F);
    EXPECT_LT(length(shape.center - Point3{1.15F, -0.1F, 0.2F}), 1e-5F);
    EXPECT_NEAR(shape.radius, std::hypot(0.15F, 0.1F, 0.2F), 1e-5F);
    EXPECT_NEAR(shape.tubeRadius, std::hypot(0.15F, 0.1F), 1e-5F);
    Mesh& mesh = shape.meshes[0];
    const Quaternion turn = {0.1F, -0.5F, 0.7F, 0.5F};
    mesh.setInitialTransform(mesh.boneSlot(1), {1, 2, 3}, turn);
    for (const Point3& v : {Point3{1, 0, 0}, Point3{0, 1, 0}, Point3{0, 0, 1}}) {
        const auto& m = mesh.initialTransforms[0].m;
        const Point3 placed = rotate(turn, v) + Point3{1, 2, 3};
        const auto row = [&](int k) { return dot({m[k][0], m[k][1], m[k][2]}, placed) + m[k][3]; };
        EXPECT_LT(length(Point3{row(0), row(1), row(2)} - v), 1e-5F);
    }
    shape.detailLevels = {{0, 0, 0, 9}, {0, 0, 1, 5}, {0, 0, 2, 4}};
    for (const auto& [pixels, size, level] : {std::tuple{5, 5, 2}, {0, 1, 3}, {10, 10, 0}}) {
        shape.setSmallestSize(pixels);
        EXPECT_EQ(std::pair(shape.smallestSize, shape.smallestDetailLevel), std::pair(float(size), level));
    }
}

}  // namespace
}  // namespace marrowfen
