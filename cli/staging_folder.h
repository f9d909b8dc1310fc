#pragma once

// A run's files come into being in a folder of its own beside their places, and are moved from there. Whatever ends the
// run, the folder goes: with the object, before a signal ends the process, or by the next run that has something to
// write there.

#include <csignal>
#include <string>
#include <utility>
#include <vector>

#include "cli/folder_lock.h"

namespace marrowfen::cli {

class StagingFolder {
public:
    // Makes it in a folder whose lock the caller holds. A failure shows in fault(), an errno.
    explicit StagingFolder(const std::string& parent);
    ~StagingFolder();  // removes it with all that is in it
    StagingFolder(const StagingFolder&) = delete;
    StagingFolder& operator=(const StagingFolder&) = delete;

    int fault() const { return fault_; }
    const std::string& path() const { return path_; }
    const std::string& parent() const { return parent_; }

    // Notes which of its files are about to get which names in the parent folder: should the run die between two of
    // these moves, the next run finishes them. 0 or an errno.
    int notePlan(const std::vector<std::pair<std::string, std::string>>& fileAndName) const;

private:
    std::string parent_;
    std::string path_;
    FolderLock life_;  // held as long as the run lives
    int fault_ = 0;
};

// Finishes what runs that died had begun to move in this folder, and removes what they left. The caller holds its lock.
void clearUpAfterTheDead(const std::string& parent);

// While it lives, signals that end a process wait.
class SignalsWait {
public:
    SignalsWait();
    ~SignalsWait();
    SignalsWait(const SignalsWait&) = delete;
    SignalsWait& operator=(const SignalsWait&) = delete;

private:
    sigset_t before_;
};

// Removes all folders of this process, without memory.
void removeStagingFolders();

// Puts a file's bytes on the disk. 0 or an errno.
int syncFile(const std::string& path);

// Writes a new file, through to the disk. 0 or an errno.
int writeNewFile(const std::string& path, const std::string& content);

}  // namespace marrowfen::cli
