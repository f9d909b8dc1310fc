#pragma once

#include <string>

#include "standin/host/scene.h"

namespace marrowfen::standin {

// Reads a scene file. Every fault is an error with the file and the JSON path of the fault.
LoadResult readSceneFile(const std::string& path);

// The same for text at hand; name stands for the file in errors.
LoadResult parseScene(const std::string& text, const std::string& name);

// The scene as the text of a scene file. Optional keys that hold their default are left out; floats read back to the
// same bits.
std::string sceneText(const Scene& scene);

}  // namespace marrowfen::standin
