// `marrowfen explain`: how the exporter reads the names of a scene. Nothing is made of it.

#include <set>

#include "builder/scene_reading.h"
#include "builder/tags.h"
#include "cli/commands.h"
#include "cli/export_report.h"
#include "cli/plugin_session.h"
#include "cli/scene_options.h"
#include "cli/terminal_text.h"
#include "ground/at.h"
#include "ground/comma_list.h"
#include "ground/excerpt.h"
#include "shape/shape_words.h"

namespace marrowfen::cli {

namespace {

std::string tagLines(const std::string& fullName, TagRole role) {
    const TagSplit tags = splitTags(fullName, role);
    std::string text;
    if (!tags.understood.empty()) text += "  tags understood: " + commaList(tags.understood) + "\n";
    if (!tags.unknown.empty()) text += "  tags not understood: " + commaList(tags.unknown) + "\n";
    return text;
}

// The warnings about a layer, node or clip, each once: things of one name share them.
class Warnings {
public:
    explicit Warnings(const std::vector<Message>& messages) : messages_(messages), isSaid_(messages.size()) {}

    std::string about(Message::Place place, const std::string& name) {
        return linesOf([&](const Message& m) { return m.place == place && m.name == excerpt(name); }, "  ");
    }
    std::string others() {
        return linesOf([&](const Message& m) { return !at(isSaid_, &m - messages_.data()); }, "");
    }

private:
    template <class Wanted>
    std::string linesOf(Wanted isWanted, const char* indent) {
        std::string text;
        std::set<std::string> lines;
        for (size_t i = 0; i < messages_.size(); ++i) {
            const Message& message = messages_[i];
            if (message.kind->severity != Severity::Warning || !isWanted(message)) continue;
            isSaid_[i] = true;
            const std::string line = std::string(indent) + "warning: " + message.kind->headline + ": " + message.text;
            if (lines.insert(line).second) text += line + "\n";
        }
        return text;
    }

    const std::vector<Message>& messages_;
    std::vector<bool> isSaid_;
};

std::string detailText(const LayerInfo& layer) {
    std::string text = "detail level, " + (layer.size < 0 ? "no size" : std::to_string(layer.size) + " pixels");
    if (layer.autoLod) return text + ", a copy with " + std::to_string(layer.autoLodPercent) + " % of the triangles";
    if (layer.sort) return text + ", sorted";
    return layer.strip ? text : text + ", single triangles";
}

std::string collisionText(CollisionType type) {
    if (type == CollisionType::BoxCollision) return "collision box around everything visible";
    if (type == CollisionType::CylinderCollision) return "collision prism around everything visible";
    return "collision mesh";
}

std::string roleText(const LayerReading& layer) {
    switch (layer.role) {
        case LayerRole::Detail:
            return detailText(layer.info);
        case LayerRole::Collision:
            return collisionText(layer.info.collisionType);
        case LayerRole::LosCollision:
            return "line-of-sight " + collisionText(layer.info.collisionType);
        case LayerRole::Bounds:
            return layer.info.polys.empty() ? "texture options" : "bounds of the shape, texture options";
        case LayerRole::Nodes:
            return "markers";
        case LayerRole::Unused:
            break;
    }
    return "left out";
}

TagRole tagRole(LayerRole role) {
    switch (role) {
        case LayerRole::Collision:
        case LayerRole::LosCollision:
            return TagRole::CollisionLayer;
        case LayerRole::Bounds:
            return TagRole::BoundsLayer;
        case LayerRole::Nodes:
            return TagRole::None;
        case LayerRole::Detail:
        case LayerRole::Unused:
            break;
    }
    return TagRole::DetailLayer;
}

std::string layerText(const LayerReading& layer, Warnings& warnings) {
    const std::string& name = layer.info.name;
    std::string text = "layer " + std::to_string(layer.slot) + " \"" + name + "\": " + roleText(layer) + "\n";
    std::vector<std::string> polyhedra, skeletons;
    for (const PolyInfo& poly : layer.info.polys) polyhedra.push_back(poly.name);
    for (const SceneNode& skeleton : layer.info.skeletons) skeletons.push_back(skeleton.name());
    if (!polyhedra.empty()) text += "  polyhedra: " + commaList(polyhedra) + "\n";
    if (!skeletons.empty()) text += "  skeletons: " + commaList(skeletons) + "\n";
    return text + tagLines(name, tagRole(layer.role)) + warnings.about(Message::Place::Layer, name);
}

std::string nodesText(const SceneScan& scan, Warnings& warnings) {
    std::string text;
    for (const BoneInfo& bone : scan.bones) {
        text += "node \"" + bone.name + "\": bone";
        if (bone.parent >= 0) text += " on \"" + at(scan.bones, bone.parent).name + "\"";
        text += "\n" + warnings.about(Message::Place::Node, bone.name);
    }
    for (const MarkerInfo& marker : scan.markers) {
        text += "node \"" + marker.name + "\": marker\n" + warnings.about(Message::Place::Node, marker.name);
    }
    return text;
}

std::string clipText(const ClipInfo& clip, Warnings& warnings) {
    std::string text = "clip \"" + clip.fullName + "\": sequence \"" + clip.name + "\", " +
                       std::to_string(truncatedToInt32(clip.length)) + " keys at " + std::to_string(clip.fps) +
                       " a second, priority " + std::to_string(clip.priority);
    for (const std::string& word : flagWords(clip.flags, kSequenceFlagWords)) text += ", " + word;
    return text + "\n" + tagLines(clip.fullName, TagRole::Clip) + warnings.about(Message::Place::Clip, clip.name);
}

std::string explanation(const SceneReading& reading) {
    Warnings warnings(reading.messages);
    std::string text;
    for (const LayerReading& layer : reading.scan.layers) text += layerText(layer, warnings);
    text += nodesText(reading.scan, warnings);
    for (const ClipInfo& clip : reading.scan.clips) text += clipText(clip, warnings);
    text += warnings.others();
    if (reading.error.empty()) return text;
    return text + "an export of the shape is refused: " + reading.error + "\n  hint: " + refusalHint(reading.messages) +
           "\n";
}

}  // namespace

Outcome runExplain(const Arguments& arguments, const Session& session) {
    const std::string& path = arguments.place(0);
    SceneOptions loading;
    if (const Outcome checked = readSceneOptions(arguments, path, loading); !checked.good()) return checked;
    standin::ImportResult loaded = loadScene(path, loading);
    if (!loaded.scene) return {UnreadableInput, loaded.error};
    for (const Message& warning : loaded.warnings) session.warning(warning.text);
    MessageUser user;
    PluginSession plugin(std::move(*loaded.scene), user);
    if (!plugin.openPanel()) return {Refused, path + ": " + user.message()};
    return printResult(forTerminal(explanation(readScene()), true));
}

}  // namespace marrowfen::cli
