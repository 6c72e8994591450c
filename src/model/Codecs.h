// Between the raw values of the controller and what the user reads. The chief header of the model: blocks stand in
// model/Blocks.h, cells in model/Cells.h, the value lists of the tuning pages in model/Choices.h.
#pragma once

#include "platform/Win32.h"

// The nearest whole number, a fraction of exactly one half going down; a negative value is only truncated.
int RoundHalfDown(double x);

// Degrees Celsius, 0 to 110 for a raw byte: LiveBlock's Temperature, ParamBlockA's LPGOnTemp.
int RawToTemperature(unsigned raw);
// The same as two digits, "100" from 100 up. The text lies in one buffer and holds until the next call.
const char* TemperatureText(unsigned raw);
// Raw byte of 0 to 100 degrees.
BYTE TemperatureToRaw(int degrees);

// Revolutions a minute, a multiple of 50, of a 16-bit period; 0 for a period of 0, up to 15000000 for one of 1.
unsigned PeriodToRPM(BYTE high, BYTE low);
// The period of a speed, in 16 bits from 229 RPM up; 0 for 0 RPM.
unsigned RPMToPeriod(unsigned rpm);

BYTE LowByte(unsigned value);
BYTE HighByte(unsigned value);

// Volts of LiveBlock's Tps or Lambda byte, 0 to 4.998 in steps of 0.0196.
double SignalVolts(BYTE raw);
