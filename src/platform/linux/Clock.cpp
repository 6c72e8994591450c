#include "platform/linux/Clock.h"

#include <poll.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QDateTime>
#include <QSocketNotifier>
#include <QThread>
#include <algorithm>
#include <cerrno>
#include <ctime>

namespace layer {

namespace {

Moment (*serveInLoop)() = nullptr;

timespec toTimespec(Moment duration) {
    return {.tv_sec = duration / Second, .tv_nsec = duration % Second};
}

// Wakes a wait for the desktop at a moment, to the microsecond; Qt's own timers know milliseconds only.
class Alarm {
public:
    void set(Moment moment) {
        if (descriptor < 0) {
            open();
        }
        if (moment == armed) {
            return;
        }
        armed = moment;
        itimerspec time{};
        if (moment != Never) {
            time.it_value = toTimespec(std::max<Moment>(moment, 1));
        }
        timerfd_settime(descriptor, TFD_TIMER_ABSTIME, &time, nullptr);
    }

private:
    void open() {
        descriptor = timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
        auto* notifier = new QSocketNotifier(descriptor, QSocketNotifier::Read, qApp);
        QObject::connect(notifier, &QSocketNotifier::activated, [this] { ring(); });
        QObject::connect(notifier, &QObject::destroyed, [this] { close(std::exchange(descriptor, -1)); });
    }
    void ring() {
        std::uint64_t rounds = 0;
        [[maybe_unused]] const ssize_t taken = read(descriptor, &rounds, sizeof rounds);
        armed = Never;
        // The layer's own loops take events without running one of Qt's, and look for what is due by themselves.
        if (QThread::currentThread()->loopLevel() > 0 && serveInLoop) {
            set(serveInLoop());
        }
    }

    int descriptor = -1;
    Moment armed = Never;
};

class ComputerClock : public Clock {
public:
    Moment now() override {
        timespec time{};
        clock_gettime(CLOCK_MONOTONIC, &time);
        return time.tv_sec * Second + time.tv_nsec;
    }

    SYSTEMTIME localTime() override {
        const QDateTime moment = QDateTime::currentDateTime();
        const QDate date = moment.date();
        const QTime time = moment.time();
        return {
            .wYear = static_cast<WORD>(date.year()),
            .wMonth = static_cast<WORD>(date.month()),
            .wDayOfWeek = static_cast<WORD>(date.dayOfWeek() % 7),
            .wDay = static_cast<WORD>(date.day()),
            .wHour = static_cast<WORD>(time.hour()),
            .wMinute = static_cast<WORD>(time.minute()),
            .wSecond = static_cast<WORD>(time.second()),
            .wMilliseconds = static_cast<WORD>(time.msec()),
        };
    }

    void waitUntil(Moment end) override {
        const timespec time = toTimespec(end);
        while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &time, nullptr) == EINTR) {
        }
    }

    short waitForDevice(int descriptor, short events, Moment end) override {
        for (;;) {
            pollfd request{.fd = descriptor, .events = events, .revents = 0};
            const timespec rest = toTimespec(std::max<Moment>(0, end - now()));
            const int ready = ppoll(&request, 1, &rest, nullptr);
            if (ready >= 0) {
                return request.revents;
            }
            if (errno != EINTR) {
                return POLLERR;
            }
        }
    }

    void serveDesktop() override {
        QCoreApplication::processEvents(QEventLoop::AllEvents);
    }

    void waitForDesktop(Moment end) override {
        alarm.set(end);
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }

private:
    Alarm alarm;
};

Clock* heldClock = nullptr;

}  // namespace

Clock& theClock() {
    static ComputerClock computer;
    return heldClock ? *heldClock : computer;
}

void holdClock(Clock* held) {
    heldClock = held;
}

void serveWithinQtLoops(Moment (*serve)()) {
    serveInLoop = serve;
}

}  // namespace layer

void GetLocalTime(SYSTEMTIME* time) {
    *time = layer::theClock().localTime();
}
