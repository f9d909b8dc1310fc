#include "cli/command.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "cli/terminal_text.h"

namespace marrowfen::cli {

namespace {

void line(const char* color, const char* label, const std::string& text) {
    const bool colored = isatty(STDERR_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr;
    // Names of a scene may hold anything; what is said is one line.
    std::fprintf(stderr, "%s%s%s%s\n", colored ? color : "", label, colored ? "\033[0m" : "",
                 forTerminal(text).c_str());
}

}  // namespace

void Session::error(const std::string& text) const { line("\033[31m", "error: ", text); }

void Session::hint(const std::string& text) const {
    if (!quiet) line("\033[36m", "hint: ", text);
}

void Session::warning(const std::string& text) const {
    if (!quiet) line("\033[33m", "warning: ", text);
}

void Session::note(const std::string& text) const {
    if (!quiet) line("", "", text);
}

void Session::detail(const std::string& text) const {
    if (verbose && !quiet) line("", "", text);
}

Outcome printResult(const std::string& text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0) return {};
    return {UnwritableOutput, std::string("standard output: ") + std::strerror(errno)};
}

void onRun(CLI::App& command, Session& session, const std::function<Outcome()>& run) {
    command.callback([run, &session] {
        const Outcome outcome = run();
        if (!outcome.error.empty()) session.error(outcome.error);
        if (!outcome.hint.empty()) session.hint(outcome.hint);
        session.exitCode = outcome.code;
    });
}

}  // namespace marrowfen::cli
