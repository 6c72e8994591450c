// The controller as a state machine: bytes in, bytes out, and time that passes only when told.
#pragma once

#include "simulator/Cells.h"
#include "simulator/Config.h"
#include "simulator/Driver.h"
#include "simulator/Engine.h"
#include "simulator/GasControl.h"
#include "simulator/Wire.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace simulator {

constexpr std::size_t LiveLength = 11;

struct Exchange {
    Request request;
    Bytes reply;  // empty: the controller does not answer
    bool isWrite = false;
    double workSeconds = 0;  // how long it thinks before the reply
};

class Controller {
public:
    explicit Controller(const Config& config);
    Controller(const Controller&) = delete;  // its parts point at each other
    Controller& operator=(const Controller&) = delete;

    // Takes bytes that arrived together at `now` (seconds, any steady clock) and answers each request in them.
    std::vector<Exchange> receive(std::span<const std::uint8_t> bytes, double now);
    // The same for a caller without a clock: what comes back for these bytes, each call after a long pause.
    Bytes exchange(std::span<const std::uint8_t> bytes);
    // Forgets a request that has begun, as when the line was cut.
    void dropPartialRequest() {
        reader.reset();
    }

    // Lets the engine run on.
    void step(double seconds);

    // The block that a read command (1 to 5) would return now; empty if this family has none.
    Bytes block(int command) const;

    // Shows `value` in a live block byte (1 to 9) whatever the engine does.
    void overrideLive(std::size_t byte, std::uint8_t value);
    void releaseLive() {
        overrides.fill(std::nullopt);
    }

    std::string summary() const;  // a few lines for people

    Cells cells;
    Driver driver;
    Engine engine;
    GasControl gas;

private:
    Exchange answer(const Request& request);
    void command(std::uint8_t value);
    std::array<std::uint8_t, LiveLength> ramp() const;

    std::uint8_t identity;
    Scenario scenario;
    RequestReader reader;
    double untimedNow = 0;
    double pending = 0;  // seconds not yet stepped
    double clock = 0;
    std::array<std::optional<std::uint8_t>, LiveLength> overrides{};
};

}  // namespace simulator
