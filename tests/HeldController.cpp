#include "HeldController.h"

#include <algorithm>
#include <cmath>
#include <deque>

#include "platform/linux/Line.h"

// The program's end of the line.
class HeldLine : public layer::Line {
public:
    explicit HeldLine(HeldController& at) : controller(&at) {
        at.user = this;
    }
    ~HeldLine() override {
        if (controller) {
            controller->user = nullptr;
        }
    }
    HeldLine(const HeldLine&) = delete;
    HeldLine& operator=(const HeldLine&) = delete;

    bool configure(DWORD bitsPerSecond) override {
        return controller && bitsPerSecond == 9600;
    }
    State awaitByte(Moment end) override {
        if (controller) {
            controller->clock.waitFor([this] { return !controller || !received.empty(); }, end);
        }
        return !received.empty() ? State::Ready : controller ? State::Quiet : State::Gone;
    }
    State awaitRoom(Moment) override {
        return controller ? State::Ready : State::Gone;
    }
    ssize_t read(std::span<BYTE> into) override {
        if (!controller) {
            return -1;
        }
        const size_t count = std::min(into.size(), received.size());
        std::copy_n(received.begin(), count, into.begin());
        received.erase(received.begin(), received.begin() + static_cast<std::ptrdiff_t>(count));
        return static_cast<ssize_t>(count);
    }
    ssize_t write(std::span<const BYTE> bytes) override {
        if (!controller) {
            return -1;
        }
        if (controller->written) {
            controller->written(bytes);
        }
        controller->responder.advance(controller->seconds());
        controller->responder.take(bytes, controller->seconds());
        return static_cast<ssize_t>(bytes.size());
    }
    bool dropReceived() override {
        received.clear();
        return controller != nullptr;
    }
    bool dropUnsent() override {
        return controller != nullptr;
    }

    void arrive(BYTE value) {
        received.push_back(value);
    }
    void lose() {
        received.clear();
        controller = nullptr;
    }

private:
    HeldController* controller;  // null once the device has gone
    std::deque<BYTE> received;
};

HeldController::HeldController(HeldClock& held, const simulator::Config& config, int number)
    : clock(held), port(number), responder(config) {
    clock.add(*this);
    layer::holdPort(port, [this]() -> std::unique_ptr<layer::Line> {
        return plugged && !user ? std::make_unique<HeldLine>(*this) : nullptr;
    });
}

HeldController::~HeldController() {
    unplug();
    layer::holdPort(port, {});
    clock.remove(*this);
}

double HeldController::seconds() const {
    return static_cast<double>(clock.now() - HeldClock::Start) / static_cast<double>(Second);
}

void HeldController::unplug() {
    plugged = false;
    plugAt = simulator::Never;
    responder.cut();
    if (user) {
        user->lose();
        user = nullptr;
    }
}

bool HeldController::replug() {
    plugged = true;
    plugAt = simulator::Never;
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
    for (const BYTE value : responder.give(time)) {
        if (user) {
            user->arrive(value);
        }
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
