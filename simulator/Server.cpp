#include "simulator/Server.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <system_error>
#include <utility>

namespace simulator {
namespace {

constexpr double EngineTickSeconds = 0.25;  // the longest the engine's clock stands while nobody asks
constexpr double WakeSeconds = 0.0001;      // what the end of a wait may be late on a quiet computer

double SteadySeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace

Server::Server(const Config& asked) : origin(SteadySeconds()), responder(asked) {
    terminal.open(asked.portLink);
    wakeHandle = ::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    if (wakeHandle < 0) {
        throw std::system_error(errno, std::generic_category(), "make event 'wake'");
    }
    thread = std::thread([this] { run(); });
}

void Server::stop() {
    {
        std::lock_guard lock(mutex);
        stopping = true;
    }
    if (thread.joinable()) {
        wake();
        thread.join();
        ::close(std::exchange(wakeHandle, -1));
    }
}

double Server::now() const {
    return SteadySeconds() - origin;
}

void Server::wake() {
    ::eventfd_write(wakeHandle, 1);
}

std::string Server::devicePath() const {
    std::lock_guard lock(mutex);
    return terminal.path();
}

int Server::lineSpeed() const {
    std::lock_guard lock(mutex);
    return terminal.lineSpeed();
}

void Server::unplug() {
    std::unique_lock lock(mutex);
    wantPlugged = false;
    wake();
    changed.wait(lock, [this] { return stopping || !terminal.isOpen(); });
}

bool Server::replug() {
    std::unique_lock lock(mutex);
    wantPlugged = true;
    plugFailed = false;
    plugAt = now();
    wake();
    changed.wait(lock, [this] { return stopping || plugFailed || terminal.isOpen(); });
    return terminal.isOpen();
}

bool Server::waitPlugged(double seconds) {
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, std::chrono::duration<double>(seconds), [this] { return terminal.isOpen(); });
}

void Server::addFault(const FaultRule& rule) {
    std::lock_guard lock(mutex);
    responder.faults.add(rule);
}

void Server::clearFaults() {
    std::lock_guard lock(mutex);
    responder.faults.clear();
}

std::vector<LogEntry> Server::log() const {
    std::lock_guard lock(mutex);
    return {responder.log.begin(), responder.log.end()};
}

void Server::clearLog() {
    std::lock_guard lock(mutex);
    responder.log.clear();
}

bool Server::waitFor(const std::function<bool(const Log&)>& enough, double seconds) {
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, std::chrono::duration<double>(seconds), [&] { return enough(responder.log); });
}

bool Server::waitForFrames(std::size_t count, double seconds) {
    return waitFor([count](const Log& log) { return log.size() >= count; }, seconds);
}

void Server::observe(std::function<void(const LogEntry&)> newObserver) {
    std::lock_guard lock(mutex);
    responder.observe(std::move(newObserver));
}

void Server::unplugNow() {
    terminal.close();
    responder.cut();
    changed.notify_all();
}

void Server::plug(double time) {
    if (!wantPlugged) {
        plugAt = Never;
        if (terminal.isOpen()) {
            unplugNow();
        }
    } else if (terminal.isOpen()) {
        plugAt = Never;
    } else if (plugAt >= 0 && time >= plugAt) {
        try {
            terminal.open(responder.config.portLink);
            plugAt = Never;
        } catch (const std::system_error&) {
            plugFailed = true;
            plugAt = time + ReplugSeconds;
        }
        changed.notify_all();
    }
}

void Server::takeRequests(double time) {
    std::uint8_t buffer[256];
    const std::size_t count = terminal.read(buffer);
    responder.take(std::span(buffer).first(count), time);
    if (count > 0) {
        changed.notify_all();
    }
}

void Server::sendDue(double time) {
    const Bytes bytes = responder.give(time);
    if (!bytes.empty()) {
        terminal.write(bytes);
    }
    if (responder.hangUp() >= 0 && time >= responder.hangUp()) {
        unplugNow();
        plugAt = time + ReplugSeconds;
    }
}

double Server::nextDeadline(double time) const {
    double deadline = time + EngineTickSeconds;
    for (double moment : {responder.nextByte(), responder.hangUp(), plugAt}) {
        deadline = moment >= 0 ? std::min(deadline, moment) : deadline;
    }
    return deadline;
}

// Deadlines are moments, not spans: being late for one byte makes no other late. The system ends a wait a little late;
// for the last byte of a reply, which decides when the next request comes, the rest of the time is waited for awake.
void Server::sleepUntil(double deadline, std::unique_lock<std::mutex>& lock) {
    const bool lastByte = responder.bytesToCome() == 1 && responder.nextByte() <= deadline;
    pollfd handles[] = {
        {wakeHandle, POLLIN, 0},
        {terminal.readable(), POLLIN, 0},
        {terminal.usersChanged(), POLLIN, 0},
    };
    double rest = std::max(0.0, deadline - now() - (lastByte ? WakeSeconds : 0));
    timespec span{};
    span.tv_sec = static_cast<time_t>(rest);
    span.tv_nsec = static_cast<long>((rest - std::floor(rest)) * 1e9);
    lock.unlock();
    const bool expired = ::ppoll(handles, std::size(handles), &span, nullptr) == 0;
    while (expired && lastByte && now() < deadline) {
    }
    lock.lock();
    eventfd_t ignored;
    ::eventfd_read(wakeHandle, &ignored);
    if ((handles[2].revents & POLLIN) != 0) {
        terminal.noticeUsers();
    }
}

void Server::run() {
    ::prctl(PR_SET_TIMERSLACK, 1000UL);  // nanoseconds; the usual 50 microseconds show at this pace
    std::unique_lock lock(mutex);
    while (!stopping) {
        sleepUntil(nextDeadline(now()), lock);
        double time = now();
        responder.advance(time);
        plug(time);
        if (terminal.isOpen()) {
            takeRequests(time);
            sendDue(now());
        }
    }
    terminal.close();
    changed.notify_all();
}

}  // namespace simulator
