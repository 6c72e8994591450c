#include "simulator/GasControl.h"

#include <algorithm>
#include <cmath>

namespace simulator {
namespace {

constexpr double VoltsPerStep = 0.0196;  // of the two signal bytes of the live block
constexpr double ClosedThrottleVolts = 0.5;
constexpr double ThrottleTravelVolts = 4.0;
constexpr double ActuatorStepSeconds = 0.05;
constexpr double ActuatorRush = 6;  // steps at once where a place is known instead of sought
constexpr double BaseStepSeconds = 3;
constexpr double LimitHysteresisRPM = 200;
constexpr double TemperatureHysteresis = 4;
constexpr double TankSeconds = 1800;  // a full tank at 2500 RPM
constexpr double NeutralBand = 0.15;

struct LambdaSensor {
    double lean;  // volts at the ends of the swing, as a fitter reads them
    double rich;
    bool inverted;  // the signal is 5 V less what is read
};

// By LambdaSensorType: 0-1 V, 0-5 V -, 0-5 V +, 5-0 V -, 5-0 V +, 0.8-1.6 V.
constexpr std::array<LambdaSensor, 6> Sensors = {{
    {0.08, 0.92, false},
    {4.7, 0.3, false},
    {0.3, 4.7, false},
    {4.7, 0.3, true},
    {0.3, 4.7, true},
    {0.82, 1.58, false},
}};

const LambdaSensor& SensorOf(const Cells& cells) {
    return Sensors[std::min<std::size_t>(cells.get(LambdaType) >> 4, Sensors.size() - 1)];
}

int ThrottleType(const Cells& cells) {
    return cells.get(LambdaType) & 0x0F;
}

std::uint8_t ToByte(double value) {
    return static_cast<std::uint8_t>(std::clamp(std::lround(value), 0L, 255L));
}

// The sensor's curve is two straight lines that meet at 51 degrees.
double DegreesOf(std::uint8_t raw) {
    return raw < 200 ? std::max(0.0, (raw - 68) / 2.582) : raw * 1.057 - 160;
}

std::uint8_t TemperatureByte(double degrees) {
    return ToByte(degrees <= 50 ? degrees * 2.582 + 68 : (degrees + 160) / 1.057);
}

double Toward(double from, double to, double most) {
    return from + std::clamp(to - from, -most, most);
}

}  // namespace

GasControl::GasControl(Cells& cells, const Engine& engine, Scenario scenario)
    : cells(cells),
      engine(engine),
      speedReady(scenario == Scenario::Idle || scenario == Scenario::Cruise),
      position(cells.get(AttInit)) {
}

bool GasControl::hasAnalogThrottle() const {
    int type = ThrottleType(cells);
    return type != 2 && type != 3 && type != 6 && type != 7;
}

double GasControl::throttleVolts() const {
    return ClosedThrottleVolts + ThrottleTravelVolts * engine.throttle() / 100;
}

double GasControl::lambdaVolts() const {
    const LambdaSensor& sensor = SensorOf(cells);
    double swing = std::tanh(3 * engine.richness());
    return (sensor.lean + sensor.rich) / 2 + (sensor.rich - sensor.lean) / 2 * swing;
}

double GasControl::lambdaExcess() const {
    const LambdaSensor& sensor = SensorOf(cells);
    double neutral = cells.get(LambdaPoint) * 0.02;
    return (lambdaVolts() - neutral) / ((sensor.rich - sensor.lean) / 2);
}

int GasControl::segment() const {
    double closed = 3;
    if (hasAnalogThrottle()) {
        closed = (cells.get(TPSInert) * 0.02 + 0.02) / ThrottleTravelVolts * 100;
    }
    double above = engine.throttle() - closed;
    if (above <= 0) {
        return 0;
    }
    return 1 + std::min(2, static_cast<int>(3 * above / std::max(1.0, 100 - closed)));
}

void GasControl::judgeSpeed() {
    double switching = cells.rpm(LPGOnRPMLo);
    bool above = engine.rpm() > switching;
    speedReady = speedReady || (cells.option(SwitchWhenRising) ? above : speedPassed && !above);
    speedPassed = speedPassed || above;

    if (cells.option(LimitOn)) {
        double limit = cells.rpm(LPGOffRPMLo);
        overLimit = engine.rpm() > (overLimit ? limit - LimitHysteresisRPM : limit);
    } else {
        overLimit = false;
    }
}

void GasControl::chooseFuel(double seconds) {
    double needed = DegreesOf(cells.get(LPGOnTemp)) - (temperatureReady ? TemperatureHysteresis : 0);
    temperatureReady = !cells.option(TemperatureMatters) || engine.temperature() >= needed;
    if (!engine.running()) {
        sinceStart = 0;
        speedReady = speedPassed = overLimit = onGas = cutOff = false;
        gasWanted = 0;
        return;
    }
    sinceStart += seconds;
    judgeSpeed();

    // An emergency start opens the gas valve first and then asks for nothing else.
    double valveSeconds = cells.get(cells.family() == 4 ? WOZG : Prog1) * 0.1;
    bool emergency = (cells.get(EmulType) & EmergencyStart) != 0 && sinceStart >= valveSeconds;
    bool conditions = emergency || (speedReady && temperatureReady);
    bool wanted = !overLimit && (choice == FuelChoice::Gas || (choice == FuelChoice::Auto && conditions));
    gasWanted = wanted ? gasWanted + seconds : 0;
    onGas = wanted && gasWanted >= cells.get(InjectDelay) * 0.1;
    cutOff = onGas && cells.option(CutOffOn) && segment() == 0 && engine.rpm() > cells.rpm(CutOffRPMLo);
}

double GasControl::jumpTarget() const {
    double base = cells.get(AttInit);
    double jump = cells.get(AttJump);
    return std::min(255.0, cells.family() == 4 ? base + base * jump / 100 : jump);
}

void GasControl::moveActuator() {
    double base = cells.get(AttInit);
    double threshold = cells.get(TPSJump);
    if (ThrottleType(cells) == 1) {
        threshold = 250 - threshold;
    }
    bool jump = cells.option(JumpOn) && hasAnalogThrottle() && throttleVolts() > threshold / 50;
    bool regulating = onGas && sinceStart > cells.get(LambdaDelay) * 5.0;
    if (cutOff) {
        position = Toward(position, base * cells.get(CutOffSteps) / 100, ActuatorRush);
    } else if (onGas && jump && !learning) {
        position = Toward(position, jumpTarget(), ActuatorRush);
    } else if ((!regulating && !learning) || (rushed && position != base)) {
        position = Toward(position, base, ActuatorRush);
    } else {
        bool idle = segment() == 0;
        double lowest = learning ? 0 : base - cells.get(idle ? AttMin_BJ : AttMin);
        double highest = learning ? 255 : base + cells.get(idle ? AttMax_BJ : AttMax);
        position =
            std::clamp(position + (lambdaExcess() > 0 ? -1 : 1), std::max(0.0, lowest), std::min(255.0, highest));
        rushed = false;
        settled = settled || (lambdaExcess() > 0) != wasRich;
        wasRich = lambdaExcess() > 0;
        return;
    }
    rushed = true;
    settled = false;
}

void GasControl::toggleLearning() {
    if (learning) {
        learning = false;
    } else if (onGas) {
        learning = true;
        learnClock = learnGathered = learnSum = 0;
        learnTold = learnPartial = false;
    }
}

void GasControl::learn(double seconds) {
    if (!learning) {
        return;
    }
    if (!onGas) {
        learning = false;
        return;
    }
    learnClock += seconds;
    if (segment() > 0 && settled) {
        learnGathered += seconds;
        learnSum += position * seconds;
    }
    if (learnGathered >= LearnSeconds) {
        learning = false;
        learnTold = true;
        cells.set(AttInit, ToByte(learnSum / learnGathered));
    } else if (learnClock >= LearnLimitSeconds) {
        learning = false;
        learnTold = learnPartial = learnGathered > 0;
    }
}

void GasControl::countGas(double seconds) {
    if (!onGas) {
        return;
    }
    tank -= seconds / TankSeconds * engine.rpm() / 2500;
    if (tank < 0.03) {
        tank = 0.95;  // a filling station comes in time
    }
    gasSeconds += seconds;
    if (gasSeconds < 60) {
        return;
    }
    gasSeconds -= 60;
    int minutes = cells.get(Minutes) + 1;
    if (minutes >= 60) {
        minutes = 0;
        int hours = (cells.get(HoursLo) | cells.get(HoursHi) << 8) + 1;
        cells.set(HoursLo, static_cast<std::uint8_t>(hours));
        cells.set(HoursHi, static_cast<std::uint8_t>(hours >> 8));
    }
    cells.set(Minutes, static_cast<std::uint8_t>(minutes));
}

void GasControl::step(double seconds) {
    chooseFuel(seconds);
    sinceActuatorStep += seconds;
    if (sinceActuatorStep >= ActuatorStepSeconds) {
        sinceActuatorStep -= ActuatorStepSeconds;
        moveActuator();
    }
    learn(seconds);
    countGas(seconds);
    if (cells.option(BaseFollows) && onGas && settled && segment() > 0) {
        sinceBaseStep += seconds;
        if (sinceBaseStep >= BaseStepSeconds) {
            sinceBaseStep = 0;
            cells.set(AttInit, ToByte(Toward(cells.get(AttInit), position, 1)));
        }
    }
}

int GasControl::gasLevel() const {
    int signal = ToByte(tank * 255);
    if (cells.option(GasSensorPlain)) {
        return std::min(4, signal / 51);
    }
    int level = 0;
    for (int cell : {Prog1, Prog2, Prog3, Prog4}) {
        level += signal >= cells.get(cell) ? 1 : 0;
    }
    return level;
}

std::array<std::uint8_t, 11> GasControl::live() const {
    std::array<std::uint8_t, 11> block{};
    double throttle = hasAnalogThrottle() ? throttleVolts() : 0;
    if (ThrottleType(cells) == 1) {
        throttle = 5 - throttle;
    }
    block[1] = ToByte(throttle / VoltsPerStep);
    double lambda = lambdaVolts();
    block[2] = ToByte((SensorOf(cells).inverted ? 5 - lambda : lambda) / VoltsPerStep);
    block[3] = ToByte(position);
    block[4] = cells.get(AttInit);

    int period = engine.running() ? std::clamp(static_cast<int>(15000000 / engine.rpm()), 1, 0xFEFF) : 0xFFFF;
    block[5] = static_cast<std::uint8_t>(period);
    block[6] = static_cast<std::uint8_t>(period >> 8);

    constexpr std::array<std::uint8_t, 3> mixtureBits = {1, 2, 4};  // lean, neutral, rich
    double excess = lambdaExcess();
    int status = mixtureBits[excess > NeutralBand ? 2 : excess < -NeutralBand ? 0 : 1];
    status |= engine.running() ? 0x08 : 0;
    status |= 0x10 << segment();
    block[7] = static_cast<std::uint8_t>(status);

    const bool bits[8] = {onGas, learning, overLimit, cutOff, learnTold, learnPartial, speedReady, temperatureReady};
    for (int i = 0; i < 8; ++i) {
        block[8] |= static_cast<std::uint8_t>(bits[i] << i);
    }
    block[9] = TemperatureByte(engine.temperature());
    return block;
}

}  // namespace simulator
