// The engine itself, which the gas controller only measures: speed, throttle, warmth and how rich it burns.
#pragma once

#include "simulator/Driver.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>

namespace simulator {

// What feeds the engine.
struct Feed {
    bool gas = false;
    bool closed = false;  // cut-off: nearly nothing comes
    double actuator = 0;  // steps; only gas flows through it
};

class Engine {
public:
    Engine(Scenario scenario, std::uint32_t seed);

    void step(double seconds, const Demand& demand, const Feed& feed);

    bool running() const {
        return speed >= 300;
    }
    double rpm() const {
        return speed;
    }
    double throttle() const {
        return opening;
    }
    double temperature() const {
        return heldTemperature.value_or(warmth);
    }
    // -1 lean to +1 rich, as the sensor in the exhaust has it by now.
    double richness() const {
        return exhaust;
    }

    // Degrees to hold by hand; nothing lets the engine warm and cool.
    std::optional<double> heldTemperature;

private:
    double noise();  // -1 to 1

    Scenario plan;
    std::mt19937 generator;
    double clock = 0;
    double speed = 0;
    double opening = 0;
    double warmth;
    double shake = 0;
    std::array<double, 25> onTheWay{};  // mixtures between mixer and sensor, one a step
    std::size_t next = 0;
    double exhaust = 0;
};

}  // namespace simulator
