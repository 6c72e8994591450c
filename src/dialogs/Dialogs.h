// What the modal dialogs of all folders have in common: their place, their texts and their lists. Polling from a dialog
// is told with the folder that does it.
#pragma once

#include <cstddef>
#include <span>

#include "platform/Win32.h"

// Language line of the button that closes a dialog.
constexpr size_t CloseLine = 160;

// A control of a dialog and the language line of its text.
struct DialogText {
    int control;
    size_t line;
};

// Runs a dialog over the page with the pause flag at 1, which keeps the page off the link; the dialog clears it when it
// closes. However it ends, the flag and ComboOpen are 0 then.
void RunDialog(UINT dialogId, DLGPROC procedure, int& pauseFlag);
void CloseDialog(HWND dialog, WORD command, int& pauseFlag);

// Where the code puts a control, in pixels of its window.
struct Place {
    int x;
    int y;
    int width;
    int height;
};
void PlaceControl(HWND dialog, int id, const Place& place);

// Puts a dialog into the middle of DesktopRect.
void CentreDialog(HWND dialog);

void SetDialogTexts(HWND dialog, std::span<const DialogText> texts);

// Bring a control into line and leave one alone that is so already, so that a refresh neither flickers nor moves what
// the user has selected.
void SetControlText(HWND dialog, int id, const char* text);
void EnableControl(HWND dialog, int id, bool enable);
void ShowControl(HWND dialog, int id, bool show);

// The lists of combo boxes. An entry of -1 selects nothing.
void AddEntry(HWND dialog, int combo, const char* text);
void SelectEntry(HWND dialog, int combo, int entry);
