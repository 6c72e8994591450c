// Runs window tests on a desktop of a known size that nobody sees.
#include <gtest/gtest.h>
#include <unistd.h>

#include <QApplication>
#include <array>
#include <string_view>

#include "platform/linux/Entry.h"

namespace {

// The largest window size needs all of this desktop.
constexpr std::string_view Screen = R"({"screens":[{"name":"desktop","x":0,"y":0,"width":1280,"height":1024,)"
                                    R"("logicalDpi":96,"logicalBaseDpi":96,"dpr":1}]})";

// The description of the desktop, there while the connection to it is made.
class ScreenFile {
public:
    ScreenFile() : descriptor(mkstemp(path.data())) {
        if (write(descriptor, Screen.data(), Screen.size()) != static_cast<ssize_t>(Screen.size())) {
            qFatal("write screen '%s': failed", path.data());
        }
        qputenv("QT_QPA_PLATFORM", QByteArray("offscreen:configfile=") + path.data());
    }
    ~ScreenFile() {
        close(descriptor);
        unlink(path.data());
    }
    ScreenFile(const ScreenFile&) = delete;
    ScreenFile& operator=(const ScreenFile&) = delete;

private:
    std::array<char, 28> path{"/tmp/tarvex-screen-XXXXXX"};
    int descriptor;
};

}  // namespace

int main(int count, char** arguments) {
    testing::InitGoogleTest(&count, arguments);
    const ScreenFile screen;
    QApplication application(count, arguments);
    layer::prepareApplication();
    return RUN_ALL_TESTS();
}
