#include "readings/ReadingsModel.h"
#include "shell/AppState.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <map>
#include <string>
#include <tuple>

#include "link/Link.h"
#include "model/Blocks.h"
#include "readings/GaugeTables.h"

namespace {

class Readings : public testing::Test {
protected:
    Readings() {
        LiveBlock = {};
        ParamBlockA = {};
        ParamBlockB = {};
        LinkLost = 0;
        ControllerFamily = 2;
        OnGas = LearnRunning = LearnRequested = UpperSegmentLit = BlinkPhase = 0;
        StatusHold = BlinkTicks = EngineRPM = GaugeRPM = GaugeLimitRPM = DrawnAttBase = 0;
    }
};

void PutPeriod(BYTE* low, unsigned period) {
    low[0] = static_cast<BYTE>(period & 0xFF);
    low[1] = static_cast<BYTE>(period >> 8);
}

void PutEngineSpeed(unsigned rpm) {
    PutPeriod(&LiveBlock[5], 15000000 / rpm);
}

void PutSpeed(unsigned byte, unsigned rpm) {
    PutPeriod(&ParamBlockB[byte], 15000000 / rpm);
}

// A status line as "-" for unwritten, "b" for blank, the number of its text, red with an "r".
std::string Shown(const StatusLine& line) {
    const std::string text = line.line == BlankLine ? "b" : std::to_string(line.line);
    return !line.written ? "-" : line.red ? text + "r" : text;
}

std::string Shown(const ReadingsModel& model) {
    std::string panel;
    for (const StatusLine& line : model.StatusLines) {
        panel += Shown(line) + " ";
    }
    const Fuel fuel = model.FuelBox;
    return panel + (fuel == Fuel::Unwritten ? "unwritten" : fuel == Fuel::Gas ? "gas" : "petrol");
}

}  // namespace

TEST_F(Readings, LambdaBySensorType) {
    using Row = std::tuple<int, BYTE, const char*, int>;
    for (const auto& [sensor, raw, text, bar] :
         {Row{0, 255, "4.99", 255}, Row{0, 51, "0.99", 255}, Row{0, 50, "0.98", 250}, Row{1, 127, "2.48", 127},
          Row{2, 255, "4.99", 255}, Row{3, 0, "5.00", 0}, Row{4, 255, "0.00", 255}, Row{5, 60, "1.17", 60}}) {
        ParamBlockA[2] = static_cast<BYTE>(sensor << 4 | 1);
        LiveBlock[2] = raw;
        const ReadingsModel model = EvaluateReadings();
        EXPECT_STREQ(model.LambdaText.data(), text) << sensor;
        EXPECT_EQ(model.LambdaBarPos, bar) << sensor;
    }
    const std::array colours{Colour::Yellow, Colour::DarkGreen, Colour::Yellow, Colour::Yellow,
                             Colour::Red,    Colour::Yellow,    Colour::Yellow, Colour::Yellow};
    for (std::size_t mixture = 0; mixture < colours.size(); ++mixture) {
        LiveBlock[7] = static_cast<BYTE>(0xF8 | mixture);
        EXPECT_EQ(EvaluateReadings().LambdaBarColour, colours[mixture]) << mixture;
    }
}

