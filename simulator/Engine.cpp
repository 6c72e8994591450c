#include "simulator/Engine.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace simulator {
namespace {

constexpr double IdleRPM = 900;
constexpr double ColdIdleRaise = 250;  // more at 0 degrees, nothing from 50 on
constexpr double AirTemperature = 14;
constexpr double WarmTemperature = 84;

// The actuator position that this engine truly wants on gas, and how much more under load.
constexpr double WantedPosition = 122;
constexpr double WantedPerThrottle = 0.20;
constexpr double StepsToFullSwing = 14;

// How fast a first-order lag of the given time constant closes its gap in one step.
double Closing(double seconds, double timeConstant) {
    return 1 - std::exp(-seconds / timeConstant);
}

bool StartsWarm(Scenario scenario) {
    return scenario == Scenario::Idle || scenario == Scenario::Cruise;
}

}  // namespace

Engine::Engine(Scenario scenario, std::uint32_t seed)
    : plan(scenario), generator(seed), warmth(StartsWarm(scenario) ? 82 : AirTemperature) {
    if (StartsWarm(scenario)) {
        speed = IdleRPM;
    }
}

double Engine::noise() {
    return static_cast<double>(generator()) / static_cast<double>(std::mt19937::max()) * 2 - 1;
}

void Engine::step(double seconds, const Demand& demand, const Feed& feed) {
    clock += seconds;

    double idle = IdleRPM + ColdIdleRaise * std::clamp((50 - temperature()) / 50, 0.0, 1.0);
    double goal = !demand.ignition ? 0 : demand.rpm > 0 ? demand.rpm : idle;
    speed += (goal - speed) * Closing(seconds, demand.ignition ? 0.7 : 0.3);
    shake += (noise() * 60 - shake) * Closing(seconds, 0.15);
    if (demand.ignition) {
        speed += shake * seconds * 8;
    } else if (speed < 150) {
        speed = 0;
    }

    double foot = std::clamp(demand.throttle, 0.0, 100.0);
    double reach = 250 * seconds;
    opening += std::clamp(foot - opening, -reach, reach);

    if (plan == Scenario::Cold) {
        warmth += ((running() ? 20 : AirTemperature) - warmth) * Closing(seconds, 600);
    } else {
        warmth += ((running() ? WarmTemperature : AirTemperature) - warmth) * Closing(seconds, running() ? 75 : 900);
    }

    double mixture = 0;
    if (!running() || feed.closed) {
        mixture = -1;
    } else if (feed.gas) {
        double wanted = WantedPosition + WantedPerThrottle * opening + 3 * std::sin(clock / 7);
        mixture = (feed.actuator - wanted) / StepsToFullSwing;
    } else {
        // On petrol the engine's own computer swings the mixture.
        mixture = std::sin(clock * 2 * std::numbers::pi * 0.7) * 0.9;
    }
    // What is mixed now comes past the sensor later, which is why a regulated mixture swings.
    std::swap(onTheWay[next], mixture);
    next = (next + 1) % onTheWay.size();
    mixture = std::clamp(mixture + noise() * 0.05, -1.0, 1.0);
    exhaust += (mixture - exhaust) * Closing(seconds, 0.12);
}

}  // namespace simulator
