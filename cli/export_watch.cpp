#include "cli/export_watch.h"

#include <sys/stat.h>

#include <chrono>
#include <thread>

namespace marrowfen::cli {

namespace {

constexpr std::chrono::milliseconds kBetweenLooks{100};

// Another text for a file that was written, replaced, made or removed.
std::string stateOf(const std::string& path) {
    struct stat found;
    if (stat(path.c_str(), &found) != 0) return {};
    return std::to_string(found.st_ino) + " " + std::to_string(found.st_size) + " " +
           std::to_string(found.st_mtim.tv_sec) + " " + std::to_string(found.st_mtim.tv_nsec);
}

}  // namespace

void ChangeWatch::follow(size_t number, const std::vector<standin::LookedFor>& files) {
    for (const standin::LookedFor& file : files) {
        followers_[file.path].insert(number);
        states_.emplace(file.path, stateOf(file.path));
    }
}

std::vector<size_t> ChangeWatch::waitForChange() {
    std::set<size_t> concerned;
    for (bool isMoving = false; concerned.empty() || isMoving;) {
        std::this_thread::sleep_for(kBetweenLooks);
        isMoving = false;
        for (auto& [path, state] : states_) {
            std::string now = stateOf(path);
            if (now == state) continue;
            state = std::move(now);
            isMoving = true;
            concerned.insert(followers_[path].begin(), followers_[path].end());
        }
    }
    return {concerned.begin(), concerned.end()};
}

}  // namespace marrowfen::cli
