#include "cli/folder_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <thread>

namespace marrowfen::cli {

namespace {

// Most runs have the lock for less than the first pause; each pause is twice the one before.
constexpr auto kFirstPause = std::chrono::microseconds(50);
constexpr auto kLongestPause = std::chrono::microseconds(5000);

int openFolder(const std::string& folder) { return open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }

}  // namespace

int FolderLock::take(const std::string& folder, std::chrono::milliseconds longestWait) {
    folder_ = openFolder(folder);
    if (folder_ < 0) return errno;
    const auto end = std::chrono::steady_clock::now() + longestWait;
    auto pause = kFirstPause;
    while (flock(folder_, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EINTR) continue;
        if (errno != EWOULDBLOCK) return 0;
        if (std::chrono::steady_clock::now() > end) {
            release();
            return EWOULDBLOCK;
        }
        std::this_thread::sleep_for(pause);
        pause = std::min(2 * pause, kLongestPause);
    }
    return 0;
}

bool FolderLock::tryTake(const std::string& folder) {
    folder_ = openFolder(folder);
    if (folder_ < 0) return false;
    if (flock(folder_, LOCK_EX | LOCK_NB) == 0) return true;
    release();
    return false;
}

void FolderLock::release() {
    if (folder_ >= 0) close(folder_);
    folder_ = -1;
}

}  // namespace marrowfen::cli
