#include "tuning/DialogPoll.h"

#include "dialogs/Dialogs.h"
#include "link/Link.h"
#include "shell/AppState.h"

void CloseTuningDialog(HWND dialog, WORD command, int& pauseFlag) {
    CloseDialog(dialog, command, pauseFlag);
    StopDialogTimer(dialog);
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
