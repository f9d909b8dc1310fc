#pragma once

#include <string>
#include <vector>

#include "shape/shape.h"

namespace marrowfen::view {

struct GltfResult {
    std::string glb;                    // a binary glTF 2.0 file, empty on an error
    std::string error;                  // one line
    std::vector<std::string> warnings;  // what is left out or guessed
};

// Turns a shape into glTF: a scene for each detail level, the most detailed one first and default, with the nodes that
// it needs (the default scene holds them all), its meshes below their nodes and its skins beside them. Every scene has
// nodes of its own, since viewers take a node that two scenes share out of the first. Collision and line-of-sight
// levels are scenes too. A node of its own turns the shape's Z-up frame into glTF's Y-up one.
GltfResult shapeToGltf(const Shape& shape, const std::string& title);

}  // namespace marrowfen::view
