#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "cli/command.h"
#include "cli/output_folder.h"
#include "cli/scene_options.h"
#include "standin/host/scene_file.h"

namespace marrowfen::cli {

namespace {

struct ImportArguments {
    std::string model;
    std::string output;
    SceneOptions options;
};

Outcome importToFile(const ImportArguments& arguments, const Session& session) {
    if (const Outcome checked = checkOptions(arguments.model, arguments.options); !checked.good()) return checked;
    OutputFolder folder(arguments.output, {arguments.model, arguments.options.forShape});
    if (!folder.made().good()) return folder.made();
    const standin::ImportResult loaded = loadScene(arguments.model, arguments.options);
    if (!loaded.scene) return {UnreadableInput, loaded.error};
    for (const Message& warning : loaded.warnings) session.warning(warning.text);
    for (const std::string& text : loaded.details) session.detail(text);
    const Outcome written = folder.deliverText(standin::sceneText(*loaded.scene));
    return written.good() ? writeTextures(loaded, arguments.output, session) : written;
}

}  // namespace

void addImportCommand(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("import", "write a model as the host's scene, to look at or to change");
    const auto arguments = std::make_shared<ImportArguments>();
    command->add_option("model", arguments->model, "glTF, FBX, OBJ, Collada, Blender, ... (see `marrowfen formats`)")
        ->required();
    command->add_option("output", arguments->output, "the scene file (.scene.json)")->required();
    arguments->options.addTo(*command);
    onRun(*command, session, [arguments, &session] { return importToFile(*arguments, session); });
}

}  // namespace marrowfen::cli
