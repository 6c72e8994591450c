#include "model/Cells.h"

#include <array>
#include <cstddef>

#include "model/Blocks.h"

namespace {

struct CellRow {
    unsigned cell;
    MirrorByte family2;
    MirrorByte family4;
};

constexpr MirrorByte NoMirror{Mirror::None, 0};
constexpr MirrorByte L(unsigned offset) {
    return {Mirror::Live, static_cast<BYTE>(offset)};
}
constexpr MirrorByte A(unsigned offset) {
    return {Mirror::ParamA, static_cast<BYTE>(offset)};
}
constexpr MirrorByte B(unsigned offset) {
    return {Mirror::ParamB, static_cast<BYTE>(offset)};
}
constexpr MirrorByte C(unsigned offset) {
    return {Mirror::ParamC, static_cast<BYTE>(offset)};
}
constexpr CellRow Alike(unsigned cell, MirrorByte both) {
    return {cell, both, both};
}

constexpr unsigned FirstCell = 5;

constexpr std::array CellRows{
    Alike(ParamCell::Options, A(ParamAByte::Options)),
    Alike(ParamCell::LambdaType, A(ParamAByte::LambdaType)),
    Alike(ParamCell::LambdaPoint, A(ParamAByte::LambdaPoint)),
    Alike(ParamCell::LambdaDelay, A(ParamAByte::LambdaDelay)),
    Alike(ParamCell::EmulType, A(ParamAByte::EmulType)),
    Alike(ParamCell::EmulBJ_TimeHi, A(ParamAByte::EmulBJ_TimeHi)),
    Alike(ParamCell::EmulBJ_TimeLo, A(ParamAByte::EmulBJ_TimeLo)),
    CellRow{ParamCell::ZAM_OTW_BJ, A(ParamAByte::EmulDO_TimeHiFamily2), C(ParamCByte::ZAM_OTW_BJ)},
    CellRow{ParamCell::ZAM_OTW_DO, A(ParamAByte::EmulDO_TimeLoFamily2), C(ParamCByte::ZAM_OTW_DO)},
    Alike(ParamCell::InjectDelay, A(ParamAByte::InjectDelay)),
    Alike(ParamCell::LPGOnTemp, A(ParamAByte::LPGOnTemp)),
    Alike(ParamCell::AttMax, B(ParamBByte::AttMax)),
    Alike(ParamCell::AttMin, B(ParamBByte::AttMin)),
    Alike(ParamCell::AttInit, L(LiveByte::AttInit)),
    Alike(ParamCell::TPSJump, B(ParamBByte::TPSJump)),
    Alike(ParamCell::AttJump, B(ParamBByte::AttJump)),
    Alike(ParamCell::LPGOnRPMLo, B(ParamBByte::LPGOnRPMLo)),
    Alike(ParamCell::LPGOnRPMHi, B(ParamBByte::LPGOnRPMHi)),
    Alike(ParamCell::IgnitionType, B(ParamBByte::IgnitionType)),
    Alike(ParamCell::CutOffRPMLo, B(ParamBByte::CutOffRPMLo)),
    Alike(ParamCell::CutOffRPMHi, B(ParamBByte::CutOffRPMHi)),
    Alike(ParamCell::CutOffSteps, B(ParamBByte::CutOffSteps)),
    Alike(ParamCell::LPGOffRPMLo, B(ParamBByte::LPGOffRPMLo)),
    Alike(ParamCell::LPGOffRPMHi, B(ParamBByte::LPGOffRPMHi)),
    Alike(ParamCell::TPSInert, A(ParamAByte::TPSInert)),
    Alike(CommandCell, NoMirror),
    Alike(ParamCell::AttMax_BJ, B(ParamBByte::AttMax_BJ)),
    Alike(ParamCell::AttMin_BJ, B(ParamBByte::AttMin_BJ)),
    CellRow{ParamCell::Otwarcie_GAZUFamily2, A(ParamAByte::Otwarcie_GAZUFamily2), C(ParamCByte::Prog1)},
    CellRow{ParamCell::Prog2, NoMirror, C(ParamCByte::Prog2)},
    CellRow{ParamCell::Prog3, NoMirror, C(ParamCByte::Prog3)},
    CellRow{ParamCell::Prog4, NoMirror, C(ParamCByte::Prog4)},
    CellRow{ParamCell::WOZG, NoMirror, A(ParamAByte::WOZGFamily4)},
    CellRow{ParamCell::HoursLo, NoMirror, C(ParamCByte::HoursLo)},
    CellRow{ParamCell::HoursHi, NoMirror, C(ParamCByte::HoursHi)},
    CellRow{ParamCell::DateDay, NoMirror, C(ParamCByte::DateDay)},
    CellRow{ParamCell::DateYear, NoMirror, C(ParamCByte::DateYear)},
    CellRow{ParamCell::Registration, NoMirror, C(ParamCByte::Registration)},
    CellRow{ParamCell::Registration + 1, NoMirror, C(ParamCByte::Registration + 1)},
    CellRow{ParamCell::Registration + 2, NoMirror, C(ParamCByte::Registration + 2)},
    CellRow{ParamCell::Registration + 3, NoMirror, C(ParamCByte::Registration + 3)},
    CellRow{ParamCell::Registration + 4, NoMirror, C(ParamCByte::Registration + 4)},
    CellRow{ParamCell::Registration + 5, NoMirror, C(ParamCByte::Registration + 5)},
    CellRow{ParamCell::Registration + 6, NoMirror, C(ParamCByte::Registration + 6)},
    CellRow{ParamCell::Minutes, NoMirror, C(ParamCByte::Minutes)},
};

constexpr bool RowsFollowTheCells() {
    for (std::size_t i = 0; i < CellRows.size(); ++i) {
        if (CellRows[i].cell != FirstCell + i) {
            return false;
        }
    }
    return true;
}
static_assert(RowsFollowTheCells(), "CellMirror finds a row by its cell number");

}  // namespace

MirrorByte CellMirror(unsigned cell, int family) {
    if (cell < FirstCell || cell - FirstCell >= CellRows.size()) {
        return NoMirror;
    }
    const CellRow& row = CellRows[cell - FirstCell];
    return family == Family4 ? row.family4 : row.family2;
}

BYTE MirrorValue(MirrorByte place) {
    switch (place.mirror) {
        case Mirror::Live:
            return LiveBlock[place.offset];
        case Mirror::ParamA:
            return ParamBlockA[place.offset];
        case Mirror::ParamB:
            return ParamBlockB[place.offset];
        case Mirror::ParamC:
            return ParamBlockC[place.offset];
        case Mirror::None:
            break;
    }
    return 0;
}

bool CellKnown(unsigned cell, int family) {
    constexpr BYTE marker = 0;
    return MirrorValue({CellMirror(cell, family).mirror, marker}) == BlockMarker;
}

BYTE CellValue(unsigned cell, int family) {
    return MirrorValue(CellMirror(cell, family));
}

unsigned ValveOpeningCell(int family) {
    return family == Family4 ? ParamCell::WOZG : ParamCell::Otwarcie_GAZUFamily2;
}
