#include "standin/import/isolated_run.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <new>

#include "ground/write_all.h"
#include "standin/host/large_pages.h"
#include "standin/import/cell.h"

namespace marrowfen::standin {

namespace {

using Clock = std::chrono::steady_clock;

// Exit codes of the child.
constexpr int kFinished = 0;
constexpr int kOutOfMemory = 90;
constexpr int kThrew = 91;

constexpr size_t kPipeSize = 1 << 20;
constexpr int kToParent = 3;  // the child's end of the pipe

enum class Answer { Whole, TooLate, TooLarge };

// A sanitizer's runtime reserves terabytes of address space, which a limit on it would forbid.
#ifdef MARROWFEN_SANITIZED
constexpr bool kLimitsAddressSpace = false;
constexpr unsigned kSlowness = 5;
#else
constexpr bool kLimitsAddressSpace = true;
constexpr unsigned kSlowness = 1;
#endif

void limit(int resource, rlim_t soft, rlim_t hard) {
    const rlimit value{soft, hard};
    setrlimit(static_cast<__rlimit_resource_t>(resource), &value);
}

// The child keeps only its end of the pipe, as file 3, and is mute; it dies with its parent.
void enterChild(int toParent, const RunLimits& limits) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    prctl(PR_SET_DUMPABLE, 0);
    limit(RLIMIT_CORE, 0, 0);
    limit(RLIMIT_CPU, limits.cpuSeconds * kSlowness, limits.cpuSeconds * kSlowness + 1);
    if (kLimitsAddressSpace) {
        const rlim_t bytes = static_cast<rlim_t>(limits.memoryMegabytes) << 20;
        limit(RLIMIT_AS, bytes, bytes);
    }
    for (const int signal : {SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGPIPE, SIGXCPU}) std::signal(signal, SIG_DFL);
    // Those that are sent to a whole group are the parent's, which might take them for a crash of the reader.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) std::signal(signal, SIG_IGN);
    const int nowhere = open("/dev/null", O_RDWR);
    if (nowhere < 0) return;
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(nowhere, stream);
    if (toParent != kToParent) dup2(toParent, kToParent);
    close_range(kToParent + 1, ~0U, 0);
    closeCell(limits.readable);
}

// Ends the process without running destructors or exit handlers: they belong to the parent's state.
[[noreturn]] void runChild(int toParent, const RunLimits& limits, const std::function<std::string()>& work) {
    enterChild(toParent, limits);
    // Told apart from a crash even where the library would catch bad_alloc or fail while unwinding.
    std::set_new_handler([] { _exit(kOutOfMemory); });
    try {
        _exit(writeAll(kToParent, work()) ? kFinished : kThrew);
    } catch (const std::bad_alloc&) {
        _exit(kOutOfMemory);
    } catch (...) {
        _exit(kThrew);
    }
}

// Reads until the other end is closed, the deadline comes or the bytes are more than may be.
Answer readUntil(int file, Clock::time_point deadline, size_t mostBytes, std::string& bytes) {
    std::array<char, 1 << 16> block;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0) return Answer::TooLate;
        pollfd entry{file, POLLIN, 0};
        const int ready = poll(&entry, 1, static_cast<int>(std::min<long long>(left, 1000)));
        if (ready <= 0) continue;
        const ssize_t n = read(file, block.data(), block.size());
        if (n == 0 || (n < 0 && errno != EINTR)) return Answer::Whole;
        if (n < 0) continue;
        if (static_cast<size_t>(n) > mostBytes - bytes.size()) return Answer::TooLarge;
        if (!bytes.empty() && bytes.capacity() < kUsualAnswer) {
            bytes.reserve(kUsualAnswer);
            putOnLargePages(bytes.data(), kUsualAnswer);
        }
        bytes.append(block.data(), static_cast<size_t>(n));
    }
}

int waitFor(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

std::string failureOf(Answer answer, int status, const RunLimits& limits) {
    if (answer == Answer::TooLate)
        return "isn't read after " + std::to_string(limits.wallSeconds) + " s and was given up";
    if (answer == Answer::TooLarge) return "comes to more than " + std::to_string(limits.memoryMegabytes) + " MB";
    if (WIFSIGNALED(status)) {
        const int signal = WTERMSIG(status);
        if (signal == SIGXCPU)
            return "needs more than " + std::to_string(limits.cpuSeconds) +
                   " s of processor time; --max-seconds allows more";
        return std::string("makes the reader crash (") + strsignal(signal) + ")";
    }
    switch (WEXITSTATUS(status)) {
        case kFinished:
            return {};
        case kOutOfMemory:
            return "needs more than " + std::to_string(limits.memoryMegabytes) +
                   " MB of memory; --max-memory allows more";
        default:
            return "makes the reader crash";
    }
}

}  // namespace

RunOutcome runIsolated(const RunLimits& limits, const std::function<std::string()>& work) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return {{}, std::string("no pipe: ") + std::strerror(errno)};
    fcntl(ends[0], F_SETPIPE_SZ, static_cast<int>(kPipeSize));  // fewer turns; the usual size where that isn't allowed
    prepareCell();
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        runChild(ends[1], limits, work);
    }
    close(ends[1]);
    if (child < 0) {
        const std::string fault = std::strerror(errno);
        close(ends[0]);
        return {{}, "no process: " + fault};
    }

    RunOutcome outcome;
    // What a process sends has been in its memory; one that a crafted model has taken over may send for ever.
    const Answer answer = readUntil(ends[0], Clock::now() + std::chrono::seconds(limits.wallSeconds),
                                    static_cast<size_t>(limits.memoryMegabytes) << 20, outcome.output);
    close(ends[0]);
    if (answer != Answer::Whole) kill(child, SIGKILL);
    outcome.failure = failureOf(answer, waitFor(child), limits);
    if (!outcome.failure.empty()) outcome.output.clear();
    return outcome;
}

}  // namespace marrowfen::standin
