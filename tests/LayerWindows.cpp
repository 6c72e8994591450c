#include "LayerWindows.h"

#include <QWidget>
#include <algorithm>
#include <map>

#include "platform/linux/Layer.h"
#include "resources/Ids.h"

std::vector<Seen> seen;
std::function<bool(HWND, UINT)> handler;

namespace {

std::map<HWND, std::string> areas;

LRESULT CALLBACK recordWindow(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return recordDialog(window, message, wParam, lParam) ? 0 : DefWindowProcA(window, message, wParam, lParam);
}

}  // namespace

int count(UINT message) {
    return static_cast<int>(std::ranges::count(seen, message, &Seen::message));
}

// Whether the message has been dealt with.
INT_PTR CALLBACK recordDialog(HWND window, UINT message, WPARAM wParam, LPARAM) {
    seen.push_back({message, wParam});
    if (handler && handler(window, message)) {
        return TRUE;
    }
    if (message == WM_PAINT) {
        PAINTSTRUCT paint;
        BeginPaint(window, &paint);
        areas[window] = text(paint.rcPaint);
        EndPaint(window, &paint);
    }
    return message == WM_PAINT || message == WM_INITDIALOG;
}

void Layer::SetUp() {
    WNDCLASSA windowClass{};
    windowClass.lpfnWndProc = recordWindow;
    windowClass.hbrBackground = static_cast<HBRUSH>(GetStockObject(GRAY_BRUSH));
    windowClass.lpszClassName = "Layer";
    RegisterClassA(&windowClass);
}

void Layer::TearDown() {
    handler = nullptr;
    while (!layer::topLevels().empty()) {
        DestroyWindow(layer::topLevels().back()->handle);
    }
}

HWND Layer::openFrame() {
    const HWND frame =
        CreateWindowExA(0, "Layer", "frame", WS_SYSMENU, 0, 0, 400, 300, nullptr, nullptr, nullptr, nullptr);
    ShowWindow(frame, SW_SHOW);
    UpdateWindow(frame);
    // Only an active window has the keyboard.
    EXPECT_TRUE(pumpUntil([&] { return widgetOf(frame)->isActiveWindow(); }));
    seen.clear();
    return frame;
}

HWND Layer::openDialog(HWND frame) {
    const HWND dialog = CreateDialogParamA(nullptr, MAKEINTRESOURCEA(IDD_READINGS), frame, recordDialog, 0);
    UpdateWindow(frame);
    seen.clear();
    return dialog;
}

std::string Layer::painted(HWND window) {
    areas.erase(window);
    UpdateWindow(window);
    return areas[window];
}
