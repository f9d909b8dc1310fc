#include "cli/export_worker.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <new>
#include <thread>

#include "cli/export_record.h"
#include "cli/staging_folder.h"
#include "ground/write_all.h"

// A request is the number of an export, an answer its length and the packed result. A length of 0 before it says that
// the process waits for the disk.

namespace marrowfen::cli {

namespace {

using Number = uint64_t;

template <class T>
std::string_view bytesOf(const T& value) {
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

ExportResult runHere(const ExportOptions& options, const Session& session) {
    try {
        return exportScene(options, session);
    } catch (const std::bad_alloc&) {
        ExportResult result;
        result.outcome = {OurFault, options.scene + ": out of memory"};
        return result;
    }
}

// Ends without running exit handlers: they belong to the parent's state.
[[noreturn]] void work(int requests, int answers, int said, const std::vector<ExportOptions>& exports,
                       const Session& session) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    setpgid(0, 0);  // a terminal's Ctrl-C is for the parent, which would take it for a crash of this one
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, SIG_DFL);
    dup2(said, STDERR_FILENO);
    reuseStagingFolders();
    tellOfDiskWaits([&] { writeAll(answers, bytesOf(Number{0})); });
    for (Number number; read(requests, &number, sizeof number) == sizeof number;) {
        const std::string bytes = packExport(runHere(exports.at(number), session));
        if (!writeAll(answers, bytesOf(Number{bytes.size()})) || !writeAll(answers, bytes)) break;
    }
    removeStagingFolders();
    _exit(Done);
}

}  // namespace

ExportWorker::ExportWorker(const std::vector<ExportOptions>& exports, const Session& session) : exports_(exports) {
    int requests[2], answers[2];
    if (pipe2(requests, O_CLOEXEC) != 0) {
        fault_ = std::strerror(errno);
        return;
    }
    requests_ = requests[1];
    process_ = pipe2(answers, O_CLOEXEC) == 0 ? 0 : -1;
    if (process_ == 0) {
        pipe_ = answers[0];
        said_ = memfd_create("said", MFD_CLOEXEC);
        std::fflush(nullptr);  // or the child would write it again
        process_ = fork();
    }
    if (process_ == 0) {
        close(requests_);
        close(pipe_);
        work(requests[0], answers[1], said_, exports, session);
    }
    if (process_ < 0) fault_ = std::strerror(errno);
    close(requests[0]);
    if (pipe_ >= 0) close(answers[1]);
}

ExportWorker::~ExportWorker() {
    ask(SIGTERM);
    for (const int file : {requests_, pipe_, said_}) {
        if (file >= 0) close(file);
    }
    whyEnded();
}

void ExportWorker::start(size_t number) {
    number_ = number;
    began_ = Clock::now();
    bytes_.clear();
    waitsForDisk_ = false;
    if (ftruncate(said_, 0) == 0) lseek(said_, 0, SEEK_SET);
    // Of a process that is gone the answer's end tells.
    const auto before = std::signal(SIGPIPE, SIG_IGN);
    writeAll(requests_, bytesOf(Number{number}));
    std::signal(SIGPIPE, before);
}

double ExportWorker::seconds() const { return std::chrono::duration<double>(Clock::now() - began_).count(); }

bool ExportWorker::take() {
    std::array<char, 1 << 16> block;
    const ssize_t n = read(pipe_, block.data(), block.size());
    if (n > 0) bytes_.append(block.data(), static_cast<size_t>(n));
    while (bytes_.size() >= sizeof(Number) && sizeOfAnswer() == 0) {
        waitsForDisk_ = true;
        bytes_.erase(0, sizeof(Number));
    }
    return !isWhole() && (n > 0 || (n < 0 && errno == EINTR));
}

uint64_t ExportWorker::sizeOfAnswer() const {
    Number size = 0;
    if (bytes_.size() >= sizeof size) std::memcpy(&size, bytes_.data(), sizeof size);
    return size;
}

bool ExportWorker::isWhole() const {
    return bytes_.size() > sizeof(Number) && bytes_.size() - sizeof(Number) == sizeOfAnswer();
}

void ExportWorker::ask(int signal) const {
    if (process_ > 0) kill(process_, signal);
}

// Waits for the end of the process.
std::string ExportWorker::whyEnded() {
    int status = 0;
    while (process_ > 0 && waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    process_ = -1;
    if (!fault_.empty()) return "no process: " + fault_;
    return WIFSIGNALED(status) ? std::string("crashed (") + strsignal(WTERMSIG(status)) + ")" : "ended without a word";
}

ExportResult ExportWorker::end() {
    if (isWhole()) {
        if (auto result = unpackExport(bytes_.substr(sizeof(Number)))) return std::move(*result);
        ask(SIGKILL);
    }
    const ExportOptions& options = exports_.at(number_);
    ExportResult result;
    result.outcome = {OurFault, options.scene + ": the export " + whyEnded()};
    result.files = {{options.scene, true}};
    clearUp(std::chrono::milliseconds(100));
    return result;
}

void ExportWorker::awaitDeath(Clock::time_point killedAt, Clock::time_point deadline) {
    constexpr auto kPause = std::chrono::milliseconds(2);
    while (process_ > 0 && waitpid(process_, nullptr, WNOHANG) == 0) {
        const auto now = Clock::now();
        if (now > killedAt) ask(SIGKILL);
        if (now > deadline) return;
        std::this_thread::sleep_for(kPause);
    }
    process_ = -1;
}

void ExportWorker::clearUp(std::chrono::milliseconds patience) const {
    const std::string folder = folderOf(exports_.at(number_).output);
    FolderLock lock;
    if (lock.take(folder, patience) == 0) clearUpAfterTheDead(folder);
}

std::string ExportWorker::lines() const {
    std::string text;
    std::array<char, 4096> block;
    for (ssize_t n = 0; (n = pread(said_, block.data(), block.size(), static_cast<off_t>(text.size()))) > 0;) {
        text.append(block.data(), static_cast<size_t>(n));
    }
    return text;
}

}  // namespace marrowfen::cli
