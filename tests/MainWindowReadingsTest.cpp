// The main screen on a living link: what a controller's bytes become on the screen, what goes over the wire, and what
// faults do.
#include <QWidget>
#include <algorithm>
#include <string>

#include "User.h"
#include "link/Link.h"
#include "model/Blocks.h"
#include "readings/GaugeTables.h"
#include "readings/ReadingsModel.h"
#include "readings/ReadingsPage.h"
#include "resources/Ids.h"
#include "shell/AppState.h"

namespace {

// Sizes as the screen's design has them, not as the program's tables do.
struct Size {
    int profile;
    double scaleX, scaleY;
    int segmentTop, segmentWidth;
    int segments[4];
    int lamp;
};
constexpr Size Sizes[] = {{1, 0.8, 0.77, 123, 57, {113, 172, 231, 290}, 22},
                          {2, 1.0, 1.0, 160, 72, {140, 214, 288, 362}, 30},
                          {5, 1.6, 1.81, 288, 115, {225, 343, 461, 579}, 55}};

// Lambda in the middle and rich, third segment, actuator at 90 of base 110, 3000 RPM, on gas.
const std::vector<int> Typical = {100, 128, 90, 110, 0x88, 0x13, 0x4C, 0xC1, 158};

constexpr COLORREF SegmentColours[] = {Cyan, DarkGreen, Yellow, Red};

// A design point, a step of some pixels to the side of it, and what stands there.
struct Spot {
    const char* what;
    int x, y;
    int aside;
    COLORREF colour;
};

// Both sides of the edges of a filled strip on silver; left of the scale's beginning stands its border.
void addStrip(std::vector<Spot>& spots, const char* what, int left, int right, int y, COLORREF colour) {
    constexpr int ScaleLeft = 161;
    spots.insert(spots.end(), {{what, left, y, 0, colour}, {what, right, y, -1, colour}, {what, right, y, 0, Silver}});
    if (left != ScaleLeft) {
        spots.push_back({what, left, y, -1, Silver});
    }
}

void clickLearn() {
    clickOn(GetDlgItem(PageWindow, IDC_LEARN));
}

}  // namespace

class MainWindowReadings : public WindowFixture {
protected:
    void setLiveBytes(const std::vector<int>& values) {
        std::size_t byte = 1;
        for (const int value : values) {
            setLive(byte++, static_cast<std::uint8_t>(value));
        }
    }
    void expectSpots(const Size& size, const std::vector<Spot>& spots) const {
        for (const Spot& spot : spots) {
            EXPECT_EQ(page(static_cast<int>(spot.x * size.scaleX) + spot.aside, static_cast<int>(spot.y * size.scaleY)),
                      spot.colour)
                << spot.what << " at " << spot.x << "," << spot.y << " aside " << spot.aside;
        }
    }
    void expectSegment(const Size& size, int lit) const {
        for (int segment = 1; segment <= 4; ++segment) {
            const int left = size.segments[segment - 1];
            const COLORREF own = SegmentColours[segment - 1];
            EXPECT_EQ(page(left + 5, size.segmentTop + 5), segment == lit ? own : Silver) << segment;
            EXPECT_EQ(page(left, size.segmentTop + 5), own) << segment;
            EXPECT_EQ(page(left + size.segmentWidth - 1, size.segmentTop + 5), own) << segment;
        }
    }
    // A point of the needle, whose table space follows the width on both axes.
    COLORREF needlePixel(const Size& size, unsigned index, double part) const {
        const double x = NeedleBaseX[index] + part * (NeedleTipX[index] - NeedleBaseX[index]);
        const double y = NeedleBaseY[index] + part * (NeedleTipY[index] - NeedleBaseY[index]);
        return page(static_cast<int>((495 + x) * size.scaleX), static_cast<int>((40 + y) * size.scaleX));
    }
    // Whether the middle of a tick, which is two pixels wide, has this colour.
    bool tickIs(const Size& size, std::size_t tick, COLORREF colour) const {
        const int x = static_cast<int>((495 + (TickOuterX[4 * tick] + ShortTickX[tick]) / 2.0) * size.scaleX);
        const int y = static_cast<int>((40 + (TickOuterY[4 * tick] + ShortTickY[tick]) / 2.0) * size.scaleX);
        return countPixels(PageWindow, {x - 1, y - 1, x + 2, y + 2}, [&](COLORREF pixel) { return pixel == colour; }) >
               0;
    }
    COLORREF lampPixel(const Size& size) const {
        return page(static_cast<int>(635 * size.scaleX) + size.lamp / 2,
                    static_cast<int>(470 * size.scaleY) + size.lamp / 2);
    }
    RECT wholePage() const {
        return {5, 10, ProfileWidth - 10, ProfileHeight - 60};
    }
    bool untilFrames(std::size_t frames) {
        return pumpUntil([&] { return server->log().size() >= frames; });
    }
    // The first frames' commands, a digit each.
    std::string commands(std::size_t frames) {
        EXPECT_TRUE(untilFrames(frames));
        std::string digits;
        for (const simulator::LogEntry& entry : server->log()) {
            digits += std::to_string(entry.request.bytes[1]);
        }
        return digits.substr(0, frames);
    }
};

