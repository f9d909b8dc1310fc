#pragma once

// What the sub-commands of `marrowfen` share.

#include <functional>
#include <string>

namespace CLI {
class App;
}

namespace marrowfen::cli {

enum ExitCode : int {
    Done = 0,
    Refused = 1,  // the exporter refused the scene
    WrongUsage = 2,
    UnreadableInput = 3,  // can't be read, or is malformed
    UnwritableOutput = 4,
    StrictWarnings = 5,  // warnings under --strict
    OurFault = 70,       // no memory, or a mistake of this program
};

// How something that a sub-command does ended, and how the sub-command itself ends.
struct Outcome {
    ExitCode code = Done;
    std::string error;   // one line for standard error, naming the file and the place; empty where nothing is wrong
    std::string hint{};  // what is in the way and the way out, for the line after it; empty for none

    bool good() const { return code == Done; }
};

// What is set before the sub-command's own options.
struct Session {
    bool quiet = false;
    bool verbose = false;
    int exitCode = Done;  // of the sub-command that ran

    // One line on standard error each. Notes are left out under -q, details unless -v is given; colour only on a
    // terminal without NO_COLOR.
    void error(const std::string& text) const;
    void hint(const std::string& text) const;
    void warning(const std::string& text) const;
    void note(const std::string& text) const;
    void detail(const std::string& text) const;
};

// Writes a result to standard output.
Outcome printResult(const std::string& text);

// Writes a whole file or none, as an OutputFolder does.
Outcome writeWholeFile(const std::string& path, const std::string& content);

// What the sub-command does when it is the one. Its outcome is told and becomes the exit code here, for all of them.
void onRun(CLI::App& command, Session& session, const std::function<Outcome()>& run);

void addExportCommand(CLI::App& app, Session& session);
void addFormatsCommand(CLI::App& app, Session& session);
void addImportCommand(CLI::App& app, Session& session);
void addExplainCommand(CLI::App& app, Session& session);
void addAddNodeCommand(CLI::App& app, Session& session);
void addDumpCommand(CLI::App& app, Session& session);
void addInspectCommand(CLI::App& app, Session& session);
void addViewCommand(CLI::App& app, Session& session);

}  // namespace marrowfen::cli
