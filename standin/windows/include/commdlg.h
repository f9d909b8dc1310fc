#pragma once

// The save dialog of the Windows common dialogs.

#include <windows.h>

#define OFN_OVERWRITEPROMPT 0x00000002
#define OFN_PATHMUSTEXIST 0x00000800
#define OFN_ENABLESIZING 0x00800000

struct OPENFILENAMEA {
    DWORD lStructSize;
    HWND hwndOwner;
    HINSTANCE hInstance;
    LPCSTR lpstrFilter;
    DWORD nFilterIndex;
    LPSTR lpstrFile;
    DWORD nMaxFile;
    LPCSTR lpstrInitialDir;
    LPCSTR lpstrTitle;
    DWORD Flags;
    LPCSTR lpstrDefExt;
};

BOOL GetSaveFileNameA(OPENFILENAMEA* question);
