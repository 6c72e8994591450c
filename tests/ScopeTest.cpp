// The Oscilloscope page: what a sweep records and draws, and the value cursor over it.
#include <QScrollBar>
#include <QTest>
#include <QWheelEvent>
#include <array>
#include <string>
#include <vector>

#include "TuningPages.h"
#include "model/Codecs.h"
#include "scope/OscilloscopePage.h"
#include "scope/ScopeCapture.h"

namespace {

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
const LiveBytes Apart = {155, 100, 150, 60, 0x88, 0x13};
constexpr int ApartY[] = {100, 190, 220, 320, 410};
const LiveBytes AllZero(6);

const std::string Round = "65 01 01 67, 65 02 02 69";
const std::string FirstRound = Round + ", 65 03 03 6B";

using Levels = std::array<int, ScopeTraceCount>;

Levels levels(size_t point) {
    Levels all{};
    for (size_t trace = 0; trace < all.size(); ++trace) {
        all[trace] = ScopeSegment[trace][point].y;
    }
    return all;
}

void scroll(WORD code, unsigned thumb = 0) {
    SendMessageA(PageWindow, WM_HSCROLL, MAKEWPARAM(code, thumb), 0);
}

QScrollBar& bar() {
    return *qobject_cast<QScrollBar*>(widgetOf(control(IDC_SCOPE_CURSOR_BAR)));
}

void roll(int turned) {
    QWheelEvent wheel(QPointF(5, 5), QPointF(5, 5), QPoint(), QPoint(0, turned), Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QSpontaneKeyEvent::setSpontaneous(&wheel);
    qApp->notify(&bar(), &wheel);
}

// Counted from the right end if negative.
QPoint onBar(int along) {
    return {along < 0 ? bar().width() + along : along, 5};
}

void clickBar(int along) {
    QTest::mouseClick(&bar(), Qt::LeftButton, {}, onBar(along));
}

void pullThumb() {
    scroll(SB_THUMBTRACK, 2);
    QTest::mousePress(&bar(), Qt::LeftButton, {}, onBar(25));
    QTest::mouseMove(&bar(), onBar(-1));
    QTest::mouseRelease(&bar(), Qt::LeftButton, {}, onBar(-1));
}

void clickBox() {
    QTest::mouseClick(widgetOf(control(IDC_SCOPE_CURSOR)), Qt::LeftButton, {}, QPoint(8, 8));
}

}  // namespace

class Scope : public TuningPages {
protected:
    void SetUp() override {
        TuningPages::SetUp();
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
    void loseLink() {
        server->unplug();
        for (int ticks = 0; LinkLost == 0 && ticks < 5; ++ticks) {
            tick();
            EXPECT_EQ(TimerPeriod, 20u);
        }
        ASSERT_EQ(LinkLost, 1);
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
    // Pixels of a colour in the bands, or between the borders of the panels, from one pixel column to before another.
    static int countIn(int left, int right, COLORREF colour, bool wholePanels = false) {
        int found = 0;
        for (const auto& [top, bottom] : Bands) {
            const RECT area{left, wholePanels ? y(top - 3) + 1 : y(top), right,
                            wholePanels ? y(bottom + 3) - 1 : y(bottom)};
            found += countPixels(PageWindow, area, [=](COLORREF one) { return one == colour; });
        }
        return found;
    }
    static int bandHeight() {
        int height = 0;
        for (const auto& [top, bottom] : Bands) {
            height += y(bottom) - y(top);
        }
        return height;
    }
    // One line of this colour stands in the panels, a pixel wide and as high as the bands.
    static void expectOnlyLine(int designX, COLORREF colour) {
        EXPECT_EQ(countIn(x(designX), x(designX) + 1, colour), bandHeight()) << designX;
        EXPECT_EQ(countIn(x(198) + 1, x(600) - 1, colour, true), bandHeight()) << designX;
    }
    static bool whiteFrom(int left, int right) {
        return countIn(left, right, White) == bandHeight() * (right - left);
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

TEST_F(Scope, ScalesEachSignalToItsPanel) {
    startOn(4);
    openScope();
    const auto expectScaled = [](ScopeTrace trace, unsigned byte, int raw, int value) {
        L[byte] = static_cast<BYTE>(raw);
        SweepPos = 299;
        SweepStep();
        EXPECT_EQ(Baselines[trace] - ScopePoints[trace][100].y, value) << "trace " << trace << ", raw " << raw;
    };
    using Rows = std::vector<std::array<int, 2>>;
    const Rows gains[] = {{{0, 0}, {1, 1}, {51, 76}, {53, 79}, {54, 80}, {100, 80}, {255, 80}},
                          {{0, 0}, {3, 0}, {4, 1}, {51, 15}, {54, 16}, {100, 30}, {255, 76}}};
    const std::array<int, 3> throttles[] = {{0, 0, 82}, {5, 2, 81}, {10, 3, 79}, {100, 32, 50}, {255, 82, 0}};
    for (int type = 0; type <= 15; ++type) {
        SCOPED_TRACE("type " + std::to_string(type));
        A[2] = static_cast<BYTE>(type << 4);
        for (const auto& [raw, value] : gains[type == 0 ? 0 : 1]) {
            expectScaled(TraceLambda, 2, raw, value);
        }
        A[2] = static_cast<BYTE>(type);
        const bool reversed = Ids{1, 3, 5, 9, 11, 13}.contains(type);
        for (const auto& [raw, upright, turned] : throttles) {
            expectScaled(TraceTps, 1, raw, reversed ? turned : upright);
        }
    }
    for (const auto& [raw, value] : Rows{{0, 0}, {2, 0}, {3, 1}, {254, 84}, {255, 85}}) {
        expectScaled(TraceAtt, 3, raw, value);
        expectScaled(TraceAttInit, 4, raw, value);
    }
    const std::array<int, 3> speeds[] = {{0, 0, 0},        {65535, 0, 0},    {65280, 0, 0},
                                         {65279, 250, 2},  {5084, 2950, 29}, {5000, 3000, 30},
                                         {1875, 8000, 80}, {1851, 8100, 80}, {1, 15000000, 80}};
    for (const auto& [period, rpm, value] : speeds) {
        L[6] = HighByte(static_cast<unsigned>(period));
        expectScaled(TraceRpm, 5, period & 0xFF, value);
        EXPECT_EQ(ScopeSamples[100].Rpm, static_cast<unsigned>(rpm)) << period;
    }
}

TEST_F(Scope, ASweepGoesRoundAndStoresWhatItDraws) {
    startOn(4);
    for (const Size& size : Sizes) {
        SCOPED_TRACE(size.profile);
        openApart(size.profile);
        const auto expectPoints = [&](unsigned index, const int* designs) {
            for (size_t trace = 0; trace < ScopeTraceCount; ++trace) {
                EXPECT_EQ(ScopePoints[trace][index].y, static_cast<int>(designs[trace] * size.scaleY)) << trace;
                EXPECT_EQ(ScopePoints[trace][index].x, static_cast<int>((std::max(index, 3u) + 201) * size.scaleX))
                    << index;
            }
        };
        // One tick, and where the segments and the sweep then stand.
        const auto expectColumn = [&](unsigned column, const LiveBytes& bytes, bool flat) {
            const auto before = levels(1);
            show(bytes);
            tick();
            EXPECT_EQ(SweepPos, column == 596 ? 201 : column);
            for (const auto& segment : ScopeSegment) {
                EXPECT_EQ(segment[0].x, static_cast<int>((column - 1) * size.scaleX)) << column;
                EXPECT_EQ(segment[1].x, static_cast<int>(column * size.scaleX)) << column;
            }
            EXPECT_EQ(levels(0), flat ? levels(1) : before) << column;
            expectPoints(column - 200, bytes == Apart ? ApartY : Baselines);
            EXPECT_EQ(ScopeSamples[SweepPos - 200].Lambda, bytes[1]);
        };
        expectPoints(399, Baselines);
        EXPECT_EQ(ScopeSamples[100].Lambda, 0u);
        EXPECT_EQ(SweepPos, 202u);
        expectColumn(203, Apart, true);
        expectColumn(204, AllZero, false);
        sweepTo(593);
        clickBox();
        tick(3);
        clickBox();
        expectColumn(594, Apart, false);
        expectColumn(595, AllZero, false);
        expectColumn(596, Apart, false);
        EXPECT_EQ(ScopeSamples[396].Lambda, 0u) << "the sample of a wrap is that of index 1";
        expectColumn(202, AllZero, false);
        expectColumn(203, Apart, true);
    }
}

TEST_F(Scope, DrawsColumnsWipesAheadAndCleansTheEdges) {
    startOn(4);
    for (const Size& size : Sizes) {
        SCOPED_TRACE(size.profile);
        openApart(size.profile);
        sweepTo(299);
        show(AllZero);
        tick(2);
        const RECT fall{x(300), y(332), x(300) + 1, y(347)};
        EXPECT_GT(countPixels(PageWindow, fall, [](COLORREF one) { return one == Blue; }), 3) << "keeps its end";
        show(Apart);
        tick(2);
        expectOnlyLine(305, Red);
        EXPECT_TRUE(whiteFrom(x(303) + 2, x(305)) && whiteFrom(x(199) + 1, x(204)));
        for (size_t trace = 0; trace < ScopeTraceCount; ++trace) {
            EXPECT_TRUE(traceAt(trace, x(250), ApartY[trace])) << trace;
            EXPECT_TRUE(traceAt(trace, x(303) - 1, ApartY[trace])) << trace;
            EXPECT_FALSE(traceAt(trace, x(250), Baselines[trace])) << trace << " the old line has gone";
            EXPECT_EQ(traceAt(trace, x(400), Baselines[trace]), trace != TraceAttInit) << trace << " stays ahead";
        }
        sweepTo(595);
        expectOnlyLine(597, Red);
        tick();
        EXPECT_EQ(countIn(x(198) + 1, x(600), Red), 0) << "no marker at a wrap";
        EXPECT_TRUE(whiteFrom(x(199) + 1, x(203)));
        tick(99);
        expectOnlyLine(302, Red);
        for (size_t trace = 0; trace < ScopeTraceCount; ++trace) {
            EXPECT_TRUE(traceAt(trace, x(303) + 3, ApartY[trace])) << trace << " of the old sweep right of the marker";
        }
        const POINT end = ScopeSegment[TraceRpm][1];
        EXPECT_TRUE(size.profile != 3 || (end.x == 384 && end.y == 422)) << end.x << "," << end.y;
    }
}

TEST_F(Scope, TheCursorRepairsWhatItCovered) {
    startOn(4);
    for (const Size& size : Sizes) {
        SCOPED_TRACE(size.profile);
        openApart(size.profile);
        sweepTo(400);
        clickBox();
        const RECT around{x(280), y(40), x(330), y(470)};
        const auto before = snapshot(PageWindow, around);
        for (const unsigned index : {2u, 100u, 101u, 300u}) {
            scroll(SB_THUMBTRACK, index);
            tick(2);  // the repair of a neighbour lies over the cursor for a tick
            EXPECT_EQ(CursorPrevPos, index);
            expectOnlyLine(static_cast<int>(index) + 201, Black);
            expectOnlyLine(402, Red);
        }
        EXPECT_TRUE(snapshot(PageWindow, around) == before);
        EXPECT_TRUE(traceAt(TraceTps, x(401), 410)) << "history stands a column to the right";
        clickBox();
    }
}

TEST_F(Scope, ReadoutsTellNowAndStored) {
    startOn(4);
    openScope();
    struct Row {
        BYTE types;
        LiveBytes live;
        std::string lambda, att, speed, tps, storedSpeed = speed;
    };
    const std::vector<Row> rows = {
        {0x00, {127, 51, 7, 0, 0x88, 0x13, 0x08, 0x01}, "0.99", "007", "3000", "2.48"},
        {0x11, {255, 255, 255, 0, 0xFF, 0xFE, 0x08, 0xC0}, "4.99", "255", "0250", "0.00"},
        {0x31, {0, 127, 90, 0, 0xFF, 0xFF, 0x08, 0x01}, "2.51", "090", "0000", "5.00"},
        {0x42, {200, 0, 0, 0, 0x00, 0x00, 0x18, 0xFE}, "5.00", "000", "0000", "_.__"},
        {0x53, {200, 100, 1, 0, 0x53, 0x07, 0x08, 0x03}, "1.96", "001", "8000", "_.__"},
        {0x26, {9, 200, 10, 0, 0x01, 0x00, 0xE8, 0x00}, "3.92", "010", "1500", " ON"},
        {0x27, {9, 200, 99, 0, 0xE5, 0x00, 0x18, 0x01}, "3.92", "099", "6550", "OFF", "0000"},
        {0xF8, {50, 1, 100, 0, 0x10, 0x27, 0x18, 0x01}, "0.01", "100", "1500", "0.98"},
        {0x05, {51, 254, 3, 0, 0x10, 0x27, 0x08, 0x00}, "4.97", "003", "1500", "0.99"},
    };
    const COLORREF face = GetSysColor(COLOR_3DFACE);
    const auto expectShown = [&](const Row& row, bool now) {
        const std::string& speed = now ? row.speed : row.storedSpeed;
        EXPECT_TRUE(reads(630, 70, row.lambda) && reads(630, 180, row.att)) << row.lambda << " " << row.att;
        EXPECT_TRUE(reads(630, 290, speed) && reads(630, 400, row.tps)) << speed << " " << row.tps;
        EXPECT_EQ(EngineRPM == 0, speed == "0000");
        // What follows the figures stands, and nothing of a longer text.
        EXPECT_EQ(page(x(630) + 67, 110), face);
        EXPECT_EQ(page(x(630) + 52, 200), face);
        EXPECT_TRUE(reads(700, 400, "V", LargeFont, face)) << "once drawn, it stays";
        EXPECT_TRUE(row.tps.size() != 3 || page(690, 420) == White);
        const bool gas = (row.live[7] & 1) != 0;
        EXPECT_EQ(page(632, 467), gas ? Cyan : Green);
        EXPECT_TRUE(gas ? reads(675, 475, LangTable[15].data(), SmallFont, Cyan)
                        : reads(655, 475, LangTable[14].data(), SmallFont, Green));
    };
    tick();
    SweepPos = 202;
    for (const Row& row : rows) {
        A[2] = row.types;
        show(row.live);
        tick();
        expectShown(row, true);
    }
    EXPECT_FALSE(reads(630, 180, "004")) << "one letter tells";
    clickBox();
    for (size_t at = 0; at < rows.size(); ++at) {
        SCOPED_TRACE("stored");
        A[2] = rows[at].types & 0xF0;  // the sensor of the moment, but the throttle of then
        scroll(SB_THUMBTRACK, static_cast<unsigned>(at) + 3);
        tick();
        expectShown(rows[at], false);
    }
    A[2] = 0x30;
    scroll(SB_THUMBTRACK, 3);
    tick();
    EXPECT_TRUE(reads(630, 70, "4.00")) << "told by the sensor of the moment";

    const std::string sensors[] = {"0 - 1 V       ", "0 - 5 V  '-'  ", "0 - 5 V  '+'  ",
                                   "5 - 0 V  '-'  ", "5 - 0 V  '+'  ", "0,8 - 1,6 V   "};
    const size_t lines[] = {84, 85, 86, 86, 86, 86, 87, 88, 89};
    for (size_t type = 0; type <= 15; ++type) {
        setCell(simulator::LambdaType, static_cast<std::uint8_t>(type * 17));
        RedrawScope();
        EXPECT_TRUE(reads(50, 90, sensors[std::min<size_t>(type, 5)], SmallFont, face)) << type;
        EXPECT_TRUE(reads(50, 420, LangTable[lines[std::min<size_t>(type, 8)]].data(), SmallFont, face)) << type;
    }
}

TEST_F(Scope, TheBarMovesTheCursor) {
    startOn(4);
    openScope();
    roll(-120);
    EXPECT_EQ(CursorPos, 2u) << "no cursor, no wheel";
    clickBox();
    const std::array<unsigned, 4> moves[] = {
        {2, SB_LINELEFT, 0, 2},       {3, SB_LINELEFT, 0, 2},      {2, SB_LINERIGHT, 0, 3},
        {395, SB_LINERIGHT, 0, 395},  {2, SB_PAGELEFT, 0, 2},      {11, SB_PAGELEFT, 0, 2},
        {13, SB_PAGELEFT, 0, 3},      {385, SB_PAGERIGHT, 0, 395}, {390, SB_PAGERIGHT, 0, 395},
        {9, SB_THUMBTRACK, 395, 395}, {9, SB_THUMBTRACK, 0, 2},    {9, SB_THUMBTRACK, 999, 395},
        {9, SB_THUMBPOSITION, 7, 9},  {9, SB_RIGHT, 0, 9},         {9, SB_ENDSCROLL, 0, 9}};
    for (const auto& [from, code, thumb, to] : moves) {
        scroll(SB_THUMBTRACK, from);
        scroll(static_cast<WORD>(code), thumb);
        tick();
        EXPECT_EQ(CursorPos, to) << from << " code " << code;
        EXPECT_EQ(bar().value(), static_cast<int>(to));
    }
    const std::vector<std::pair<std::function<void()>, unsigned>> deeds = {
        {[] { clickBar(-5); }, 101},
        {[] { clickBar(-40); }, 111},
        {[] { clickBar(5); }, 110},
        {[] { clickBar(25); }, 100},
        {[] { QTest::keyClick(&bar(), Qt::Key_Right); }, 101},
        {[] { QTest::keyClick(&bar(), Qt::Key_PageDown); }, 111},
        {[] { QTest::keyClick(&bar(), Qt::Key_Left); }, 110},
        {[] { QTest::keyClick(&bar(), Qt::Key_PageUp); }, 100},
        {[] { roll(-120); }, 103},
        {[] { roll(120); }, 100},
        {pullThumb, 395},
    };
    scroll(SB_THUMBTRACK, 100);
    for (size_t at = 0; at < deeds.size(); ++at) {
        deeds[at].first();
        settle();
        tick();
        EXPECT_EQ(CursorPos, deeds[at].second) << "deed " << at;
    }
}

TEST_F(Scope, FrozenOrPausedItLeavesTheLinkAlone) {
    startOn(4);
    openApart(2);
    tick();
    EXPECT_EQ(sent(), FirstRound);
    tick();
    EXPECT_EQ(sent(), Round);
    EXPECT_EQ(ActiveTimerPeriod, 20u);
    DialogPause = 1;
    TimerPeriod = 77;
    tick();
    DialogPause = 0;
    EXPECT_EQ(sent(), "");
    EXPECT_EQ(SweepPos, 204u);
    EXPECT_EQ(TimerPeriod, 77u);

    sweepTo(300);
    sent();
    clickBox();
    EXPECT_TRUE(IsWindowVisible(control(IDC_SCOPE_CURSOR_BAR)));
    scroll(SB_THUMBTRACK, 90);
    tick(3);
    EXPECT_EQ(sent(), "");
    open(IDM_READINGS);
    openScope();
    EXPECT_EQ(selected(IDC_SCOPE_CURSOR), BST_CHECKED);
    EXPECT_TRUE(IsWindowVisible(control(IDC_SCOPE_CURSOR_BAR)));
    EXPECT_EQ(CursorPrevPos, 90u);
    tick(2);
    EXPECT_EQ(CursorPos, 2u);
    EXPECT_EQ(CursorPrevPos, 2u);
    EXPECT_EQ(ScopeSamples[90].Att, 0u);
    EXPECT_TRUE(traceAt(TraceAtt, 291, 240)) << "an empty history, repaired";
    expectOnlyLine(204, Red);

    clickBox();
    EXPECT_FALSE(IsWindowVisible(control(IDC_SCOPE_CURSOR_BAR)));
    loseLink();
    clickBox();
    ASSERT_TRUE(server->replug());
    sent();
    tick(3);
    EXPECT_EQ(sent(), "");
    EXPECT_EQ(LinkLost, 1);
}

TEST_F(Scope, StandsStillWithoutALinkAndGoesOn) {
    startOn(4);
    openApart(2);
    setLive(8, 1);
    sweepTo(250);
    EXPECT_EQ(page(632, 467), Cyan);
    loseLink();
    EXPECT_EQ(SweepPos, 252u) << "two bad replies repeat the last values";
    tick();
    EXPECT_EQ(SweepPos, 252u);
    EXPECT_EQ(ScopeParamsRead, 0u);
    EXPECT_TRUE(reads(630, 70, "0.00") && reads(630, 180, "000") && reads(630, 290, "0000") && reads(630, 400, "0.00"));
    EXPECT_EQ(page(632, 467), Green);
    ASSERT_TRUE(server->replug());
    sent();
    tick();
    EXPECT_EQ(sent(), FirstRound) << "all in one tick";
    EXPECT_EQ(SweepPos, 253u);
    EXPECT_EQ(ScopePoints[TraceAtt][53].y, 190);
    EXPECT_EQ(closeProgram(), 0);

    startOn(3);
    openScope();
    tick(2);
    EXPECT_EQ(sent(), "65 01 01 67, 65 01 01 67");
    EXPECT_EQ(SweepPos, 204u) << "sweeps over what there is";
}

TEST_F(Scope, ANewSizeBeginsAnew) {
    startOn(4);
    const auto whole = [] { return snapshot(PageWindow, {0, 0, ProfileWidth - 10, ProfileHeight - 60}); };
    setCell(simulator::LambdaType, 0x10);
    for (const auto& [from, to] : {std::pair(5, 1), std::pair(1, 5)}) {
        openScope(to);
        const auto fresh = whole();
        openApart(from);
        sweepTo(450);
        openScope(to);
        EXPECT_TRUE(whole() == fresh) << "something of size " << from << " is left";
        EXPECT_EQ(SweepPos, 202u);
        EXPECT_EQ(ScopeSamples[100].Att, 0u);
    }
}

TEST_F(Scope, TheCursorFindsWhatTheControllerSent) {
    simulator::Config config;
    config.wirePace = false;
    config.clockRuns = false;
    config.scenario = simulator::Scenario::Ramp;
    config.portLink = folder / "ports/COM1";
    server = std::make_unique<simulator::Server>(config);
    startIn("ang");
    openScope();
    std::vector<simulator::Bytes> sentFor(396);
    for (unsigned tickNumber = 0; tickNumber < 396; ++tickNumber) {  // a sweep, and the next one's columns 202 and 203
        server->with([&](simulator::Controller& controller) {
            controller.step(0.1);
            sentFor[(tickNumber + 2) % 395 + 1] = controller.block(2);
        });
        tick();
    }
    EXPECT_EQ(SweepPos, 203u);
    clickBox();
    for (unsigned index = 2; index <= 395; ++index) {
        SCOPED_TRACE(index);
        tick();
        ASSERT_EQ(CursorPos, index);
        const simulator::Bytes& live = sentFor[index];
        const ScopeSample& sample = ScopeSamples[CursorPos];
        const std::array<unsigned, 5> stored{sample.Tps, sample.Lambda, sample.Att, sample.TpsSwitch, sample.Status};
        EXPECT_EQ(stored, (std::array<unsigned, 5>{live[1], live[2], live[3], live[7] & 0x10u, live[8]}));
        const unsigned period = live[5] + live[6] * 256u;
        EXPECT_EQ(EngineRPM, period == 65535 ? 0 : (15000000 / period + 25) / 50 * 50);
        EXPECT_TRUE(reads(630, 180, std::to_string(1000 + live[3]).substr(1)));
        EXPECT_TRUE(reads(630, 290, std::to_string(10000 + EngineRPM).substr(1)));
        scroll(SB_LINERIGHT);
    }
}
