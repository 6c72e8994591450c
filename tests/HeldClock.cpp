#include "HeldClock.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QDateTime>
#include <QTimeZone>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace {

HeldClock* held = nullptr;

constexpr int MostRoundsOfDesktop = 1000;

[[noreturn]] void giveUp(const char* what) {
    std::fprintf(stderr, "wait on a held clock: %s\n", what);
    std::abort();
}

}  // namespace

// Qt and the libraries below it find this one before the system's: what they measure is the held time too.
extern "C" int clock_gettime(clockid_t id, timespec* result) noexcept {
    if (held && (id == CLOCK_MONOTONIC || id == CLOCK_MONOTONIC_COARSE)) {
        const Moment now = held->now();
        *result = {.tv_sec = now / Second, .tv_nsec = now % Second};
        return 0;
    }
    return static_cast<int>(syscall(SYS_clock_gettime, id, result));
}

HeldClock::HeldClock()
    : startTime{.wYear = 2026,
                .wMonth = 11,
                .wDayOfWeek = 1,
                .wDay = 23,
                .wHour = 9,
                .wMinute = 0,
                .wSecond = 0,
                .wMilliseconds = 0} {
    held = this;
    layer::holdClock(this);
}

HeldClock::~HeldClock() {
    layer::holdClock(nullptr);
    held = nullptr;
}

HeldClock* HeldClock::current() {
    return held;
}

void HeldClock::add(Source& source) {
    sources.push_back(&source);
}

void HeldClock::remove(Source& source) {
    std::erase(sources, &source);
}

void HeldClock::at(Moment moment, std::function<void()> act, Beside beside) {
    agenda.emplace(Key{moment, beside}, std::move(act));
}

void HeldClock::put(std::function<void()> input) {
    inputs.push_back(std::move(input));
}

void HeldClock::pass(Moment duration) {
    time += duration;
}

SYSTEMTIME HeldClock::localTime() {
    const QDateTime start(QDate(startTime.wYear, startTime.wMonth, startTime.wDay),
                          QTime(startTime.wHour, startTime.wMinute, startTime.wSecond), QTimeZone::utc());
    const QDateTime now = start.addMSecs((time - Start) / Millisecond);
    return {.wYear = static_cast<WORD>(now.date().year()),
            .wMonth = static_cast<WORD>(now.date().month()),
            .wDayOfWeek = static_cast<WORD>(now.date().dayOfWeek() % 7),
            .wDay = static_cast<WORD>(now.date().day()),
            .wHour = static_cast<WORD>(now.time().hour()),
            .wMinute = static_cast<WORD>(now.time().minute()),
            .wSecond = static_cast<WORD>(now.time().second()),
            .wMilliseconds = static_cast<WORD>(now.time().msec())};
}

bool HeldClock::happenBy(Key end) {
    const auto source = std::ranges::min_element(sources, {}, [](const Source* one) { return one->next(); });
    const Key ofSource{source == sources.end() ? layer::Never : (*source)->next(), Beside::BeforeTimers};
    const Key ofAgenda = agenda.empty() ? Key{layer::Never, Beside::BehindTimers} : agenda.begin()->first;
    const Key next = std::min(ofSource, ofAgenda);
    if (next.first == layer::Never || next > end) {
        return false;
    }
    time = std::max(time, next.first);
    if (next == ofSource) {
        (*source)->happen();
    } else {
        const auto act = std::move(agenda.begin()->second);
        agenda.erase(agenda.begin());
        act();
    }
    return true;
}

bool HeldClock::waitFor(const std::function<bool()>& condition, Moment end) {
    while (!condition()) {
        if (!happenBy({end, Beside::BehindTimers})) {
            if (end == layer::Never) {
                giveUp("a line without end");
            }
            time = std::max(time, end);
            return condition();
        }
    }
    return true;
}

void HeldClock::waitUntil(Moment end) {
    waitFor([] { return false; }, end);
}

short HeldClock::waitForDevice(int, short, Moment) {
    giveUp("a device, which moves in real time");
}

void HeldClock::serveDesktop() {
    ++served;
    while (!inputs.empty()) {
        const auto input = std::move(inputs.front());
        inputs.erase(inputs.begin());
        input();
    }
    int rounds = 0;
    while (QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents) &&
           ++rounds < MostRoundsOfDesktop) {
    }
}

void HeldClock::waitForDesktop(Moment end) {
    if (atRest && atRest()) {
        return;
    }
    if (!happenBy({end, Beside::BeforeTimers})) {
        if (end == layer::Never) {
            giveUp("nothing will ever happen");
        }
        time = std::max(time, end);
    }
}
