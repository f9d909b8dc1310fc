#include <windows.h>

#include "plugin/module.h"
#include "plugin/resources/resource.h"

namespace marrowfen::plugin {

namespace {

INT_PTR CALLBACK aboutProc(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    if (message == WM_CLOSE || (message == WM_COMMAND && LOWORD(wParam) == IDOK)) {
        EndDialog(dialog, 0);
        return TRUE;
    }
    return FALSE;
}

}  // namespace

void showAboutBox() { DialogBoxParamA(theModule.instance, MAKEINTRESOURCEA(IDD_ABOUT), theModule.panel, aboutProc, 0); }

}  // namespace marrowfen::plugin