TEST_F(MainWindowReadings, ShowTheControllersBytesInPlaceAndColour) {
    startOn(4);
    setCell(simulator::LambdaType, 0x10);
    setCell(simulator::Options, 0x6A);
    for (const Size& size : Sizes) {
        SCOPED_TRACE("size " + std::to_string(size.profile));
        useProfile(size.profile);
        setLiveBytes(Typical);
        ASSERT_TRUE(untilRead());
        std::vector<Spot> spots{{"ground", 460, 300, 0, Grey},       {"panel", 30, 100, 0, Silver},
                                {"gauge panel", 475, 200, 0, Black}, {"status box", 35, 505, 0, White},
                                {"fuel box", 495, 470, 0, Cyan},     {"its border", 490, 470, 0, Black}};
        addStrip(spots, "Lambda block", 268, 308, 62, Red);
        addStrip(spots, "actuator bar", 161, 251, 280, Navy);
        addStrip(spots, "idle range", 241, 301, 302, Cyan);
        addStrip(spots, "drive range", 211, 331, 309, Red);
        addStrip(spots, "jump mark", 325, 327, 295, Black);
        expectSpots(size, spots);
        expectSegment(size, 3);
        EXPECT_EQ(lampPixel(size), Olive);
        EXPECT_EQ(needlePixel(size, 60, 1), Red) << "needle tip at 3000";
        EXPECT_EQ(needlePixel(size, 60, 0.6), Red);
        EXPECT_EQ(needlePixel(size, 60, -0.21), Red) << "hub";
        EXPECT_TRUE(tickIs(size, 32, PaleGrey));
        EXPECT_TRUE(tickIs(size, 33, Red)) << "above the limit of 6500";
        EXPECT_GT(blackInRow(1), 10);
        EXPECT_EQ(redInRow(1) + redInRow(3) + redInRow(4) + blackInRow(3) + blackInRow(4), 0);
        const RECT label{static_cast<int>(590 * size.scaleX), static_cast<int>(290 * size.scaleY),
                         static_cast<int>(650 * size.scaleX), static_cast<int>(303 * size.scaleY)};
        const auto greenish = [](COLORREF colour) {
            const int green = colour >> 8 & 0xFF;
            return green > static_cast<int>(colour & 0xFF) + 50 && green > static_cast<int>(colour >> 16) + 50;
        };
        // One evaluation later than the rest.
        EXPECT_TRUE(pumpUntil([&] { return countPixels(PageWindow, label, greenish) > 0; })) << "LPG ON in green";
        const std::vector<COLORREF> before = snapshot(PageWindow, wholePage());
        const HDC dc = GetDC(PageWindow);
        Rectangle(dc, 0, 0, ProfileWidth, ProfileHeight);
        ReleaseDC(PageWindow, dc);
        ASSERT_EQ(page(300, 300), White);
        repaint();
        EXPECT_TRUE(snapshot(PageWindow, wholePage()) == before) << "a repaint brings all back";

        // Everything elsewhere: lean at the left end, first segment, base 60, 6000 RPM, on petrol and too fast.
        setLiveBytes({20, 0, 10, 60, 0xC4, 0x09, 0x19, 0x04, 70});
        ASSERT_TRUE(untilRead());
        spots = {{"fuel box", 495, 470, 0, Green}, {"old number of the base", 265, 335, 0, Silver}};
        addStrip(spots, "Lambda block", 140, 180, 62, DarkGreen);
        addStrip(spots, "actuator bar", 161, 171, 280, Navy);
        addStrip(spots, "idle range", 191, 251, 302, Cyan);
        addStrip(spots, "drive range", 161, 281, 309, Red);
        expectSpots(size, spots);
        expectSegment(size, 1);
        EXPECT_EQ(needlePixel(size, 120, 0.9), Red) << "needle at 6000";
        EXPECT_EQ(needlePixel(size, 60, 0.6), Black) << "needle gone from 3000";
        EXPECT_GT(redInRow(3), 10);
        EXPECT_GT(redInRow(4), 10);
    }
    EXPECT_EQ(written(), "") << "watching writes nothing";
}

TEST_F(MainWindowReadings, PollIdentityAndLiveAndEveryFourthTimeAllUnlessAListIsOpen) {
    plugController(4);
    writeIni(1, "ang");
    start();
    EXPECT_EQ(commands(20), "12121212341212121234");
    // Two ticks still count before the link is given up; then the count stands still until it is back.
    ASSERT_TRUE(pumpUntil([] { return ParamTickCount == 1; }));
    server->unplug();
    ASSERT_TRUE(pumpUntil([] { return LinkLost != 0; }));
    server->clearLog();
    ASSERT_TRUE(server->replug());
    EXPECT_EQ(commands(6), "123412");
    ComboOpen = 1;
    server->clearLog();
    SendMessageA(PageWindow, WM_TIMER, 1, 0);
    EXPECT_TRUE(server->log().empty());
    ComboOpen = 0;
    EXPECT_TRUE(untilFrames(1)) << "the page's timer goes on";
}

