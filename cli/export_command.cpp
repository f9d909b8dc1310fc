// `marrowfen export`: loads the scene, and does with the plug-in's panel what an artist does.

#include <sys/stat.h>
#include <unistd.h>

#include <commctrl.h>
#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <memory>
#include <sstream>

#include "cli/command.h"
#include "cli/export_report.h"
#include "cli/output_folder.h"
#include "cli/plugin_session.h"
#include "ground/ascii.h"
#include "plugin/resources/resource.h"

namespace marrowfen::cli {

namespace {

struct ExportOptions {
    std::string scene;
    std::string output;
    bool withAnimation = false;
    bool strict = false;
    SceneOptions loading;
};

bool isSequenceFile(const std::string& path) { return equalIgnoringCase(path.substr(path.size() - 4), ".dsq"); }

std::string checkOutputName(const std::string& path) {
    const bool good =
        path.size() > 4 && (isSequenceFile(path) || equalIgnoringCase(path.substr(path.size() - 4), ".dts"));
    return good ? "" : path + " ends neither in .dts nor in .dsq";
}

// Answers the save dialog, notes the messages, and shows the progress: a bar on a terminal, lines under -v.
class ExportUser : public headless::HeadlessUser {
public:
    ExportUser(const Session& session, std::string path)
        : session_(session), path_(std::move(path)), hasBar_(isatty(STDERR_FILENO) != 0 && !session.quiet) {}

    std::optional<std::string> savePath(const headless::SaveQuestion& question) override {
        pathFits_ = path_.size() < static_cast<size_t>(question.bufferSize);
        limit_ = question.bufferSize - 1;
        return path_;
    }

    void readMessage(const headless::Message& message) override {
        clearBar();
        if ((message.style & MB_ICONERROR) != 0) error_ = message.text;
        lastMessage_ = message.text;
    }

    void seeRepaint(HWND dialog) override {
        constexpr int kBarWidth = 30;
        char text[128];
        if (GetDlgItemTextA(dialog, IDC_PROGRESS_TEXT, text, sizeof text) == 0) return;
        const auto percent = static_cast<int>(SendDlgItemMessageA(dialog, IDC_PROGRESS_BAR, PBM_GETPOS, 0, 0));
        if (hasBar_) {
            const std::string done(static_cast<size_t>(percent * kBarWidth / 100), '#');
            std::fprintf(stderr, "\r\033[K[%-*s] %3d%% %s", kBarWidth, done.c_str(), percent, text);
            std::fflush(stderr);
            isBarShown_ = true;
        } else {
            session_.detail(std::to_string(percent) + "% " + text);
        }
    }

    void clearBar() {
        if (isBarShown_) std::fputs("\r\033[K", stderr);
        isBarShown_ = false;
    }

