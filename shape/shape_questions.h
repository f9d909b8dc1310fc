#pragma once

// What is asked of a shape again and again, each answered here and nowhere else. The shape may have been read from any
// file: links that lead nowhere are left out of the answer.

#include <cstdint>
#include <string>
#include <vector>

#include "shape/shape.h"

namespace marrowfen {

// What a detail level is for, which its name says.
enum class LevelKind { Visible, Collision, LineOfSight };
LevelKind levelKind(const Shape& shape, const Shape::DetailLevel& level);

// A mesh that stands for an object in a detail level.
struct LevelMesh {
    int32_t object = 0;
    int32_t mesh = 0;
};

// The meshes of a level in the order of the objects, Null ones left out.
std::vector<LevelMesh> meshesOf(const Shape& shape, const Shape::DetailLevel& level);

// Whether an object has a mesh with faces for the level.
bool drawsAnything(const Shape& shape, const Shape::DetailLevel& level);

// The visible levels that no size on the screen shows, by their index: levels are tried in their order, and one shows
// from its size up to where an earlier one takes over.
std::vector<size_t> levelsThatNeverShow(const Shape& shape);

// The largest coordinate of bounds, infinite if one isn't a number. Beyond kFarReach 32-bit floats tell no more than
// sixteenths of a unit apart.
inline constexpr float kFarReach = 1e6F;
float reachOf(const Box& bounds);

// Whether the positions and normals of a mesh are numbers that can be drawn.
bool isFinite(const Mesh& mesh);

// Whether the shape draws more elements than any model has. Drawing runs may overlap, so that a small file can ask for
// any number of triangles.
bool drawsWithoutEnd(const Shape& shape);

// How many triangles each mesh draws, as countTriangles() of shape/drawn_triangles.h tells; all 0 for a shape that
// draws without end.
std::vector<int64_t> trianglesPerMesh(const Shape& shape);

// The sum over a level's meshes.
int64_t countTriangles(const Shape& shape, const Shape::DetailLevel& level, const std::vector<int64_t>& perMesh);

}  // namespace marrowfen
