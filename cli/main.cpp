#include <CLI/CLI.hpp>
#include <new>
#include <string>

#include "cli/command.h"
#include "ground/version.h"

int main(int argc, char** argv) {
    using namespace marrowfen::cli;

    Session session;
    CLI::App app{"Marrowfen turns a 3D scene into the DTS and DSQ files that a game engine loads.", "marrowfen"};
    app.set_version_flag("--version", std::string("marrowfen ") + marrowfen::kVersion);
    app.add_flag("-q,--quiet", session.quiet, "only errors on standard error");
    app.add_flag("-v,--verbose", session.verbose, "details on standard error");
    app.require_subcommand(1);
    app.fallthrough();
    for (const auto add : {addExportCommand, addExplainCommand, addImportCommand, addFormatsCommand, addAddNodeCommand,
                           addDumpCommand, addInspectCommand, addViewCommand}) {
        add(app, session);
    }

    try {
        app.parse(argc, argv);
    } catch (const std::bad_alloc&) {
        session.error("out of memory");
        return OurFault;
    } catch (const CLI::ParseError& e) {
        // CLI11 numbers its errors; all of them are wrong usage here.
        return app.exit(e) == 0 ? Done : WrongUsage;
    }
    return session.exitCode;
}