    bool pathFits() const { return pathFits_; }
    int pathLimit() const { return limit_; }
    const std::string& error() const { return error_; }
    const std::string& lastMessage() const { return lastMessage_; }

private:
    const Session& session_;
    std::string path_;
    bool hasBar_;
    bool isBarShown_ = false;
    bool pathFits_ = true;
    int limit_ = 0;
    std::string error_;        // text of an error message
    std::string lastMessage_;  // of any kind
};

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return std::move(content).str();
}

int fail(const Session& session, int code, const std::string& text) {
    session.error(text);
    return code;
}

// Presses the button, and says whether the panel could be opened at all.
bool pressExport(standin::Scene scene, const ExportOptions& options, ExportUser& user) {
    PluginSession plugin(std::move(scene), user);
    if (!plugin.openPanel()) return false;
    if (options.withAnimation) plugin.press(IDC_WITH_ANIMATION);
    plugin.press(isSequenceFile(options.output) ? IDC_EXPORT_DSQ : IDC_EXPORT_DTS);
    user.clearBar();
    return true;
}

// The exporter doesn't look at the results of its writes, so the files themselves have to tell: the log by its last
// line, the output by being readable to its end. Empty when both are whole.
std::string findIncomplete(const OutputFolder& folder, const std::string& log, bool isSequences, Shape& shape) {
    if (!log.ends_with("Export Complete\r\n")) return "incomplete log: " + folder.writeFault();
    std::ifstream file(folder.file(), std::ios::binary);
    std::string surplus;
    if (isSequences) {
        shape.readDsq(file, &surplus);
    } else {
        shape.readDts(file, &surplus);
    }
    if (!shape.hasError() && surplus.empty()) return {};
    return "incomplete (" + (shape.hasError() ? shape.error() : surplus) + "): " + folder.writeFault();
}

int deliverRefusal(const OutputFolder& folder, const ExportOptions& options, const ExportUser& user,
                   const Session& session) {
    if (!readFile(folder.log()).ends_with("Error: " + user.error())) {
        return fail(session, UnwritableOutput, options.output + ".log: incomplete: " + folder.writeFault());
    }
    if (const std::string failed = folder.deliverLog(); !failed.empty()) session.warning(failed);
    return fail(session, Refused, options.scene + ": " + user.error());
}

std::vector<std::string> collectWarnings(const ExportOptions& options, const std::string& log) {
    std::vector<std::string> warnings = logWarnings(log);
    const int clips = clipsFound(log);
    if (clips > 0 && !options.withAnimation && !isSequenceFile(options.output)) {
        warnings.push_back(std::to_string(clips) + (clips == 1 ? " animation isn't" : " animations aren't") +
                           " in the file: give --with-animation, or export to a .dsq file");
    }
    return warnings;
}

int runExport(const ExportOptions& options, const Session& session) {
    // Past a limit of the file size, writes shall fail like on a full disk.
    std::signal(SIGXFSZ, SIG_IGN);
    const OutputFolder folder(options.output);
    if (!folder.error().empty()) return fail(session, UnwritableOutput, folder.error());
    standin::LoadResult loaded = loadScene(options.scene, options.loading);
    if (!loaded.scene) return fail(session, UnreadableInput, loaded.error);

    ExportUser user(session, folder.file());
    if (!pressExport(std::move(*loaded.scene), options, user)) {
        return fail(session, Refused, options.scene + ": " + user.lastMessage());
    }
    if (!user.pathFits()) {
        return fail(session, UnwritableOutput,
                    options.output + ": the path is longer than the " + std::to_string(user.pathLimit()) +
                        " characters of the save dialog");
    }
    if (!user.error().empty()) return deliverRefusal(folder, options, user, session);

    Shape shape;
    const bool isSequences = isSequenceFile(options.output);
    const std::string log = readFile(folder.log());
    if (const std::string fault = findIncomplete(folder, log, isSequences, shape); !fault.empty()) {
        return fail(session, UnwritableOutput, options.output + ": " + fault);
    }
    struct stat written;
    const uintmax_t bytes = stat(folder.file().c_str(), &written) == 0 ? static_cast<uintmax_t>(written.st_size) : 0;
    if (const std::string failed = folder.deliverBoth(); !failed.empty())
        return fail(session, UnwritableOutput, failed);

    std::vector<std::string> warnings = std::move(loaded.warnings);
    for (auto& warning : collectWarnings(options, log)) warnings.push_back(std::move(warning));
    for (const std::string& warning : warnings) session.warning(warning);
    session.note(summary(options.output, shape, !isSequences, bytes));
    return options.strict && !warnings.empty() ? StrictWarnings : Done;
}

}  // namespace

void addExportCommand(CLI::App& app, Session& session) {
    auto options = std::make_shared<ExportOptions>();
    CLI::App* command = app.add_subcommand("export", "make a DTS or DSQ file of a scene");
    command->add_option("SCENE", options->scene, "a *.scene.json file, or a model (glTF, FBX, OBJ, ...)")->required();
    command
        ->add_option("OUTPUT", options->output, "ends in .dts (shape) or .dsq (sequences only); its log is OUTPUT.log")
        ->required()
        ->check(checkOutputName);
    command->add_flag("--with-animation", options->withAnimation, "put the animations into the .dts file");
    command->add_flag("--strict", options->strict,
                      "exit with 5 when there were warnings; the files are written all the same");
    options->loading.addTo(*command);
    command->callback([options, &session] { session.exitCode = runExport(*options, session); });
}

}  // namespace marrowfen::cli
