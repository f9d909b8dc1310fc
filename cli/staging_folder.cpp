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
#include <filesystem>
#include <memory>
#include <set>
#include <vector>

#include "ground/write_all.h"

namespace marrowfen::cli {

namespace {

// How a staging folder is called before and after its files are ready. A rename makes the one the other at once, and
// comes to the disk before the moves do: file systems with a journal keep the order of such changes.
constexpr char kBeginning[] = ".marrowfen-run-";
constexpr char kReadyBeginning[] = ".marrowfen-end-";
static_assert(sizeof kBeginning == sizeof kReadyBeginning);
constexpr char kOld[] = ".old";  // folder in it, of what was in the places of its files
constexpr size_t kDrawn = 6;     // letters that follow
constexpr size_t kPathSize = 4096;
constexpr std::array kEndingSignals = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGXCPU};

// What a signal handler removes; it can't use anything that allocates. Changed only while the signals wait.
struct Removable {
    char path[kPathSize] = "";
    pid_t owner = 0;  // a child process has the handler too, but not the folder
};
std::array<Removable, 4> theFolders;

bool theReuses = false;
std::function<void()> theDiskWaits;
std::unique_ptr<StagingFolder> theSpare;

bool isDots(const char* name) { return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0; }

// Files, and folders of files. For signal handlers too.
void emptyFolder(int folder) {
    alignas(dirent64) char entries[4096];
    for (ssize_t n; (n = getdents64(folder, entries, sizeof entries)) > 0;) {
        for (ssize_t at = 0; at < n;) {
            const auto* entry = reinterpret_cast<const dirent64*>(entries + at);
            at += entry->d_reclen;
            if (isDots(entry->d_name) || unlinkat(folder, entry->d_name, 0) == 0) continue;
            const int inner = openat(folder, entry->d_name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            if (inner < 0) continue;
            emptyFolder(inner);
            close(inner);
            unlinkat(folder, entry->d_name, AT_REMOVEDIR);
        }
    }
}

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

// Both paths have the same length.
void rememberAs(const std::string& path, const std::string& before) {
    for (Removable& folder : theFolders) {
        if (before == folder.path) path.copy(folder.path, path.size());
    }
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

// Nothing when it can't be read.
std::vector<std::string> namesIn(const std::string& folder) {
    // The library's own iterators end the process when there is no memory.
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(folder.c_str()), closedir);
    std::vector<std::string> names;
    while (const dirent* entry = entries ? readdir(entries.get()) : nullptr) {
        if (!isDots(entry->d_name)) names.emplace_back(entry->d_name);
    }
    return names;
}

// Whether nothing has come into a place since the run kept what was there, if anything was.
bool isAsKept(const std::string& place, const std::string& kept) {
    struct stat now, then;
    if (lstat(place.c_str(), &now) != 0) return errno == ENOENT;
    return lstat(kept.c_str(), &then) == 0 && now.st_dev == then.st_dev && now.st_ino == then.st_ino;
}

// What a later run has put into a place stays there.
void moveAsKept(const std::string& from, const std::string& parent, const std::string& kept) {
    for (const std::string& name : namesIn(from)) {
        const std::string place = parent + "/" + name;
        if (name == kOld || !isAsKept(place, kept + "/" + name)) continue;
        std::rename((from + "/" + name).c_str(), place.c_str());
    }
}

int closeAfter(int file, bool good) {
    int fault = good ? 0 : errno;
    if (close(file) != 0 && fault == 0) fault = errno;
    return fault;
}

}  // namespace

SignalsWait::SignalsWait() {
    sigset_t ending;
    sigemptyset(&ending);
    for (const int signal : kEndingSignals) sigaddset(&ending, signal);
    sigprocmask(SIG_BLOCK, &ending, &before_);
}

SignalsWait::~SignalsWait() { sigprocmask(SIG_SETMASK, &before_, nullptr); }

std::string folderOf(const std::string& path) {
    const std::string folder = std::filesystem::path(path).parent_path().string();
    return folder.empty() ? "." : folder;
}

StagingFolder::StagingFolder(const std::string& parent) : parent_(parent) {
    const std::string before = parent == "." ? "" : parent + "/";
    std::string path = before + kBeginning + "XXXXXX";
    readyPath_ = before + kReadyBeginning + "XXXXXX";
    if (path.size() >= kPathSize) {
        fault_ = ENAMETOOLONG;
        return;
    }
    const SignalsWait wait;
    if (mkdtemp(path.data()) == nullptr) {
        fault_ = errno;
        return;
    }
    // Nothing from here on needs memory: without an object nobody would remove the folder.
    path_ = std::move(path);
    readyPath_.replace(readyPath_.size() - kDrawn, kDrawn, path_, path_.size() - kDrawn, kDrawn);
    life_.tryTake(path_);
    remember(path_);
    folder_ = open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder_ < 0) fault_ = errno;
}

