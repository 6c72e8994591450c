// What the Readings page shows, worked out from the mirrors without drawing anything. A new reading gets its field
// here, its rule in ReadingsModel.cpp and its place on the page in ReadingsDrawing.cpp.
#pragma once

#include <array>

#include "drawing/Palette.h"
#include "platform/Win32.h"

// Kept from one evaluation to the next; all 0 at process start, living to exit. EvaluateReadings writes them, unless a
// line says otherwise; flags are 0 or 1.
//
// The status panel's last reading of the running-on-gas and learning bits.
extern int OnGas;
extern int LearnRunning;
// A press of the learning button whose result is still to be told; the press sets it.
extern int LearnRequested;
// Evaluations, 0 to StatusHoldLimit, since something was put on the last status line; a press that stops learning
// restarts it as well.
constexpr unsigned StatusHoldLimit = 60;
extern unsigned StatusHold;
// The lit throttle segment is 2, 3 or 4.
extern int UpperSegmentLit;
// The learning lamp's blink: evaluations in the phase, and the phase.
extern unsigned BlinkTicks;
extern int BlinkPhase;
// Speed for which an evaluation last had the gauge redrawn, and the LPG-off speed as last seen, in RPM.
extern unsigned GaugeRPM;
extern unsigned GaugeLimitRPM;
// The base position when its marker was last drawn.
extern unsigned DrawnAttBase;

// A line of the status panel: left as it stands, or written anew with a language line or blank.
constexpr int BlankLine = -1;
struct StatusLine {
    bool written;
    int line;
    bool red;
};
constexpr unsigned StatusLineCount = 5;

enum class Fuel : BYTE {
    // The box stays as it is.
    Unwritten,
    Petrol,
    Gas,
};

// The actuator's scale in design units: position n lies at n + ActuatorLeft, the ranges end at ActuatorRight.
constexpr int ActuatorLeft = 161;
constexpr int ActuatorRight = 418;

// Texts are cut to what is shown of them.
struct ReadingsModel {
    std::array<char, 5> LambdaText;
    // Left end of the moving block, 0 to 255.
    int LambdaBarPos;
    Colour LambdaBarColour;

    // 1 to 4, or 0 for none lit.
    int TpsSegment;
    // Sensor type 0 to 15, and its voltage, switch state or nothing.
    int TpsType;
    std::array<char, 5> TpsText;
    std::array<char, 5> TpsInertText;

    std::array<char, 4> AttText;
    // Positions in steps, 0 to 255.
    int AttBar;
    int AttBase;
    std::array<char, 4> AttBaseText;
    // The base marker has moved: its strip is to be cleared.
    bool AttBaseMoved;
    // Design x, ActuatorLeft to ActuatorRight.
    int IdleRangeLeft;
    int IdleRangeRight;
    int DriveRangeLeft;
    int DriveRangeRight;
    // In steps, 0 to 255.
    int AttJumpPos;
    bool AttJumpShown;

    std::array<char, 5> RpmText;
    std::array<char, 5> CutOffText;
    Colour CutOffColour;
    std::array<char, 5> LPGOnText;
    std::array<char, 5> LPGOffText;
    Colour LPGOffColour;
    // The gauge is to be redrawn after the speed, with the limit that was known then, and again after the limits, with
    // GaugeLimitRPM.
    bool GaugeDueForSpeed;
    unsigned GaugeLimitBefore;
    bool GaugeDueForLimit;

    Colour LpgOnLabelColour;
    Colour LpgOffLabelColour;
    Colour CutOffLabelColour;

    std::array<char, 4> TempNowText;
    std::array<char, 3> LPGOnTempText;
    Colour LPGOnTempColour;

    std::array<StatusLine, StatusLineCount> StatusLines;
    Fuel FuelBox;
    Colour LearnLamp;
};

// One evaluation of the mirrors and the link's state: works out every field and carries the state above on.
ReadingsModel EvaluateReadings();

// Whether tick i of the gauge's scale is red: above the LPG-off speed while that limit is in force. Speeds in RPM.
bool GaugeTickRed(unsigned tick, unsigned rpmPerTick, unsigned limitRpm);
