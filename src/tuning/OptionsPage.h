// The Options page: the finer behaviour of the controller, each feature behind a check box.
#pragma once

#include "platform/Win32.h"

// The page's dialog procedure.
INT_PTR CALLBACK OptionsProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// Fill the lists of PageWindow, a new window, and set its texts in the language of LangTable.
void FillOptionsLists();
void ApplyOptionsTexts();

// One poll: the identity and the blocks that the page shows, its refresh, the timer. Nothing at all while DialogPause
// or CorrectionsDialogOpen is set; while a list is dropped down the timer only.
void TickOptions();

// Brings every control of PageWindow into line with the mirrors.
void RefreshOptionsPage();
