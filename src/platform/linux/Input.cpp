#include "platform/linux/Input.h"

#include <QApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QThread>
#include <QWheelEvent>
#include <algorithm>
#include <deque>

#include "platform/linux/Layer.h"

namespace layer {

namespace {

constexpr Moment LongestDoubleClick = 500 * Millisecond;
constexpr int WidestDoubleClick = 4;
// No key repeats before it was held so long.
constexpr Moment ShortestRepeatedHold = 100 * Millisecond;
constexpr Moment LongestGapInRepeat = 20 * Millisecond;
constexpr LPARAM AltHeld = 1 << 29;
constexpr LPARAM WasDown = 1 << 30;

std::deque<RawInput> waiting;
RawInput lastKey;
InputMode* mode = nullptr;
bool altAlone = false;  // nothing else was done since Alt went down

struct KeyName {
    int qtKey;
    WPARAM virtualKey;
};

constexpr KeyName KeyNames[] = {
    {Qt::Key_Backspace, VK_BACK},  {Qt::Key_Tab, VK_TAB},       {Qt::Key_Backtab, VK_TAB},
    {Qt::Key_Return, VK_RETURN},   {Qt::Key_Enter, VK_RETURN},  {Qt::Key_Shift, VK_SHIFT},
    {Qt::Key_Control, VK_CONTROL}, {Qt::Key_Alt, VK_MENU},      {Qt::Key_Escape, VK_ESCAPE},
    {Qt::Key_PageUp, VK_PRIOR},    {Qt::Key_PageDown, VK_NEXT}, {Qt::Key_End, VK_END},
    {Qt::Key_Home, VK_HOME},       {Qt::Key_Left, VK_LEFT},     {Qt::Key_Up, VK_UP},
    {Qt::Key_Right, VK_RIGHT},     {Qt::Key_Down, VK_DOWN},     {Qt::Key_Insert, VK_INSERT},
    {Qt::Key_Delete, VK_DELETE},
};

WPARAM virtualKey(int qtKey) {
    if (qtKey >= Qt::Key_F1 && qtKey <= Qt::Key_F24) {
        return VK_F1 + static_cast<WPARAM>(qtKey - Qt::Key_F1);
    }
    const auto* name = std::ranges::find(KeyNames, qtKey, &KeyName::qtKey);
    if (name != std::end(KeyNames)) {
        return name->virtualKey;
    }
    return qtKey < 0x80 ? static_cast<WPARAM>(qtKey) : 0;
}

RawInput::What whatOf(QEvent::Type type) {
    switch (type) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
            return RawInput::What::Press;
        case QEvent::MouseButtonRelease:
            return RawInput::What::Release;
        case QEvent::Wheel:
            return RawInput::What::Wheel;
        case QEvent::KeyPress:
            return RawInput::What::KeyDown;
        case QEvent::KeyRelease:
            return RawInput::What::KeyUp;
        default:
            return RawInput::What::Move;
    }
}

class InputFilter {
public:
    // Ahead of all event filters, since Qt's own for those who read windows aloud holds keys back for a while.
    static bool takeBeforeQt(void** told) {
        const bool taken = take(static_cast<QObject*>(told[0]), static_cast<QEvent*>(told[1]));
        *static_cast<bool*>(told[2]) = taken;
        return taken;
    }

private:
    static bool take(QObject* receiver, QEvent* event) {
        if (!receiver->isWindowType()) {
            return event->type() == QEvent::InputMethod && takeComposed(static_cast<QInputMethodEvent&>(*event));
        }
        if (isHandingOn()) {
            return false;
        }
        auto* window = static_cast<QWindow*>(receiver);
        switch (event->type()) {
            case QEvent::MouseButtonPress:
            case QEvent::MouseButtonDblClick:
            case QEvent::MouseButtonRelease:
            case QEvent::MouseMove:
            case QEvent::Wheel:
            case QEvent::KeyPress:
            case QEvent::KeyRelease:
                put(window, static_cast<QInputEvent&>(*event));
                return true;
            case QEvent::ShortcutOverride:
                // No key overtakes what was done before it.
                event->accept();
                return true;
            case QEvent::ContextMenu:
            case QEvent::Enter:
            case QEvent::Leave:
                return foreignDialog() == nullptr;
            default:
                return false;
        }
    }

