#include <windows.h>

#include <new>

#include "host/host_program.h"
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

INT_PTR handle(HWND panel, UINT message, WPARAM wParam) {
    switch (message) {
        case WM_INITDIALOG:
            loadNodeList(panel);
            SendDlgItemMessageA(panel, IDC_WITH_ANIMATION, BM_SETCHECK, BST_UNCHECKED, 0);
            return TRUE;
        case WM_CLOSE:
            closePanel();
            return TRUE;
        case WM_DESTROY:
            // However it goes: the host's main view takes it along.
            theModule.panel = nullptr;
            return FALSE;
        case WM_COMMAND:
            return HIWORD(wParam) == BN_CLICKED && runButton(panel, LOWORD(wParam)) ? TRUE : FALSE;
        default:
            return FALSE;
    }
}

INT_PTR CALLBACK panelProc(HWND panel, UINT message, WPARAM wParam, LPARAM) {
    try {
        return handle(panel, message, wParam);
    } catch (const std::bad_alloc&) {
        reportNoMemory();
        return TRUE;
    }
}

}  // namespace

void openPanel() {
    if (theModule.panel != nullptr) {
        SetFocus(theModule.panel);
        return;
    }
    // The main view that the host had may be gone, and another one in its place.
    if (!IsWindow(theModule.mainView)) theModule.mainView = static_cast<HWND>(hostMainView());
    theModule.panel =
        CreateDialogParamA(theModule.instance, MAKEINTRESOURCEA(IDD_PANEL), theModule.mainView, panelProc, 0);
}

void closePanel() {
    if (theModule.panel == nullptr) return;
    DestroyWindow(theModule.panel);
    theModule.panel = nullptr;
}

}  // namespace marrowfen::plugin
