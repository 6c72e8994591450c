// The main window: its class procedure and its making.
#pragma once

#include "platform/Win32.h"

LRESULT CALLBACK MainWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// Builds the start-up tables, registers the class and creates MainWindow with its first page; false if that failed.
bool CreateMainWindow(HINSTANCE instance);

// Closes the page and the window, which ends the message loop; nothing is asked and nothing saved.
void CloseMainWindow();

// The message loop, until the window is closed; returns the exit code.
int RunMessageLoop();
