// The windows of a machine without a screen: dialogs and their controls, messages between them, and the calls of
// user32 and comctl32 that the plug-in makes. What Windows does with a handle that is no window any more (nothing)
// is done here too.

#include <commctrl.h>
#include <windows.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "standin/windows/desktop_state.h"

namespace marrowfen::headless {

DesktopState* theDesktop = nullptr;

namespace {

constexpr char kProgressClass[] = "msctls_progress32";

bool isDialog(HWND window) {
    return theDesktop != nullptr && std::any_of(theDesktop->dialogs.begin(), theDesktop->dialogs.end(),
                                                [&](const auto& dialog) { return dialog.get() == window; });
}

// A control of an open dialog; null for none.
HWND findControl(HWND dialog, int id) {
    if (!isDialog(dialog)) return nullptr;
    for (const auto& control : dialog->controls) {
        if (control->id == id) return control.get();
    }
    return nullptr;
}

bool isControl(HWND window) {
    if (theDesktop == nullptr) return false;
    for (const auto& dialog : theDesktop->dialogs) {
        for (const auto& control : dialog->controls) {
            if (control.get() == window) return true;
        }
    }
    return false;
}

HWND makeDialog(LPCSTR name, HWND owner, DLGPROC procedure, LPARAM parameter, bool isModal) {
    if (theDesktop == nullptr) return nullptr;
    const auto id = static_cast<int>(reinterpret_cast<uintptr_t>(name));
    const auto& all = theDesktop->templates;
    const auto found = std::find_if(all.begin(), all.end(), [&](const auto& t) { return t.id == id; });
    if (found == all.end()) return nullptr;

    auto dialog = std::make_unique<HWND__>();
    dialog->parent = owner;
    dialog->id = id;
    dialog->text = found->caption;
    dialog->procedure = procedure;
    dialog->isModal = isModal;
    for (const Control& control : found->controls) {
        // As on Windows, a dialog with a control of a class that isn't registered can't be made.
        if (control.kind == kProgressClass && !theDesktop->hasProgressClass) return nullptr;
        auto window = std::make_unique<HWND__>();
        window->parent = dialog.get();
        window->id = control.id;
        window->kind = control.kind;
        window->text = control.text;
        dialog->controls.push_back(std::move(window));
    }
    HWND result = dialog.get();
    theDesktop->dialogs.push_back(std::move(dialog));
    procedure(result, WM_INITDIALOG, 0, parameter);
    return result;
}

LRESULT click(HWND button) {
    if (button->kind == "AUTOCHECKBOX") button->check = button->check == BST_CHECKED ? BST_UNCHECKED : BST_CHECKED;
    HWND dialog = button->parent;
    // The click may end the dialog and the button with it.
    dialog->procedure(dialog, WM_COMMAND, MAKEWPARAM(button->id, BN_CLICKED), reinterpret_cast<LPARAM>(button));
    return 0;
}

LRESULT sendToButton(HWND button, UINT message, WPARAM wParam) {
    switch (message) {
        case BM_GETCHECK:
            return static_cast<LRESULT>(button->check);
        case BM_SETCHECK:
            button->check = wParam;
            return 0;
        case BM_CLICK:
            return click(button);
        default:
            return 0;
    }
}

LRESULT sendToComboBox(HWND box, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case CB_ADDSTRING:
            box->items.emplace_back(reinterpret_cast<LPCSTR>(lParam));
            return static_cast<LRESULT>(box->items.size()) - 1;
        case CB_GETCOUNT:
            return static_cast<LRESULT>(box->items.size());
        case CB_GETLBTEXTLEN:
            return wParam < box->items.size() ? static_cast<LRESULT>(box->items[wParam].size()) : CB_ERR;
        case CB_GETLBTEXT:
            if (wParam >= box->items.size()) return CB_ERR;
            std::strcpy(reinterpret_cast<LPSTR>(lParam), box->items[wParam].c_str());
            return static_cast<LRESULT>(box->items[wParam].size());
        default:
            return 0;
    }
}

LRESULT sendToProgressBar(HWND bar, UINT message, WPARAM wParam, LPARAM lParam) {
    const int old = bar->position;
    switch (message) {
        case PBM_SETRANGE:
            bar->low = LOWORD(lParam);
            bar->high = HIWORD(lParam);
            return 0;
        case PBM_SETPOS:
            bar->position = std::clamp(static_cast<int>(wParam), bar->low, bar->high);
            return old;
        case PBM_GETPOS:
            return old;
        default:
            return 0;
    }
}

LRESULT sendToControl(HWND control, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_SETFOCUS) theDesktop->focus = control;
    if (message == WM_SETREDRAW) control->redraw = wParam != FALSE;
    if (control->kind == "COMBOBOX") return sendToComboBox(control, message, wParam, lParam);
    if (control->kind == kProgressClass) return sendToProgressBar(control, message, wParam, lParam);
    const bool isButton = control->kind.find("BUTTON") != std::string::npos || control->kind == "AUTOCHECKBOX";
    return isButton ? sendToButton(control, message, wParam) : 0;
}

}  // namespace

