#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <new>
#include <string>

#include "cli/commands.h"
#include "cli/help.h"
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

Session sessionOf(const Arguments& arguments) {
    Session session;
    session.quiet = arguments.has("--quiet");
    session.verbosity = static_cast<int>(arguments.count("--verbose"));
    const std::string color = arguments.text("--color", "auto");
    const bool isWanted = isatty(STDERR_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr;
    session.isColored = color == "always" || (color == "auto" && isWanted);
    return session;
}

Outcome run(const CommandLine& line, const Session& session) {
    if (!line.fault.good()) return line.fault;
    if (line.arguments.has("--version")) return printResult(std::string("marrowfen ") + marrowfen::kVersion + "\n");
    if (line.arguments.has("--help")) return printResult(line.verb == nullptr ? commandHelp() : verbHelp(*line.verb));
    if (line.verb == nullptr) {
        for (const std::string& text : firstLines()) session.note(text);
        return {WrongUsage, {}};
    }
    return line.verb->run(line.arguments, session);
}

}  // namespace

int main(int argc, char** argv) {
    openStandardStreams();
    std::set_terminate(endForWantOfMemory);
    // Past a limit of the file size, writes shall fail like on a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
    Session session;
    try {
        const CommandLine line = readCommandLine({argv + 1, argv + argc});
        session = sessionOf(line.arguments);
        return session.tell(run(line, session));
    } catch (const std::bad_alloc&) {
        session.error("out of memory");
        return OurFault;
    }
}
