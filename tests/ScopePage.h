// What the tests of the Oscilloscope page share: the page at rest, its controls as the user meets them, its pixels.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "TuningPages.h"
#include "scope/OscilloscopePage.h"
#include "scope/ScopeCapture.h"

// Panels and traces as the page's design has them, not as the program's tables do.
constexpr int Bands[][2] = {{43, 137}, {153, 247}, {263, 357}, {373, 467}};
constexpr int Baselines[] = {130, 240, 240, 350, 460};
constexpr COLORREF TraceColours[] = {RGB(128, 120, 0), Green, DarkGreen, Blue, Navy};
struct Size {
    int profile;
    double scaleX, scaleY;
};
constexpr Size Sizes[] = {{1, 0.8, 0.77}, {3, 1.28, 1.32}, {5, 1.6, 1.81}};

using LiveBytes = std::vector<std::uint8_t>;
// The bytes from the first on for traces well apart, and where these then lie.
inline const LiveBytes Apart = {155, 100, 150, 60, 0x88, 0x13};
constexpr int ApartY[] = {100, 190, 220, 320, 410};
inline const LiveBytes AllZero(6);

inline void scroll(WORD code, unsigned thumb = 0) {
    SendMessageA(PageWindow, WM_HSCROLL, MAKEWPARAM(code, thumb), 0);
}

inline void clickBox() {
    clickAt(control(IDC_SCOPE_CURSOR), {8, 8});
}

class Scope : public TuningPages {
protected:
    void SetUp() override {
        CursorMode = 0;
        CursorPos = 2;
        CursorPrevPos = 0;
        ScopeParamsRead = 0;
        ScopeSegment = {};
    }
    // Leaves the page as it is made, before its first column; from here on it ticks when told.
    void openScope(int profile = 2) {
        DialogPause = 1;
        useProfile(profile);
        SendMessageA(MainWindow, WM_COMMAND, IDM_OSCILLOSCOPE, 0);
        settle();
        stopTimer();
        DialogPause = 0;
        sent();
    }
    // The same on a 0-5 V Lambda sensor with the traces apart.
    void openApart(int profile) {
        setCell(simulator::LambdaType, 0x10);
        show(Apart);
        openScope(profile);
    }
    void show(const LiveBytes& bytes) {
        for (size_t at = 0; at < bytes.size(); ++at) {
            setLive(at + 1, bytes[at]);
        }
    }
    void sweepTo(unsigned column) {
        for (int ticks = 0; SweepPos != column && ticks < 400; ++ticks) {
            tick();
        }
        ASSERT_EQ(SweepPos, column);
    }
    static int x(int design) {
        return static_cast<int>(design * ScaleX);
    }
    static int y(int design) {
        return static_cast<int>(design * ScaleY);
    }
    // A trace may lie a pixel beside its points, being two wide.
    static bool traceAt(size_t trace, int pixelX, int designY) {
        return countPixels(PageWindow, {pixelX - 1, y(designY) - 1, pixelX + 1, y(designY) + 1},
                           [=](COLORREF colour) { return colour == TraceColours[trace]; }) > 0;
    }
    // Pixels of a colour, or all, in the bands or the insides of the panels, from one pixel column to before another.
    static int countIn(int left, int right, COLORREF colour, bool wholePanels = false) {
        int found = 0;
        for (const auto& [top, bottom] : Bands) {
            const RECT area{left, wholePanels ? y(top - 3) + 1 : y(top), right,
                            wholePanels ? y(bottom + 3) - 1 : y(bottom)};
            found +=
                countPixels(PageWindow, area, [=](COLORREF one) { return one == colour || colour == CLR_INVALID; });
        }
        return found;
    }
    // One line of this colour stands in the panels, a pixel wide and as high as the bands.
    static void expectOnlyLine(int designX, COLORREF colour) {
        const int height = countIn(0, 1, CLR_INVALID);
        EXPECT_EQ(countIn(x(designX), x(designX) + 1, colour), height) << designX;
        EXPECT_EQ(countIn(x(198) + 1, x(600) - 1, colour, true), height) << designX;
    }
    static bool whiteFrom(int left, int right) {
        return countIn(left, right, White) == countIn(left, right, CLR_INVALID);
    }
    // Whether this text stands there: drawing it once more changes nothing.
    static bool reads(int designX, int designY, const std::string& text, HFONT font = LargeFont,
                      COLORREF ground = White) {
        const HDC dc = GetDC(PageWindow);
        SelectObject(dc, font);
        SetBkColor(dc, ground);
        SIZE extent{};
        GetTextExtentPoint32A(dc, text.data(), static_cast<int>(text.size()), &extent);
        const RECT area{x(designX), y(designY), x(designX) + extent.cx, y(designY) + extent.cy};
        const bool inked = countPixels(PageWindow, area, darkish) > 3;
        const auto before = snapshot(PageWindow, area);
        ExtTextOutA(dc, area.left, area.top, ETO_OPAQUE, nullptr, text.data(), static_cast<UINT>(text.size()), nullptr);
        ReleaseDC(PageWindow, dc);
        return inked && snapshot(PageWindow, area) == before;
    }
};