TEST_F(MainWindowReadings, AreLostByThreeBadIdentitiesAndFoundAgain) {
    const Size& size = Sizes[1];
    // Milliseconds from the last good round to the third bad identity. In a silence the live block times out twice,
    // too; random bytes are no rule.
    for (const auto& [fault, milliseconds] :
         {std::pair{"", 150}, {"garbage", 150}, {"silence", 1910}, {"endless", 0}}) {
        SCOPED_TRACE(fault);
        startOn(4);
        setLiveBytes(Typical);
        useProfile(2);
        ASSERT_TRUE(untilRead());
        const Moment good = clock->now();
        if (*fault) {
            server->addFault(*simulator::ParseFault(fault));
        } else {
            server->unplug();
        }
        ASSERT_TRUE(pumpUntil([] { return LinkLost != 0; }));
        const Moment lost = clock->now();
        EXPECT_TRUE(milliseconds == 0 || lost - good == milliseconds * Millisecond) << lost - good;
        EXPECT_EQ(ActiveTimerPeriod, LostLinkPeriod);
        EXPECT_EQ(std::ranges::count(LiveBlock, 0) + std::ranges::count(ParamBlockA, 0), 26) << "mirrors";
        EXPECT_GT(redInRow(1), 10);
        EXPECT_GT(blackInRow(3), 10);
        EXPECT_EQ(redInRow(3) + redInRow(4) + redInRow(5) + blackInRow(4) + blackInRow(5), 0);
        std::vector<Spot> spots{{"fuel box", 495, 470, 0, Green}};
        addStrip(spots, "Lambda block", 140, 180, 62, Yellow);
        expectSpots(size, spots);
        expectSegment(size, 0);
        EXPECT_EQ(needlePixel(size, 0, 0.6), Red) << "needle at 0";
        OnGas = 1;  // the link alone must do
        clickLearn();
        EXPECT_EQ(LearnRequested, 0);

        server->clearFaults();
        server->unplug();
        ASSERT_TRUE(server->replug());
        ASSERT_TRUE(pumpUntil([] { return LinkLost == 0; }));
        EXPECT_EQ((clock->now() - lost) / Millisecond, LostLinkPeriod);
        EXPECT_EQ(ActiveTimerPeriod, GoodLinkPeriod);
        EXPECT_EQ(needlePixel(size, 60, 0.6), Red) << "live values in the same tick";
        ASSERT_TRUE(untilRead());
        EXPECT_EQ(redInRow(1), 0);
        EXPECT_EQ(written(), "");
        EXPECT_EQ(closeProgram(), 0);
    }
}

TEST_F(MainWindowReadings, LearningStartsAndStopsByTheButton) {
    for (const auto& [family, frame] : {std::pair{4, "65 1F 32 B6"}, {2, "65 1E 32 B5"}}) {
        SCOPED_TRACE(family);
        startOn(family);
        useProfile(2);
        server->with([](simulator::Controller& controller) { controller.step(30); });
        ASSERT_TRUE(pumpUntil([] { return OnGas != 0; }));
        clickLearn();
        EXPECT_EQ(LearnRequested, 1);
        EXPECT_EQ(written(), frame);
        ASSERT_TRUE(pumpUntil([] { return LearnRunning != 0; }));
        EXPECT_EQ(lampPixel(Sizes[1]), Yellow) << "steady with the throttle closed";
        EXPECT_GT(redInRow(5), 10) << "the throttle is to be opened";
        setLive(7, 0x2A);
        EXPECT_TRUE(pumpUntil([&] { return lampPixel(Sizes[1]) == Olive; })) << "blinks";
        EXPECT_GT(blackInRow(5), 10);

        clickLearn();
        EXPECT_EQ(LearnRequested, 0);
        EXPECT_GT(redInRow(5), 10) << "the stop is told";
        ASSERT_TRUE(pumpUntil([] { return LearnRunning == 0; }));
        EXPECT_EQ(written(), std::string(frame) + ", " + frame);
        const auto notice = snapshot(PageWindow, statusRow(5));
        server->clearLog();
        ASSERT_TRUE(untilFrames(10));
        EXPECT_TRUE(snapshot(PageWindow, statusRow(5)) == notice) << "no result follows a stop";
        EXPECT_EQ(closeProgram(), 0);
    }
}

TEST_F(MainWindowReadings, LearningIsRefusedOnPetrolAndToAForeignFamilyWhichIsLeftAlone) {
    startOn(4);
    setLive(7, 0x18);
    setLive(8, 0xC0);
    ASSERT_TRUE(untilRead());
    clickLearn();
    EXPECT_EQ(LearnRequested, 0);
    EXPECT_EQ(written(), "");
    closeProgram();

    startOn(3);
    OnGas = 1;  // as an earlier controller may have left it
    EXPECT_GT(redInRow(1), 10);
    EXPECT_EQ(blackInRow(3), 0);
    clickLearn();
    EXPECT_EQ(LearnRequested, 0);
    server->clearLog();
    EXPECT_EQ(commands(10), "1111111111");
}
