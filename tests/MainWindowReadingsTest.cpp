// The main screen on a living link: what bytes become on the screen, what goes over the wire, and what faults do.
#include <string>
#include <vector>

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
                          {5, 1.6, 1.81, 288, 115, {225, 343, 461, 579}, 55},
                          {2, 1.0, 1.0, 160, 72, {140, 214, 288, 362}, 30}};
constexpr Size DesignSize = Sizes[2];

const std::vector<int> Typical = {100, 128, 90, 110, 0x88, 0x13, 0x4C, 0xC1, 158};

// Colours along a line of the design, each from its x on to the next one's.
struct Line {
    const char* what;
    int y;
    std::vector<std::pair<int, COLORREF>> from;
};

void clickLearn() {
    clickOn(GetDlgItem(PageWindow, IDC_LEARN));
}

}  // namespace

class MainWindowReadings : public WindowFixture {
protected:
    void showBytes(const std::vector<int>& values) {
        for (std::size_t at = 0; at < values.size(); ++at) {
            setLive(at + 1, static_cast<std::uint8_t>(values[at]));
        }
        ASSERT_TRUE(untilRead());
    }
    void expectLines(const Size& size, const std::vector<Line>& lines) const {
        for (const auto& [what, y, from] : lines) {
            for (auto part = from.begin(); part + 1 != from.end(); ++part) {
                const int end = static_cast<int>(part[1].first * size.scaleX);
                for (int x = static_cast<int>(part->first * size.scaleX); x < end; ++x) {
                    ASSERT_EQ(page(x, static_cast<int>(y * size.scaleY)), part->second) << what << " at pixel " << x;
                }
            }
        }
    }
    void expectSegment(const Size& size, int lit) const {
        constexpr COLORREF Colours[] = {Cyan, DarkGreen, Yellow, Red};
        for (int segment = 0; segment < 4; ++segment) {
            const int left = size.segments[segment], y = size.segmentTop + 5;
            EXPECT_EQ(page(left + 5, y), segment + 1 == lit ? Colours[segment] : Silver) << segment;
            EXPECT_EQ(page(left, y), Colours[segment]) << segment;
            EXPECT_EQ(page(left + size.segmentWidth - 1, y), Colours[segment]) << segment;
        }
    }
    // The gauge's table space follows the width on both axes.
    COLORREF needlePixel(const Size& size, unsigned index, double part = 0.9) const {
        const double x = NeedleBaseX[index] + part * (NeedleTipX[index] - NeedleBaseX[index]);
        const double y = NeedleBaseY[index] + part * (NeedleTipY[index] - NeedleBaseY[index]);
        return page(static_cast<int>((495 + x) * size.scaleX), static_cast<int>((40 + y) * size.scaleX));
    }
    // Whether something of this kind stands in a part of the design.
    static bool holds(const Size& size, const RECT& part, bool (*wanted)(COLORREF)) {
        return countPixels(PageWindow,
                           {static_cast<int>(part.left * size.scaleX), static_cast<int>(part.top * size.scaleY),
                            static_cast<int>(part.right * size.scaleX), static_cast<int>(part.bottom * size.scaleY)},
                           wanted) > 0;
    }
    COLORREF lampPixel(const Size& size) const {
        return page(static_cast<int>(635 * size.scaleX) + size.lamp / 2,
                    static_cast<int>(470 * size.scaleY) + size.lamp / 2);
    }
    // The commands of the next frames, a digit each.
    std::string commands(std::size_t frames) {
        server->clearLog();
        EXPECT_TRUE(pumpUntil([&] { return server->log().size() >= frames; }));
        std::string digits;
        for (const simulator::LogEntry& entry : server->log()) {
            digits += std::to_string(entry.request.bytes[1]);
        }
        return digits.substr(0, frames);
    }
};

