#include "tests/wine/screen_person.h"

#include <commctrl.h>
#include <dlgs.h>

#include <array>
#include <cstdio>
#include <fstream>

#include "plugin/resources/resource.h"

namespace marrowfen::test {

namespace {

ScreenPerson* thePerson = nullptr;

LRESULT CALLBACK hookProc(int code, WPARAM wParam, LPARAM lParam) {
    if (code == HC_ACTION && thePerson != nullptr) thePerson->seeMessage(*reinterpret_cast<CWPSTRUCT*>(lParam));
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

template <class Function>
Function exported(HMODULE library, const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

void pressButton(HWND dialog, WORD id) {
    PostMessageA(dialog, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), reinterpret_cast<LPARAM>(GetDlgItem(dialog, id)));
}

// The file name of a save dialog: a combo box in newer ones, null in other dialogs.
HWND fileNameOf(HWND dialog) {
    HWND box = GetDlgItem(dialog, cmb13);
    return box != nullptr ? box : GetDlgItem(dialog, edt1);
}

// What a control needs beside its text, in dialog units.
int spareWidth(HWND control) {
    if (classOf(control) != "Button") return 0;
    const LONG_PTR kind = GetWindowLongPtrA(control, GWL_STYLE) & BS_TYPEMASK;
    if (kind == BS_AUTOCHECKBOX) return 10;  // the box
    return kind == BS_GROUPBOX ? 8 : 4;      // the frame
}

bool isCut(HWND dialog, HWND control) {
    RECT text{}, spare{0, 0, spareWidth(control), 0}, place{};
    GetClientRect(control, &place);
    MapDialogRect(dialog, &spare);
    HDC canvas = GetDC(control);
    HGDIOBJ old = SelectObject(canvas, reinterpret_cast<HFONT>(SendMessageA(control, WM_GETFONT, 0, 0)));
    DrawTextA(canvas, textOf(control).c_str(), -1, &text, DT_CALCRECT | DT_SINGLELINE);
    SelectObject(canvas, old);
    ReleaseDC(control, canvas);
    return text.right + spare.right > place.right || text.bottom > place.bottom;
}

}  // namespace

bool isSaveDialog(HWND dialog) { return fileNameOf(dialog) != nullptr; }
bool isAboutBox(HWND dialog) { return textOf(dialog) == "Dialog"; }
bool isQuestion(HWND dialog) { return GetDlgItem(dialog, IDYES) != nullptr; }

std::vector<std::string> cutTexts(HWND dialog) {
    std::vector<std::string> cut;
    for (HWND control : childrenOf(dialog)) {
        const std::string text = textOf(control);
        if (GetParent(control) == dialog && !text.empty() && isCut(dialog, control)) cut.push_back(text);
    }
    return cut;
}

ScreenPerson::ScreenPerson(HostThread& host, const std::string& plugin, const std::string& files)
    : host_(host), files_(files) {
    thePerson = this;
    hook_ = SetWindowsHookExA(WH_CALLWNDPROC, hookProc, nullptr, host_.id());
    runInHost([&] { plugin_ = LoadLibraryA(plugin.c_str()); });
    if (plugin_ == nullptr) {
        std::printf("%s can't be loaded\n", plugin.c_str());
        std::fflush(stdout);
        ExitProcess(4);
    }
    std::array<char, 101> data{};
    data.back() = 'x';
    int result = -1;
    runInHost([&] { result = exported<int (*)(void*, void*)>(plugin_, "tsxGetData")(data.data(), nullptr); });
    if (result != 0 || std::string(data.data()) != "marrowfen" || data.back() != 'x') note("wrong plug-in data");
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
    if (HWND opened = panel()) {
        if (GetWindow(opened, GW_OWNER) != host_.mainView()) note("the panel isn't the main view's");
        noteCutTexts(opened);
    }
    return result;
}

void ScreenPerson::rightClick() { runInHost(exported<void (*)()>(plugin_, "tsxOnRightClick")); }

// Brings up no dialog, and leaves those that are up alone.
void ScreenPerson::deactivate() { host_.run(exported<void (*)()>(plugin_, "tsxDeactivate")); }

HWND ScreenPerson::panel() {
    for (HWND dialog : host_.dialogs()) {
        if (GetDlgItem(dialog, IDC_EXPORT_DTS) != nullptr) return dialog;
    }
    return nullptr;
}

void ScreenPerson::press(int control) {
    HWND window = panel();
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
    noteCutTexts(dialog);
    meetProgress(percent);
}

void ScreenPerson::runInHost(const std::function<void()>& act) {
    host_.run(act, [this] { useDialogs(); });
}

void ScreenPerson::useDialogs() {
    std::erase_if(handled_, [](HWND dialog) { return !IsWindow(dialog); });
    for (HWND dialog : host_.dialogs()) {
        // A dialog that isn't shown yet has no texts to read.
        if (!IsWindowVisible(dialog) || !IsWindowEnabled(dialog) || handled_.count(dialog) > 0) continue;
        if (useDialog(dialog)) handled_.insert(dialog);
    }
}

// Whether the dialog was dealt with.
bool ScreenPerson::useDialog(HWND dialog) {
    const bool isOurs =
        GetDlgItem(dialog, IDC_EXPORT_DTS) != nullptr || GetDlgItem(dialog, IDC_PROGRESS_BAR) != nullptr;
    if (isOurs) return false;
    if (meet(dialog)) return true;
    if (isSaveDialog(dialog)) return answerSaveDialog(dialog);
    return isAboutBox(dialog) ? closeAboutBox(dialog) : closeMessageBox(dialog);
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
    if (isQuestion(box)) {
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
    if (owner == nullptr && IsWindowEnabled(host_.mainView())) note("a message that isn't task-modal");
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
    noteCutTexts(box);
    pressButton(box, IDOK);
    return true;
}

void ScreenPerson::noteCutTexts(HWND dialog) {
    for (const std::string& text : cutTexts(dialog)) note("cut: " + text);
}

}  // namespace marrowfen::test
