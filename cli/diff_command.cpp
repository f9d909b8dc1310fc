#include "cli/commands.h"
#include "cli/shape_diff.h"

namespace marrowfen::cli {

Outcome runDiff(const Arguments& arguments, const Session&) {
    ShapeFile files[2];
    for (size_t i = 0; i < 2; ++i) {
        const std::string fault = loadShapeFile(arguments.place(i), files[i]);
        if (!fault.empty()) return {UnreadableInput, fault};
    }
    if (files[0].kind != files[1].kind) {
        return {WrongUsage, arguments.place(1) + ": a shape and a file of sequences can't be compared"};
    }
    std::string text;
    for (const std::string& line : differences(files[0], files[1])) text += line + "\n";
    if (text.empty()) return {};
    const Outcome printed = printResult("--- " + arguments.place(0) + "\n+++ " + arguments.place(1) + "\n" + text);
    return printed.good() ? Outcome{Refused, {}} : printed;
}

}  // namespace marrowfen::cli
