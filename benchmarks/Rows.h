// What the table measures. Each procedure measures at its first call and keeps the result, so that the figures of one
// run can stand in several rows.
#pragma once

namespace benchmarks {

struct Result {
    double figure;
    double reference = 0;  // 0: there is none
};

// The tool as a process of its own beside the bare window: milliseconds from before the start of the process to its
// first complete paint, MB at that moment, MB after some seconds with a controller at the true pace.
Result StartMilliseconds();
Result FirstMegabytes();
Result LaterMegabytes();
// Per cent of one processor, with such a controller and with a port that cannot be opened.
Result LiveShare();
Result LostShare();

// Milliseconds of a tick's two exchanges beside the time that their bytes take on the wire.
Result ExchangeMedian();
Result ExchangeSlow();
// Milliseconds of a save and of a load of a family 4 controller's settings beside the time that their bytes take on the
// wire.
Result SaveSettingsTime();
Result LoadSettingsTime();
// Milliseconds of processor time in this process, all threads but the simulated controller's.
Result TickRunning();
Result TickRunningSlow();
Result TickStill();
Result TickConfiguration();
Result TickOptions();
Result ReadingsRepaint();
// From a menu command to the last pixel.
Result SwitchToReadings();
Result SwitchToConfiguration();
Result SwitchToOptions();
Result ChangeOfSize();
Result ChangeOfLanguage();

// Milliseconds from an input to its effect, less the exchanges that were under way when it came: to the request on the
// wire, and to the pixels handed to the screen.
Result InputToWire();
Result InputToWireSlow();
Result InputToPixel();
Result InputToPixelSlow();

// The Oscilloscope page in the largest size: columns a second at the true pace beside what the wire allows; processor
// milliseconds of a column beside those of its exchange alone, and of the whole history drawn anew; MB that an hour of
// columns adds.
Result ScopeColumns();
Result ScopeColumnTime();
Result ScopeRedraw();
Result ScopeGrowth();

// Closes the windows that the rows on the tool in this process have opened.
void CloseProgram();

}  // namespace benchmarks
