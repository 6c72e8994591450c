// Windows that only note what reaches them, for tests of the layer itself.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "WindowFixture.h"

struct Seen {
    UINT message;
    WPARAM wParam;
};

// All messages that reached a window of these since the list was last cleared.
extern std::vector<Seen> seen;
int count(UINT message);
// Looks at each message after it is noted; true if it has dealt with it.
extern std::function<bool(HWND, UINT)> handler;

INT_PTR CALLBACK recordDialog(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

class Layer : public testing::Test {
protected:
    static constexpr UINT Mark = 0x0400;
    HeldClock clock;

    void SetUp() override;
    void TearDown() override;

    // A shown and painted window with a client area of at least 390 by 250 pixels.
    static HWND openFrame();
    // The template of the Readings page, which has one button.
    static HWND openDialog(HWND frame);
    // Has the window painted now; the area that was to be painted, "" if there was none.
    static std::string painted(HWND window);
};
