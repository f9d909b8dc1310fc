#include <unistd.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <sstream>

#include "cli/command.h"
#include "cli/shape_file.h"
#include "cli/terminal_text.h"

namespace marrowfen::cli {

namespace {

Outcome dump(const std::string& path, const Session& session) {
    ShapeFile file;
    const std::string fault = loadShapeFile(path, file);
    if (!fault.empty()) return {UnreadableInput, fault};
    if (!newerVersion(file).empty()) session.warning(path + ": " + newerVersion(file));
    std::ostringstream text;
    file.shape.dumpText(text);
    // A stream keeps to itself that it got no memory.
    if (!text) return {OurFault, path + ": no memory for the dump"};
    // A terminal would obey what a name says.
    return printResult(isatty(STDOUT_FILENO) != 0 ? forTerminal(text.view(), true) : text.str());
}

}  // namespace

void addDumpCommand(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("dump", "print every table of a shape file as text");
    const auto path = std::make_shared<std::string>();
    command->add_option("FILE", *path, "DTS file of version 19 to 24, or DSQ file of version 24")->required();
    onRun(*command, session, [path, &session] { return dump(*path, session); });
}

}  // namespace marrowfen::cli
