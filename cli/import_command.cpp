#include <string>

#include "cli/commands.h"
#include "cli/output_folder.h"
#include "cli/scene_options.h"
#include "standin/host/scene_file.h"

namespace marrowfen::cli {

namespace {

const std::string kStandardOutput = "/dev/stdout";

}  // namespace

Outcome runImport(const Arguments& arguments, const Session& session) {
    const std::string& model = arguments.place(0);
    const std::string& output = arguments.place(1);
    const std::string& path = output == "-" ? kStandardOutput : output;
    SceneOptions options;
    if (const Outcome checked = readSceneOptions(arguments, model, options); !checked.good()) return checked;
    OutputFolder folder(path, {model, options.forShape});
    if (!folder.made().good()) return folder.made();
    const standin::ImportResult loaded = loadScene(model, options);
    if (!loaded.scene) return {UnreadableInput, loaded.error};
    for (const Message& warning : loaded.warnings) session.warning(warning.text);
    for (const std::string& text : loaded.details) session.detail(text);
    std::vector<std::string> textures;
    Outcome added;
    if (path != kStandardOutput) added = addTextures(loaded, output, session, folder, textures);
    return added.good() ? folder.deliverText(standin::sceneText(*loaded.scene)) : added;
}

}  // namespace marrowfen::cli
