#include "shell/AppState.h"

HINSTANCE AppInstance = nullptr;
HWND MainWindow = nullptr;
HWND PageWindow = nullptr;
HMENU MainMenu = nullptr;

int AppPage = ReadingsPage;

int SizeProfile = 1;
int ProfileWidth = 0;
int ProfileHeight = 0;
double ScaleX = 0.8;
double ScaleY = 0.77;
int AllowedProfile = 0;

int PanelLeft = 0;
int PanelTop = 0;
int PanelRight = 0;
int PanelBottom = 0;
std::array<int, 4> PanelX{};

HFONT LargeFont = nullptr;
HFONT SmallFont = nullptr;
int IndicatorSize = 30;

RECT DesktopRect{};
int LastDesktopWidth = 0;
int LastDesktopHeight = 0;

std::array<char, 255> StartDirectory{};
std::array<char, 64> LangCode{};
std::array<std::array<char, LangLineSize>, LangLineCount> LangTable{};

unsigned PortMenuCode = 0;

unsigned EngineRPM = 0;

int DialogPause = 0;
int ComboOpen = 0;
