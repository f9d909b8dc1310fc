#pragma once

// The progress bar of the Windows common controls.

#include <windows.h>

#define ICC_PROGRESS_CLASS 0x0020

#define PBM_SETRANGE 0x0401
#define PBM_SETPOS 0x0402
#define PBM_GETPOS 0x0408

struct INITCOMMONCONTROLSEX {
    DWORD dwSize;
    DWORD dwICC;
};

BOOL InitCommonControlsEx(const INITCOMMONCONTROLSEX* classes);
