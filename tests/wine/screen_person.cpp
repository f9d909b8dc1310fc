#include "tests/wine/screen_person.h"

#include <commctrl.h>
#include <dlgs.h>

#include <array>
#include <cstdio>
#include <fstream>

#include "plugin/resources/resource.h"

namespace marrowfen::test {

namespace {

constexpr DWORD kPollMilliseconds = 10;
constexpr DWORD kPatienceMilliseconds = 60000;

ScreenPerson* thePerson = nullptr;

LRESULT CALLBACK hookProc(int code, WPARAM wParam, LPARAM lParam) {
    if (code == HC_ACTION && thePerson != nullptr) thePerson->seeMessage(*reinterpret_cast<CWPSTRUCT*>(lParam));
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

template <class Function>
Function exported(HMODULE library, const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
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

std::vector<HWND> dialogsOf(DWORD thread) {
    std::vector<HWND> found;
    const auto add = [](HWND window, LPARAM list) -> BOOL {
        if (classOf(window) == "#32770") reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
        return TRUE;
    };
    EnumThreadWindows(thread, add, reinterpret_cast<LPARAM>(&found));
    return found;
}

std::vector<HWND> childrenOf(HWND window) {
    std::vector<HWND> found;
    const auto add = [](HWND child, LPARAM list) -> BOOL {
        reinterpret_cast<std::vector<HWND>*>(list)->push_back(child);
        return TRUE;
    };
    EnumChildWindows(window, add, reinterpret_cast<LPARAM>(&found));
    return found;
}

void pressButton(HWND dialog, WORD id) {
    PostMessageA(dialog, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), reinterpret_cast<LPARAM>(GetDlgItem(dialog, id)));
}

// The file name of a save dialog: a combo box in newer ones, null in other dialogs.
HWND fileNameOf(HWND dialog) {
    HWND box = GetDlgItem(dialog, cmb13);
    return box != nullptr ? box : GetDlgItem(dialog, edt1);
}

}  // namespace

ScreenPerson::ScreenPerson(HWND mainView, const std::string& plugin, const std::string& files, const std::string& shots)
    : mainView_(mainView), uiThread_(GetWindowThreadProcessId(mainView, nullptr)), files_(files), shots_(shots) {
    thePerson = this;
    hook_ = SetWindowsHookExA(WH_CALLWNDPROC, hookProc, nullptr, uiThread_);
    runInHost([&] { plugin_ = LoadLibraryA(plugin.c_str()); });
    if (plugin_ == nullptr) {
        std::printf("%s can't be loaded\n", plugin.c_str());
        std::fflush(stdout);
        ExitProcess(4);
    }
    std::array<char, 100> data{};
    int result = -1;
    runInHost([&] { result = exported<int (*)(void*, void*)>(plugin_, "tsxGetData")(data.data(), nullptr); });
    if (result != 0 || std::string(data.data()) != "marrowfen") note("wrong plug-in data");
    if (exported<int (*)()>(plugin_, "tsxGetVersion")() != 650) note("wrong plug-in version");
}

ScreenPerson::~ScreenPerson() {
    deactivate();
    runInHost([&] { FreeLibrary(plugin_); });
    UnhookWindowsHookEx(hook_);
    thePerson = nullptr;
}

void ScreenPerson::note(const std::string& line) {
    const std::lock_guard lock(noting_);
    seen.push_back(line);
}

int ScreenPerson::leftClick() {
    int result = -1;
    runInHost([&] { result = exported<int (*)()>(plugin_, "tsxOnLeftClick")(); });
    if (panel() != nullptr && GetWindow(panel(), GW_OWNER) != mainView_) note("the panel isn't the main view's");
    return result;
}

void ScreenPerson::rightClick() { runInHost(exported<void (*)()>(plugin_, "tsxOnRightClick")); }

void ScreenPerson::deactivate() { runInHost(exported<void (*)()>(plugin_, "tsxDeactivate")); }

HWND ScreenPerson::panel() {
    for (HWND dialog : dialogsOf(uiThread_)) {
        if (GetDlgItem(dialog, IDC_EXPORT_DTS) != nullptr && IsWindowVisible(dialog)) return dialog;
    }
    return nullptr;
}

void ScreenPerson::press(int control) {
    HWND window = panel();
    if (control == IDC_EXPORT_DTS) takePicture("panel");
    runInHost([&] { SendMessageA(GetDlgItem(window, control), BM_CLICK, 0, 0); });
}

void ScreenPerson::closePanel() {
    runInHost([&] { SendMessageA(panel(), WM_SYSCOMMAND, SC_CLOSE, 0); });
}

void ScreenPerson::seeMessage(const CWPSTRUCT& message) {
    if (message.message != PBM_SETPOS || GetDlgCtrlID(message.hwnd) != IDC_PROGRESS_BAR) return;
    HWND dialog = GetParent(message.hwnd);
    if (!IsWindowVisible(dialog) || GetWindow(dialog, GW_OWNER) != panel())
        note("the progress dialog isn't the panel's");
    const int percent = static_cast<int>(message.wParam);
    noteProgress(percent, textOf(GetDlgItem(dialog, IDC_PROGRESS_TEXT)));
    if (percent == 60) takePicture("progress");
}

// Has the user-interface thread call something, and deals with the dialogs that come up until it returns.
void ScreenPerson::runInHost(const std::function<void()>& act) {
    HANDLE done = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    const std::function<void()> whole = [&] {
        act();
        SetEvent(done);
    };
    PostMessageA(mainView_, kRunMessage, 0, reinterpret_cast<LPARAM>(&whole));
    DWORD waited = 0;
    while (WaitForSingleObject(done, kPollMilliseconds) == WAIT_TIMEOUT) {
        useDialogs();
        waited += kPollMilliseconds;
        if (waited > kPatienceMilliseconds) {
            for (const std::string& line : seen) std::printf("  %s\n", line.c_str());
            std::printf("nothing happens any more\n");
            std::fflush(stdout);
            ExitProcess(3);
        }
    }
    CloseHandle(done);
}

void ScreenPerson::useDialogs() {
    std::erase_if(handled_, [](HWND dialog) { return !IsWindow(dialog); });
    for (HWND dialog : dialogsOf(uiThread_)) {
        if (!IsWindowVisible(dialog) || !IsWindowEnabled(dialog) || handled_.count(dialog) > 0) continue;
        if (useDialog(dialog)) handled_.insert(dialog);
    }
}

// Whether the dialog was dealt with.
bool ScreenPerson::useDialog(HWND dialog) {
    const bool isOurs =
        GetDlgItem(dialog, IDC_EXPORT_DTS) != nullptr || GetDlgItem(dialog, IDC_PROGRESS_BAR) != nullptr;
    if (isOurs) return false;
    if (fileNameOf(dialog) != nullptr) return answerSaveDialog(dialog);
    return textOf(dialog) == "Dialog" ? closeAboutBox(dialog) : closeMessageBox(dialog);
}

bool ScreenPerson::answerSaveDialog(HWND dialog) {
    HWND filters = GetDlgItem(dialog, cmb1);
    const LRESULT count = SendMessageA(filters, CB_GETCOUNT, 0, 0);
    if (count < 2) return false;  // not yet set up
    std::vector<std::string> labels;
    for (LRESULT i = 0; i < count; ++i) {
        std::array<char, 256> label{};
        SendMessageA(filters, CB_GETLBTEXT, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(label.data()));
        labels.emplace_back(label.data());
    }
    noteSaveDialog(textOf(fileNameOf(dialog)), labels);
    if (SendMessageA(filters, CB_GETCURSEL, 0, 0) != 0) note("another filter is selected");
    if (fileName) {
        const std::string path = files_ + "\\" + *fileName;
        SendMessageA(fileNameOf(dialog), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
    }
    pressButton(dialog, fileName ? IDOK : IDCANCEL);
    return true;
}

bool ScreenPerson::closeMessageBox(HWND box) {
    if (GetDlgItem(box, IDYES) != nullptr) {
        note("replace: yes");
        pressButton(box, IDYES);
        return true;
    }
    std::string text;
    HICON icon = nullptr;
    for (HWND child : childrenOf(box)) {
        if (classOf(child) != "Static") continue;
        auto* shown = reinterpret_cast<HICON>(SendMessageA(child, STM_GETICON, 0, 0));
        if (shown != nullptr) icon = shown;
        if (shown == nullptr && !textOf(child).empty()) text = textOf(child);
    }
    const bool isError = icon == LoadIconA(nullptr, IDI_ERROR);
    if (!isError && icon != LoadIconA(nullptr, IDI_INFORMATION)) note("a message with another icon");
    HWND owner = GetWindow(box, GW_OWNER);
    // Without an owner, a task-modal box blocks every window of the thread.
    if (owner == nullptr && IsWindowEnabled(mainView_)) note("a message that isn't task-modal");
    noteMessage(text, textOf(box), isError, owner != nullptr && owner == panel());
    pressButton(box, IDOK);
    return true;
}

bool ScreenPerson::closeAboutBox(HWND box) {
    note("about \"" + textOf(box) + "\"");
    HBITMAP picture = nullptr;
    for (HWND child : childrenOf(box)) {
        auto* shown = reinterpret_cast<HBITMAP>(SendMessageA(child, STM_GETIMAGE, IMAGE_BITMAP, 0));
        if (shown != nullptr) picture = shown;
    }
    BITMAP size{};
    GetObjectA(picture, sizeof size, &size);
    if (size.bmWidth != 363 || size.bmHeight != 133) note("the picture is missing");
    if (GetWindow(box, GW_OWNER) != panel()) note("the About box isn't the panel's");
    takePicture("about");
    pressButton(box, IDOK);
    return true;
}

// Whoever runs this takes the picture when the file is there, and removes the file.
void ScreenPerson::takePicture(const std::string& name) {
    if (shots_.empty()) return;
    const std::string wish = shots_ + "\\" + name + ".wanted";
    std::ofstream(wish).flush();
    for (DWORD waited = 0;
         waited < kPatienceMilliseconds && GetFileAttributesA(wish.c_str()) != INVALID_FILE_ATTRIBUTES;
         waited += kPollMilliseconds) {
        Sleep(kPollMilliseconds);
    }
}

}  // namespace marrowfen::test
