#include "cli/scene_options.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string_view>

#include "cli/shape_file.h"
#include "ground/at.h"
#include "ground/pieces.h"
#include "ground/whole_file.h"
#include "standin/host/load_notices.h"
#include "standin/host/scene_file.h"

namespace marrowfen::cli {

namespace {

using standin::UpAxis;

bool isModelOption(const std::string& name) {
    for (const VerbRow& verb : verbTable()) {
        for (const OptionGroup& group : verb.groups) {
            if (group.title != kModelGroup) continue;
            return std::any_of(group.rows.begin(), group.rows.end(),
                               [&](const OptionRow& row) { return name == row.name; });
        }
    }
    return false;
}

// What stands at both ends of the last '='.
std::string addLayer(const std::string& text, std::vector<standin::LayerOption>& layers) {
    const size_t equal = text.rfind('=');
    if (equal == std::string::npos || equal == 0 || equal + 1 == text.size()) {
        return text + " isn't a layer and a pattern: 'collision:box=*_col*'";
    }
    layers.push_back({text.substr(0, equal), text.substr(equal + 1)});
    return {};
}

// "64,32:50%,16:25%"; a level without a part has half the triangles of the one before.
std::string readLevels(const std::string& text, std::vector<standin::LevelOption>& levels) {
    const std::string fault = text + " isn't a list of sizes and parts: 64,32:50%,16:25%";
    levels.clear();
    for (const std::string& entry : piecesOf(text, ',')) {
        standin::LevelOption level;
        char* rest = nullptr;
        level.size = static_cast<int>(std::strtol(entry.c_str(), &rest, 10));
        level.percent = levels.empty() ? 100 : levels.back().percent / 2;
        if (*rest == ':') {
            level.percent = std::strtod(rest + 1, &rest);
            if (*rest == '%') ++rest;
        }
        const bool falls = levels.empty() || level.size < levels.back().size;
        const bool isPart = level.percent > 0 && level.percent <= 100 && (!levels.empty() || level.percent == 100);
        if (*rest != '\0' || level.size < 1 || level.size > 32767 || !falls || !isPart) return fault;
        levels.push_back(level);
    }
    return levels.empty() ? fault : std::string();
}

bool exists(const std::string& path) {
    std::error_code fault;
    return std::filesystem::exists(path, fault);
}

bool holds(const std::filesystem::path& path, const std::string& content) {
    std::error_code fault;
    return std::filesystem::is_regular_file(path, fault) && readWholeFile(path.string()) == content;
}

void countTriangles(const std::vector<standin::Node>& nodes, std::map<int16_t, size_t>& counts) {
    for (const standin::Node& node : nodes) {
        counts[node.layer] += node.polyhedron.faces.size();
        countTriangles(node.children, counts);
    }
}

// A scene file says all by itself.
Outcome checkForScene(const Arguments& arguments, const std::string& scene) {
    for (const auto& [name, values] : arguments.given()) {
        if (isModelOption(name) && isSceneFile(scene))
            return {WrongUsage, scene + ": " + name + " is for models; a scene file says all by itself"};
    }
    return {};
}

}  // namespace

bool isSceneFile(const std::string& path) {
    if (path.ends_with(".json")) return true;
    // Written under another name; only the beginning of a file is looked at, and nothing that might never end.
    constexpr std::streamsize kBeginning = 256;
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) return false;
    std::string begin(kBeginning, '\0');
    std::ifstream(path, std::ios::binary).read(begin.data(), kBeginning);
    return begin.find("\"marrowfen-scene\"") != std::string::npos;
}

