// The tool in this process: its windows and message loop on a simulated controller.
#pragma once

#include <QApplication>
#include <atomic>
#include <optional>

#include "platform/Win32.h"
#include "simulator/Simulator.h"

namespace benchmarks {

// A controller without delay whose clock moves by hand, and a name for the processor clock of its thread.
class StepController {
public:
    StepController();

    void step(double seconds) {
        server.with([&](simulator::Controller& controller) { controller.step(seconds); });
    }
    double processorMilliseconds() const;

private:
    clockid_t threadClock{};
    std::atomic<bool> known = false;
    simulator::Server server;
};

struct Program {
    Program();

    QApplication application;
    std::optional<StepController> controller;
    MSG message{};  // the timer's, taken but not yet dispatched

    // Runs the message loop up to the next tick: all that was drawn is then on the screen.
    void runToTick();
    // The tick in hand, and the loop up to the next one.
    void tick();
    // Processor time of this process but for the controller's thread.
    double processorMilliseconds() const;
};

// Starts it at the first call, in the largest size.
Program& RunningProgram();

// Milliseconds that bytes take on the line, of ten bits each.
double MillisecondsOnWire(double bytes);

}  // namespace benchmarks
