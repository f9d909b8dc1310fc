// Reads damaged files as the command does: sweep_damaged CHANGES CUTS FOLDER SEED... (SEED change|cut NUMBER prints the
// one that a fault names so.)
//
// So many changed and cut versions of the seeds, spread over all there are (fuzz/damage.h), go through the verbs of the
// command in child processes; FOLDER holds the damaged file and what it becomes. Every file has to end in one line that
// names it, or in a result that inspect finds sound, within a bound of processor time and of memory. Under the
// sanitizers models are read without their cell, which would keep the sanitizers' reports. One that runs into what are
// limits there is ended and counted: whether the command refuses it in time is told without the sanitizers.

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>

#include "cli/commands.h"
#include "fuzz/damage.h"
#include "fuzz/scene_export.h"
#include "ground/ascii.h"
#include "ground/pieces.h"
#include "ground/whole_file.h"
#include "standin/import/model.h"

#ifdef MARROWFEN_SANITIZED
// A report ends in a signal, whoever of the two it comes from.
extern "C" const char* __asan_default_options() { return "abort_on_error=1:handle_abort=1:detect_leaks=0"; }
extern "C" const char* __ubsan_default_options() { return "abort_on_error=1:print_stacktrace=1"; }
#endif

namespace marrowfen::fuzz {

namespace {

namespace fs = std::filesystem;

#ifdef MARROWFEN_SANITIZED
constexpr bool kIsSanitized = true;
#else
constexpr bool kIsSanitized = false;
#endif

constexpr size_t kFilesPerChild = 50;
constexpr double kMostSeconds = 2;
constexpr rlim_t kEndAfterSeconds = 30;
constexpr double kMoreSecondsPerMegabyte = 5;
constexpr size_t kMostSanitizedBytes = size_t{4} << 30;
constexpr int kMillisecondsBetweenLooks = 50;

// In kilobytes, and for every byte of the file. Models have the limits of the library's readers.
struct MemoryBound {
    double fixed, perByte;
};
constexpr MemoryBound kOwnFiles = {64 << 10, 50.0 / 1024}, kModels = {192 << 10, 100.0 / 1024};

// How one file came out; in memory that a child shares with its parent.
struct Result {
    bool isDone;
    size_t bytes;  // of the file, or of the scene that a model stands for
    double seconds;
    char fault[400];  // empty for none
    char said[400];   // the error line
};

enum class Kind { Shape, Sequences, Scene, Model };

Kind kindOf(const std::string& path) {
    if (endsWithIgnoringCase(path, ".dts")) return Kind::Shape;
    if (endsWithIgnoringCase(path, ".dsq")) return Kind::Sequences;
    return endsWithIgnoringCase(path, ".scene.json") ? Kind::Scene : Kind::Model;
}

double secondsUsed() {
    double seconds = 0;
    for (const int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage usage{};
        getrusage(who, &usage);
        for (const timeval& time : {usage.ru_utime, usage.ru_stime}) {
            seconds += static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
        }
    }
    return seconds;
}

// In a child: runs verbs and holds them to their word.
class Reading {
public:
    Reading(std::string file, Result& result) : file_(std::move(file)), result_(result) {}

    void read() {
        switch (kindOf(file_)) {
            case Kind::Shape:
                run({"inspect", "--json", file_}, {cli::Done, cli::UnreadableInput});
                run({"dump", file_}, {cli::Done, cli::UnreadableInput});
                run({"view", file_, beside("glb")}, {cli::Done, cli::UnreadableInput});
                break;
            case Kind::Sequences:
                run({"inspect", file_}, {cli::Done, cli::UnreadableInput});
                run({"dump", file_}, {cli::Done, cli::UnreadableInput});
                break;
            case Kind::Scene:
                exportTo("dts");
                exportTo("dsq");
                break;
            case Kind::Model:
                kIsSanitized ? readHere() : exportTo("dts");
                break;
        }
    }

private:
    std::string file_;
    Result& result_;

    std::string beside(const char* ending) const { return (fs::path(file_).parent_path() / "made.").string() + ending; }

    void fail(const std::string& what) {
        if (result_.fault[0] == '\0') std::snprintf(result_.fault, sizeof result_.fault, "%s", what.c_str());
    }

