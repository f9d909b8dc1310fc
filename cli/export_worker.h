#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "cli/export_run.h"

namespace marrowfen::cli {

// A process that exports one scene after the other. What it says is kept until an export has ended; one that ends the
// process is a result like others.
class ExportWorker {
public:
    using Clock = std::chrono::steady_clock;

    ExportWorker(const std::vector<ExportOptions>& exports, const Session& session);
    ~ExportWorker();
    ExportWorker(const ExportWorker&) = delete;
    ExportWorker& operator=(const ExportWorker&) = delete;

    void start(size_t number);  // of the export; one at a time

    int pipe() const { return pipe_; }  // readable when there is something to take; negative without a process
    double seconds() const;             // since it was started

    bool waitsForDisk() const { return waitsForDisk_; }  // or has done so: little is left to do

    // Takes what there is. False once the export has ended, or the process.
    bool take();
    void ask(int signal) const;  // sends it

    // What came of the export. Of a process that didn't say so, the result tells how it ended.
    ExportResult end();
    bool isAlive() const { return process_ > 0; }
    // Waits for the end of a process that was asked to end, kills it when it takes too long, and leaves it alone when
    // that does too: one that waits for a disk dies when that answers.
    void awaitDeath(Clock::time_point killedAt, Clock::time_point deadline);
    // Removes what dead processes have begun beside the output, unless another run keeps on writing there for so long.
    void clearUp(std::chrono::milliseconds patience) const;
    std::string lines() const;  // that it wrote on standard error

private:
    const std::vector<ExportOptions>& exports_;
    size_t number_ = 0;
    Clock::time_point began_;
    pid_t process_ = -1;
    int requests_ = -1, pipe_ = -1;
    int said_ = -1;      // its standard error
    std::string bytes_;  // of its answer
    bool waitsForDisk_ = false;
    std::string fault_;  // why there is no process

    uint64_t sizeOfAnswer() const;
    bool isWhole() const;
    std::string whyEnded();
};

}  // namespace marrowfen::cli
