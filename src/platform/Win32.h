// The one system header of the application code: the real <windows.h> on Windows and, on Linux, the declarations of
// those Win32 types, constants and functions that the program uses. A new call is declared in the linux/ header of its
// area and behaves as the real one; what differs is said at its declaration.
#pragma once

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef STRICT
#define STRICT
#endif
#include <windows.h>

#include <commctrl.h>
#include <commdlg.h>
#else
#include "platform/linux/WinTypes.h"

#include "platform/linux/WinComm.h"
#include "platform/linux/WinCommDlg.h"
#include "platform/linux/WinGdi.h"
#include "platform/linux/WinUser.h"
#endif