TEST_F(Readings, ThrottleAndJumpByNibbleAndType) {
    for (int nibble = 0; nibble < 16; ++nibble) {
        LiveBlock[7] = static_cast<BYTE>(nibble << 4);
        const int segment = nibble == 1 ? 1 : nibble == 2 ? 2 : nibble == 4 ? 3 : nibble == 8 ? 4 : 0;
        EXPECT_EQ(EvaluateReadings().TpsSegment, segment) << nibble;
        EXPECT_EQ(UpperSegmentLit, segment >= 2 ? 1 : 0) << nibble;
    }
    LiveBlock[1] = 127;
    ParamBlockA[1] = 0x08;
    for (int type = 0; type < 16; ++type) {
        ParamBlockA[2] = static_cast<BYTE>(0x50 | type);
        const bool none = type == 2 || type == 3;
        const bool isSwitch = type == 6 || type == 7;
        LiveBlock[7] = 0xE0;
        const char* clear = none ? "_.__" : isSwitch ? " ON" : type == 1 ? "2.51" : "2.48";
        EXPECT_STREQ(EvaluateReadings().TpsText.data(), clear) << type;
        LiveBlock[7] = 0x10;
        EXPECT_STREQ(EvaluateReadings().TpsText.data(), isSwitch ? "OFF" : clear) << type;
        EXPECT_EQ(EvaluateReadings().AttJumpShown, !none && !isSwitch) << type;
    }
    ParamBlockA[1] = 0xF7;
    EXPECT_FALSE(EvaluateReadings().AttJumpShown);
    for (const auto& [raw, text] : {std::pair{0, "0.02"}, {13, "0.28"}, {255, "5.12"}}) {
        ParamBlockA[12] = static_cast<BYTE>(raw);
        EXPECT_STREQ(EvaluateReadings().TpsInertText.data(), text) << raw;
    }
}

TEST_F(Readings, ActuatorRangesAndJumpStayOnTheScale) {
    // Family; base, both drive and both idle ranges and the jump; what they are on the scale.
    using Row = std::tuple<int, std::array<BYTE, 6>, std::array<int, 5>>;
    for (const auto& [family, bytes, places] : {Row{2, {0, 0, 0, 0, 0, 0}, {161, 161, 161, 161, 0}},
                                                Row{2, {10, 255, 255, 3, 4, 50}, {161, 418, 167, 174, 50}},
                                                Row{4, {200, 20, 30, 255, 255, 50}, {331, 381, 161, 418, 255}},
                                                Row{4, {99, 0, 0, 0, 0, 33}, {260, 260, 260, 260, 131}}}) {
        ControllerFamily = family;
        std::tie(LiveBlock[4], ParamBlockB[1], ParamBlockB[2], ParamBlockB[13], ParamBlockB[14], ParamBlockB[4]) =
            std::tuple_cat(bytes);
        const ReadingsModel model = EvaluateReadings();
        const std::array got{model.DriveRangeLeft, model.DriveRangeRight, model.IdleRangeLeft, model.IdleRangeRight,
                             model.AttJumpPos};
        EXPECT_EQ(got, places);
    }
    LiveBlock[3] = 7;
    LiveBlock[4] = 40;
    const ReadingsModel moved = EvaluateReadings();
    EXPECT_STREQ(moved.AttText.data(), "007");
    EXPECT_STREQ(moved.AttBaseText.data(), "040");
    EXPECT_TRUE(moved.AttBaseMoved);
    EXPECT_FALSE(EvaluateReadings().AttBaseMoved);
}

TEST_F(Readings, SpeedsAndTemperaturesAsTexts) {
    for (const auto& [period, text] :
         {std::pair{0u, "0000"}, {54545u, "0250"}, {1215u, "1235"}, {1u, "1500"}, {0xFF12u, "0000"}}) {
        PutPeriod(&LiveBlock[5], period);
        EXPECT_STREQ(EvaluateReadings().RpmText.data(), text) << period;
    }
    PutSpeed(8, 1200);
    PutSpeed(5, 2300);
    PutSpeed(11, 6500);
    LiveBlock[9] = 255;
    ParamBlockA[11] = 255;
    const ReadingsModel off = EvaluateReadings();
    EXPECT_STREQ(off.CutOffText.data(), "1200");
    EXPECT_STREQ(off.LPGOnText.data(), "2300");
    EXPECT_STREQ(off.LPGOffText.data(), "6500");
    EXPECT_STREQ(off.TempNowText.data(), "110");
    EXPECT_STREQ(off.LPGOnTempText.data(), "10");
    for (const int options : {0x9D, 0x20, 0x40, 0x02}) {
        const auto blackFor = [=](int option) { return options == option ? Colour::Black : Colour::Grey; };
        ParamBlockA[1] = static_cast<BYTE>(options);
        const ReadingsModel model = EvaluateReadings();
        EXPECT_EQ(model.CutOffColour, blackFor(0x20)) << options;
        EXPECT_EQ(model.LPGOffColour, blackFor(0x40)) << options;
        EXPECT_EQ(model.LPGOnTempColour, blackFor(0x02)) << options;
    }
}

