// What hosts do to a plug-in over a long day.

#include <windows.h>
// windows.h has to come first.
#include <commdlg.h>
#include <psapi.h>
#include <winternl.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "plugin/resources/resource.h"
#include "tests/wine/driver.h"
#include "tests/wine/screen_person.h"
#include "tests/wine/standin_entry.h"

namespace marrowfen::test {

namespace {

namespace fs = std::filesystem;

constexpr int kLoads = 100;
constexpr int kExports = sizeof(void*) == 4 ? 1000 : 200;  // artists install the 32-bit one
constexpr int kWarmUp = 20;                                // loads or exports after which nothing is to grow any more

// What the compiler's runtime library leaves behind each time a library of its making is loaded, an empty one too.
constexpr size_t kHandlesALoad = 4;
constexpr size_t kMemoryALoad = 12 * 1024;

bool isGood = true;
std::string savedShip;  // what the save dialog answers once it is replaced

void expect(bool holds, const std::string& what) {
    if (!holds) std::printf("FAILED: %s\n", what.c_str());
    isGood = isGood && holds;
}

#if defined(__i386__)

// By how many bytes a function with two arguments takes its arguments off the stack itself; the host does that.
extern "C" int stackTaken(FARPROC function, void* first, void* second);
asm(R"(
.globl _stackTaken
_stackTaken:
    pushl %ebp
    movl %esp, %ebp
    pushl %ebx
    pushl 16(%ebp)
    pushl 12(%ebp)
    movl %esp, %ebx
    call *8(%ebp)
    movl %esp, %eax
    subl %ebx, %eax
    movl -4(%ebp), %ebx
    leave
    ret
)");

void tryConvention(const Stage& stage) {
    stage.host.run([&] {
        char block[100];
        HMODULE plugin = LoadLibraryA(stage.plugin.c_str());
        for (const char* name : {"tsxGetVersion", "tsxGetData", "tsxOnLeftClick", "tsxOnRightClick", "tsxDeactivate"}) {
            expect(stackTaken(GetProcAddress(plugin, name), block, nullptr) == 0,
                   name + std::string(" takes arguments"));
        }
        FreeLibrary(plugin);
    });
}

#else

void tryConvention(const Stage&) {}  // 64-bit Windows has one convention

#endif

struct Usage {
    size_t handles = 0;
    size_t windows = 0;
    size_t memory = 0;
};

// Counted in the system's list of all handles; Wine has no count of its own.
size_t countHandles() {
    constexpr auto kHandles = static_cast<SYSTEM_INFORMATION_CLASS>(16);
    struct Entry {
        ULONG process;
        UCHAR type, flags;
        USHORT handle;
        void* object;
        ULONG access;
    };
    std::vector<char> list(1 << 20);
    ULONG size = 0;
    if (NtQuerySystemInformation(kHandles, list.data(), static_cast<ULONG>(list.size()), &size) != 0) return 0;
    const auto count = *reinterpret_cast<const ULONG*>(list.data());
    const auto* first = reinterpret_cast<const Entry*>(list.data() + sizeof(void*));
    return static_cast<size_t>(
        std::count_if(first, first + count, [](const Entry& entry) { return entry.process == GetCurrentProcessId(); }));
}

Usage usage(const HostThread& host) {
    Usage result;
    result.handles = countHandles();
    PROCESS_MEMORY_COUNTERS counters{};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    result.memory = counters.PagefileUsage;
    result.windows = host.dialogs().size() + childrenOf(HWND_MESSAGE).size() + childrenOf(host.mainView()).size();
    return result;
}

void expectNoMore(const Usage& allowed, const Usage& after, const std::string& what) {
    std::printf("%s: %zu handles (%zu allowed), %zu windows (%zu), %zu KB (%zu)\n", what.c_str(), after.handles,
                allowed.handles, after.windows, allowed.windows, after.memory / 1024, allowed.memory / 1024);
    expect(after.handles > 0 && after.handles <= allowed.handles, what + " leave handles");
    expect(after.windows <= allowed.windows, what + " leave windows");
    expect(after.memory <= allowed.memory, what + " leave memory");
}

void loadAgainAndAgain(const Stage& stage) {
    LoadLibraryA("comdlg32.dll");  // as hosts have; loading it again and again costs memory of Wine's
    Usage allowed;
    for (int i = 0; i < kLoads; ++i) {
        if (i == kWarmUp) allowed = usage(stage.host);
        ScreenPerson(stage.host, stage.plugin, "").play({"left click"});
        if (GetModuleHandleA("marrowfen.dll") != nullptr) expect(false, "the library stays");
    }
    allowed.handles += kHandlesALoad * (kLoads - kWarmUp);
    allowed.memory += kMemoryALoad * (kLoads - kWarmUp);
    expectNoMore(allowed, usage(stage.host), std::to_string(kLoads) + " loads");
}

// The host lets go of the plug-in while one of its dialogs waits for an answer.
void deactivateInside(const Stage& stage, const std::string& what, int button, bool (*isMeant)(HWND)) {
    const std::string file = std::to_string(button) + what.front() + ".dts";
    ScreenPerson person(stage.host, stage.plugin, stage.folder.string());
    person.play({"left click", "save as " + file});
    bool isDone = false;
    person.meet = [&](HWND dialog) {
        if (isDone || !isMeant(dialog)) return false;
        isDone = true;
        person.deactivate();
        return person.panel() == nullptr && !IsWindow(dialog);
    };
    person.press(button);
    expect(isDone, what + " never came up");
    expect(stage.host.dialogs().empty(), what + " leaves a dialog");
    expect(IsWindowEnabled(stage.host.mainView()), what + " leaves the main view disabled");
    expect(fs::exists(stage.folder / file) == (button == IDC_EXPORT_DTS), what + " ends without the file");
    expect(person.leftClick() == 2 && person.panel() != nullptr, what + " keeps the panel from opening");
}

void destroyMainViewUnderPanel(const Stage& stage) {
    ScreenPerson person(stage.host, stage.plugin, "");
    person.leftClick();
    stage.host.destroyMainView();
    expect(person.panel() == nullptr, "the panel outlives the main view");
    stage.host.makeMainView();
    openScene(stage, {});
    expect(person.leftClick() == 2 && person.panel() != nullptr, "no panel on the new main view");
    expect(person.seen.empty(), person.seen.empty() ? "" : person.seen.front());
}

BOOL CALLBACK saveAsShip(OPENFILENAMEA* question) {
    std::strcpy(question->lpstrFile, savedShip.c_str());
    return TRUE;
}

// From now on the system's save dialog answers at once: a thousand of them would take minutes, and aren't ours.
void replaceSaveDialog(const fs::path& ship) {
    savedShip = ship.string();
    void* function = reinterpret_cast<void*>(GetProcAddress(LoadLibraryA("comdlg32.dll"), "GetSaveFileNameA"));
    const auto target = reinterpret_cast<uintptr_t>(saveAsShip);
    // mov rax, target (without the prefix: mov eax); jmp rax
    std::string code = sizeof target == 8 ? "\x48\xB8" : "\xB8";
    code.append(reinterpret_cast<const char*>(&target), sizeof target);
    code += "\xFF\xE0";
    DWORD protection = 0;
    VirtualProtect(function, code.size(), PAGE_EXECUTE_READWRITE, &protection);
    std::memcpy(function, code.data(), code.size());
}

void exportAgainAndAgain(const Stage& stage) {
    const fs::path ship = stage.folder / "ship.dts";
    replaceSaveDialog(ship);
    ScreenPerson person(stage.host, stage.plugin, "");
    person.play({"left click", "press Animation"});
    Usage allowed;
    for (int i = 0; i < kExports; ++i) {
        if (i == kWarmUp) allowed = usage(stage.host);
        fs::remove(ship);
        person.seen.clear();
        person.play({"press Export"});
        if (fs::exists(ship)) continue;
        for (const std::string& line : person.seen) std::printf("  %s\n", line.c_str());
        return expect(false, "export " + std::to_string(i) + " is missing");
    }
    allowed.memory += 256 * 1024;  // what the system keeps; 270 bytes an export would pass it
    expectNoMore(allowed, usage(stage.host), std::to_string(kExports) + " exports");
}

}  // namespace

bool tryHost(const Stage& stage) {
    openScene(stage, {});
    tryConvention(stage);
    loadAgainAndAgain(stage);
    const auto isMessage = [](HWND dialog) { return !isSaveDialog(dialog) && !isAboutBox(dialog); };
    deactivateInside(stage, "About box", IDC_ABOUT, isAboutBox);
    deactivateInside(stage, "save dialog", IDC_EXPORT_DTS, isSaveDialog);
    deactivateInside(stage, "message", IDC_EXPORT_DTS, isMessage);
    exportAgainAndAgain(stage);
    destroyMainViewUnderPanel(stage);  // last: Wine's server may loop among the windows some hundred dialogs later
    expect(std::string(standinUnload()).find("misused") == std::string::npos, "host handles are left");
    return isGood;
}

}  // namespace marrowfen::test
