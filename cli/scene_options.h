#pragma once

// What commands that load a scene can be told about it.

#include <string>
#include <vector>

#include "cli/command.h"
#include "standin/import/model_import.h"

namespace CLI {
class Option;
}

namespace marrowfen::cli {

struct SceneOptions {
    standin::ImportOptions import;
    std::string forShape;                   // the path of a shape that animations are for; empty for none
    std::vector<const CLI::Option*> given;  // all that there are; those with a count are set

    void addTo(CLI::App& command);
};

// Refuses options that a scene file leaves nothing to do for.
Outcome checkOptions(const std::string& path, const SceneOptions& options);

// A scene file or a model; the file name's ending decides.
standin::ImportResult loadScene(const std::string& path, const SceneOptions& options);

// Writes a model's textures beside the output, those only that aren't there or are others.
Outcome writeTextures(const standin::ImportResult& loaded, const std::string& output, const Session& session);

}  // namespace marrowfen::cli
