#include "cli/export_batch.h"

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <sstream>

#include "cli/export_record.h"
#include "cli/export_worker.h"
#include "cli/folder_lock.h"
#include "cli/progress_bar.h"
#include "cli/staging_folder.h"
#include "cli/terminal_text.h"
#include "ground/comma_list.h"
#include "ground/counted.h"
#include "ground/pieces.h"

namespace marrowfen::cli {

namespace {

constexpr int kLookMilliseconds = 50;             // between looks at what takes too long
constexpr std::chrono::milliseconds kGrace{100};  // for an export that is ended to remove what it has begun
constexpr size_t kNamesOnBar = 3;
constexpr size_t kMostWaiting = 4;  // exports for the disk, for each that works

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
          workerSession_(session),
          rows_(rows),
          bar_(session, numbers.size() > 1) {}

    void run() {
        const Interruption interruption;
        while ((next_ < numbers_.size() || !running_.empty()) && theSignal == 0) {
            while (next_ < numbers_.size() && hasRoom()) start(numbers_[next_++]);
            showBar();
            wait();
            endLate();
        }
        bar_.clear();
        if (theSignal != 0) endAll();
    }

private:
    // For one more. Those that wait for the disk leave their processor to others, a few to each.
    bool hasRoom() const {
        const auto working = static_cast<size_t>(std::count_if(
            running_.begin(), running_.end(), [](const auto& entry) { return !entry.second->waitsForDisk(); }));
        const size_t most = options_.jobs == 1 ? 1 : kMostWaiting * options_.jobs;
        return working < options_.jobs && running_.size() < most;
    }

    void start(size_t number) {
        if (!exports_[number].dryRun) prepareFolder(folderOf(exports_[number].output));
        if (idle_.empty()) idle_.push_back(std::make_unique<ExportWorker>(exports_, workerSession_));
        idle_.back()->start(number);
        running_[number] = std::move(idle_.back());
        idle_.pop_back();
        if (!running_[number]->isAlive()) finish(number);
    }

    // What can't be done here, the export says. Looking for what dead runs left, it would read the folder each time.
    void prepareFolder(const std::string& folder) {
        if (!folders_.insert(folder).second) return;
        std::error_code ignored;
        std::filesystem::create_directories(folder, ignored);
        FolderLock lock;
        if (lock.tryTake(folder)) clearUpOnce(folder);
    }

    // Until one has something to say.
    void wait() {
        std::vector<pollfd> files;
        std::vector<size_t> owners;
        for (const auto& [number, worker] : running_) {
            files.push_back({worker->pipe(), POLLIN, 0});
            owners.push_back(number);
        }
        if (poll(files.data(), files.size(), kLookMilliseconds) <= 0) return;
        for (size_t i = 0; i < files.size(); ++i) {
            if (files[i].revents != 0 && !running_[owners[i]]->take()) finish(owners[i]);
        }
    }

    void finish(size_t number) {
        ExportWorker& worker = *running_[number];
        BatchRow& row = rows_[number];
        row.result = worker.end();
        row.seconds = worker.seconds();
        if (late_.count(number) > 0) {
            std::ostringstream limit;
            limit << options_.seconds;
            row.result.outcome = {OurFault,
                                  exports_[number].scene + ": given up after " + limit.str() + " s (--timeout)"};
        }
        tell(number, worker.lines());
        if (worker.isAlive() && next_ < numbers_.size()) idle_.push_back(std::move(running_[number]));
        running_.erase(number);
        late_.erase(number);
        ++done_;
    }

    // All that is said about one export, in one piece.
    void tell(size_t number, const std::string& lines) {
        bar_.clear();
        const Outcome& outcome = rows_[number].result.outcome;
        std::string text;
        for (const std::string& line : piecesOf(lines, '\n')) text += (options_.namesRows ? "  " : "") + line + "\n";
        if (options_.namesRows && !text.empty()) text = forTerminal(exports_[number].scene) + ":\n" + text;
        std::fwrite(text.data(), 1, text.size(), stderr);
        session_.tell(outcome);
    }

    void endLate() {
        for (const auto& [number, worker] : running_) {
            if (worker->seconds() < options_.seconds) continue;
            worker->ask(late_.insert(number).second ? SIGTERM : 0);
            const double grace = std::chrono::duration<double>(kGrace).count();
            if (worker->seconds() > options_.seconds + grace) worker->ask(SIGKILL);
        }
    }

    // They remove what they have begun; this process then ends as if nobody had been asked.
    void endAll() {
        // Those that are idle keep a folder for the next export.
        for (auto& [number, worker] : running_) idle_.push_back(std::move(worker));
        for (const auto& worker : idle_) worker->ask(SIGTERM);
        const auto killedAt = ExportWorker::Clock::now() + kGrace;
        for (const auto& worker : idle_) worker->awaitDeath(killedAt, killedAt + kGrace * 4 / 5);
        for (const auto& worker : idle_) worker->clearUp({});
        std::signal(theSignal, SIG_DFL);
        raise(theSignal);
    }

    void showBar() {
        if (running_.empty() || !bar_.isDrawn()) return;
        std::string names;
        size_t shown = 0;
        for (const auto& [number, worker] : running_) {
            if (shown++ == kNamesOnBar) break;
            addToList(names, fileNameOf(exports_[number].scene));
        }
        const std::string text = std::to_string(done_) + "/" + std::to_string(numbers_.size()) + " " + names;
        bar_.show(static_cast<double>(done_) / static_cast<double>(numbers_.size()), text);
    }

    const std::vector<ExportOptions>& exports_;
    const std::vector<size_t>& numbers_;
    const BatchOptions& options_;
    const Session& session_;
    const Session workerSession_;
    std::vector<BatchRow>& rows_;
    ProgressBar bar_;
    std::map<size_t, std::unique_ptr<ExportWorker>> running_;
    std::vector<std::unique_ptr<ExportWorker>> idle_;
    std::set<std::string> folders_;  // seen
    std::set<size_t> late_;          // asked to end
    size_t next_ = 0;
    size_t done_ = 0;
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
        text +=
            head + forTerminal(isMade ? exports[i].scene + " -> " + exports[i].output : result.outcome.error) + "\n";
        ++counts[resultWord(result)];
    }
    text += counted(rows.size(), "scene", "scenes");
    const char* separator = ": ";
    for (const auto& [word, count] : counts) {
        text += separator + std::to_string(count) + " " + word;
        separator = ", ";
    }
    return text + "\n";
}

}  // namespace marrowfen::cli
