// `marrowfen export`: one scene or many, once or again and again, with what build systems want to know.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <thread>

#include "cli/commands.h"
#include "cli/export_batch.h"
#include "cli/export_record.h"
#include "cli/export_watch.h"
#include "cli/output_folder.h"
#include "ground/at.h"
#include "ground/pieces.h"

namespace marrowfen::cli {

namespace {

namespace fs = std::filesystem;

// What the command line asks for.
struct Request {
    std::vector<ExportOptions> exports;
    std::vector<std::string> words;  // that decide what is made
    BatchOptions batch;
    bool isMany = false;
    bool onlyIfChanged = false;
    std::vector<std::string> lists;  // of scenes
    std::string depfile;
    std::string report;
};

// "ship" of "models/ship.scene.json" and "models/ship.glb".
std::string stemOf(const fs::path& scene) {
    const std::string name = scene.filename().string();
    constexpr std::string_view kSceneEnding = ".scene.json";
    return name.ends_with(kSceneEnding) ? name.substr(0, name.size() - kSceneEnding.size()) : scene.stem().string();
}

// The scenes themselves and those of @LIST, which has one a line.
Outcome listScenes(const std::vector<std::string>& places, std::vector<std::string>& lists,
                   std::vector<std::string>& scenes) {
    for (const std::string& place : places) {
        if (!place.starts_with('@')) {
            scenes.push_back(place);
            continue;
        }
        const std::string path = place.substr(1);
        std::ifstream list(path);
        if (!list || fs::is_directory(path)) return {UnreadableInput, path + ": the list of scenes can't be read"};
        lists.push_back(path);
        for (std::string line; std::getline(list, line);) {
            if (line.ends_with('\r')) line.pop_back();
            if (!line.empty()) scenes.push_back(line);
        }
    }
    return {};
}

// Where in the output folder a scene goes: by its name alone, or keeping its folders below the root.
Outcome placeBelow(const Arguments& arguments, const std::string& scene, fs::path& place) {
    place = stemOf(scene) + "." + arguments.text("--format", "dts");
    if (!arguments.has("--root")) return {};
    const fs::path root = fs::absolute(arguments.text("--root")).lexically_normal() / "";
    const fs::path folder = fs::absolute(scene).lexically_normal().parent_path().lexically_relative(root);
    if (folder.empty() || *folder.begin() == "..") {
        return {WrongUsage, scene + ": doesn't lie below " + arguments.text("--root") + " (--root)"};
    }
    place = (folder / place).lexically_normal();
    return {};
}

// Whether each has one of its own.
Outcome checkPlaces(const std::vector<std::string>& scenes, const std::vector<std::string>& places) {
    std::map<std::string_view, size_t> taken;
    for (size_t i = 0; i < scenes.size(); ++i) {
        const auto [other, isNew] = taken.emplace(places[i], i);
        if (isNew) continue;
        return {WrongUsage, scenes[i] + " and " + scenes[other->second] + " would both become " + places[i],
                "--root DIR keeps the folders below DIR apart"};
    }
    return {};
}

Outcome readMany(const Arguments& arguments, const ExportOptions& common, Request& request) {
    std::vector<std::string> scenes;
    if (const Outcome listed = listScenes(arguments.places(), request.lists, scenes); !listed.good()) return listed;
    std::vector<std::string> places(scenes.size());
    request.exports.reserve(scenes.size());
    for (size_t i = 0; i < scenes.size(); ++i) {
        fs::path place;
        if (const Outcome placed = placeBelow(arguments, scenes[i], place); !placed.good()) return placed;
        places[i] = place.string();
        ExportOptions options = common;
        options.scene = scenes[i];
        options.output = (fs::path(arguments.text("--out-dir")) / place).string();
        request.exports.push_back(std::move(options));
    }
    return checkPlaces(scenes, places);
}

Outcome readOne(const Arguments& arguments, const ExportOptions& common, Request& request) {
    for (const char* option : {"--jobs", "--root", "--format"}) {
        if (arguments.has(option)) return {WrongUsage, std::string("export: ") + option + " goes with --out-dir"};
    }
    const std::vector<std::string>& places = arguments.places();
    if (places.size() < 2) return {WrongUsage, "export: OUTPUT is missing", "marrowfen export --help has examples"};
    if (places.size() > 2) {
        return {WrongUsage, "export: \"" + places[2] + "\" is one word too many",
                "for many scenes, give --out-dir DIR"};
    }
    if (!isExportName(places[1])) return {WrongUsage, places[1] + " ends neither in .dts nor in .dsq"};
    ExportOptions options = common;
    options.scene = places[0];
    options.output = places[1];
    request.exports.push_back(std::move(options));
    return {};
}

Outcome readRequest(const Arguments& arguments, Request& request) {
    ExportOptions common;
    common.withAnimation = arguments.has("--with-animation");
    common.strict = arguments.has("--strict");
    common.dryRun = arguments.has("--dry-run");
    request.isMany = arguments.has("--out-dir");
    Outcome read = request.isMany ? readMany(arguments, common, request) : readOne(arguments, common, request);
    for (ExportOptions& options : request.exports) {
        if (read.good()) read = readSceneOptions(arguments, options.scene, options.loading);
    }
    request.words = decidingWords(arguments);
    // One more, as there is always one that waits for the disk.
    const unsigned jobs = std::thread::hardware_concurrency() + 1;
    request.batch.jobs = static_cast<size_t>(arguments.number("--jobs", jobs));
    request.batch.seconds = arguments.number("--timeout", request.batch.seconds);
    request.batch.namesRows = request.isMany;
    request.onlyIfChanged = arguments.has("--if-changed");
    request.depfile = arguments.text("--depfile");
    request.report = arguments.text("--report");
    return read;
}

// What tells of the exports has a place of its own. Asked before the work, and again when all files are known.
Outcome checkRecords(const Request& request, const std::vector<BatchRow>& rows) {
    std::vector<std::string> inputs = request.lists, outputs;
    for (size_t i = 0; i < rows.size(); ++i) {
        const ExportOptions& options = request.exports[i];
        inputs.push_back(options.scene);
        inputs.push_back(options.loading.forShape);
        for (const standin::LookedFor& file : rows[i].result.files) inputs.push_back(file.path);
        for (const char* ending : {"", ".log", ".made"}) outputs.push_back(options.output + ending);
        for (const std::string& path : rows[i].result.written) outputs.push_back(path);
    }
    for (const std::string& record : {request.depfile, request.report}) {
        if (record.empty()) continue;
        const OutputFolder folder(record, inputs);
        if (!folder.made().good()) return folder.made();
        for (const std::string& output : outputs) {
            std::error_code notThere;
            if (record == output || fs::equivalent(record, output, notThere)) {
                return {UnwritableOutput, record + ": is " + output + " too"};
            }
        }
        outputs.push_back(record);
    }
    return {};
}

// What tells of all exports; the first fault counts.
Outcome writeRecords(const Request& request, const std::vector<BatchRow>& rows) {
    ExitCode worst = Done;
    for (const BatchRow& row : rows) worst = worse(worst, row.result.outcome.code);
    if (request.depfile.empty() && request.report.empty()) return {worst, {}};
    std::vector<ExportResult> results;
    results.reserve(rows.size());
    for (const BatchRow& row : rows) results.push_back(row.result);
    const bool isDry = !request.exports.empty() && request.exports.front().dryRun;
    if (!request.depfile.empty() && !isDry) {
        const std::string text = depfileText(request.exports, results);
        Outcome written = checkRecords(request, rows);
        if (written.good() && !text.empty()) written = writeWholeFile(request.depfile, text);
        if (!written.good()) return written;
    }
    if (request.report.empty()) return {worst, {}};
    const std::string report = reportText(request.exports, results);
    Outcome written = checkRecords(request, rows);
    if (written.good()) written = writeWholeFile(request.report, report);
    return written.good() ? Outcome{worst, {}} : written;
}

// The exports that have something to do; the rows of the others say that they are unchanged.
std::vector<size_t> findChanged(const Request& request, const Session& session, std::vector<BatchRow>& rows) {
    std::vector<size_t> changed;
    for (size_t i = 0; i < request.exports.size(); ++i) {
        const ExportOptions& options = request.exports[i];
        std::optional<ExportResult> known;
        if (request.onlyIfChanged) known = recallUnchanged(options, request.words, request.depfile);
        if (known) {
            rows[i].result = std::move(*known);
            if (!request.isMany) session.note(options.output + ": unchanged");
        } else {
            changed.push_back(i);
        }
    }
    return changed;
}

// Runs the exports of these numbers. What doesn't say anything of its own when it ends is told here.
Outcome runThese(const Request& request, const std::vector<size_t>& numbers, bool inProcesses, const Session& session,
                 std::vector<BatchRow>& rows) {
    const int64_t began = fileClockNow();
    if (inProcesses) {
        exportBatch(request.exports, numbers, request.batch, session, rows);
    } else {
        for (const size_t i : numbers) {
            rows[i].result = exportScene(request.exports[i], session);
            session.tell(rows[i].result.outcome);
        }
    }
    for (const size_t i : numbers) {
        const bool isKept = request.onlyIfChanged && rows[i].result.outcome.good() && !request.exports[i].dryRun;
        if (!isKept) continue;
        const Outcome kept = remember(request.exports[i], request.words, began, rows[i].result);
        if (!kept.good()) return kept;
    }
    return {};
}

void tellTable(const std::string& table, const Session& session) {
    for (const std::string& line : piecesOf(table, '\n')) session.note(line);
}

}  // namespace

Outcome runExport(const Arguments& arguments, const Session& session) {
    Request request;
    if (const Outcome read = readRequest(arguments, request); !read.good()) return read;
    const bool watches = arguments.has("--watch") && !request.exports.empty();
    std::vector<BatchRow> rows(request.exports.size());
    if (const Outcome checked = checkRecords(request, rows); !checked.good()) return checked;

    std::vector<size_t> numbers = findChanged(request, session, rows);
    ChangeWatch watch;
    for (size_t i = 0; watches && i < rows.size(); ++i) watch.follow(i, {{request.exports[i].scene, true}});
    while (true) {
        const Outcome run = runThese(request, numbers, request.isMany || watches, session, rows);
        if (!run.good()) return run;
        const Outcome recorded = writeRecords(request, rows);
        if (request.isMany) tellTable(batchTable(request.exports, rows), session);
        if (!watches) return recorded;
        if (!recorded.error.empty()) session.tell(recorded);
        for (size_t i = 0; i < rows.size(); ++i) watch.follow(i, rows[i].result.files);
        session.note("watching " + std::to_string(watch.size()) + " files; Ctrl-C ends");
        numbers = watch.waitForChange();
    }
}

}  // namespace marrowfen::cli
