#include <sys/auxv.h>

#include <filesystem>

#include "cli/commands.h"
#include "cli/output_folder.h"
#include "cli/shape_file.h"
#include "ground/ascii.h"
#include "ground/whole_file.h"
#include "view/added_sequences.h"
#include "view/page_file.h"
#include "view/shape_gltf.h"

namespace marrowfen::cli {

namespace {

constexpr const char* kPageName = "viewer.html";  // beside the executable
constexpr const char* kInstalledPage = "../share/marrowfen/viewer.html";

struct ViewOptions {
    std::string input;
    std::string output;
    std::vector<std::string> sequences;
};

// The executable's own folder. A system without /proc still tells by which path it was called.
std::filesystem::path ownFolder() {
    std::error_code failure;
    const auto* called = reinterpret_cast<const char*>(getauxval(AT_EXECFN));
    std::filesystem::path own = std::filesystem::read_symlink("/proc/self/exe", failure);
    if (failure && called != nullptr) own = std::filesystem::canonical(called, failure);
    return own.parent_path();
}

Outcome writePage(OutputFolder& folder, const std::string& glb, const std::string& title) {
    const std::filesystem::path place = ownFolder();
    std::string page = readWholeFile(place / kPageName);
    if (page.empty()) page = readWholeFile(place / kInstalledPage);
    const std::filesystem::path pagePath = place / kPageName;
    if (page.empty()) {
        return {UnwritableOutput, pagePath.string() + ": the viewer page isn't built; run scripts/build-viewer " +
                                      place.string() + ", or write a .glb"};
    }
    const std::string filled = view::embedInPage(page, glb, title);
    if (filled.empty()) return {UnwritableOutput, pagePath.string() + ": not a viewer page"};
    return folder.deliverText(filled);
}

// Empty on success, else one line that names the file.
std::string addFrom(const ShapeFile& added, Shape& shape, std::vector<std::string>& warnings) {
    if (added.kind != ShapeFileKind::Dsq) return added.path + ": --sequences takes .dsq files";
    std::vector<std::string> found;
    const std::string fault = view::appendSequences(shape, added.shape, found);
    for (const std::string& warning : found) warnings.push_back(added.path + ": " + warning);
    return fault.empty() ? fault : added.path + ": " + fault;
}

Outcome view(const Session& session, const ViewOptions& options) {
    const bool asPage = endsWithIgnoringCase(options.output, ".html");
    if (!asPage && !endsWithIgnoringCase(options.output, ".glb")) {
        return {WrongUsage, options.output + ": the output's name must end in .glb or .html"};
    }
    std::vector<std::string> inputs = options.sequences;
    inputs.push_back(options.input);
    OutputFolder folder(options.output, inputs);
    if (!folder.made().good()) return folder.made();
    ShapeFile file;
    std::string fault = loadShapeFile(options.input, file);
    if (!fault.empty()) return {UnreadableInput, fault};
    if (!newerVersion(file).empty()) session.warning(options.input + ": " + newerVersion(file));
    if (file.kind == ShapeFileKind::Dsq) {
        return {WrongUsage, options.input +
                                ": holds keys for nodes but no shape to move; view a .dts with --sequences " +
                                options.input};
    }
    std::vector<std::string> warnings;
    for (const std::string& path : options.sequences) {
        ShapeFile added;
        fault = loadShapeFile(path, added);
        if (fault.empty()) fault = addFrom(added, file.shape, warnings);
        if (!fault.empty()) return {UnreadableInput, fault};
    }

    const std::string title = std::filesystem::path(options.input).filename().string();
    const view::GltfResult gltf = view::shapeToGltf(file.shape, title);
    if (!gltf.error.empty()) return {UnreadableInput, options.input + ": " + gltf.error};
    warnings.insert(warnings.end(), gltf.warnings.begin(), gltf.warnings.end());
    for (const std::string& warning : warnings) session.warning(warning);
    return asPage ? writePage(folder, gltf.glb, title) : folder.deliverText(gltf.glb);
}

}  // namespace

Outcome runView(const Arguments& arguments, const Session& session) {
    return view(session, {arguments.place(0), arguments.place(1), arguments.all("--sequences")});
}

}  // namespace marrowfen::cli
