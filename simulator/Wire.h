// The line as the controller sees it: byte times, sums, and the cutting of incoming bytes into requests.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace simulator {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t Marker = 0x65;
constexpr std::size_t RequestLength = 4;

// 9600 baud with one start, eight data and one stop bit.
constexpr double ByteSeconds = 10.0 / 9600.0;

// A request that stays incomplete for this long is forgotten, so that a cut one does not spoil its successor.
constexpr double RequestGapSeconds = 0.020;

std::uint8_t SumOf(std::span<const std::uint8_t> bytes);

// Appends the sum of what is there.
void Seal(Bytes& bytes);

struct Request {
    std::array<std::uint8_t, RequestLength> bytes{};  // marker, command or cell, command or value, sum
    bool good = false;                                // the sum is right
};

class RequestReader {
public:
    // Takes one byte that arrived at `now` (seconds on any steady clock). Gives a request when four bytes are
    // together; after a bad one the bytes from the next marker on are kept as the start of the next.
    std::optional<Request> push(std::uint8_t byte, double now);
    void reset() {
        count = 0;
    }

private:
    std::array<std::uint8_t, RequestLength> buffer{};
    std::size_t count = 0;
    double lastArrival = 0;
};

}  // namespace simulator
