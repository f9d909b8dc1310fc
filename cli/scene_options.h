#pragma once

// What commands that load a scene can be told about it.

#include <string>
#include <string_view>
#include <vector>

#include "cli/arguments.h"
#include "cli/output_folder.h"
#include "standin/import/model_import.h"

namespace marrowfen::cli {

struct SceneOptions {
    standin::ImportOptions import;
    std::string forShape;  // the path of a shape that animations are for; empty for none
};

// Whether it is a scene file, by its name or how it begins; everything else is a model.
bool isSceneFile(const std::string& path);

// What was given of the table's options for models. Refuses those that a scene file leaves nothing to do for.
Outcome readSceneOptions(const Arguments& arguments, const std::string& scene, SceneOptions& options);

// A scene file or a model.
standin::ImportResult loadScene(const std::string& path, const SceneOptions& options);

size_t trianglesOfLargestLayer(const standin::Scene& scene);

// What makes a model's levels small enough for a file, to stand behind a hint; empty for a scene file. most: triangles
// of a layer.
std::string wayToFewerTriangles(const std::string& path, const standin::ImportResult& loaded, size_t most);

// Puts a model's textures among the outputs, beside the given one, those only that aren't there or are others. written:
// gets the paths of all.
Outcome addTextures(const standin::ImportResult& loaded, const std::string& output, const Session& session,
                    OutputFolder& outputs, std::vector<std::string>& written);

}  // namespace marrowfen::cli
