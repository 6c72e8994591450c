// The Reset page: one button that has the controller restore its factory settings. It has no timer; the link is used
// only while the button's press runs.
#pragma once

#include <array>

#include "platform/Win32.h"

// What family 4 gets back cell by cell after a reset: the value is what the controller reports for it then.
struct RestoreRow {
    unsigned cell;
    BYTE value;
};
constexpr size_t RestoreSteps = 33;
// In the order of the writes. Lives from process start to exit; each reset of a family 4 controller fills it.
extern std::array<RestoreRow, RestoreSteps> RestoreTable;

INT_PTR CALLBACK ResetProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// Sets the page's texts from LangTable.
void ApplyResetTexts();
// Puts the page over the client area and its controls to their places in the showing size.
void PlaceResetPage();
