// Windows, messages, timers, dialogs, menus and resources. Include platform/Win32.h, not this.
#pragma once

#include "platform/linux/WinTypes.h"

constexpr UINT WM_NULL = 0x0000;
constexpr UINT WM_CREATE = 0x0001;
constexpr UINT WM_DESTROY = 0x0002;
constexpr UINT WM_MOVE = 0x0003;
constexpr UINT WM_SIZE = 0x0005;
constexpr UINT WM_SETFOCUS = 0x0007;
constexpr UINT WM_KILLFOCUS = 0x0008;
constexpr UINT WM_ENABLE = 0x000A;
constexpr UINT WM_PAINT = 0x000F;
constexpr UINT WM_CLOSE = 0x0010;
constexpr UINT WM_QUIT = 0x0012;
constexpr UINT WM_ERASEBKGND = 0x0014;
constexpr UINT WM_SHOWWINDOW = 0x0018;
constexpr UINT WM_CANCELMODE = 0x001F;
constexpr UINT WM_SETFONT = 0x0030;
constexpr UINT WM_DISPLAYCHANGE = 0x007E;
constexpr UINT WM_NCLBUTTONDOWN = 0x00A1;
constexpr UINT WM_KEYDOWN = 0x0100;
constexpr UINT WM_KEYUP = 0x0101;
constexpr UINT WM_CHAR = 0x0102;
constexpr UINT WM_SYSKEYDOWN = 0x0104;
constexpr UINT WM_SYSKEYUP = 0x0105;
constexpr UINT WM_SYSCHAR = 0x0106;
constexpr UINT WM_INITDIALOG = 0x0110;
constexpr UINT WM_COMMAND = 0x0111;
constexpr UINT WM_TIMER = 0x0113;
constexpr UINT WM_HSCROLL = 0x0114;
constexpr UINT WM_VSCROLL = 0x0115;
constexpr UINT WM_MOUSEMOVE = 0x0200;
constexpr UINT WM_LBUTTONDOWN = 0x0201;
constexpr UINT WM_LBUTTONUP = 0x0202;
constexpr UINT WM_LBUTTONDBLCLK = 0x0203;
constexpr UINT WM_RBUTTONDOWN = 0x0204;
constexpr UINT WM_RBUTTONUP = 0x0205;
constexpr UINT WM_RBUTTONDBLCLK = 0x0206;
constexpr UINT WM_MOUSEWHEEL = 0x020A;
// What is held, as wParam of the mouse's messages.
constexpr WORD MK_LBUTTON = 0x01;
constexpr WORD MK_RBUTTON = 0x02;
constexpr WORD MK_SHIFT = 0x04;
constexpr WORD MK_CONTROL = 0x08;
constexpr UINT WM_ENTERMENULOOP = 0x0211;
constexpr UINT WM_EXITMENULOOP = 0x0212;
constexpr UINT WM_CAPTURECHANGED = 0x0215;

constexpr WORD BN_CLICKED = 0;

constexpr UINT BM_GETCHECK = 0x00F0;
constexpr UINT BM_SETCHECK = 0x00F1;
constexpr WPARAM BST_UNCHECKED = 0;
constexpr WPARAM BST_CHECKED = 1;

// Edits: one line, left or centred, digits only or any letters.
constexpr WORD EN_SETFOCUS = 0x0100;
constexpr WORD EN_KILLFOCUS = 0x0200;
constexpr WORD EN_CHANGE = 0x0300;
constexpr WORD EN_UPDATE = 0x0400;
constexpr WORD EN_MAXTEXT = 0x0501;
// The program selects all: 0 to -1.
constexpr UINT EM_SETSEL = 0x00B1;
constexpr UINT EM_SETLIMITTEXT = 0x00C5;
constexpr UINT EM_SETREADONLY = 0x00CF;

// Progress bars.
constexpr UINT PBM_SETRANGE = 0x0401;
constexpr UINT PBM_SETPOS = 0x0402;

