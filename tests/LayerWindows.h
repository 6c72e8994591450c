// Windows that only note what reaches them, for tests of the layer itself.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QScreen>
#include <QWidget>
#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "WindowFixture.h"
#include "platform/linux/Layer.h"

struct Seen {
    UINT message;
    WPARAM wParam;
};

// All messages that reached a window of these since the list was last cleared.
inline std::vector<Seen> seen;
// Looks at each message after it is noted; true if it has dealt with it.
inline std::function<bool(HWND, UINT)> handler;
// What each window was last told to paint.
inline std::map<HWND, std::string> areas;

inline int count(UINT message) {
    return static_cast<int>(std::ranges::count(seen, message, &Seen::message));
}

// Whether the message has been dealt with.
inline INT_PTR CALLBACK recordDialog(HWND window, UINT message, WPARAM wParam, LPARAM) {
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

inline LRESULT CALLBACK recordWindow(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return recordDialog(window, message, wParam, lParam) ? 0 : DefWindowProcA(window, message, wParam, lParam);
}

class Layer : public testing::Test {
protected:
    static constexpr UINT Mark = 0x0400;
    HeldClock clock;

    void SetUp() override {
        WNDCLASSA windowClass{};
        windowClass.lpfnWndProc = recordWindow;
        windowClass.hbrBackground = static_cast<HBRUSH>(GetStockObject(GRAY_BRUSH));
        windowClass.lpszClassName = "Layer";
        RegisterClassA(&windowClass);
    }
    void TearDown() override {
        handler = nullptr;
        while (!layer::topLevels().empty()) {
            DestroyWindow(layer::topLevels().back()->handle);
        }
    }
    // A shown and painted window with a client area of at least 390 by 250 pixels.
    static HWND openFrame() {
        const HWND frame =
            CreateWindowExA(0, "Layer", "frame", WS_SYSMENU, 0, 0, 400, 300, nullptr, nullptr, nullptr, nullptr);
        ShowWindow(frame, SW_SHOW);
        UpdateWindow(frame);
        // Only an active window has the keyboard.
        EXPECT_TRUE(pumpUntil([&] { return widgetOf(frame)->isActiveWindow(); }));
        seen.clear();
        return frame;
    }
    // The template of the Readings page, which has one button.
    static HWND openDialog(HWND frame) {
        const HWND dialog = CreateDialogParamA(nullptr, MAKEINTRESOURCEA(IDD_READINGS), frame, recordDialog, 0);
        UpdateWindow(frame);
        seen.clear();
        return dialog;
    }
    // What the screen shows of the window.
    static QImage shown(HWND window) {
        settle();
        return QApplication::primaryScreen()->grabWindow(widgetOf(window)->winId()).toImage();
    }
    // Has the window painted now; the area that was to be painted, "" if there was none.
    static std::string painted(HWND window) {
        areas.erase(window);
        UpdateWindow(window);
        return areas[window];
    }
};
