// The Oscilloscope page: a strip chart of five live signals, one column a tick, and a value cursor over it.
#pragma once

#include "platform/Win32.h"

// The value cursor. All of it lives from process start to exit and survives the page's window.
//
// 1 while the cursor is on: nothing is then read or recorded; the check box writes it.
extern int CursorMode;
// Index of the column under the cursor, LowestCursor to HighestCursor, and where the last drawn one stood.
constexpr unsigned LowestCursor = 2;
constexpr unsigned HighestCursor = 395;
extern unsigned CursorPos;
extern unsigned CursorPrevPos;
// 0 until ParamBlockA has been read on this page since the link came up.
extern unsigned ScopeParamsRead;

INT_PTR CALLBACK ScopeProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// What follows each making of the page's window, which has emptied the history before its first paint.
void FillScopePage();
// In the paint of the main window.
void RedrawScope();

// One column of capture, unless the cursor is on or the link is lost, and the read-outs of the moment.
void SweepStep();
// The cursor where the scroll bar stands, and the read-outs of its column.
void CursorStep();
