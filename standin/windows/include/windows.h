#pragma once

// The few Windows types and calls that the plug-in uses, with Windows' names, values and meaning, for a machine without
// a screen. Who stands for the person in front of it: standin/windows/headless_user.h.

#include <cstddef>
#include <cstdint>

#define CALLBACK
#define WINAPI

using BOOL = int;
using BYTE = unsigned char;
using WORD = uint16_t;
using DWORD = uint32_t;
using UINT = unsigned int;
using INT_PTR = intptr_t;
using UINT_PTR = uintptr_t;
using LONG_PTR = intptr_t;
using WPARAM = UINT_PTR;
using LPARAM = LONG_PTR;
using LRESULT = LONG_PTR;
using LPVOID = void*;
using LPSTR = char*;
using LPCSTR = const char*;
using HWND = struct HWND__*;
using HINSTANCE = struct HINSTANCE__*;
using HMODULE = HINSTANCE;
using DLGPROC = INT_PTR(CALLBACK*)(HWND, UINT, WPARAM, LPARAM);

#define TRUE 1
#define FALSE 0

#define LOWORD(value) (static_cast<WORD>(static_cast<uintptr_t>(value) & 0xFFFF))
#define HIWORD(value) (static_cast<WORD>((static_cast<uintptr_t>(value) >> 16) & 0xFFFF))
#define MAKEWPARAM(low, high) \
    (static_cast<WPARAM>(static_cast<DWORD>(WORD(low)) | static_cast<DWORD>(WORD(high)) << 16))
#define MAKELPARAM(low, high) \
    (static_cast<LPARAM>(static_cast<DWORD>(WORD(low)) | static_cast<DWORD>(WORD(high)) << 16))
#define MAKEINTRESOURCEA(number) (reinterpret_cast<LPCSTR>(static_cast<uintptr_t>(WORD(number))))

#define DLL_PROCESS_ATTACH 1

#define IDOK 1
#define IDCANCEL 2

#define WM_DESTROY 0x0002
#define WM_SETFOCUS 0x0007
#define WM_SETREDRAW 0x000B
#define WM_CLOSE 0x0010
#define WM_INITDIALOG 0x0110
#define WM_COMMAND 0x0111

#define BN_CLICKED 0
#define BM_GETCHECK 0x00F0
#define BM_SETCHECK 0x00F1
#define BM_CLICK 0x00F5
#define BST_UNCHECKED 0
#define BST_CHECKED 1

#define CB_ERR (-1)
#define CB_ADDSTRING 0x0143
#define CB_GETCOUNT 0x0146
#define CB_GETLBTEXT 0x0148
#define CB_GETLBTEXTLEN 0x0149

#define MB_OK 0x0000
#define MB_ICONERROR 0x0010
#define MB_ICONINFORMATION 0x0040
#define MB_TASKMODAL 0x2000

// Of the library: called by whoever loads it.
extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved);

HMODULE GetModuleHandleA(LPCSTR name);

HWND CreateDialogParamA(HINSTANCE instance, LPCSTR dialog, HWND owner, DLGPROC procedure, LPARAM parameter);
INT_PTR DialogBoxParamA(HINSTANCE instance, LPCSTR dialog, HWND owner, DLGPROC procedure, LPARAM parameter);
BOOL EndDialog(HWND dialog, INT_PTR result);
BOOL DestroyWindow(HWND window);
BOOL IsWindow(HWND window);
HWND SetFocus(HWND window);
BOOL UpdateWindow(HWND window);

HWND GetDlgItem(HWND dialog, int control);
UINT GetDlgItemTextA(HWND dialog, int control, LPSTR buffer, int size);
BOOL SetDlgItemTextA(HWND dialog, int control, LPCSTR text);
LRESULT SendDlgItemMessageA(HWND dialog, int control, UINT message, WPARAM wParam, LPARAM lParam);
LRESULT SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

int MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT style);
