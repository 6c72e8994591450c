// The corrections: four small even numbers around zero, packed by nibbles into the two correction cells.
#pragma once

#include "platform/Win32.h"

// Runs the dialog over the page with CorrectionsDialogOpen set until it closes.
void RunCorrectionsDialog();

// Sets the texts and fills the four lists, once for each dialog.
void FillCorrectionsDialog(HWND window);
// Selects what the two cells hold: bytes 8 and 9 of ParamBlockA in Family2, 6 and 7 of ParamBlockC in Family4. Any
// other family leaves the selections alone.
void RefreshCorrectionsDialog(HWND window);
