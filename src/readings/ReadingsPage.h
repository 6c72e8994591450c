// The Readings page: its messages, its poll and the learning command.
#pragma once

#include "platform/Win32.h"

// Ticks with a LiveBlock read since ParamBlockA and ParamBlockB were last read, 0 to 3 between ticks. From process
// start to exit; TickReadings writes it.
extern unsigned ParamTickCount;

// The page's dialog procedure.
INT_PTR CALLBACK ReadingsProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// Puts the page over the client area, a few pixels under its left and top edge, which centres the panels.
void PlaceReadingsPage(HWND window);

// One poll: the identity, the blocks that are due if the link serves, the evaluation, the timer. Nothing at all while a
// pause flag is set.
void TickReadings();

// One evaluation of the mirrors and the drawing of its result on PageWindow. Each call counts for the blink and for
// what is held on the status panel; called by a tick and, after DrawReadingsFrame, by a paint of the main window.
void UpdateReadings();

// Starts or stops learning by a command to the controller; refused without a word unless the engine runs on gas and the
// link serves.
void PressLearnButton();
