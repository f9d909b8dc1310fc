#pragma once

// Whole output files or none: an export runs in a folder of its own beside the output, and only what turned out good is
// moved into place.

#include <string>

namespace marrowfen::cli {

class OutputFolder {
public:
    // Makes the folder beside the output, or records why nothing can be written there. While it exists, SIGINT and
    // SIGTERM remove it before they end the process. One at a time.
    explicit OutputFolder(const std::string& output);
    ~OutputFolder();  // removes the folder with all that is in it
    OutputFolder(const OutputFolder&) = delete;
    OutputFolder& operator=(const OutputFolder&) = delete;

    const std::string& error() const { return error_; }  // one line that names the file; empty for none

    // Where the export writes the output and its log: with the output's ending, and as short as can be.
    const std::string& file() const { return file_; }
    std::string log() const { return file_ + ".log"; }

    // Move the files into place over older ones. Empty on success, else one line that names the file.
    std::string deliverLog() const;
    std::string deliverBoth() const;

    // Why the last file came out incomplete, as far as another attempt to write there tells.
    std::string writeFault() const;

private:
    std::string target_;  // the output, or where it points when it is a link
    std::string folder_;
    std::string file_;
    std::string error_;
};

}  // namespace marrowfen::cli