// Scroll bars that are controls; WM_HSCROLL or WM_VSCROLL carries a code, for SB_THUMBTRACK and SB_THUMBPOSITION with
// the position in the high word, and the bar as lParam. The bar's own position is the program's to set.
constexpr int SB_CTL = 2;
constexpr UINT SBM_SETPOS = 0x00E0;
constexpr UINT SBM_GETPOS = 0x00E1;
constexpr WORD SB_LINELEFT = 0;
constexpr WORD SB_LINERIGHT = 1;
constexpr WORD SB_PAGELEFT = 2;
constexpr WORD SB_PAGERIGHT = 3;
constexpr WORD SB_LINEUP = 0;
constexpr WORD SB_LINEDOWN = 1;
constexpr WORD SB_PAGEUP = 2;
constexpr WORD SB_PAGEDOWN = 3;
constexpr WORD SB_THUMBPOSITION = 4;
constexpr WORD SB_THUMBTRACK = 5;
constexpr WORD SB_LEFT = 6;
constexpr WORD SB_RIGHT = 7;
constexpr WORD SB_ENDSCROLL = 8;

constexpr UINT CB_GETCOUNT = 0x0146;
constexpr UINT CB_GETCURSEL = 0x0147;
constexpr UINT CB_GETLBTEXT = 0x0148;
constexpr UINT CB_GETLBTEXTLEN = 0x0149;
constexpr UINT CB_ADDSTRING = 0x0143;
constexpr UINT CB_RESETCONTENT = 0x014B;
constexpr UINT CB_SETCURSEL = 0x014E;
constexpr UINT CB_SHOWDROPDOWN = 0x014F;
constexpr UINT CB_GETDROPPEDSTATE = 0x0157;
constexpr LRESULT CB_ERR = -1;

constexpr WORD CBN_SELCHANGE = 1;
constexpr WORD CBN_SETFOCUS = 3;
constexpr WORD CBN_KILLFOCUS = 4;
constexpr WORD CBN_DROPDOWN = 7;
constexpr WORD CBN_CLOSEUP = 8;
constexpr WORD CBN_SELENDOK = 9;
constexpr WORD CBN_SELENDCANCEL = 10;

constexpr DWORD SS_LEFT = 0x00;
constexpr DWORD SS_CENTER = 0x01;
constexpr DWORD SS_RIGHT = 0x02;
constexpr DWORD SS_ICON = 0x03;
constexpr DWORD SS_BITMAP = 0x0E;
constexpr DWORD SS_ETCHEDHORZ = 0x10;
constexpr DWORD SS_ETCHEDFRAME = 0x12;
constexpr DWORD SS_CENTERIMAGE = 0x0200;

constexpr int IDOK = 1;
constexpr int IDCANCEL = 2;
constexpr int IDYES = 6;
constexpr int IDNO = 7;

constexpr UINT MB_OK = 0x00;
constexpr UINT MB_YESNO = 0x04;
constexpr UINT MB_ICONHAND = 0x10;
constexpr UINT MB_ICONEXCLAMATION = 0x30;
constexpr UINT MB_ICONINFORMATION = 0x40;

constexpr UINT CS_VREDRAW = 1;
constexpr UINT CS_HREDRAW = 2;

constexpr DWORD WS_OVERLAPPED = 0x00000000;
constexpr DWORD WS_CHILD = 0x40000000;
constexpr DWORD WS_VISIBLE = 0x10000000;
constexpr DWORD WS_DISABLED = 0x08000000;
constexpr DWORD WS_CAPTION = 0x00C00000;
constexpr DWORD WS_SYSMENU = 0x00080000;
constexpr DWORD WS_MINIMIZEBOX = 0x00020000;

constexpr int SW_HIDE = 0;
constexpr int SW_SHOWNORMAL = 1;
constexpr int SW_SHOW = 5;
constexpr int SW_SHOWDEFAULT = 10;

constexpr UINT SWP_NOSIZE = 1;
constexpr UINT SWP_NOMOVE = 2;
constexpr UINT SWP_NOZORDER = 4;

constexpr UINT MF_BYCOMMAND = 0;
constexpr UINT MF_ENABLED = 0;
constexpr UINT MF_UNCHECKED = 0;
constexpr UINT MF_UNHILITE = 0;
constexpr UINT MF_STRING = 0;
constexpr UINT MF_GRAYED = 1;
constexpr UINT MF_CHECKED = 8;
constexpr UINT MF_POPUP = 0x10;
constexpr UINT MF_HILITE = 0x80;
constexpr UINT MF_BYPOSITION = 0x400;
constexpr UINT MF_SEPARATOR = 0x800;