TEST_F(Readings, GaugeIsRedrawnForWhatItShows) {
    using Due = std::tuple<bool, bool, unsigned>;
    const auto due = [] {
        const ReadingsModel model = EvaluateReadings();
        return Due(model.GaugeDueForSpeed, model.GaugeDueForLimit, model.GaugeLimitBefore);
    };
    EXPECT_EQ(due(), Due(false, false, 0));
    PutEngineSpeed(3000);
    PutSpeed(11, 6500);
    EXPECT_EQ(due(), Due(true, true, 0));
    ParamBlockA[1] = 0x40;
    EXPECT_EQ(due(), Due(false, false, 6500));
    // The oscilloscope keeps EngineRPM too; what counts is what the gauge was drawn with.
    EngineRPM = 5000;
    EXPECT_EQ(due(), Due(false, false, 6500));
    PutEngineSpeed(3050);
    EXPECT_EQ(due(), Due(true, false, 6500));

    for (unsigned i = 0; i < ShortTicks; ++i) {
        EXPECT_EQ(GaugeTickRed(i, LongTickRpm, 6500), i >= 7) << i;
        EXPECT_EQ(GaugeTickRed(i, ShortTickRpm, 6500), i >= 33) << i;
    }
    ParamBlockA[1] = 0xBF;
    EXPECT_FALSE(GaugeTickRed(40, ShortTickRpm, 6500));
}

TEST_F(Readings, LabelsTakeThePreviousFuelAndThisByte) {
    LiveBlock[7] = 0x08;
    using Labels = std::array<Colour, 3>;  // gas on, gas off, cut-off
    for (const auto& [state, colours] : {std::pair{0x01, Labels{Colour::Black, Colour::Black, Colour::Black}},
                                         {0x01, {Colour::DarkGreen, Colour::Black, Colour::Black}},
                                         {0x04, {Colour::DarkGreen, Colour::Red, Colour::Black}},
                                         {0x08, {Colour::Black, Colour::Black, Colour::Red}}}) {
        LiveBlock[8] = static_cast<BYTE>(state);
        const ReadingsModel model = EvaluateReadings();
        EXPECT_EQ((Labels{model.LpgOnLabelColour, model.LpgOffLabelColour, model.CutOffLabelColour}), colours) << state;
    }
}

