#include "tuning/DialogPoll.h"

#include "link/Link.h"
#include "shell/AppState.h"

namespace {

constexpr UINT_PTR PollTimer = 2;

}  // namespace

void SetDialogTexts(HWND dialog, std::span<const DialogText> texts) {
    for (const DialogText& text : texts) {
        SetDlgItemTextA(dialog, text.control, LangTable[text.line].data());
    }
}

void AddEntry(HWND dialog, int combo, const char* text) {
    SendDlgItemMessageA(dialog, combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
}

void SelectEntry(HWND dialog, int combo, int entry) {
    SendDlgItemMessageA(dialog, combo, CB_SETCURSEL, static_cast<WPARAM>(entry), 0);
}

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
    SetTimer(dialog, PollTimer, TimerPeriod, nullptr);
}

void KeepDialogTimer(HWND dialog) {
    if (TimerPeriod != ActiveTimerPeriod) {
        ArmDialogTimer(dialog);
        ActiveTimerPeriod = TimerPeriod;
    }
}

void StopDialogTimer(HWND dialog) {
    KillTimer(dialog, PollTimer);
}

void PollIdentity() {
    ReadIdentBlock();
    DecodeIdentity();
}

int ChosenEntry(HWND dialog, WORD combo, WORD news) {
    if (news == CBN_SELCHANGE) {
        return static_cast<int>(SendDlgItemMessageA(dialog, combo, CB_GETCURSEL, 0, 0));
    }
    ComboOpen = news == CBN_DROPDOWN ? 1 : 0;
    return NoEntry;
}
