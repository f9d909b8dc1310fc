#include "cli/export_child.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <new>

#include "cli/export_record.h"
#include "cli/staging_folder.h"
#include "ground/write_all.h"

namespace marrowfen::cli {

namespace {

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
[[noreturn]] void runAsChild(int toParent, int said, const ExportOptions& options, const Session& session) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, SIG_DFL);
    dup2(said, STDERR_FILENO);
    const std::string bytes = packExport(runHere(options, session));
    _exit(writeAll(toParent, bytes) ? Done : OurFault);
}

}  // namespace

ExportChild::ExportChild(const ExportOptions& options, const Session& session)
    : scene_(options.scene), folder_(std::filesystem::path(options.output).parent_path()) {
    if (folder_.empty()) folder_ = ".";

    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        fault_ = std::strerror(errno);
        return;
    }
    said_ = memfd_create("said", MFD_CLOEXEC);
    process_ = fork();
    if (process_ == 0) {
        close(ends[0]);
        runAsChild(ends[1], said_, options, session);
    }
    if (process_ < 0) fault_ = std::strerror(errno);
    close(ends[1]);
    pipe_ = ends[0];
}

ExportChild::~ExportChild() {
    for (const int file : {pipe_, said_}) {
        if (file >= 0) close(file);
    }
}

double ExportChild::seconds() const { return std::chrono::duration<double>(Clock::now() - began_).count(); }

bool ExportChild::take() {
    std::array<char, 1 << 16> block;
    const ssize_t n = read(pipe_, block.data(), block.size());
    if (n > 0) bytes_.append(block.data(), static_cast<size_t>(n));
    return n > 0 || (n < 0 && errno == EINTR);
}

void ExportChild::ask(int signal) const {
    if (process_ > 0) kill(process_, signal);
}

ExportResult ExportChild::end() {
    int status = 0;
    while (process_ > 0 && waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    if (std::optional<ExportResult> result = unpackExport(bytes_)) return std::move(*result);
    ExportResult result;
    std::string why = fault_.empty() ? "ended without a word" : "no process: " + fault_;
    if (WIFSIGNALED(status)) {
        why = std::string("crashed (") + strsignal(WTERMSIG(status)) + ")";
        FolderLock lock;
        if (lock.take(folder_) == 0) clearUpAfterTheDead(folder_);
    }
    result.outcome = {OurFault, scene_ + ": the export " + why};
    result.files = {{scene_, true}};
    return result;
}

std::string ExportChild::lines() const {
    std::string text;
    std::array<char, 4096> block;
    for (ssize_t n = 0; (n = pread(said_, block.data(), block.size(), static_cast<off_t>(text.size()))) > 0;) {
        text.append(block.data(), static_cast<size_t>(n));
    }
    return text;
}

}  // namespace marrowfen::cli
