#include <CLI/CLI.hpp>
#include <memory>
#include <sstream>

#include "cli/command.h"
#include "cli/shape_file.h"

namespace marrowfen::cli {

namespace {

void dump(const std::string& path, Session& session) {
    ShapeFile file;
    const std::string fault = loadShapeFile(path, file);
    if (!fault.empty()) {
        session.error(fault);
        session.exitCode = UnreadableInput;
        return;
    }
    std::ostringstream text;
    file.shape.dumpText(text);
    printResult(text.str(), session);
}

}  // namespace

void addDumpCommand(CLI::App& app, Session& session) {
    CLI::App* command = app.add_subcommand("dump", "print every table of a shape file as text");
    const auto path = std::make_shared<std::string>();
    command->add_option("FILE", *path, "DTS file of version 19 to 24, or DSQ file of version 24")->required();
    command->callback([path, &session] { dump(*path, session); });
}

}  // namespace marrowfen::cli
