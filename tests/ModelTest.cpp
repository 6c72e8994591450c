// Value lists and what the main screen shows: bytes in, values out.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "link/Link.h"
#include "model/Blocks.h"
#include "model/Choices.h"
#include "readings/GaugeTables.h"
#include "readings/ReadingsModel.h"
#include "shell/AppState.h"

namespace {

const std::map<std::string, int*> States = {{"family", &ControllerFamily},
                                            {"lost", &LinkLost},
                                            {"gas", &OnGas},
                                            {"learning", &LearnRunning},
                                            {"asked", &LearnRequested}};

// L, A and B are the blocks: "L8=5" sets a byte, "L7+16" adds to it, "L5/2500" puts the period of a speed into two;
// "lost=1" sets a state.
void put(const std::string& order) {
    char block = 0, act = 0;
    unsigned at = 0;
    int value = 0;
    if (std::sscanf(order.c_str(), "%c%u%c%i", &block, &at, &act, &value) != 4) {
        const size_t equals = order.find('=');
        *States.at(order.substr(0, equals)) = std::stoi(order.substr(equals + 1));
        return;
    }
    BYTE* const bytes = block == 'L' ? LiveBlock.data() : block == 'A' ? ParamBlockA.data() : ParamBlockB.data();
    if (act == '/') {
        value = 15000000 / value;
        bytes[at + 1] = static_cast<BYTE>(value >> 8);
    }
    bytes[at] = static_cast<BYTE>(act == '+' ? bytes[at] + value : value);
}

std::string word(unsigned number) {
    return std::to_string(number);
}

template <size_t Size>
std::string word(const std::array<char, Size>& text) {
    return text.data();
}

std::string word(Colour colour) {
    constexpr const char* Names[] = {"black", "white", "silver", "grey",   "pale", "red",
                                     "green", "lime",  "cyan",   "yellow", "navy", "olive"};
    return Names[static_cast<size_t>(colour)];
}

// "-" for unwritten, "b" for blank, the number of the text, red with an "r".
std::string word(const StatusLine& line) {
    const std::string text = line.line == BlankLine ? "b" : std::to_string(line.line);
    return !line.written ? "-" : line.red ? text + "r" : text;
}

std::string word(Fuel fuel) {
    return fuel == Fuel::Unwritten ? "unwritten" : fuel == Fuel::Gas ? "gas" : "petrol";
}

template <typename... Parts>
std::string words(const Parts&... parts) {
    std::string all;
    ((all += (all.empty() ? "" : " ") + word(parts)), ...);
    return all;
}

// What a row looks at.
using M = const ReadingsModel&;
using Seen = std::string (*)(M m);
constexpr Seen Lambda = [](M m) { return words(m.LambdaText, m.LambdaBarPos); };
constexpr Seen Mixture = [](M m) { return words(m.LambdaBarColour); };
constexpr Seen Segment = [](M m) { return words(m.TpsSegment) + (UpperSegmentLit ? "+" : ""); };
constexpr Seen Throttle = [](M m) { return words(m.TpsText) + (m.AttJumpShown ? " jump" : ""); };
constexpr Seen Inertia = [](M m) { return words(m.TpsInertText); };
constexpr Seen Actuator = [](M m) { return words(m.AttText, m.AttBaseText, m.AttBaseMoved); };
constexpr Seen Ranges = [](M m) {
    return words(m.DriveRangeLeft, m.DriveRangeRight, m.IdleRangeLeft, m.IdleRangeRight);
};
constexpr Seen Jump = [](M m) { return words(m.AttJumpPos); };
constexpr Seen Speed = [](M m) { return words(m.RpmText); };
constexpr Seen Limits = [](M m) { return words(m.CutOffText, m.LPGOnText, m.LPGOffText); };
constexpr Seen InForce = [](M m) { return words(m.CutOffColour, m.LPGOffColour, m.LPGOnTempColour); };
constexpr Seen Temperature = [](M m) { return words(m.TempNowText, m.LPGOnTempText); };
// The oscilloscope keeps the speed too; what counts is what the gauge was drawn with.
constexpr Seen Gauge = [](M m) {
    EngineRPM = 5000;
    return words(m.GaugeDueForSpeed, m.GaugeDueForLimit, m.GaugeLimitBefore);
};
constexpr Seen Labels = [](M m) { return words(m.LpgOnLabelColour, m.LpgOffLabelColour, m.CutOffLabelColour); };
constexpr Seen Lamp = [](M m) { return words(m.LearnLamp); };
constexpr Seen LastLine = [](M m) { return words(m.StatusLines[4]); };
// Behind the panel and the fuel box what is kept of gas, learning and a request for it.
constexpr Seen Panel = [](M m) {
    const auto& lines = m.StatusLines;
    return words(lines[0], lines[1], lines[2], lines[3], lines[4], m.FuelBox, OnGas, LearnRunning, LearnRequested);
};

struct Row {
    const char* what;
    Seen seen;
    const char *steps, *expected;
};

// Steps stand between semicolons: what to put, then an evaluation, and all of it again by "*5". The results stand
// between bars, equal neighbours as one.
std::string play(const Row& row) {
    std::vector<std::pair<std::string, int>> results;
    std::istringstream steps(row.steps);
    for (std::string step; std::getline(steps, step, ';');) {
        const size_t star = step.find('*');
        for (int times = star == std::string::npos ? 1 : std::stoi(step.substr(star + 1)); times > 0; --times) {
            std::istringstream orders(step.substr(0, star));
            for (std::string order; orders >> order;) {
                put(order);
            }
            const std::string seen = row.seen(EvaluateReadings());
            if (results.empty() || results.back().first != seen) {
                results.emplace_back(seen, 0);
            }
            ++results.back().second;
        }
    }
    std::string all;
    for (const auto& [seen, times] : results) {
        all += (all.empty() ? "" : " | ") + seen + (times > 1 ? " *" + std::to_string(times) : "");
    }
    return all;
}

// Each row begins with the engine running, faster than the switch-over, and the long form of the panel.
void expectRows(std::initializer_list<Row> rows) {
    for (const Row& row : rows) {
        LiveBlock = {};
        ParamBlockA = {};
        ParamBlockB = {};
        LinkLost = OnGas = LearnRunning = LearnRequested = UpperSegmentLit = BlinkPhase = 0;
        StatusHold = BlinkTicks = EngineRPM = GaugeRPM = GaugeLimitRPM = DrawnAttBase = 0;
        for (const char* order : {"family=2", "gas=1", "learning=1", "L7=0x08", "A5=0x80", "L5/2500", "B5/2000"}) {
            put(order);
        }
        EXPECT_EQ(play(row), row.expected) << row.what;
    }
}

}  // namespace

