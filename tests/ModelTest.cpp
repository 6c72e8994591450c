#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <map>
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
    const std::map<unsigned, int> shown = {{0, 0},    {68, 0},   {69, 0},    {70, 1},   {100, 12},
                                           {199, 51}, {200, 51}, {246, 100}, {255, 110}};
    for (const auto& [raw, degrees] : shown) {
        EXPECT_EQ(RawToTemperature(raw), degrees) << raw;
    }
    const std::map<int, int> sent = {{0, 68},   {10, 94},  {20, 120}, {50, 197},
                                     {51, 200}, {52, 201}, {60, 208}, {100, 246}};
    for (const auto& [degrees, raw] : sent) {
        EXPECT_EQ(TemperatureToRaw(degrees), raw) << degrees;
    }
    const std::map<unsigned, const char*> texts = {{0, "00"}, {80, "05"}, {100, "12"}, {246, "100"}, {255, "100"}};
    for (const auto& [raw, text] : texts) {
        EXPECT_STREQ(TemperatureText(raw), text) << raw;
    }
}

TEST(Codecs, SpeedsArePeriodsInStepsOf50) {
    const std::map<unsigned, unsigned> speeds = {{0, 0},       {1, 15000000}, {1875, 8000}, {10000, 1500},
                                                 {65535, 250}, {7000, 2150},  {7060, 2100}};
    for (const auto& [period, rpm] : speeds) {
        EXPECT_EQ(PeriodToRPM(HighByte(period), LowByte(period)), rpm) << period;
    }
    EXPECT_EQ(RPMToPeriod(1500), 10000u);
    EXPECT_EQ(RPMToPeriod(8000), 1875u);
    EXPECT_EQ(HighByte(0x12345), 0x23);
}

TEST(Codecs, RealTextsAreCutNotRounded) {
    EXPECT_EQ(Real(SignalVolts(127), 4), "2.48");
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

// What the entries are worth on the wire is proved on the pages.
TEST(Choices, EveryListHasItsTexts) {
    std::strcpy(LangTable[64].data(), "first");
    std::strcpy(LangTable[81].data(), "last");
    const std::map<ChoiceName, std::array<const char*, 3>> texts = {
        {ChoiceName::LambdaPoint01, {"0,40", "0,42", "0,60"}},
        {ChoiceName::LambdaPoint16, {"1,00", "1,02", "1,30"}},
        {ChoiceName::LambdaPoint5, {"2:00", "2:02", "3:00"}},
        {ChoiceName::LambdaDelay, {"0:05", "0:10", "21:15"}},
        {ChoiceName::EmulationTime, {"0,025", "0,050", "6,375"}},
        {ChoiceName::TenthSeconds, {"0,1", "0,2", "5,0"}},
        {ChoiceName::TPSInert, {"0,04", "0,06", "0,40"}},
        {ChoiceName::IgnitionType, {"first", "", "last"}},
        {ChoiceName::LPGOnRPM, {"1500", "1600", "3500"}},
        {ChoiceName::CutOffRPM, {"1000", "1100", "2500"}},
        {ChoiceName::LPGOffRPM, {"4000", "4100", "8000"}},
        {ChoiceName::AttMax, {"+0", "+1", "+255"}},
        {ChoiceName::AttMin, {"-0", "-1", "-255"}},
        {ChoiceName::Steps, {"0", "1", "255"}},
        {ChoiceName::Percent, {"2", "4", "100"}},
        {ChoiceName::TPSJump, {"0,0", "0,1", "5,0"}},
        {ChoiceName::TPSJumpReversed, {"0,0", "0,1", "5,0"}},
        {ChoiceName::LPGOnTemp, {"10", "12", "60"}},
    };
    ASSERT_EQ(texts.size(), static_cast<std::size_t>(ChoiceName::Count));
    for (const auto& [name, expected] : texts) {
        const Choice& choice = ChoiceOf(name);
        EXPECT_EQ(TextOfEntry(choice, 0), expected[0]);
        EXPECT_EQ(TextOfEntry(choice, 1), expected[1]) << expected[0];
        EXPECT_EQ(TextOfEntry(choice, choice.entries - 1), expected[2]);
    }
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
    for (unsigned index = 0; index < 63 * 12 * 31; ++index) {
        const unsigned day = index % 31, month = index / 31 % 12, year = index / (31 * 12);
        const DateBytes bytes = PackDate(day, month, year);
        const Date date = UnpackDate(bytes);
        EXPECT_TRUE(date.day == static_cast<int>(day) + 1 && date.month == static_cast<int>(month) + 1 &&
                    date.year == static_cast<int>(year) + 2000 && (bytes.year & 0x40) == 0)
            << index;
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
