#pragma once

// Many exports, in processes other than this one: one that crashes or runs away is one failed row.

#include <string>
#include <vector>

#include "cli/export_run.h"

namespace marrowfen::cli {

struct BatchOptions {
    size_t jobs = 1;        // at a time, besides those of several that wait for the disk
    double seconds = 600;   // after which one is given up
    bool namesRows = true;  // puts the scene's name in front of what is said about it
};

struct BatchRow {
    ExportResult result;
    double seconds = 0;
};

// Runs the exports that are numbered, and gives rows for them alone; the others' stay as they are. While it runs,
// SIGINT, SIGTERM and SIGHUP end all exports and then this process, with whole files only left behind.
void exportBatch(const std::vector<ExportOptions>& exports, const std::vector<size_t>& numbers,
                 const BatchOptions& options, const Session& session, std::vector<BatchRow>& rows);

// A line for each row in the order of the exports, and one that counts them.
std::string batchTable(const std::vector<ExportOptions>& exports, const std::vector<BatchRow>& rows);

}  // namespace marrowfen::cli