TEST(Readings, ValuesFollowTheirBytes) {
    expectRows({
        {"Lambda, 0 to 1 V", Lambda, "A2=0x01 L2=255; L2=51; L2=50", "4.99 255 | 0.99 255 | 0.98 250"},
        {"Lambda, sensors 1, 2 and 5", Lambda, "A2=0x11 L2=127; A2=0x21 L2=255; A2=0x51 L2=60",
         "2.48 127 | 4.99 255 | 1.17 60"},
        {"Lambda, 5 to 0 V", Lambda, "A2=0x31 L2=0; A2=0x41 L2=255", "5.00 0 | 0.00 255"},
        {"mixture", Mixture, "L7=0xF8; L7+1 *7", "yellow | green | yellow *2 | red | yellow *3"},
        {"throttle segment", Segment, "L7=0; L7+16 *15", "0 | 1 | 2+ | 0 | 3+ | 0 *3 | 4+ | 0 *7"},
        {"throttle by sensor", Throttle, "L1=127 A1=0x08 A2=0x50 L7=0xE0; A2+1 *15",
         "2.48 jump | 2.51 jump | _.__ *2 | 2.48 jump *2 |  ON *2 | 2.48 jump *8"},
        {"throttle closed", Throttle, "L1=127 A1=0xF7 A2=0x50 L7=0x10; A2+1 *15",
         "2.48 | 2.51 | _.__ *2 | 2.48 *2 | OFF *2 | 2.48 *8"},
        {"inertia", Inertia, "A12=0; A12=13; A12=14; A12=255", "0.02 | 0.28 | 0.30 | 5.12"},
        {"actuator", Actuator, "L3=7 L4=40; *1", "007 040 1 | 007 040 0"},
        {"drive and idle range", Ranges, "L4=0; L4=10 B1=255 B2=255 B13=3 B14=4; L4=200 B1=20 B2=30 B13=255 B14=255",
         "161 161 161 161 | 161 418 167 174 | 331 381 161 418"},
        {"jump", Jump, "L4=200 B4=50; family=4; L4=99 B4=33", "50 | 255 | 131"},
        {"stopped", Speed, "L5=0 L6=0; L5=0x12 L6=0xFF", "0000 *2"},
        {"speed by 50", Speed, "L5/1500; L5=0x58 L6=0x1B; L5=0x94; L5=0x6C L6=0x26; L5=0x11 L6=0xD5",
         "1500 | 2150 | 2100 | 1500 | 0250"},
        {"speed of four digits", Speed, "L5/8000; L5=0xBF L6=0x04; L5=1 L6=0", "8000 | 1235 | 1500"},
        {"limits", Limits, "B8/1200 B5/2300 B11/6500", "1200 2300 6500"},
        {"limits in force", InForce, "A1=0x9D; A1=0x20; A1=0x40; A1=0x02",
         "grey grey grey | black grey grey | grey black grey | grey grey black"},
        {"cold", Temperature, "L9=0; L9=69 A11=80; L9=70 A11=100; L9=100", "000 00 | 000 05 | 001 12 | 012 12"},
        {"warm", Temperature, "L9=199; L9=200; L9=246 A11=246; L9=255 A11=255", "051 00 *2 | 100 10 | 110 10"},
        {"gauge", Gauge, "L5=0 L6=0; L5/3000 B11/6500; A1=0x40; *1; L5/3050", "0 0 0 | 1 1 0 | 0 0 6500 *2 | 1 0 6500"},
        {"labels, with the fuel of before", Labels, "gas=0 L8=0x01; *1; L8=0x04; L8=0x08",
         "black black black | green black black | green red black | black black red"},
        {"lamp, throttle closed", Lamp, "L8=0x02 *6", "yellow *6"},
        {"lamp, throttle open", Lamp, "L7=0x48 L8=0x02 *6", "olive | yellow *2 | olive *2 | yellow"},
        // Without the long form nobody tells that learning has ended.
        {"lamp, short form", Lamp, "L7=0x48 A5=0 *6", "olive | yellow *2 | olive *2 | yellow"},
        {"lamp, no learning", Lamp, "L7=0x48 *6", "olive *6"},
    });
}

