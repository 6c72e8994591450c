#include "simulator/Driver.h"

#include <array>
#include <cmath>

namespace simulator {
namespace {

constexpr std::array<std::string_view, 6> Names = {"cycle", "idle", "cruise", "cold", "off", "ramp"};

struct Leg {
    double seconds;
    double throttle;
    double rpm;
};

// One round: pull away, change up, a road, an overtaking that runs over the gas limit, lift off with cut-off, brake.
constexpr Leg Round[] = {
    {3, 30, 2300}, {1, 0, 1500},  {4, 50, 3200}, {10, 22, 2500}, {4, 96, 6900},
    {5, 0, 3000},  {8, 16, 2100}, {3, 8, 2600},  {5, 0, 1100},   {8, 0, 0},
};
constexpr double IdleAfterStart = 6;

constexpr double RoundSeconds() {
    double sum = 0;
    for (const Leg& leg : Round) {
        sum += leg.seconds;
    }
    return sum;
}

Leg LegAt(double clock) {
    if (clock < IdleAfterStart) {
        return {IdleAfterStart, 0, 0};
    }
    double rest = std::fmod(clock - IdleAfterStart, RoundSeconds());
    for (const Leg& leg : Round) {
        if (rest < leg.seconds) {
            return leg;
        }
        rest -= leg.seconds;
    }
    return Round[0];
}

}  // namespace

std::optional<Scenario> ScenarioByName(std::string_view name) {
    for (std::size_t i = 0; i < Names.size(); ++i) {
        if (Names[i] == name) {
            return static_cast<Scenario>(i);
        }
    }
    return std::nullopt;
}

std::string ScenarioNames() {
    std::string text;
    for (std::string_view name : Names) {
        text += text.empty() ? "" : ", ";
        text += name;
    }
    return text;
}

Demand Driver::step(double seconds) {
    clock = ignition ? clock + seconds : 0;
    Demand demand{ignition, 0, 0};
    if (plan == Scenario::Cycle) {
        Leg leg = LegAt(clock);
        demand.throttle = leg.throttle;
        demand.rpm = leg.rpm;
    } else if (plan == Scenario::Cruise) {
        demand.throttle = 22;
        demand.rpm = 2500;
    }
    // A foot alone turns the engine faster, and a speed alone needs a foot.
    if (throttle) {
        demand.throttle = *throttle;
        demand.rpm = *throttle > 0 ? 900 + 55 * *throttle : 0;
    }
    if (rpm) {
        demand.rpm = *rpm;
        if (!throttle) {
            demand.throttle = std::fmax(0.0, std::fmin(100.0, (*rpm - 900) / 55));
        }
    }
    return demand;
}

}  // namespace simulator
