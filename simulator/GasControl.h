// What the controller decides from its sensors and its cells: fuel, cut-off, actuator, learning, gas level.
#pragma once

#include "simulator/Cells.h"
#include "simulator/Engine.h"

#include <array>
#include <cstdint>

namespace simulator {

enum class FuelChoice { Auto, Gas, Petrol };

constexpr double LearnSeconds = 6;        // open throttle on gas that learning needs
constexpr double LearnLimitSeconds = 20;  // then it gives up

class GasControl {
public:
    GasControl(Cells& cells, const Engine& engine, Scenario scenario);

    void step(double seconds);
    Feed feed() const {
        return {onGas, cutOff, position};
    }

    // The learning command: starts, or stops what runs. Only on gas does anything start.
    void toggleLearning();
    bool isLearning() const {
        return learning;
    }
    bool isOnGas() const {
        return onGas;
    }

    // Bytes 1 to 9 of the live block, at their places; bytes 0 and 10 are left 0.
    std::array<std::uint8_t, 11> live() const;

    // 0 reserve, 1 to 4 quarters.
    int gasLevel() const;

    FuelChoice choice = FuelChoice::Auto;  // the switch on the panel
    double tank = 0.8;                     // 0 to 1

private:
    bool hasAnalogThrottle() const;
    double throttleVolts() const;  // as a fitter reads it: closed is low
    double lambdaVolts() const;    // as a fitter reads it
    double lambdaExcess() const;   // above 0 richer than the neutral point, below leaner; 1 is half the sensor's swing
    int segment() const;           // 0 closed to 3 wide open
    void chooseFuel(double seconds);
    void judgeSpeed();
    void moveActuator();
    double jumpTarget() const;
    void learn(double seconds);
    void countGas(double seconds);

    Cells& cells;
    const Engine& engine;

    double sinceStart = 0;  // seconds of running engine
    bool speedReady;
    bool speedPassed = false;  // above the switching speed, to be followed by a fall below it
    bool temperatureReady = false;
    bool overLimit = false;
    bool onGas = false;
    double gasWanted = 0;  // seconds that everything has spoken for gas
    bool cutOff = false;
    double position = 0;   // actuator, steps
    bool rushed = true;    // it was sent to a known place and has not begun to seek since
    bool settled = false;  // seeking, it has found the neutral point
    bool wasRich = false;
    double sinceActuatorStep = 0;
    double sinceBaseStep = 0;
    double gasSeconds = 0;  // of the running minute

    bool learning = false;
    double learnClock = 0;
    double learnGathered = 0;
    double learnSum = 0;
    bool learnTold = false;     // bit 4
    bool learnPartial = false;  // bit 5
};

}  // namespace simulator
