// What a watched program tells once its window stands on the screen for the first time.
#pragma once

#include <cstdint>

namespace benchmarks {

// Environment variable with the number of an open socket. The report goes out on it; then the program stands still
// until a byte comes back, so that its memory can be read at this very point.
constexpr const char* ReportVariable = "TARVEX_REPORT_SOCKET";

struct FirstPaint {
    std::int64_t nanoseconds;  // CLOCK_MONOTONIC
    int width;                 // of the window's inside, menu included
    int height;
};

}  // namespace benchmarks
