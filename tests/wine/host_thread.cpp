#include "tests/wine/host_thread.h"

#include <array>
#include <cstdio>
#include <thread>

namespace marrowfen::test {

namespace {

constexpr UINT kCallMessage = WM_APP + 1;
constexpr DWORD kPatienceMilliseconds = 60000;

using Act = std::function<void()>;

#if defined(__i386__)

// callShifted(function, act, shift): calls it with the stack pointer at a multiple of 16 less the shift.
extern "C" void callShifted(void (*function)(const Act*), const Act* act, int shift);
asm(R"(
.globl _callShifted
_callShifted:
    pushl %ebp
    movl %esp, %ebp
    andl $-16, %esp
    subl 16(%ebp), %esp
    subl $12, %esp
    pushl 12(%ebp)
    call *8(%ebp)
    movl %ebp, %esp
    popl %ebp
    ret
)");

#else

// 64-bit programs have to keep the stack aligned.
void callShifted(void (*function)(const Act*), const Act* act, int) { function(act); }

#endif

void callAct(const Act* act) { (*act)(); }

LRESULT CALLBACK callsProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != kCallMessage) return DefWindowProcA(window, message, wParam, lParam);
    callShifted(callAct, reinterpret_cast<const Act*>(lParam), static_cast<int>(wParam));
    return 0;
}

HWND makeWindow(const char* name, WNDPROC procedure, DWORD style, HWND parent) {
    WNDCLASSA windowClass{};
    windowClass.lpfnWndProc = procedure;
    windowClass.lpszClassName = name;
    windowClass.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_APPWORKSPACE + 1);
    RegisterClassA(&windowClass);
    return CreateWindowA(name, "Host", style, 0, 0, 900, 700, parent, nullptr, nullptr, nullptr);
}

// As hosts do, gives the keys of a modeless dialog to the dialog.
[[noreturn]] void pumpMessages() {
    MSG message;
    while (GetMessageA(&message, nullptr, 0, 0) > 0) {
        HWND active = GetActiveWindow();
        if (active != nullptr && classOf(active) == "#32770" && IsDialogMessageA(active, &message)) continue;
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    ExitProcess(3);
}

BOOL CALLBACK addDialog(HWND window, LPARAM list) {
    if (classOf(window) == "#32770" && IsWindowVisible(window)) {
        reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
    }
    return TRUE;
}

BOOL CALLBACK addWindow(HWND window, LPARAM list) {
    reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
    return TRUE;
}

}  // namespace

HostThread::HostThread() {
    HANDLE ready = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    std::thread([this, ready] {
        id_ = GetCurrentThreadId();
        calls_ = makeWindow("Calls", callsProc, 0, HWND_MESSAGE);
        SetEvent(ready);
        pumpMessages();
    }).detach();
    WaitForSingleObject(ready, INFINITE);
    CloseHandle(ready);
    makeMainView();
}

void HostThread::makeMainView() {
    run([this] { mainView_ = makeWindow("MainView", DefWindowProcA, WS_OVERLAPPEDWINDOW | WS_VISIBLE, nullptr); });
}

void HostThread::destroyMainView() {
    run([this] { DestroyWindow(mainView_); });
}

void HostThread::post(const Act& act) {
    shift_ = (shift_ + 4) % 16;
    PostMessageA(calls_, kCallMessage, static_cast<WPARAM>(shift_), reinterpret_cast<LPARAM>(&act));
}

void HostThread::run(const Act& act, const Act& meanwhile) {
    HANDLE done = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    const Act whole = [&] {
        act();
        SetEvent(done);
    };
    post(whole);
    const ULONGLONG start = GetTickCount64();
    while (WaitForSingleObject(done, kPollMilliseconds) == WAIT_TIMEOUT) {
        meanwhile();
        if (GetTickCount64() - start > kPatienceMilliseconds) {
            std::printf("nothing happens any more\n");
            std::fflush(stdout);
            ExitProcess(3);
        }
    }
    CloseHandle(done);
}

std::vector<HWND> HostThread::dialogs() const {
    std::vector<HWND> found;
    EnumThreadWindows(id_, addDialog, reinterpret_cast<LPARAM>(&found));
    return found;
}

std::string textOf(HWND window) {
    std::array<char, 512> text{};
    SendMessageA(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    return text.data();
}

std::string classOf(HWND window) {
    std::array<char, 64> name{};
    GetClassNameA(window, name.data(), static_cast<int>(name.size()));
    return name.data();
}

std::vector<HWND> childrenOf(HWND window) {
    std::vector<HWND> found;
    EnumChildWindows(window, addWindow, reinterpret_cast<LPARAM>(&found));
    return found;
}

}  // namespace marrowfen::test
