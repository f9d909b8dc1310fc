#include <windows.h>

#include "plugin/module.h"
#include "plugin/resources/resource.h"

namespace marrowfen::plugin {

namespace {

constexpr int kNodeNameSize = 64;  // the terminating zero included

void addNodeFromComboBox(HWND panel) {
    char name[kNodeNameSize];
    if (GetDlgItemTextA(panel, IDC_NODE_NAME, name, kNodeNameSize) > 0) addNode(name);
}

// Whether the click was one of the panel's.
bool runButton(HWND panel, int control) {
    switch (control) {
        case IDC_ADD_NODE:
            addNodeFromComboBox(panel);
            return true;
        case IDC_EXPORT_DTS:
            exportDts();
            return true;
        case IDC_ABOUT:
            showAboutBox();
            return true;
        case IDC_EXPORT_DSQ:
            exportDsq();
            return true;
        default:
            return false;
    }
}

INT_PTR CALLBACK panelProc(HWND panel, UINT message, WPARAM wParam, LPARAM) {
    switch (message) {
        case WM_INITDIALOG:
            loadNodeList(panel);
            SendDlgItemMessageA(panel, IDC_WITH_ANIMATION, BM_SETCHECK, BST_UNCHECKED, 0);
            return TRUE;
        case WM_CLOSE:
            closePanel();
            return TRUE;
        case WM_COMMAND:
            return HIWORD(wParam) == BN_CLICKED && runButton(panel, LOWORD(wParam)) ? TRUE : FALSE;
        default:
            return FALSE;
    }
}

}  // namespace

void openPanel() {
    if (theModule.panel != nullptr) {
        SetFocus(theModule.panel);
    } else {
        theModule.panel =
            CreateDialogParamA(theModule.instance, MAKEINTRESOURCEA(IDD_PANEL), theModule.mainView, panelProc, 0);
    }
}

void closePanel() {
    if (theModule.panel == nullptr) return;
    DestroyWindow(theModule.panel);
    theModule.panel = nullptr;
}

}  // namespace marrowfen::plugin
