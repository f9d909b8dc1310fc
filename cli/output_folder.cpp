#include "cli/output_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "ground/whole_file.h"

namespace marrowfen::cli {

namespace {

namespace fs = std::filesystem;

constexpr size_t kPathSize = 4096;
constexpr size_t kEndingSize = 4;    // of ".dts" and ".dsq"
constexpr size_t kLongestName = 32;  // that the folder's files have, with a margin

// What a signal handler removes; it can't use anything that allocates.
char theFolder[kPathSize] = "";
char theFile[kPathSize] = "";
char theLog[kPathSize] = "";
pid_t theOwner = 0;  // a child process has the handler too, but not the folder

void removeTheFolder() {
    if (theFolder[0] == '\0') return;
    unlink(theFile);
    unlink(theLog);
    rmdir(theFolder);
    theFolder[0] = '\0';
}

// Installed with SA_RESETHAND: the signal that is raised again ends the process as if nobody had been asked.
void removeAndDie(int signal) {
    if (getpid() == theOwner) removeTheFolder();
    raise(signal);
}

void copyPath(char* to, const std::string& path) { path.copy(to, kPathSize - 1); }

void onSignals(void (*handler)(int), int flags) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action = {};
        struct sigaction old = {};
        sigaction(signal, nullptr, &old);
        if (old.sa_handler == SIG_IGN) continue;  // nohup
        action.sa_handler = handler;
        action.sa_flags = flags;
        sigaction(signal, &action, nullptr);
    }
}

Outcome fault(const std::string& path, const std::string& why) { return {UnwritableOutput, path + ": " + why}; }

// Whether a file can take this place.
Outcome checkPlace(const std::string& path) {
    struct stat found;
    if (stat(path.c_str(), &found) != 0) return {};
    if (S_ISDIR(found.st_mode)) return fault(path, std::strerror(EISDIR));
    if (!S_ISREG(found.st_mode)) return fault(path, "not a regular file");
    return access(path.c_str(), W_OK) == 0 ? Outcome() : fault(path, std::strerror(errno));
}

// Where a link points, there or not.
std::string behindLinks(const std::string& path) {
    constexpr int kMostLinks = 40;
    fs::path result = path;
    std::error_code failure;
    for (int i = 0; i < kMostLinks && fs::is_symlink(result, failure); ++i) {
        const fs::path next = fs::read_symlink(result, failure);
        if (failure) break;
        result = result.parent_path() / next;
    }
    return result.string();
}

Outcome move(const std::string& from, const std::string& to) {
    if (std::rename(from.c_str(), to.c_str()) == 0) return {};
    // Behind a link there may be another file system.
    return errno == EXDEV ? writeWholeFile(to, readWholeFile(from)) : fault(to, std::strerror(errno));
}

std::string folderOf(const std::string& path) {
    const fs::path folder = fs::path(path).parent_path();
    return folder.empty() ? "." : folder.string();
}

}  // namespace

OutputFolder::OutputFolder(const std::string& output) {
    target_ = behindLinks(output);
    log_ = behindLinks(output + ".log");
    for (const std::string& path : {target_, log_}) {
        if (made_.good()) made_ = checkPlace(path);
    }
    if (made_.good() && folderOf(log_) != folderOf(target_) && access(folderOf(log_).c_str(), W_OK) != 0) {
        made_ = fault(log_, std::strerror(errno));
    }
    if (!made_.good()) return;

    std::string folder = (fs::path(target_).parent_path() / ".marrowfen-XXXXXX").string();
    if (folder.size() >= kPathSize - kLongestName) {
        made_ = fault(output, std::strerror(ENAMETOOLONG));
    } else if (mkdtemp(folder.data()) == nullptr) {
        made_ = fault(output, std::strerror(errno));
    } else {
        folder_ = folder;
        file_ = folder + "/shape" + output.substr(output.size() - kEndingSize);
        theOwner = getpid();
        copyPath(theFile, file_);
        copyPath(theLog, log());
        copyPath(theFolder, folder_);
        onSignals(removeAndDie, static_cast<int>(SA_RESETHAND));
    }
}

OutputFolder::~OutputFolder() {
    if (folder_.empty()) return;
    onSignals(SIG_DFL, 0);
    removeTheFolder();
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
}

Outcome OutputFolder::deliverLog() const { return move(log(), log_); }

Outcome OutputFolder::deliverBoth() const {
    const Outcome moved = move(file_, target_);
    return moved.good() ? deliverLog() : moved;
}

std::string OutputFolder::writeFault() const {
    // As large as what a full disk may still have room for behind an incomplete file.
    static constexpr std::array<char, 1 << 16> kProbe{};
    std::FILE* probe = std::fopen(file_.c_str(), "ab");
    const bool good =
        probe != nullptr && std::fwrite(kProbe.data(), kProbe.size(), 1, probe) == 1 && std::fflush(probe) == 0;
    const int why = good ? EIO : errno;
    if (probe != nullptr) std::fclose(probe);
    return std::strerror(why);
}

}  // namespace marrowfen::cli
