#include <gtest/gtest.h>

#include <limits>

#include "tests/mesh/varied_meshes.h"
#include "tests/plain/plain_decimate.h"

namespace marrowfen {
namespace {

using makers::listing;
using makers::Triangle;

std::vector<Triangle> facesOf(const Mesh& mesh) {
    std::vector<Triangle> faces;
    for (const Primitive& p : mesh.primitives) {
        const uint32_t* v = &mesh.indices[p.firstElement];
        faces.push_back({v[0], v[1], v[2]});
    }
    return faces;
}

//   6 - 7 - 8
//   | \ | \ |   flat; each quad has its lower left face first
//   3 - 4 - 5
//   | \ | \ |
//   0 - 1 - 2
TEST(Decimate, FlatGrid) {
    const std::vector<Triangle> all{{0, 3, 1}, {1, 3, 4}, {1, 4, 2}, {2, 4, 5},
                                    {3, 6, 4}, {4, 6, 7}, {4, 7, 5}, {5, 7, 8}};
    // The inner vertex 4 costs nothing and goes onto 1, the first neighbour it met. Then corner 0 is the first of the
    // border vertices with an edge of length 1 and goes onto 3, its first neighbour.
    const std::vector<Triangle> withoutInner{{0, 3, 1}, {2, 1, 5}, {3, 6, 1}, {1, 6, 7}, {1, 7, 5}, {5, 7, 8}};
    const std::vector<Triangle> withoutCorner{{2, 1, 5}, {3, 6, 1}, {1, 6, 7}, {1, 7, 5}, {5, 7, 8}};
    const int32_t lowest = std::numeric_limits<int32_t>::min();
    struct Case {
        int32_t percent;
        std::vector<Triangle> faces;
    };
    // Percentages that aren't sensible wrap around: 8 * -1 / 100 is 42949672, 8 * lowest / 100 is 0.
    const Case cases[] = {{100, all},          {1000, all}, {99, withoutInner}, {75, withoutInner}, {74, withoutCorner},
                          {63, withoutCorner}, {0, {}},     {-1, all},          {lowest, {}}};
    for (const Case& c : cases) {
        Mesh mesh = makers::grid(2, 2);
        mesh.decimate(c.percent);
        EXPECT_EQ(mesh.error(), "");
        EXPECT_EQ(facesOf(mesh), c.faces) << "percent " << c.percent << "\n" << listing(mesh);
        EXPECT_EQ(mesh.vertexes.size(), 9U);
    }
}

TEST(Decimate, RefusedMeshesStayAsTheyAre) {
    struct Case {
        Primitive spoiled;
        const char* error;
    };
    const char* const notTriangles = "Object must be made of triangles to decimate.";
    const char* const outside = "A triangle to decimate lies outside the index or vertex list.";
    const Case cases[] = {
        {{3, 3, 0xFFFFFFFF, 0}, "Negative material index found while decimating, cannot continue"},
        {{3, 3, Primitive::Strip | Primitive::Indexed, 0}, notTriangles},
        {{3, 3, Primitive::Triangles, 0}, notTriangles},
        {{3, 6, Primitive::Indexed, 0}, notTriangles},
        {{5, 3, Primitive::Indexed, 0}, outside},
        {{4, 3, Primitive::Indexed, 0}, outside},
    };
    for (const Case& c : cases) {
        Mesh mesh = makers::fromTriangles({{0, 0, 0}, {0, 1, 0}, {1, 0, 0}}, {{0, 1, 2}, {2, 1, 0}});
        mesh.indices.push_back(3);  // no such vertex
        mesh.primitives[1] = c.spoiled;
        const Mesh before = mesh;
        mesh.decimate(50);
        EXPECT_EQ(mesh.error(), c.error);
        EXPECT_EQ(mesh.primitives, before.primitives) << c.error;
        EXPECT_EQ(mesh.indices, before.indices) << c.error;
    }
}

// Positions on a coarse lattice make many costs equal.
Mesh lattice(Mesh mesh) {
    for (Point3& p : mesh.vertexes) p = {std::round(p.x), std::round(p.y), std::round(p.z)};
    return mesh;
}

TEST(Decimate, SameAsThePlainMethod) {
    const int32_t percents[] = {-70, 0, 10, 25, 55, 80, 99};
    std::mt19937 random(1);
    for (uint32_t seed = 0; seed < makers::rounds(3); ++seed) {
        for (const Mesh& mesh : makers::variedMeshes(seed)) {
            Mesh withLoneVertices = makers::patched(mesh, 2, seed);
            withLoneVertices.vertexes.resize(mesh.vertexes.size() + 5);
            for (const Mesh& input : {mesh, withLoneVertices, makers::noisy(mesh, 0.3F, seed),
                                      lattice(makers::noisy(mesh, 1, seed)), makers::withOddNumbers(mesh, seed)}) {
                const int32_t percent = percents[makers::pick(random, 7)];
                Mesh fast = input;
                Mesh plain = input;
                fast.decimate(percent);
                plain::decimate(plain, percent);
                ASSERT_EQ(listing(fast), listing(plain)) << "seed " << seed << ", percent " << percent;
            }
        }
    }
}

TEST(Decimate, LevelsInOneRunSameAsEachByItself) {
    const int32_t percents[] = {50, 10, 75, 0, 75, -1};
    for (const Mesh& mesh : makers::variedMeshes(7)) {
        Mesh input = mesh;
        const std::vector<MeshFaces> levels = input.decimated(percents);
        ASSERT_EQ(levels.size(), std::size(percents));
        for (size_t i = 0; i < levels.size(); ++i) {
            Mesh alone = mesh;
            alone.decimate(percents[i]);
            EXPECT_EQ(levels[i].primitives, alone.primitives) << percents[i] << " per cent";
            EXPECT_EQ(levels[i].indices, alone.indices) << percents[i] << " per cent";
        }
    }
}

// Normals that differ in their last bits at most.
Mesh slanted(Mesh mesh) {
    for (Point3& p : mesh.vertexes) p.z = 0.3F * p.x - 0.7F * p.y;
    return mesh;
}

// Vertices of so many faces that bounds stand in for their costs.
TEST(Decimate, HubsSameAsThePlainMethod) {
    for (uint32_t seed = 0; seed < makers::rounds(4); ++seed) {
        for (Mesh mesh : {makers::fan(110, true), makers::fan(90, false), makers::book(90), makers::sphere(80, 3),
                          makers::soup(200, 12, seed, true), makers::soup(250, 150, seed), makers::soup(150, 4, seed),
                          slanted(makers::fan(90, true)), makers::grid(20, 6)}) {
            mesh = makers::withDegenerates(seed % 2 == 0 ? makers::noisy(mesh, 0.2F, seed) : mesh, 0, seed, seed);
            if (seed == 3) mesh = makers::shuffled(lattice(mesh), seed);
            Mesh plain = mesh;
            const Mesh input = mesh;
            mesh.decimate(20);
            plain::decimate(plain, 20);
            ASSERT_EQ(listing(mesh), listing(plain)) << "seed " << seed << "\n" << listing(input);
        }
    }
}

// Moves the points of a grid within its plane, so far that collapses turn faces over.
Mesh crumpled(Mesh mesh, uint32_t seed) {
    const Mesh moved = makers::noisy(mesh, 0.4F, seed);
    for (size_t i = 0; i < mesh.vertexes.size(); ++i) {
        mesh.vertexes[i] = {moved.vertexes[i].x, moved.vertexes[i].y, mesh.vertexes[i].z};
    }
    return mesh;
}

// In a plane across the x axis, with coordinates that aren't exact.
Mesh upright(Mesh mesh) {
    for (Point3& p : mesh.vertexes) p = {0.3F, 0.1F * p.x + 0.7F, -0.1F * p.y};
    return mesh;
}

// The middle of a fan in its plane, with some other points in the same places.
Mesh flatFan(uint32_t seed) {
    Mesh mesh = makers::fan(30, true);
    mesh.vertexes[0].z = 0;
    for (uint32_t i = 1; i <= seed % 4; ++i) mesh.vertexes[7 * i] = mesh.vertexes[0];
    return mesh;
}

// A book with its pages in two rows, as far from each other as from the next, and the spine far off.
Mesh ruledBook(uint32_t pages) {
    Mesh mesh = makers::book(pages);
    for (uint32_t i = 2; i < mesh.vertexes.size(); ++i) {
        mesh.vertexes[i] = {static_cast<float>(i / 2), static_cast<float>(i % 2), 0};
    }
    mesh.vertexes[1].z = 50;
    return mesh;
}

// Hubs that go on for many collapses: through flat regions, and those of books.
TEST(Decimate, HubRunsSameAsThePlainMethod) {
    for (uint32_t seed = 0; seed < makers::rounds(4); ++seed) {
        std::mt19937 random(seed);
        const uint32_t side = 4 + makers::pick(random, 16), pages = 70 + makers::pick(random, 60);
        const Mesh sheet = makers::grid(side, 10);
        for (const Mesh& shape :
             {sheet, upright(sheet), upright(crumpled(sheet, seed)), makers::spoiled(sheet, 0, 97), slanted(sheet),
              flatFan(seed), makers::book(pages), ruledBook(pages), makers::noisy(makers::book(pages), 0.5F, seed)}) {
            const Mesh input = seed % 2 == 0 ? shape : makers::shuffled(shape, seed);
            Mesh fast = input, plain = input;
            const auto percent = static_cast<int32_t>(makers::pick(random, 60));
            fast.decimate(percent);
            plain::decimate(plain, percent);
            ASSERT_EQ(listing(fast), listing(plain)) << "seed " << seed << ", percent " << percent;
        }
    }
}

// Far-off vertices take their cheapest collapse however dear; those without any number for it stay with their faces.
TEST(Decimate, CostsWithoutLimitAndWithoutNumber) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    Mesh far = makers::fromTriangles({{0, 0, 0}, {5e6F, 0, 0}, {0, 9e6F, 0}}, {{0, 1, 2}});
    far.decimate(50);
    EXPECT_EQ(facesOf(far).size(), 0U);
    Mesh numberless = makers::fromTriangles({{nan, 0, 0}, {nan, 1, 0}, {0, nan, 0}}, {{0, 1, 2}});
    numberless.decimate(50);
    EXPECT_EQ(facesOf(numberless).size(), 1U);
}

}  // namespace
}  // namespace marrowfen
