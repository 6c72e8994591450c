// The layer's one source of time. Timers, the time-outs of the line, waiting, repeats, letters that are typed in one
// go, carets and the local time ask it; nothing else in the layer reads a clock or makes a timer of Qt's.
#pragma once

#include <cstdint>
#include <limits>

#include "platform/linux/WinComm.h"

namespace layer {

// Nanoseconds on a clock that never goes back; where it begins has no meaning.
using Moment = std::int64_t;
constexpr Moment Microsecond = 1'000;
constexpr Moment Millisecond = 1'000'000;
constexpr Moment Second = 1'000'000'000;
constexpr Moment Never = std::numeric_limits<Moment>::max();

class Clock {
public:
    virtual ~Clock() = default;
    virtual Moment now() = 0;
    virtual SYSTEMTIME localTime() = 0;
    // Holds the program up until the moment.
    virtual void waitUntil(Moment end) = 0;
    // Until the device has one of these events of poll(2), which it gives then, or the moment has come: 0.
    virtual short waitForDevice(int descriptor, short events, Moment end) = 0;
    // Deals with what the desktop has for the program by now.
    virtual void serveDesktop() = 0;
    // The same, once the desktop has something or a message is posted; by the moment at the latest.
    virtual void waitForDesktop(Moment end) = 0;
};

// That of the computer, unless a test holds one of its own.
Clock& theClock();
// Null: the computer's again.
void holdClock(Clock* held);

// What is called at the moment of the last waitForDesktop when a loop of Qt's own runs then, as a question of a file
// dialog has one; gives the next moment.
void serveWithinQtLoops(Moment (*serve)());

}  // namespace layer
