// The controller's cells: the numbers that WriteCell takes and, for each, the mirror byte that shows its value. A new
// cell gets its name and its row here.
#pragma once

#include "platform/Win32.h"

namespace ParamCell {
enum Number : unsigned {
    Options = 5,
    LambdaType = 6,
    LambdaPoint = 7,
    LambdaDelay = 8,
    EmulType = 9,
    EmulBJ_TimeHi = 10,
    EmulBJ_TimeLo = 11,
    // The two correction cells: EmulDO_Time in family 2, ZAM_OTW in family 4.
    ZAM_OTW_BJ = 12,
    ZAM_OTW_DO = 13,
    InjectDelay = 14,
    LPGOnTemp = 15,
    AttMax = 16,
    AttMin = 17,
    AttInit = 18,
    TPSJump = 19,
    AttJump = 20,
    LPGOnRPMLo = 21,
    LPGOnRPMHi = 22,
    IgnitionType = 23,
    CutOffRPMLo = 24,
    CutOffRPMHi = 25,
    CutOffSteps = 26,
    LPGOffRPMLo = 27,
    LPGOffRPMHi = 28,
    TPSInert = 29,
    AttMax_BJ = 31,
    AttMin_BJ = 32,
    // One number, two meanings: the first opening of the gas valve, or the first gas level threshold.
    Otwarcie_GAZUFamily2 = 33,
    Prog1Family4 = 33,
    Prog2 = 34,
    Prog3 = 35,
    Prog4 = 36,
    WOZG = 37,
    HoursLo = 38,
    HoursHi = 39,
    DateDay = 40,
    DateYear = 41,
    // Seven cells, one a character.
    Registration = 42,
    Minutes = 49,
};
}

// Takes commands instead of a value.
constexpr unsigned CommandCell = 30;
namespace Command {
enum Value : BYTE {
    ToggleLearning = 50,
    FactoryReset = 51,
    GasThresholdReset = 52,
};
}

enum class Mirror : BYTE {
    None,
    Live,
    ParamA,
    ParamB,
    ParamC,
};

struct MirrorByte {
    Mirror mirror;
    BYTE offset;
};

// Where the value of a cell is read back in a family; Mirror::None if that family has no such cell. Family4 has its own
// column, every other family takes that of Family2.
MirrorByte CellMirror(unsigned cell, int family);
// The byte as last read, 0 for Mirror::None.
BYTE MirrorValue(MirrorByte place);
// Whether the block of a cell has been read since the link came up; else its mirror holds zeroes. Who changes some bits
// of a cell needs the others.
bool CellKnown(unsigned cell, int family);
// The value of a cell as last read.
BYTE CellValue(unsigned cell, int family);

// The cell of the first opening of the gas valve: Otwarcie_GAZU or, in Family4, WOZG.
unsigned ValveOpeningCell(int family);
