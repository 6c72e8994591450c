#include "simulator/Responder.h"

#include <algorithm>
#include <utility>

namespace simulator {
namespace {

constexpr double MostCatchUpSeconds = 5;     // of the engine, after the computer has slept
constexpr double HangUpGraceSeconds = 0.02;  // so that a reader sees the bytes before the end

}  // namespace

void Responder::advance(double time) {
    if (config.clockRuns) {
        controller.step(std::clamp(time - steppedTo, 0.0, MostCatchUpSeconds));
    }
    steppedTo = time;
}

void Responder::take(std::span<const std::uint8_t> bytes, double time) {
    for (const std::uint8_t& byte : bytes) {
        received = config.wirePace ? std::max(received, time) + ByteSeconds : time;
        for (const Exchange& exchange : controller.receive({&byte, 1}, time)) {
            reply(exchange, received, time);
        }
    }
}

void Responder::reply(const Exchange& exchange, double complete, double time) {
    Transmission transmission = faults.send(exchange.reply, exchange.isWrite);
    LogEntry entry{time, exchange.request, exchange.isWrite, {}};
    sent = std::max(sent, complete + (config.wirePace ? exchange.workSeconds : 0));
    for (const TimedByte& byte : transmission.bytes) {
        sent += byte.pauseBefore + (config.wirePace || byte.paced ? ByteSeconds : 0);
        outgoing.push_back({sent, byte.value});
        entry.reply.push_back(byte.value);
    }
    if (transmission.hangUp) {
        hangUpAt = sent + HangUpGraceSeconds;
    }
    if (observer) {
        observer(entry);
    }
    log.push_back(std::move(entry));
    if (log.size() > LogLimit) {
        log.pop_front();
    }
}

Bytes Responder::give(double time) {
    Bytes bytes;
    while (!outgoing.empty() && outgoing.front().due <= time) {
        bytes.push_back(outgoing.front().value);
        outgoing.pop_front();
    }
    return bytes;
}

void Responder::cut() {
    outgoing.clear();
    controller.dropPartialRequest();
    received = sent = 0;
    hangUpAt = Never;
}

}  // namespace simulator
