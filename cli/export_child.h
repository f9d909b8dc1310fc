#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>

#include "cli/export_run.h"

namespace marrowfen::cli {

// One export in a process of its own. What it says is kept until it has ended.
class ExportChild {
public:
    ExportChild(const ExportOptions& options, const Session& session);
    ~ExportChild();
    ExportChild(const ExportChild&) = delete;
    ExportChild& operator=(const ExportChild&) = delete;

    int pipe() const { return pipe_; }  // readable when there is something to take
    double seconds() const;             // since it began

    // Takes what there is. False once the process has closed its end.
    bool take();
    void ask(int signal) const;  // sends it

    // Waits for the end; of a process that didn't say what came of it, the result tells how it ended.
    ExportResult end();
    std::string lines() const;  // that it wrote on standard error

private:
    using Clock = std::chrono::steady_clock;

    std::string scene_;
    std::string folder_;  // of its output
    Clock::time_point began_ = Clock::now();
    pid_t process_ = -1;
    int pipe_ = -1;
    int said_ = -1;  // its standard error
    std::string bytes_;
    std::string fault_;  // why there is no process
};

}  // namespace marrowfen::cli
