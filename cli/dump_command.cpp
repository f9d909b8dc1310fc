#include <unistd.h>

#include "cli/commands.h"
#include "cli/shape_file.h"
#include "cli/terminal_text.h"

namespace marrowfen::cli {

namespace {

Outcome dump(const std::string& path, const std::string& only, const Session& session) {
    ShapeFile file;
    const std::string fault = loadShapeFile(path, file);
    if (!fault.empty()) return {UnreadableInput, fault};
    if (!newerVersion(file).empty()) session.warning(path + ": " + newerVersion(file));
    const std::string text = dumpOf(file.shape, only);
    // A terminal would obey what a name says.
    return printResult(isatty(STDOUT_FILENO) != 0 ? forTerminal(text, true) : text);
}

}  // namespace

Outcome runDump(const Arguments& arguments, const Session& session) {
    return dump(arguments.place(0), arguments.text("--only"), session);
}

}  // namespace marrowfen::cli