    static void put(QWindow* window, const QInputEvent& event) {
        RawInput input;
        input.what = whatOf(event.type());
        input.modifiers = event.modifiers();
        input.when = static_cast<Moment>(event.timestamp()) * Millisecond;
        if (event.type() == QEvent::Wheel) {
            const auto& wheel = static_cast<const QWheelEvent&>(event);
            input.at = wheel.globalPosition().toPoint();
            input.turned = wheel.angleDelta().y();
        } else if (event.type() == QEvent::KeyPress || event.type() == QEvent::KeyRelease) {
            const auto& key = static_cast<const QKeyEvent&>(event);
            input.key = key.key();
            input.text = key.text();
            input.repeats = key.isAutoRepeat();
        } else {
            const auto& mouse = static_cast<const QMouseEvent&>(event);
            input.at = mouse.globalPosition().toPoint();
            input.button = mouse.button();
        }
        input.event.reset(event.clone());
        input.window = window;
        putInput(std::move(input));
        // A loop of Qt's own, as a question of a file dialog has one, takes no messages.
        MSG none{};
        while (QThread::currentThread()->loopLevel() > 0 && inputWaits()) {
            takeInput(none);
        }
    }

    // Letters made of several keys, or by an input method.
    static bool takeComposed(const QInputMethodEvent& event) {
        if (event.commitString().isEmpty() || isHandingOn() || foreignDialog()) {
            return false;
        }
        for (const QChar letter : event.commitString()) {
            RawInput input;
            input.what = RawInput::What::KeyDown;
            input.text = letter;
            input.window = QGuiApplication::focusWindow();
            putInput(std::move(input));
        }
        return true;
    }
};

// A frame, dialog or popup at this place of the screen, the topmost one.
Window* topmostAt(QPoint place) {
    const auto& windows = topLevels();
    for (auto window = windows.rbegin(); window != windows.rend(); ++window) {
        if ((*window)->visible && (*window)->outer && (*window)->outer->geometry().contains(place)) {
            return *window;
        }
    }
    return nullptr;
}

QRect clientOnScreen(const Window& window) {
    return {window.client->mapToGlobal(QPoint()), window.client->size()};
}

// The window that the mouse means there: a disabled one passes it on to the one below, texts and frames do not count.
Window* hit(Window& window, QPoint place) {
    for (auto child = window.children.rbegin(); child != window.children.rend(); ++child) {
        Window& inner = **child;
        if (inner.visible && inner.enabled && inner.client && !isTransparent(inner) &&
            clientOnScreen(inner).contains(place)) {
            return hit(inner, place);
        }
    }
    return &window;
}

LPARAM placeOf(QPoint point) {
    return MAKELPARAM(static_cast<WORD>(point.x()), static_cast<WORD>(point.y()));
}

// Told twice in one place and within a moment, a press is a double click.
bool isDoubleClick(const RawInput& input, const Window& window) {
    static RawInput before;
    static HWND beforeIn = nullptr;
    const QPoint way = input.at - before.at;
    const bool isSecond = beforeIn == window.handle && before.button == input.button &&
                          input.when - before.when <= LongestDoubleClick && way.manhattanLength() <= WidestDoubleClick;
    before = input;
    beforeIn = isSecond ? nullptr : window.handle;
    return isSecond;
}

UINT mouseMessage(const RawInput& input, const Window& window) {
    const bool right = input.button == Qt::RightButton;
    switch (input.what) {
        case RawInput::What::Press:
            return isDoubleClick(input, window) ? (right ? WM_RBUTTONDBLCLK : WM_LBUTTONDBLCLK)
                   : right                      ? WM_RBUTTONDOWN
                                                : WM_LBUTTONDOWN;
        case RawInput::What::Release:
            return right ? WM_RBUTTONUP : WM_LBUTTONUP;
        default:
            return WM_MOUSEMOVE;
    }
}

// Buttons and keys that are held behind it.
WORD heldIn(const RawInput& input) {
    const auto* mouse = dynamic_cast<const QSinglePointEvent*>(input.event.get());
    const Qt::MouseButtons buttons = mouse ? mouse->buttons() : Qt::MouseButtons();
    return static_cast<WORD>((buttons & Qt::LeftButton ? MK_LBUTTON : 0) |
                             (buttons & Qt::RightButton ? MK_RBUTTON : 0) |
                             (input.modifiers & Qt::ShiftModifier ? MK_SHIFT : 0) |
                             (input.modifiers & Qt::ControlModifier ? MK_CONTROL : 0));
}

void showCursor(const Window& window) {
    QWidget* const top = window.client->window();
    if (QWindow* shown = top->windowHandle(); shown && shown->cursor().shape() != window.client->cursor().shape()) {
        shown->setCursor(window.client->cursor());
    }
}

bool takeMouse(const RawInput& input, MSG& message) {
    altAlone = altAlone && input.what != RawInput::What::Press;
    Window* target = find(capture());
    if (!target) {
        Window* const top = topmostAt(input.at);
        if (!top || !top->enabled) {
            return false;
        }
        const bool inside = clientOnScreen(*top).contains(input.at);
        if (!inside) {
            message = {top->handle, input.what == RawInput::What::Press ? WM_NCLBUTTONDOWN : WM_NULL,
                       0,           placeOf(input.at),
                       0,           {0, 0}};
            return input.button == Qt::LeftButton && input.what == RawInput::What::Press;
        }
        target = hit(*top, input.at);
    }
    if (input.what == RawInput::What::Wheel) {
        message = {target->handle,
                   WM_MOUSEWHEEL,
                   MAKEWPARAM(heldIn(input), static_cast<WORD>(input.turned)),
                   placeOf(input.at),
                   0,
                   {0, 0}};
        return true;
    }
    if (input.what != RawInput::What::Move && input.button != Qt::LeftButton && input.button != Qt::RightButton) {
        return false;
    }
    if (input.what == RawInput::What::Press && activeWindow() != rootOf(*target).handle) {
        activate(rootOf(*target).handle);
    }
    showCursor(*target);
    message = {target->handle,
               mouseMessage(input, *target),
               heldIn(input),
               placeOf(target->client->mapFromGlobal(input.at)),
               0,
               {0, 0}};
    return true;
}

// A key that is held repeats as released and pressed in one moment. Qt marks both, but not where it told the release
// before it had the press.
bool isHalfOfRepeat(const RawInput& release) {
    const bool heldLong = lastKey.repeats || release.when - lastKey.when >= ShortestRepeatedHold;
    if (release.repeats || lastKey.key != release.key || !heldLong) {
        return release.repeats;
    }
    const Moment end = theClock().now() + LongestGapInRepeat;
    while (waiting.empty() && theClock().now() < end) {
        theClock().waitForDesktop(end);
    }
    const bool pressed = !waiting.empty() && waiting.front().what == RawInput::What::KeyDown &&
                         waiting.front().key == release.key && waiting.front().when == release.when;
    if (pressed) {
        waiting.front().repeats = true;
    }
    return pressed;
}

bool takeKey(const RawInput& input, MSG& message) {
    const bool down = input.what == RawInput::What::KeyDown;
    if (!down && isHalfOfRepeat(input)) {
        return false;
    }
    const Window* target = find(GetFocus() ? GetFocus() : activeWindow());
    if (!target) {
        return false;
    }
    const WPARAM key = virtualKey(input.key);
    const bool alt = key == VK_MENU || key == VK_F10 || (input.modifiers & Qt::AltModifier);
    const bool system = alt && (down || key != VK_MENU || altAlone);
    altAlone = down && key == VK_MENU;
    lastKey = input;
    message.hwnd = target->handle;
    message.message = system ? (down ? WM_SYSKEYDOWN : WM_SYSKEYUP) : (down ? WM_KEYDOWN : WM_KEYUP);
    message.wParam = key;
    message.lParam =
        (input.modifiers & Qt::AltModifier || key == VK_MENU ? AltHeld : 0) | (input.repeats ? WasDown : 0);
    if (down && key != VK_MENU && key != VK_SHIFT && key != VK_CONTROL) {
        showCues(rootOf(*find(target->handle)));
    }
    return true;
}

void noteActivation() {
    if (foreignDialog()) {
        return;
    }
    // What came back meanwhile was only on its way from one of our windows to another.
    if (!isOurs(QGuiApplication::focusWindow())) {
        activate(nullptr);
    } else if (!activeWindow()) {
        activateNext();
    }
}

}  // namespace

