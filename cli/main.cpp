#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>
#include <string>

#include "cli/command.h"
#include "cli/staging_folder.h"
#include "ground/version.h"

namespace {

using namespace marrowfen::cli;

// A stream that is closed would be given to the first file that is opened, and get its messages or its bytes. What is
// opened here instead fails to be read and written like a closed one, but for messages, which go nowhere.
void openStandardStreams() {
    constexpr int kModes[] = {O_WRONLY, O_RDONLY, O_WRONLY};
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (fcntl(stream, F_GETFD) < 0) open("/dev/null", kModes[stream]);
    }
}

// Functions of libraries that may not throw need memory too.
[[noreturn]] void endForWantOfMemory() {
    static constexpr char kLine[] = "error: out of memory\n";
    try {
        if (std::current_exception()) std::rethrow_exception(std::current_exception());
    } catch (const std::bad_alloc&) {
        removeStagingFolders();
        if (write(STDERR_FILENO, kLine, sizeof kLine - 1) > 0) _exit(OurFault);
    } catch (...) {
    }
    std::abort();
}

int run(int argc, char** argv) {
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
    } catch (const CLI::ParseError& e) {
        // CLI11 numbers its errors; all of them are wrong usage here.
        if (app.exit(e) != 0) return WrongUsage;
        if (std::cout.flush()) return Done;
        session.error("standard output can't be written");
        return UnwritableOutput;
    }
    return session.exitCode;
}

}  // namespace

int main(int argc, char** argv) {
    openStandardStreams();
    std::set_terminate(endForWantOfMemory);
    // Past a limit of the file size, writes shall fail like on a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        return run(argc, argv);
    } catch (const std::bad_alloc&) {
        Session().error("out of memory");
        return OurFault;
    }
}
