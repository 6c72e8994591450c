// Clocks, memory and statistics.
#pragma once

#include <sys/types.h>
#include <ctime>
#include <vector>

namespace benchmarks {

// Any of these clocks, in milliseconds.
double ClockMilliseconds(clockid_t clock);

// Processor time of another process, all its threads, in milliseconds; 0 if there is none.
double ProcessorMilliseconds(pid_t process);

// Proportional set size in MB: its own memory and its share of what it has in common with others. 0 if unknown.
double ProportionalMegabytes(pid_t process);

// What this process has for itself and no file stands behind, in MB; 0 if unknown.
double AnonymousMegabytes();

void SleepMilliseconds(double milliseconds);

// The value below which this part of the values lies; 0.5 gives the median. There must be some.
double Quantile(std::vector<double> values, double part);
double Mean(const std::vector<double>& values);

}  // namespace benchmarks
