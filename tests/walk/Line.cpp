#include "link/Link.h"
#include "walk/Walk.h"

namespace walk {

using simulator::FaultKind;

namespace {

constexpr FaultKind Faults[] = {FaultKind::Silence, FaultKind::LostByte, FaultKind::FlippedBit,
                                FaultKind::Late,    FaultKind::Split,    FaultKind::WrongEcho,
                                FaultKind::Garbage, FaultKind::Doubled,  FaultKind::Mix};
constexpr double Shares[] = {0.03, 0.1, 0.34, 1};

}  // namespace

Line::Line(HeldClock& held, Dice& cast) : clock(held), dice(cast) {
    constexpr simulator::Scenario Scenarios[] = {simulator::Scenario::Cycle, simulator::Scenario::Idle,
                                                 simulator::Scenario::Cruise, simulator::Scenario::Off};
    const int family = dice.oneIn(3) ? 2 : 4;
    for (const int port : {1, 2}) {
        simulator::Config config;
        config.family = port == 1 ? family : 6 - family;
        config.firmware = static_cast<int>(3 + dice.below(4));
        config.scenario = dice.oneOf(Scenarios);
        config.seed = dice.below(1000);
        controllers.push_back(std::make_unique<HeldController>(clock, config, port));
    }
    good = clock.now();
    clock.at(clock.now() + 5 * Second, [this] { change(); });
}

HeldController* Line::inUse() const {
    return PortNumber == 1 || PortNumber == 2 ? controllers[PortNumber - 1].get() : nullptr;
}

Moment Line::soundSince() const {
    return bad || !inUse() ? layer::Never : good;
}

void Line::goBad(HeldController& controller) {
    if (dice.oneIn(4)) {
        controller.unplug();
    } else {
        controller.addFault({dice.oneOf(Faults), dice.oneOf(Shares)});
    }
}

void Line::change() {
    if (mended) {
        return;
    }
    bad = !bad;
    for (const auto& controller : controllers) {
        controller->clearFaults();
        if (bad) {
            goBad(*controller);
        } else if (!controller->isPlugged()) {
            controller->replug();
        }
    }
    good = clock.now();
    clock.at(clock.now() + (bad ? 100 : 3000) * Millisecond + dice.below(4000) * Millisecond, [this] { change(); });
}

void Line::mend() {
    if (bad) {
        change();
    }
    mended = true;
}

}  // namespace walk
