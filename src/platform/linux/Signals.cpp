// The end of the desktop session, or Ctrl+C in the terminal, closes the program as its user would.
#include <fcntl.h>
#include <unistd.h>
#include <QSocketNotifier>
#include <csignal>

#include "platform/linux/Entry.h"
#include "platform/linux/Layer.h"

namespace layer {

namespace {

int signalPipe[2] = {-1, -1};

void noteSignal(int) {
    const char mark = 0;
    [[maybe_unused]] const ssize_t written = write(signalPipe[1], &mark, 1);
}

void closeAll() {
    char mark = 0;
    [[maybe_unused]] const ssize_t taken = read(signalPipe[0], &mark, 1);
    for (const Window* window : topLevels()) {
        PostMessageA(window->handle, WM_CLOSE, 0, 0);
    }
}

}  // namespace

void closeOnSignals() {
    if (pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) != 0) {
        return;
    }
    static QSocketNotifier notifier(signalPipe[0], QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, closeAll);
    struct sigaction action {};
    action.sa_handler = noteSignal;
    action.sa_flags = SA_RESTART;
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        sigaction(number, &action, nullptr);
    }
}

}  // namespace layer
