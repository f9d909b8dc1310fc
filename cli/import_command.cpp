#include <string>

#include "cli/commands.h"
#include "cli/export_run.h"
#include "cli/output_folder.h"
#include "cli/scene_options.h"
#include "standin/host/scene_file.h"

namespace marrowfen::cli {

Outcome runImport(const Arguments& arguments, const Session& session) {
    const std::string& model = arguments.place(0);
    const std::string& output = arguments.place(1);
    if (isExportName(output)) return {WrongUsage, "import makes a scene file; export makes " + output};
    SceneOptions options;
    if (const Outcome checked = readSceneOptions(arguments, model, options); !checked.good()) return checked;
    OutputFolder folder(output, {model, options.forShape});
    if (!folder.made().good()) return folder.made();
    const standin::ImportResult loaded = loadScene(model, options);
    if (!loaded.scene) return {UnreadableInput, loaded.error};
    for (const Message& warning : loaded.warnings) session.warning(warning.text);
    for (const std::string& text : loaded.details) session.detail(text);
    std::vector<std::string> textures;
    Outcome added;
    if (!OutputFolder::isStandardOutput(output)) added = addTextures(loaded, output, session, folder, textures);
    return added.good() ? folder.deliverText(standin::sceneText(*loaded.scene)) : added;
}

}  // namespace marrowfen::cli
