// What stands behind an open port: a device, or for tests the far end of a line in the same thread.
#pragma once

#include <sys/types.h>

#include <functional>
#include <memory>
#include <span>

#include "platform/linux/Clock.h"

namespace layer {

class Line {
public:
    enum class State { Quiet, Ready, Gone };

    virtual ~Line() = default;
    // Raw, 8N1 and both control lines dropped; false for a speed that it does not know.
    virtual bool configure(DWORD bitsPerSecond) = 0;
    // Wait until there is a byte to take or room for one, or the line has gone; Quiet if neither came by the moment.
    virtual State awaitByte(Moment end) = 0;
    virtual State awaitRoom(Moment end) = 0;
    // How many bytes moved, 0 for none just now; negative if the line has gone.
    virtual ssize_t read(std::span<BYTE> into) = 0;
    virtual ssize_t write(std::span<const BYTE> bytes) = 0;
    // Drops what came and was not taken, or what has not gone out.
    virtual bool dropReceived() = 0;
    virtual bool dropUnsent() = 0;
};

// Null for what is no terminal device, for one that others hold or that is forbidden.
std::unique_ptr<Line> openDevice(const char* path);

// From now on opening this port, 1 to 128, asks `open`, which may give null, and no device. An empty one ends that.
using LineOpener = std::function<std::unique_ptr<Line>()>;
void holdPort(int port, LineOpener open);

}  // namespace layer
