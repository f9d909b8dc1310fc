#include "standin/import/cell.h"

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/landlock.h>
#include <linux/seccomp.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>

namespace marrowfen::standin {

namespace {

// By what they do: memory, files that are open, finding files, time, signals to oneself, the end.
constexpr int kAllowed[] = {
    SCMP_SYS(brk),
    SCMP_SYS(mmap),
    SCMP_SYS(munmap),
    SCMP_SYS(mremap),
    SCMP_SYS(mprotect),
    SCMP_SYS(madvise),
    SCMP_SYS(read),
    SCMP_SYS(readv),
    SCMP_SYS(pread64),
    SCMP_SYS(write),
    SCMP_SYS(writev),
    SCMP_SYS(lseek),
    SCMP_SYS(_llseek),
    SCMP_SYS(close),
    SCMP_SYS(fcntl),
    SCMP_SYS(fadvise64),
    SCMP_SYS(poll),
    SCMP_SYS(stat),
    SCMP_SYS(lstat),
    SCMP_SYS(fstat),
    SCMP_SYS(newfstatat),
    SCMP_SYS(statx),
    SCMP_SYS(statfs),
    SCMP_SYS(fstatfs),
    SCMP_SYS(access),
    SCMP_SYS(faccessat),
    SCMP_SYS(faccessat2),
    SCMP_SYS(readlink),
    SCMP_SYS(readlinkat),
    SCMP_SYS(getdents64),
    SCMP_SYS(getcwd),
    SCMP_SYS(clock_gettime),
    SCMP_SYS(gettimeofday),
    SCMP_SYS(nanosleep),
    SCMP_SYS(getpid),
    SCMP_SYS(clock_nanosleep),
    SCMP_SYS(gettid),
    SCMP_SYS(getuid),
    SCMP_SYS(geteuid),
    SCMP_SYS(getrandom),
    SCMP_SYS(uname),
    SCMP_SYS(sysinfo),
    SCMP_SYS(futex),
    SCMP_SYS(sched_yield),
    SCMP_SYS(rt_sigaction),
    SCMP_SYS(rt_sigprocmask),
    SCMP_SYS(rt_sigreturn),
    SCMP_SYS(sigaltstack),
    SCMP_SYS(getrlimit),
    SCMP_SYS(sched_getaffinity),
    SCMP_SYS(restart_syscall),
    SCMP_SYS(exit),
    SCMP_SYS(exit_group),
#ifdef MARROWFEN_SANITIZED
    SCMP_SYS(pipe2),  // by which the runtime looks whether memory can be read
#endif
};

// Any of these opens a file for more than reading.
constexpr unsigned kChanging = O_WRONLY | O_RDWR | O_CREAT | O_TRUNC | O_APPEND;

// Stands in the filter for the number of the process that takes it; no process has a number as high.
constexpr uint32_t kReader = 0x7ABCDEF0;

bool addRules(scmp_filter_ctx filter) {
    // As a tree: the kernel goes through the filter for every call there is when it is loaded.
    bool good = seccomp_attr_set(filter, SCMP_FLTATR_CTL_OPTIMIZE, 2) == 0;
    const auto allow = [&](int call, auto... conditions) {
        good = seccomp_rule_add(filter, SCMP_ACT_ALLOW, call, sizeof...(conditions), conditions...) == 0 && good;
    };
    for (const int call : kAllowed) allow(call);
    allow(SCMP_SYS(open), SCMP_A1(SCMP_CMP_MASKED_EQ, kChanging, 0));
    allow(SCMP_SYS(openat), SCMP_A2(SCMP_CMP_MASKED_EQ, kChanging, 0));
    // A crash is told by the signal, which raise() sends.
    allow(SCMP_SYS(tgkill), SCMP_A0(SCMP_CMP_EQ, kReader, 0));
    allow(SCMP_SYS(prlimit64), SCMP_A2(SCMP_CMP_EQ, 0, 0));  // asked, not set
    return good;
}

// The instructions of a finished filter; the library hands them out as a file.
std::vector<sock_filter> instructionsOf(scmp_filter_ctx filter) {
    std::vector<sock_filter> program;
    const int file = memfd_create("filter", MFD_CLOEXEC);
    const bool isWritten = file >= 0 && seccomp_export_bpf(filter, file) == 0;
    const off_t size = isWritten ? lseek(file, 0, SEEK_END) : 0;
    program.resize(static_cast<size_t>(std::max<off_t>(size, 0)) / sizeof(sock_filter));
    if (pread(file, program.data(), program.size() * sizeof(sock_filter), 0) != size) program.clear();
    if (file >= 0) close(file);
    return program;
}

// Empty where there are no filters.
std::vector<sock_filter> makeProgram() {
    // A reader that tries something else is told that it may not, and goes on.
    const scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ERRNO(EPERM));
    if (filter == nullptr) return {};
    std::vector<sock_filter> program;
    if (addRules(filter)) program = instructionsOf(filter);
    seccomp_release(filter);
    return program;
}

const std::vector<sock_filter>& preparedProgram() {
    static const std::vector<sock_filter> theProgram = makeProgram();
    return theProgram;
}

void loadFilter() {
    std::vector<sock_filter> program = preparedProgram();
    for (sock_filter& step : program) {
        if (BPF_CLASS(step.code) == BPF_JMP && step.k == kReader) step.k = static_cast<uint32_t>(getpid());
    }
    const sock_fprog loaded{static_cast<unsigned short>(program.size()), program.data()};
    if (!program.empty()) syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, 0, &loaded);
}

// Landlock's rights are bits in the order of its versions; the last one of the first version, which every kernel with
// Landlock knows, is to make symbolic links. What came later, the filter forbids.
constexpr uint64_t kAllRights = (LANDLOCK_ACCESS_FS_MAKE_SYM << 1) - 1;

void allowReading(int rules, const std::string& path) {
    const int place = open(path.c_str(), O_PATH | O_CLOEXEC);
    if (place < 0) return;  // then it can't be read either
    struct stat found {};
    const bool isFolder = fstat(place, &found) == 0 && S_ISDIR(found.st_mode);
    landlock_path_beneath_attr beneath{};
    beneath.allowed_access = LANDLOCK_ACCESS_FS_READ_FILE | (isFolder ? LANDLOCK_ACCESS_FS_READ_DIR : 0);
    beneath.parent_fd = place;
    syscall(SYS_landlock_add_rule, rules, LANDLOCK_RULE_PATH_BENEATH, &beneath, 0);
    close(place);
}

// No right to any file but the named ones, whatever way leads there.
void keepToFiles(const std::vector<std::string>& readable) {
    landlock_ruleset_attr handled{};
    handled.handled_access_fs = kAllRights;
    const int rules = static_cast<int>(syscall(SYS_landlock_create_ruleset, &handled, sizeof handled, 0));
    if (rules < 0) return;
    for (const std::string& path : readable) allowReading(rules, path);
    syscall(SYS_landlock_restrict_self, rules, 0);
    close(rules);
}

}  // namespace

void prepareCell() { preparedProgram(); }

void closeCell(const std::vector<std::string>& readable) {
    // What holds where the kernel has no filters, or was built without: no file grows, and no process of root's
    // gets its rights back.
    const rlimit nothing{0, 0};
    setrlimit(RLIMIT_FSIZE, &nothing);
    setrlimit(RLIMIT_NPROC, &nothing);
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    keepToFiles(readable);
    loadFilter();
}

}  // namespace marrowfen::standin
