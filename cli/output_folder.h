#pragma once

// The one way in which commands write files: whole ones or none. All files of a run come into being in a folder of its
// own beside the first, and go to their places together once all is good.

#include <memory>
#include <string>
#include <vector>

#include "cli/command.h"
#include "cli/staging_folder.h"

namespace marrowfen::cli {

// A link stays one, and the file that it points to is written. Devices, pipes, folders, read-only files and the run's
// own inputs are refused before any work. An old file's rights are the new one's. Runs that write into one folder do so
// one after the other.
class OutputFolder {
public:
    enum class Lock { WhileMoving, Throughout };  // throughout: for a run that changes a file

    struct Output {
        std::string path;  // as the user gave it
        std::string name;  // in the run's folder
    };

    // Makes the folder, or records why nothing can be written.
    OutputFolder(const std::vector<Output>& outputs, const std::vector<std::string>& inputs,
                 Lock lock = Lock::WhileMoving);

    // For a command with one output, which may be standard output: deliverText() then prints it there.
    OutputFolder(const std::string& output, const std::vector<std::string>& inputs, Lock lock = Lock::WhileMoving);

    ~OutputFolder();
    OutputFolder(const OutputFolder&) = delete;
    OutputFolder& operator=(const OutputFolder&) = delete;

    static bool isStandardOutput(const std::string& path) { return path == "-" || path == "/dev/stdout"; }

    const Outcome& made() const { return made_; }

    // One more output, with this content.
    Outcome add(const std::string& path, const std::string& content);

    // Where output i is written until it is delivered.
    std::string file(size_t i) const;

    // Move all outputs, or one alone, into place over older ones. All of them or none.
    Outcome deliverAll() { return deliver(places_); }
    Outcome deliverOne(size_t i) { return deliver({places_[i]}); }

    // The first output with this content, and all others.
    Outcome deliverText(const std::string& content);

private:
    struct Place {
        Output output;
        std::string target;               // the output, or where it points when it is a link
        StagingFolder* folder = nullptr;  // in the same folder as the target
        int mode = -1;                    // of an old file
        std::string name{};               // of the target
        bool hasOld = false;              // while delivering: the old file is kept in the folder
    };
    std::vector<Place> places_;
    std::vector<std::unique_ptr<StagingFolder>> folders_;
    FolderLock lock_;
    bool keepsLock_ = false;
    bool isStandardOutput_ = false;
    Outcome made_;

    Outcome prepare(const std::vector<Output>& outputs, const std::vector<std::string>& inputs);
    Outcome addFolderOf(Place& place);
    Outcome takeLock();
    Outcome ripen(const Place& place) const;
    Outcome deliver(std::vector<Place> places);
    static Outcome moveAlone(const Place& place);
    static Outcome moveTogether(std::vector<Place>& places);
};

}  // namespace marrowfen::cli
