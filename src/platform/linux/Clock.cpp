// The clock of the computer.
#include <QDateTime>
#include <optional>

#include "platform/linux/Layer.h"

namespace layer {

namespace {

std::optional<SYSTEMTIME> heldTime;

}  // namespace

void holdLocalTime(const SYSTEMTIME* time) {
    heldTime = time ? std::optional(*time) : std::nullopt;
}

}  // namespace layer

void GetLocalTime(SYSTEMTIME* time) {
    if (layer::heldTime) {
        *time = *layer::heldTime;
        return;
    }
    const QDateTime now = QDateTime::currentDateTime();
    const QDate date = now.date();
    const QTime clock = now.time();
    *time = {
        .wYear = static_cast<WORD>(date.year()),
        .wMonth = static_cast<WORD>(date.month()),
        .wDayOfWeek = static_cast<WORD>(date.dayOfWeek() % 7),
        .wDay = static_cast<WORD>(date.day()),
        .wHour = static_cast<WORD>(clock.hour()),
        .wMinute = static_cast<WORD>(clock.minute()),
        .wSecond = static_cast<WORD>(clock.second()),
        .wMilliseconds = static_cast<WORD>(clock.msec()),
    };
}
