// A serial device over termios. Nothing here can wait without end: every wait has a deadline, and a device that has
// gone away ends it at once.
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "platform/linux/Line.h"

namespace layer {

namespace {

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

int openUninterrupted(const char* path) {
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

// Pseudo-terminals have no control lines.
bool dropControlLines(int descriptor) {
    const int lines = TIOCM_DTR | TIOCM_RTS;
    return ioctl(descriptor, TIOCMBIC, &lines) == 0 || errno == ENOTTY || errno == EINVAL;
}

class Device : public Line {
public:
    explicit Device(int opened) : descriptor(opened) {
    }
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;
    // Closing a real line would wait for what has not gone out, for up to half a minute. The exclusive flag would
    // outlive us on a device that somebody else holds open, as a pseudo-terminal's owner may.
    ~Device() override {
        tcflush(descriptor, TCOFLUSH);
        ioctl(descriptor, TIOCNXCL);
        close(descriptor);
    }

    bool configure(DWORD bitsPerSecond) override {
        const auto* speed = std::ranges::find(Speeds, bitsPerSecond, &Speed::bitsPerSecond);
        termios settings{};
        if (speed == Speeds.end() || tcgetattr(descriptor, &settings) != 0) {
            return false;
        }
        cfmakeraw(&settings);
        settings.c_iflag &= ~static_cast<tcflag_t>(IXOFF | IXANY | INPCK);
        settings.c_cflag &= ~static_cast<tcflag_t>(CSTOPB | CRTSCTS | HUPCL);
        settings.c_cflag |= CLOCAL | CREAD;
        // With a minimum of 1, a read that finds nothing fails with EAGAIN; 0 bytes then mean that the device has gone.
        settings.c_cc[VMIN] = 1;
        settings.c_cc[VTIME] = 0;
        return cfsetspeed(&settings, speed->code) == 0 && tcsetattr(descriptor, TCSANOW, &settings) == 0 &&
               dropControlLines(descriptor);
    }

    State awaitByte(Moment end) override {
        return await(POLLIN, end);
    }
    State awaitRoom(Moment end) override {
        return await(POLLOUT, end);
    }

    ssize_t read(std::span<BYTE> into) override {
        const ssize_t got = ::read(descriptor, into.data(), into.size());
        return got > 0 ? got : got < 0 && triesAgain() ? 0 : -1;
    }
    ssize_t write(std::span<const BYTE> bytes) override {
        const ssize_t sent = ::write(descriptor, bytes.data(), bytes.size());
        return sent > 0 ? sent : sent < 0 && triesAgain() ? 0 : -1;
    }

    bool dropReceived() override {
        return tcflush(descriptor, TCIFLUSH) == 0;
    }
    bool dropUnsent() override {
        return tcflush(descriptor, TCOFLUSH) == 0;
    }

private:
    State await(short events, Moment end) const {
        const short came = theClock().waitForDevice(descriptor, events, end);
        return (came & (POLLERR | POLLHUP | POLLNVAL)) != 0 ? State::Gone : came != 0 ? State::Ready : State::Quiet;
    }
    static bool triesAgain() {
        return errno == EAGAIN || errno == EINTR;
    }

    const int descriptor;
};

}  // namespace

std::unique_ptr<Line> openDevice(const char* path) {
    const int descriptor = openUninterrupted(path);
    if (descriptor < 0) {
        return nullptr;
    }
    if (!takeExclusively(descriptor)) {
        close(descriptor);
        return nullptr;
    }
    return std::make_unique<Device>(descriptor);
}

}  // namespace layer
