#include "shell/EmptyPage.h"

#include "shell/AppState.h"

INT_PTR CALLBACK EmptyPageProc(HWND, UINT message, WPARAM, LPARAM) {
    switch (message) {
        case WM_INITDIALOG:
            return 1;
        case WM_PAINT:
            PlaceEmptyPage();
            return 0;
        default:
            return 0;
    }
}

INT_PTR CALLBACK ScopeStandInProc(HWND, UINT message, WPARAM, LPARAM) {
    return message == WM_INITDIALOG ? 1 : 0;
}

void PlaceEmptyPage() {
    SetWindowPos(PageWindow, nullptr, 0, 0, ProfileWidth, ProfileHeight, 0);
}
