#include "LayerWindows.h"

#include <QWidget>
#include <algorithm>
#include <map>

#include "resources/Ids.h"

std::vector<Seen> seen;
std::function<bool(HWND, UINT)> handler;

namespace {

std::map<HWND, std::string> areas;

// Whether the message has been dealt with.
bool record(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    seen.push_back({window, message, wParam, lParam});
    if (handler && handler(window, message)) {
        return true;
    }
    if (message == WM_PAINT) {
        PAINTSTRUCT paint;
        BeginPaint(window, &paint);
        areas[window] = text(paint.rcPaint);
        EndPaint(window, &paint);
    }
    return message == WM_PAINT;
}

LRESULT CALLBACK recordWindow(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return record(window, message, wParam, lParam) ? 0 : DefWindowProcA(window, message, wParam, lParam);
}

}  // namespace

int count(UINT message) {
    return static_cast<int>(std::ranges::count(seen, message, &Seen::message));
}

INT_PTR CALLBACK recordDialog(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return record(window, message, wParam, lParam) || message == WM_INITDIALOG;
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
    for (const HWND frame : frames) {
        DestroyWindow(frame);
    }
}

HWND Layer::openFrame() {
    frames.push_back(
        CreateWindowExA(0, "Layer", "frame", WS_SYSMENU, 0, 0, 400, 300, nullptr, nullptr, nullptr, nullptr));
    ShowWindow(frames.back(), SW_SHOW);
    UpdateWindow(frames.back());
    // Only an active window has the keyboard.
    EXPECT_TRUE(pumpUntil([&] { return widgetOf(frames.back())->isActiveWindow(); }));
    seen.clear();
    return frames.back();
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
    return areas.contains(window) ? areas[window] : "";
}
