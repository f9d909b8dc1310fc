#pragma once

// What came of exports, as bytes for another process, as a report, and as what build systems read.

#include <optional>
#include <string>
#include <vector>

#include "cli/export_run.h"

namespace marrowfen::cli {

// The way from the process of one export to the one that asked for it.
std::string packExport(const ExportResult& result);
std::optional<ExportResult> unpackExport(const std::string& bytes);

// "done", "unchanged", "warnings", "refused", ...
const char* resultWord(const ExportResult& result);

// The exit code of several exports: the worst of theirs.
ExitCode worse(ExitCode a, ExitCode b);
ExitCode worstOf(const std::vector<ExportResult>& results);

// One JSON object, the same for the same run; docs/report.schema.json describes it. The lists go together.
std::string reportText(const std::vector<ExportOptions>& exports, const std::vector<ExportResult>& results);

// A rule in Make's syntax for each that was made: output and log, and all files that were asked for, found or not.
std::string depfileText(const std::vector<ExportOptions>& exports, const std::vector<ExportResult>& results);

// The options that decide what is made, a word each.
std::vector<std::string> decidingWords(const Arguments& arguments);

// OUTPUT.made, the memory of --if-changed. began: when the export did, in nanoseconds of the files' clock.
Outcome remember(const ExportOptions& options, const std::vector<std::string>& words, int64_t began,
                 const ExportResult& result);

// What was remembered, if doing it again would give the same: the options are the same, what was written is there, what
// was missing still is, and all that was found is older. depfile: has to be there and newer too; empty for none.
std::optional<ExportResult> recallUnchanged(const ExportOptions& options, const std::vector<std::string>& words,
                                            const std::string& depfile);

int64_t fileClockNow();

}  // namespace marrowfen::cli
