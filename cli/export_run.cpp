#include "cli/export_run.h"

// Loads the scene, and does with the plug-in's panel what an artist does.

#include <sys/stat.h>

#include <commctrl.h>
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>

#include "builder/refusals.h"
#include "cli/export_report.h"
#include "cli/output_folder.h"
#include "cli/plugin_session.h"
#include "cli/progress_bar.h"
#include "cli/scene_options.h"
#include "ground/ascii.h"
#include "ground/excerpt.h"
#include "ground/pieces.h"
#include "ground/whole_file.h"
#include "plugin/export_messages.h"
#include "plugin/resources/resource.h"

namespace marrowfen::cli {

namespace {

namespace fs = std::filesystem;

constexpr size_t kMostErrorText = 1000;  // an error quotes names of whatever length
constexpr size_t kEndingSize = 4;        // of ".dts" and ".dsq"
constexpr size_t kOutput = 0, kLog = 1;  // of the run's OutputFolder

bool isSequenceFile(const std::string& path) {
    return equalIgnoringCase(path.substr(path.size() - kEndingSize), ".dsq");
}

// Answers the save dialog, notes the messages, and shows the progress: a bar on a terminal, lines under -v.
class ExportUser : public headless::HeadlessUser {
public:
    ExportUser(const Session& session, std::string path) : session_(session), path_(std::move(path)), bar_(session) {}

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
        char text[128];
        if (GetDlgItemTextA(dialog, IDC_PROGRESS_TEXT, text, sizeof text) == 0) return;
        const auto percent = static_cast<int>(SendDlgItemMessageA(dialog, IDC_PROGRESS_BAR, PBM_GETPOS, 0, 0));
        if (bar_.isDrawn()) {
            bar_.show(percent / 100.0, std::to_string(percent) + "% " + text);
        } else {
            endStep();
            session_.detail(std::to_string(percent) + "% " + text);
        }
    }

    // Says how long the last step took.
    void endStep() {
        const auto now = std::chrono::steady_clock::now();
        char seconds[32];
        std::snprintf(seconds, sizeof seconds, "     %.3f s", std::chrono::duration<double>(now - stepBegan_).count());
        if (hasStep_) session_.detail(seconds);
        hasStep_ = true;
        stepBegan_ = now;
    }

    void clearBar() { bar_.clear(); }

