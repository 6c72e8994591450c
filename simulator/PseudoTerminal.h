// The device that the other side opens as its serial port.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace simulator {

class PseudoTerminal {
public:
    PseudoTerminal() = default;
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;
    ~PseudoTerminal() {
        close();
    }

    // Makes a new device and, unless it is empty, the link to it, with its directory; an older link is replaced.
    // Throws std::system_error.
    void open(const std::string& linkPath);
    // The other side sees a hang-up; the link goes if it still is ours.
    void close();

    bool isOpen() const {
        return master >= 0;
    }
    int readable() const {
        return master;
    }  // for poll; -1 while closed
    int usersChanged() const {
        return watch;
    }  // for poll: somebody opened or closed the device; may be -1
    const std::string& path() const {
        return devicePath;
    }

    // Neither blocks: what is there, and what has room; the rest is lost as on an overrun line.
    std::size_t read(std::span<std::uint8_t> into);
    void write(std::span<const std::uint8_t> bytes);

    // When its last user leaves, a real port forgets unread bytes and that it was held exclusively. Here the device
    // stays open on our side, so that is done by hand.
    void noticeUsers();

    // Bits a second that the other side has set; 0 while closed or for a speed that is none of the usual.
    int lineSpeed() const;

private:
    int master = -1;
    int slave = -1;  // kept open so that the master sees no hang-up between two users
    int watch = -1;
    int users = 0;
    std::string devicePath;
    std::string link;
};

}  // namespace simulator
