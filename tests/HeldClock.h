// Time in the test's hand. It stands still while the program works and jumps to the next thing that is due when the
// program waits: a byte on the line, a time-out, a timer, an input of the script. So a session repeats to the
// microsecond on any machine and under any load, and an hour of it takes seconds. What Qt measures for itself follows.
#pragma once

#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "platform/linux/Clock.h"

using layer::Microsecond;
using layer::Millisecond;
using layer::Moment;
using layer::Second;

// Whether a thing that is due at the same moment as a timer comes before it or once the timer's message has been taken.
enum class Beside { BeforeTimers, BehindTimers };

class HeldClock : public layer::Clock {
public:
    // What happens by itself, as the bytes of a line do.
    class Source {
    public:
        virtual ~Source() = default;
        // layer::Never if nothing does.
        virtual Moment next() const = 0;
        virtual void happen() = 0;
    };

    static constexpr Moment Start = 1000 * Second;

    // Holds the layer's clock for as long as it lives.
    HeldClock();
    ~HeldClock() override;
    HeldClock(const HeldClock&) = delete;
    HeldClock& operator=(const HeldClock&) = delete;

    // The one that is held; null in real time.
    static HeldClock* current();

    void add(Source& source);
    void remove(Source& source);
    // Runs `act` at the moment, whatever the program waits for then.
    void at(Moment moment, std::function<void()> act, Beside beside = Beside::BeforeTimers);
    // Runs `input` when the program next asks the desktop for what its user did.
    void put(std::function<void()> input);
    // Whether the desktop holds inputs that the program has not asked for.
    bool hasInput() const {
        return !inputs.empty();
    }
    // Takes back what `at` and `put` were given and has not come.
    void forget() {
        agenda.clear();
        inputs.clear();
    }
    // How often the program has asked the desktop.
    int timesServed() const {
        return served;
    }
    // Lets time pass while the program works.
    void pass(Moment duration);
    // Called whenever the program has dealt with all that there is, before time moves on; true if it gave the program
    // something to do.
    void whenAtRest(std::function<bool()> act) {
        atRest = std::move(act);
    }
    // What the calendar says at Start.
    void setLocalTime(const SYSTEMTIME& time) {
        startTime = time;
    }

    // For a line: lets time run until the condition holds; false if it does not by the moment.
    bool waitFor(const std::function<bool()>& condition, Moment end);

    Moment now() override {
        return time;
    }
    SYSTEMTIME localTime() override;
    void waitUntil(Moment end) override;
    short waitForDevice(int descriptor, short events, Moment end) override;
    void serveDesktop() override;
    void waitForDesktop(Moment end) override;

private:
    using Key = std::pair<Moment, Beside>;
    // Lets the next thing happen unless it lies behind `end`.
    bool happenBy(Key end);

    Moment time = Start;
    SYSTEMTIME startTime;
    std::vector<Source*> sources;
    std::multimap<Key, std::function<void()>> agenda;
    std::vector<std::function<void()>> inputs;
    std::function<bool()> atRest;
    int served = 0;
};
