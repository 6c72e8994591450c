// Windows that only note what reaches them, for tests of the layer itself.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "WindowFixture.h"

constexpr const char* ClassName = "LayerTest";

struct Seen {
    HWND window;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
};

// All messages that reached a window of these since the list was last cleared.
extern std::vector<Seen> seen;
int count(UINT message);
// Looks at each message after it is noted; true if it has dealt with it.
extern std::function<bool(HWND, UINT)> handler;
// The area of the last WM_PAINT that was left to the window itself.
extern RECT lastPaint;
// Whether dialogs paint by themselves or leave it to the layer.
extern bool dialogPaints;

LRESULT CALLBACK recordWindow(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
INT_PTR CALLBACK recordDialog(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

class Layer : public testing::Test {
protected:
    HeldClock clock;

    void SetUp() override;
    void TearDown() override;

    // A shown and painted window with a client area of at least 390 by 250 pixels.
    HWND openFrame();
    // The template of the Readings page, which has one button.
    static HWND openDialog(HWND frame);
    // Whether the window is to be painted, which it then is.
    static bool paintsNow(HWND window);
    // Runs messages until a timer comes through, before which everything else has.
    static void runDry(HWND window);

private:
    std::vector<HWND> frames;
};
