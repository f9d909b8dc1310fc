#include <algorithm>

#include "cli/commands.h"
#include "cli/inspect_report.h"
#include "cli/terminal_text.h"
#include "shape/problem_kinds.h"

namespace marrowfen::cli {

namespace {

struct Inspection {
    bool asJson = false;
    bool onlyFindings = false;
    std::vector<std::string> ignored;  // codes
    std::string text;                  // of the files so far
    bool anyFinding = false;
    bool anyError = false;
};

Outcome checkCodes(const std::vector<std::string>& codes) {
    std::vector<std::string_view> known;
    for (const MessageKind* kind : problem::kAll) known.emplace_back(kind->code);
    for (const std::string& code : codes) {
        if (std::find(known.begin(), known.end(), code) != known.end()) continue;
        return {WrongUsage, "inspect: --ignore: there is no finding " + code, didYouMean(code, known)};
    }
    return {};
}

std::string checkText(const ShapeFile& file, const std::vector<ShapeProblem>& findings) {
    std::string text;
    for (const ShapeProblem& finding : findings) text += forTerminal(file.path) + ": " + findingText(finding) + "\n";
    return text;
}

void add(const ShapeFile& file, Inspection& all) {
    std::vector<ShapeProblem> findings = problemsOf(file);
    std::erase_if(findings, [&](const ShapeProblem& finding) {
        return std::count(all.ignored.begin(), all.ignored.end(), finding.kind->code) > 0;
    });
    all.anyFinding = all.anyFinding || !findings.empty();
    all.anyError = all.anyError || anyBroken(findings);
    if (all.asJson) {
        all.text += inspectJson(file, findings);
    } else if (all.onlyFindings) {
        all.text += checkText(file, findings);
    } else {
        all.text += (all.text.empty() ? "" : "\n") + inspectText(file, findings);
    }
}

}  // namespace

Outcome runInspect(const Arguments& arguments, const Session& session) {
    Inspection all;
    all.asJson = arguments.has("--json");
    all.onlyFindings = arguments.has("--check");
    all.ignored = arguments.all("--ignore");
    if (const Outcome checked = checkCodes(all.ignored); !checked.good()) return checked;
    Outcome outcome;
    for (const std::string& path : arguments.places()) {
        ShapeFile file;
        const std::string fault = loadShapeFile(path, file);
        if (fault.empty()) {
            add(file, all);
            continue;
        }
        // The others are inspected all the same; the last fault is the one that the caller tells.
        if (!outcome.good()) session.error(outcome.error);
        outcome = {UnreadableInput, fault};
    }
    const Outcome printed = printResult(all.text);
    if (!printed.good() || !outcome.good()) return printed.good() ? outcome : printed;
    if (all.onlyFindings && all.anyError) return {Refused, {}};
    return {arguments.has("--strict") && all.anyFinding ? StrictWarnings : Done, {}};
}

}  // namespace marrowfen::cli
