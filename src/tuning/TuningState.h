// The state that the tuning pages share with their dialogs; ComboOpen, the third pause flag, stands in
// shell/AppState.h. A new piece of tuning state that outlives its window goes here.
//
// All of it lives from process start to exit and survives every change of page, size and language.
#pragma once

// Pause flags, 0 or 1. TuningDialogOpen is set by the dialogs of the Configuration page and keeps that page off the
// link, CorrectionsDialogOpen by the one of the Options page; each dialog sets its flag before it opens and clears it
// when it closes.
extern int TuningDialogOpen;
extern int CorrectionsDialogOpen;

// The Lambda sensor type, 0 to 15, for which the list of LambdaPoint is filled; the refresh of the Configuration page
// writes it. An entry of that list is read by this type and not by the mirror's.
extern int LambdaPointList;