TEST(Readings, StatusPanelRowByRow) {
    expectRows({
        {"lost wins", Panel, "lost=1 family=3 L7=0 L8=0xFF asked=1", "30r b 31 b b petrol 0 1 1"},
        {"unknown family", Panel, "family=3 L7=0 asked=1", "29r b b b b unwritten 1 1 1"},
        {"engine off", Panel, "family=4 L7=0xF7 L8=0x01 asked=1", "12 b 28r b b petrol 0 1 1"},
        {"short, gas", Panel, "A5=0x7F L8=0x01 asked=1", "13 b b b b gas 1 1 1"},
        {"short, petrol", Panel, "A5=0 L8=0xFE asked=1", "12 b 27r b b petrol 0 1 1"},
        {"learning", Panel, "family=4 L7=0x28 L8=0x03 asked=1", "13 - b - 16 gas 1 1 1"},
        {"learning, throttle closed", Panel, "L8=0x06", "12 - b - 17r petrol 0 1 0"},
        {"result failed", Panel, "L8=0xE1 asked=1", "13 b b b 18r gas 1 0 0"},
        {"result pending", Panel, "L8=0xF1 asked=1", "13 b b b 19r gas 1 0 1"},
        {"result done", Panel, "L8=0xD1 asked=1", "13 b b b 20r gas 1 0 0"},
        {"result of another's learning", Panel, "L8=0xD1", "13 b b b - gas 1 0 0"},
        {"off, warm", Panel, "L8=0x84", "12 - 21r b - petrol 0 0 0"},
        {"off, cold", Panel, "L8=0x44", "12 - 21r 22r - petrol 0 0 0"},
        {"result while off", Panel, "L8=0x94 asked=1", "12 - 21r b 20r petrol 0 0 0"},
        {"cold", Panel, "L8=0x40; L8=0x00", "12 - 24 22r - petrol 0 0 0 *2"},
        {"speed too high", Panel, "L8=0x80 A1=0xEF", "12 - 24 26r - petrol 0 0 0"},
        {"speed, rising choice", Panel, "L8=0x80 A1=0x10", "12 - 24 25r - petrol 0 0 0"},
        {"at the switch-over speed", Panel, "L8=0x80 L5/2000", "12 - 24 25r - petrol 0 0 0"},
        {"cut-off", Panel, "L8=0xC9", "13 b - b 23r gas 1 0 0"},
        {"ready", Panel, "L8=0xC1", "13 b b b - gas 1 0 0"},
        {"a result is held", LastLine, "L8=0xC1 *44; L8=0xD1 asked=1; *59; *3", "- *44 | 20r | - *59 | b *3"},
        {"the cut-off is held", LastLine, "L8=0xC1 *5; L8=0xC9; L8=0xC1 *55; *1", "- *5 | 23r | - *55 | b"},
    });
}

