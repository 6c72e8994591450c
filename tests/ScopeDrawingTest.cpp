// The Oscilloscope page: its pixels while it sweeps and when it stands, and its read-outs.
#include "ScopePage.h"

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
    const Row rows[] = {
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
    for (size_t at = 0; at < std::size(rows); ++at) {
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
