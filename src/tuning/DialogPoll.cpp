#include "tuning/DialogPoll.h"

#include "link/Link.h"
#include "shell/AppState.h"

void RunTuningDialog(UINT dialogId, DLGPROC procedure, int& pauseFlag) {
    pauseFlag = 1;
    if (DialogBoxParamA(AppInstance, MAKEINTRESOURCEA(dialogId), PageWindow, procedure, 0) == -1) {
        pauseFlag = 0;
    }
}

void CloseTuningDialog(HWND dialog, WORD command, int& pauseFlag) {
    EndDialog(dialog, command);
    StopDialogTimer(dialog);
    pauseFlag = 0;
}

void ArmDialogTimer(HWND dialog) {
    SetTimer(dialog, DialogTimer, TimerPeriod, nullptr);
}

void KeepDialogTimer(HWND dialog) {
    KeepTimer(dialog, DialogTimer);
}

void StopDialogTimer(HWND dialog) {
    KillTimer(dialog, DialogTimer);
}

int ChosenEntry(HWND dialog, WORD combo, WORD news) {
    if (news == CBN_SELCHANGE) {
        return static_cast<int>(SendDlgItemMessageA(dialog, combo, CB_GETCURSEL, 0, 0));
    }
    ComboOpen = news == CBN_DROPDOWN ? 1 : 0;
    return NoEntry;
}
