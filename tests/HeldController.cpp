#include "HeldController.h"

#include <algorithm>
#include <cmath>

HeldController::HeldController(HeldClock& held, const simulator::Config& config, int number)
    : FarEnd(held, number), responder(config) {
    clock.add(*this);
}

HeldController::~HeldController() {
    clock.remove(*this);
}

double HeldController::seconds() const {
    return static_cast<double>(clock.now() - HeldClock::Start) / static_cast<double>(Second);
}

void HeldController::take(std::span<const BYTE> bytes) {
    if (written) {
        written(bytes);
    }
    responder.advance(seconds());
    responder.take(bytes, seconds());
}

void HeldController::cut() {
    responder.cut();
    plugAt = simulator::Never;
}

bool HeldController::replug() {
    plugAt = simulator::Never;
    FarEnd::replug();
    return true;
}

Moment HeldController::next() const {
    Moment first = layer::Never;
    for (const double moment : {responder.nextByte(), responder.hangUp(), plugAt}) {
        if (moment >= 0) {
            first = std::min(first, HeldClock::Start + static_cast<Moment>(std::ceil(moment * 1e9)));
        }
    }
    return first;
}

void HeldController::happen() {
    // A moment that was rounded up to a nanosecond has come.
    const double time = seconds() + 1e-9;
    const simulator::Bytes bytes = responder.give(time);
    send(bytes);
    for (const BYTE value : bytes) {
        if (arrived) {
            arrived(value);
        }
    }
    if (responder.hangUp() >= 0 && responder.hangUp() <= time) {
        unplug();
        plugAt = time + simulator::ReplugSeconds;
    } else if (plugAt >= 0 && plugAt <= time) {
        replug();
    }
}