    int run(const std::vector<std::string>& words, std::initializer_list<int> allowed) {
        if (ftruncate(STDERR_FILENO, 0) != 0 || lseek(STDERR_FILENO, 0, SEEK_SET) != 0) fail("no standard error");
        const cli::CommandLine line = cli::readCommandLine(words);
        const cli::Session session;
        const int code = session.tell(line.fault.good() ? line.verb->run(line.arguments, session) : line.fault);
        size_t errors = 0;
        for (const std::string& said : piecesOf(readWholeFile("/dev/stderr"), '\n')) {
            if (!said.starts_with("error: ")) continue;
            ++errors;
            std::snprintf(result_.said, sizeof result_.said, "%s", said.c_str());
            if (code == cli::UnreadableInput && said.find(file_) == std::string::npos) fail("no file: " + said);
        }
        if (std::find(allowed.begin(), allowed.end(), code) == allowed.end()) {
            fail(words[0] + " ends with " + std::to_string(code) + ": " + result_.said);
        }
        const size_t expected = code == cli::Done ? 0 : 1;
        if (errors != expected) fail(words[0] + " tells " + std::to_string(errors) + " errors: " + result_.said);
        return code;
    }

    void exportTo(const char* ending) {
        const std::string output = beside(ending);
        const int code =
            run({"export", file_, output, "--with-animation"}, {cli::Done, cli::Refused, cli::UnreadableInput});
        if (code == cli::Done) run({"inspect", "--check", output}, {cli::Done});
    }

    // The passes of an import and the export, in this process.
    void readHere() {
        const standin::ImportResult read = standin::readModel(file_, {});
        std::snprintf(result_.said, sizeof result_.said, "%s", read.error.c_str());
        if (read.scene.has_value() != read.error.empty()) fail("neither scene nor error");
        if (read.error.find('\n') != std::string::npos) fail("an error of several lines");
        if (read.scene) exportBoth(*read.scene);
    }
};

// Damaged versions of one seed, some of all there are.
struct Versions {
    const std::string& seed;
    const char* what;
    size_t all, wanted;
    std::function<std::string(size_t)> make;  // by their number

    size_t number(size_t i) const { return i * all / wanted; }
    std::string name(size_t i) const {
        return fs::path(seed).filename().string() + " " + what + " " + std::to_string(number(i));
    }
};

class Sweep {
public:
    Sweep(fs::path folder, size_t files) : folder_(std::move(folder)) {
        const size_t bytes = files * sizeof(Result);
        void* shared = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        results_ = static_cast<Result*>(shared);
        said_ = memfd_create("said", 0);
        nowhere_ = open("/dev/null", O_RDWR);
    }

    void readAll(const Versions& versions) {
        const size_t perChild = kindOf(versions.seed) == Kind::Model ? 1 : kFilesPerChild;
        for (size_t begin = 0; begin < versions.wanted;) {
            begin = readSome(versions, begin, std::min(begin + perChild, versions.wanted));
        }
    }

    void report() const {
        std::printf("  %zu files: slowest %.2f s (%s)", done_, slowest_, slowestFile_.c_str());
        if (!kIsSanitized) {
            std::printf(", most memory %ld KB, %.2f of the bound (%s)", mostKilobytes_, mostShare_,
                        largestFile_.c_str());
        }
        std::printf(", %zu faults, %zu crashes of libraries", faults_, libraryCrashes_);
        if (kIsSanitized) std::printf(", %zu ended at a limit", endedAtLimit_);
        std::printf("\n");
        std::ofstream lines(folder_ / "lines.txt");
        for (const auto& [line, count] : lines_) lines << count << " " << line << "\n";
    }
    bool good() const { return faults_ == 0; }

private:
    fs::path folder_;
    Result* results_ = nullptr;
    int said_ = -1, nowhere_ = -1;
    size_t done_ = 0, faults_ = 0, libraryCrashes_ = 0, endedAtLimit_ = 0;
    double slowest_ = 0, mostShare_ = 0;
    long mostKilobytes_ = 0;
    std::string slowestFile_, largestFile_;
    std::map<std::string, size_t> lines_;  // of errors, without their numbers

