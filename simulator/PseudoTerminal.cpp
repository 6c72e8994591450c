#include "simulator/PseudoTerminal.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

namespace simulator {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Fail(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

void CloseDescriptor(int& handle) {
    if (handle >= 0) {
        ::close(handle);
        handle = -1;
    }
}

// The new link is made beside the old and moved over it, so that there is no moment without one.
void MakeLink(const fs::path& target, const fs::path& link) {
    std::string action = "make link '" + link.string() + "'";
    std::error_code error;
    if (link.has_parent_path()) {
        fs::create_directories(link.parent_path(), error);
    }
    if (fs::symlink_status(link).type() != fs::file_type::not_found && !fs::is_symlink(link)) {
        throw std::system_error(std::make_error_code(std::errc::file_exists), action);
    }
    fs::path fresh = link;
    fresh += ".new" + std::to_string(::getpid());
    fs::remove(fresh, error);
    error.clear();
    fs::create_symlink(target, fresh, error);
    if (!error) {
        fs::rename(fresh, link, error);
    }
    if (error) {
        throw std::system_error(error, action);
    }
}

}  // namespace

void PseudoTerminal::open(const std::string& linkPath) {
    close();
    master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    char name[64];
    if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0 ||
        ::ptsname_r(master, name, sizeof name) != 0) {
        int cause = errno;
        CloseDescriptor(master);
        errno = cause;
        Fail("open pseudo-terminal '/dev/ptmx'");
    }
    slave = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios settings{};
    if (slave < 0 || ::tcgetattr(slave, &settings) != 0) {
        int cause = errno;
        CloseDescriptor(slave);
        CloseDescriptor(master);
        errno = cause;
        Fail(std::string("open device '") + name + "'");
    }
    ::cfmakeraw(&settings);
    ::tcsetattr(slave, TCSANOW, &settings);
    devicePath = name;

    users = 0;
    watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (watch >= 0) {
        ::inotify_add_watch(watch, name, IN_OPEN | IN_CLOSE);
    }
    if (!linkPath.empty()) {
        try {
            MakeLink(devicePath, linkPath);
            link = linkPath;
        } catch (...) {
            close();
            throw;
        }
    }
}

void PseudoTerminal::close() {
    std::error_code error;
    if (!link.empty() && fs::read_symlink(link, error) == fs::path(devicePath)) {
        fs::remove(link, error);
    }
    link.clear();
    devicePath.clear();
    CloseDescriptor(watch);
    CloseDescriptor(slave);
    CloseDescriptor(master);
}

std::size_t PseudoTerminal::read(std::span<std::uint8_t> into) {
    ssize_t count = ::read(master, into.data(), into.size());
    return count > 0 ? static_cast<std::size_t>(count) : 0;
}

void PseudoTerminal::write(std::span<const std::uint8_t> bytes) {
    [[maybe_unused]] ssize_t written = ::write(master, bytes.data(), bytes.size());
}

void PseudoTerminal::noticeUsers() {
    alignas(inotify_event) char buffer[4096];
    bool someoneLeft = false;
    for (ssize_t length; (length = ::read(watch, buffer, sizeof buffer)) > 0;) {
        for (ssize_t at = 0; at < length;) {
            inotify_event event;
            std::memcpy(&event, buffer + at, sizeof event);
            at += static_cast<ssize_t>(sizeof event + event.len);
            users += (event.mask & IN_OPEN) != 0 ? 1 : 0;
            if ((event.mask & IN_CLOSE) != 0) {
                --users;
                someoneLeft = true;
            }
        }
    }
    if (someoneLeft && users <= 0) {
        users = 0;
        ::ioctl(slave, TIOCNXCL);
        ::tcflush(slave, TCIFLUSH);
    }
}

int PseudoTerminal::lineSpeed() const {
    constexpr std::pair<speed_t, int> speeds[] = {{B1200, 1200},   {B2400, 2400},   {B4800, 4800},   {B9600, 9600},
                                                  {B19200, 19200}, {B38400, 38400}, {B57600, 57600}, {B115200, 115200}};
    termios settings{};
    if (slave < 0 || ::tcgetattr(slave, &settings) != 0) {
        return 0;
    }
    for (auto [code, speed] : speeds) {
        if (code == ::cfgetospeed(&settings)) {
            return speed;
        }
    }
    return 0;
}

}  // namespace simulator
