#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "mesh/mesh.h"

namespace marrowfen {

// Vertex numbers, clockwise seen from the front.
using Triangle = std::array<uint32_t, 3>;

struct TriangleRun {
    int32_t material = -1;  // -1 for a run that has none
    std::vector<Triangle> triangles;
};

// The triangles that a mesh draws, one run a material in the order of first use. Strips and fans are unrolled;
// triangles with two corners at one vertex, such as those that join strips, aren't drawn. A sorted mesh holds its faces
// once for each of its drawing orders; here every face stands once, in the order of the walk from its first cluster.
// Elements, primitives and clusters that aren't there are left out; a mesh without a broken problem has none, and all
// vertex numbers lie within its vertices.
std::vector<TriangleRun> trianglesOf(const Mesh& mesh);

// How many those are.
int64_t countTriangles(const Mesh& mesh);

// The area of those triangles; where several of one material have the same corners, it counts once.
double drawnArea(const Mesh& mesh);

// The clusters that the walks of the first frames can come to, each once, whatever the viewer's position.
std::vector<int32_t> reachableClusters(const Mesh& mesh, size_t frames);

// Elements and primitives that these functions step over. Drawing runs and clusters may overlap, so that a small file
// can ask for any number.
uint64_t stepsToDraw(const Mesh& mesh);

}  // namespace marrowfen
