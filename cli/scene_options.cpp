#include "cli/scene_options.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string_view>

#include "cli/shape_file.h"
#include "ground/at.h"
#include "standin/host/scene_file.h"

namespace marrowfen::cli {

namespace {

using standin::UpAxis;

bool isSceneFile(std::string_view path) { return path.ends_with(".scene.json"); }

// A number in a range that ends where nobody means it.
CLI::Validator numberWithin(double least, double most) {
    return CLI::Validator(
        [least, most](const std::string& text) {
            double value = 0;
            const bool good =
                CLI::detail::lexical_cast(text, value) && std::isfinite(value) && value >= least && value <= most;
            return good ? std::string()
                        : text + " isn't a number from " + CLI::detail::to_string(least) + " to " +
                              CLI::detail::to_string(most);
        },
        "NUMBER");
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
    std::istringstream list(text);
    for (std::string entry; std::getline(list, entry, ',');) {
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

bool holds(const std::filesystem::path& path, const std::string& content) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return false;
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()) == content;
}

}  // namespace

void SceneOptions::addTo(CLI::App& command) {
    const std::map<std::string, double> kUnits = {{"mm", 0.001}, {"cm", 0.01}, {"m", 1}, {"in", 0.0254}};
    const std::map<std::string, UpAxis> kAxes = {{"x", UpAxis::X}, {"y", UpAxis::Y}, {"z", UpAxis::Z}};
    const auto add = [&](CLI::Option* option) { given.push_back(option->group("Models")); };
    add(command
            .add_option("--fps", import.frameRate, "frames a second to sample animations at (the file's own, or 30)")
            ->check(numberWithin(1, 1000)));
    add(command.add_option("--scale", import.scale, "factor on a model's size")->check(numberWithin(1e-6, 1e6)));
    add(command
            .add_option_function<std::string>(
                "--unit", [this, kUnits](const std::string& unit) { import.unit = kUnits.at(unit); },
                "what the model counts in, whatever its file says")
            ->check(CLI::IsMember(kUnits)));
    add(command
            .add_option_function<std::string>(
                "--up", [this, kAxes](const std::string& axis) { import.up = kAxes.at(axis); },
                "the model's upright axis, whatever its format says")
            ->check(CLI::IsMember(kAxes)));
    add(command.add_option("--turn", import.turnDegrees, "degrees to turn the model to the left")
            ->check(numberWithin(-360, 360)));
    const auto addList = [&](const char* name, CLI::callback_t take, const char* help) {
        add(command.add_option(name, std::move(take), help)->type_size(1)->expected(1)->take_all());
    };
    addList(
        "--layer",
        [this](const std::vector<std::string>& texts) {
            for (const std::string& text : texts) {
                const std::string fault = addLayer(text, import.layers);
                if (!fault.empty()) throw CLI::ValidationError("--layer", fault);
            }
            return true;
        },
        "'LAYER=PATTERN': nodes called like the pattern become that layer; the first match counts");
    addList(
        "--loop",
        [this](const std::vector<std::string>& texts) {
            import.loops = texts;
            return true;
        },
        "a pattern for the names of animations that loop");
    add(command.add_option_function<std::string>(
        "--levels",
        [this](const std::string& text) {
            const std::string fault = readLevels(text, import.levels);
            if (!fault.empty()) throw CLI::ValidationError("--levels", fault);
        },
        "levels of detail, such as 64,32:50%,16:25%: sizes in pixels and parts of the triangles"));
    add(command.add_option("--max-triangles", import.mostTriangles, "of each level of detail")
            ->check(CLI::Range(size_t{4}, size_t{100000000})));
    add(command.add_option("--for", forShape, "the shape that the animations are for: its nodes' names are taken"));
    add(command.add_flag("--single-sided", import.singleSided, "leave out the backs of double-sided faces"));
    add(command.add_flag("--textures", import.plainTextures,
                         "write a plain texture for materials that have a colour only"));
    add(command.add_flag("--no-textures", import.noTextures, "write no textures beside the output"));
}

Outcome checkOptions(const std::string& path, const SceneOptions& options) {
    if (!isSceneFile(path)) return {};
    for (const CLI::Option* option : options.given) {
        if (option->count() == 0) continue;
        return {WrongUsage, path + ": " + option->get_name() + " is for models; a scene file says all by itself"};
    }
    return {};
}

standin::ImportResult loadScene(const std::string& path, const SceneOptions& options) {
    if (isSceneFile(path)) return {standin::readSceneFile(path), {}, {}};
    standin::ImportOptions import = options.import;
    if (!options.forShape.empty()) {
        ShapeFile file;
        const std::string fault = loadShapeFile(options.forShape, file);
        if (!fault.empty()) return {{{}, fault, {}}, {}, {}};
        std::set<int32_t> names;
        for (const Shape::Node& node : file.shape.nodes) {
            if (names.insert(node.name).second) import.shapeNodes.push_back(at(file.shape.names, node.name));
        }
    }
    return standin::importModel(path, import);
}

Outcome writeTextures(const standin::ImportResult& loaded, const std::string& output, const Session& session) {
    const std::filesystem::path folder = std::filesystem::path(output).parent_path();
    for (const auto& [name, content] : loaded.textures) {
        const std::filesystem::path path = folder / name;
        if (holds(path, content)) continue;
        const Outcome written = writeWholeFile(path.string(), content);
        if (!written.good()) return written;
        session.detail("texture " + path.string() + " is written");
    }
    return {};
}

}  // namespace marrowfen::cli
