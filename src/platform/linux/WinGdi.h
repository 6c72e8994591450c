// Drawing. Include platform/Win32.h, not this.
#pragma once

#include "platform/linux/WinTypes.h"

constexpr int PS_SOLID = 0;
constexpr int GRAY_BRUSH = 2;
constexpr int WHITE_BRUSH = 0;
constexpr int BLACK_PEN = 7;
constexpr UINT ETO_OPAQUE = 2;
constexpr DWORD SRCCOPY = 0x00CC0020;
constexpr BYTE EASTEUROPE_CHARSET = 238;
constexpr BYTE RUSSIAN_CHARSET = 204;
constexpr BYTE DEFAULT_PITCH = 0;
constexpr BYTE FF_SWISS = 0x20;
constexpr COLORREF CLR_INVALID = 0xFFFFFFFF;

constexpr int LF_FACESIZE = 32;

struct LOGFONTA {
    LONG lfHeight;
    LONG lfWidth;
    LONG lfEscapement;
    LONG lfOrientation;
    LONG lfWeight;
    BYTE lfItalic;
    BYTE lfUnderline;
    BYTE lfStrikeOut;
    BYTE lfCharSet;
    BYTE lfOutPrecision;
    BYTE lfClipPrecision;
    BYTE lfQuality;
    BYTE lfPitchAndFamily;
    char lfFaceName[LF_FACESIZE];
};

constexpr COLORREF RGB(unsigned red, unsigned green, unsigned blue) {
    return (red & 0xFF) | (green & 0xFF) << 8 | (blue & 0xFF) << 16;
}

// Solid pens only; a width below 1 counts as 1. Lines of width 1 leave out their last point, wider ones have round
// ends.
HPEN CreatePen(int style, int width, COLORREF colour);
HBRUSH CreateSolidBrush(COLORREF colour);
HGDIOBJ GetStockObject(int object);

// The face is always Liberation Sans, Arial's metric twin; a positive height is the cell's, a width above 0 the
// average character's, and the character set chooses the code page of the texts drawn with it.
HFONT CreateFontIndirectA(const LOGFONTA* font);
HGDIOBJ SelectObject(HDC dc, HGDIOBJ object);
BOOL DeleteObject(HGDIOBJ object);

HDC GetDC(HWND window);
int ReleaseDC(HWND window, HDC dc);
HDC CreateCompatibleDC(HDC dc);
BOOL DeleteDC(HDC dc);

BOOL Rectangle(HDC dc, int left, int top, int right, int bottom);
BOOL RoundRect(HDC dc, int left, int top, int right, int bottom, int cornerWidth, int cornerHeight);
BOOL Ellipse(HDC dc, int left, int top, int right, int bottom);
BOOL Polyline(HDC dc, const POINT* points, int count);
BOOL MoveToEx(HDC dc, int x, int y, POINT* previous);
BOOL LineTo(HDC dc, int x, int y);
COLORREF GetPixel(HDC dc, int x, int y);

// COLOR_3DFACE only: what stands behind the controls of a dialog.
constexpr int COLOR_3DFACE = 15;
DWORD GetSysColor(int index);

COLORREF SetTextColor(HDC dc, COLORREF colour);
COLORREF SetBkColor(HDC dc, COLORREF colour);

// ETO_OPAQUE or 0 as options; no spacing array.
BOOL ExtTextOutA(HDC dc, int x, int y, UINT options, const RECT* rect, LPCSTR text, UINT count, const INT* spacing);
BOOL GetTextExtentPoint32A(HDC dc, LPCSTR text, int count, SIZE* size);

// SRCCOPY only.
BOOL BitBlt(HDC to, int x, int y, int width, int height, HDC from, int fromX, int fromY, DWORD operation);
HBITMAP LoadBitmapA(HINSTANCE instance, LPCSTR name);