Outcome readSceneOptions(const Arguments& arguments, const std::string& scene, SceneOptions& options) {
    static const std::map<std::string, double> kUnits = {
        {"", 0}, {"mm", 0.001}, {"cm", 0.01}, {"m", 1}, {"in", 0.0254}};
    static const std::map<std::string, std::optional<UpAxis>> kAxes = {
        {"", {}}, {"x", UpAxis::X}, {"y", UpAxis::Y}, {"z", UpAxis::Z}};
    if (const Outcome checked = checkForScene(arguments, scene); !checked.good()) return checked;
    standin::ImportOptions& import = options.import;
    import.frameRate = static_cast<float>(arguments.number("--fps", 0));
    import.scale = static_cast<float>(arguments.number("--scale", 1));
    import.unit = kUnits.at(arguments.text("--unit"));
    import.up = kAxes.at(arguments.text("--up"));
    import.turnDegrees = static_cast<float>(arguments.number("--turn", 0));
    import.loops = arguments.all("--loop");
    import.mostTriangles = static_cast<size_t>(arguments.number("--max-triangles", 0));
    import.singleSided = arguments.has("--single-sided");
    import.plainTextures = arguments.has("--textures");
    import.noTextures = arguments.has("--no-textures");
    import.cpuSeconds = static_cast<unsigned>(arguments.number("--max-seconds", 0));
    import.wallSeconds = 2 * import.cpuSeconds;
    import.memoryMegabytes = static_cast<unsigned>(arguments.number("--max-memory", 0));
    options.forShape = arguments.text("--for");
    for (const std::string& text : arguments.all("--layer")) {
        if (const std::string fault = addLayer(text, import.layers); !fault.empty())
            return {WrongUsage, "--layer: " + fault};
    }
    if (!arguments.has("--levels")) return {};
    const std::string fault = readLevels(arguments.text("--levels"), import.levels);
    return fault.empty() ? Outcome() : Outcome{WrongUsage, "--levels: " + fault};
}

standin::ImportResult loadScene(const std::string& path, const SceneOptions& options) {
    if (isSceneFile(path)) return {standin::readSceneFile(path), {}, {}, {{path, exists(path)}}};
    standin::ImportOptions import = options.import;
    if (!options.forShape.empty()) {
        ShapeFile file;
        const std::string fault = loadShapeFile(options.forShape, file);
        if (!fault.empty())
            return {{{}, fault, {}}, {}, {}, {{options.forShape, exists(options.forShape)}, {path, exists(path)}}};
        std::set<int32_t> names;
        for (const Shape::Node& node : file.shape.nodes) {
            if (names.insert(node.name).second) import.shapeNodes.push_back(at(file.shape.names, node.name));
        }
    }
    standin::ImportResult result = standin::importModel(path, import);
    // What ended the child process before it could tell has the model itself at least.
    if (result.files.empty()) result.files.push_back({path, exists(path)});
    if (!options.forShape.empty()) result.files.push_back({options.forShape, true});
    return result;
}

size_t trianglesOfLargestLayer(const standin::Scene& scene) {
    std::map<int16_t, size_t> triangles;
    countTriangles(scene.nodes, triangles);
    size_t most = 0;
    for (const auto& [layer, count] : triangles) most = std::max(most, count);
    return most;
}

std::string wayToFewerTriangles(const std::string& path, const standin::ImportResult& loaded, size_t most) {
    if (isSceneFile(path)) return {};
    // Strips of a usual model take less than five indices for three triangles, and a mesh holds 65535.
    constexpr size_t kUsuallyFit = 40000;
    const bool hasBacks = std::any_of(loaded.warnings.begin(), loaded.warnings.end(), [](const Message& warning) {
        return warning.kind == &standin::load::kBackFaces;
    });
    return "; --max-triangles " + std::to_string(std::min(kUsuallyFit, most * 4 / 5)) + " does that" +
           (hasBacks ? ", and --single-sided may be enough" : "");
}

Outcome addTextures(const standin::ImportResult& loaded, const std::string& output, const Session& session,
                    OutputFolder& outputs, std::vector<std::string>& written) {
    const std::filesystem::path folder = std::filesystem::path(output).parent_path();
    for (const auto& [name, content] : loaded.textures) {
        const std::filesystem::path path = folder / name;
        written.push_back(path.string());
        if (holds(path, content)) continue;
        if (const Outcome added = outputs.add(path.string(), content); !added.good()) return added;
        session.detail("texture " + path.string() + " is written");
    }
    return {};
}

}  // namespace marrowfen::cli
