#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "cli/command.h"
#include "standin/host/scene_file.h"

namespace marrowfen::cli {

namespace {

struct ImportArguments {
    std::string model;
    std::string output;
    SceneOptions options;
};

Outcome importToFile(const ImportArguments& arguments, const Session& session) {
    const standin::LoadResult loaded = loadScene(arguments.model, arguments.options);
    if (!loaded.scene) return {UnreadableInput, loaded.error};
    for (const std::string& text : loaded.warnings) session.warning(text);
    return writeWholeFile(arguments.output, standin::sceneText(*loaded.scene));
}

}  // namespace

void addImportCommand(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("import", "write a model as the host's scene, to look at or to change");
    const auto arguments = std::make_shared<ImportArguments>();
    command->add_option("model", arguments->model, "any model that Assimp reads")->required();
    command->add_option("output", arguments->output, "the scene file (.scene.json)")->required();
    arguments->options.addTo(*command);
    onRun(*command, session, [arguments, &session] { return importToFile(*arguments, session); });
}

}  // namespace marrowfen::cli
