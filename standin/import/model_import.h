#pragma once

#include <string>

#include "standin/host/scene.h"

namespace marrowfen::standin {

struct ImportOptions {
    float frameRate = 30;  // of the host that the model is loaded into; animations are sampled at it
    float scale = 1;
    unsigned memoryMegabytes = 4096;  // limits of the child process that reads the model
    unsigned cpuSeconds = 120;
    unsigned wallSeconds = 180;
};

// Loads a 3D model through Assimp in a child process, so that a crash or a runaway there is one error.
LoadResult importModel(const std::string& path, const ImportOptions& options);

}  // namespace marrowfen::standin
