#include "cli/progress_bar.h"

#include <unistd.h>

#include <cstdio>

#include "cli/terminal_text.h"

namespace marrowfen::cli {

namespace {

constexpr size_t kWidth = 30;
constexpr const char* kEmptyLine = "\r\033[K";

}  // namespace

ProgressBar::ProgressBar(const Session& session, bool isWanted)
    : isDrawn_(isWanted && !session.quiet && isatty(STDERR_FILENO) != 0) {}

void ProgressBar::show(double part, const std::string& text) {
    if (!isDrawn_) return;
    std::string bar(static_cast<size_t>(part * kWidth), '#');
    bar.resize(kWidth, ' ');
    const std::string line = "[" + bar + "] " + forTerminal(text);
    if (line == line_) return;
    line_ = line;
    std::fprintf(stderr, "%s%s", kEmptyLine, line_.c_str());
    std::fflush(stderr);
}

void ProgressBar::clear() {
    if (!line_.empty()) std::fputs(kEmptyLine, stderr);
    line_.clear();
}

}  // namespace marrowfen::cli
