// The dictionary of the controller's blocks: the mirrors and the name of every byte and bit field in them. Any file may
// include this header. A newly learned byte or bit gets its name here; the cells that are written stand in
// model/Cells.h, and how a raw value reads in model/Codecs.h.
#pragma once

#include <array>

#include "platform/Win32.h"

// The controller generations that are served; ControllerFamily in link/Link.h says which one is connected.
enum Family : int {
    Family2 = 2,
    Family4 = 4,
};

constexpr BYTE BlockMarker = 0x65;

// The replies as last received, from the marker byte to the sum. They live from process start to exit; the link writes
// them after a good reply and zeroes all five when it is lost. The one write from elsewhere is that of the Options page
// to the Options byte. Family 4 sends 14 bytes of ParamBlockA, so that its last byte is 0, and it alone has a
// ParamBlockC.
extern std::array<BYTE, 4> IdentBlock;
extern std::array<BYTE, 11> LiveBlock;
extern std::array<BYTE, 15> ParamBlockA;
extern std::array<BYTE, 16> ParamBlockB;
extern std::array<BYTE, 21> ParamBlockC;

namespace IdentByte {
enum Offset : unsigned {
    Marker = 0,
    Unknown = 1,
    Identity = 2,
    Sum = 3,
};
}

// Identity byte: bits 7 to 5 family less 1, bits 4 to 0 firmware version.
namespace IdentityField {
enum Field : unsigned {
    FamilyShift = 5,
    VersionMask = 0x1F,
};
}

namespace LiveByte {
enum Offset : unsigned {
    Marker = 0,
    Tps = 1,
    Lambda = 2,
    Att = 3,
    AttInit = 4,
    PeriodLo = 5,
    PeriodHi = 6,
    EngineState = 7,
    GasState = 8,
    Temperature = 9,
    Sum = 10,
};
}

// A high byte of the engine period that stands for a stopped engine.
constexpr BYTE StoppedPeriodHi = 255;

namespace EngineStateBit {
enum Mask : unsigned {
    MixtureMask = 0x07,
    MixtureGreen = 1,
    MixtureYellow = 2,
    MixtureRed = 4,
    EngineOn = 0x08,
    // Exactly one of the nibble's bits names the throttle segment; the lowest alone is also the state of a TPS switch.
    ThrottleMask = 0xF0,
    ThrottleSegment1 = 0x10,
    ThrottleSegment2 = 0x20,
    ThrottleSegment3 = 0x40,
    ThrottleSegment4 = 0x80,
    TpsSwitchOff = 0x10,
};
}

namespace GasStateBit {
enum Mask : unsigned {
    OnGas = 0x01,
    Learning = 0x02,
    LpgOff = 0x04,
    CutOff = 0x08,
    // Read together once Learning is clear: not done is a failure, done with more to come is told until that changes.
    LearnDone = 0x10,
    LearnPending = 0x20,
    SpeedReady = 0x40,
    WarmReady = 0x80,
};
}

// Bytes 8, 9 and 13 differ by family; the names say so.
namespace ParamAByte {
enum Offset : unsigned {
    Marker = 0,
    Options = 1,
    LambdaType = 2,
    LambdaPoint = 3,
    LambdaDelay = 4,
    EmulType = 5,
    EmulBJ_TimeHi = 6,
    EmulBJ_TimeLo = 7,
    EmulDO_TimeHiFamily2 = 8,
    WOZGFamily4 = 8,
    EmulDO_TimeLoFamily2 = 9,
    InjectDelay = 10,
    LPGOnTemp = 11,
    TPSInert = 12,
    Otwarcie_GAZUFamily2 = 13,
    SumFamily4 = 13,
    SumFamily2 = 14,
};
}

namespace OptionsBit {
enum Mask : unsigned {
    // Gas level sensor type: 0 with the first bit set, 1 with only the second set, 2 with both clear.
    GasSensorType0 = 0x01,
    GasSensorType1 = 0x80,
    GasSensorMask = 0x81,
    TemperatureCondition = 0x02,
    // Inverted: clear while the base position can be set.
    AttInitLocked = 0x04,
    TpsJump = 0x08,
    // Index of the two-way choice of switching on rising or falling speed.
    SpeedChange = 0x10,
    CutOff = 0x20,
    LpgOffLimit = 0x40,
};
}

