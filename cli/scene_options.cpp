#include "cli/scene_options.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string_view>

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
    return standin::importModel(path, options.import);
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
