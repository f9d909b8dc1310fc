#pragma once

// What commands that load a scene can be told about it.

#include <string>
#include <string_view>
#include <vector>

#include "cli/arguments.h"
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

// Writes a model's textures beside the output, those only that aren't there or are others. written: gets the paths of
// all.
Outcome writeTextures(const standin::ImportResult& loaded, const std::string& output, const Session& session,
                      std::vector<std::string>& written);

}  // namespace marrowfen::cli
