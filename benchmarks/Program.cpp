#include "Program.h"

#include <pthread.h>

#include <memory>

#include "Measure.h"
#include "Rows.h"
#include "Workplace.h"
#include "platform/linux/Entry.h"
#include "shell/AppState.h"
#include "shell/MainWindow.h"
#include "shell/SizeProfiles.h"

namespace benchmarks {
namespace {

constexpr int LargestProfile = 5;
// The engine is driven on for so long first, until it is warm and runs on gas.
constexpr double WarmEngineSeconds = 120;

simulator::Config StepConfig() {
    simulator::Config config;
    config.wirePace = false;
    config.clockRuns = false;
    config.portLink = PortLink();
    return config;
}

int noArguments = 1;
char programName[] = "tarvex-benchmarks";
char* programArguments[] = {programName, nullptr};

std::unique_ptr<Program> running;

}  // namespace

StepController::StepController() : server(StepConfig()) {
    server.observe([this](const simulator::LogEntry&) {
        if (!known) {
            pthread_getcpuclockid(pthread_self(), &threadClock);
            known = true;
        }
    });
    step(WarmEngineSeconds);
}

double StepController::processorMilliseconds() const {
    return known ? ClockMilliseconds(threadClock) : 0;
}

Program::Program() : application(noArguments, programArguments) {
    controller.emplace();
}

void Program::runToTick() {
    while (GetMessageA(&message, nullptr, 0, 0) && message.message != WM_TIMER) {
        DispatchMessageA(&message);
    }
}

void Program::tick() {
    DispatchMessageA(&message);
    runToTick();
}

double Program::processorMilliseconds() const {
    return ClockMilliseconds(CLOCK_PROCESS_CPUTIME_ID) - (controller ? controller->processorMilliseconds() : 0);
}

Program& RunningProgram() {
    if (!running) {
        running = std::make_unique<Program>();
        layer::prepareApplication();
        CreateMainWindow(nullptr);
        SetSizeProfile(LargestProfile);
        ApplySizeProfile();
        PlaceMainWindow();
        ShowWindow(MainWindow, SW_SHOWDEFAULT);
        UpdateWindow(MainWindow);
        running->runToTick();
    }
    return *running;
}

void CloseProgram() {
    if (running) {
        DestroyWindow(MainWindow);
        running.reset();
    }
}

double MillisecondsOnWire(double bytes) {
    return bytes * 10 / 9.6;
}

}  // namespace benchmarks