StagingFolder::~StagingFolder() {
    for (const int file : {folder_, old_}) {
        if (file >= 0) close(file);
    }
    if (path_.empty()) return;
    const SignalsWait wait;
    removeFolder(path_.c_str());
    forget(path_);
}

int StagingFolder::nameFile(const std::string& from, const std::string& name) const {
    return renameat(folder_, from.c_str(), folder_, name.c_str()) == 0 ? 0 : errno;
}

int StagingFolder::keepOld(const std::string& name, const std::string& place) {
    if (access(place.c_str(), F_OK) != 0) return errno;
    if (old_ < 0) {
        if (mkdirat(folder_, kOld, 0777) != 0) return errno;
        old_ = openat(folder_, kOld, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (old_ < 0) return errno;
    }
    if (linkat(AT_FDCWD, place.c_str(), old_, name.c_str(), 0) == 0) return 0;
    // Not every file system has links.
    return renameat(AT_FDCWD, place.c_str(), old_, name.c_str()) == 0 ? 0 : errno;
}

int StagingFolder::setReady(bool isReady) {
    if (isReady == isReady_) return 0;
    if (std::rename(path_.c_str(), readyPath_.c_str()) != 0) return errno;
    rememberAs(readyPath_, path_);
    path_.swap(readyPath_);
    isReady_ = isReady;
    return 0;
}

int StagingFolder::move(const std::string& name, const std::string& place) const {
    return renameat(folder_, name.c_str(), AT_FDCWD, place.c_str()) == 0 ? 0 : errno;
}

void StagingFolder::bringBack(const std::string& name, const std::string& place) const {
    if (renameat(old_, name.c_str(), AT_FDCWD, place.c_str()) == 0) return;
    unlink(place.c_str());
    if (linkat(old_, name.c_str(), AT_FDCWD, place.c_str(), 0) == 0) return;
    renameat(old_, name.c_str(), AT_FDCWD, place.c_str());
}

bool StagingFolder::makeEmpty() {
    if (old_ >= 0) close(old_);
    old_ = -1;
    const SignalsWait wait;
    if (folder_ < 0 || lseek(folder_, 0, SEEK_SET) != 0) return false;
    emptyFolder(folder_);
    return setReady(false) == 0;
}

void reuseStagingFolders() { theReuses = true; }

std::unique_ptr<StagingFolder> stagingFolderIn(const std::string& parent) {
    if (theSpare && theSpare->parent() == parent) return std::move(theSpare);
    return std::make_unique<StagingFolder>(parent);
}

void putAway(std::unique_ptr<StagingFolder> folder) {
    if (theReuses && folder->makeEmpty()) theSpare = std::move(folder);
}

void clearUpAfterTheDead(const std::string& parent) {
    for (const std::string& name : namesIn(parent)) {
        const bool isReady = name.starts_with(kReadyBeginning);
        if (!isReady && !name.starts_with(kBeginning)) continue;
        const std::string path = parent + "/" + name;
        const std::string old = path + "/" + kOld;
        FolderLock life;
        if (!isOurs(path) || !life.tryTake(path)) continue;
        if (isReady) moveAsKept(path, parent, old);
        moveAsKept(old, parent, "");
        removeFolder(path.c_str());
    }
}

void clearUpOnce(const std::string& parent) {
    static std::set<std::string> theSeen;
    if (theSeen.insert(parent).second) clearUpAfterTheDead(parent);
}

void removeStagingFolders() {
    for (const Removable& folder : theFolders) {
        if (folder.path[0] != '\0' && folder.owner == getpid()) removeFolder(folder.path);
    }
}

void beginSync(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return;
    sync_file_range(file, 0, 0, SYNC_FILE_RANGE_WRITE);
    close(file);
}

void tellOfDiskWaits(std::function<void()> tell) { theDiskWaits = std::move(tell); }

int syncFile(const std::string& path) {
    if (theDiskWaits) theDiskWaits();
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const bool good = file >= 0 && (fsync(file) == 0 || errno == EINVAL);  // some file systems can't
    return file < 0 ? errno : closeAfter(file, good);
}

int writeNewFile(const std::string& path, const std::string& content) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0) return errno;
    return closeAfter(file, writeAll(file, content));
}

}  // namespace marrowfen::cli
