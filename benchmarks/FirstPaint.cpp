// Linked into a program, this reports its first paint; the program itself knows nothing of it.
#include "FirstPaint.h"

#include <unistd.h>
#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QWindow>
#include <ctime>

namespace benchmarks {
namespace {

int reportSocket = -1;

std::int64_t Now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * std::int64_t{1'000'000'000} + time.tv_nsec;
}

// A program that waits for input with its window exposed has drawn it and handed it over: both happen while the expose
// event is handled.
void ReportOnce() {
    for (const QWindow* window : QGuiApplication::topLevelWindows()) {
        if (reportSocket < 0 || !window->isExposed()) {
            continue;
        }
        const FirstPaint report{Now(), window->width(), window->height()};
        char leave = 0;
        if (write(reportSocket, &report, sizeof report) == sizeof report) {
            [[maybe_unused]] const ssize_t got = read(reportSocket, &leave, 1);
        }
        close(reportSocket);
        reportSocket = -1;
    }
}

void Watch() {
    bool given = false;
    reportSocket = qEnvironmentVariableIntValue(ReportVariable, &given);
    if (!given) {
        reportSocket = -1;
        return;
    }
    QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, qApp, ReportOnce);
}

Q_COREAPP_STARTUP_FUNCTION(Watch)

}  // namespace
}  // namespace benchmarks
