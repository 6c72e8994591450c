// A controller at the end of its line: which bytes come back for those that come in, and when; what goes wrong on the
// way; and the log of it. It has no thread and no clock: the caller tells the time, in seconds that never go back.
#pragma once

#include "simulator/Controller.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <vector>

namespace simulator {

struct LogEntry {
    double seconds = 0;  // since the start
    Request request;     // with good false for a wrong sum, which gets no reply
    bool isWrite = false;
    Bytes reply;  // as it was sent, so after a fault; empty: none
};

using Log = std::deque<LogEntry>;

// A moment that never comes.
constexpr double Never = -1;

class Responder {
public:
    explicit Responder(const Config& asked) : config(asked), controller(config), faults(config.seed, config.faults) {
    }

    // Lets the engine run on to this moment.
    void advance(double time);

    // Takes bytes that were written at this moment. At the true pace they are still to run over the wire then, after
    // those before them.
    void take(std::span<const std::uint8_t> bytes, double time);
    // When the next byte of a reply is complete on the wire, and how many are still to come.
    double nextByte() const {
        return outgoing.empty() ? Never : outgoing.front().due;
    }
    std::size_t bytesToCome() const {
        return outgoing.size();
    }
    // The bytes of replies that are complete by now.
    Bytes give(double time);
    // When the device is to go away by itself, after which it is back after ReplugSeconds.
    double hangUp() const {
        return hangUpAt;
    }
    // The line is cut: what was under way is lost.
    void cut();

    // Called for each new entry of the log.
    void observe(std::function<void(const LogEntry&)> newObserver) {
        observer = std::move(newObserver);
    }

    const Config config;
    Controller controller;
    Faults faults;
    // Every frame of four bytes that came in, oldest first; the latest LogLimit of them.
    static constexpr std::size_t LogLimit = 20000;
    Log log;

private:
    struct DueByte {
        double due;
        std::uint8_t value;
    };

    void reply(const Exchange& exchange, double complete, double time);

    std::function<void(const LogEntry&)> observer;
    std::deque<DueByte> outgoing;
    double received = 0;  // when the last byte that came in is complete on the wire
    double sent = 0;      // when the last byte that goes out is
    double hangUpAt = Never;
    double steppedTo = 0;
};

constexpr double ReplugSeconds = 1;

}  // namespace simulator
