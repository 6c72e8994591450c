// Timers: each is at most one pending message, however late the program is.
#include <QObject>
#include <QThread>
#include <QTimerEvent>
#include <algorithm>
#include <list>

#include "platform/linux/Layer.h"

namespace layer {

namespace {

constexpr UINT ShortestPeriod = 10;

struct Timer {
    HWND window;
    UINT_PTR id;
    int qtTimer;
    bool due;
};

// In the order in which they came due.
std::list<Timer> timers;

class Ticker : public QObject {
protected:
    void timerEvent(QTimerEvent* event) override {
        const auto rung = std::ranges::find(timers, event->timerId(), &Timer::qtTimer);
        if (rung != timers.end() && !rung->due) {
            rung->due = true;
            timers.splice(timers.end(), timers, rung);
        }
        // The layer's own loops take events without running one of Qt's.
        if (QThread::currentThread()->loopLevel() > 0) {
            serveWithinQtLoop();
        }
    }
};

Ticker& ticker() {
    static Ticker* ticking = new Ticker;
    return *ticking;
}

bool belongsTo(const Timer& timer, HWND window, UINT_PTR id) {
    return timer.window == window && timer.id == id;
}

}  // namespace

void killTimers(HWND window) {
    for (const Timer& timer : timers) {
        if (timer.window == window) {
            ticker().killTimer(timer.qtTimer);
        }
    }
    timers.remove_if([&](const Timer& timer) { return timer.window == window; });
}

size_t livingTimers() {
    return timers.size();
}

bool takeDueTimer(MSG& message) {
    const auto due = std::ranges::find(timers, true, &Timer::due);
    if (due == timers.end()) {
        return false;
    }
    due->due = false;
    message = {due->window, WM_TIMER, due->id, 0, 0, {0, 0}};
    return true;
}

}  // namespace layer

using namespace layer;

UINT_PTR SetTimer(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC procedure) {
    if (procedure || !find(window)) {
        return 0;
    }
    KillTimer(window, id);
    const auto period = static_cast<int>(std::max(milliseconds, ShortestPeriod));
    timers.push_back({window, id, ticker().startTimer(period, Qt::PreciseTimer), false});
    return id;
}

BOOL KillTimer(HWND window, UINT_PTR id) {
    const auto found = std::ranges::find_if(timers, [&](const Timer& timer) { return belongsTo(timer, window, id); });
    if (found == timers.end()) {
        return FALSE;
    }
    ticker().killTimer(found->qtTimer);
    timers.erase(found);
    return TRUE;
}
