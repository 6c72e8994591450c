// The calls that a build with TARVEX_MESSAGE_LOG logs. It is included ahead of every source of the application, which
// knows nothing of it, and of none of the layer's.
#pragma once

#include "platform/Win32.h"

ATOM LoggedRegisterClassA(const WNDCLASSA* windowClass);
HWND LoggedCreateDialogParamA(HINSTANCE instance, LPCSTR name, HWND parent, DLGPROC procedure, LPARAM parameter);
INT_PTR LoggedDialogBoxParamA(HINSTANCE instance, LPCSTR name, HWND owner, DLGPROC procedure, LPARAM parameter);
int LoggedMessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type);
BOOL LoggedGetOpenFileNameA(OPENFILENAMEA* dialog);
BOOL LoggedGetSaveFileNameA(OPENFILENAMEA* dialog);

BOOL LoggedRectangle(HDC dc, int left, int top, int right, int bottom);
BOOL LoggedRoundRect(HDC dc, int left, int top, int right, int bottom, int cornerWidth, int cornerHeight);
BOOL LoggedEllipse(HDC dc, int left, int top, int right, int bottom);
BOOL LoggedPolyline(HDC dc, const POINT* points, int count);
BOOL LoggedMoveToEx(HDC dc, int x, int y, POINT* previous);
BOOL LoggedLineTo(HDC dc, int x, int y);
BOOL LoggedBitBlt(HDC to, int x, int y, int width, int height, HDC from, int fromX, int fromY, DWORD operation);
BOOL LoggedExtTextOutA(HDC dc, int x, int y, UINT options, const RECT* rect, LPCSTR text, UINT count,
                       const INT* spacing);

#ifndef TARVEX_LOGGING_CALLS
#define RegisterClassA LoggedRegisterClassA
#define CreateDialogParamA LoggedCreateDialogParamA
#define DialogBoxParamA LoggedDialogBoxParamA
#define MessageBoxA LoggedMessageBoxA
#define GetOpenFileNameA LoggedGetOpenFileNameA
#define GetSaveFileNameA LoggedGetSaveFileNameA
#define Rectangle LoggedRectangle
#define RoundRect LoggedRoundRect
#define Ellipse LoggedEllipse
#define Polyline LoggedPolyline
#define MoveToEx LoggedMoveToEx
#define LineTo LoggedLineTo
#define BitBlt LoggedBitBlt
#define ExtTextOutA LoggedExtTextOutA
#endif
