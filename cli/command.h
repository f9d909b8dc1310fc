#pragma once

// What the sub-commands of `marrowfen` share.

#include <string>

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

// What the options of all commands set.
struct Session {
    bool quiet = false;
    int verbosity = 0;  // 1 with -v, 2 with -vv
    bool isColored = false;

    // One line on standard error each. Notes are left out under -q, details unless -v is given.
    void error(const std::string& text) const;
    void hint(const std::string& text) const;
    void warning(const std::string& text) const;
    void note(const std::string& text) const;
    void detail(const std::string& text) const;

    // Says what is wrong, and gives the exit code.
    int tell(const Outcome& outcome) const;
};

// Writes a result to standard output.
Outcome printResult(const std::string& text);

// Writes a whole file or none, as an OutputFolder does.
Outcome writeWholeFile(const std::string& path, const std::string& content);

}  // namespace marrowfen::cli
