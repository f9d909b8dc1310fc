#include "cli/export_batch.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <sstream>

#include "cli/export_child.h"
#include "cli/export_record.h"
#include "ground/comma_list.h"
#include "ground/pieces.h"

namespace marrowfen::cli {

namespace {

constexpr int kLookMilliseconds = 50;  // between looks at what takes too long
constexpr double kGraceSeconds = 0.1;  // for an export that is ended to remove what it has begun
constexpr size_t kNamesOnBar = 3;

volatile std::sig_atomic_t theSignal = 0;

// Notes the signals that end a process while it lives, except those that are ignored.
class Interruption {
public:
    Interruption() {
        theSignal = 0;
        for (size_t i = 0; i < std::size(kSignals); ++i) {
            struct sigaction action = {};
            action.sa_handler = [](int signal) { theSignal = signal; };
            sigaction(kSignals[i], nullptr, &before_[i]);
            if (before_[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &action, nullptr);
        }
    }
    ~Interruption() {
        for (size_t i = 0; i < std::size(kSignals); ++i) sigaction(kSignals[i], &before_[i], nullptr);
    }
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

private:
    static constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};
    struct sigaction before_[std::size(kSignals)] = {};
};

std::string fileNameOf(const std::string& path) { return std::filesystem::path(path).filename().string(); }

class Batch {
public:
    Batch(const std::vector<ExportOptions>& exports, const std::vector<size_t>& numbers, const BatchOptions& options,
          const Session& session, std::vector<BatchRow>& rows)
        : exports_(exports),
          numbers_(numbers),
          options_(options),
          session_(session),
          childSession_(session),
          rows_(rows),
          hasBar_(isatty(STDERR_FILENO) != 0 && !session.quiet && numbers.size() > 1) {}

    void run() {
        const Interruption interruption;
        while ((next_ < numbers_.size() || !running_.empty()) && theSignal == 0) {
            while (running_.size() < options_.jobs && next_ < numbers_.size()) start(numbers_[next_++]);
            showBar();
            wait();
            endLate();
        }
        clearBar();
        if (theSignal != 0) endAll();
    }

private:
    void start(size_t number) {
        const std::filesystem::path folder = std::filesystem::path(exports_[number].output).parent_path();
        std::error_code ignored;  // the export says what it can't write
        if (!exports_[number].dryRun && !folder.empty()) std::filesystem::create_directories(folder, ignored);
        std::fflush(nullptr);  // or the child would write it again
        running_[number] = std::make_unique<ExportChild>(exports_[number], childSession_);
    }

    // Until one has something to say.
    void wait() {
        std::vector<pollfd> files;
        std::vector<size_t> owners;
        for (const auto& [number, child] : running_) {
            files.push_back({child->pipe(), POLLIN, 0});
            owners.push_back(number);
        }
        if (poll(files.data(), files.size(), kLookMilliseconds) <= 0) return;
        for (size_t i = 0; i < files.size(); ++i) {
            if (files[i].revents != 0 && !running_[owners[i]]->take()) finish(owners[i]);
        }
    }

    void finish(size_t number) {
        ExportChild& child = *running_[number];
        BatchRow& row = rows_[number];
        row.result = child.end();
        row.seconds = child.seconds();
        if (late_.count(number) > 0) {
            std::ostringstream limit;
            limit << options_.seconds;
            row.result.outcome = {OurFault,
                                  exports_[number].scene + ": given up after " + limit.str() + " s (--timeout)"};
        }
        tell(number, child.lines());
        running_.erase(number);
        late_.erase(number);
        ++done_;
    }

    // All that is said about one export, in one piece.
    void tell(size_t number, const std::string& lines) {
        clearBar();
        const Outcome& outcome = rows_[number].result.outcome;
        std::string text;
        for (const std::string& line : piecesOf(lines, '\n')) text += (options_.namesRows ? "  " : "") + line + "\n";
        if (options_.namesRows && !text.empty()) text = exports_[number].scene + ":\n" + text;
        std::fwrite(text.data(), 1, text.size(), stderr);
        session_.tell(outcome);
    }

    void endLate() {
        for (const auto& [number, child] : running_) {
            if (child->seconds() < options_.seconds) continue;
            child->ask(late_.insert(number).second ? SIGTERM : 0);
            if (child->seconds() > options_.seconds + kGraceSeconds) child->ask(SIGKILL);
        }
    }

    // They remove what they have begun; this process then ends as if nobody had been asked.
    void endAll() {
        for (const auto& [number, child] : running_) child->ask(SIGTERM);
        const auto began = std::chrono::steady_clock::now();
        for (const auto& [number, child] : running_) {
            pollfd file{child->pipe(), POLLIN, 0};
            while (true) {
                const std::chrono::duration<double> waited = std::chrono::steady_clock::now() - began;
                const int left = static_cast<int>((kGraceSeconds - waited.count()) * 1000);
                if (left <= 0 || (poll(&file, 1, left) > 0 && !child->take())) break;
            }
            child->ask(SIGKILL);
            child->end();
        }
        std::signal(theSignal, SIG_DFL);
        raise(theSignal);
    }

    void showBar() {
        if (!hasBar_ || running_.empty()) return;
        constexpr size_t kBarWidth = 30;
        std::string names;
        size_t shown = 0;
        for (const auto& [number, child] : running_) {
            if (shown++ == kNamesOnBar) break;
            addToList(names, fileNameOf(exports_[number].scene));
        }
        const std::string bar(done_ * kBarWidth / numbers_.size(), '#');
        const std::string text = std::to_string(done_) + "/" + std::to_string(numbers_.size()) + " " + names;
        if (text == barText_) return;
        barText_ = text;
        std::fprintf(stderr, "\r\033[K[%-*s] %s", static_cast<int>(kBarWidth), bar.c_str(), text.c_str());
        std::fflush(stderr);
    }

    void clearBar() {
        if (!barText_.empty()) std::fputs("\r\033[K", stderr);
        barText_.clear();
    }

    const std::vector<ExportOptions>& exports_;
    const std::vector<size_t>& numbers_;
    const BatchOptions& options_;
    const Session& session_;
    const Session childSession_;
    std::vector<BatchRow>& rows_;
    const bool hasBar_;
    std::map<size_t, std::unique_ptr<ExportChild>> running_;
    std::set<size_t> late_;  // asked to end
    size_t next_ = 0;
    size_t done_ = 0;
    std::string barText_;
};

}  // namespace

void exportBatch(const std::vector<ExportOptions>& exports, const std::vector<size_t>& numbers,
                 const BatchOptions& options, const Session& session, std::vector<BatchRow>& rows) {
    Batch(exports, numbers, options, session, rows).run();
}

std::string batchTable(const std::vector<ExportOptions>& exports, const std::vector<BatchRow>& rows) {
    std::string text = "result      seconds  scene\n";
    std::map<std::string, size_t> counts;
    for (size_t i = 0; i < rows.size(); ++i) {
        const ExportResult& result = rows[i].result;
        char head[48];
        std::snprintf(head, sizeof head, "%-10s %8.2f  ", resultWord(result), rows[i].seconds);
        const bool isMade = result.outcome.good() || result.outcome.code == StrictWarnings;
        text += head + (isMade ? exports[i].scene + " -> " + exports[i].output : result.outcome.error) + "\n";
        ++counts[resultWord(result)];
    }
    text += std::to_string(rows.size()) + " scenes:";
    const char* separator = " ";
    for (const auto& [word, count] : counts) {
        text += separator + std::to_string(count) + " " + word;
        separator = ", ";
    }
    return text + "\n";
}

}  // namespace marrowfen::cli
