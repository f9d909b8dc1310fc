// `marrowfen add-node`: the panel's node helper on a scene file.

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <utility>

#include "cli/command.h"
#include "cli/output_folder.h"
#include "cli/plugin_session.h"
#include "plugin/resources/resource.h"
#include "standin/host/scene_file.h"

namespace marrowfen::cli {

namespace {

constexpr size_t kLongestNodeName = 63;  // that the panel hands on

struct AddNodeOptions {
    std::string scene;
    std::string name;
    std::string output;  // empty: the scene file itself
};

std::string checkSceneName(const std::string& path) {
    return path.ends_with(".scene.json") ? "" : path + " doesn't end in .scene.json: only a scene file can take a node";
}

std::string checkNodeName(const std::string& name) {
    if (name.empty()) return "a node needs a name";
    if (name.size() <= kLongestNodeName) return {};
    return "the name has " + std::to_string(name.size()) + " bytes; the panel takes " +
           std::to_string(kLongestNodeName);
}

Outcome runAddNode(const AddNodeOptions& options, const Session& session) {
    const std::string output = options.output.empty() ? options.scene : options.output;
    OutputFolder folder(output, {}, OutputFolder::Lock::Throughout);
    if (!folder.made().good()) return folder.made();
    standin::LoadResult loaded = standin::readSceneFile(options.scene);
    if (!loaded.scene) return {UnreadableInput, loaded.error};
    // The exporter skips what lies on layer 0, so the helper isn't shown one there.
    standin::Scene& scene = *loaded.scene;
    if (scene.layers.empty()) scene.layers.emplace_back();
    const std::optional<std::string> layer0 = std::exchange(scene.layers.front(), std::nullopt);
    MessageUser user;
    PluginSession plugin(std::move(scene), user);
    if (plugin.openPanel()) {
        plugin.type(IDC_NODE_NAME, options.name);
        plugin.press(IDC_ADD_NODE);
    }
    if (!user.message().empty()) return {Refused, options.scene + ": " + user.message()};
    standin::Scene changed = plugin.host().scene();
    changed.layers.front() = layer0;
    const Outcome written = folder.deliverText(standin::sceneText(changed));
    if (written.good()) session.note(output + ": added the node \"" + options.name + "\"");
    return written;
}

}  // namespace

void addAddNodeCommand(CLI::App& app, Session& session) {
    auto options = std::make_shared<AddNodeOptions>();
    CLI::App* command = app.add_subcommand("add-node", "add a named node to a scene file, as the panel does");
    command->add_option("SCENE", options->scene, "a *.scene.json file")->required()->check(checkSceneName);
    command->add_option("NAME", options->name, "the node's name, at most 63 bytes")->required()->check(checkNodeName);
    command->add_option("-o,--output", options->output, "scene file to write; SCENE itself when left out");
    onRun(*command, session, [options, &session] { return runAddNode(*options, session); });
}

}  // namespace marrowfen::cli
