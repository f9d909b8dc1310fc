#pragma once

// Meshes for tests and benchmarks, the same on every platform. Each triangle is a primitive of its own with material 0.

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

#include "mesh/mesh.h"

namespace marrowfen::makers {

using Triangle = std::array<uint32_t, 3>;

// A whole number from 0 to n - 1. (The distributions of <random> differ between standard libraries.)
inline uint32_t pick(std::mt19937& random, uint32_t n) { return static_cast<uint32_t>(random() % n); }

// How many random inputs a test tries: the environment's MARROWFEN_ROUNDS, for a long run, or so many.
inline uint32_t rounds(uint32_t usual) {
    const char* text = std::getenv("MARROWFEN_ROUNDS");
    return text == nullptr ? usual : static_cast<uint32_t>(std::atoi(text));
}

// A number from -1 to 1.
inline float signedUnit(std::mt19937& random) { return static_cast<float>(random() % 20001) / 10000.0F - 1; }

inline void addTriangle(Mesh& mesh, const Triangle& corners, uint32_t material = Primitive::Indexed,
                        int32_t sourcePoly = 0) {
    mesh.primitives.push_back({static_cast<uint32_t>(mesh.indices.size()), 3, material, sourcePoly});
    mesh.indices.insert(mesh.indices.end(), corners.begin(), corners.end());
}

inline Mesh fromTriangles(std::vector<Point3> points, const std::vector<Triangle>& triangles) {
    Mesh mesh;
    mesh.vertexes = std::move(points);
    for (const Triangle& t : triangles) addTriangle(mesh, t);
    mesh.setNumFrames(1);
    return mesh;
}

// columns x rows points joined by quads of two triangles; closed ways wrap around.
inline std::vector<Triangle> quadTriangles(uint32_t columns, uint32_t rows, bool closedColumns, bool closedRows) {
    std::vector<Triangle> triangles;
    for (uint32_t y = 0; y + (closedRows ? 0 : 1) < rows; ++y) {
        for (uint32_t x = 0; x + (closedColumns ? 0 : 1) < columns; ++x) {
            const uint32_t x1 = (x + 1) % columns;
            const uint32_t y1 = (y + 1) % rows;
            triangles.push_back({y * columns + x, y1 * columns + x, y * columns + x1});
            triangles.push_back({y * columns + x1, y1 * columns + x, y1 * columns + x1});
        }
    }
    return triangles;
}

// Flat and open: 2 * columns * rows triangles.
inline Mesh grid(uint32_t columns, uint32_t rows) {
    std::vector<Point3> points;
    for (uint32_t y = 0; y <= rows; ++y) {
        for (uint32_t x = 0; x <= columns; ++x) points.push_back({static_cast<float>(x), static_cast<float>(y), 0});
    }
    return fromTriangles(points, quadTriangles(columns + 1, rows + 1, false, false));
}

// Closed: 2 * segments * rings triangles.
inline Mesh torus(uint32_t segments, uint32_t rings) {
    std::vector<Point3> points;
    for (uint32_t y = 0; y < rings; ++y) {
        for (uint32_t x = 0; x < segments; ++x) {
            const float a = 6.2831853F * static_cast<float>(x) / static_cast<float>(segments);
            const float b = 6.2831853F * static_cast<float>(y) / static_cast<float>(rings);
            const float r = 3 + std::cos(b);
            points.push_back({r * std::cos(a), r * std::sin(a), std::sin(b)});
        }
    }
    return fromTriangles(points, quadTriangles(segments, rings, true, true));
}

// Closed, with two poles of many triangles: 2 * segments * (rings - 1) triangles.
inline Mesh sphere(uint32_t segments, uint32_t rings) {
    std::vector<Point3> points;
    for (uint32_t y = 1; y < rings; ++y) {
        for (uint32_t x = 0; x < segments; ++x) {
            const float a = 6.2831853F * static_cast<float>(x) / static_cast<float>(segments);
            const float b = 3.1415927F * static_cast<float>(y) / static_cast<float>(rings);
            points.push_back({std::sin(b) * std::cos(a), std::sin(b) * std::sin(a), std::cos(b)});
        }
    }
    std::vector<Triangle> triangles = quadTriangles(segments, rings - 1, true, false);
    const auto top = static_cast<uint32_t>(points.size());
    points.push_back({0, 0, 1});
    points.push_back({0, 0, -1});
    for (uint32_t x = 0; x < segments; ++x) {
        const uint32_t x1 = (x + 1) % segments;
        triangles.push_back({top, x, x1});
        triangles.push_back({top + 1, (rings - 2) * segments + x1, (rings - 2) * segments + x});
    }
    return fromTriangles(points, triangles);
}

// Triangles around one vertex: a closed fan when joined, else touching nowhere but there.
inline Mesh fan(uint32_t triangleCount, bool joined) {
    std::vector<Point3> points{{0, 0, 1}};
    std::vector<Triangle> triangles;
    const uint32_t rim = joined ? triangleCount : 2 * triangleCount;
    for (uint32_t i = 0; i < rim; ++i) {
        const float a = 6.2831853F * static_cast<float>(i) / static_cast<float>(rim);
        points.push_back({std::cos(a), std::sin(a), 0});
    }
    for (uint32_t i = 0; i < triangleCount; ++i) {
        const uint32_t first = joined ? i : 2 * i;
        triangles.push_back({0, first + 1, (first + 1) % rim + 1});
    }
    return fromTriangles(points, triangles);
}

// Triangles on one common edge, turned either way.
inline Mesh book(uint32_t triangleCount) {
    std::vector<Point3> points{{0, 0, 0}, {0, 0, 1}};
    std::vector<Triangle> triangles;
    for (uint32_t i = 0; i < triangleCount; ++i) {
        const float a = 6.2831853F * static_cast<float>(i) / static_cast<float>(triangleCount);
        points.push_back({std::cos(a), std::sin(a), 0});
        triangles.push_back(i % 3 == 0 ? Triangle{1, 0, i + 2} : Triangle{0, 1, i + 2});
    }
    return fromTriangles(points, triangles);
}

// Random triangles on random points: edges of many faces, both ways round; duplicates when there are few points. With
// degenerate set some triangles have a corner twice or three times.
inline Mesh soup(uint32_t triangleCount, uint32_t pointCount, uint32_t seed, bool degenerate = false) {
    std::mt19937 random(seed);
    std::vector<Point3> points;
    for (uint32_t i = 0; i < pointCount; ++i) {
        const float x = signedUnit(random), y = signedUnit(random), z = signedUnit(random);
        points.push_back({x, y, z});
    }
    std::vector<Triangle> triangles;
    while (triangles.size() < triangleCount) {
        const uint32_t a = pick(random, pointCount), b = pick(random, pointCount), c = pick(random, pointCount);
        if (degenerate || (a != b && b != c && c != a)) triangles.push_back({a, b, c});
    }
    return fromTriangles(points, triangles);
}

// The mesh with degenerate triangles put in at random places: each names the hub and mostly itself again.
inline Mesh withDegenerates(Mesh mesh, uint32_t hub, uint32_t count, uint32_t seed) {
    std::mt19937 random(seed);
    const auto vertexCount = static_cast<uint32_t>(mesh.vertexes.size());
    std::vector<Triangle> triangles;
    for (const Primitive& p : mesh.primitives) {
        const uint32_t* v = &mesh.indices[p.firstElement];
        triangles.push_back({v[0], v[1], v[2]});
    }
    for (uint32_t i = 0; i < count; ++i) {
        Triangle t{hub, hub, hub};
        for (uint32_t corner = pick(random, 3), others = pick(random, 6) / 2; others > 0; --others) {
            t[(corner + others) % 3] = pick(random, vertexCount);
        }
        triangles.insert(triangles.begin() + pick(random, static_cast<uint32_t>(triangles.size() + 1)), t);
    }
    return fromTriangles(mesh.vertexes, triangles);
}

// Moves every vertex by up to amount on each axis.
inline Mesh noisy(Mesh mesh, float amount, uint32_t seed) {
    std::mt19937 random(seed);
    for (Point3& p : mesh.vertexes) {
        const float x = signedUnit(random), y = signedUnit(random), z = signedUnit(random);
        p = p + Point3{x, y, z} * amount;
    }
    return mesh;
}

// Some coordinates, at times many, become infinite, no numbers, huge or tiny.
inline Mesh withOddNumbers(Mesh mesh, uint32_t seed) {
    const float inf = std::numeric_limits<float>::infinity();
    const float odd[] = {inf, -inf, inf - inf, 1e30F, -3e38F, 2e6F, 1e-30F, -0.0F, 20000};
    std::mt19937 random(seed);
    const uint32_t rarity = 1 + pick(random, 20);
    for (Point3& p : mesh.vertexes) {
        for (float* c : {&p.x, &p.y, &p.z}) {
            if (pick(random, rarity) == 0) *c = odd[pick(random, 9)];
        }
    }
    return mesh;
}

// The same triangles in another order, each starting at any of its corners.
inline Mesh shuffled(Mesh mesh, uint32_t seed) {
    std::mt19937 random(seed);
    for (size_t i = mesh.primitives.size(); i > 1; --i) {
        std::swap(mesh.primitives[i - 1], mesh.primitives[pick(random, static_cast<uint32_t>(i))]);
    }
    for (const Primitive& p : mesh.primitives) {
        uint32_t* v = &mesh.indices[p.firstElement];
        for (uint32_t turns = pick(random, 3); turns > 0; --turns) {
            std::swap(v[0], v[1]);
            std::swap(v[1], v[2]);
        }
    }
    return mesh;
}

// Materials and polyhedra that change at random after runs of about runLength triangles; some have no material.
inline Mesh patched(Mesh mesh, uint32_t runLength, uint32_t seed) {
    std::mt19937 random(seed);
    uint32_t material = 0;
    int32_t poly = 0;
    for (Primitive& p : mesh.primitives) {
        if (pick(random, runLength) == 0) material = pick(random, 4);
        if (pick(random, runLength) == 0) poly = static_cast<int32_t>(pick(random, 3));
        p.material = Primitive::Indexed | (material == 3 ? Primitive::NoMaterial : material);
        p.sourcePoly = poly;
    }
    return mesh;
}

// Turns every n-th triangle over and doubles every m-th; 0 for none.
inline Mesh spoiled(Mesh mesh, uint32_t turnEvery, uint32_t doubleEvery) {
    const size_t faces = mesh.primitives.size();
    for (size_t f = 0; f < faces; ++f) {
        uint32_t* v = &mesh.indices[mesh.primitives[f].firstElement];
        const Triangle copy{v[1], v[2], v[0]};
        if (turnEvery != 0 && f % turnEvery == 0) std::swap(v[0], v[1]);
        if (doubleEvery != 0 && f % doubleEvery == 0) addTriangle(mesh, copy);
    }
    return mesh;
}

}  // namespace marrowfen::makers
