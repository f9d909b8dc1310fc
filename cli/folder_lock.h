#pragma once

#include <chrono>
#include <string>

namespace marrowfen::cli {

// The right to change what stands in a folder: one run has it at a time, and a run that dies gives it back. A file
// system without locks gives it to everybody.
class FolderLock {
public:
    FolderLock() = default;
    ~FolderLock() { release(); }
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

    // Waits for the lock, at most as long as that. 0 or the errno of why there is none.
    int take(const std::string& folder, std::chrono::milliseconds longestWait = std::chrono::seconds(30));
    // Doesn't wait; false too where the file system has no locks.
    bool tryTake(const std::string& folder);
    void release();

    bool isHeld() const { return folder_ >= 0; }

private:
    int folder_ = -1;
};

}  // namespace marrowfen::cli
