// Rows about the tool's own procedures, run in this process on its real windows and message loop.
#include <vector>

#include "Measure.h"
#include "Program.h"
#include "Rows.h"
#include "Workplace.h"
#include "link/Link.h"
#include "platform/Win32.h"
#include "resources/Ids.h"
#include "settings/SettingsCommands.h"
#include "shell/AppState.h"
#include "simulator/Simulator.h"

namespace benchmarks {
namespace {

constexpr int Exchanges = 250;
constexpr int Ticks = 400;
constexpr int Repaints = 60;
constexpr int Commands = 15;
constexpr int WarmUpTicks = 40;

// A tick asks for identity and live values: two requests of 4 bytes and replies of 4 and 11, of ten bits each.
constexpr double ExchangeBytes = 4 + 4 + 4 + 11;
// From one tick to the next where the wire has its true pace.
constexpr double TickSeconds = 0.074;

std::vector<double> MeasureExchanges() {
    simulator::Config config;
    config.portLink = PortLink();
    std::vector<double> milliseconds;
    {
        simulator::Server controller(config);
        ReadIdentBlock();
        for (int exchange = 0; exchange < Exchanges; ++exchange) {
            const double before = ClockMilliseconds(CLOCK_MONOTONIC);
            ReadIdentBlock();
            ReadLiveBlock();
            milliseconds.push_back(ClockMilliseconds(CLOCK_MONOTONIC) - before);
        }
    }
    ClosePort();
    UnplugPort();
    return milliseconds;
}

const std::vector<double>& ExchangeTimes() {
    static const std::vector<double> times = MeasureExchanges();
    return times;
}

constexpr int SettingsRuns = 9;
constexpr const char* SettingsPath = "benchmark.vr2";
// Four blocks of 11, 14, 16 and 21 bytes, and 32 cells with their replies of 3; each for a request of 4.
constexpr double SaveBytes = 4 * 4 + 11 + 14 + 16 + 21;
constexpr double LoadBytes = 32 * (4 + 3);

// What follows the file dialog, on a controller at the true pace.
double MeasureSettings(void (*run)(const char* path)) {
    simulator::Config config;
    config.portLink = PortLink();
    std::vector<double> milliseconds;
    {
        simulator::Server controller(config);
        PollIdentity();
        SaveSettingsFile(SettingsPath);
        for (int round = 0; round < SettingsRuns; ++round) {
            const double before = ClockMilliseconds(CLOCK_MONOTONIC);
            run(SettingsPath);
            milliseconds.push_back(ClockMilliseconds(CLOCK_MONOTONIC) - before);
        }
    }
    ClosePort();
    UnplugPort();
    return Quantile(milliseconds, 0.5);
}

// The message of a tick, and the loop until the next one is due: its exchanges, its drawing, its way to the screen.
std::vector<double> MeasureTicks(double engineSeconds) {
    Program& program = RunningProgram();
    std::vector<double> milliseconds;
    for (int tick = -WarmUpTicks; tick < Ticks; ++tick) {
        program.controller->step(engineSeconds);
        if (tick == 0) {
            SetTimer(program.message.hwnd, program.message.wParam, 1, nullptr);
            program.runToTick();
        }
        const double before = program.processorMilliseconds();
        DispatchMessageA(&program.message);
        program.runToTick();
        if (tick >= 0) {
            milliseconds.push_back(program.processorMilliseconds() - before);
        }
    }
    return milliseconds;
}

const std::vector<double>& RunningTicks() {
    static const std::vector<double> times = MeasureTicks(TickSeconds);
    return times;
}

// As when another window that covered this one goes away.
std::vector<double> MeasureRepaints() {
    Program& program = RunningProgram();
    std::vector<double> milliseconds;
    for (int repaint = 0; repaint < Repaints; ++repaint) {
        InvalidateRect(MainWindow, nullptr, TRUE);
        InvalidateRect(PageWindow, nullptr, TRUE);
        const double before = program.processorMilliseconds();
        program.runToTick();
        milliseconds.push_back(program.processorMilliseconds() - before);
    }
    return milliseconds;
}

// From two menu commands in turn to the pixels handed to the screen, of the first one each time.
Result MeasureCommand(unsigned command, unsigned back) {
    Program& program = RunningProgram();
    std::vector<double> milliseconds;
    for (int round = 0; round < Commands; ++round) {
        const double before = program.processorMilliseconds();
        SendMessageA(MainWindow, WM_COMMAND, MAKEWPARAM(command, 0), 0);
        program.runToTick();
        milliseconds.push_back(program.processorMilliseconds() - before);
        SendMessageA(MainWindow, WM_COMMAND, MAKEWPARAM(back, 0), 0);
        program.runToTick();
    }
    return {Quantile(milliseconds, 0.5)};
}

// A tick of another page, whose controller stands still.
Result MeasurePageTick(unsigned command) {
    Program& program = RunningProgram();
    SendMessageA(MainWindow, WM_COMMAND, MAKEWPARAM(command, 0), 0);
    program.runToTick();
    const Result result = {Mean(MeasureTicks(0))};
    SendMessageA(MainWindow, WM_COMMAND, MAKEWPARAM(IDM_READINGS, 0), 0);
    program.runToTick();
    return result;
}

}  // namespace

Result ExchangeMedian() {
    return {Quantile(ExchangeTimes(), 0.5), MillisecondsOnWire(ExchangeBytes)};
}

Result ExchangeSlow() {
    return {Quantile(ExchangeTimes(), 0.95), MillisecondsOnWire(ExchangeBytes)};
}

Result SaveSettingsTime() {
    return {MeasureSettings(SaveSettingsFile), MillisecondsOnWire(SaveBytes)};
}

Result LoadSettingsTime() {
    return {MeasureSettings(LoadSettingsFile), MillisecondsOnWire(LoadBytes)};
}

// The mean, since every fourth tick reads more blocks than the others.
Result TickRunning() {
    return {Mean(RunningTicks())};
}

Result TickRunningSlow() {
    return {Quantile(RunningTicks(), 0.95)};
}

Result TickStill() {
    return {Mean(MeasureTicks(0))};
}

Result TickConfiguration() {
    return MeasurePageTick(IDM_CONFIGURATION);
}

Result TickOptions() {
    return MeasurePageTick(IDM_OPTIONS);
}

Result ReadingsRepaint() {
    return {Quantile(MeasureRepaints(), 0.5)};
}

Result SwitchToReadings() {
    Program& program = RunningProgram();
    SendMessageA(MainWindow, WM_COMMAND, MAKEWPARAM(IDM_CONFIGURATION, 0), 0);
    program.runToTick();
    const Result result = MeasureCommand(IDM_READINGS, IDM_CONFIGURATION);
    SendMessageA(MainWindow, WM_COMMAND, MAKEWPARAM(IDM_READINGS, 0), 0);
    program.runToTick();
    return result;
}

Result SwitchToConfiguration() {
    return MeasureCommand(IDM_CONFIGURATION, IDM_READINGS);
}

Result SwitchToOptions() {
    return MeasureCommand(IDM_OPTIONS, IDM_READINGS);
}

Result ChangeOfSize() {
    return MeasureCommand(IDM_SIZE_1280X1024, IDM_SIZE_1280X960);
}

Result ChangeOfLanguage() {
    return MeasureCommand(IDM_LANGUAGE_RUSSIAN, IDM_LANGUAGE_POLISH);
}

}  // namespace benchmarks
