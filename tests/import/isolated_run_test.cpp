#include "standin/import/isolated_run.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <iostream>
#include <stdexcept>
#include <vector>

namespace marrowfen::standin {
namespace {

// What a process may do that isn't ours any more: it answers for ever. Its answer's pipe is the last one opened.
std::string answerForEver() {
    const std::vector<char> block(1 << 16);
    int file = 63;
    for (struct stat found; file > 2 && (fstat(file, &found) != 0 || !S_ISFIFO(found.st_mode));) --file;
    while (file > 2 && write(file, block.data(), block.size()) > 0) {
    }
    return {};
}

TEST(IsolatedRun, EveryEndIsToldApart) {
    const RunLimits limits{2048, 1, 60};
    EXPECT_EQ(runIsolated(limits, [] { return std::string(3 << 20, 'x'); }).output.size(), 3U << 20);

    const struct {
        const char* says;
        std::function<std::string()> work;
        unsigned wallSeconds = 60, megabytes = 2048;
    } kFailures[] = {
        {"crash", [] { return raise(SIGSEGV) == 0 ? "" : ""; }},
        {"crash", []() -> std::string { std::abort(); }},
        {"crash", []() -> std::string { throw std::runtime_error("unknown"); }},
        {"crash", []() -> std::string { _exit(3); }},
        {"1 s of processor time",
         [] {
             const volatile bool forever = true;
             while (forever) {
             }
             return std::string();
         }},
        {"after 1 s", [] { return std::to_string(sleep(60)); }, 1},
        {"more than 64 MB", answerForEver, 60, 64},
#ifndef MARROWFEN_SANITIZED
        {"2048 MB", [] { return std::string(size_t{3} << 30, 'x'); }},
#endif
    };
    for (const auto& failure : kFailures) {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const auto before = std::chrono::steady_clock::now();
        const RunOutcome outcome = runIsolated({failure.megabytes, 1, failure.wallSeconds}, [&] {
            std::cout << "noise\n" << std::flush;
            std::cerr << "noise\n";
            return failure.work();
        });
        const auto spent = std::chrono::steady_clock::now() - before;
        EXPECT_EQ(testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr(), "");
        EXPECT_NE(outcome.failure.find(failure.says), std::string::npos) << outcome.failure;
        EXPECT_EQ(outcome.output, "");
        EXPECT_LT(spent, std::chrono::seconds(30));
    }
}

}  // namespace
}  // namespace marrowfen::standin
