#include "LayerWindows.h"

#include <QWidget>
#include <algorithm>

#include "resources/Ids.h"

std::vector<Seen> seen;
std::function<bool(HWND, UINT)> handler;
RECT lastPaint{};
bool dialogPaints = true;

namespace {

bool note(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    seen.push_back({window, message, wParam, lParam});
    return handler && handler(window, message);
}

void paint(HWND window) {
    PAINTSTRUCT area;
    BeginPaint(window, &area);
    lastPaint = area.rcPaint;
    EndPaint(window, &area);
}

}  // namespace

int count(UINT message) {
    return static_cast<int>(std::ranges::count(seen, message, &Seen::message));
}

LRESULT CALLBACK recordWindow(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (note(window, message, wParam, lParam)) {
        return 0;
    }
    if (message == WM_PAINT) {
        paint(window);
        return 0;
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

INT_PTR CALLBACK recordDialog(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const bool taken = note(window, message, wParam, lParam);
    if (!taken && message == WM_PAINT && dialogPaints) {
        paint(window);
        return TRUE;
    }
    return taken || message == WM_INITDIALOG;
}

void Layer::SetUp() {
    WNDCLASSA windowClass{};
    windowClass.lpfnWndProc = recordWindow;
    windowClass.hbrBackground = static_cast<HBRUSH>(GetStockObject(GRAY_BRUSH));
    windowClass.lpszClassName = ClassName;
    RegisterClassA(&windowClass);
    seen.clear();
    handler = nullptr;
    dialogPaints = true;
}

void Layer::TearDown() {
    handler = nullptr;
    for (const HWND frame : frames) {
        DestroyWindow(frame);
    }
}

HWND Layer::openFrame() {
    const HWND frame =
        CreateWindowExA(0, ClassName, "frame", WS_SYSMENU, 0, 0, 400, 300, nullptr, nullptr, nullptr, nullptr);
    frames.push_back(frame);
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
    UpdateWindow(dialog);
    seen.clear();
    return dialog;
}

bool Layer::paintsNow(HWND window) {
    const size_t before = seen.size();
    UpdateWindow(window);
    return std::any_of(seen.begin() + static_cast<std::ptrdiff_t>(before), seen.end(),
                       [&](const Seen& message) { return message.window == window && message.message == WM_PAINT; });
}

void Layer::runDry(HWND window) {
    constexpr UINT_PTR LastTimer = 99;
    bool rung = false;
    const auto inner = handler;
    handler = [&](HWND target, UINT message) {
        rung = rung || (message == WM_TIMER && target == window);
        return inner && inner(target, message);
    };
    SetTimer(window, LastTimer, 10, nullptr);
    EXPECT_TRUE(pumpUntil([&] { return rung; }));
    KillTimer(window, LastTimer);
    handler = inner;
}
