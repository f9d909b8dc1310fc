#pragma once

// What holds vertices of polyhedra to a skeleton: the muscles between a bone and its joints, and a joint's tendon.

#include <cstdint>
#include <functional>
#include <vector>

#include "host/scene_node.h"

namespace marrowfen {

// The numbers of the polyhedron's vertices that are held, in the host's order.
using VertexHold = std::function<std::vector<int32_t>(const SceneNode& polyhedron)>;

std::vector<VertexHold> musclesOf(const SceneNode& bone);   // in the order of the bone's joints
std::vector<VertexHold> tendonsOf(const SceneNode& joint);  // at most one

}  // namespace marrowfen
