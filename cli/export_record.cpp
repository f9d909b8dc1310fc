#include "cli/export_record.h"

#include <sys/stat.h>
#include <ctime>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>

#include "ground/version.h"
#include "ground/whole_file.h"

namespace marrowfen::cli {

namespace {

using OrderedJson = nlohmann::ordered_json;

constexpr int64_t kNanoseconds = 1000000000;
const char* const kMemoryTitle = "marrowfen made";

// When a file was changed last; none where it isn't there.
std::optional<int64_t> changeTime(const std::string& path) {
    struct stat found;
    if (stat(path.c_str(), &found) != 0) return {};
    return found.st_mtim.tv_sec * kNanoseconds + found.st_mtim.tv_nsec;
}

OrderedJson messageList(const std::vector<ToldMessage>& messages) {
    OrderedJson list = OrderedJson::array();
    for (const ToldMessage& message : messages) {
        list.push_back({{"code", message.code},
                        {"severity", message.severity},
                        {"place", message.place},
                        {"name", message.name},
                        {"text", message.text}});
    }
    return list;
}

OrderedJson fileList(const std::vector<standin::LookedFor>& files) {
    OrderedJson list = OrderedJson::array();
    for (const standin::LookedFor& file : files) list.push_back({{"path", file.path}, {"found", file.found}});
    return list;
}

OrderedJson resultObject(const ExportResult& result) {
    OrderedJson json = {{"result", resultWord(result)},    {"exitCode", static_cast<int>(result.outcome.code)},
                        {"error", result.outcome.error},   {"hint", result.outcome.hint},
                        {"summary", result.summary},       {"messages", messageList(result.messages)},
                        {"files", fileList(result.files)}, {"written", OrderedJson::array()}};
    for (const std::string& path : result.written) json["written"].push_back(path);
    return json;
}

// Make has no way to say a path with a control character, and in the middle of a rule a semicolon begins a command: a
// texture's name must not become one.
bool fitsDepfile(const std::string& path) {
    return std::none_of(path.begin(), path.end(),
                        [](char c) { return static_cast<unsigned char>(c) < ' ' || c == ';'; });
}

// A path as Make and Ninja read it in a depfile.
std::string escapedForMake(const std::string& path) {
    std::string text;
    for (const char c : path) {
        if (c == ' ' || c == '#') text += '\\';
        if (c == '$') text += '$';
        text += c;
    }
    return text;
}

std::string memoryHead(const std::vector<std::string>& words) {
    std::string text = std::string(kMemoryTitle) + " " + kVersion + "\n";
    for (const std::string& word : words) text += "option " + word + "\n";
    return text;
}

// The lines behind the head, as a result; none if one of them doesn't hold any more.
std::optional<ExportResult> recallFiles(const std::string& lines, int64_t& began, int64_t& oldest) {
    ExportResult result;
    result.isUnchanged = true;
    std::istringstream in(lines);
    for (std::string kind, path; in >> kind && std::getline(in.ignore(1), path);) {
        const std::optional<int64_t> time = changeTime(path);
        if (kind == "began") {
            began = std::strtoll(path.c_str(), nullptr, 10);
        } else if (kind == "written") {
            if (!time) return {};
            oldest = std::min(oldest, *time);
            result.written.push_back(path);
        } else if (kind == "found" || kind == "missing") {
            if (time.has_value() != (kind == "found") || (time && (*time > oldest || *time > began))) return {};
            result.files.push_back({path, time.has_value()});
        } else {
            return {};
        }
    }
    return result;
}

}  // namespace

std::string packExport(const ExportResult& result) {
    OrderedJson json = resultObject(result);
    const std::vector<uint8_t> bytes = OrderedJson::to_cbor(json);
    return {bytes.begin(), bytes.end()};
}

std::optional<ExportResult> unpackExport(const std::string& bytes) {
    const OrderedJson json = OrderedJson::from_cbor(bytes, true, false);
    if (!json.is_object()) return {};
    ExportResult result;
    result.outcome = {static_cast<ExitCode>(json["exitCode"].get<int>()), json["error"], json["hint"]};
    result.summary = json["summary"];
    for (const OrderedJson& m : json["messages"]) {
        result.messages.push_back({m["code"], m["severity"], m["place"], m["name"], m["text"]});
    }
    for (const OrderedJson& file : json["files"]) result.files.push_back({file["path"], file["found"]});
    for (const OrderedJson& path : json["written"]) result.written.push_back(path);
    return result;
}

const char* resultWord(const ExportResult& result) {
    if (result.isUnchanged) return "unchanged";
    switch (result.outcome.code) {
        case Done:
            return "done";
        case Refused:
            return "refused";
        case WrongUsage:
            return "usage";
        case UnreadableInput:
            return "unreadable";
        case UnwritableOutput:
            return "unwritable";
        case StrictWarnings:
            return "warnings";
        case OurFault:
            break;
    }
    return "fault";
}

ExitCode worse(ExitCode a, ExitCode b) {
    for (const ExitCode code : {OurFault, UnwritableOutput, UnreadableInput, WrongUsage, Refused, StrictWarnings}) {
        if (a == code || b == code) return code;
    }
    return Done;
}

ExitCode worstOf(const std::vector<ExportResult>& results) {
    ExitCode worst = Done;
    for (const ExportResult& result : results) worst = worse(worst, result.outcome.code);
    return worst;
}

std::string reportText(const std::vector<ExportOptions>& exports, const std::vector<ExportResult>& results) {
    OrderedJson json = {{"format", "marrowfen-report"},
                        {"version", 1},
                        {"program", std::string("marrowfen ") + kVersion},
                        {"exitCode", static_cast<int>(worstOf(results))},
                        {"results", OrderedJson::array()}};
    for (size_t i = 0; i < results.size(); ++i) {
        OrderedJson row = {{"scene", exports[i].scene}, {"output", exports[i].output}};
        row.update(resultObject(results[i]));
        json["results"].push_back(std::move(row));
    }
    return json.dump(2, ' ', false, OrderedJson::error_handler_t::replace) + "\n";
}

std::string depfileText(const std::vector<ExportOptions>& exports, const std::vector<ExportResult>& results) {
    std::string text;
    for (size_t i = 0; i < results.size(); ++i) {
        if (results[i].written.empty()) continue;
        text += escapedForMake(exports[i].output) + " " + escapedForMake(exports[i].output + ".log") + ":";
        for (const standin::LookedFor& file : results[i].files) {
            if (fitsDepfile(file.path)) text += " \\\n  " + escapedForMake(file.path);
        }
        text += "\n";
    }
    return text;
}

std::vector<std::string> decidingWords(const Arguments& arguments) {
    std::vector<std::string> words;
    for (const VerbRow& verb : verbTable()) {
        for (const OptionGroup& group : verb.groups) {
            if (group.title != kModelGroup && group.title != kMadeGroup) continue;
            for (const OptionRow& row : group.rows) {
                if (arguments.given().count(row.name) == 0) continue;
                for (const std::string& value : arguments.all(row.name)) words.push_back(row.name + (" " + value));
            }
        }
        break;  // the first verb is the one that exports
    }
    return words;
}

Outcome remember(const ExportOptions& options, const std::vector<std::string>& words, int64_t began,
                 const ExportResult& result) {
    std::string text = memoryHead(words) + "began " + std::to_string(began) + "\n";
    for (const std::string& path : result.written) text += "written " + path + "\n";
    for (const standin::LookedFor& file : result.files) {
        text += (file.found ? "found " : "missing ") + file.path + "\n";
    }
    return writeWholeFile(options.output + ".made", text);
}

std::optional<ExportResult> recallUnchanged(const ExportOptions& options, const std::vector<std::string>& words,
                                            const std::string& depfile) {
    const std::string memory = readWholeFile(options.output + ".made");
    const std::string head = memoryHead(words);
    if (!memory.starts_with(head + "began ")) return {};
    int64_t began = 0, oldest = INT64_MAX;
    if (!depfile.empty()) oldest = changeTime(depfile).value_or(0);
    return recallFiles(memory.substr(head.size()), began, oldest);
}

int64_t fileClockNow() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME_COARSE, &now);
    return now.tv_sec * kNanoseconds + now.tv_nsec;
}

}  // namespace marrowfen::cli
