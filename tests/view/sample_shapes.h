#pragma once

#include <cstdint>
#include <random>
#include <string>

#include "shape/shape.h"

namespace marrowfen::test {

// Three bones in a row, a marker and "Root"; a skin of two detail levels, the second one as a list; a collision box and
// a line-of-sight mesh; a walk of four keys and a blend of one.
Shape riggedShape();

// Everything that the exporter doesn't write but a file may hold: fans, unindexed runs, degenerate strips, corners,
// normals and rotations that aren't finite or have no length, several weights a vertex and none, names in no encoding.
Shape oddShape();

// One of these two with other bytes in its file, of which no link is broken.
Shape damagedShape(std::mt19937& random);

// Appends to the shape's tables.
int32_t addNode(Shape& shape, const std::string& name, int32_t parent, Quaternion rotation, Point3 translation);
void addLevel(Shape& shape, const std::string& name, float size);

}  // namespace marrowfen::test
