#pragma once

// What the headless calls work on.

#include <memory>
#include <string>
#include <vector>

#include "standin/windows/headless_user.h"

// A dialog or one of its controls.
struct HWND__ {
    HWND parent = nullptr;  // a dialog's owner; a control's dialog
    int id = 0;             // a dialog's resource number
    std::string kind;       // empty for a dialog
    std::string text;

    // Of a dialog.
    DLGPROC procedure = nullptr;
    std::vector<std::unique_ptr<HWND__>> controls;
    bool isModal = false;
    bool hasEnded = false;
    INT_PTR result = 0;

    // Of a control.
    WPARAM check = BST_UNCHECKED;
    bool redraw = true;
    std::vector<std::string> items;
    int low = 0, high = 100, position = 0;
};

namespace marrowfen::headless {

struct DesktopState {
    HeadlessUser& user;
    std::vector<DialogTemplate> templates;
    std::vector<std::unique_ptr<HWND__>> dialogs = {};  // open ones, the oldest first
    HWND focus = nullptr;
    bool hasProgressClass = false;
};

extern DesktopState* theDesktop;  // null while there is no desktop

}  // namespace marrowfen::headless
