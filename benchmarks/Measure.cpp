#include "Measure.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <numeric>
#include <string>

namespace benchmarks {

double ClockMilliseconds(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

double ProcessorMilliseconds(pid_t process) {
    clockid_t clock{};
    return clock_getcpuclockid(process, &clock) == 0 ? ClockMilliseconds(clock) : 0;
}

// The figure behind a word of a file that tells kilobytes.
static double MegabytesIn(const std::string& path, const char* name) {
    std::ifstream file(path);
    for (std::string word; file >> word;) {
        if (double kilobytes = 0; word == name && file >> kilobytes) {
            return kilobytes / 1024;
        }
    }
    return 0;
}

double ProportionalMegabytes(pid_t process) {
    return MegabytesIn("/proc/" + std::to_string(process) + "/smaps_rollup", "Pss:");
}

double AnonymousMegabytes() {
    return MegabytesIn("/proc/self/status", "RssAnon:");
}

void SleepMilliseconds(double milliseconds) {
    const auto nanoseconds = static_cast<long>(milliseconds * 1e6);
    timespec rest{nanoseconds / 1'000'000'000, nanoseconds % 1'000'000'000};
    while (nanosleep(&rest, &rest) != 0) {
    }
}

double Quantile(std::vector<double> values, double part) {
    std::ranges::sort(values);
    const double rank = std::ceil(part * static_cast<double>(values.size()));
    return values[static_cast<size_t>(std::max(rank, 1.0)) - 1];
}

double Mean(const std::vector<double>& values) {
    return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

}  // namespace benchmarks
