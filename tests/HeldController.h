// A simulated controller at the far end of a line in the test's own thread and time: the same pace, faults and log as
// on a pseudo-terminal.
#pragma once

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "HeldLine.h"
#include "simulator/Responder.h"

class HeldController : public FarEnd, public HeldClock::Source {
public:
    // Plugs it in as this port. The configuration's link is not used.
    HeldController(HeldClock& held, const simulator::Config& config, int port = 1)
        : FarEnd(held, port), responder(config) {
        clock.add(*this);
    }
    ~HeldController() override {
        clock.remove(*this);
    }

    bool replug() {
        plugAt = simulator::Never;
        FarEnd::replug();
        return true;
    }

    // The controller, with its engine brought up to now.
    template <typename Use>
    auto with(Use&& use) {
        responder.advance(seconds());
        return use(responder.controller);
    }
    void addFault(const simulator::FaultRule& rule) {
        responder.faults.add(rule);
    }
    void clearFaults() {
        responder.faults.clear();
    }
    const simulator::Log& log() const {
        return responder.log;
    }
    void clearLog() {
        responder.log.clear();
    }
    // Called for each request as soon as it is written, with its reply.
    void observe(std::function<void(const simulator::LogEntry&)> observer) {
        responder.observe(std::move(observer));
    }
    // Called for what the program writes in one go, and for each byte that arrives at it.
    void observeBytes(std::function<void(std::span<const BYTE>)> whenWritten, std::function<void(BYTE)> whenArrived) {
        written = std::move(whenWritten);
        arrived = std::move(whenArrived);
    }
    // Whether bytes are still on their way to the program.
    bool isBusy() const {
        return responder.bytesToCome() > 0 || !isPlugged();
    }

    Moment next() const override {
        Moment first = layer::Never;
        for (const double moment : {responder.nextByte(), responder.hangUp(), plugAt}) {
            if (moment >= 0) {
                first = std::min(first, HeldClock::Start + static_cast<Moment>(std::ceil(moment * 1e9)));
            }
        }
        return first;
    }
    void happen() override {
        // A moment that was rounded up to a nanosecond has come.
        const double time = seconds() + 1e-9;
        const simulator::Bytes bytes = responder.give(time);
        send(bytes);
        for (size_t at = 0; arrived && at < bytes.size(); ++at) {
            arrived(bytes[at]);
        }
        if (responder.hangUp() >= 0 && responder.hangUp() <= time) {
            unplug();
            plugAt = time + simulator::ReplugSeconds;
        } else if (plugAt >= 0 && plugAt <= time) {
            replug();
        }
    }

protected:
    void take(std::span<const BYTE> bytes) override {
        if (written) {
            written(bytes);
        }
        responder.advance(seconds());
        responder.take(bytes, seconds());
    }
    void cut() override {
        responder.cut();
        plugAt = simulator::Never;
    }

private:
    double seconds() const {
        return static_cast<double>(clock.now() - HeldClock::Start) / static_cast<double>(Second);
    }

    simulator::Responder responder;
    std::function<void(std::span<const BYTE>)> written;
    std::function<void(BYTE)> arrived;
    double plugAt = simulator::Never;
};