TEST(Readings, GaugePointsLieOnTheirArcs) {
    BuildGaugeTables();
    const std::map<size_t, std::pair<int, int>> tips = {{0, {30, 187}},  {20, {15, 130}},   {50, {49, 48}},
                                                        {80, {130, 15}}, {140, {245, 130}}, {160, {230, 187}}};
    for (const auto& [i, tip] : tips) {
        EXPECT_EQ(std::pair(NeedleTipX[i], NeedleTipY[i]), tip) << i;
    }
    for (size_t i = 0; i < GaugePoints; ++i) {
        EXPECT_TRUE(NeedleTipX[i] + NeedleTipX[160 - i] == 260 && NeedleTipY[i] == NeedleTipY[160 - i]) << i;
    }
    // The others have radii of their own: on the way to the top, and at the top.
    EXPECT_EQ((std::array{NeedleBaseX[50], TickOuterX[50], LongTickX[1], ShortTickX[5]}),
              (std::array{116, 42, 20, 15}));
    EXPECT_EQ((std::array{NeedleBaseY[80], TickOuterY[80], LongTickY[4], ShortTickY[20]}),
              (std::array{110, 6, 20, 15}));
    put("A1=0x40");
    for (unsigned i = 0; i < ShortTicks; ++i) {
        EXPECT_EQ(GaugeTickRed(i, ShortTickRpm, 6500), i >= 33) << i;
        EXPECT_EQ(GaugeTickRed(i, LongTickRpm, 6500), i >= 7) << i;
    }
    put("A1=0xBF");
    EXPECT_FALSE(GaugeTickRed(40, ShortTickRpm, 6500));
    EXPECT_EQ((std::array{GaugeIndex(0), GaugeIndex(1000), GaugeIndex(7950), GaugeIndex(15000000)}),
              (std::array{0u, 20u, 159u, 160u}));
}

// What the entries are worth on the wire is proved on the pages.
TEST(Choices, EveryListHasItsTexts) {
    std::strcpy(LangTable[64].data(), "first");
    std::strcpy(LangTable[81].data(), "last");
    // The first two and the last one of each list, in the order of their names.
    constexpr const char* Expected[] = {
        "0,40 0,42 0,60", "1,00 1,02 1,30", "2:00 2:02 3:00", "0:05 0:10 21:15", "0,025 0,050 6,375", "0,1 0,2 5,0",
        "0,04 0,06 0,40", "first  last",    "1500 1600 3500", "1000 1100 2500",  "4000 4100 8000",    "+0 +1 +255",
        "-0 -1 -255",     "0 1 255",        "2 4 100",        "0,0 0,1 5,0",     "0,0 0,1 5,0",       "10 12 60",
    };
    ASSERT_EQ(std::size(Expected), static_cast<size_t>(ChoiceName::Count));
    for (size_t name = 0; name < std::size(Expected); ++name) {
        const Choice& choice = ChoiceOf(static_cast<ChoiceName>(name));
        const auto text = [&](unsigned entry) {
            std::array<char, LangLineSize> entryText{};
            EntryText(choice, entry, entryText);
            return std::string(entryText.data());
        };
        EXPECT_EQ(text(0) + " " + text(1) + " " + text(choice.entries - 1), Expected[name]);
    }
}
