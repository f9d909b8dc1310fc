#pragma once

// The cube that the host makes for a plug-in, and how it is saved.

#include <string>
#include <utility>
#include <vector>

#include "standin/host/scene.h"

namespace marrowfen::standin {

// A box around the origin whose edges have the given lengths: 8 vertices and 6 faces, the fifth (number 4) towards +y.
Node cubeNode(const Vec3& size);

// The cube as a node of a scene file. Its faces' materials, by number, are found among the scene's or added to them
// under new keys; those that no face has are left out.
using KeyedMaterials = std::vector<std::pair<std::string, HostMaterial>>;
Node savedCube(const Node& cube, const std::vector<const HostMaterial*>& paints, KeyedMaterials& materials);

}  // namespace marrowfen::standin
