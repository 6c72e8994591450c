// The end points of every line of the RPM gauge, worked out once at start so that a redraw only looks them up. Points
// are x and y offsets in design units of a table space with the gauge's centre at GaugeCentre; y grows downwards. The
// tables live from BuildGaugeTables to exit and never change.
#pragma once

#include <array>

constexpr int GaugeCentre = 130;
// Entry i of the arc stands for i * 50 RPM: from 0 at the lower left over 4000 at the top to 8000 at the lower right.
constexpr unsigned GaugePoints = 161;
constexpr unsigned GaugeRpmStep = 50;
constexpr unsigned LongTicks = 9;
constexpr unsigned LongTickRpm = 1000;
constexpr unsigned ShortTicks = 41;
constexpr unsigned ShortTickRpm = 200;
// Arc points from one tick to the next.
constexpr unsigned LongTickStep = LongTickRpm / GaugeRpmStep;
constexpr unsigned ShortTickStep = ShortTickRpm / GaugeRpmStep;
static_assert((LongTicks - 1) * LongTickStep == GaugePoints - 1);
static_assert((ShortTicks - 1) * ShortTickStep == GaugePoints - 1);

// The needle's outer and inner end.
extern std::array<int, GaugePoints> NeedleTipX;
extern std::array<int, GaugePoints> NeedleTipY;
extern std::array<int, GaugePoints> NeedleBaseX;
extern std::array<int, GaugePoints> NeedleBaseY;
// The outer end of all ticks, by arc point, and the inner ends by tick.
extern std::array<int, GaugePoints> TickOuterX;
extern std::array<int, GaugePoints> TickOuterY;
extern std::array<int, LongTicks> LongTickX;
extern std::array<int, LongTicks> LongTickY;
extern std::array<int, ShortTicks> ShortTickX;
extern std::array<int, ShortTicks> ShortTickY;

// Fills the tables; called once, before the main window exists.
void BuildGaugeTables();

// Arc point of a speed in RPM, 0 to 160: a speed above the scale stays at its end.
unsigned GaugeIndex(unsigned rpm);
