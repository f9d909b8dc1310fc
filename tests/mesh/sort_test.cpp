#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <set>

#include "ground/byte_order.h"
#include "mesh/mesh.h"
#include "tests/plain/mesh_makers.h"
#include "tests/plain/plain_sort.h"

namespace marrowfen {
namespace {

using makers::pick;
using makers::signedUnit;

// A Sorted mesh with different texture coordinates and normals at each vertex.
Mesh translucent(Mesh mesh) {
    mesh.type = MeshType::Sorted;
    for (size_t i = 0; i < mesh.vertexes.size(); ++i) {
        mesh.texturevertexes.push_back({static_cast<float>(i % 7), static_cast<float>(i % 5) / 4});
        mesh.normals.push_back(normalized(mesh.vertexes[i] + Point3{0, 0, static_cast<float>(i % 3)}));
    }
    mesh.setNumFrames(1);
    return mesh;
}

Mesh sorted(Mesh mesh) {
    mesh.sort();
    EXPECT_EQ(mesh.error(), "");
    return mesh;
}

// Adds the square around a center that is spanned by u and v and seen from the side to which v x u points.
void addQuad(Mesh& mesh, const Point3& center, const Point3& u, const Point3& v, uint32_t material = 0) {
    const auto first = static_cast<uint32_t>(mesh.vertexes.size());
    for (const Point3& p : {center - u - v, center + u - v, center + u + v, center - u + v}) mesh.vertexes.push_back(p);
    makers::addTriangle(mesh, {first, first + 1, first + 2}, Primitive::Indexed | material);
    makers::addTriangle(mesh, {first, first + 2, first + 3}, Primitive::Indexed | material);
}

void addTwoSidedQuad(Mesh& mesh, const Point3& center, const Point3& u, const Point3& v) {
    addQuad(mesh, center, u, v);
    addQuad(mesh, center, v, u);
}

// Squares of every direction on a coarse lattice: many coplanar, touching and crossing ones.
Mesh latticeQuads(uint32_t count, uint32_t seed) {
    std::mt19937 random(seed);
    const Point3 axes[] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {-1, 0, 0}, {0.7F, 0.7F, 0}};
    Mesh mesh;
    for (uint32_t i = 0; i < count; ++i) {
        const auto step = [&] { return static_cast<float>(pick(random, 4)); };
        const float x = step(), y = step(), z = step();
        const uint32_t u = pick(random, 5), v = pick(random, 5);
        addQuad(mesh, {x, y, z}, axes[u], axes[v], pick(random, 3));
    }
    return mesh;
}

// Triangles of about the given size, so that planes meet few of them when it is small.
Mesh confetti(uint32_t count, float size, uint32_t seed) {
    Mesh mesh = makers::soup(count, 3 * count, seed);
    for (uint32_t i = 0; i < 3 * count; ++i) mesh.indices[i] = i;
    for (uint32_t i = 0; i < 3 * count; i += 3) {
        const Point3 center = mesh.vertexes[i];
        for (uint32_t k = 1; k < 3; ++k) mesh.vertexes[i + k] = center + mesh.vertexes[i + k] * size;
    }
    return mesh;
}

// A cone of many faces over small triangles, of which the highest have only its tip above them.
Mesh cone(uint32_t seed) {
    std::mt19937 random(seed);
    Mesh mesh = makers::fan(100, true);
    for (uint32_t i = 0; i < 20; ++i) {
        const auto first = static_cast<uint32_t>(mesh.vertexes.size());
        const Point3 center{0, 0, static_cast<float>(pick(random, 100)) / 100};
        for (const Point3& p : {Point3{0.1F, 0, 0}, Point3{0, 0.1F, 0}, Point3{0, 0, 0}}) {
            mesh.vertexes.push_back(center + p);
        }
        makers::addTriangle(mesh, {first, first + 1 + i % 2, first + 2 - i % 2});
    }
    mesh.setNumFrames(1);
    return mesh;
}

Mesh scaled(Mesh mesh, float factor) {
    for (Point3& p : mesh.vertexes) p = p * factor;
    return mesh;
}

// All that a sort leaves, as comparable numbers. A NaN has many bit patterns.
std::vector<uint32_t> contentOf(const Mesh& mesh) {
    std::vector<uint32_t> content;
    const auto addFloat = [&](float f) { content.push_back(std::isnan(f) ? 0x7FC00000 : floatBits(f)); };
    const auto addInt = [&](auto i) { content.push_back(static_cast<uint32_t>(i)); };
    const auto addPoint = [&](const Point3& p) { addFloat(p.x), addFloat(p.y), addFloat(p.z); };
    for (const Cluster& c : mesh.clusters) {
        for (const int32_t i : {c.startPrimitive, c.endPrimitive, c.frontCluster, c.backCluster}) addInt(i);
        addPoint(c.planeNormal);
        addFloat(c.planeConstant);
    }
    for (const Primitive& p : mesh.primitives) {
        addInt(p.firstElement), addInt(p.numElements), addInt(p.material), addInt(p.sourcePoly);
    }
    for (const uint32_t i : mesh.indices) addInt(i);
    for (const Point3& p : mesh.vertexes) addPoint(p);
    for (const Point3& p : mesh.normals) addPoint(p);
    for (const Point2D& t : mesh.texturevertexes) addFloat(t.x), addFloat(t.y);
    for (const auto* list :
         {&mesh.frameStartCluster, &mesh.frameFirstVertex, &mesh.frameVertexCount, &mesh.frameFirstTexVertex}) {
        for (const int32_t i : *list) addInt(i);
    }
    return content;
}

TEST(Sort, AgreesWithThePlainMethod) {
    const struct {
        const char* name;
        uint32_t rounds;
        std::function<Mesh(uint32_t seed)> make;
    } cases[] = {
        {"soup", 40, [](uint32_t s) { return makers::soup(s * 2, 3 + s, s, true); }},
        {"confetti", 30, [](uint32_t s) { return confetti(20 + 3 * s, 0.3F, s); }},
        {"small", 30, [](uint32_t s) { return scaled(confetti(60, 0.3F, s), 0.0005F); }},
        {"far away", 20, [](uint32_t s) { return scaled(makers::soup(40, 30, s), 30000); }},
        {"odd numbers", 60, [](uint32_t s) { return makers::withOddNumbers(confetti(20 + s, 0.5F, s), s); }},
        {"lattice", 80, [](uint32_t s) { return latticeQuads(4 + s, s); }},
        {"noisy grid", 20, [](uint32_t s) { return makers::noisy(makers::grid(8, 6), 0.4F, s); }},
        {"convex", 1, [](uint32_t) { return makers::sphere(8, 6); }},
        {"no faces", 1, [](uint32_t) { return Mesh(); }},
        {"flat grid", 2, [](uint32_t s) { return makers::shuffled(makers::grid(8, 6), s); }},
        {"torus", 10, [](uint32_t s) { return makers::shuffled(makers::torus(8 + s, 6), s); }},
        {"rough sphere", 10, [](uint32_t s) { return makers::noisy(makers::sphere(8, 6), 0.1F, s); }},
        {"spoiled", 10, [](uint32_t s) { return makers::spoiled(makers::torus(8, 5), 3, 4 + s); }},
        {"book", 10, [](uint32_t s) { return makers::book(s + 1); }},
        {"smooth", 2, [](uint32_t s) { return makers::shuffled(makers::torus(24, 20), s); }},
        {"cone", 5, [](uint32_t s) { return cone(s); }},
    };
    for (const auto& c : cases) {
        for (uint32_t seed = 0; seed < c.rounds; ++seed) {
            SCOPED_TRACE(c.name + std::string(" ") + std::to_string(seed));
            const Mesh mesh = translucent(makers::patched(c.make(seed), 1 + seed % 4, seed));
            Mesh plain = mesh;
            plain::sort(plain);
            ASSERT_EQ(contentOf(sorted(mesh)), contentOf(plain));
        }
    }
}

TEST(Sort, RefusesWhatIsNotTriangles) {
    const std::function<void(Mesh&)> spoilers[] = {
        [](Mesh& m) { m.primitives[1].numElements = 4; },
        [](Mesh& m) { m.primitives[0].material |= Primitive::Strip; },
        [](Mesh& m) { m.indices[0] = 4; },
        [](Mesh& m) { m.primitives[1].firstElement = 4; },
        [](Mesh& m) { m.normals.pop_back(); },
        [](Mesh& m) { m.numFrames = 2; },
    };
    for (const auto& spoil : spoilers) {
        Mesh mesh = translucent(makers::grid(1, 1));
        spoil(mesh);
        mesh.sort();
        EXPECT_NE(mesh.error(), "");
        EXPECT_TRUE(mesh.clusters.empty());
    }
}

TEST(Sort, FramesFollowOneAnother) {
    Mesh mesh = translucent(latticeQuads(8, 3));
    const Mesh one = sorted(mesh);
    for (auto* table : {&mesh.vertexes, &mesh.normals}) table->insert(table->end(), table->begin(), table->end());
    mesh.texturevertexes.insert(mesh.texturevertexes.end(), mesh.texturevertexes.begin(), mesh.texturevertexes.end());
    mesh.setNumFrames(2);
    const Mesh two = sorted(mesh);

    ASSERT_GT(one.clusters.size(), 1U);
    const auto clusters = static_cast<int32_t>(one.clusters.size());
    const auto primitives = static_cast<int32_t>(one.primitives.size());
    const auto vertexes = static_cast<int32_t>(one.vertexes.size());
    EXPECT_EQ(two.frameStartCluster, (std::vector<int32_t>{0, clusters}));
    EXPECT_EQ(two.frameFirstVertex, (std::vector<int32_t>{0, vertexes}));
    EXPECT_EQ(two.frameVertexCount, (std::vector<int32_t>{vertexes, vertexes}));
    for (size_t i = 0; i < one.clusters.size(); ++i) {
        const Cluster& first = two.clusters[i];
        const Cluster& second = two.clusters[i + one.clusters.size()];
        EXPECT_EQ(second.startPrimitive, first.startPrimitive + primitives);
        EXPECT_EQ(second.endPrimitive, first.endPrimitive + primitives);
        EXPECT_EQ(second.frontCluster, first.frontCluster < 0 ? -1 : first.frontCluster + clusters);
        EXPECT_EQ(second.backCluster, first.backCluster < 0 ? -1 : first.backCluster + clusters);
    }
    EXPECT_EQ(two.primitives.back().firstElement, one.primitives.back().firstElement + one.indices.size());
}

using FaceCorners = std::array<uint32_t, 3>;

// Of primitives begin to end.
std::vector<FaceCorners> facesOf(const Mesh& mesh, size_t begin, size_t end) {
    std::vector<FaceCorners> faces;
    for (size_t p = begin; p < end; ++p) {
        for (uint32_t i = 0; i < mesh.primitives[p].numElements; i += 3) {
            const uint32_t* v = &mesh.indices[mesh.primitives[p].firstElement + i];
            faces.push_back({v[0], v[1], v[2]});
        }
    }
    return faces;
}

// What a viewer draws, and the planes that decided the way.
struct Walk {
    std::vector<FaceCorners> faces;
    std::vector<Point3> directions;  // away from the viewer
};

Walk walkFrom(const Mesh& mesh, const Point3& viewer) {
    Walk walk;
    for (int32_t c = mesh.frameStartCluster[0]; c >= 0;) {
        const Cluster& cluster = mesh.clusters[static_cast<size_t>(c)];
        const auto drawn =
            facesOf(mesh, static_cast<size_t>(cluster.startPrimitive), static_cast<size_t>(cluster.endPrimitive));
        walk.faces.insert(walk.faces.end(), drawn.begin(), drawn.end());
        const bool isInFront = dot(cluster.planeNormal, viewer) > cluster.planeConstant;
        walk.directions.push_back(isInFront ? -cluster.planeNormal : cluster.planeNormal);
        c = isInFront ? cluster.frontCluster : cluster.backCluster;
    }
    return walk;
}

// Front faces are clockwise.
Point3 areaNormal(const Mesh& mesh, const FaceCorners& face) {
    const Point3& p0 = mesh.vertexes[face[0]];
    return cross(mesh.vertexes[face[2]] - p0, mesh.vertexes[face[1]] - p0) * 0.5F;
}

TEST(Sort, WalkDrawsEveryVisibleFaceOnce) {
    for (uint32_t seed = 0; seed < 40; ++seed) {
        SCOPED_TRACE(seed);
        const Mesh mesh = sorted(translucent(seed % 2 == 0 ? confetti(150, 0.6F, seed) : latticeQuads(40, seed)));
        const std::vector<FaceCorners> all = facesOf(mesh, 0, mesh.primitives.size());
        std::mt19937 random(seed);
        for (int view = 0; view < 20; ++view) {
            const float x = signedUnit(random), y = signedUnit(random), z = signedUnit(random);
            const Point3 viewer = Point3{x, y, z} * 9;
            const Walk walk = walkFrom(mesh, viewer);
            const std::set<FaceCorners> drawn(walk.faces.begin(), walk.faces.end());
            EXPECT_EQ(drawn.size(), walk.faces.size()) << "drawn twice";
            for (const auto& face : all) {
                const Point3 normal = normalized(areaNormal(mesh, face));
                if (drawn.count(face) != 0 || dot(normal, viewer - mesh.vertexes[face[0]]) < 0.001F) continue;
                // Only what nearly faces away from the viewer's side of a plane may be missing.
                EXPECT_TRUE(std::any_of(walk.directions.begin(), walk.directions.end(),
                                        [&](const Point3& d) { return dot(normal, d) > 0.989F; }));
            }
        }
    }
}

// Distance along the ray to the face's front, negative for none.
float distanceTo(const Mesh& mesh, const FaceCorners& face, const Point3& from, const Point3& direction) {
    const Point3 n = areaNormal(mesh, face);
    const float slope = dot(n, direction);
    if (slope > -1e-4F) return -1;
    const float t = dot(n, mesh.vertexes[face[0]] - from) / slope;
    const Point3 hit = from + direction * t;
    for (size_t i = 0; i < 3; ++i) {
        const Point3& a = mesh.vertexes[face[i]];
        if (dot(n, cross(hit - a, mesh.vertexes[face[(i + 1) % 3]] - a)) < 1e-4F) return -1;
    }
    return t;
}

// Scenes that peeling and two levels of planes put in order completely.
TEST(Sort, WalkDrawsBackToFront) {
    const Point3 x{1, 0, 0}, y{0, 1, 0}, z{0, 0, 1};
    Mesh crossing, stack, cubes;
    addTwoSidedQuad(crossing, {}, x, y);
    addTwoSidedQuad(crossing, {}, y, z);
    addTwoSidedQuad(crossing, {}, z, x);
    for (const float height : {0.0F, 2.0F, -1.0F, 1.0F}) addTwoSidedQuad(stack, z * height, x, y);
    for (const float side : {-2.0F, 2.0F}) {
        for (const Point3& n : {x, y, z}) {
            const Point3 u = n == z ? x : z, v = n == y ? x : n == x ? y : y;
            addTwoSidedQuad(cubes, x * side + n, u, v);
            addTwoSidedQuad(cubes, x * side - n, u, v);
        }
    }
    for (const Mesh& scene : {crossing, stack, cubes, makers::torus(12, 8)}) {
        const Mesh mesh = sorted(translucent(scene));
        std::mt19937 random(1);
        int compared = 0;
        for (int ray = 0; ray < 4000; ++ray) {
            const float a = signedUnit(random), b = signedUnit(random), c = signedUnit(random);
            const Point3 viewer = Point3{a, b, c} * 6;
            const Point3 target{signedUnit(random), signedUnit(random), signedUnit(random)};
            float last = std::numeric_limits<float>::max();
            for (const auto& face : walkFrom(mesh, viewer).faces) {
                const float distance = distanceTo(mesh, face, viewer, target - viewer);
                if (distance < 0) continue;
                EXPECT_LT(distance, last + 1e-3F);
                if (last < 1e30F) ++compared;
                last = distance;
            }
        }
        EXPECT_GT(compared, 100);
    }
}

}  // namespace
}  // namespace marrowfen