    bool pathFits() const { return pathFits_; }
    int pathLimit() const { return limit_; }
    const std::string& error() const { return error_; }
    const std::string& lastMessage() const { return lastMessage_; }

private:
    const Session& session_;
    std::string path_;
    ProgressBar bar_;
    bool hasStep_ = false;
    std::chrono::steady_clock::time_point stepBegan_;
    bool pathFits_ = true;
    int limit_ = 0;
    std::string error_;        // text of an error message
    std::string lastMessage_;  // of any kind
};

// Presses the button. messages: what the exporter told.
Outcome pressExport(standin::Scene scene, const ExportOptions& options, ExportUser& user,
                    std::vector<Message>& messages) {
    PluginSession plugin(std::move(scene), user);
    if (!plugin.openPanel()) return {Refused, options.scene + ": " + user.lastMessage()};
    if (options.withAnimation) plugin.press(IDC_WITH_ANIMATION);
    plugin.press(isSequenceFile(options.output) ? IDC_EXPORT_DSQ : IDC_EXPORT_DTS);
    user.clearBar();
    messages = plugin.messages();
    if (user.pathFits()) return {};
    return {UnwritableOutput, options.output + ": the path is longer than the " + std::to_string(user.pathLimit()) +
                                  " characters of the save dialog"};
}

// Why a file came out incomplete, as the exporter met it.
std::string writeFault(const std::vector<Message>& messages) {
    for (const Message& message : messages) {
        if (message.kind == &plugin::kWriteFailed) return message.text;
    }
    return {};
}

Outcome deliverRefusal(OutputFolder& folder, const ExportOptions& options, const ExportUser& user,
                       const std::vector<Message>& messages, const std::function<std::string()>& wayToFewer,
                       const Session& session) {
    if (const std::string fault = writeFault(messages); !fault.empty()) {
        return {UnwritableOutput, options.output + ".log: " + fault};
    }
    const bool isTooLarge = std::any_of(messages.begin(), messages.end(), [](const Message& message) {
        return message.kind == &kLayerTooLarge || message.kind == &kUnstrippedTooLarge;
    });
    const Outcome delivered = options.dryRun ? Outcome() : folder.deliverOne(kLog);
    if (!delivered.good()) session.warning(delivered.error);
    return {Refused, options.scene + ": " + excerpt(user.error(), kMostErrorText),
            refusalHint(messages) + (isTooLarge ? wayToFewer() : "")};
}

// Looks at the output as whoever loads it will, and says what it is.
Outcome check(const OutputFolder& folder, const ExportOptions& options, const std::vector<Message>& messages,
              std::string& summary) {
    if (const std::string fault = writeFault(messages); !fault.empty()) {
        return {UnwritableOutput, options.output + ": " + fault};
    }
    const bool isSequences = isSequenceFile(options.output);
    Shape shape;
    std::string surplus;
    std::ifstream file(folder.file(kOutput), std::ios::binary);
    if (!file) return {UnwritableOutput, options.output + ": " + std::strerror(errno)};
    isSequences ? shape.readDsq(file, &surplus) : shape.readDts(file, &surplus);
    if (shape.hasError()) surplus = shape.error();
    if (!surplus.empty()) return {UnwritableOutput, options.output + ": isn't what was written: " + surplus};
    struct stat written;
    const uintmax_t bytes =
        stat(folder.file(kOutput).c_str(), &written) == 0 ? static_cast<uintmax_t>(written.st_size) : 0;
    summary = exportSummary(options.output, shape, !isSequences, bytes);
    return {};
}

std::vector<std::string> warningLines(const standin::ImportResult& loaded, const std::vector<Message>& messages) {
    std::vector<std::string> lines;
    for (const Message& warning : loaded.warnings) lines.push_back(warning.text);
    for (auto& warning : groupedWarnings(messages)) lines.push_back(std::move(warning));
    return lines;
}

// What is said has its memory before anything is in its place.
Outcome deliver(standin::ImportResult& loaded, OutputFolder& folder, const ExportOptions& options,
                const Session& session, ExportResult& result) {
    result.written = {options.output, options.output + ".log"};
    if (options.dryRun) return {};
    const Outcome added = addTextures(loaded, options.output, session, folder, result.written);
    return added.good() ? folder.deliverAll() : added;
}

const char* placeWord(Message::Place place) {
    switch (place) {
        case Message::Place::Layer:
            return "layer";
        case Message::Place::Node:
            return "node";
        case Message::Place::Clip:
            return "clip";
        case Message::Place::Scene:
            break;
    }
    return "scene";
}

ToldMessage toldAs(const Message& message, const std::string& text) {
    return {message.kind->code, severityWord(message.kind->severity), placeWord(message.place), message.name, text};
}

// What loading tells are whole sentences.
std::vector<ToldMessage> told(const standin::ImportResult& loaded, const std::vector<Message>& messages) {
    std::vector<ToldMessage> all;
    for (const Message& message : loaded.warnings) all.push_back(toldAs(message, message.text));
    for (const Message& message : messages) {
        all.push_back(toldAs(message, std::string(message.kind->headline) + ": " + message.text));
    }
    return all;
}

// Where a dry run works: beside the output, or as near to it as there is a folder.
std::string workPlace(const ExportOptions& options) {
    if (!options.dryRun) return options.output;
    const fs::path output = fs::absolute(options.output);
    fs::path folder = output.parent_path();
    while (!fs::exists(folder) && folder.has_relative_path()) folder = folder.parent_path();
    return (folder / output.filename()).string();
}

void tellDetails(const standin::ImportResult& loaded, const Session& session) {
    for (const std::string& text : loaded.details) session.detail(text);
    for (const standin::LookedFor& file : loaded.files) {
        session.detail("looked for " + file.path + (file.found ? "" : ", which isn't there"));
    }
}

void tellLog(const OutputFolder& folder, const Session& session) {
    if (session.verbosity < 2) return;
    for (const std::string& line : piecesOf(readWholeFile(folder.file(kLog)), '\n'))
        session.detail("log: " + line.substr(0, line.find('\r')));
}

// Does what is left once the scene is loaded.
Outcome finish(standin::ImportResult& loaded, OutputFolder& folder, const ExportOptions& options,
               const Session& session, ExportResult& result) {
    ExportUser user(session, folder.file(kOutput));
    std::vector<Message> messages;
    const size_t most = trianglesOfLargestLayer(*loaded.scene);
    const auto wayToFewer = [&] { return wayToFewerTriangles(options.scene, loaded, most); };
    const Outcome pressed = pressExport(std::move(*loaded.scene), options, user, messages);
    user.endStep();
    if (!pressed.good()) return pressed;
    result.messages = told(loaded, messages);
    tellLog(folder, session);
    if (!user.error().empty()) {
        for (const Message& warning : loaded.warnings) session.warning(warning.text);
        return deliverRefusal(folder, options, user, messages, wayToFewer, session);
    }
    const Outcome checked = check(folder, options, messages, result.summary);
    if (!checked.good()) return checked;
    const std::vector<std::string> warnings = warningLines(loaded, messages);
    const std::string note = result.summary + (options.dryRun ? " (nothing is written)" : "");
    const Outcome delivered = deliver(loaded, folder, options, session, result);
    if (!delivered.good()) return delivered;
    for (const std::string& warning : warnings) session.warning(warning);
    session.note(note);
    return {options.strict && !warnings.empty() ? StrictWarnings : Done, {}};
}

}  // namespace

bool isExportName(const std::string& path) {
    return path.size() > kEndingSize &&
           (isSequenceFile(path) || equalIgnoringCase(path.substr(path.size() - kEndingSize), ".dts"));
}

ExportResult exportScene(const ExportOptions& options, const Session& session) {
    ExportResult result;
    // With the output's ending, and a path as short as can be.
    const std::string name = "shape" + options.output.substr(options.output.size() - kEndingSize);
    const std::string place = workPlace(options);
    OutputFolder folder({{place, name}, {place + ".log", name + ".log"}}, {options.scene, options.loading.forShape});
    result.outcome = folder.made();
    if (!result.outcome.good()) return result;
    standin::ImportResult loaded = loadScene(options.scene, options.loading);
    result.files = loaded.files;
    tellDetails(loaded, session);
    result.outcome =
        loaded.scene ? finish(loaded, folder, options, session, result) : Outcome{UnreadableInput, loaded.error};
    return result;
}

}  // namespace marrowfen::cli
