// `marrowfen add-node`: the panel's node helper on a scene file.

#include <optional>
#include <utility>

#include "cli/commands.h"
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

Outcome addNode(const AddNodeOptions& options, const Session& session) {
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

Outcome runAddNode(const Arguments& arguments, const Session& session) {
    const AddNodeOptions options{arguments.place(0), arguments.place(1), arguments.text("--output")};
    for (const std::string& fault : {checkSceneName(options.scene), checkNodeName(options.name)}) {
        if (!fault.empty()) return {WrongUsage, fault};
    }
    return addNode(options, session);
}

}  // namespace marrowfen::cli