constexpr BYTE FVIRTKEY = 0x01;
constexpr BYTE FSHIFT = 0x04;
constexpr BYTE FCONTROL = 0x08;
constexpr BYTE FALT = 0x10;
constexpr WPARAM VK_BACK = 0x08;
constexpr WPARAM VK_TAB = 0x09;
constexpr WPARAM VK_RETURN = 0x0D;
constexpr WPARAM VK_SHIFT = 0x10;
constexpr WPARAM VK_CONTROL = 0x11;
constexpr WPARAM VK_MENU = 0x12;
constexpr WPARAM VK_ESCAPE = 0x1B;
constexpr WPARAM VK_SPACE = 0x20;
constexpr WPARAM VK_PRIOR = 0x21;
constexpr WPARAM VK_NEXT = 0x22;
constexpr WPARAM VK_END = 0x23;
constexpr WPARAM VK_HOME = 0x24;
constexpr WPARAM VK_LEFT = 0x25;
constexpr WPARAM VK_UP = 0x26;
constexpr WPARAM VK_RIGHT = 0x27;
constexpr WPARAM VK_DOWN = 0x28;
constexpr WPARAM VK_INSERT = 0x2D;
constexpr WPARAM VK_DELETE = 0x2E;
constexpr WPARAM VK_F1 = 0x70;
constexpr WPARAM VK_F4 = 0x73;
constexpr WPARAM VK_F10 = 0x79;

using WNDPROC = LRESULT(CALLBACK*)(HWND, UINT, WPARAM, LPARAM);
using DLGPROC = INT_PTR(CALLBACK*)(HWND, UINT, WPARAM, LPARAM);
using TIMERPROC = void(CALLBACK*)(HWND, UINT, UINT_PTR, DWORD);

struct WNDCLASSA {
    UINT style;
    WNDPROC lpfnWndProc;
    int cbClsExtra;
    int cbWndExtra;
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground;
    LPCSTR lpszMenuName;
    LPCSTR lpszClassName;
};

struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;
    POINT pt;
};

struct PAINTSTRUCT {
    HDC hdc;
    BOOL fErase;
    RECT rcPaint;
    BOOL fRestore;
    BOOL fIncUpdate;
    BYTE rgbReserved[32];
};

// The program's entry, called by the layer's own main once the desktop connection stands.
int WINAPI WinMain(HINSTANCE instance, HINSTANCE previous, LPSTR commandLine, int show);

ATOM RegisterClassA(const WNDCLASSA* windowClass);
// Top-level windows without a sizing border, of a registered class. Place and size are the outer ones; the client area
// is what a fixed-size window of the real desktop leaves of it, whatever frame the desktop here draws.
HWND CreateWindowExA(DWORD exStyle, LPCSTR className, LPCSTR title, DWORD style, int x, int y, int width, int height,
                     HWND parent, HMENU menu, HINSTANCE instance, LPVOID parameter);
LRESULT DefWindowProcA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
BOOL DestroyWindow(HWND window);
BOOL IsWindow(HWND window);
BOOL IsWindowVisible(HWND window);
BOOL IsWindowEnabled(HWND window);
BOOL ShowWindow(HWND window, int command);
BOOL UpdateWindow(HWND window);
// A window that is disabled loses capture and focus.
BOOL EnableWindow(HWND window, BOOL enable);
HWND GetFocus();
// Null, and nothing changes, for a window that is disabled or lies in one that is.
HWND SetFocus(HWND window);
// SWP_NOSIZE, SWP_NOMOVE and SWP_NOZORDER; the window goes to the top of its siblings unless the last is given.
BOOL SetWindowPos(HWND window, HWND after, int x, int y, int width, int height, UINT flags);
BOOL GetWindowRect(HWND window, RECT* rect);
BOOL GetClientRect(HWND window, RECT* rect);
// Its rectangle is that of the primary screen, from 0,0.
HWND GetDesktopWindow();
HWND GetParent(HWND window);
BOOL SetWindowTextA(HWND window, LPCSTR text);
int GetWindowTextA(HWND window, LPSTR buffer, int size);
HWND GetDlgItem(HWND dialog, int id);
BOOL SetDlgItemTextA(HWND dialog, int id, LPCSTR text);
BOOL SetDlgItemInt(HWND dialog, int id, UINT value, BOOL isSigned);
BOOL SetScrollRange(HWND bar, int kind, int lowest, int highest, BOOL redraw);