Desktop::Desktop(HeadlessUser& user, std::vector<DialogTemplate> dialogs) {
    theDesktop = new DesktopState{.user = user, .templates = std::move(dialogs)};
}

Desktop::~Desktop() {
    delete theDesktop;
    theDesktop = nullptr;
}

HINSTANCE Desktop::library() const { return reinterpret_cast<HINSTANCE>(theDesktop); }

std::vector<HWND> Desktop::openDialogs() const {
    std::vector<HWND> result;
    for (const auto& dialog : theDesktop->dialogs) result.push_back(dialog.get());
    return result;
}

int Desktop::resourceOf(HWND dialog) const { return isDialog(dialog) ? dialog->id : 0; }
HWND Desktop::ownerOf(HWND dialog) const { return isDialog(dialog) ? dialog->parent : nullptr; }
HWND Desktop::focus() const { return theDesktop->focus; }
bool Desktop::isRedrawn(HWND control) const { return isControl(control) && control->redraw; }

}  // namespace marrowfen::headless

using namespace marrowfen::headless;

// The main module of the process: not the library, and never looked into.
HMODULE GetModuleHandleA(LPCSTR) {
    static char mainModule;
    return reinterpret_cast<HMODULE>(&mainModule);
}

HWND CreateDialogParamA(HINSTANCE, LPCSTR dialog, HWND owner, DLGPROC procedure, LPARAM parameter) {
    return makeDialog(dialog, owner, procedure, parameter, false);
}

INT_PTR DialogBoxParamA(HINSTANCE, LPCSTR name, HWND owner, DLGPROC procedure, LPARAM parameter) {
    HWND dialog = makeDialog(name, owner, procedure, parameter, true);
    if (dialog == nullptr) return -1;
    if (!dialog->hasEnded) theDesktop->user.useModalDialog(dialog);
    if (!isDialog(dialog)) return -1;  // went with its owner
    if (!dialog->hasEnded) procedure(dialog, WM_CLOSE, 0, 0);
    const INT_PTR result = dialog->result;
    DestroyWindow(dialog);
    return result;
}

BOOL EndDialog(HWND dialog, INT_PTR result) {
    if (!isDialog(dialog) || !dialog->isModal) return FALSE;
    dialog->hasEnded = true;
    dialog->result = result;
    return TRUE;
}

BOOL DestroyWindow(HWND window) {
    if (!isDialog(window)) return FALSE;
    if (theDesktop->focus == window || (isControl(theDesktop->focus) && theDesktop->focus->parent == window)) {
        theDesktop->focus = nullptr;
    }
    // What a window owns goes with it.
    std::vector<HWND> owned;
    for (const auto& dialog : theDesktop->dialogs) {
        if (dialog->parent == window) owned.push_back(dialog.get());
    }
    for (HWND dialog : owned) DestroyWindow(dialog);
    window->procedure(window, WM_DESTROY, 0, 0);
    std::erase_if(theDesktop->dialogs, [&](const auto& dialog) { return dialog.get() == window; });
    return TRUE;
}

BOOL IsWindow(HWND window) { return isDialog(window) || isControl(window) ? TRUE : FALSE; }

HWND SetFocus(HWND window) {
    if (!IsWindow(window)) return nullptr;
    return std::exchange(theDesktop->focus, window);
}

BOOL UpdateWindow(HWND window) {
    if (!isDialog(window)) return FALSE;
    theDesktop->user.seeRepaint(window);
    return TRUE;
}

HWND GetDlgItem(HWND dialog, int control) { return findControl(dialog, control); }

UINT GetDlgItemTextA(HWND dialog, int control, LPSTR buffer, int size) {
    HWND window = findControl(dialog, control);
    if (size <= 0) return 0;
    const std::string text = window == nullptr ? "" : window->text.substr(0, static_cast<size_t>(size) - 1);
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    return static_cast<UINT>(text.size());
}

BOOL SetDlgItemTextA(HWND dialog, int control, LPCSTR text) {
    HWND window = findControl(dialog, control);
    if (window != nullptr) window->text = text;
    return window != nullptr ? TRUE : FALSE;
}

LRESULT SendDlgItemMessageA(HWND dialog, int control, UINT message, WPARAM wParam, LPARAM lParam) {
    HWND window = findControl(dialog, control);
    return window == nullptr ? 0 : sendToControl(window, message, wParam, lParam);
}

LRESULT SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (isDialog(window)) return window->procedure(window, message, wParam, lParam);
    return isControl(window) ? sendToControl(window, message, wParam, lParam) : 0;
}

int MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT style) {
    if (theDesktop == nullptr) return 0;
    theDesktop->user.readMessage({text, caption, style, owner});
    return IDOK;
}

BOOL InitCommonControlsEx(const INITCOMMONCONTROLSEX* classes) {
    if (theDesktop != nullptr && (classes->dwICC & ICC_PROGRESS_CLASS) != 0) theDesktop->hasProgressClass = true;
    return TRUE;
}
