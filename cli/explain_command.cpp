// `marrowfen explain`: how the exporter reads the names of a scene. Nothing is made of it.

#include <algorithm>
#include <set>

#include "builder/notices.h"
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

// What is said, a line at a time: a name may hold anything, but no second line.
class Said {
public:
    void line(const std::string& line) { text_ += forTerminal(line) + "\n"; }
    void list(const std::string& what, const std::vector<std::string>& names) {
        if (!names.empty()) line("  " + what + ": " + commaList(names));
    }
    void lines(const std::vector<std::string>& lines) {
        for (const std::string& each : lines) line(each);
    }
    const std::string& text() const { return text_; }

private:
    std::string text_;
};

void sayTags(const std::string& fullName, TagRole role, Said& said) {
    const TagSplit tags = splitTags(fullName, role);
    said.list("tags understood", tags.understood);
    said.list("tags not understood", tags.unknown);
}

// The warnings about a layer, node or clip, each once: things of one name share them.
class Warnings {
public:
    explicit Warnings(const std::vector<Message>& messages) : messages_(messages), isSaid_(messages.size()) {}

    std::vector<std::string> about(Message::Place place, const std::string& name) {
        return linesOf([&](const Message& m) { return m.place == place && m.name == excerpt(name); }, "  ");
    }
    bool has(const MessageKind& kind, const std::string& name) const {
        return std::any_of(messages_.begin(), messages_.end(),
                           [&](const Message& m) { return m.kind == &kind && m.name == excerpt(name); });
    }
    std::vector<std::string> others() {
        return linesOf([&](const Message& m) { return !at(isSaid_, &m - messages_.data()); }, "");
    }

private:
    template <class Wanted>
    std::vector<std::string> linesOf(Wanted isWanted, const char* indent) {
        std::vector<std::string> lines;
        std::set<std::string> known;
        for (size_t i = 0; i < messages_.size(); ++i) {
            const Message& message = messages_[i];
            if (message.kind->severity != Severity::Warning || !isWanted(message)) continue;
            isSaid_[i] = true;
            const std::string line = std::string(indent) + "warning: " + message.kind->headline + ": " + message.text;
            if (known.insert(line).second) lines.push_back(line);
        }
        return lines;
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

void sayLayer(const LayerReading& layer, Warnings& warnings, Said& said) {
    const std::string& name = layer.info.name;
    said.line("layer " + std::to_string(layer.slot) + " \"" + name + "\": " + roleText(layer));
    std::vector<std::string> polyhedra, skeletons;
    for (const PolyInfo& poly : layer.info.polys) polyhedra.push_back(poly.name);
    for (const SceneNode& skeleton : layer.info.skeletons) skeletons.push_back(skeleton.name());
    said.list("polyhedra", polyhedra);
    said.list("skeletons", skeletons);
    sayTags(name, tagRole(layer.role), said);
    said.lines(warnings.about(Message::Place::Layer, name));
}

void sayNodes(const SceneScan& scan, Warnings& warnings, Said& said) {
    for (const BoneInfo& bone : scan.bones) {
        const std::string parent = bone.parent < 0 ? "" : " on \"" + at(scan.bones, bone.parent).name + "\"";
        said.line("node \"" + bone.name + "\": bone" + parent);
        said.lines(warnings.about(Message::Place::Node, bone.name));
    }
    for (const MarkerInfo& marker : scan.markers) {
        said.line("node \"" + marker.name + "\": marker");
        said.lines(warnings.about(Message::Place::Node, marker.name));
    }
}

std::string clipText(const ClipInfo& clip) {
    std::string text = "sequence \"" + clip.name + "\", " + std::to_string(truncatedToInt32(clip.length)) +
                       " keys at " + std::to_string(clip.fps) + " a second, priority " + std::to_string(clip.priority);
    for (const std::string& word : flagWords(clip.flags, kSequenceFlagWords)) text += ", " + word;
    return text;
}

void sayClip(const ClipInfo& clip, Warnings& warnings, Said& said) {
    const bool isSkipped = warnings.has(kClipSkipped, clip.name);
    said.line("clip \"" + clip.fullName + "\": " + (isSkipped ? "left out" : clipText(clip)));
    sayTags(clip.fullName, TagRole::Clip, said);
    said.lines(warnings.about(Message::Place::Clip, clip.name));
}

std::string explanation(const SceneReading& reading) {
    Warnings warnings(reading.messages);
    Said said;
    for (const LayerReading& layer : reading.scan.layers) sayLayer(layer, warnings, said);
    sayNodes(reading.scan, warnings, said);
    for (const ClipInfo& clip : reading.scan.clips) sayClip(clip, warnings, said);
    said.lines(warnings.others());
    if (!reading.error.empty()) {
        said.line("an export of the shape is refused: " + reading.error);
        said.line("  hint: " + refusalHint(reading.messages));
    }
    return said.text();
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
    return printResult(explanation(readScene()));
}

}  // namespace marrowfen::cli
