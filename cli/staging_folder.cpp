#include "cli/staging_folder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "ground/whole_file.h"
#include "ground/write_all.h"

namespace marrowfen::cli {

namespace {

constexpr char kBeginning[] = ".marrowfen-run-";
constexpr char kPlan[] = "plan";
constexpr char kPlanEnd[] = "end";  // of a plan that is whole
constexpr size_t kPathSize = 4096;
constexpr std::array kEndingSignals = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGXCPU};

// What a signal handler removes; it can't use anything that allocates. Changed only while the signals wait.
struct Removable {
    char path[kPathSize] = "";
    pid_t owner = 0;  // a child process has the handler too, but not the folder
};
std::array<Removable, 4> theFolders;

void emptyFolder(int folder) {
    alignas(dirent64) char entries[4096];
    for (ssize_t n; (n = getdents64(folder, entries, sizeof entries)) > 0;) {
        for (ssize_t at = 0; at < n;) {
            const auto* entry = reinterpret_cast<const dirent64*>(entries + at);
            unlinkat(folder, entry->d_name, 0);
            at += entry->d_reclen;
        }
    }
}

// Removes a folder that holds nothing but files. For signal handlers too.
void removeFolder(const char* path) {
    const int folder = open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (folder < 0) return;
    emptyFolder(folder);
    close(folder);
    rmdir(path);
}

// The signal that is raised again ends the process as if nobody had been asked. (SA_RESETHAND would do that too, but a
// second signal that comes at once then ends it before anything is removed.)
void removeAndDie(int signal) {
    removeStagingFolders();
    std::signal(signal, SIG_DFL);
    raise(signal);
}

void onSignals(void (*handler)(int)) {
    for (const int signal : kEndingSignals) {
        struct sigaction action = {};
        struct sigaction old = {};
        sigaction(signal, nullptr, &old);
        if (old.sa_handler == SIG_IGN) continue;  // nohup
        action.sa_handler = handler;
        for (const int other : kEndingSignals) sigaddset(&action.sa_mask, other);
        sigaction(signal, &action, nullptr);
    }
}

void remember(const std::string& path) {
    for (Removable& folder : theFolders) {
        if (folder.path[0] != '\0' || path.size() >= kPathSize) continue;
        path.copy(folder.path, kPathSize - 1);
        folder.owner = getpid();
        break;
    }
    onSignals(removeAndDie);
}

void forget(const std::string& path) {
    const auto isFree = [](const Removable& folder) { return folder.path[0] == '\0'; };
    for (Removable& folder : theFolders) {
        if (path == folder.path) folder = {};
    }
    if (std::all_of(theFolders.begin(), theFolders.end(), isFree)) onSignals(SIG_DFL);
}

// Only a folder of one's own: in one that others may write to, a plan could name any file.
bool isOurs(const std::string& path) {
    struct stat found;
    return lstat(path.c_str(), &found) == 0 && S_ISDIR(found.st_mode) && found.st_uid == geteuid();
}

// Plans are "file NUL name NUL" for each, and an end mark.
void finishPlan(const std::string& folder, const std::string& parent) {
    const std::string plan = readWholeFile(folder + "/" + kPlan);
    std::vector<std::string> words;
    for (size_t at = 0, end; (end = plan.find('\0', at)) != std::string::npos; at = end + 1) {
        words.push_back(plan.substr(at, end - at));
    }
    if (words.size() % 2 != 1 || words.back() != kPlanEnd) return;
    for (size_t i = 0; i + 1 < words.size(); i += 2) {
        std::rename((folder + "/" + words[i]).c_str(), (parent + "/" + words[i + 1]).c_str());
    }
}

int closeAfter(int file, bool good) {
    int fault = good ? 0 : errno;
    if (close(file) != 0 && fault == 0) fault = errno;
    return fault;
}

bool sync(int file) { return fsync(file) == 0 || errno == EINVAL; }  // some file systems can't

}  // namespace

SignalsWait::SignalsWait() {
    sigset_t ending;
    sigemptyset(&ending);
    for (const int signal : kEndingSignals) sigaddset(&ending, signal);
    sigprocmask(SIG_BLOCK, &ending, &before_);
}

SignalsWait::~SignalsWait() { sigprocmask(SIG_SETMASK, &before_, nullptr); }

StagingFolder::StagingFolder(const std::string& parent) : parent_(parent) {
    std::string path = (parent == "." ? "" : parent + "/") + kBeginning + "XXXXXX";
    if (path.size() >= kPathSize) {
        fault_ = ENAMETOOLONG;
        return;
    }
    const SignalsWait wait;
    if (mkdtemp(path.data()) == nullptr) {
        fault_ = errno;
        return;
    }
    path_ = path;
    life_.tryTake(path_);
    remember(path_);
}

StagingFolder::~StagingFolder() {
    if (path_.empty()) return;
    const SignalsWait wait;
    removeFolder(path_.c_str());
    forget(path_);
}

int StagingFolder::notePlan(const std::vector<std::pair<std::string, std::string>>& fileAndName) const {
    std::string plan;
    for (const auto& [file, name] : fileAndName) plan += file + '\0' + name + '\0';
    return writeNewFile(path_ + "/" + kPlan, plan + kPlanEnd + '\0');
}

void clearUpAfterTheDead(const std::string& parent) {
    // The library's own iterators end the process when there is no memory.
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(parent.c_str()), closedir);
    if (entries == nullptr) return;
    std::vector<std::string> found;
    while (const dirent* entry = readdir(entries.get())) {
        if (std::strncmp(entry->d_name, kBeginning, sizeof kBeginning - 1) == 0) found.emplace_back(entry->d_name);
    }
    for (const std::string& name : found) {
        const std::string path = parent + "/" + name;
        FolderLock life;
        if (!isOurs(path) || !life.tryTake(path)) continue;
        finishPlan(path, parent);
        removeFolder(path.c_str());
    }
}

void removeStagingFolders() {
    for (const Removable& folder : theFolders) {
        if (folder.path[0] != '\0' && folder.owner == getpid()) removeFolder(folder.path);
    }
}

int syncFile(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    return file < 0 ? errno : closeAfter(file, sync(file));
}

int writeNewFile(const std::string& path, const std::string& content) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0) return errno;
    return closeAfter(file, writeAll(file, content) && sync(file));
}

}  // namespace marrowfen::cli
