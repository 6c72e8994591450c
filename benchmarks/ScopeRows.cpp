// Rows about the Oscilloscope page, in this process.
#include <vector>

#include "Measure.h"
#include "Program.h"
#include "Rows.h"
#include "Workplace.h"
#include "link/Link.h"
#include "model/Blocks.h"
#include "resources/Ids.h"
#include "scope/ScopeCapture.h"
#include "scope/ScopeDrawing.h"
#include "shell/AppState.h"

namespace benchmarks {
namespace {

constexpr double Seconds = 60;
constexpr int Columns = 1200;
constexpr int WarmUpColumns = 500;
constexpr int Exchanges = 300;
constexpr int Redraws = 60;
// An hour of columns, without the line's pace.
constexpr int ManyColumns = 150000;
constexpr int ColumnsAPaint = 50;
// The simulated controller's log of frames, two a column, is full by then.
constexpr int ColumnsForTheLog = 12000;
static_assert(ColumnsForTheLog * 2 > simulator::Responder::LogLimit);
// Identity and live values: two requests of 4 bytes and replies of 4 and 11.
constexpr double ColumnBytes = 4 + 4 + 4 + 11;

// Enters the page for a measurement and leaves it after.
struct OnPage {
    OnPage() {
        show(IDM_OSCILLOSCOPE);
    }
    ~OnPage() {
        show(IDM_READINGS);
    }
    void show(unsigned command) const {
        SendMessageA(MainWindow, WM_COMMAND, MAKEWPARAM(command, 0), 0);
        program.runToTick();
    }
    Program& program = RunningProgram();
};

double ColumnsASecond() {
    simulator::Config config;
    config.scenario = simulator::Scenario::Cruise;
    config.portLink = PortLink();
    const simulator::Server controller(config);
    const OnPage page;
    while (LinkLost != 0 || ParamBlockA[0] == 0) {
        page.program.tick();
    }
    unsigned columns = 0;
    const double start = ClockMilliseconds(CLOCK_MONOTONIC);
    double now = start;
    for (unsigned before = SweepPos; now - start < Seconds * 1000; before = SweepPos) {
        page.program.tick();
        columns += SweepPos != before ? 1 : 0;
        now = ClockMilliseconds(CLOCK_MONOTONIC);
    }
    return columns * 1000 / (now - start);
}

// Processor milliseconds of a column's exchange, each after a pause as a column has it.
double ExchangeTime(const Program& program) {
    double sum = 0;
    for (int exchange = 0; exchange < Exchanges; ++exchange) {
        Sleep(TimerPeriod);
        const double before = program.processorMilliseconds();
        PollIdentity();
        ReadLiveBlock();
        sum += program.processorMilliseconds() - before;
    }
    return sum / Exchanges;
}

}  // namespace

Result ScopeColumns() {
    Program& program = RunningProgram();
    program.controller.reset();
    const Result result = {ColumnsASecond(), 1000 / MillisecondsOnWire(ColumnBytes)};
    program.controller.emplace();
    while (LinkLost != 0) {
        program.tick();
    }
    return result;
}

Result ScopeColumnTime() {
    const OnPage page;
    double before = 0;
    for (int column = -WarmUpColumns; column < Columns; ++column) {
        if (column == 0) {
            before = page.program.processorMilliseconds();
        }
        page.program.controller->step(1 / 41.7);
        page.program.tick();
    }
    const double column = (page.program.processorMilliseconds() - before) / Columns;
    return {column, ExchangeTime(page.program)};
}

Result ScopeRedraw() {
    const OnPage page;
    for (int column = 0; column < WarmUpColumns; ++column) {
        page.program.controller->step(1 / 41.7);
        page.program.tick();
    }
    std::vector<double> milliseconds;
    for (int redraw = 0; redraw < Redraws; ++redraw) {
        const double before = page.program.processorMilliseconds();
        DrawScopeTraces();
        milliseconds.push_back(page.program.processorMilliseconds() - before);
        page.program.tick();
    }
    return {Quantile(milliseconds, 0.5)};
}

Result ScopeGrowth() {
    const OnPage page;
    double before = 0;
    for (int column = -ColumnsForTheLog; column < ManyColumns; ++column) {
        if (column == 0) {
            before = AnonymousMegabytes();
        }
        SendMessageA(PageWindow, WM_TIMER, PageTimer, 0);
        if (column % ColumnsAPaint == 0) {
            page.program.runToTick();
        }
    }
    return {AnonymousMegabytes() - before};
}

}  // namespace benchmarks
