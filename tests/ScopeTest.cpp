// The Oscilloscope page: what a sweep records, and the value cursor over it.
#include <QScrollBar>
#include <map>

#include "ScopePage.h"
#include "model/Codecs.h"

namespace {

const std::string Round = "65 01 01 67, 65 02 02 69";
const std::string FirstRound = Round + ", 65 03 03 6B";

}  // namespace

TEST_F(Scope, ScalesEachSignalToItsPanel) {
    startOn(4);
    openScope();
    struct Row {
        ScopeTrace trace;
        unsigned byte;
        int shift;  // of the sensor's type in its byte
        Ids types;
        std::vector<std::array<int, 2>> values;  // raw and scaled
    };
    const Row rows[] = {
        {TraceLambda, 2, 4, {0}, {{0, 0}, {1, 1}, {51, 76}, {53, 79}, {54, 80}, {100, 80}, {255, 80}}},
        {TraceLambda, 2, 4, {1, 2, 3, 4, 5, 6, 7, 8, 15}, {{0, 0}, {3, 0}, {4, 1}, {51, 15}, {54, 16}, {255, 76}}},
        {TraceTps, 1, 0, {0, 2, 4, 6, 7, 8, 10, 12, 14, 15}, {{0, 0}, {5, 2}, {10, 3}, {100, 32}, {255, 82}}},
        {TraceTps, 1, 0, {1, 3, 5, 9, 11, 13}, {{0, 82}, {5, 81}, {10, 79}, {100, 50}, {255, 0}}},
        {TraceAtt, 3, 0, {0}, {{0, 0}, {2, 0}, {3, 1}, {254, 84}, {255, 85}}},
        {TraceAttInit, 4, 0, {0}, {{0, 0}, {2, 0}, {3, 1}, {254, 84}, {255, 85}}},
        {TraceRpm, 5, 0, {0}, {{0, 0}, {65280, 0}, {65279, 2}, {2158, 69}, {1875, 80}, {1851, 80}, {1, 80}}},
    };
    for (const Row& row : rows) {
        for (const int type : row.types) {
            for (const auto& [raw, value] : row.values) {
                A[2] = static_cast<BYTE>(type << row.shift);
                L[6] = HighByte(static_cast<unsigned>(raw));
                L[row.byte] = LowByte(static_cast<unsigned>(raw));
                SweepPos = 299;
                SweepStep();
                EXPECT_EQ(Baselines[row.trace] - ScopePoints[row.trace][100].y, value)
                    << "trace " << row.trace << ", type " << type << ", raw " << raw;
            }
        }
    }
}

