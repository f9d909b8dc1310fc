#include "standin/import/isolated_run.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/landlock.h>
#include <linux/openat2.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <iostream>
#include <stdexcept>
#include <vector>

#include "tests/files.h"

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

// Landlock is there; a kernel without it can't keep a process from reading.
bool kernelKeepsToFiles() {
    return syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION) > 0;
}

// What a reader that a model has taken over would try.
TEST(IsolatedRun, ChildCanReadAndNothingElse) {
    const test::TestFolder scratch;
    const std::string folder = scratch.folder, readable = folder + "/readable", own = readable + "/own";
    test::writeFile(folder + "/outside", "secret");
    test::writeFile(own, "untouched");
    std::filesystem::create_symlink("../outside", readable + "/link");
    const pid_t parent = getpid();
    const RunOutcome outcome = runIsolated({2048, 5, 60, {readable}}, [&]() -> std::string {
        std::string done;
        const auto attempt = [&](const char* what, long result) {
            if (result >= 0) done += std::string(what) + " ";
        };
        for (const std::string& outside : {folder + "/outside", readable + "/link", readable + "/../outside", folder,
                                           std::string("/etc/passwd"), std::string("/proc/self/environ")}) {
            if (kernelKeepsToFiles()) attempt(outside.c_str(), open(outside.c_str(), O_RDONLY));
        }
        attempt("open", open(own.c_str(), O_WRONLY));
        attempt("append", open(own.c_str(), O_RDWR | O_APPEND));
        attempt("create", open((own + "2").c_str(), O_CREAT | O_RDONLY, 0600));
        open_how how{O_WRONLY, 0, 0};
        attempt("openat2", syscall(SYS_openat2, AT_FDCWD, own.c_str(), &how, sizeof how));
        attempt("unlink", unlink(own.c_str()));
        attempt("rename", rename(own.c_str(), (own + "2").c_str()));
        attempt("chmod", chmod(own.c_str(), 0777));
        attempt("truncate", truncate(own.c_str(), 0));
        attempt("socket", socket(AF_INET, SOCK_STREAM, 0));
        attempt("local socket", socket(AF_UNIX, SOCK_STREAM, 0));
        attempt("fork", fork());
        attempt("exec", execl("/bin/true", "true", nullptr));
        attempt("kill", kill(parent, 0));
        attempt("signal", tgkill(parent, parent, 0));
        attempt("ptrace", ptrace(PTRACE_ATTACH, parent, nullptr, nullptr));
        for (int file = 4; file < 64; ++file) attempt("parent's file", fcntl(file, F_GETFD));
        return done + test::readFile(own);
    });
    EXPECT_EQ(outcome.output, "untouched") << outcome.failure;
}

}  // namespace
}  // namespace marrowfen::standin
