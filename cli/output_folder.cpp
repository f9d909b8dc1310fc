#include "cli/output_folder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace marrowfen::cli {

namespace {

namespace fs = std::filesystem;

constexpr mode_t kRights = 07777;
constexpr mode_t kWriteRights = 0222;

Outcome fault(const std::string& path, const std::string& why) { return {UnwritableOutput, path + ": " + why}; }
Outcome fault(const std::string& path, int why) { return fault(path, std::strerror(why)); }

// Good when there is nothing to tell.
Outcome faultIf(const std::string& path, int why) { return why == 0 ? Outcome() : fault(path, why); }

bool isSameFile(const struct stat& a, const struct stat& b) { return a.st_dev == b.st_dev && a.st_ino == b.st_ino; }

// Whether a file can take this place. mode: the rights of the one that has it; left as it is when there is none.
Outcome checkPlace(const std::string& path, const std::vector<std::string>& inputs, int& mode) {
    struct stat found;
    if (stat(path.c_str(), &found) != 0) return errno == ENOENT ? Outcome() : fault(path, errno);
    if (S_ISDIR(found.st_mode)) return fault(path, EISDIR);
    if (!S_ISREG(found.st_mode)) return fault(path, "not a regular file");
    for (const std::string& input : inputs) {
        struct stat read;
        if (stat(input.c_str(), &read) == 0 && isSameFile(found, read)) return fault(path, "is an input of this run");
    }
    // The superuser could write, and doesn't want to either.
    if ((found.st_mode & kWriteRights) == 0) return fault(path, "is read-only");
    if (access(path.c_str(), W_OK) != 0) return fault(path, errno);
    mode = static_cast<int>(found.st_mode & kRights);
    return {};
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

std::string folderOf(const std::string& path) {
    const fs::path folder = fs::path(path).parent_path();
    return folder.empty() ? "." : folder.string();
}

// Keeps an old file for the way back. 0 or an errno; ENOENT when there is none.
int keepOld(const std::string& file, const std::string& kept) {
    if (link(file.c_str(), kept.c_str()) == 0) return 0;
    if (errno == ENOENT) return ENOENT;
    // Not every file system has links.
    return std::rename(file.c_str(), kept.c_str()) == 0 ? 0 : errno;
}

void bringBack(const std::string& kept, const std::string& file) {
    if (std::rename(kept.c_str(), file.c_str()) == 0) return;
    unlink(file.c_str());
    if (link(kept.c_str(), file.c_str()) != 0) std::rename(kept.c_str(), file.c_str());
}

}  // namespace

OutputFolder::OutputFolder(const std::vector<Output>& outputs, const std::vector<std::string>& inputs, Lock lock)
    : keepsLock_(lock == Lock::Throughout), made_(prepare(outputs, inputs)) {
    if (!keepsLock_) lock_.release();
}

OutputFolder::OutputFolder(const std::string& output, const std::vector<std::string>& inputs, Lock lock)
    : keepsLock_(lock == Lock::Throughout), isStandardOutput_(output == "/dev/stdout") {
    if (isStandardOutput_) return;
    made_ = prepare({{output, "file"}}, inputs);
    if (!keepsLock_) lock_.release();
}

Outcome OutputFolder::prepare(const std::vector<Output>& outputs, const std::vector<std::string>& inputs) {
    for (const Output& output : outputs) {
        Place place{output, behindLinks(output.path)};
        if (Outcome checked = checkPlace(output.path, inputs, place.mode); !checked.good()) return checked;
        for (const Place& other : places_) {
            if (other.target == place.target) return fault(output.path, "is " + other.output.path + " too");
        }
        places_.push_back(std::move(place));
    }
    if (Outcome locked = takeLock(); !locked.good()) return locked;
    for (Place& place : places_) {
        if (Outcome added = addFolderOf(place); !added.good()) return added;
    }
    return {};
}

Outcome OutputFolder::add(const std::string& path, const std::string& content) {
    Place place{{path, "file" + std::to_string(places_.size())}, behindLinks(path)};
    if (Outcome checked = checkPlace(path, {}, place.mode); !checked.good()) return checked;
    if (Outcome added = addFolderOf(place); !added.good()) return added;
    places_.push_back(std::move(place));
    return faultIf(path, writeNewFile(file(places_.size() - 1), content));
}

Outcome OutputFolder::addFolderOf(Place& place) {
    const std::string parent = folderOf(place.target);
    for (const StagingFolder& folder : folders_) {
        if (folder.parent() == parent) place.folder = &folder;
    }
    if (place.folder == nullptr) place.folder = &folders_.emplace_back(parent);
    place.ripe = place.folder->path() + "/" + place.output.name;
    place.kept = place.folder->path() + "/old-" + place.output.name;
    return faultIf(place.output.path, place.folder->fault());
}

// With the lock it is time to look for what others left.
Outcome OutputFolder::takeLock() {
    const std::string& path = places_.front().output.path;
    const std::string folder = folderOf(places_.front().target);
    if (!lock_.isHeld()) {
        const int why = lock_.take(folder);
        if (why == EWOULDBLOCK) return fault(path, "another run keeps on writing in this folder");
        if (why != 0) return fault(path, why);
    }
    clearUpAfterTheDead(folder);
    return {};
}

std::string OutputFolder::file(size_t i) const { return folders_.front().path() + "/" + places_.at(i).output.name; }

Outcome OutputFolder::deliverText(const std::string& content) {
    if (isStandardOutput_) return printResult(content);
    const Outcome written = faultIf(places_.front().output.path, writeNewFile(file(0), content));
    return written.good() ? deliverAll() : written;
}

// Gets a file ready to be moved: in its target's folder, with the rights of the old one, and on the disk.
Outcome OutputFolder::ripen(const Place& place) const {
    const std::string made = folders_.front().path() + "/" + place.output.name;
    std::error_code failure;
    if (place.ripe != made) fs::copy_file(made, place.ripe, failure);
    int why = failure.value();
    if (why == 0 && place.mode >= 0 && chmod(place.ripe.c_str(), static_cast<mode_t>(place.mode)) != 0) why = errno;
    if (why == 0) why = syncFile(place.ripe);
    return faultIf(place.output.path, why);
}

Outcome OutputFolder::deliver(std::vector<Place> places) {
    for (const Place& place : places) {
        if (Outcome ripe = ripen(place); !ripe.good()) return ripe;
    }
    if (Outcome locked = takeLock(); !locked.good()) return locked;
    Outcome moved = moveTogether(places);
    for (const Place& place : places) {
        if (moved.good()) moved = faultIf(place.output.path, syncFile(place.folder->parent()));
    }
    if (!keepsLock_) lock_.release();
    return moved;
}

// The last one first: a log may be without its output, not an output without its log. Nothing of it needs memory once a
// file has been moved.
Outcome OutputFolder::moveTogether(std::vector<Place>& places) {
    const SignalsWait wait;
    std::vector<std::pair<std::string, std::string>> plan;
    for (const Place& place : places) {
        if (place.folder != &folders_.front()) continue;
        plan.emplace_back(place.output.name, fs::path(place.target).filename().string());
    }
    int why = places.size() > 1 ? folders_.front().notePlan(plan) : 0;
    if (why != 0) return fault(places.front().output.path, why);

    size_t next = places.size();
    while (why == 0 && next > 0) {
        Place& place = places[--next];
        const int noOld = places.size() > 1 ? keepOld(place.target, place.kept) : ENOENT;
        place.hasOld = noOld == 0;
        if (noOld != 0 && noOld != ENOENT) why = noOld;
        if (why == 0 && std::rename(place.ripe.c_str(), place.target.c_str()) != 0) why = errno;
    }
    if (why == 0) return {};
    // The way back. What failed itself is still the old one, unless that had to be moved to be kept.
    const std::string& failed = places[next].output.path;
    for (size_t i = next; i < places.size(); ++i) {
        if (places[i].hasOld) {
            bringBack(places[i].kept, places[i].target);
        } else if (i > next) {
            unlink(places[i].target.c_str());
        }
    }
    return fault(failed, why);
}

Outcome writeWholeFile(const std::string& path, const std::string& content) {
    OutputFolder folder(path, {});
    return folder.made().good() ? folder.deliverText(content) : folder.made();
}

}  // namespace marrowfen::cli
