// The Oscilloscope page: what a sweep records, and the value cursor over it.
#include "ScopePage.h"

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
    const std::array<int, 3> speeds[] = {{0, 0, 0},        {65280, 0, 0},    {65279, 250, 2},  {2158, 6950, 69},
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

TEST_F(Scope, TheBarMovesTheCursor) {
    startOn(4);
    openScope();
    roll(-1);
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
    const auto expectAt = [](unsigned position) {
        settle();
        tick();
        EXPECT_EQ(CursorPos, position);
    };
    scroll(SB_THUMBTRACK, 100);
    for (const auto& [along, position] : {std::pair(-5, 101u), {-40, 111u}, {5, 110u}, {25, 100u}}) {
        clickAt(control(IDC_SCOPE_CURSOR_BAR), onBar(along));
        expectAt(position);
    }
    for (const auto& [key, position] :
         {std::pair(Qt::Key_Right, 101u), {Qt::Key_PageDown, 111u}, {Qt::Key_Left, 110u}, {Qt::Key_PageUp, 100u}}) {
        SetFocus(control(IDC_SCOPE_CURSOR_BAR));
        press(key);
        expectAt(position);
    }
    roll(-1);
    expectAt(103);
    roll(1);
    expectAt(100);
    scroll(SB_THUMBTRACK, 2);
    drag(control(IDC_SCOPE_CURSOR_BAR), {onBar(25), onBar(-1)});
    expectAt(395);
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
    EXPECT_TRUE(SweepPos == 204 && TimerPeriod == 77);

    sweepTo(300);
    sent();
    clickBox();
    scroll(SB_THUMBTRACK, 90);
    tick(3);
    open(IDM_READINGS);
    openScope();
    EXPECT_EQ(selected(IDC_SCOPE_CURSOR), BST_CHECKED);
    EXPECT_TRUE(IsWindowVisible(control(IDC_SCOPE_CURSOR_BAR)));
    EXPECT_EQ(CursorPrevPos, 90u);
    tick(2);
    EXPECT_EQ(sent(), "");
    EXPECT_TRUE(CursorPos == 2 && CursorPrevPos == 2 && ScopeSamples[90].Att == 0);
    EXPECT_TRUE(traceAt(TraceAtt, 291, 240)) << "an empty history, repaired";
    expectOnlyLine(204, Red);
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
    EXPECT_TRUE(SweepPos == 252 && ScopeParamsRead == 0);
    EXPECT_TRUE(reads(630, 70, "0.00") && reads(630, 180, "000") && reads(630, 290, "0000") && reads(630, 400, "0.00"));
    EXPECT_EQ(page(632, 467), Green);
    clickBox();
    ASSERT_TRUE(server->replug());
    sent();
    tick(3);
    EXPECT_EQ(sent(), "") << "frozen";
    clickBox();
    EXPECT_FALSE(IsWindowVisible(control(IDC_SCOPE_CURSOR_BAR)));
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

// The click comes while a column is on the line.
TEST_F(Scope, AClickActsWithinTwoColumnsOfTheSweep) {
    plug({});
    startIn("ang");
    SendMessageA(MainWindow, WM_COMMAND, IDM_OSCILLOSCOPE, 0);
    int columns = 0;
    server->observe([&](const simulator::LogEntry& entry) {
        if (entry.request.bytes[1] == 2 && ++columns == 20) {
            const QPoint place = widgetOf(control(IDC_SCOPE_CURSOR))->mapToGlobal(QPoint(8, 8));
            desktop::pressButton(place);
            desktop::releaseButton(place);
        }
    });
    ASSERT_TRUE(pumpUntil([] { return CursorMode == 1; }));
    EXPECT_LE(columns, 22);
}
