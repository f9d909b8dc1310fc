#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "standin/host/scene.h"

namespace marrowfen::cli {

// The files that exports asked for, found or not, and which of them have changed since. Looks at them again and again:
// that works on every file system, and editors replace files rather than write into them.
class ChangeWatch {
public:
    // The files of an export, by its number. Those of an earlier, broken attempt stay watched. They are taken as they
    // were when they were seen first, or when a change of them was told.
    void follow(size_t number, const std::vector<standin::LookedFor>& files);

    // Waits until something has changed and is at rest. The exports that it concerns.
    std::vector<size_t> waitForChange();

    size_t size() const { return followers_.size(); }

private:
    std::map<std::string, std::set<size_t>> followers_;  // by path
    std::map<std::string, std::string> states_;          // by path
};

}  // namespace marrowfen::cli
