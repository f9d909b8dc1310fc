#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace marrowfen::standin {

struct RunLimits {
    unsigned memoryMegabytes = 0;
    unsigned cpuSeconds = 0;
    unsigned wallSeconds = 0;
    std::vector<std::string> readable{};  // files and folders
};

// Room to reserve for a large answer, in bytes. It is addresses at first; memory comes with what is written there.
inline constexpr size_t kUsualAnswer = 16 << 20;

struct RunOutcome {
    std::string output;   // what the work returned
    std::string failure;  // why it didn't, in words; empty on success
};

// Runs work in a child process under limits and returns what it returned. Whatever happens there (a crash, an abort, an
// endless loop, exhausted memory) is a failure here and nothing else: the child prints nothing, leaves no core file,
// has none of this process's files and may do nothing but read and answer (cell.h).
RunOutcome runIsolated(const RunLimits& limits, const std::function<std::string()>& work);

}  // namespace marrowfen::standin
