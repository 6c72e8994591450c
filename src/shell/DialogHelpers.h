// What the dialogs have in common.
#pragma once

#include <cstddef>

#include "platform/Win32.h"

// Language line of the button that closes a dialog.
constexpr size_t CloseLine = 160;

// Puts a dialog into the middle of DesktopRect.
void CentreDialog(HWND dialog);
