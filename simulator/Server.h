// A controller on a pseudo-terminal, served by a thread of its own. All operations may be called from any thread.
#pragma once

#include "simulator/PseudoTerminal.h"
#include "simulator/Responder.h"

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace simulator {

class Server {
public:
    // Makes the device and begins to serve. Throws std::system_error.
    explicit Server(const Config& config);
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server() {
        stop();
    }

    // Ends the thread and removes device and link.
    void stop();

    std::string devicePath() const;  // of the device itself; empty while unplugged
    int lineSpeed() const;           // as the other side has set it, 0 while unplugged

    // The device goes away in the middle of whatever runs, and comes back, new, under the same link. Both return when
    // it is done; replug is false if no device could be made.
    void unplug();
    bool replug();
    // After a hang-up: waits until the device is back; false after `seconds`.
    bool waitPlugged(double seconds);

    // Runs `use` on the controller while nothing else does, with its clock brought up to now.
    template <typename Use>
    auto with(Use&& use) {
        std::lock_guard lock(mutex);
        responder.advance(now());
        return use(responder.controller);
    }

    void addFault(const FaultRule& rule);
    void clearFaults();

    std::vector<LogEntry> log() const;
    void clearLog();
    // Waits until the log satisfies `enough`; false after `seconds`.
    bool waitFor(const std::function<bool(const Log&)>& enough, double seconds);
    bool waitForFrames(std::size_t count, double seconds);

    // Called in the serving thread for each new entry; it must not call the server.
    void observe(std::function<void(const LogEntry&)> observer);

private:
    double now() const;  // seconds since the start
    void run();
    void wake();
    void plug(double time);
    void unplugNow();
    void takeRequests(double time);
    void sendDue(double time);
    double nextDeadline(double time) const;
    void sleepUntil(double deadline, std::unique_lock<std::mutex>& lock);

    const double origin;
    mutable std::mutex mutex;
    std::condition_variable changed;
    Responder responder;
    PseudoTerminal terminal;

    double plugAt = Never;  // when the device comes back by itself
    bool wantPlugged = true;
    bool plugFailed = false;
    bool stopping = false;
    int wakeHandle = -1;
    std::thread thread;
};

}  // namespace simulator
