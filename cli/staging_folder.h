#pragma once

// A run's files come into being in a folder of its own beside their places, and are moved from there. Whatever ends the
// run, the folder goes: with the object, before a signal ends the process, or by the next run that has something to
// write there.

#include <csignal>
#include <functional>
#include <memory>
#include <string>

#include "cli/folder_lock.h"

namespace marrowfen::cli {

// The folder in which a path's file is, or will be.
std::string folderOf(const std::string& path);

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

    // Gives a file in it the name that it'll have in the parent folder. 0 or an errno, as below.
    int nameFile(const std::string& from, const std::string& name) const;

    // The way of several files to their places in the parent folder: what is there is kept, the folder is declared
    // ready, the files are moved. Should the run die before the second step, the next one removes the folder; after it,
    // it moves those that are left. From there on nothing needs memory.
    int keepOld(const std::string& name, const std::string& place);  // ENOENT when nothing is there
    int setReady(bool isReady);                                      // changes path()
    int move(const std::string& name, const std::string& place) const;
    void bringBack(const std::string& name, const std::string& place) const;  // what keepOld kept

    // As if it were new. False if it can't be made so.
    bool makeEmpty();

private:
    std::string parent_;
    std::string path_;
    std::string readyPath_;  // or the other one, once it is ready
    bool isReady_ = false;
    int folder_ = -1, old_ = -1;  // open
    FolderLock life_;             // held as long as the run lives
    int fault_ = 0;
};

// A process for many runs makes one folder for all that write into one place, which is faster; it calls
// reuseStagingFolders() first and removeStagingFolders() at its end. Others remove theirs when it is put away.
void reuseStagingFolders();
std::unique_ptr<StagingFolder> stagingFolderIn(const std::string& parent);
void putAway(std::unique_ptr<StagingFolder> folder);

// Finishes what runs that died had begun to move in this folder, and removes what they left. The caller holds its lock.
void clearUpAfterTheDead(const std::string& parent);
void clearUpOnce(const std::string& parent);  // unless this process, or one that it was forked from, has done so before

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

// Puts a file's bytes on the disk. 0 or an errno. Several files take hardly longer than one if all are begun first.
void beginSync(const std::string& path);
int syncFile(const std::string& path);

// What syncFile() calls before it waits, in a process that has something to tell then.
void tellOfDiskWaits(std::function<void()> tell);

// Writes a new file. 0 or an errno.
int writeNewFile(const std::string& path, const std::string& content);

}  // namespace marrowfen::cli