TEST_F(Readings, StatusPanelRowByRow) {
    struct Row {
        const char* name;
        int lost, family;
        BYTE state, gas, emul, options;
        int requested;
        const char* panel;
        std::array<int, 3> after;  // OnGas, LearnRunning and LearnRequested; the first two were 1
    };
    constexpr BYTE on = 0x08;
    constexpr BYTE upper = 0x28;
    constexpr BYTE full = 0x80;
    // The speed is 2500 RPM against a switch-over at 2000.
    const std::array rows{
        Row{"lost wins", 1, 3, 0, 0xFF, full, 0, 1, "30r b 31 b b petrol", {0, 1, 1}},
        Row{"unknown family", 0, 3, 0, 0, full, 0, 1, "29r b b b b unwritten", {1, 1, 1}},
        Row{"engine off", 0, 4, 0xF7, 1, full, 0, 1, "12 b 28r b b petrol", {0, 1, 1}},
        Row{"short, gas", 0, 2, on, 1, 0x7F, 0, 1, "13 b b b b gas", {1, 1, 1}},
        Row{"short, petrol", 0, 2, on, 0xFE, 0, 0, 1, "12 b 27r b b petrol", {0, 1, 1}},
        Row{"learning", 0, 4, upper, 0x03, full, 0, 1, "13 - b - 16 gas", {1, 1, 1}},
        Row{"learning, throttle closed", 0, 2, on, 0x06, full, 0, 0, "12 - b - 17r petrol", {0, 1, 0}},
        Row{"result failed", 0, 2, on, 0xE1, full, 0, 1, "13 b b b 18r gas", {1, 0, 0}},
        Row{"result pending", 0, 2, on, 0xF1, full, 0, 1, "13 b b b 19r gas", {1, 0, 1}},
        Row{"result done", 0, 2, on, 0xD1, full, 0, 1, "13 b b b 20r gas", {1, 0, 0}},
        Row{"result of another's learning", 0, 2, on, 0xD1, full, 0, 0, "13 b b b - gas", {1, 0, 0}},
        Row{"off, warm", 0, 2, on, 0x84, full, 0, 0, "12 - 21r b - petrol", {0, 0, 0}},
        Row{"off, cold", 0, 2, on, 0x44, full, 0, 0, "12 - 21r 22r - petrol", {0, 0, 0}},
        Row{"result while off", 0, 2, on, 0x94, full, 0, 1, "12 - 21r b 20r petrol", {0, 0, 0}},
        Row{"cold", 0, 2, on, 0x40, full, 0, 0, "12 - 24 22r - petrol", {0, 0, 0}},
        Row{"cold and slow", 0, 2, on, 0x00, full, 0, 0, "12 - 24 22r - petrol", {0, 0, 0}},
        Row{"speed too high", 0, 2, on, 0x80, full, 0xEF, 0, "12 - 24 26r - petrol", {0, 0, 0}},
        Row{"speed, rising choice", 0, 2, on, 0x80, full, 0x10, 0, "12 - 24 25r - petrol", {0, 0, 0}},
        Row{"cut-off", 0, 2, on, 0xC9, full, 0, 0, "13 b - b 23r gas", {1, 0, 0}},
        Row{"ready", 0, 2, on, 0xC1, full, 0, 0, "13 b b b - gas", {1, 0, 0}},
    };
    PutEngineSpeed(2500);
    PutSpeed(5, 2000);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        LinkLost = row.lost;
        ControllerFamily = row.family;
        LiveBlock[7] = row.state;
        LiveBlock[8] = row.gas;
        ParamBlockA[5] = row.emul;
        ParamBlockA[1] = row.options;
        LearnRequested = row.requested;
        OnGas = LearnRunning = 1;
        StatusHold = 0;
        EXPECT_EQ(Shown(EvaluateReadings()), row.panel);
        EXPECT_EQ((std::array{OnGas, LearnRunning, LearnRequested}), row.after);
    }

    LiveBlock[8] = 0x80;
    ParamBlockA[1] = 0;
    PutEngineSpeed(2000);
    EXPECT_EQ(Shown(EvaluateReadings()), "12 - 24 25r - petrol") << "at the switch-over speed";
}

TEST_F(Readings, LastLineIsHeldForSixtyEvaluations) {
    LiveBlock[7] = 0x08;
    LiveBlock[8] = 0xD1;
    ParamBlockA[5] = 0x80;
    StatusHold = 44;
    LearnRequested = 1;
    EXPECT_EQ(Shown(EvaluateReadings().StatusLines[4]), "20r");
    EXPECT_EQ(StatusHold, 1u);
    for (int i = 2; i <= 60; ++i) {
        ASSERT_EQ(Shown(EvaluateReadings().StatusLines[4]), "-") << i;
    }
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(Shown(EvaluateReadings().StatusLines[4]), "b");
        EXPECT_EQ(StatusHold, 60u);
    }
    StatusHold = 5;
    LiveBlock[8] = 0xC9;
    EvaluateReadings();
    EXPECT_EQ(StatusHold, 5u);
}

