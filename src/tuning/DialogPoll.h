// What the tuning dialogs share: their timer, combo boxes and the way out; the combo boxes serve the pages too.
// A dialog over a page polls in its place, while the pause flag given here keeps the page off the link.
#pragma once

#include "platform/Win32.h"

// Closes a dialog that RunDialog runs, with its timer.
void CloseTuningDialog(HWND dialog, WORD command, int& pauseFlag);

// Starts the dialog's timer with TimerPeriod, or starts it anew: at each paint.
void ArmDialogTimer(HWND dialog);
// At the end of a tick: starts the timer anew if TimerPeriod is no longer what is armed.
void KeepDialogTimer(HWND dialog);
void StopDialogTimer(HWND dialog);

// Keeps ComboOpen by what a combo box tells. Returns the entry that the user has chosen, or NoEntry for any other news.
constexpr int NoEntry = -1;
int ChosenEntry(HWND dialog, WORD combo, WORD news);