LRESULT SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
BOOL PostMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
LRESULT SendDlgItemMessageA(HWND dialog, int id, UINT message, WPARAM wParam, LPARAM lParam);
void PostQuitMessage(int exitCode);
// No filters: window null and both limits 0.
BOOL GetMessageA(MSG* message, HWND window, UINT first, UINT last);
BOOL TranslateMessage(const MSG* message);
LRESULT DispatchMessageA(const MSG* message);
HACCEL LoadAcceleratorsA(HINSTANCE instance, LPCSTR name);
int TranslateAcceleratorA(HWND window, HACCEL table, MSG* message);

HDC BeginPaint(HWND window, PAINTSTRUCT* paint);
BOOL EndPaint(HWND window, const PAINTSTRUCT* paint);
BOOL InvalidateRect(HWND window, const RECT* rect, BOOL erase);

// Periods below 10 ms count as 10. A procedure is called in place of the window's.
UINT_PTR SetTimer(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC procedure);
BOOL KillTimer(HWND window, UINT_PTR id);

// Child dialogs, modeless.
HWND CreateDialogParamA(HINSTANCE instance, LPCSTR name, HWND parent, DLGPROC procedure, LPARAM parameter);
// Dialogs that are windows of their own, run until EndDialog. Enter, Escape and Tab work as in any dialog; -1 if the
// dialog cannot be made, 0 if the program ends behind it.
INT_PTR DialogBoxParamA(HINSTANCE instance, LPCSTR name, HWND owner, DLGPROC procedure, LPARAM parameter);
BOOL EndDialog(HWND dialog, INT_PTR result);
// MB_OK or MB_YESNO with one of the three icons or none; the buttons speak the desktop's language. 0 if the program
// ends behind it.
int MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type);

int LoadStringA(HINSTANCE instance, UINT id, LPSTR buffer, int size);
HICON LoadIconA(HINSTANCE instance, LPCSTR name);
HMENU LoadMenuA(HINSTANCE instance, LPCSTR name);
HMENU GetMenu(HWND window);
BOOL SetMenu(HWND window, HMENU menu);
BOOL DestroyMenu(HMENU menu);
BOOL DrawMenuBar(HWND window);
DWORD CheckMenuItem(HMENU menu, UINT item, UINT check);
BOOL EnableMenuItem(HMENU menu, UINT item, UINT enable);
BOOL ModifyMenuA(HMENU menu, UINT item, UINT flags, UINT_PTR newId, LPCSTR text);
BOOL HiliteMenuItem(HWND window, HMENU menu, UINT item, UINT hilite);
BOOL SetMenuItemBitmaps(HMENU menu, UINT item, UINT flags, HBITMAP unchecked, HBITMAP checked);
UINT GetMenuState(HMENU menu, UINT item, UINT flags);
int GetMenuStringA(HMENU menu, UINT item, LPSTR buffer, int size, UINT flags);

constexpr WORD MAKELANGID(WORD primary, WORD sub) {
    return static_cast<WORD>(sub << 10 | primary);
}
constexpr LCID MAKELCID(LANGID language, WORD sort) {
    return static_cast<LCID>(sort) << 16 | language;
}
constexpr WORD SORT_DEFAULT = 0;
constexpr WORD SUBLANG_DEFAULT = 1;
constexpr WORD LANG_CZECH = 0x05;
constexpr WORD LANG_ENGLISH = 0x09;
constexpr WORD LANG_POLISH = 0x15;
constexpr WORD LANG_RUSSIAN = 0x19;
constexpr WORD LANG_LITHUANIAN = 0x27;

// The locale's code page, 1250 or 1251, is that of all texts given to and taken from windows and menus from now on. The
// real desktop takes its own system locale's for those.
BOOL SetThreadLocale(LCID locale);
