#pragma once

// A host's user-interface thread, which isn't the program's main one: a main view, a message loop, and whatever the
// host calls. A 32-bit host keeps its stack aligned to 4 bytes only, and so does this one.

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

namespace marrowfen::test {

inline constexpr DWORD kPollMilliseconds = 20;

class HostThread {
public:
    HostThread();

    // Has the thread call something, each time with its stack shifted differently, and does something else again and
    // again until it has returned. Ends the program when that takes a minute.
    void run(
        const std::function<void()>& act, const std::function<void()>& meanwhile = [] {});

    // Has the thread call something, also while a dialog is up; it has to live until then.
    void post(const std::function<void()>& act);

    void makeMainView();
    void destroyMainView();
    HWND mainView() const { return mainView_; }
    DWORD id() const { return id_; }

    // The dialogs that the thread shows, the topmost first.
    std::vector<HWND> dialogs() const;

private:
    HWND calls_ = nullptr;  // gets what the thread is to call
    HWND mainView_ = nullptr;
    DWORD id_ = 0;
    int shift_ = 0;  // of the stack, for the next call
};

std::string textOf(HWND window);
std::string classOf(HWND window);
std::vector<HWND> childrenOf(HWND window);

}  // namespace marrowfen::test
