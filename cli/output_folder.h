#pragma once

// Whole output files or none: an export runs in a folder of its own beside the output, and only what turned out good is
// moved into place.

#include <string>

#include "cli/command.h"

namespace marrowfen::cli {

class OutputFolder {
public:
    // Makes the folder beside the output, or records why nothing can be written there. While it exists, SIGINT and
    // SIGTERM remove it before they end the process. One at a time.
    // The output's name ends in .dts or .dsq.
    explicit OutputFolder(const std::string& output);
    ~OutputFolder();  // removes the folder with all that is in it
    OutputFolder(const OutputFolder&) = delete;
    OutputFolder& operator=(const OutputFolder&) = delete;

    const Outcome& made() const { return made_; }

    // Where the export writes the output and its log: with the output's ending, and as short as can be.
    const std::string& file() const { return file_; }
    std::string log() const { return file_ + ".log"; }

    // Move the files into place over older ones.
    Outcome deliverLog() const;
    Outcome deliverBoth() const;

    // Why the last file came out incomplete, as far as another attempt to write there tells.
    std::string writeFault() const;

private:
    std::string target_;  // the output, or where it points when it is a link
    std::string log_;     // the log's place: beside the output itself, under its name
    std::string folder_;
    std::string file_;
    Outcome made_;
};

}  // namespace marrowfen::cli