TEST_F(Scope, ASweepGoesRoundAndStoresWhatItDrawsAndANewSizeBeginsAnew) {
    startOn(4);
    const auto whole = [] { return snapshot(PageWindow, {0, 0, ProfileWidth - 10, ProfileHeight - 60}); };
    std::map<int, std::vector<COLORREF>> fresh;
    for (const Size& size : Sizes) {
        openApart(size.profile);
        fresh[size.profile] = whole();
    }
    for (const Size& size : {Sizes[0], Sizes[2], Sizes[1], Sizes[0]}) {
        SCOPED_TRACE(size.profile);
        openApart(size.profile);
        EXPECT_TRUE(whole() == fresh[size.profile]) << "something of another size is left";
        EXPECT_EQ(SweepPos, 202u);
        EXPECT_EQ(ScopeSamples[100].Att, 0u);
        // One tick, where its segments lie and what is stored of it.
        const auto expectColumn = [&](unsigned column, const LiveBytes& bytes, bool flat) {
            const auto before = ScopeSegment;
            show(bytes);
            tick();
            EXPECT_EQ(SweepPos, column == 596 ? 201 : column);
            EXPECT_EQ(ScopeSamples[SweepPos - 200].Lambda, bytes[1]);
            for (size_t trace = 0; trace < ScopeTraceCount; ++trace) {
                SCOPED_TRACE("column " + std::to_string(column) + " trace " + std::to_string(trace));
                const auto& [from, to] = ScopeSegment[trace];
                const POINT& stored = ScopePoints[trace][column - 200];
                const int level = static_cast<int>((bytes == Apart ? ApartY : Baselines)[trace] * size.scaleY);
                EXPECT_TRUE(to.y == level && stored.y == level);
                EXPECT_EQ(from.y, flat ? level : before[trace][1].y);
                EXPECT_EQ(from.x, static_cast<int>((column - 1) * size.scaleX));
                EXPECT_EQ(to.x, static_cast<int>(column * size.scaleX));
                EXPECT_EQ(stored.x, static_cast<int>((std::max(column, 203u) + 1) * size.scaleX));
            }
        };
        expectColumn(203, Apart, true);
        expectColumn(204, AllZero, false);
        sweepTo(593);
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
    const auto expectAt = [](unsigned position, const std::string& what) {
        settle();
        tick();
        EXPECT_EQ(CursorPos, position) << what;
        EXPECT_EQ(qobject_cast<QScrollBar*>(widgetOf(control(IDC_SCOPE_CURSOR_BAR)))->value(),
                  static_cast<int>(position));
    };
    roll(PageWindow, -1);
    EXPECT_EQ(CursorPos, 2u) << "no cursor, no wheel";
    clickBox();
    const std::array<unsigned, 4> moves[] = {
        {2, SB_LINELEFT, 0, 2},       {2, SB_LINERIGHT, 0, 3},      {395, SB_LINERIGHT, 0, 395},
        {2, SB_PAGELEFT, 0, 2},       {11, SB_PAGELEFT, 0, 2},      {13, SB_PAGELEFT, 0, 3},
        {390, SB_PAGERIGHT, 0, 395},  {9, SB_THUMBTRACK, 395, 395}, {9, SB_THUMBTRACK, 0, 2},
        {9, SB_THUMBTRACK, 999, 395}, {9, SB_THUMBPOSITION, 7, 9},  {9, SB_ENDSCROLL, 0, 9}};
    for (const auto& [from, code, thumb, to] : moves) {
        scroll(SB_THUMBTRACK, from);
        scroll(static_cast<WORD>(code), thumb);
        expectAt(to, std::to_string(from) + " code " + std::to_string(code));
    }
    scroll(SB_THUMBTRACK, 100);
    SetFocus(control(IDC_SCOPE_CURSOR_BAR));
    for (const auto& [key, position] :
         {std::pair(Qt::Key_Right, 101u), {Qt::Key_PageDown, 111u}, {Qt::Key_Left, 110u}, {Qt::Key_PageUp, 100u}}) {
        press(key);
        expectAt(position, "key " + std::to_string(key));
    }
    for (const auto& [notches, position] : {std::pair(-1, 103u), {1, 100u}}) {
        roll(PageWindow, notches);
        expectAt(position, "wheel");
    }
}

TEST_F(Scope, PausedFrozenOrWithoutALinkItStandsStill) {
    startOn(4);
    openApart(2);
    setLive(8, 1);
    tick();
    EXPECT_EQ(sent(), FirstRound);
    tick();
    EXPECT_EQ(sent(), Round);
    EXPECT_EQ(ActiveTimerPeriod, 20u);
    DialogPause = 1;
    tick();
    DialogPause = 0;
    EXPECT_EQ(sent(), "");
    EXPECT_EQ(SweepPos, 204u);

    EXPECT_EQ(page(632, 467), Cyan);
    server->unplug();
    tick(3);
    EXPECT_TRUE(LinkLost == 1 && TimerPeriod == 20);
    EXPECT_EQ(SweepPos, 206u) << "two bad replies repeat the last values";
    tick();
    EXPECT_TRUE(SweepPos == 206 && ScopeParamsRead == 0);
    EXPECT_TRUE(reads(630, 70, "0.00") && reads(630, 180, "000") && reads(630, 290, "0000") && reads(630, 400, "0.00"));
    EXPECT_EQ(page(632, 467), Green);
    ASSERT_TRUE(server->replug());
    sent();
    tick();
    EXPECT_EQ(sent(), FirstRound) << "all in one tick";
    EXPECT_EQ(SweepPos, 207u);
    EXPECT_EQ(ScopePoints[TraceAtt][7].y, 190);

    sweepTo(300);
    clickBox();
    clickBox();
    EXPECT_FALSE(IsWindowVisible(control(IDC_SCOPE_CURSOR_BAR)));
    clickBox();
    sent();
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

TEST_F(Scope, SweepsOverWhatThereIsOfAFamilyThatIsNotServed) {
    startOn(3);
    openScope();
    tick(2);
    EXPECT_EQ(sent(), "65 01 01 67, 65 01 01 67");
    EXPECT_EQ(SweepPos, 204u) << "sweeps over what there is";
}
