// Serial ports over termios. Nothing here can wait without end: every wait has a deadline, and a device that has gone
// away ends it at once.
#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <limits>

#include "platform/linux/Handles.h"
#include "platform/linux/Layer.h"

namespace {

struct Port {
    HANDLE handle = nullptr;  // null while the row is free
    int descriptor = -1;
    COMMTIMEOUTS timeouts{};
};

// The program has one port open at a time; the rest is for its tests.
std::array<Port, 8> Ports;

constexpr COMMTIMEOUTS FreshTimeouts{0, 0, 1000, 0, 1000};

struct Speed {
    DWORD bitsPerSecond;
    speed_t code;
};
constexpr std::array<Speed, 8> Speeds{{
    {1200, B1200},
    {2400, B2400},
    {4800, B4800},
    {9600, B9600},
    {19200, B19200},
    {38400, B38400},
    {57600, B57600},
    {115200, B115200},
}};

Port* findOpen(HANDLE handle) {
    if (handle == nullptr) {
        return nullptr;
    }
    const auto found = std::ranges::find(Ports, handle, &Port::handle);
    return found == Ports.end() ? nullptr : &*found;
}

Port* findPort(HANDLE handle) {
    layer::refusePlainFile(handle);
    return findOpen(handle);
}

Port* findFreeRow() {
    const auto found = std::ranges::find(Ports, nullptr, &Port::handle);
    return found == Ports.end() ? nullptr : &*found;
}

int openDevice(const char* path) {
    int descriptor = -1;
    do {
        descriptor = open(path, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    } while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

// The flag keeps others from opening the device, but lets the superuser pass; the lock tells those who ask.
bool takeExclusively(int descriptor) {
    return isatty(descriptor) == 1 && flock(descriptor, LOCK_EX | LOCK_NB) == 0 && ioctl(descriptor, TIOCEXCL) == 0;
}

using Nanoseconds = std::int64_t;
constexpr Nanoseconds NanosecondsPerSecond = 1'000'000'000;
constexpr Nanoseconds NanosecondsPerMillisecond = 1'000'000;

Nanoseconds now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * NanosecondsPerSecond + time.tv_nsec;
}

timespec toTimespec(Nanoseconds duration) {
    return {.tv_sec = duration / NanosecondsPerSecond, .tv_nsec = duration % NanosecondsPerSecond};
}

Nanoseconds deadlineFor(DWORD constant, DWORD multiplier, DWORD bytes) {
    constexpr std::uint64_t most = std::numeric_limits<DWORD>::max();
    const std::uint64_t milliseconds = std::min(most, constant + std::uint64_t{multiplier} * bytes);
    return now() + static_cast<Nanoseconds>(milliseconds) * NanosecondsPerMillisecond;
}

constexpr int GoneEvents = POLLERR | POLLHUP | POLLNVAL;

// The events that came before the deadline, 0 if none did.
int waitFor(int descriptor, short events, Nanoseconds deadline) {
    for (;;) {
        pollfd request{.fd = descriptor, .events = events, .revents = 0};
        const timespec rest = toTimespec(std::max<Nanoseconds>(0, deadline - now()));
        const int ready = ppoll(&request, 1, &rest, nullptr);
        if (ready >= 0) {
            return request.revents;
        }
        if (errno != EINTR) {
            return POLLERR;
        }
    }
}

bool tryLater(ssize_t moved) {
    return moved < 0 && (errno == EAGAIN || errno == EINTR);
}

bool onlyPlainFrames(const DCB& state) {
    return state.ByteSize == 8 && state.Parity == NOPARITY && state.StopBits == ONESTOPBIT && state.fParity == 0 &&
           state.fOutxCtsFlow == 0 && state.fOutxDsrFlow == 0 && state.fDsrSensitivity == 0 && state.fOutX == 0 &&
           state.fErrorChar == 0 && state.fNull == 0 && state.fDtrControl == DTR_CONTROL_DISABLE &&
           state.fRtsControl == RTS_CONTROL_DISABLE;
}

// Pseudo-terminals have no control lines.
bool dropControlLines(int descriptor) {
    const int lines = TIOCM_DTR | TIOCM_RTS;
    return ioctl(descriptor, TIOCMBIC, &lines) == 0 || errno == ENOTTY || errno == EINVAL;
}

}  // namespace

namespace layer {

HANDLE openPort(const char* device) {
    Port* port = findFreeRow();
    const int descriptor = port == nullptr ? -1 : openDevice(device);
    if (descriptor < 0) {
        return INVALID_HANDLE_VALUE;
    }
    if (!takeExclusively(descriptor)) {
        close(descriptor);
        return INVALID_HANDLE_VALUE;
    }
    *port = {.handle = nextHandle(), .descriptor = descriptor, .timeouts = FreshTimeouts};
    return port->handle;
}

// Closing a real line would wait for what has not gone out, for up to half a minute. The exclusive flag would outlive
// us on a device that somebody else holds open, as a pseudo-terminal's owner may.
bool closePort(HANDLE handle) {
    Port* port = findOpen(handle);
    if (port == nullptr) {
        return false;
    }
    tcflush(port->descriptor, TCOFLUSH);
    ioctl(port->descriptor, TIOCNXCL);
    close(port->descriptor);
    *port = {};
    return true;
}

bool isPort(HANDLE handle) {
    return findOpen(handle) != nullptr;
}

}  // namespace layer

BOOL SetCommState(HANDLE handle, DCB* state) {
    const Port* port = findPort(handle);
    if (port == nullptr || state == nullptr || !onlyPlainFrames(*state)) {
        return FALSE;
    }
    const auto speed = std::ranges::find(Speeds, state->BaudRate, &Speed::bitsPerSecond);
    termios settings{};
    if (speed == Speeds.end() || tcgetattr(port->descriptor, &settings) != 0) {
        return FALSE;
    }
    cfmakeraw(&settings);
    settings.c_iflag &= ~static_cast<tcflag_t>(IXOFF | IXANY | INPCK);
    settings.c_cflag &= ~static_cast<tcflag_t>(CSTOPB | CRTSCTS | HUPCL);
    settings.c_cflag |= CLOCAL | CREAD;
    // With a minimum of 1, a read that finds nothing fails with EAGAIN; 0 bytes then mean that the device has gone.
    settings.c_cc[VMIN] = 1;
    settings.c_cc[VTIME] = 0;
    if (cfsetspeed(&settings, speed->code) != 0 || tcsetattr(port->descriptor, TCSANOW, &settings) != 0) {
        return FALSE;
    }
    return dropControlLines(port->descriptor) ? TRUE : FALSE;
}

BOOL SetCommTimeouts(HANDLE handle, COMMTIMEOUTS* timeouts) {
    Port* port = findPort(handle);
    if (port == nullptr || timeouts == nullptr) {
        return FALSE;
    }
    const bool endlessRead = timeouts->ReadTotalTimeoutMultiplier == 0 && timeouts->ReadTotalTimeoutConstant == 0;
    const bool endlessWrite = timeouts->WriteTotalTimeoutMultiplier == 0 && timeouts->WriteTotalTimeoutConstant == 0;
    if (endlessRead || endlessWrite || timeouts->ReadIntervalTimeout == std::numeric_limits<DWORD>::max()) {
        return FALSE;
    }
    port->timeouts = *timeouts;
    return TRUE;
}

BOOL PurgeComm(HANDLE handle, DWORD flags) {
    const Port* port = findPort(handle);
    if (port == nullptr || flags == 0 || (flags & ~(PURGE_TXCLEAR | PURGE_RXCLEAR)) != 0) {
        return FALSE;
    }
    const bool received = (flags & PURGE_RXCLEAR) == 0 || tcflush(port->descriptor, TCIFLUSH) == 0;
    const bool unsent = (flags & PURGE_TXCLEAR) == 0 || tcflush(port->descriptor, TCOFLUSH) == 0;
    return received && unsent ? TRUE : FALSE;
}

// What has arrived is taken even when the deadline has passed meanwhile: a busy machine may wake us late, the bytes
// were in time. So it is when the device has gone after them.
BOOL ReadFile(HANDLE handle, LPVOID buffer, DWORD bytes, LPDWORD bytesRead, OVERLAPPED*) {
    if (bytesRead == nullptr) {
        return FALSE;
    }
    *bytesRead = 0;
    const Port* port = findPort(handle);
    if (port == nullptr) {
        return FALSE;
    }
    layer::showAllDrawing();
    const COMMTIMEOUTS& limits = port->timeouts;
    const Nanoseconds interval = limits.ReadIntervalTimeout * NanosecondsPerMillisecond;
    const Nanoseconds end = deadlineFor(limits.ReadTotalTimeoutConstant, limits.ReadTotalTimeoutMultiplier, bytes);
    Nanoseconds deadline = end;
    bool expired = false;
    while (*bytesRead < bytes && !expired) {
        expired = now() >= deadline;
        const int events = waitFor(port->descriptor, POLLIN, deadline);
        if (events == 0) {
            break;
        }
        const ssize_t got = read(port->descriptor, static_cast<BYTE*>(buffer) + *bytesRead, bytes - *bytesRead);
        if (got > 0) {
            *bytesRead += static_cast<DWORD>(got);
            deadline = interval == 0 ? end : std::min(end, now() + interval);
        } else if (!tryLater(got) || (events & GoneEvents) != 0) {
            return FALSE;
        }
    }
    return TRUE;
}

BOOL WriteFile(HANDLE handle, LPCVOID buffer, DWORD bytes, LPDWORD bytesWritten, OVERLAPPED*) {
    if (bytesWritten == nullptr) {
        return FALSE;
    }
    *bytesWritten = 0;
    const Port* port = findPort(handle);
    if (port == nullptr) {
        return FALSE;
    }
    const COMMTIMEOUTS& limits = port->timeouts;
    const Nanoseconds end = deadlineFor(limits.WriteTotalTimeoutConstant, limits.WriteTotalTimeoutMultiplier, bytes);
    bool expired = false;
    while (*bytesWritten < bytes && !expired) {
        expired = now() >= end;
        const int events = waitFor(port->descriptor, POLLOUT, end);
        if ((events & GoneEvents) != 0) {
            return FALSE;
        }
        if (events == 0) {
            break;
        }
        const ssize_t sent =
            write(port->descriptor, static_cast<const BYTE*>(buffer) + *bytesWritten, bytes - *bytesWritten);
        if (sent > 0) {
            *bytesWritten += static_cast<DWORD>(sent);
        } else if (!tryLater(sent)) {
            return FALSE;
        }
    }
    return TRUE;
}

void Sleep(DWORD milliseconds) {
    if (milliseconds == 0) {
        sched_yield();
        return;
    }
    layer::showAllDrawing();
    const timespec end = toTimespec(now() + milliseconds * NanosecondsPerMillisecond);
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR) {
    }
}
