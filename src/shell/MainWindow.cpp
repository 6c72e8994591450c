#include "shell/MainWindow.h"

#include <array>

#include "link/Link.h"
#include "readings/GaugeTables.h"
#include "resources/Ids.h"
#include "scope/ScopeCapture.h"
#include "shell/AppState.h"
#include "shell/Commands.h"
#include "shell/Ini.h"
#include "shell/Language.h"
#include "shell/Pages.h"
#include "shell/Ports.h"
#include "shell/SizeProfiles.h"

namespace {

constexpr int ResourceTextSize = 100;
constexpr int FirstWidth = 640;
constexpr int FirstHeight = 450;

using ResourceText = std::array<char, ResourceTextSize>;

ResourceText LoadText(UINT id) {
    ResourceText text{};
    LoadStringA(AppInstance, id, text.data(), ResourceTextSize);
    return text;
}

void BuildStartTables() {
    GetCurrentDirectoryA(static_cast<DWORD>(StartDirectory.size()), StartDirectory.data());
    BuildGaugeTables();
    CreateFonts();
    ResetScopeBuffers();
}

void RememberDesktop() {
    LastDesktopWidth = DesktopRect.right;
    LastDesktopHeight = DesktopRect.bottom;
}

void EnableSizesForDesktop() {
    EnableSizeMenu(ProfileForDesktop(DesktopRect.right, DesktopRect.bottom));
}

void StartMainWindow(HWND window) {
    MainWindow = window;
    MainMenu = GetMenu(window);
    ReadDesktop();
    RememberDesktop();
    SetSizeProfile(ProfileForDesktop(DesktopRect.right, DesktopRect.bottom));
    EnableSizesForDesktop();
    ApplySizeProfile();
    PlaceMainWindow();
    ReadIni();
    UsePortNumber();
    ReadLanguageFile();
    OpenFirstPage();
    LoadLanguageMenu();
    MarkMenu();
}

void Validate(HWND window) {
    PAINTSTRUCT paint;
    BeginPaint(window, &paint);
    EndPaint(window, &paint);
}

void PaintMainWindow() {
    Validate(MainWindow);
    Validate(PageWindow);
    ChooseFonts();
    PlaceLearnButton();
    // What the button has left is painted by the page at once, so that it does not wipe what is drawn next.
    UpdateWindow(PageWindow);
    RedrawPage();
    ReadDesktop();
    if (DesktopRect.right != LastDesktopWidth || DesktopRect.bottom != LastDesktopHeight) {
        RememberDesktop();
        EnableSizesForDesktop();
    }
    // The button paints itself anew, and keeps the keyboard that a disabled one loses.
    const HWND button = GetDlgItem(PageWindow, IDC_LEARN);
    const HWND focus = GetFocus();
    EnableWindow(button, FALSE);
    EnableWindow(button, TRUE);
    if (focus == button) {
        SetFocus(button);
    }
}

void EndMainWindow() {
    ClosePort();
    PostQuitMessage(0);
}

}  // namespace

LRESULT CALLBACK MainWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_CREATE:
            StartMainWindow(window);
            return 0;
        case WM_PAINT:
            PaintMainWindow();
            return 0;
        case WM_COMMAND:
            return RunCommand(LOWORD(wParam)) ? 0 : DefWindowProcA(window, message, wParam, lParam);
        case WM_EXITMENULOOP:
            HighlightPageItem();
            return 0;
        case WM_CLOSE:
            CloseMainWindow();
            return 0;
        case WM_DESTROY:
            EndMainWindow();
            return 0;
        default:
            return DefWindowProcA(window, message, wParam, lParam);
    }
}

bool CreateMainWindow(HINSTANCE instance) {
    AppInstance = instance;
    const ResourceText className = LoadText(IDS_CLASS_NAME);
    BuildStartTables();
    WNDCLASSA windowClass{};
    windowClass.style = CS_HREDRAW | CS_VREDRAW;
    windowClass.lpfnWndProc = MainWindowProc;
    windowClass.hInstance = instance;
    windowClass.hIcon = LoadIconA(instance, MAKEINTRESOURCEA(IDI_TARVEX));
    windowClass.hbrBackground = static_cast<HBRUSH>(GetStockObject(GRAY_BRUSH));
    windowClass.lpszMenuName = MAKEINTRESOURCEA(IDM_MENU_POLISH);
    windowClass.lpszClassName = className.data();
    RegisterClassA(&windowClass);
    const ResourceText title = LoadText(IDS_TITLE);
    return CreateWindowExA(0, className.data(), title.data(), WS_SYSMENU | WS_MINIMIZEBOX, 0, 0, FirstWidth,
                           FirstHeight, nullptr, nullptr, instance, nullptr) != nullptr;
}

void CloseMainWindow() {
    DestroyWindow(PageWindow);
    DestroyWindow(MainWindow);
}

int RunMessageLoop() {
    const HACCEL accelerators = LoadAcceleratorsA(AppInstance, MAKEINTRESOURCEA(IDA_MAIN));
    MSG message{};
    while (GetMessageA(&message, nullptr, 0, 0)) {
        // A control that has the keyboard would keep the command to itself.
        if (!TranslateAcceleratorA(MainWindow, accelerators, &message)) {
            TranslateMessage(&message);
            DispatchMessageA(&message);
        }
    }
    return static_cast<int>(message.wParam);
}
