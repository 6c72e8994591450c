#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <numeric>
#include <set>
#include <string>

#include "model/Blocks.h"
#include "model/Cells.h"
#include "model/Choices.h"
#include "model/Codecs.h"
#include "model/Text.h"
#include "shell/AppState.h"

namespace {

std::string TextOfEntry(const Choice& choice, unsigned entry) {
    std::array<char, LangLineSize> text{};
    EntryText(choice, entry, text);
    return text.data();
}

std::string Real(double value, std::size_t shown) {
    std::array<char, 16> text{};
    RealText(std::span(text).first(shown + 1), value);
    return text.data();
}

// Every byte of every mirror another value: L 1.., A 21.., B 41.., C 61..
void FillMirrors() {
    std::iota(LiveBlock.begin(), LiveBlock.end(), BYTE{1});
    std::iota(ParamBlockA.begin(), ParamBlockA.end(), BYTE{21});
    std::iota(ParamBlockB.begin(), ParamBlockB.end(), BYTE{41});
    std::iota(ParamBlockC.begin(), ParamBlockC.end(), BYTE{61});
}

}  // namespace

TEST(Codecs, RoundsAHalfDownAndTruncatesNegatives) {
    EXPECT_EQ(RoundHalfDown(0.49), 0);
    EXPECT_EQ(RoundHalfDown(2.5), 2);
    EXPECT_EQ(RoundHalfDown(2.51), 3);
    EXPECT_EQ(RoundHalfDown(-2.7), -2);
}

TEST(Codecs, TemperatureFollowsBothSegments) {
    for (const auto& [raw, degrees] : {std::pair{0u, 0},
                                       {67u, 0},
                                       {68u, 0},
                                       {69u, 0},
                                       {70u, 1},
                                       {100u, 12},
                                       {199u, 51},
                                       {200u, 51},
                                       {246u, 100},
                                       {255u, 110}}) {
        EXPECT_EQ(RawToTemperature(raw), degrees) << raw;
    }
    for (const auto& [degrees, raw] :
         {std::pair{0, 68}, {10, 94}, {20, 120}, {50, 197}, {51, 200}, {52, 201}, {60, 208}, {100, 246}}) {
        EXPECT_EQ(TemperatureToRaw(degrees), raw) << degrees;
    }
    for (const auto& [sent, back] : {std::pair{53, 54}, {72, 71}, {90, 91}}) {
        EXPECT_EQ(RawToTemperature(TemperatureToRaw(sent)), back);
    }
    for (const auto& [raw, text] :
         {std::pair{0u, "00"}, {80u, "05"}, {100u, "12"}, {246u, "100"}, {254u, "100"}, {255u, "100"}}) {
        EXPECT_STREQ(TemperatureText(raw), text) << raw;
    }
}

TEST(Codecs, SpeedsArePeriodsInStepsOf50) {
    for (const auto& [period, rpm] : {std::pair{0u, 0u},
                                      {1u, 15000000u},
                                      {1875u, 8000u},
                                      {10000u, 1500u},
                                      {65535u, 250u},
                                      {7000u, 2150u},
                                      {7060u, 2100u}}) {
        EXPECT_EQ(PeriodToRPM(HighByte(period), LowByte(period)), rpm) << period;
    }
    EXPECT_EQ(RPMToPeriod(1500), 10000u);
    EXPECT_EQ(RPMToPeriod(1000), 15000u);
    EXPECT_EQ(RPMToPeriod(8000), 1875u);
    EXPECT_EQ(HighByte(0x12345), 0x23);
    EXPECT_EQ(LowByte(0x12345), 0x45);
}

TEST(Codecs, RealTextsAreCutNotRounded) {
    EXPECT_EQ(Real(SignalVolts(127), 4), "2.48");
    EXPECT_EQ(Real(SignalVolts(255), 4), "4.99");
    EXPECT_EQ(Real(5.0 - SignalVolts(0), 4), "5.00");
    EXPECT_EQ(Real(SignalVolts(127), 8), "2.489200");
    // Binary fractions that lie just below their decimal: 13 / 50 + 0.02 and 14 / 50 + 0.02.
    EXPECT_EQ(Real(13 / 50.0 + 0.02, 4), "0.28");
    EXPECT_EQ(Real(14 / 50.0 + 0.02, 4), "0.30");
}

TEST(Codecs, TextsAreCutAndEnded) {
    std::array<char, 5> text;
    text.fill('#');
    FormatText(text, "%04ld", 12350L);
    EXPECT_STREQ(text.data(), "1235");
    CopyText(text, "longer than that");
    EXPECT_STREQ(text.data(), "long");
    CopyText(text, "a");
    EXPECT_STREQ(text.data(), "a");
}

