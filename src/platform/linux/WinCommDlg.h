// The file dialogs. Include platform/Win32.h, not this.
#pragma once

#include "platform/linux/WinTypes.h"

constexpr DWORD OFN_EXPLORER = 0x00080000;

using LPOFNHOOKPROC = UINT_PTR(CALLBACK*)(HWND, UINT, WPARAM, LPARAM);

struct OPENFILENAMEA {
    DWORD lStructSize;
    HWND hwndOwner;
    HINSTANCE hInstance;
    LPCSTR lpstrFilter;
    LPSTR lpstrCustomFilter;
    DWORD nMaxCustFilter;
    DWORD nFilterIndex;
    LPSTR lpstrFile;
    DWORD nMaxFile;
    LPSTR lpstrFileTitle;
    DWORD nMaxFileTitle;
    LPCSTR lpstrInitialDir;
    LPCSTR lpstrTitle;
    DWORD Flags;
    WORD nFileOffset;
    WORD nFileExtension;
    LPCSTR lpstrDefExt;
    LPARAM lCustData;
    LPOFNHOOKPROC lpfnHook;
    LPCSTR lpTemplateName;
};

// Both show the name in lpstrFile and let any name be chosen, also one that does not exist; a name without an extension
// gets lpstrDefExt. They return TRUE with the whole path, in the file system's bytes, in lpstrFile, and FALSE with
// lpstrFile as it was if the user turns back, if the path does not fit or if the program ends behind them. A choice
// makes its directory the process's current one, and the next dialog of either kind begins there. Flags are
// OFN_EXPLORER; of the other fields only owner, filter and title count, and nothing but lpstrFile is written. Filter
// and title are in the code page of controls.
BOOL GetOpenFileNameA(OPENFILENAMEA* dialog);
BOOL GetSaveFileNameA(OPENFILENAMEA* dialog);
