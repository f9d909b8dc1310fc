#include "cli/command.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "cli/terminal_text.h"

namespace marrowfen::cli {

namespace {

void line(bool colored, const char* color, const char* label, const std::string& text) {
    // Names of a scene may hold anything; what is said is one line.
    std::fprintf(stderr, "%s%s%s%s\n", colored ? color : "", label, colored && *color != '\0' ? "\033[0m" : "",
                 forTerminal(text).c_str());
}

}  // namespace

void Session::error(const std::string& text) const { line(isColored, "\033[31m", "error: ", text); }

void Session::hint(const std::string& text) const {
    if (!quiet) line(isColored, "\033[36m", "hint: ", text);
}

void Session::warning(const std::string& text) const {
    if (!quiet) line(isColored, "\033[33m", "warning: ", text);
}

void Session::note(const std::string& text) const {
    if (!quiet) line(false, "", "", text);
}

void Session::detail(const std::string& text) const {
    if (verbosity > 0 && !quiet) line(false, "", "", text);
}

Outcome printResult(const std::string& result) {
    // A terminal would obey what a name says.
    const std::string text = isatty(STDOUT_FILENO) != 0 ? forTerminal(result, true) : result;
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0) return {};
    return {UnwritableOutput, std::string("standard output: ") + std::strerror(errno)};
}

int Session::tell(const Outcome& outcome) const {
    if (!outcome.error.empty()) error(outcome.error);
    if (!outcome.hint.empty()) hint(outcome.hint);
    return outcome.code;
}

}  // namespace marrowfen::cli
