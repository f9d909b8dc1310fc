#pragma once

#include <string>
#include <vector>

#include "standin/host/scene.h"
#include "standin/host/scene_place.h"

namespace marrowfen::standin {

// Checks what a scene has to hold wherever it comes from; the first fault lands in place. Warnings say what can't come
// out as it was meant. Nodes are nested no deeper
// than kDeepestNode: whoever makes nodes of input sees to that, and says so with tooDeepText.
void checkScene(const Scene& scene, ScenePlace& place, std::vector<Message>& warnings);

// The first half: values by themselves. Finite numbers, texts without a zero byte, lists as long as the host counts;
// places that the exporter can compute with get a warning if they aren't.
void checkValues(const Scene& scene, ScenePlace& place, std::vector<Message>& warnings);

// The second half: what records say of one another. Vertex and texture-coordinate indices, one normal a vertex,
// material keys, ids of nodes, rising key frames.
void checkReferences(const Scene& scene, ScenePlace& place);

std::string tooDeepText();

}  // namespace marrowfen::standin
