#include <unistd.h>

#include <sstream>

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
    std::ostringstream text;
    file.shape.dumpText(text, only);
    // A stream keeps to itself that it got no memory.
    if (!text) return {OurFault, path + ": no memory for the dump"};
    // A terminal would obey what a name says.
    return printResult(isatty(STDOUT_FILENO) != 0 ? forTerminal(text.view(), true) : text.str());
}

}  // namespace

Outcome runDump(const Arguments& arguments, const Session& session) {
    return dump(arguments.place(0), arguments.text("--only"), session);
}

}  // namespace marrowfen::cli
