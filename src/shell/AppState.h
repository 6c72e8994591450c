// The application state that every page shares. Any file of src/ may include this header; it declares state and its
// limits and nothing else. State of one folder is declared in that folder's own header: the port and the link in
// link/Link.h, the block mirrors in model/Blocks.h, a page's state with the page.
//
// All of it lives from process start to exit. The shell writes it unless a line says otherwise.
#pragma once

#include <array>

#include "platform/Win32.h"

extern HINSTANCE AppInstance;
extern HWND MainWindow;
// The dialog of the showing page; every page switch replaces it.
extern HWND PageWindow;
// The menu now attached to MainWindow; a language change replaces it.
extern HMENU MainMenu;

enum Page : int {
    ReadingsPage = 1,
    ConfigurationPage = 2,
    OptionsPage = 3,
    DiagramPage = 4,
    ResetPage = 5,
    OscilloscopePage = 6,
};
extern int AppPage;

// Size profile, 1 to 5, and what hangs on it. ProfileWidth and ProfileHeight are the outer size of the main window in
// pixels. A design coordinate (that of profile 2) becomes a pixel as trunc(value * ScaleX or ScaleY).
extern int SizeProfile;
extern int ProfileWidth;
extern int ProfileHeight;
extern double ScaleX;
extern double ScaleY;
// Highest profile that the desktop allows, as last given to EnableSizeMenu.
extern int AllowedProfile;

// The four segments of the Readings page in pixels: segment i spans PanelX[i] + PanelLeft to PanelX[i] + PanelRight and
// PanelTop to PanelBottom.
extern int PanelLeft;
extern int PanelTop;
extern int PanelRight;
extern int PanelBottom;
extern std::array<int, 4> PanelX;

// The pair of fonts in use and the side of LearnLamp in pixels, chosen at every paint of the main window.
extern HFONT LargeFont;
extern HFONT SmallFont;
extern int IndicatorSize;

// The desktop's rectangle as last read, and its size at the last comparison.
extern RECT DesktopRect;
extern int LastDesktopWidth;
extern int LastDesktopHeight;

// Working directory at process start, at most 254 characters.
extern std::array<char, 255> StartDirectory;

// Language code: the ini's Language= value and the extension of the language file, at most 63 characters.
extern std::array<char, 64> LangCode;

// All texts by line of the language file, counted from 0, each zero-terminated. Empty until a language file is read;
// not cleared by another one.
constexpr int LangLineCount = 209;
constexpr int LangLineSize = 128;
extern std::array<std::array<char, LangLineSize>, LangLineCount> LangTable;

// Which item of the Port menu holds the check mark: 11 to 19 COM 1 to COM 9, 20 the last item, anything else none.
extern unsigned PortMenuCode;

// The engine speed last shown, in RPM, from which the Readings page's gauge starts; that page and the Oscilloscope page
// write it.
extern unsigned EngineRPM;

// Pause flags, 0 or 1: while one is set, the ticks that look at it leave the link alone. DialogPause is set while the
// About or the Controller information dialog is open, ComboOpen while a value list is dropped down.
extern int DialogPause;
extern int ComboOpen;
