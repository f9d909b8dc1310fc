#include <CLI/CLI.hpp>
#include <memory>

#include "cli/command.h"
#include "cli/inspect_report.h"

namespace marrowfen::cli {

namespace {

struct InspectOptions {
    std::string path;
    bool json = false;
    bool strict = false;
};

Outcome inspect(const InspectOptions& options) {
    ShapeFile file;
    const std::string fault = loadShapeFile(options.path, file);
    if (!fault.empty()) return {UnreadableInput, fault};
    const std::vector<ShapeProblem> problems = problemsOf(file);
    const Outcome printed = printResult(options.json ? inspectJson(file, problems) : inspectText(file, problems));
    return printed.good() && options.strict && !problems.empty() ? Outcome{StrictWarnings, {}} : printed;
}

}  // namespace

void addInspectCommand(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("inspect", "tell what is in a DTS or DSQ file, and what is wrong with it");
    const auto options = std::make_shared<InspectOptions>();
    command->add_option("FILE", options->path, "DTS file of version 19 to 24, or DSQ file of version 24")->required();
    command->add_flag("--json", options->json, "print one JSON object");
    command->add_flag("--strict", options->strict, "exit with 5 when something is wrong with it");
    onRun(*command, session, [options] { return inspect(*options); });
}

}  // namespace marrowfen::cli
