#include "simulator/Wire.h"

#include <algorithm>
#include <numeric>

namespace simulator {

std::uint8_t SumOf(std::span<const std::uint8_t> bytes) {
    return static_cast<std::uint8_t>(std::accumulate(bytes.begin(), bytes.end(), 0U));
}

void Seal(Bytes& bytes) {
    bytes.push_back(SumOf(bytes));
}

std::optional<Request> RequestReader::push(std::uint8_t byte, double now) {
    if (now - lastArrival > RequestGapSeconds) {
        count = 0;
    }
    lastArrival = now;
    if (count == 0 && byte != Marker) {
        return std::nullopt;
    }
    buffer[count++] = byte;
    if (count < RequestLength) {
        return std::nullopt;
    }
    Request request{buffer, SumOf(std::span(buffer).first<RequestLength - 1>()) == buffer.back()};
    auto next = request.good ? buffer.end() : std::find(buffer.begin() + 1, buffer.end(), Marker);
    count = static_cast<std::size_t>(buffer.end() - next);
    std::copy(next, buffer.end(), buffer.begin());
    return request;
}

}  // namespace simulator
