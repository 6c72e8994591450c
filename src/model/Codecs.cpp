#include "model/Codecs.h"

#include <array>

#include "model/Text.h"

namespace {

// The sensor's curve in two straight segments, which meet at a raw value of 200 and 51 degrees.
constexpr unsigned ColdestRaw = 68;
constexpr unsigned BreakRaw = 200;
constexpr int BreakDegrees = 51;
constexpr double ColdSlope = 2.582;
constexpr double WarmSlope = 1.057;
constexpr double WarmOffset = 160.0;

// A period of 1 in revolutions a minute, and the step to which a speed is rounded.
constexpr unsigned RpmOfPeriodOne = 15000000;
constexpr unsigned RpmStep = 50;

}  // namespace

int RoundHalfDown(double x) {
    const int whole = static_cast<int>(x);
    const double hundredths = (x - whole) * 100.0;
    return hundredths > 50.0 ? whole + 1 : whole;
}

int RawToTemperature(unsigned raw) {
    if (raw < ColdestRaw) {
        return 0;
    }
    if (raw < BreakRaw) {
        return RoundHalfDown((raw - ColdestRaw) / ColdSlope);
    }
    return RoundHalfDown(raw * WarmSlope - WarmOffset);
}

const char* TemperatureText(unsigned raw) {
    static std::array<char, 4> text;
    const int degrees = RawToTemperature(raw);
    FormatText(text, "%02ld", degrees > 100 ? 100L : static_cast<long>(degrees));
    return text.data();
}

BYTE TemperatureToRaw(int degrees) {
    if (degrees < BreakDegrees) {
        return static_cast<BYTE>(RoundHalfDown(degrees * ColdSlope + ColdestRaw));
    }
    return static_cast<BYTE>(RoundHalfDown((degrees + WarmOffset) / WarmSlope));
}

unsigned PeriodToRPM(BYTE high, BYTE low) {
    const unsigned period = high * 256u + low;
    if (period == 0) {
        return 0;
    }
    const unsigned rpm = RpmOfPeriodOne / period;
    return static_cast<unsigned>(RoundHalfDown(rpm / static_cast<double>(RpmStep))) * RpmStep;
}

unsigned RPMToPeriod(unsigned rpm) {
    return rpm == 0 ? 0 : RpmOfPeriodOne / rpm;
}

BYTE LowByte(unsigned value) {
    return static_cast<BYTE>(value & 0xFF);
}

BYTE HighByte(unsigned value) {
    return static_cast<BYTE>((value >> 8) & 0xFF);
}

double SignalVolts(BYTE raw) {
    return raw * 196.0 / 10000.0;
}
