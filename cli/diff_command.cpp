#include "cli/commands.h"
#include "cli/shape_diff.h"
#include "cli/terminal_text.h"

namespace marrowfen::cli {

namespace {

constexpr const char* kNoFile = "/dev/null";  // git's word for the other side of a file that is new or gone

}  // namespace

Outcome runDiff(const Arguments& arguments, const Session&) {
    ShapeFile files[2];
    for (size_t i = 0; i < 2; ++i) {
        if (arguments.place(i) == kNoFile) continue;
        const std::string fault = loadShapeFile(arguments.place(i), files[i]);
        if (!fault.empty()) return {UnreadableInput, fault};
        if (arguments.place(1 - i) == kNoFile) files[1 - i].kind = files[i].kind;
    }
    if (files[0].kind != files[1].kind) {
        return {WrongUsage, arguments.place(1) + ": a shape and a file of sequences can't be compared"};
    }
    std::vector<std::string> lines = differences(files[0], files[1]);
    if (lines.empty()) return {};
    lines.insert(lines.begin(), {"--- " + arguments.place(0), "+++ " + arguments.place(1)});
    std::string text;
    for (const std::string& line : lines) text += forTerminal(line) + "\n";
    const Outcome printed = printResult(text);
    return printed.good() ? Outcome{Refused, {}} : printed;
}

}  // namespace marrowfen::cli