void installInput() {
    QInternal::registerCallback(QInternal::EventNotifyCallback, InputFilter::takeBeforeQt);
    QObject::connect(qApp, &QGuiApplication::focusWindowChanged, qApp, [] {
        RawInput input;
        input.what = RawInput::What::Activation;
        putInput(input);
    });
}

void putInput(RawInput input) {
    // Where the mouse went on its way matters to nobody.
    if (input.what == RawInput::What::Move && !waiting.empty() && waiting.back().what == RawInput::What::Move) {
        waiting.back() = std::move(input);
    } else {
        waiting.push_back(std::move(input));
    }
}

bool inputWaits() {
    return !waiting.empty();
}

bool takeInput(MSG& message) {
    const RawInput input = std::move(waiting.front());
    waiting.pop_front();
    if (input.what == RawInput::What::Activation) {
        noteActivation();
        return false;
    }
    if (input.what == RawInput::What::Close) {
        const Window* window = find(input.closed);
        if (window && window->enabled) {
            PostMessageA(input.closed, WM_CLOSE, 0, 0);
        }
        return false;
    }
    if (foreignDialog()) {
        handOn(input);
        return false;
    }
    // Qt tells it behind the second press; here the window decides.
    if (input.event && input.event->type() == QEvent::MouseButtonDblClick) {
        return false;
    }
    if (mode && mode->take(input)) {
        return false;
    }
    const bool isKey = input.what == RawInput::What::KeyDown || input.what == RawInput::What::KeyUp;
    return isKey ? takeKey(input, message) : takeMouse(input, message);
}

const RawInput& keyInHand() {
    return lastKey;
}

void setInputMode(InputMode* newMode) {
    mode = newMode;
}

void cancelInputMode() {
    if (mode) {
        mode->cancel();
    }
}

}  // namespace layer
