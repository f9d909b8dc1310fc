#pragma once

#include <string>

#include "cli/command.h"

namespace marrowfen::cli {

// A line on the terminal of standard error that is drawn over and over in its place. Nothing where there is none, or
// where the session is to be quiet.
class ProgressBar {
public:
    explicit ProgressBar(const Session& session, bool isWanted = true);

    bool isDrawn() const { return isDrawn_; }  // whether show() does anything

    // part: of the whole, 0 to 1. The text may hold names.
    void show(double part, const std::string& text);
    // Before anything else is said.
    void clear();

private:
    bool isDrawn_;
    std::string line_;  // that stands there
};

}  // namespace marrowfen::cli
