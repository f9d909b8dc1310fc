#include <windows.h>
// windows.h has to come first.
#include <commctrl.h>

#include "plugin/module.h"
#include "plugin/resources/resource.h"

namespace marrowfen::plugin {

namespace {

INT_PTR CALLBACK progressProc(HWND dialog, UINT message, WPARAM, LPARAM) {
    switch (message) {
        case WM_INITDIALOG:
            SetDlgItemTextA(dialog, IDC_PROGRESS_TEXT, "");
            SendDlgItemMessageA(dialog, IDC_PROGRESS_BAR, PBM_SETRANGE, 0, MAKELPARAM(0, 100));
            return TRUE;
        case WM_CLOSE:
            closeProgressDialog();
            return TRUE;
        case WM_DESTROY:
            theModule.progress = nullptr;  // it goes with the panel, too
            return FALSE;
        default:
            return FALSE;
    }
}

}  // namespace

void showProgressDialog() {
    if (theModule.progress != nullptr) {
        SetFocus(theModule.progress);
    } else {
        theModule.progress =
            CreateDialogParamA(theModule.instance, MAKEINTRESOURCEA(IDD_PROGRESS), theModule.panel, progressProc, 0);
    }
}

void setProgress(const char* text, int percent) {
    if (theModule.progress == nullptr) return;
    SetDlgItemTextA(theModule.progress, IDC_PROGRESS_TEXT, text);
    SendDlgItemMessageA(theModule.progress, IDC_PROGRESS_BAR, PBM_SETPOS, static_cast<WPARAM>(percent), 0);
    UpdateWindow(theModule.progress);
}

void closeProgressDialog() {
    if (theModule.progress == nullptr) return;
    DestroyWindow(theModule.progress);
    theModule.progress = nullptr;
}

}  // namespace marrowfen::plugin
