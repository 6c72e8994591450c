// A desktop of a known size that nobody sees, unless QT_QPA_PLATFORM asks for another one.
#pragma once

#include <unistd.h>

#include <QByteArray>
#include <array>
#include <string_view>

// The largest window size needs all of this desktop.
constexpr std::string_view ScreenDescription =
    R"({"screens":[{"name":"desktop","x":0,"y":0,"width":1280,"height":1024,)"
    R"("logicalDpi":96,"logicalBaseDpi":96,"dpr":1}]})";

inline bool wantsOffscreen() {
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    return platform.isEmpty() || platform.startsWith("offscreen");
}

// The description of the desktop, there while the connection to it is made.
class OffscreenDesktop {
public:
    OffscreenDesktop() : descriptor(mkstemp(path.data())) {
        if (write(descriptor, ScreenDescription.data(), ScreenDescription.size()) !=
            static_cast<ssize_t>(ScreenDescription.size())) {
            qFatal("write screen '%s': failed", path.data());
        }
        if (wantsOffscreen()) {
            qputenv("QT_QPA_PLATFORM", QByteArray("offscreen:configfile=") + path.data());
        }
    }
    ~OffscreenDesktop() {
        close(descriptor);
        unlink(path.data());
    }
    OffscreenDesktop(const OffscreenDesktop&) = delete;
    OffscreenDesktop& operator=(const OffscreenDesktop&) = delete;

private:
    std::array<char, 28> path{"/tmp/tarvex-screen-XXXXXX"};
    int descriptor;
};
