#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "shape/shape.h"

namespace marrowfen::cli {

// Meshes of a shape, taken together. The shape is borrowed.
struct MeshGroup {
    const Shape& shape;
    std::vector<int32_t> meshes;
};

// "12 of 480 vertices moved, by up to 0.25": what differs in how two groups look, and by how much. Vertices are the
// same by their number where there are as many of them, else by their place.
std::vector<std::string> geometryDifferences(const MeshGroup& before, const MeshGroup& after);

}  // namespace marrowfen::cli
