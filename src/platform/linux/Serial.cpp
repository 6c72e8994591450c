// Serial ports: handles, time-outs and calls, over the line behind each.
#include <sched.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <map>

#include "platform/linux/Handles.h"
#include "platform/linux/Layer.h"
#include "platform/linux/Line.h"
#include "platform/linux/PortTable.h"

namespace layer {

namespace {

struct Port {
    HANDLE handle = nullptr;  // null while the row is free
    std::unique_ptr<Line> line;
    COMMTIMEOUTS timeouts{};
    Moment byteTime = 0;  // on the wire; 0 until the speed is set
};

// The program has one port open at a time; the rest is for its tests.
std::array<Port, 8> Ports;

constexpr COMMTIMEOUTS FreshTimeouts{0, 0, 1000, 0, 1000};

std::map<int, LineOpener>& heldPorts() {
    static std::map<int, LineOpener> held;
    return held;
}

Port* findOpen(HANDLE handle) {
    if (handle == nullptr) {
        return nullptr;
    }
    const auto found = std::ranges::find(Ports, handle, &Port::handle);
    return found == Ports.end() ? nullptr : &*found;
}

Port* findPort(HANDLE handle) {
    refusePlainFile(handle);
    return findOpen(handle);
}

std::unique_ptr<Line> openLine(const char* name) {
    const auto held = heldPorts().find(portNumber(name));
    if (held != heldPorts().end()) {
        return held->second();
    }
    const std::string device = portDevice(name);
    return device.empty() ? nullptr : openDevice(device.c_str());
}

Moment endOf(DWORD constant, DWORD multiplier, DWORD bytes) {
    constexpr std::uint64_t most = std::numeric_limits<DWORD>::max();
    const std::uint64_t milliseconds = std::min(most, constant + std::uint64_t{multiplier} * bytes);
    return theClock().now() + static_cast<Moment>(milliseconds) * Millisecond;
}

// Passes the time that all of the rest but its last byte needs on the wire, so that a frame wakes the program three
// times and not once a byte.
void passWhileArriving(const Port& port, DWORD rest, Moment deadline) {
    if (rest > 1 && port.byteTime > 0) {
        theClock().waitUntil(std::min(deadline, theClock().now() + (rest - 1) * port.byteTime));
    }
}

bool onlyPlainFrames(const DCB& state) {
    return state.ByteSize == 8 && state.Parity == NOPARITY && state.StopBits == ONESTOPBIT && state.fParity == 0 &&
           state.fOutxCtsFlow == 0 && state.fOutxDsrFlow == 0 && state.fDsrSensitivity == 0 && state.fOutX == 0 &&
           state.fErrorChar == 0 && state.fNull == 0 && state.fDtrControl == DTR_CONTROL_DISABLE &&
           state.fRtsControl == RTS_CONTROL_DISABLE;
}

}  // namespace

HANDLE openPort(const char* name) {
    const auto row = std::ranges::find(Ports, nullptr, &Port::handle);
    std::unique_ptr<Line> line = row == Ports.end() ? nullptr : openLine(name);
    if (!line) {
        return INVALID_HANDLE_VALUE;
    }
    *row = {nextHandle(), std::move(line), FreshTimeouts};
    return row->handle;
}

bool closePort(HANDLE handle) {
    Port* port = findOpen(handle);
    if (port == nullptr) {
        return false;
    }
    *port = {};
    return true;
}

bool isPort(HANDLE handle) {
    return findOpen(handle) != nullptr;
}

void holdPort(int port, LineOpener open) {
    if (open) {
        heldPorts()[port] = std::move(open);
    } else {
        heldPorts().erase(port);
    }
}

}  // namespace layer

using namespace layer;

BOOL SetCommState(HANDLE handle, DCB* state) {
    constexpr int bitsOfByte = 10;  // with start and stop
    Port* port = findPort(handle);
    if (port == nullptr || state == nullptr || !onlyPlainFrames(*state) || !port->line->configure(state->BaudRate)) {
        return FALSE;
    }
    port->byteTime = bitsOfByte * Second / state->BaudRate;
    return TRUE;
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
    const bool received = (flags & PURGE_RXCLEAR) == 0 || port->line->dropReceived();
    const bool unsent = (flags & PURGE_TXCLEAR) == 0 || port->line->dropUnsent();
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
    showAllDrawing();
    const std::span<BYTE> wanted(static_cast<BYTE*>(buffer), bytes);
    const COMMTIMEOUTS& limits = port->timeouts;
    const Moment interval = limits.ReadIntervalTimeout * Millisecond;
    const Moment end = endOf(limits.ReadTotalTimeoutConstant, limits.ReadTotalTimeoutMultiplier, bytes);
    Moment deadline = end;
    bool expired = false;
    while (*bytesRead < bytes && !expired) {
        expired = theClock().now() >= deadline;
        const Line::State state = port->line->awaitByte(deadline);
        if (state == Line::State::Quiet) {
            break;
        }
        const ssize_t got = port->line->read(wanted.subspan(*bytesRead));
        if (got > 0) {
            *bytesRead += static_cast<DWORD>(got);
            deadline = interval == 0 ? end : std::min(end, theClock().now() + interval);
            passWhileArriving(*port, bytes - *bytesRead, deadline);
        } else if (got < 0 || state == Line::State::Gone) {
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
    const std::span<const BYTE> given(static_cast<const BYTE*>(buffer), bytes);
    const COMMTIMEOUTS& limits = port->timeouts;
    const Moment end = endOf(limits.WriteTotalTimeoutConstant, limits.WriteTotalTimeoutMultiplier, bytes);
    bool expired = false;
    while (*bytesWritten < bytes && !expired) {
        expired = theClock().now() >= end;
        const Line::State state = port->line->awaitRoom(end);
        if (state == Line::State::Quiet) {
            break;
        }
        const ssize_t sent = state == Line::State::Gone ? -1 : port->line->write(given.subspan(*bytesWritten));
        if (sent < 0) {
            return FALSE;
        }
        *bytesWritten += static_cast<DWORD>(sent);
    }
    return TRUE;
}

void Sleep(DWORD milliseconds) {
    if (milliseconds == 0) {
        sched_yield();
        return;
    }
    showAllDrawing();
    theClock().waitUntil(theClock().now() + milliseconds * Millisecond);
}
