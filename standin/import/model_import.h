#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "standin/host/scene.h"

namespace marrowfen::standin {

enum class UpAxis { X, Y, Z };

struct ImportOptions {
    float frameRate = 0;  // that animations are sampled at; 0 for the file's own, else 30
    float scale = 1;
    double unit = 0;                  // metres; 0 for the file's own, else 1
    std::optional<UpAxis> up;         // of the file; none for what its format says
    float turnDegrees = 0;            // about the scene's up axis, anticlockwise seen from above
    bool singleSided = false;         // leaves out the backs of double-sided materials
    bool noTextures = false;          // hands over no textures
    bool plainTextures = false;       // hands over a plain one for materials that have a colour only
    unsigned memoryMegabytes = 4096;  // limits of the child process that reads the model
    unsigned cpuSeconds = 120;
    unsigned wallSeconds = 180;
};

struct ImportResult : LoadResult {
    std::vector<std::string> details;                           // what was applied, one line each
    std::vector<std::pair<std::string, std::string>> textures;  // embedded ones: file names and bytes
};

// Loads a 3D model (glTF, or what Assimp reads) in a child process, so that a crash or a runaway there is one error.
ImportResult importModel(const std::string& path, const ImportOptions& options);

}  // namespace marrowfen::standin
