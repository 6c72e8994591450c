// A line in the test's own thread and time: the program holds one end as a port, the test the other.
#pragma once

#include <span>

#include "HeldClock.h"

class HeldLine;

class FarEnd {
public:
    // From now on the program finds it at this port.
    FarEnd(HeldClock& clock, int port);
    virtual ~FarEnd();
    FarEnd(const FarEnd&) = delete;
    FarEnd& operator=(const FarEnd&) = delete;

    // The device goes away in the middle of whatever runs, and comes back.
    void unplug();
    void replug() {
        plugged = true;
    }
    bool isPlugged() const {
        return plugged;
    }
    // Whether the program holds the port.
    bool isOpen() const {
        return user != nullptr;
    }

    // Lets these bytes come to the program now; they are lost if it does not hold the port.
    void send(std::span<const BYTE> bytes);

protected:
    // What the program has just written.
    virtual void take(std::span<const BYTE> bytes) = 0;
    // What is under way is lost.
    virtual void cut() {
    }

    HeldClock& clock;

private:
    friend class HeldLine;
    void loseUser();

    const int port;
    HeldLine* user = nullptr;
    bool plugged = true;
};
