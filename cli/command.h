#pragma once

// What the sub-commands of `marrowfen` share.

#include <string>

#include "standin/host/scene.h"

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
};

// What is set before the sub-command's own options.
struct Session {
    bool quiet = false;
    bool verbose = false;
    int exitCode = Done;  // a sub-command's result

    // One line on standard error each. Notes are left out under -q, details unless -v is given; colour only on a
    // terminal without NO_COLOR.
    void error(const std::string& text) const;
    void warning(const std::string& text) const;
    void note(const std::string& text) const;
    void detail(const std::string& text) const;
};

// Options of commands that load a scene.
struct SceneOptions {
    float fps = 30;
    float scale = 1;

    void addTo(CLI::App& command);
};

// A scene file or, through Assimp, a model; the file name's ending decides.
standin::LoadResult loadScene(const std::string& path, const SceneOptions& options);

// Writes a result to standard output. False, with the error told and the exit code set, when that can't be done.
bool printResult(const std::string& text, Session& session);

// Writes a whole file or none: into a temporary file beside it that is renamed after the close. Empty on success,
// else one line that names the file.
std::string writeWholeFile(const std::string& path, const std::string& content);

void addExportCommand(CLI::App& app, Session& session);
void addImportCommand(CLI::App& app, Session& session);
void addAddNodeCommand(CLI::App& app, Session& session);
void addDumpCommand(CLI::App& app, Session& session);
void addInspectCommand(CLI::App& app, Session& session);
void addViewCommand(CLI::App& app, Session& session);

}  // namespace marrowfen::cli