TEST(Choices, EveryListHasItsEnds) {
    std::strcpy(LangTable[64].data(), "first");
    std::strcpy(LangTable[81].data(), "last");
    struct Row {
        ChoiceName name;
        unsigned entries, firstRaw, lastRaw;
        const char* firstText;
        const char* secondText;
        const char* lastText;
    };
    const std::array rows{
        Row{ChoiceName::LambdaPoint01, 11, 20, 30, "0,40", "0,42", "0,60"},
        Row{ChoiceName::LambdaPoint16, 16, 50, 65, "1,00", "1,02", "1,30"},
        Row{ChoiceName::LambdaPoint5, 51, 100, 150, "2:00", "2:02", "3:00"},
        Row{ChoiceName::LambdaDelay, 255, 1, 255, "0:05", "0:10", "21:15"},
        Row{ChoiceName::EmulationTime, 255, 1, 255, "0,025", "0,050", "6,375"},
        Row{ChoiceName::TenthSeconds, 50, 1, 50, "0,1", "0,2", "5,0"},
        Row{ChoiceName::TPSInert, 19, 1, 19, "0,04", "0,06", "0,40"},
        Row{ChoiceName::IgnitionType, 18, 1, 18, "first", "", "last"},
        Row{ChoiceName::LPGOnRPM, 21, 10000, 4285, "1500", "1600", "3500"},
        Row{ChoiceName::CutOffRPM, 16, 15000, 6000, "1000", "1100", "2500"},
        Row{ChoiceName::LPGOffRPM, 41, 3750, 1875, "4000", "4100", "8000"},
        Row{ChoiceName::AttMax, 256, 0, 255, "+0", "+1", "+255"},
        Row{ChoiceName::AttMin, 256, 0, 255, "-0", "-1", "-255"},
        Row{ChoiceName::Steps, 256, 0, 255, "0", "1", "255"},
        Row{ChoiceName::Percent, 50, 2, 100, "2", "4", "100"},
        Row{ChoiceName::TPSJump, 51, 0, 250, "0,0", "0,1", "5,0"},
        Row{ChoiceName::TPSJumpReversed, 51, 250, 0, "0,0", "0,1", "5,0"},
        Row{ChoiceName::LPGOnTemp, 26, 94, 208, "10", "12", "60"},
    };
    ASSERT_EQ(rows.size(), static_cast<std::size_t>(ChoiceName::Count));
    for (const Row& row : rows) {
        SCOPED_TRACE(row.lastText + std::to_string(row.entries));
        const Choice& choice = ChoiceOf(row.name);
        ASSERT_EQ(choice.entries, row.entries);
        EXPECT_EQ(RawOfEntry(choice, 0), row.firstRaw);
        EXPECT_EQ(RawOfEntry(choice, row.entries - 1), row.lastRaw);
        EXPECT_EQ(TextOfEntry(choice, 0), row.firstText);
        EXPECT_EQ(TextOfEntry(choice, 1), row.secondText);
        EXPECT_EQ(TextOfEntry(choice, row.entries - 1), row.lastText);
        EXPECT_EQ(choice.twoCells, row.firstRaw > 255);
        for (unsigned entry = 0; entry < row.entries; ++entry) {
            EXPECT_EQ(EntryOfRaw(choice, RawOfEntry(choice, entry)), static_cast<int>(entry));
        }
    }
}

TEST(Choices, OddRawValuesSelectByTheirRule) {
    struct Row {
        ChoiceName name;
        unsigned raw;
        int entry;
    };
    const std::array rows{
        Row{ChoiceName::LambdaPoint01, 19, 0},    Row{ChoiceName::LambdaPoint01, 200, 180},
        Row{ChoiceName::LambdaDelay, 0, 0},       Row{ChoiceName::IgnitionType, 19, 18},
        Row{ChoiceName::Percent, 0, 0},           Row{ChoiceName::Percent, 1, 0},
        Row{ChoiceName::Percent, 3, 0},           Row{ChoiceName::Percent, 7, 2},
        Row{ChoiceName::TPSJump, 4, 0},           Row{ChoiceName::TPSJump, 255, 51},
        Row{ChoiceName::TPSJumpReversed, 249, 0}, Row{ChoiceName::TPSJumpReversed, 255, 0},
        Row{ChoiceName::LPGOnTemp, 0, 0},         Row{ChoiceName::LPGOnTemp, 93, 0},
        Row{ChoiceName::LPGOnTemp, 255, 50},      Row{ChoiceName::LPGOnRPM, 0, 0},
        Row{ChoiceName::LPGOnRPM, 65535, 0},      Row{ChoiceName::LPGOnRPM, 7000, 6},
        Row{ChoiceName::LPGOnRPM, 1875, 65},      Row{ChoiceName::LPGOffRPM, 1, 149960},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(EntryOfRaw(ChoiceOf(row.name), row.raw), row.entry)
            << "list " << static_cast<int>(row.name) << " raw " << row.raw;
    }
}

