// What the user does with mouse and keyboard: one queue, in the order in which the desktop told it, as raw input: what
// happened and where on the screen. The window is found when the program takes an input out: the mouse by capture or by
// what lies under the point then, the keyboard by the focus then. What then hits nothing, or a window that is disabled,
// is dropped, and nothing else is.
#pragma once

#include <QPoint>
#include <QPointer>
#include <QString>
#include <QWindow>
#include <memory>

#include "platform/Win32.h"
#include "platform/linux/Clock.h"

class QMenu;

namespace layer {

struct Window;

struct RawInput {
    enum class What { Press, Release, Move, Wheel, KeyDown, KeyUp, Activation, Close };
    What what = What::Move;
    QPoint at;
    Qt::MouseButton button = Qt::NoButton;
    int turned = 0;  // of the wheel, 120 a notch
    int key = 0;     // Qt's number
    QString text;
    Qt::KeyboardModifiers modifiers;
    bool repeats = false;
    Moment when = 0;        // by the desktop's clock
    HWND closed = nullptr;  // which window the desktop asks to close
    // As Qt told it, for windows of Qt's own.
    std::shared_ptr<QEvent> event;
    QPointer<QWindow> window;
};

// Takes over all input of the application from Qt.
void installInput();
void putInput(RawInput input);
bool inputWaits();
// Deals with the next input, which must wait: true if it became a message.
bool takeInput(MSG& message);
// The key that the last key message was about, for its letters and modifiers.
const RawInput& keyInHand();

// While it is set, it gets every input first; true if it took it.
class InputMode {
public:
    virtual ~InputMode() = default;
    virtual bool take(const RawInput& input) = 0;
    // Something else needs the user, or the program is no longer the active one.
    virtual void cancel() = 0;
};
void setInputMode(InputMode* mode);
void cancelInputMode();

// The window that gets all of the mouse until it lets go or another one takes it, which WM_CAPTURECHANGED tells it.
HWND capture();
void setCapture(HWND window);
void releaseCapture();

// The active window is the frame or dialog that the user works in; null while another program has the keyboard. The
// focus is it or one of its controls; null after the one that had it was disabled.
HWND activeWindow();
void activate(HWND root);
// The topmost window that can be active.
void activateNext();
// Takes capture and focus from a window that is about to be disabled or hidden, and from all in it; the focus goes to
// the next one, if there is one.
void letGo(Window& window, HWND next);
// The same for one that ends: nobody is told.
void forgetInput(const Window& window);

// A dialog of Qt's own gets the input from now on.
void beginForeign(QWidget* dialog);
void endForeign(QWidget* dialog);
// The same for a menu that Qt shows beside a control, which keeps the focus.
void showForeignMenu(QMenu* menu, QPoint place);
// The topmost one, null if none runs.
QWidget* foreignDialog();
// Gives it an input that was taken out for it; what passes through Qt meanwhile is no input of the user.
void handOn(const RawInput& input);
bool isHandingOn();
// Whether a window is one of the layer's own.
bool isOurs(const QWindow* window);

}  // namespace layer
