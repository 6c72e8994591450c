#include "shell/DialogHelpers.h"

#include "shell/AppState.h"

void CentreDialog(HWND dialog) {
    RECT rect{};
    GetWindowRect(dialog, &rect);
    const int x = (DesktopRect.right - (rect.right - rect.left)) / 2;
    const int y = (DesktopRect.bottom - (rect.bottom - rect.top)) / 2;
    SetWindowPos(dialog, nullptr, x, y, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
}
