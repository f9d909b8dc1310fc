#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "standin/host/scene.h"

namespace marrowfen::standin {

enum class UpAxis { X, Y, Z };

// Nodes whose name matches a pattern (*, ?, [...]) become a layer.
struct LayerOption {
    std::string layer;  // its name, tags included
    std::string pattern;
};

// A level of detail: its size in pixels and its triangles in per cent of the first one's.
struct LevelOption {
    int size = 0;
    double percent = 100;
};

struct ImportOptions {
    float frameRate = 0;  // that animations are sampled at; 0 for the file's own, else 30
    float scale = 1;
    double unit = 0;                      // metres; 0 for the file's own, else 1
    std::optional<UpAxis> up;             // of the file; none for what its format says
    float turnDegrees = 0;                // about the scene's up axis, anticlockwise seen from above
    std::vector<LayerOption> layers;      // the first match counts
    std::vector<LevelOption> levels;      // sizes falling
    std::vector<std::string> loops;       // patterns of the names of clips that loop
    std::vector<std::string> shapeNodes;  // of the shape that the clips are for; none to go by the model's own names
    size_t mostTriangles = 0;             // of a detail layer; 0 for any
    bool singleSided = false;             // leaves out the backs of double-sided materials
    bool noTextures = false;              // hands over no textures
    bool plainTextures = false;           // hands over a plain one for materials that have a colour only
    unsigned memoryMegabytes = 0;         // limits of the child process that reads the model; 0 to go by the file
    unsigned cpuSeconds = 0;
    unsigned wallSeconds = 0;
};

struct ImportResult : LoadResult {
    std::vector<std::string> details;                           // what was applied, one line each
    std::vector<std::pair<std::string, std::string>> textures;  // embedded ones: file names and bytes
    std::vector<LookedFor> files;                               // that were asked for, each once; after an error too
};

// Loads a 3D model (glTF, or what Assimp reads) in a child process, so that a crash or a runaway there is one error.
ImportResult importModel(const std::string& path, const ImportOptions& options);

// An import as bytes, for the way from that process. Whatever the bytes are, what is taken from them is an error, or a
// scene as unpackResult gives it, with textures that are pictures without a folder; no path but the model's has a line
// end in it.
std::string packImport(const ImportResult& result);
ImportResult unpackImport(std::string_view bytes, const std::string& path);

// The endings of all files that Assimp reads, ".3ds" and so on.
std::vector<std::string> otherEndings();

}  // namespace marrowfen::standin