TEST_F(MainWindowReadings, ShowTheControllersBytesInPlaceAndColour) {
    const std::vector<Line> frame = {{"ground", 300, {{452, Grey}, {468, Grey}}},
                                     {"throttle panel", 140, {{25, Silver}, {255, Silver}}},
                                     {"gauge panel", 30, {{480, Black}, {770, Black}}},
                                     {"border of the fuel box", 480, {{490, Black}, {491, Black}}}};
    const RECT ticksTo2{500, 80, 540, 190}, ticksFrom6{720, 80, 760, 190};
    const RECT cutOff{485, 290, 545, 303}, gasOn{590, 290, 650, 303}, gasOff{685, 290, 745, 303};
    const auto red = [](COLORREF colour) { return colour == Red; };
    const auto greenish = [](COLORREF colour) { return (colour >> 8 & 0xFF) > (colour & 0xFF) + 50; };
    startOn(4);
    setCell(simulator::LambdaType, 0x10);
    setCell(simulator::Options, 0x6A);
    for (const Size& size : Sizes) {
        SCOPED_TRACE("size " + std::to_string(size.profile));
        useProfile(size.profile);
        // Lambda in the middle and rich, third segment, actuator at 90 of base 110, 3000 RPM, on gas.
        showBytes(Typical);
        expectLines(size, frame);
        expectLines(size, {{"Lambda", 62, {{137, Silver}, {268, Red}, {308, Silver}, {438, Silver}}},
                           {"actuator", 280, {{161, Navy}, {251, Silver}, {416, Silver}}},
                           {"jump", 295, {{152, Silver}, {325, Black}, {327, Silver}, {423, Silver}}},
                           {"idle range", 302, {{161, Silver}, {241, Cyan}, {301, Silver}, {416, Silver}}},
                           {"drive range", 309, {{161, Silver}, {211, Red}, {331, Silver}, {416, Silver}}},
                           {"fuel box", 470, {{493, Cyan}, {613, Cyan}}},
                           {"status box", 508, {{32, White}, {438, White}}}});
        expectSegment(size, 3);
        EXPECT_EQ(lampPixel(size), Olive);
        EXPECT_EQ(needlePixel(size, 60), Red) << "needle at 3000";
        EXPECT_EQ(needlePixel(size, 60, -0.21), Red) << "hub";
        EXPECT_TRUE(holds(size, ticksFrom6, red) && !holds(size, ticksTo2, red)) << "only above the limit of 6500";
        EXPECT_GT(blackInRow(1), 10);
        EXPECT_EQ(redInRow(1) + redInRow(3) + redInRow(4) + blackInRow(3) + blackInRow(4), 0);
        // One evaluation later than the rest.
        EXPECT_TRUE(pumpUntil([&] { return holds(size, gasOn, greenish); })) << "LPG ON";
        const RECT wholePage{5, 10, ProfileWidth - 10, ProfileHeight - 60};
        const std::vector<COLORREF> before = snapshot(PageWindow, wholePage);
        const HDC dc = GetDC(PageWindow);
        Rectangle(dc, 0, 0, ProfileWidth, ProfileHeight);
        ReleaseDC(PageWindow, dc);
        ASSERT_EQ(page(300, 300), White);
        repaint();
        EXPECT_TRUE(snapshot(PageWindow, wholePage) == before) << "a repaint brings all back";

        // Everything elsewhere: lean at the left end, first segment, base 60, 6000 RPM, on petrol and too fast.
        showBytes({20, 0, 10, 60, 0xC4, 0x09, 0x19, 0x04, 70});
        expectLines(size, {{"Lambda", 62, {{140, DarkGreen}, {180, Silver}, {438, Silver}}},
                           {"actuator", 280, {{161, Navy}, {171, Silver}, {416, Silver}}},
                           {"idle range", 302, {{161, Silver}, {191, Cyan}, {251, Silver}, {416, Silver}}},
                           {"drive range", 309, {{161, Red}, {281, Silver}, {416, Silver}}},
                           {"former number of the base", 335, {{250, Silver}, {416, Silver}}},
                           {"fuel box", 470, {{493, Green}, {613, Green}}}});
        expectSegment(size, 1);
        EXPECT_EQ(needlePixel(size, 120), Red) << "needle at 6000";
        EXPECT_EQ(needlePixel(size, 60), Black) << "needle gone from 3000";
        EXPECT_TRUE(redInRow(3) > 10 && redInRow(4) > 10);
        EXPECT_TRUE(holds(size, gasOff, reddish) && !holds(size, cutOff, reddish)) << "LPG OFF, not CUT-OFF";
    }
    EXPECT_EQ(written(), "") << "watching writes nothing";
    for (int value = 0; value < 256; ++value) {
        LiveBlock.fill(static_cast<BYTE>(value));
        ParamBlockA.fill(static_cast<BYTE>(255 - value));
        ParamBlockB.fill(static_cast<BYTE>(value));
        UpdateReadings();
        expectLines(DesignSize, frame);
    }
}