// LambdaType: LambdaSensorType in the high nibble, TPSType in the low one.
namespace LambdaTypeField {
enum Field : unsigned {
    TpsMask = 0x0F,
    SensorMask = 0xF0,
    SensorShift = 4,
};
}

namespace LambdaSensor {
enum Type : int {
    Volts0To1 = 0,
    Volts0To5Lean = 1,
    Volts0To5Rich = 2,
    Volts5To0Lean = 3,
    Volts5To0Rich = 4,
    Volts08To16 = 5,
};
}

namespace TpsSensor {
enum Type : int {
    Linear = 0,
    Reversed = 1,
    None = 2,
    Switch6 = 6,
    Switch7 = 7,
    Type8 = 8,
};
}

namespace EmulTypeBit {
enum Mask : unsigned {
    TypeMask = 0x03,
    LowSignalFamily4 = 0x04,
    EmergencyStart = 0x08,
    ChoiceMask = 0x30,
    ChoiceShift = 4,
    // Inverted: clear while the panel shows the whole gas level.
    SimplePanel = 0x40,
    // Set by the controller alone.
    LongStatus = 0x80,
};
}

namespace ParamBByte {
enum Offset : unsigned {
    Marker = 0,
    AttMax = 1,
    AttMin = 2,
    TPSJump = 3,
    AttJump = 4,
    LPGOnRPMLo = 5,
    LPGOnRPMHi = 6,
    IgnitionType = 7,
    CutOffRPMLo = 8,
    CutOffRPMHi = 9,
    CutOffSteps = 10,
    LPGOffRPMLo = 11,
    LPGOffRPMHi = 12,
    AttMax_BJ = 13,
    AttMin_BJ = 14,
    Sum = 15,
};
}

namespace ParamCByte {
enum Offset : unsigned {
    Marker = 0,
    Prog1 = 1,
    Prog2 = 2,
    Prog3 = 3,
    Prog4 = 4,
    GasLevel = 5,
    ZAM_OTW_BJ = 6,
    ZAM_OTW_DO = 7,
    Minutes = 8,
    HoursLo = 9,
    HoursHi = 10,
    DateDay = 11,
    DateYear = 12,
    Registration = 13,
    Sum = 20,
};
}

constexpr unsigned GasLevelMask = 0x07;
constexpr unsigned RegistrationLength = 7;
static_assert(ParamCByte::Registration + RegistrationLength == ParamCByte::Sum);

// Cells 12 and 13 hold two corrections each, one a nibble.
namespace CorrectionField {
enum Field : unsigned {
    LowMask = 0x0F,
    HighMask = 0xF0,
    HighShift = 4,
};
}

// The two sensor types in ParamBlockA's LambdaType byte, 0 to 15 each.
int LambdaSensorType();
int TPSType();
// Whether a sensor of this type has a voltage to work with: not the types 2, 3, 6 and 7.
bool TpsHasVoltage(int tpsType);
// Whether AttJump is a percentage of the base position, as in Family4, and not a position in steps.
bool AttJumpIsPercent(int family);

// Engine speed in RPM from LiveBlock, 0 while the engine stands.
unsigned EngineSpeed();

// Time on gas in whole hours, 0 to 65535, from ParamBlockC.
unsigned HoursOnGas();

// The two date bytes as they stand in ParamBlockC and in their cells.
struct DateBytes {
    BYTE day;
    BYTE year;
};

struct Date {
    int year;
    int month;
    int day;
};

// Packs indices counted from 0: day 0 to 30, month 0 to 11, years since 2000 0 to 62. Higher bits are cut off.
DateBytes PackDate(unsigned dayIndex, unsigned monthIndex, unsigned yearIndex);
// The date in figures of the calendar, year 2000 to 2063; a zeroed block reads 2000-01-01. Unchecked: what the
// controller holds may be no real day.
Date UnpackDate(DateBytes bytes);
// The date in ParamBlockC.
Date InstallationDate();
