#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "ground/byte_order.h"
#include "shape/shape.h"
#include "tests/plain/mesh_makers.h"
#include "tests/plain/plain_collapse.h"

namespace marrowfen {
namespace {

using makers::pick;

constexpr float kTolerance = 5e-05F;
const float kInfinity = std::numeric_limits<float>::infinity();

// Gives the mesh the tables that a collapse needs.
Mesh completed(Mesh mesh) {
    mesh.texturevertexes.resize(mesh.vertexes.size());
    mesh.normals.resize(mesh.vertexes.size());
    mesh.setNumFrames(1);
    return mesh;
}

// One triangle on the first three vertices.
Mesh triangleMesh(std::vector<Point3> points) {
    return completed(makers::fromTriangles(std::move(points), {{0, 1, 2}}));
}

std::vector<uint32_t> bitsOf(const std::vector<Point3>& points) {
    std::vector<uint32_t> bits;
    for (const Point3& p : points) {
        for (const float c : {p.x, p.y, p.z}) bits.push_back(std::isnan(c) ? 0x7FC00000 : floatBits(c));
    }
    return bits;
}

// Every pass of the shape is a method of it; most cases need a shape for nothing else.
struct Collapsed {
    explicit Collapsed(Mesh input, std::vector<int32_t> inputGroups = {})
        : mesh(std::move(input)), groups(inputGroups) {
        if (groups.empty()) groups.assign(static_cast<size_t>(mesh.vertsPerFrame), 1);
        shape.collapseVertices(mesh, groups, remap);
    }
    Mesh mesh;
    std::vector<int32_t> groups, remap;
    Shape shape;
};

void expectAsPlain(Mesh mesh, std::vector<int32_t> groups, const std::string& what) {
    SCOPED_TRACE(what);
    const Collapsed fast(mesh, groups);
    std::vector<int32_t> remap;
    const std::string error = plain::collapseVertices(mesh, groups, remap);
    ASSERT_EQ(fast.shape.error(), error);
    ASSERT_EQ(fast.remap, remap);
    ASSERT_EQ(fast.groups, groups);
    ASSERT_EQ(fast.mesh.vertsPerFrame, mesh.vertsPerFrame);
    ASSERT_EQ(fast.mesh.indices, mesh.indices);
    ASSERT_EQ(fast.mesh.mindices, mesh.mindices);
    ASSERT_EQ(bitsOf(fast.mesh.vertexes), bitsOf(mesh.vertexes));
    ASSERT_EQ(bitsOf(fast.mesh.normals), bitsOf(mesh.normals));
    ASSERT_EQ(fast.mesh.texturevertexes.size(), mesh.texturevertexes.size());
}

// A pair of vertices beside two that stand apart: told apart or not, as they are stated.
TEST(VertexCollapse, MergesStrictlyBelowTheTolerance) {
    const float below = std::nextafter(kTolerance, 0.0F);
    const struct {
        Point3 first, second;
        Point2D texture;
        size_t left;
    } cases[] = {
        {{0, 0, 0}, {0, 0, kTolerance}, {}, 4},     {{0, 0, 0}, {-below, below, -below}, {-below, below}, 3},
        {{0, 0, 0}, {0, 0, 0}, {kTolerance, 0}, 4}, {{1e30F, 0, 0}, {std::nextafter(1e30F, 2e30F), 0, 0}, {}, 4},
        {{5000, 0, 0}, {5000, -0.0F, 0}, {}, 3},    {{kInfinity, 0, 0}, {kInfinity, 0, 0}, {}, 4},
    };
    for (const auto& c : cases) {
        Mesh mesh = triangleMesh({c.first, {1, 0, 0}, {0, 1, 0}, c.second});
        mesh.texturevertexes[3] = c.texture;
        EXPECT_EQ(Collapsed(mesh).mesh.vertexes.size(), c.left) << c.first.x << " and " << c.second.x;
    }
}

// Points on a lattice as fine as the tolerance, so that many differences are just below, at and above it and equality
// isn't transitive.
float latticeValue(std::mt19937& random, uint32_t steps) {
    const float value = static_cast<float>(pick(random, steps)) * 0.5F * kTolerance;
    return pick(random, 2) == 0 ? value : std::nextafter(value, pick(random, 2) == 0 ? 1.0F : -1.0F);
}

Mesh latticeMesh(uint32_t seed) {
    std::mt19937 random(seed);
    const uint32_t steps = 2 + pick(random, 6), count = 3 + pick(random, 120);
    const float offsets[] = {0, 0.5F, -1.0F / 2048, 100, 511.9999F};
    const float offset = offsets[pick(random, 5)];
    Mesh mesh = makers::soup(count, count, seed, true);
    for (Point3& p : mesh.vertexes) {
        const auto corner = static_cast<float>(pick(random, 3));  // triangles need some size
        p = {offset + corner + latticeValue(random, steps), latticeValue(random, 2),
             static_cast<float>(pick(random, 2)) - latticeValue(random, steps)};
    }
    mesh = completed(mesh);
    for (Point2D& t : mesh.texturevertexes) t = {latticeValue(random, 2 + seed % 3), latticeValue(random, 2)};
    return mesh;
}

// The frames are the mesh's own vertices, split; indices stay below the new number a frame.
void splitIntoFrames(Mesh& mesh, int32_t numFrames, int32_t matFrames) {
    mesh.numFrames = numFrames;
    mesh.matFrames = matFrames;
    mesh.vertsPerFrame = static_cast<int32_t>(mesh.vertexes.size()) / numFrames;
    mesh.vertexes.resize(static_cast<size_t>(mesh.vertsPerFrame * numFrames));
    mesh.normals.resize(mesh.vertexes.size());
    mesh.texturevertexes.resize(static_cast<size_t>(mesh.vertsPerFrame * matFrames));
    for (uint32_t& index : mesh.indices) index %= static_cast<uint32_t>(mesh.vertsPerFrame);
}

TEST(VertexCollapse, AgreesWithThePlainMethod) {
    for (uint32_t seed = 0; seed < 1500; ++seed) {
        std::mt19937 random(seed);
        Mesh mesh = latticeMesh(seed);
        if (seed % 5 == 1) {
            mesh = makers::withOddNumbers(mesh, seed);
            mesh.texturevertexes[0].x = mesh.vertexes[0].x;
        }
        if (seed % 5 == 2) splitIntoFrames(mesh, 1 + static_cast<int32_t>(pick(random, 3)), 1 + pick(random, 2));
        const auto perFrame = static_cast<uint32_t>(mesh.vertsPerFrame);
        std::vector<int32_t> groups(perFrame, 1);
        if (seed % 3 == 0) {
            for (int32_t& group : groups) group = static_cast<int32_t>(pick(random, 4));
        }
        if (seed % 5 == 3) {  // merge chains run downward, to 0 or to a vertex that names itself
            for (uint32_t i = 0; i < perFrame; ++i) mesh.mindices.push_back(pick(random, i + 1));
        }
        if (seed % 50 == 7) mesh.primitives.back().material |= Primitive::Strip;
        expectAsPlain(mesh, groups, "seed " + std::to_string(seed));
        if (HasFatalFailure()) return;
    }
}

TEST(VertexCollapse, RefusesTablesThatDontFit) {
    const Mesh good = triangleMesh({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
    const struct {
        const char* error;
        void (*spoil)(Mesh&);
    } cases[] = {
        {"Assertion failed when collapsing vertices (2)", [](Mesh& m) { m.normals.pop_back(); }},
        {"Shape::collapseVertices (3)", [](Mesh& m) { m.texturevertexes.pop_back(); }},
        {"Shape::collapseVertices (3)", [](Mesh& m) { m.matFrames = 2; }},
        {"Assertion failed:  vertex number mismatch", [](Mesh& m) { m.numFrames = 2; }},
        {"Assertion failed:  vertex number mismatch", [](Mesh& m) { m.mindices.resize(2); }},
        {"Assertion failed:  vertex number mismatch", [](Mesh& m) { m.indices[2] = 3; }},
        {"Assertion failed:  vertex number mismatch", [](Mesh& m) { m.primitives[0].firstElement = 0xFFFFFFFF; }},
        {"Assertion error while computing normals", [](Mesh& m) { m.primitives[0].material |= Primitive::Strip; }},
    };
    for (const auto& c : cases) {
        Mesh mesh = good;
        c.spoil(mesh);
        Collapsed refused(mesh, {1, 1, 1});
        EXPECT_EQ(refused.shape.error(), c.error);
        Mesh next = good;  // an error stops what would follow
        refused.remap.clear();
        refused.shape.collapseVertices(next, refused.groups, refused.remap);
        EXPECT_TRUE(refused.remap.empty());
    }
}

// Triangles that give their corners no normal: the fallback stands. Others here look along -z.
TEST(VertexNormals, TrianglesWithoutDirection) {
    const std::tuple<Point3, Point3, float> cases[] = {
        // two corners beside the origin, z of the normal
        {{1e18F, 0, 0}, {0, 1e18F, 0}, -1},    {{0.001F, 0, 0}, {0, 0.001F, 0}, -1},
        {{0.0003F, 0, 0}, {0, 0.0003F, 0}, 1}, {{1, 0, 0}, {1, 0.0003F, 0}, 1},
        {{1e30F, 0, 0}, {0, 1, 0}, 1},         {{0, 0, 0}, {0, 1, 0}, 1},
        {{kInfinity, 0, 0}, {0, 1, 0}, 1},     {{1, 0, 0}, {0, std::nanf(""), 0}, 1},
    };
    for (const auto& [p1, p2, z] : cases) {
        EXPECT_EQ(Collapsed(triangleMesh({{}, p1, p2})).mesh.normals[0], (Point3{0, 0, z})) << p1.x << ' ' << p2.y;
    }
}

TEST(VertexCollapse, MeshWithoutVerticesStaysEmpty) {
    const Collapsed empty{completed(Mesh())};
    EXPECT_EQ(empty.shape.error(), "");
    EXPECT_EQ(empty.remap, std::vector<int32_t>());
}

// Merge chains that run in circles, or out of the mesh, end.
TEST(VertexCollapse, SurvivesBadMergeChains) {
    for (const std::vector<uint32_t>& chains : {std::vector<uint32_t>{1, 2, 3, 0}, {3, 2, 1, 0}, {4, 4, 4, 4}}) {
        Mesh mesh = triangleMesh({{0, 0, 0}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}});
        mesh.mindices = chains;
        EXPECT_EQ(Collapsed(mesh).shape.error(), "");
    }
}

// Vertices all in one place, told apart only by texture coordinates or group, must not be compared pairwise.
TEST(VertexCollapse, CoincidentVerticesAreNotCompared) {
    constexpr uint32_t kCount = 100000;  // 5 billion pairs
    Mesh mesh = triangleMesh(std::vector<Point3>(kCount));
    std::vector<int32_t> groups(kCount, 1);
    for (uint32_t i = 0; i < kCount; ++i) {
        if (i % 2 == 0) mesh.texturevertexes[i].x = static_cast<float>(i) / 1024;
        if (i % 2 == 1) groups[i] = static_cast<int32_t>(i + 1);
    }
    EXPECT_EQ(Collapsed(mesh, groups).mesh.vertexes.size(), kCount);
}

}  // namespace
}  // namespace marrowfen
