// The caret of the text field in focus, of dialogs of Qt's own too.
#include <QApplication>
#include <QLineEdit>

#include "platform/linux/Layer.h"

namespace layer {

namespace {

constexpr UINT_PTR BlinkTimer = 1;
constexpr UINT BlinkPeriod = 530;

QPointer<QLineEdit> field;
bool shown = true;

void show(bool show) {
    shown = show;
    if (field) {
        field->update();
    }
}

void CALLBACK blink(HWND, UINT, UINT_PTR, DWORD) {
    show(!shown);
}

// It stands still while it moves.
void begin() {
    SetTimer(GetDesktopWindow(), BlinkTimer, BlinkPeriod, blink);
    show(true);
}

void follow(QWidget* focus) {
    if (field) {
        QObject::disconnect(field, nullptr, qApp, nullptr);
        KillTimer(GetDesktopWindow(), BlinkTimer);
    }
    field = qobject_cast<QLineEdit*>(focus);
    if (field) {
        QObject::connect(field, &QLineEdit::cursorPositionChanged, qApp, begin);
        begin();
    }
}

}  // namespace

void watchCaret() {
    QObject::connect(qApp, &QApplication::focusChanged, qApp, [](QWidget*, QWidget* focus) { follow(focus); });
}

bool caretShown(const QObject* of) {
    return shown || of != field;
}

}  // namespace layer
