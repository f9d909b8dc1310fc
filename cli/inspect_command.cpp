
#include "cli/commands.h"
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

Outcome runInspect(const Arguments& arguments, const Session&) {
    return inspect({arguments.place(0), arguments.has("--json"), arguments.has("--strict")});
}

}  // namespace marrowfen::cli
