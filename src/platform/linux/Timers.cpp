// Timers: each is at most one pending message, however late the program is.
#include <algorithm>
#include <list>

#include "platform/linux/Clock.h"
#include "platform/linux/Layer.h"

namespace layer {

namespace {

constexpr UINT ShortestPeriod = 10;

struct Timer {
    HWND window;
    UINT_PTR id;
    TIMERPROC procedure;
    Moment period;
    Moment due;
};

// In the order in which they were set.
std::list<Timer> timers;

auto nextOne() {
    return std::ranges::min_element(timers, {}, &Timer::due);
}

}  // namespace

void killTimers(HWND window) {
    timers.remove_if([&](const Timer& timer) { return timer.window == window; });
}

size_t livingTimers() {
    return timers.size();
}

Moment nextTimerDue() {
    return timers.empty() ? Never : nextOne()->due;
}

// What has come due meanwhile is not made up for: the next moment is the first one to come on the timer's own beat.
bool takeDueTimer(MSG& message) {
    const Moment now = theClock().now();
    if (nextTimerDue() > now) {
        return false;
    }
    Timer& timer = *nextOne();
    timer.due += timer.period * (1 + (now - timer.due) / timer.period);
    message = {timer.window, WM_TIMER, timer.id, reinterpret_cast<LPARAM>(timer.procedure), 0, {0, 0}};
    return true;
}

}  // namespace layer

using namespace layer;

UINT_PTR SetTimer(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC procedure) {
    if (!find(window)) {
        return 0;
    }
    KillTimer(window, id);
    const Moment period = std::max(milliseconds, ShortestPeriod) * Millisecond;
    timers.push_back({window, id, procedure, period, theClock().now() + period});
    return id;
}

BOOL KillTimer(HWND window, UINT_PTR id) {
    return timers.remove_if([&](const Timer& timer) { return timer.window == window && timer.id == id; }) > 0;
}
