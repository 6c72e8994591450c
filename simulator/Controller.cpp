#include "simulator/Controller.h"

#include <cstdio>

namespace simulator {
namespace {

constexpr double StepSeconds = 0.01;
constexpr double RampStepSeconds = 0.1;
constexpr int FirstReadCommand = 1;
constexpr int LastReadCommand = 5;

// Restoring everything keeps the older generation busy for longer than a reader's patience of 220 ms.
constexpr double Family2ResetSeconds = 0.23;

enum Command : std::uint8_t { Learn = 50, FactoryReset = 51, ThresholdReset = 52 };

constexpr int ParamAFamily2[] = {Options,       LambdaType,    LambdaPoint, LambdaDelay, EmulType,
                                 EmulBJ_TimeHi, EmulBJ_TimeLo, ZAM_OTW_BJ,  ZAM_OTW_DO,  InjectDelay,
                                 LPGOnTemp,     TPSInert,      Prog1};
constexpr int Unused = 0;
constexpr int ParamAFamily4[] = {Options,       LambdaType, LambdaPoint, LambdaDelay, EmulType,  EmulBJ_TimeHi,
                                 EmulBJ_TimeLo, WOZG,       Unused,      InjectDelay, LPGOnTemp, TPSInert};
constexpr int ParamB[] = {AttMax,      AttMin,      TPSJump,     AttJump,     LPGOnRPMLo,  LPGOnRPMHi, IgnitionType,
                          CutOffRPMLo, CutOffRPMHi, CutOffSteps, LPGOffRPMLo, LPGOffRPMHi, AttMax_BJ,  AttMin_BJ};
constexpr int ParamC[] = {Prog1,
                          Prog2,
                          Prog3,
                          Prog4,
                          Unused,
                          ZAM_OTW_BJ,
                          ZAM_OTW_DO,
                          Minutes,
                          HoursLo,
                          HoursHi,
                          DateLo,
                          DateHi,
                          Registration,
                          Registration + 1,
                          Registration + 2,
                          Registration + 3,
                          Registration + 4,
                          Registration + 5,
                          Registration + 6};
constexpr std::size_t GasLevelByte = 5;  // of ParamC

Bytes BlockOf(const Cells& cells, std::span<const int> list) {
    Bytes bytes{Marker};
    for (int cell : list) {
        bytes.push_back(cells.get(cell));
    }
    return bytes;
}

}  // namespace

Controller::Controller(const Config& config)
    : cells(config.family, config.firmware),
      driver(config.scenario),
      engine(config.scenario, config.seed),
      gas(cells, engine, config.scenario),
      identity(static_cast<std::uint8_t>((config.family - 1) << 5 | (config.firmware & 31))),
      scenario(config.scenario) {
}

std::vector<Exchange> Controller::receive(std::span<const std::uint8_t> bytes, double now) {
    std::vector<Exchange> exchanges;
    for (std::uint8_t byte : bytes) {
        if (std::optional<Request> request = reader.push(byte, now)) {
            exchanges.push_back(answer(*request));
        }
    }
    return exchanges;
}

Bytes Controller::exchange(std::span<const std::uint8_t> bytes) {
    Bytes all;
    untimedNow += 1;
    for (const Exchange& exchange : receive(bytes, untimedNow)) {
        all.insert(all.end(), exchange.reply.begin(), exchange.reply.end());
    }
    return all;
}

// A read and a write have the same shape. What tells them apart is that a read says its command twice and that the
// family has a block of that number; cells begin where the family's commands end.
Exchange Controller::answer(const Request& request) {
    Exchange exchange{request, {}, false, 0};
    if (!request.good) {
        return exchange;
    }
    std::uint8_t number = request.bytes[1];
    std::uint8_t value = request.bytes[2];
    if (number == value) {
        exchange.reply = block(number);
    }
    std::optional<int> cell = cells.fromWire(number);
    if (!exchange.reply.empty() || !cell) {
        return exchange;
    }
    exchange.isWrite = true;
    if (*cell == CommandCell) {
        command(value);
        exchange.workSeconds = value == FactoryReset && cells.family() == 2 ? Family2ResetSeconds : 0;
    } else {
        cells.set(*cell, value);
    }
    exchange.reply = {Marker, value};
    Seal(exchange.reply);
    return exchange;
}

void Controller::command(std::uint8_t value) {
    switch (value) {
        case Learn:
            gas.toggleLearning();
            break;
        case FactoryReset:
            cells.restoreFactory();
            break;
        case ThresholdReset:
            cells.restoreGasThresholds();
            break;
        default:
            break;
    }
}

Bytes Controller::block(int command) const {
    if (command < FirstReadCommand || command > LastReadCommand) {
        return {};
    }
    bool family2 = cells.family() == 2;
    if (command > 1 && (!cells.served() || (command == 5 && family2))) {
        return {};
    }
    Bytes bytes;
    switch (command) {
        case 1:
            bytes = {Marker, 0, identity};
            break;
        case 2: {
            auto live = scenario == Scenario::Ramp ? ramp() : gas.live();
            live[0] = Marker;
            for (std::size_t i = 1; i < LiveLength; ++i) {
                live[i] = overrides[i].value_or(live[i]);
            }
            bytes.assign(live.begin(), live.end() - 1);
            break;
        }
        case 3:
            bytes = family2 ? BlockOf(cells, ParamAFamily2) : BlockOf(cells, ParamAFamily4);
            break;
        case 4:
            bytes = BlockOf(cells, ParamB);
            break;
        default:
            bytes = BlockOf(cells, ParamC);
            bytes[GasLevelByte] = static_cast<std::uint8_t>(gas.gasLevel());
            break;
    }
    Seal(bytes);
    return bytes;
}

void Controller::step(double seconds) {
    pending += seconds;
    // Half a step of slack, so that 0.1 s are ten steps in spite of rounding.
    while (pending > StepSeconds / 2) {
        pending -= StepSeconds;
        clock += StepSeconds;
        engine.step(StepSeconds, driver.step(StepSeconds), gas.feed());
        gas.step(StepSeconds);
    }
}

// With n counted up every 0.1 s: bytes 1, 2, 3, 4 and 9 are n plus 0, 32, 64, 96 and 128; the speed is n % 161 times
// 50 RPM, so 0 to 8000; byte 7 has the engine on, a mixture of n % 3 and a throttle segment of n / 8 % 4; byte 8 is n.
std::array<std::uint8_t, LiveLength> Controller::ramp() const {
    int n = static_cast<int>((clock + StepSeconds / 2) / RampStepSeconds);
    std::array<std::uint8_t, LiveLength> live{};
    constexpr std::size_t plain[] = {1, 2, 3, 4, 9};
    int offset = 0;
    for (std::size_t byte : plain) {
        live[byte] = static_cast<std::uint8_t>(n + offset);
        offset += 32;
    }
    int rpm = n % 161 * 50;
    int period = rpm < 250 ? 0xFFFF : 15000000 / rpm;
    live[5] = static_cast<std::uint8_t>(period);
    live[6] = static_cast<std::uint8_t>(period >> 8);
    live[7] = static_cast<std::uint8_t>(0x08 | 1 << n % 3 | 0x10 << n / 8 % 4);
    live[8] = static_cast<std::uint8_t>(n);
    return live;
}

void Controller::overrideLive(std::size_t byte, std::uint8_t value) {
    if (byte >= 1 && byte < LiveLength - 1) {
        overrides[byte] = value;
    }
}

std::string Controller::summary() const {
    char text[400];
    std::snprintf(text, sizeof text,
                  "family %d, version %d.%02d, %s, %s\n"
                  "%.0f RPM, throttle %.0f %%, %.0f degrees, mixture %+.2f, gas level %d (tank %.0f %%)\n"
                  "base %d, learning %s",
                  cells.family(), cells.family(), identity & 31, engine.running() ? "running" : "stopped",
                  gas.isOnGas() ? "gas" : "petrol", engine.rpm(), engine.throttle(), engine.temperature(),
                  engine.richness(), gas.gasLevel(), gas.tank * 100, cells.get(AttInit),
                  gas.isLearning() ? "on" : "off");
    std::string lines = text;
    for (int command = 1; command <= LastReadCommand; ++command) {
        Bytes bytes = block(command);
        if (bytes.empty()) {
            continue;
        }
        std::snprintf(text, sizeof text, "\nblock %d:", command);
        lines += text;
        for (std::uint8_t byte : bytes) {
            std::snprintf(text, sizeof text, " %02X", byte);
            lines += text;
        }
    }
    return lines;
}

}  // namespace simulator
