// What stands in for the pages that have no content yet: an empty dialog over the whole client area.
#pragma once

#include "platform/Win32.h"

INT_PTR CALLBACK EmptyPageProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// The same for the page that keeps its template's place and size.
INT_PTR CALLBACK ScopeStandInProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// Puts the showing page over the main window.
void PlaceEmptyPage();
