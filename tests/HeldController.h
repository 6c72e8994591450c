// A simulated controller at the far end of a line in the test's own thread and time: the same pace, faults and log as
// on a pseudo-terminal.
#pragma once

#include <functional>
#include <vector>

#include "HeldLine.h"
#include "simulator/Responder.h"

class HeldController : public FarEnd, public HeldClock::Source {
public:
    // Plugs it in as this port. The configuration's link is not used.
    HeldController(HeldClock& clock, const simulator::Config& config, int port = 1);
    ~HeldController() override;

    bool replug();

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

    Moment next() const override;
    void happen() override;

protected:
    void take(std::span<const BYTE> bytes) override;
    void cut() override;

private:
    double seconds() const;

    simulator::Responder responder;
    std::function<void(std::span<const BYTE>)> written;
    std::function<void(BYTE)> arrived;
    double plugAt = simulator::Never;
};