TEST(Choices, ListDependsOnSensorAndFamily) {
    const std::array points{ChoiceName::LambdaPoint01, ChoiceName::LambdaPoint5, ChoiceName::LambdaPoint5,
                            ChoiceName::LambdaPoint5,  ChoiceName::LambdaPoint5, ChoiceName::LambdaPoint16,
                            ChoiceName::LambdaPoint5};
    for (std::size_t type = 0; type < points.size(); ++type) {
        EXPECT_EQ(LambdaPointChoice(static_cast<int>(type)).name, points[type]) << type;
    }
    EXPECT_EQ(TPSJumpChoice(0).name, ChoiceName::TPSJump);
    EXPECT_EQ(TPSJumpChoice(1).name, ChoiceName::TPSJumpReversed);
    EXPECT_EQ(AttJumpChoice(1).name, ChoiceName::Steps);
    EXPECT_EQ(AttJumpChoice(2).name, ChoiceName::Steps);
    EXPECT_EQ(AttJumpChoice(4).name, ChoiceName::Percent);

    FillMirrors();
    EXPECT_EQ(StoredRaw(ChoiceOf(ChoiceName::LPGOnRPM), 21, Family2), 46u + 47u * 256u);
    EXPECT_EQ(StoredRaw(ChoiceOf(ChoiceName::TenthSeconds), ValveOpeningCell(2), 2), 34u);
    EXPECT_EQ(StoredRaw(ChoiceOf(ChoiceName::TenthSeconds), ValveOpeningCell(4), 4), 29u);
}

TEST(Blocks, CellsAreReadBackWhereTheirFamilyKeepsThem) {
    FillMirrors();
    // Cells 5 to 49 as mirrored by FillMirrors, 0 for none.
    constexpr std::array<BYTE, 45> family2{22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32, 42, 43, 5, 44,
                                           45, 46, 47, 48, 49, 50, 51, 52, 53, 33, 0,  54, 55, 34};
    constexpr std::array<BYTE, 45> family4{22, 23, 24, 25, 26, 27, 28, 67, 68, 31, 32, 42, 43, 5,  44,
                                           45, 46, 47, 48, 49, 50, 51, 52, 53, 33, 0,  54, 55, 62, 63,
                                           64, 65, 29, 70, 71, 72, 73, 74, 75, 76, 77, 78, 79, 80, 69};
    for (unsigned i = 0; i < family2.size(); ++i) {
        EXPECT_EQ(CellValue(5 + i, 2), family2[i]) << 5 + i;
        EXPECT_EQ(CellValue(5 + i, 4), family4[i]) << 5 + i;
    }
    for (const unsigned cell : {0u, 4u, 50u, 0xFFFFFFFFu}) {
        EXPECT_EQ(CellMirror(cell, 4).mirror, Mirror::None) << cell;
    }
}

TEST(Blocks, DatesArePackedAcrossTwoBytes) {
    struct Row {
        unsigned day, month, year;
        BYTE dayByte, yearByte;
    };
    for (const Row& row : {Row{0, 0, 0, 0x00, 0x00}, Row{30, 7, 24, 0xFE, 0x18}, Row{0, 8, 24, 0x00, 0x98},
                           Row{30, 11, 62, 0x7E, 0xBE}}) {
        const DateBytes bytes = PackDate(row.day, row.month, row.year);
        EXPECT_EQ(bytes.day, row.dayByte);
        EXPECT_EQ(bytes.year, row.yearByte);
        ParamBlockC[11] = row.dayByte;
        ParamBlockC[12] = row.yearByte | 0x40;
        const Date date = InstallationDate();
        EXPECT_EQ(date.day, static_cast<int>(row.day) + 1);
        EXPECT_EQ(date.month, static_cast<int>(row.month) + 1);
        EXPECT_EQ(date.year, static_cast<int>(row.year) + 2000);
    }
}

TEST(Blocks, FieldsComeFromTheirBits) {
    ParamBlockC[9] = 0xD2;
    ParamBlockC[10] = 0x04;
    EXPECT_EQ(HoursOnGas(), 1234u);
    ParamBlockA[2] = 0x51;
    EXPECT_EQ(LambdaSensorType(), 5);
    EXPECT_EQ(TPSType(), 1);
    const std::set<int> withoutVoltage{2, 3, 6, 7};
    for (int type = 0; type < 16; ++type) {
        EXPECT_EQ(TpsHasVoltage(type), !withoutVoltage.contains(type)) << type;
    }
}