TEST_F(Readings, LampBlinksOnEverySecondEvaluationOfLearning) {
    const auto lamps = [](BYTE state, BYTE emul, BYTE gas) {
        LiveBlock[7] = state;
        LiveBlock[8] = gas;
        ParamBlockA[5] = emul;
        BlinkPhase = 0;
        std::string seen;
        while (seen.size() < 6) {
            const Colour lamp = EvaluateReadings().LearnLamp;
            seen += lamp == Colour::Yellow ? 'Y' : lamp == Colour::Olive ? '-' : '?';
        }
        return seen;
    };
    EXPECT_EQ(lamps(0x08, 0x80, 0x02), "YYYYYY");
    EXPECT_EQ(lamps(0x48, 0x80, 0x02), "-YY--Y");
    EXPECT_EQ(lamps(0x48, 0, 0), "-YY--Y") << "without the long form nobody tells that learning has ended";
    EXPECT_EQ(lamps(0x48, 0x80, 0), "------");
}

TEST_F(Readings, EveryByteHasAResultThatFits) {
    for (int value = 0; value < 256; ++value) {
        SCOPED_TRACE(value);
        ControllerFamily = value % 8 + 1;
        LiveBlock.fill(static_cast<BYTE>(value));
        ParamBlockA.fill(static_cast<BYTE>(255 - value));
        ParamBlockB.fill(static_cast<BYTE>(value));
        const ReadingsModel model = EvaluateReadings();
        std::string lengths;
        for (const char* text : {model.LambdaText.data(), model.TpsText.data(), model.AttText.data(),
                                 model.RpmText.data(), model.TempNowText.data(), model.LPGOnTempText.data()}) {
            lengths += std::to_string(std::strlen(text));
        }
        EXPECT_EQ(lengths, model.TpsType == 6 || model.TpsType == 7 ? "433432" : "443432");
    }
}

TEST_F(Readings, GaugePointsLieOnTheirArcs) {
    BuildGaugeTables();
    // By index: needle tip, outer tick end, inner end of the long tick, needle base.
    const std::map<std::size_t, std::array<int, 8>> rows = {{0, {30, 187, 23, 192, 35, 185, 113, 140}},
                                                            {20, {15, 130, 6, 130, 20, 130, 110, 130}},
                                                            {80, {130, 15, 130, 6, 130, 20, 130, 110}},
                                                            {140, {245, 130, 254, 130, 240, 130, 150, 130}}};
    for (const auto& [i, points] : rows) {
        const std::array<int, 8> got{NeedleTipX[i],     NeedleTipY[i],     TickOuterX[i],  TickOuterY[i],
                                     LongTickX[i / 20], LongTickY[i / 20], NeedleBaseX[i], NeedleBaseY[i]};
        EXPECT_EQ(got, points) << i;
    }
    EXPECT_EQ((std::array{NeedleTipX[50], NeedleTipY[50], TickOuterX[50], TickOuterY[50]}),
              (std::array{49, 48, 42, 43}));
    for (std::size_t i = 0; i < GaugePoints; ++i) {
        for (const auto& [x, y] :
             {std::pair{&NeedleTipX, &NeedleTipY}, {&NeedleBaseX, &NeedleBaseY}, {&TickOuterX, &TickOuterY}}) {
            EXPECT_EQ((*x)[i] + (*x)[160 - i], 260) << i;
            EXPECT_EQ((*y)[i], (*y)[160 - i]) << i;
        }
    }
    for (std::size_t i = 0; i < ShortTicks; ++i) {
        EXPECT_TRUE(ShortTickX[i] == NeedleTipX[4 * i] && ShortTickY[i] == NeedleTipY[4 * i]) << i;
    }
    for (const auto& [rpm, index] : {std::pair{0u, 0u}, {1000u, 20u}, {7950u, 159u}, {15000000u, 160u}}) {
        EXPECT_EQ(GaugeIndex(rpm), index) << rpm;
    }
}