    [[noreturn]] void readInChild(const Versions& versions, size_t begin, size_t end) {
        const rlimit seconds{kEndAfterSeconds, kEndAfterSeconds}, none{0, 0};
        setrlimit(RLIMIT_CPU, &seconds);
        setrlimit(RLIMIT_CORE, &none);
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO}) dup2(nowhere_, stream);
        dup2(said_, STDERR_FILENO);
        const std::string name = fs::path(versions.seed).filename().string();
        const std::string file = (folder_ / ("damaged" + name.substr(name.find('.')))).string();
        for (size_t i = begin; i < end; ++i) {
            Result& result = results_[i];
            const std::string bytes = versions.make(versions.number(i));
            std::ofstream(file, std::ios::binary) << bytes;
            result.bytes = bytes.size();
            const double before = secondsUsed();
            Reading(file, result).read();
            result.seconds = secondsUsed() - before;
            if (isOver(file, result)) result.bytes = std::max(result.bytes, sceneBytes(file));
            result.isDone = true;
        }
        _exit(0);
    }

    // Returns the number behind the last file that was read, or killed its reader.
    size_t readSome(const Versions& versions, size_t begin, size_t end) {
        std::fill(results_ + begin, results_ + end, Result{});
        std::fflush(stdout);
        if (ftruncate(said_, 0) != 0 || lseek(said_, 0, SEEK_SET) != 0) std::abort();
        const pid_t child = fork();
        if (child == 0) readInChild(versions, begin, end);
        if (kIsSanitized && growsTooLarge(child)) kill(child, SIGKILL);
        int status = 0;
        rusage usage{};
        wait4(child, &status, 0, &usage);

        // More than the smallest of several may take: which one was it?
        const Result* smallest = std::min_element(results_ + begin, results_ + end,
                                                  [](const Result& a, const Result& b) { return a.bytes < b.bytes; });
        const double share =
            kIsSanitized ? 0 : static_cast<double>(usage.ru_maxrss) / boundFor(versions.seed, smallest->bytes);
        if (share > 1 && end > begin + 1) {
            for (size_t i = begin; i < end; ++i) readSome(versions, i, i + 1);
            return end;
        }
        for (size_t i = begin; i < end; ++i) {
            if (!results_[i].isDone) {
                takeDeath(versions.name(i), status, results_[i]);
                end = i + 1;
            }
            take(versions.name(i), results_[i]);
        }
        takeMemory(versions.name(begin), usage.ru_maxrss, share, smallest->bytes);
        return end;
    }

    // Returns when it does, or has ended.
    static bool growsTooLarge(pid_t child) {
        const int handle = static_cast<int>(syscall(SYS_pidfd_open, child, 0));
        if (handle < 0) return false;
        pollfd ended{handle, POLLIN, 0};
        size_t bytes = 0;
        while (bytes <= kMostSanitizedBytes && poll(&ended, 1, kMillisecondsBetweenLooks) == 0) {
            size_t all = 0, resident = 0;  // in pages
            std::ifstream("/proc/" + std::to_string(child) + "/statm") >> all >> resident;
            bytes = resident * static_cast<size_t>(sysconf(_SC_PAGESIZE));
        }
        close(handle);
        return bytes > kMostSanitizedBytes;
    }

    static double boundFor(const std::string& path, size_t bytes) {
        const MemoryBound& bound = kindOf(path) == Kind::Model ? kModels : kOwnFiles;
        return bound.fixed + bound.perByte * static_cast<double>(bytes);
    }

    static double mostSeconds(size_t bytes) {
        return kMostSeconds + kMoreSecondsPerMegabyte * static_cast<double>(bytes) / (1 << 20);
    }

    static bool isOver(const std::string& file, const Result& result) {
        long kilobytes = 0;
        for (const int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
            rusage usage{};
            getrusage(who, &usage);
            kilobytes = std::max(kilobytes, usage.ru_maxrss);
        }
        return result.seconds > mostSeconds(result.bytes) ||
               static_cast<double>(kilobytes) > boundFor(file, result.bytes);
    }

    // A few bytes of a model may ask for a large one: "divide this surface six times".
    static size_t sceneBytes(const std::string& file) {
        if (kindOf(file) != Kind::Model) return 0;
        const std::string scene = (fs::path(file).parent_path() / "large.scene.json").string();
        const cli::CommandLine line = cli::readCommandLine({"import", file, scene});
        if (!line.verb->run(line.arguments, {}).good()) return 0;
        return static_cast<size_t>(fs::file_size(scene));
    }

