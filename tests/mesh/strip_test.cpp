#include <gtest/gtest.h>

#include <algorithm>

#include "mesh/corners.h"
#include "tests/mesh/varied_meshes.h"
#include "tests/plain/plain_strip.h"

namespace marrowfen {
namespace {

using makers::Face;
using makers::listing;
using makers::meshOf;
using makers::Triangle;
using makers::variedMeshes;

constexpr uint32_t kTriangle = Primitive::Indexed;
constexpr uint32_t kStrip = Primitive::Strip | Primitive::Indexed;

TEST(Strip, SmallMeshes) {
    struct Case {
        const char* situation;
        std::vector<Face> faces;
        std::vector<Primitive> primitives;
        std::vector<uint32_t> indices;
    };
    const uint32_t bare = kTriangle | Primitive::NoMaterial;
    const Case cases[] = {
        {"one triangle", {{{0, 1, 2}}}, {{0, 3, kStrip, 0}}, {0, 1, 2}},
        {"vertex numbers far apart",
         {{{7, ~0U, 1U << 31}}, {{7, 1U << 31, 9}}},
         {{0, 4, kStrip, 0}},
         {~0U, 1U << 31, 7, 9}},
        {"two polyhedra",
         {{{0, 1, 2}, kTriangle | 5, 1}, {{0, 2, 3}, kTriangle | 5, 2}},
         {{0, 3, kStrip | 5, 1}, {3, 3, kStrip | 5, 2}},
         {0, 1, 2, 0, 2, 3}},
        {"no material hides the index", {{{0, 1, 2}, bare | 7}}, {{0, 3, 0x70000000, 0}}, {0, 1, 2}},
        {"the middle of an open fan comes first, then its end with no other neighbour",
         {{{0, 1, 2}}, {{0, 2, 3}}, {{0, 3, 4}}, {{0, 4, 5}}},
         {{0, 4, kStrip, 0}, {4, 4, kStrip, 0}},
         {3, 0, 2, 1, 3, 4, 0, 5}},
    };
    for (const Case& c : cases) {
        Mesh mesh = meshOf(c.faces);
        mesh.strip();
        EXPECT_EQ(mesh.error(), "") << c.situation;
        EXPECT_EQ(mesh.primitives, c.primitives) << c.situation << "\n" << listing(mesh);
        EXPECT_EQ(mesh.indices, c.indices) << c.situation << "\n" << listing(mesh);
    }
}

TEST(Strip, RefusedMeshesStayAsTheyAre) {
    struct Case {
        Primitive spoiled;
        const char* error;
    };
    const char* const notTriangles = "Object must be made of triangles to strip.";
    const Case cases[] = {
        {{3, 3, 0xFFFFFFFF, 0}, "Negative material index found while stripping, cannot continue."},
        {{3, 3, kStrip, 0}, notTriangles},
        {{3, 3, Primitive::Fan | Primitive::Indexed, 0}, notTriangles},
        {{3, 3, Primitive::Triangles, 0}, notTriangles},
        {{3, 4, kTriangle, 0}, notTriangles},
        {{4, 3, kTriangle, 0}, "A triangle to strip lies outside the index list."},
    };
    for (const Case& c : cases) {
        Mesh mesh = meshOf({{{0, 1, 2}}, {{0, 2, 3}}});
        mesh.primitives[1] = c.spoiled;
        const Mesh before = mesh;
        mesh.strip();
        EXPECT_EQ(mesh.error(), c.error);
        EXPECT_EQ(mesh.primitives, before.primitives) << c.error;
        EXPECT_EQ(mesh.indices, before.indices) << c.error;
    }
    Mesh empty;
    empty.primitives.push_back({0, 9, Primitive::Fan, 0});
    empty.strip();
    EXPECT_EQ(empty.error(), "");
    EXPECT_EQ(empty.primitives.size(), 1U);
}

// A face on both sides of an edge of a face with a corner twice can't be turned into the strip. The whole mesh then
// keeps the strip begun; of several groups only the finished ones are left.
TEST(Strip, DegenerateFaceThatCannotBeJoinedIsAnError) {
    Mesh whole = meshOf({{{0, 1, 2}}, {{1, 0, 0}}});
    whole.strip();
    EXPECT_EQ(listing(whole),
              "Assertion failed when stripping (5)\n0+3 material 1610612736 poly 0: 0 1 2\n3 indices\n");

    Mesh groups = meshOf({{{4, 5, 6}, kTriangle, 1}, {{0, 1, 2}}, {{1, 0, 0}}});
    groups.strip();
    EXPECT_EQ(listing(groups),
              "Assertion failed when stripping (5)\n0+3 material 1610612736 poly 1: 4 5 6\n3 indices\n");
}

TEST(Strip, SameAsThePlainMethod) {
    int failures = 0;
    for (uint32_t seed = 0; seed < makers::rounds(25); ++seed) {
        for (Mesh fast : variedMeshes(seed)) {
            Mesh plain = fast;
            fast.strip();
            plain::strip(plain);
            ASSERT_EQ(listing(fast), listing(plain)) << "seed " << seed;
            failures += fast.hasError() ? 1 : 0;
        }
    }
    EXPECT_GT(failures, 0) << "degenerate faces should have met an error at times";
}

// Two edges that meet, with many triangles each, turned either way: some come again, some or all face each other, a few
// are on both edges, or on the edge alone.
Mesh books(uint32_t seed) {
    std::mt19937 random(seed);
    const uint32_t others = 20 + makers::pick(random, 400), rarity = 20 + makers::pick(random, 400);
    std::vector<Triangle> triangles;
    for (uint32_t count = 200 + makers::pick(random, 250); triangles.size() < count;) {
        Triangle t{0, 1 + makers::pick(random, 2), 3 + makers::pick(random, others)};
        if (makers::pick(random, rarity) == 0) t[2] = makers::pick(random, seed % 3 == 0 ? 2 : 3);
        if (makers::pick(random, 2) == 0) std::swap(t[0], t[1]);
        if (seed % 3 == 0 || !hasRepeats(t)) triangles.push_back(t);
        if (seed % 5 != 0 || triangles.empty()) continue;
        triangles.push_back({triangles.back()[1], triangles.back()[0], triangles.back()[2]});
    }
    return makers::fromTriangles(std::vector<Point3>(3 + others), triangles);
}

// Around a vertex with more edges than are looked at one by one, with triangles that name it several times.
TEST(Strip, DegenerateFacesAtHubsSameAsThePlainMethod) {
    int failures = 0;
    for (uint32_t seed = 0; seed < makers::rounds(100); ++seed) {
        std::mt19937 random(seed);
        // A hub has several hundred faces.
        const uint32_t size = (seed % 25 == 0 ? 600 : 30) + makers::pick(random, 61),
                       degenerates = 1 + makers::pick(random, 4);
        const Mesh meshes[] = {makers::fan(size, true),
                               makers::fan(size, false),
                               makers::book(size),
                               makers::soup(2 * size, 3 + makers::pick(random, 20), seed, seed % 2 == 0),
                               makers::soup(300 + 2 * size, 3 + makers::pick(random, 4), seed),
                               books(seed)};
        for (const Mesh& mesh : meshes) {
            Mesh fast =
                seed % 4 == 0 ? mesh : makers::withDegenerates(mesh, makers::pick(random, 2), degenerates, seed);
            if (seed % 3 == 0) fast = makers::shuffled(fast, seed);
            Mesh plain = fast;
            fast.strip();
            plain::strip(plain);
            ASSERT_EQ(listing(fast), listing(plain)) << "seed " << seed << ", mesh " << &mesh - meshes;
            failures += fast.hasError() ? 1 : 0;
        }
    }
    EXPECT_GT(failures, 0) << "degenerate faces should have met an error at times";
}

// A triangle's corners turned so that the lowest comes first, with its group's material and polyhedron.
using Tagged = std::array<uint32_t, 5>;

Tagged tagged(Triangle t, const Primitive& p) {
    std::rotate(t.begin(), std::min_element(t.begin(), t.end()), t.end());
    const uint32_t material = p.material & (Primitive::NoMaterial | Primitive::MaterialMask);
    return {material, static_cast<uint32_t>(p.sourcePoly), t[0], t[1], t[2]};
}

// Every second triangle of a strip is turned over; those with a corner twice come from swaps and draw nothing.
std::vector<Tagged> trianglesOf(const Mesh& mesh) {
    std::vector<Tagged> triangles;
    for (const Primitive& p : mesh.primitives) {
        for (uint32_t i = 0; i + 2 < p.numElements; ++i) {
            Triangle t{mesh.indices[p.firstElement + i], mesh.indices[p.firstElement + i + 1],
                       mesh.indices[p.firstElement + i + 2]};
            if (i % 2 == 1) std::swap(t[0], t[1]);
            if (t[0] != t[1] && t[1] != t[2] && t[2] != t[0]) triangles.push_back(tagged(t, p));
        }
    }
    std::sort(triangles.begin(), triangles.end());
    return triangles;
}

bool hasDegenerateFaces(const Mesh& mesh) { return trianglesOf(mesh).size() < mesh.primitives.size(); }

std::vector<Tagged> withoutSides(std::vector<Tagged> triangles) {
    for (Tagged& t : triangles) std::sort(t.begin() + 2, t.end());
    std::sort(triangles.begin(), triangles.end());
    return triangles;
}

// A strip that goes on through a face with a corner twice may leave it on the other side.
TEST(Strip, HoldsExactlyTheInputTriangles) {
    for (uint32_t seed = 0; seed < 40; ++seed) {
        for (Mesh mesh : variedMeshes(seed)) {
            const bool keepsSides = !hasDegenerateFaces(mesh);
            const std::vector<Tagged> expected = trianglesOf(mesh);
            mesh.strip();
            if (mesh.hasError()) continue;
            ASSERT_EQ(withoutSides(trianglesOf(mesh)), withoutSides(expected)) << listing(mesh);
            if (keepsSides) {
                ASSERT_EQ(trianglesOf(mesh), expected) << listing(mesh);
            }
        }
    }
}

}  // namespace
}  // namespace marrowfen