TEST_F(MainWindowReadings, PollIdentityAndLiveAndEveryFourthTimeAllButAForeignFamilyForItsNameAlone) {
    startOn(3);
    OnGas = 1;  // as an earlier controller may have left it
    clickLearn();
    EXPECT_EQ(LearnRequested, 0);
    EXPECT_EQ(commands(10), "1111111111");
    closeProgram();

    plugController(4);
    start();
    EXPECT_EQ(commands(20), "12121212341212121234");
    // Two ticks still count before the link is given up; then the count stands still until it is back.
    ASSERT_TRUE(pumpUntil([] { return ParamTickCount == 1; }));
    server->unplug();
    ASSERT_TRUE(pumpUntil([] { return LinkLost != 0; }));
    ASSERT_TRUE(server->replug());
    EXPECT_EQ(commands(6), "123412");
}

TEST_F(MainWindowReadings, AreLostByThreeBadIdentitiesAndFoundAgain) {
    // Milliseconds from the last good round to the third bad identity. In a silence the live block times out twice,
    // too; random bytes are no rule.
    for (const auto& [fault, milliseconds] :
         {std::pair{"", 150}, {"garbage", 150}, {"silence", 1910}, {"endless", 0}}) {
        SCOPED_TRACE(fault);
        startOn(4);
        useProfile(2);
        showBytes(Typical);
        const Moment good = clock->now();
        *fault ? server->addFault(*simulator::ParseFault(fault)) : server->unplug();
        ASSERT_TRUE(pumpUntil([] { return LinkLost != 0; }));
        const Moment lost = clock->now();
        EXPECT_TRUE(milliseconds == 0 || lost - good == milliseconds * Millisecond) << lost - good;
        EXPECT_EQ(ActiveTimerPeriod, LostLinkPeriod);
        EXPECT_TRUE(redInRow(1) > 10 && blackInRow(3) > 10);
        EXPECT_EQ(redInRow(3) + redInRow(4) + redInRow(5) + blackInRow(4) + blackInRow(5), 0);
        EXPECT_EQ(needlePixel(DesignSize, 0), Red) << "needle at 0";

        server->clearFaults();
        server->unplug();
        ASSERT_TRUE(server->replug());
        ASSERT_TRUE(pumpUntil([] { return LinkLost == 0; }));
        EXPECT_EQ((clock->now() - lost) / Millisecond, LostLinkPeriod);
        EXPECT_EQ(ActiveTimerPeriod, GoodLinkPeriod);
        EXPECT_EQ(needlePixel(DesignSize, 60), Red) << "live values in the same tick";
        ASSERT_TRUE(untilRead());
        EXPECT_EQ(redInRow(1), 0);
        EXPECT_EQ(closeProgram(), 0);
    }
}

// The frames of the other family are proved on the link.
TEST_F(MainWindowReadings, LearningStartsAndStopsByTheButtonButNotOnPetrol) {
    startOn(4);
    useProfile(2);
    clickLearn();
    EXPECT_EQ(LearnRequested, 0);
    EXPECT_EQ(written(), "");
    server->with([](simulator::Controller& controller) { controller.step(30); });
    ASSERT_TRUE(pumpUntil([] { return OnGas != 0; }));
    clickLearn();
    EXPECT_EQ(written(), "65 1F 32 B6");
    ASSERT_TRUE(pumpUntil([] { return LearnRunning != 0; }));
    EXPECT_EQ(LearnRequested, 1);
    EXPECT_EQ(lampPixel(DesignSize), Yellow) << "steady with the throttle closed";
    EXPECT_GT(redInRow(5), 10) << "the throttle is to be opened";
    setLive(7, 0x2A);
    EXPECT_TRUE(pumpUntil([&] { return lampPixel(DesignSize) == Olive; })) << "blinks";
    EXPECT_GT(blackInRow(5), 10);

    clickLearn();
    EXPECT_EQ(LearnRequested, 0);
    EXPECT_GT(redInRow(5), 10) << "the stop is told";
    ASSERT_TRUE(pumpUntil([] { return LearnRunning == 0; }));
    EXPECT_EQ(written(), "65 1F 32 B6, 65 1F 32 B6");
    const auto notice = snapshot(PageWindow, statusRow(5));
    commands(10);
    EXPECT_TRUE(snapshot(PageWindow, statusRow(5)) == notice) << "no result follows a stop";
}
