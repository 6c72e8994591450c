#include "dialogs/Dialogs.h"

#include <array>
#include <string_view>

#include "shell/AppState.h"

void RunDialog(UINT dialogId, DLGPROC procedure, int& pauseFlag) {
    pauseFlag = 1;
    DialogBoxParamA(AppInstance, MAKEINTRESOURCEA(dialogId), PageWindow, procedure, 0);
    // However it ended, and with whatever list open.
    pauseFlag = 0;
    ComboOpen = 0;
}

void CloseDialog(HWND dialog, WORD command, int& pauseFlag) {
    EndDialog(dialog, command);
    pauseFlag = 0;
}

void PlaceControl(HWND dialog, int id, const Place& place) {
    SetWindowPos(GetDlgItem(dialog, id), nullptr, place.x, place.y, place.width, place.height, SWP_NOZORDER);
}

void CentreDialog(HWND dialog) {
    RECT rect{};
    GetWindowRect(dialog, &rect);
    const int x = (DesktopRect.right - (rect.right - rect.left)) / 2;
    const int y = (DesktopRect.bottom - (rect.bottom - rect.top)) / 2;
    SetWindowPos(dialog, nullptr, x, y, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
}

void SetDialogTexts(HWND dialog, std::span<const DialogText> texts) {
    for (const DialogText& text : texts) {
        SetDlgItemTextA(dialog, text.control, LangTable[text.line].data());
    }
}

void SetControlText(HWND dialog, int id, const char* text) {
    std::array<char, LangLineSize> shown{};
    GetWindowTextA(GetDlgItem(dialog, id), shown.data(), static_cast<int>(shown.size()));
    if (std::string_view(shown.data()) != text) {
        SetDlgItemTextA(dialog, id, text);
    }
}

void EnableControl(HWND dialog, int id, bool enable) {
    const HWND control = GetDlgItem(dialog, id);
    if ((IsWindowEnabled(control) != 0) != enable) {
        EnableWindow(control, enable ? TRUE : FALSE);
    }
}

void ShowControl(HWND dialog, int id, bool show) {
    const HWND control = GetDlgItem(dialog, id);
    if ((IsWindowVisible(control) != 0) != show) {
        ShowWindow(control, show ? SW_SHOW : SW_HIDE);
    }
}

void AddEntry(HWND dialog, int combo, const char* text) {
    SendDlgItemMessageA(dialog, combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
}

void SelectEntry(HWND dialog, int combo, int entry) {
    SendDlgItemMessageA(dialog, combo, CB_SETCURSEL, static_cast<WPARAM>(entry), 0);
}
