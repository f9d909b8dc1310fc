#pragma once

#include "standin/host/scene.h"
#include "standin/host/scene_place.h"

namespace marrowfen::standin {

// Checks what a scene's records say of one another: vertex and texture-coordinate indices, one normal a vertex,
// material keys, ids of nodes, rising key frames. The first fault lands in place.
void checkScene(const Scene& scene, ScenePlace& place);

}  // namespace marrowfen::standin
