#include "model/Blocks.h"

#include "model/Codecs.h"

std::array<BYTE, 4> IdentBlock{};
std::array<BYTE, 11> LiveBlock{};
std::array<BYTE, 15> ParamBlockA{};
std::array<BYTE, 16> ParamBlockB{};
std::array<BYTE, 21> ParamBlockC{};

namespace {

constexpr int FirstYear = 2000;

}  // namespace

int LambdaSensorType() {
    return ParamBlockA[ParamAByte::LambdaType] >> LambdaTypeField::SensorShift;
}

int TPSType() {
    return static_cast<int>(ParamBlockA[ParamAByte::LambdaType] & LambdaTypeField::TpsMask);
}

bool TpsHasVoltage(int tpsType) {
    return tpsType != TpsSensor::None && tpsType != 3 && tpsType != TpsSensor::Switch6 && tpsType != TpsSensor::Switch7;
}

bool AttJumpIsPercent(int family) {
    return family == Family4;
}

unsigned EngineSpeed() {
    const BYTE high = LiveBlock[LiveByte::PeriodHi];
    return high == StoppedPeriodHi ? 0 : PeriodToRPM(high, LiveBlock[LiveByte::PeriodLo]);
}

unsigned HoursOnGas() {
    return ParamBlockC[ParamCByte::HoursLo] + ParamBlockC[ParamCByte::HoursHi] * 256u;
}

// bit        7     6     5     4     3     2     1     0
// day byte   month, bits 2-0   day index
// year byte  m. 3  0     years since 2000
DateBytes PackDate(unsigned dayIndex, unsigned monthIndex, unsigned yearIndex) {
    return {
        .day = static_cast<BYTE>((dayIndex & 0x1F) | (monthIndex & 0x07) << 5),
        .year = static_cast<BYTE>((yearIndex & 0x3F) | (monthIndex & 0x08) << 4),
    };
}

Date UnpackDate(DateBytes bytes) {
    return {
        .year = (bytes.year & 0x3F) + FirstYear,
        .month = (bytes.day >> 5) + ((bytes.year & 0x80) >> 4) + 1,
        .day = (bytes.day & 0x1F) + 1,
    };
}

Date InstallationDate() {
    return UnpackDate({.day = ParamBlockC[ParamCByte::DateDay], .year = ParamBlockC[ParamCByte::DateYear]});
}
