// A library to be loaded before all others: makes the N-th call of one function fail, in the program's main process and
// from main() on. MARROWFEN_FAIL says which: "write 3 28" (with errno 28), "write 3 28 on" (and all that follow),
// "write 3 kill" (the process dies there). MARROWFEN_FAIL_MARK names a file that is made once it has failed.

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

char theCall[16] = "";
char theHow[8] = "";
long theNumber = 0;
pid_t theProcess = 0;

bool failsNow(const char* call) {
    if (theProcess == 0 || std::strcmp(call, theCall) != 0 || getpid() != theProcess) return false;
    --theNumber;
    if (theNumber > 0 || (theNumber < 0 && std::strstr(theHow, "on") == nullptr)) return false;
    syscall(SYS_close, syscall(SYS_open, std::getenv("MARROWFEN_FAIL_MARK"), O_CREAT | O_WRONLY, 0600));
    if (std::strcmp(theHow, "kill") == 0) syscall(SYS_kill, theProcess, SIGKILL);
    errno = std::atoi(theHow);
    return true;
}

template <class Function>
Function* real(Function*, const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// The call was made all the same.
int failAfter(int, int failure) {
    errno = std::atoi(theHow);
    return failure;
}

int (*theMain)(int, char**, char**) = nullptr;

int armedMain(int argc, char** argv, char** environment) {
    const char* what = std::getenv("MARROWFEN_FAIL");
    unsetenv("LD_PRELOAD");
    char more[8] = "";
    if (what != nullptr && std::sscanf(what, "%15s %ld %7s %7s", theCall, &theNumber, theHow, more) >= 3) {
        std::strncat(theHow, more, sizeof theHow - std::strlen(theHow) - 1);
        theProcess = getpid();
    }
    return theMain(argc, argv, environment);
}

}  // namespace

// A function with its own failing result.
#define MARROWFEN_FAILING(result, name, parameters, arguments, failure) \
    result name parameters {                                            \
        static auto* const theReal = real(&name, #name);                \
        return failsNow(#name) ? (failure) : theReal arguments;         \
    }

extern "C" {
MARROWFEN_FAILING(ssize_t, write, (int file, const void* bytes, size_t size), (file, bytes, size), -1)
MARROWFEN_FAILING(int, fsync, (int file), (file), -1)
MARROWFEN_FAILING(int, chmod, (const char* path, mode_t mode), (path, mode), -1)
MARROWFEN_FAILING(int, linkat, (int folder, const char* from, int other, const char* to, int flags),
                  (folder, from, other, to, flags), -1)
MARROWFEN_FAILING(int, rename, (const char* from, const char* to), (from, to), -1)
MARROWFEN_FAILING(int, renameat, (int folder, const char* from, int other, const char* to), (folder, from, other, to),
                  -1)
MARROWFEN_FAILING(int, mkdirat, (int folder, const char* path, mode_t mode), (folder, path, mode), -1)
MARROWFEN_FAILING(char*, mkdtemp, (char* path), (path), nullptr)
MARROWFEN_FAILING(FILE*, fopen64, (const char* path, const char* mode), (path, mode), nullptr)
// These have closed the file all the same.
MARROWFEN_FAILING(int, close, (int file), (file), failAfter(theReal(file), -1))
MARROWFEN_FAILING(int, fclose, (FILE * file), (file), failAfter(theReal(file), EOF))

int __libc_start_main(int (*program)(int, char**, char**), int argc, char** argv, void (*init)(), void (*fini)(),
                      void (*end)(), void* stack) {
    theMain = program;
    return real(&__libc_start_main, "__libc_start_main")(armedMain, argc, argv, init, fini, end, stack);
}
}

void* operator new(size_t size) {
    void* memory = failsNow("new") ? nullptr : std::malloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, size_t) noexcept { std::free(memory); }
