#include "shell/About.h"

#include "dialogs/Dialogs.h"
#include "resources/Ids.h"
#include "shell/AppState.h"

namespace {

constexpr size_t NameLine = 156;
constexpr size_t TitleLine = 157;
constexpr size_t VersionLine = 158;

void ShowTexts(HWND dialog) {
    SetDlgItemTextA(dialog, IDC_ABOUT_NAME, LangTable[NameLine].data());
    SetWindowTextA(dialog, LangTable[TitleLine].data());
    SetDlgItemTextA(dialog, IDC_ABOUT_VERSION, LangTable[VersionLine].data());
    SetDlgItemTextA(dialog, IDC_CLOSE, LangTable[CloseLine].data());
}

INT_PTR CALLBACK AboutProc(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    switch (message) {
        case WM_INITDIALOG:
            CentreDialog(dialog);
            return 1;
        case WM_PAINT:
            ShowTexts(dialog);
            return 0;
        case WM_COMMAND:
            if (LOWORD(wParam) != IDC_CLOSE && LOWORD(wParam) != IDC_CANCEL) {
                return 0;
            }
            CloseDialog(dialog, LOWORD(wParam), DialogPause);
            return 1;
        default:
            return 0;
    }
}

}  // namespace

void RunAboutDialog() {
    RunDialog(IDD_ABOUT, AboutProc, DialogPause);
}
