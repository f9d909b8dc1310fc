#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

#include "cli/command.h"
#include "shape/ascii.h"
#include "shape/shape.h"
#include "view/page_file.h"
#include "view/shape_gltf.h"

namespace marrowfen::cli {

namespace {

constexpr const char* kPageName = "viewer.html";  // beside the executable

struct ViewOptions {
    std::string input;
    std::string output;
};

bool endsWith(std::string_view text, std::string_view ending) {
    return text.size() >= ending.size() && equalIgnoringCase(text.substr(text.size() - ending.size()), ending);
}

// The whole file; false when it can't be read.
bool readWholeFile(const std::filesystem::path& path, std::string& content) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream all;
    all << file.rdbuf();
    content = all.str();
    return file.good() || (file.eof() && !file.bad());
}

int fail(const Session& session, int code, const std::string& text) {
    session.error(text);
    return code;
}

int writePage(const Session& session, const ViewOptions& options, const std::string& glb, const std::string& title) {
    std::error_code failure;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", failure);
    const std::filesystem::path pagePath = program.parent_path() / kPageName;
    std::string page;
    if (failure || !readWholeFile(pagePath, page)) {
        return fail(session, UnwritableOutput,
                    pagePath.string() + ": the viewer page isn't built; run scripts/build-viewer " +
                        program.parent_path().string() + ", or write a .glb");
    }
    const std::string filled = view::embedInPage(page, glb, title);
    if (filled.empty()) return fail(session, UnwritableOutput, pagePath.string() + ": not a viewer page");
    const std::string fault = writeWholeFile(options.output, filled);
    return fault.empty() ? Done : fail(session, UnwritableOutput, fault);
}

int view(const Session& session, const ViewOptions& options) {
    const bool asPage = endsWith(options.output, ".html");
    if (!asPage && !endsWith(options.output, ".glb")) {
        return fail(session, WrongUsage, options.output + ": the output's name must end in .glb or .html");
    }
    if (endsWith(options.input, ".dsq")) {
        return fail(session, UnreadableInput,
                    options.input +
                        ": a sequence file holds neither geometry nor hierarchy, there is nothing to see; "
                        "export the scene as .dts --with-animation and view that");
    }

    std::ifstream file(options.input, std::ios::binary);
    if (!file) return fail(session, UnreadableInput, options.input + ": can't be opened");
    Shape shape;
    shape.readDts(file);
    if (shape.hasError()) return fail(session, UnreadableInput, options.input + ": " + shape.error());

    const std::string title = std::filesystem::path(options.input).filename().string();
    const view::GltfResult gltf = view::shapeToGltf(shape, title);
    if (!gltf.error.empty()) return fail(session, UnreadableInput, options.input + ": " + gltf.error);
    for (const std::string& warning : gltf.warnings) session.warning(warning);
    if (asPage) return writePage(session, options, gltf.glb, title);
    const std::string fault = writeWholeFile(options.output, gltf.glb);
    return fault.empty() ? Done : fail(session, UnwritableOutput, fault);
}

}  // namespace

void addViewCommand(CLI::App& app, Session& session) {
    auto options = std::make_shared<ViewOptions>();
    CLI::App* command = app.add_subcommand("view", "Turn a DTS file into something to look at");
    command->add_option("FILE", options->input, "a .dts file")->required();
    command->add_option("OUT", options->output, "a .glb model, or an .html page that shows it")->required();
    command->callback([&session, options] { session.exitCode = view(session, *options); });
}

}  // namespace marrowfen::cli
