// Who sits in the car: what the key, the foot and the road ask of the engine.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace simulator {

enum class Scenario {
    Cycle,   // a cold start, then a round of town and road that repeats
    Idle,    // a warm engine at idle, on gas
    Cruise,  // a warm engine at a steady speed, on gas
    Cold,    // an engine that stays cold and so on petrol
    Off,     // ignition off
    Ramp     // no engine: every live byte follows a simple rule, to check a display against
};

std::optional<Scenario> ScenarioByName(std::string_view name);
std::string ScenarioNames();

struct Demand {
    bool ignition = true;
    double throttle = 0;  // percent
    double rpm = 0;       // the speed that road and gear lead to; 0: idle
};

class Driver {
public:
    explicit Driver(Scenario scenario) : plan(scenario), ignition(scenario != Scenario::Off) {
    }

    Demand step(double seconds);

    // By hand; nothing stands for "as the scenario goes".
    std::optional<double> throttle;  // percent
    std::optional<double> rpm;

    void turnKey(bool on) {
        ignition = on;
    }

private:
    Scenario plan;
    bool ignition;
    double clock = 0;
};

}  // namespace simulator
