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

// Between two file systems it may be.
int copyFile(const std::string& from, const std::string& to) {
    std::error_code failure;
    fs::copy_file(from, to, failure);
    if (!failure) fs::remove(from, failure);
    return failure.value();
}

}  // namespace

OutputFolder::OutputFolder(const std::vector<Output>& outputs, const std::vector<std::string>& inputs, Lock lock)
    : keepsLock_(lock == Lock::Throughout), made_(prepare(outputs, inputs)) {
    if (!keepsLock_) lock_.release();
}

OutputFolder::OutputFolder(const std::string& output, const std::vector<std::string>& inputs, Lock lock)
    : keepsLock_(lock == Lock::Throughout), isStandardOutput_(isStandardOutput(output)) {
    if (isStandardOutput_) return;
    made_ = prepare({{output, "file"}}, inputs);
    if (!keepsLock_) lock_.release();
}

OutputFolder::~OutputFolder() {
    for (auto& folder : folders_) putAway(std::move(folder));
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
    clearUpOnce(folderOf(places_.front().target));
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
    for (const auto& folder : folders_) {
        if (folder->parent() == parent) place.folder = folder.get();
    }
    if (place.folder == nullptr) place.folder = folders_.emplace_back(stagingFolderIn(parent)).get();
    place.name = fs::path(place.target).filename().string();
    return faultIf(place.output.path, place.folder->fault());
}

Outcome OutputFolder::takeLock() {
    const std::string& path = places_.front().output.path;
    const int why = lock_.isHeld() ? 0 : lock_.take(folderOf(places_.front().target));
    return why == EWOULDBLOCK ? fault(path, "another run keeps on writing in this folder") : faultIf(path, why);
}

std::string OutputFolder::file(size_t i) const { return folders_.front()->path() + "/" + places_.at(i).output.name; }

Outcome OutputFolder::deliverText(const std::string& content) {
    if (isStandardOutput_) return printResult(content);
    const Outcome written = faultIf(places_.front().output.path, writeNewFile(file(0), content));
    return written.good() ? deliverAll() : written;
}

// Puts a file into its target's folder, with the target's name and the rights of the old one.
Outcome OutputFolder::ripen(const Place& place) const {
    const StagingFolder& made = *folders_.front();
    const std::string ripe = place.folder->path() + "/" + place.name;
    int why = place.folder == &made ? made.nameFile(place.output.name, place.name)
                                    : copyFile(made.path() + "/" + place.output.name, ripe);
    if (why == 0 && place.mode >= 0 && chmod(ripe.c_str(), static_cast<mode_t>(place.mode)) != 0) why = errno;
    if (why == 0) beginSync(ripe);
    return faultIf(place.output.path, why);
}

// The moves themselves aren't waited for: what a power failure may undo is the whole pair.
Outcome OutputFolder::deliver(std::vector<Place> places) {
    for (const Place& place : places) {
        if (Outcome ripe = ripen(place); !ripe.good()) return ripe;
    }
    for (const Place& place : places) {
        const int why = syncFile(place.folder->path() + "/" + place.name);
        if (why != 0) return fault(place.output.path, why);
    }
    if (Outcome locked = takeLock(); !locked.good()) return locked;
    const SignalsWait wait;
    Outcome moved = places.size() > 1 ? moveTogether(places) : moveAlone(places.front());
    if (!keepsLock_) lock_.release();
    return moved;
}

Outcome OutputFolder::moveAlone(const Place& place) {
    return faultIf(place.output.path, place.folder->move(place.name, place.target));
}

// The last one first: a log may be without its output, not an output without its log.
Outcome OutputFolder::moveTogether(std::vector<Place>& places) {
    int why = 0;
    size_t failed = 0;
    for (size_t i = 0; i < places.size() && why == 0; ++i) {
        const int noOld = places[i].folder->keepOld(places[i].name, places[i].target);
        places[i].hasOld = noOld == 0;
        if (noOld != ENOENT) why = noOld;
        failed = i;
    }
    for (size_t i = 0; i < places.size() && why == 0; ++i) why = places[i].folder->setReady(true);
    size_t moved = places.size();
    while (why == 0 && moved > 0) {
        failed = moved - 1;
        why = places[failed].folder->move(places[failed].name, places[failed].target);
        if (why == 0) moved = failed;
    }
    if (why == 0) return {};
    // The way back.
    for (const Place& place : places) place.folder->setReady(false);
    for (size_t i = 0; i < places.size(); ++i) {
        if (places[i].hasOld) {
            places[i].folder->bringBack(places[i].name, places[i].target);
        } else if (i >= moved) {
            unlink(places[i].target.c_str());
        }
    }
    return fault(places[failed].output.path, why);
}

Outcome writeWholeFile(const std::string& path, const std::string& content) {
    OutputFolder folder(path, {});
    return folder.made().good() ? folder.deliverText(content) : folder.made();
}

}  // namespace marrowfen::cli
