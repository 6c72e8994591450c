// The process entry.
#include "platform/Win32.h"
#include "shell/AppState.h"
#include "shell/MainWindow.h"

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR, int show) {
    if (!CreateMainWindow(instance)) {
        return 0;
    }
    ShowWindow(MainWindow, show);
    UpdateWindow(MainWindow);
    return RunMessageLoop();
}