    void fail(const std::string& name, const std::string& what) {
        ++faults_;
        std::printf("FAULT %s: %s\n", name.c_str(), what.c_str());
    }

    void take(const std::string& name, const Result& result) {
        ++done_;
        if (result.fault[0] != '\0') fail(name, result.fault);
        if (result.seconds > slowest_) {
            slowest_ = result.seconds;
            slowestFile_ = name;
        }
        if (result.seconds > mostSeconds(result.bytes)) fail(name, std::to_string(result.seconds) + " s");
        std::string line;
        for (const char* c = result.said; *c != '\0'; ++c) {
            const bool isDigit = *c >= '0' && *c <= '9';
            if (!isDigit || line.empty() || line.back() != '#') line += isDigit ? '#' : *c;
        }
        ++lines_[line.substr(0, 160)];
    }

    // The reader's crash is ours unless a library stands before us in the report's stack.
    void takeDeath(const std::string& name, int status, Result& result) {
        const std::string text = readWholeFile("/proc/self/fd/" + std::to_string(said_));
        const size_t library = std::min(text.find("libassimp"), text.find("libdraco"));
        const int signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
        if (kIsSanitized && signal == SIGKILL && kindOf(name.substr(0, name.find(' '))) == Kind::Model) {
            ++endedAtLimit_;
        } else if (kIsSanitized && library < text.find("marrowfen::")) {
            ++libraryCrashes_;
        } else {
            std::snprintf(result.fault, sizeof result.fault, "signal %d: %s", signal, text.c_str());
        }
        std::ofstream(folder_ / "reports.txt", std::ios::app) << name << "\n" << text << "\n";
    }

    void takeMemory(const std::string& name, long kilobytes, double share, size_t bytes) {
        mostKilobytes_ = std::max(mostKilobytes_, kilobytes);
        if (share > mostShare_) {
            mostShare_ = share;
            largestFile_ = name;
        }
        if (share > 1) fail(name, std::to_string(kilobytes) + " KB for " + std::to_string(bytes) + " bytes");
    }
};

int sweep(size_t changes, size_t cuts, const std::string& folder, const std::vector<std::string>& seeds) {
    size_t allChanges = 0, allCuts = 0;
    for (const std::string& seed : seeds) {
        const Damages damages(readWholeFile(seed));
        allChanges += damages.changes();
        allCuts += damages.cuts();
    }
    if (allChanges == 0) {
        std::fprintf(stderr, "error: no seeds\n");
        return 2;
    }
    changes = std::min(changes, allChanges);
    cuts = std::min(cuts, allCuts);
    Sweep all(folder, std::max(changes, cuts));
    for (const std::string& seed : seeds) {
        const Damages damages(readWholeFile(seed));
        const auto share = [](size_t wanted, size_t here, size_t everywhere) {
            return (wanted * here + everywhere - 1) / everywhere;
        };
        all.readAll({seed, "change", damages.changes(), share(changes, damages.changes(), allChanges),
                     [&](size_t n) { return damages.change(n); }});
        all.readAll({seed, "cut", damages.cuts(), share(cuts, damages.cuts(), allCuts),
                     [&](size_t n) { return damages.cut(n); }});
    }
    all.report();
    return all.good() ? 0 : 1;
}

}  // namespace

}  // namespace marrowfen::fuzz

int main(int argc, char** argv) {
    const auto number = [&](int i) { return static_cast<size_t>(std::strtoull(argv[i], nullptr, 10)); };
    if (argc == 4) {
        const marrowfen::fuzz::Damages damages(marrowfen::readWholeFile(argv[1]));
        const bool isCut = std::string(argv[2]) == "cut";
        if (number(3) >= (isCut ? damages.cuts() : damages.changes())) return 2;
        const std::string file = isCut ? damages.cut(number(3)) : damages.change(number(3));
        return std::fwrite(file.data(), 1, file.size(), stdout) == file.size() ? 0 : 4;
    }
    if (argc < 5) {
        std::fprintf(stderr, "usage: sweep_damaged CHANGES CUTS FOLDER SEED...\n");
        return 2;
    }
    return marrowfen::fuzz::sweep(number(1), number(2), argv[3], {argv + 4, argv + argc});
}
