// The message queue and its order: sent messages at once, then posted ones, input, WM_PAINT and WM_TIMER.
#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QKeyEvent>
#include <algorithm>
#include <deque>

#include "platform/linux/Clock.h"
#include "platform/linux/Layer.h"

namespace layer {

namespace {

// A key on its way through the program's loop, which may take it as an accelerator; else it goes on to Qt.
struct PendingKey {
    MSG message;
    QPointer<QObject> receiver;
    std::unique_ptr<QKeyEvent> event;
};

std::deque<MSG> posted;
std::deque<PendingKey> keys;
std::unique_ptr<QKeyEvent> keyInHand;
QPointer<QObject> keyReceiver;
bool handingOn = false;
bool quitting = false;
int quitCode = 0;

struct KeyName {
    int qtKey;
    WPARAM virtualKey;
};

constexpr KeyName KeyNames[] = {
    {Qt::Key_Backspace, 0x08}, {Qt::Key_Tab, 0x09},    {Qt::Key_Return, 0x0D},   {Qt::Key_Enter, 0x0D},
    {Qt::Key_Escape, 0x1B},    {Qt::Key_PageUp, 0x21}, {Qt::Key_PageDown, 0x22}, {Qt::Key_End, 0x23},
    {Qt::Key_Home, 0x24},      {Qt::Key_Left, 0x25},   {Qt::Key_Up, 0x26},       {Qt::Key_Right, 0x27},
    {Qt::Key_Down, 0x28},      {Qt::Key_Insert, 0x2D}, {Qt::Key_Delete, 0x2E},
};

WPARAM virtualKey(int qtKey) {
    if (qtKey >= Qt::Key_F1 && qtKey <= Qt::Key_F24) {
        return 0x70 + static_cast<WPARAM>(qtKey - Qt::Key_F1);
    }
    const auto* name = std::ranges::find(KeyNames, qtKey, &KeyName::qtKey);
    if (name != std::end(KeyNames)) {
        return name->virtualKey;
    }
    return qtKey < 0x80 ? static_cast<WPARAM>(qtKey) : 0;
}

// The window that has the keyboard: that of the focused widget or the nearest one above it. Null within a message box
// or a file dialog, which deal with their keys by themselves.
HWND focusWindow(const QWidget* widget) {
    for (; widget; widget = widget->isWindow() ? nullptr : widget->parentWidget()) {
        for (const Window* frame : topLevels()) {
            std::vector<const Window*> open{frame};
            while (!open.empty()) {
                const Window* window = open.back();
                open.pop_back();
                if (window->outer == widget || window->client == widget) {
                    return window->handle;
                }
                open.insert(open.end(), window->children.begin(), window->children.end());
            }
        }
    }
    return nullptr;
}

// Without a modal dialog's keyboard handling these move no focus on the real desktop.
bool movesFocus(const QKeyEvent& event, HWND handle) {
    Window* window = find(handle);
    if (window && rootOf(*window).modal) {
        return false;
    }
    switch (event.key()) {
        case Qt::Key_Tab:
        case Qt::Key_Backtab:
            return true;
        case Qt::Key_Left:
        case Qt::Key_Right:
        case Qt::Key_Up:
        case Qt::Key_Down: {
            const QWidget* focus = QApplication::focusWidget();
            return focus && focus->inherits("QAbstractButton");
        }
        default:
            return false;
    }
}

class InputFilter : public QObject {
protected:
    bool eventFilter(QObject* receiver, QEvent* event) override {
        // A list or menu may close while the key is only announced; the key is still its own.
        if (event->type() == QEvent::ShortcutOverride && receiver->isWindowType() && !handingOn) {
            popupTakesKey = QApplication::activePopupWidget() != nullptr;
        }
        if (handingOn || popupTakesKey || (event->type() != QEvent::KeyPress && event->type() != QEvent::KeyRelease) ||
            QApplication::activePopupWidget()) {
            return false;
        }
        const QWidget* focus = QApplication::focusWidget();
        const auto* widget = qobject_cast<QWidget*>(receiver);
        const HWND window = focusWindow(widget ? widget : focus ? focus : QApplication::activeWindow());
        if (!window) {
            return false;
        }
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool alt = key->modifiers() & Qt::AltModifier;
        const bool down = event->type() == QEvent::KeyPress;
        PendingKey pending;
        pending.message.hwnd = window;
        pending.message.message = alt ? (down ? WM_SYSKEYDOWN : WM_SYSKEYUP) : (down ? WM_KEYDOWN : WM_KEYUP);
        pending.message.wParam = virtualKey(key->key());
        pending.message.lParam = alt ? 1 << 29 : 0;
        pending.receiver = receiver;
        pending.event.reset(key->clone());
        keys.push_back(std::move(pending));
        return true;
    }

private:
    bool popupTakesKey = false;
};

bool takePosted(MSG& message) {
    if (posted.empty()) {
        return false;
    }
    message = posted.front();
    posted.pop_front();
    return true;
}

bool takeKey(MSG& message) {
    if (keys.empty()) {
        return false;
    }
    PendingKey pending = std::move(keys.front());
    keys.pop_front();
    message = pending.message;
    keyInHand = std::move(pending.event);
    keyReceiver = pending.receiver;
    return true;
}

bool takePaint(MSG& message) {
    const Window* window = nextToPaint();
    if (!window) {
        return false;
    }
    message = {window->handle, WM_PAINT, 0, 0, 0, {0, 0}};
    return true;
}

void handOnKey(HWND window) {
    const auto key = std::move(keyInHand);
    if (!key || !keyReceiver || movesFocus(*key, window)) {
        return;
    }
    Window* target = find(window);
    if (target && key->type() == QEvent::KeyPress && menuBarTakesKey(rootOf(*target), *key)) {
        return;
    }
    handingOn = true;
    QCoreApplication::sendEvent(keyReceiver, key.get());
    handingOn = false;
    leaveMenuBar();
}

bool isKey(UINT message) {
    return message == WM_KEYDOWN || message == WM_KEYUP || message == WM_SYSKEYDOWN || message == WM_SYSKEYUP;
}

}  // namespace

void handOnDirectly(QWidget& receiver, QKeyEvent& key) {
    const bool before = std::exchange(handingOn, true);
    QCoreApplication::sendEvent(&receiver, &key);
    handingOn = before;
}

void forgetMessages(HWND window) {
    std::erase_if(posted, [&](const MSG& message) { return message.hwnd == window; });
}

void runNestedLoop(bool (*done)(void*), void* argument) {
    MSG message;
    while (!done(argument)) {
        if (!GetMessageA(&message, nullptr, 0, 0)) {
            PostQuitMessage(static_cast<int>(message.wParam));
            return;
        }
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
}

namespace {

// Runs what is waiting from within a loop of Qt's own, as a question of a file dialog has one.
Moment serveWithinQtLoop() {
    MSG message;
    while (takePosted(message) || takePaint(message) || takeDueTimer(message)) {
        DispatchMessageA(&message);
    }
    showAllDrawing();
    if (quitting) {
        QWidget* open = QApplication::activePopupWidget();
        open = open ? open : QApplication::activeModalWidget();
        if (open) {
            open->close();
        }
    }
    return nextTimerDue();
}

}  // namespace

void installInput() {
    static auto* filter = new InputFilter;
    qApp->installEventFilter(filter);
    serveWithinQtLoops(serveWithinQtLoop);
}

}  // namespace layer

using namespace layer;

LRESULT SendMessageA(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) {
    Window* window = find(handle);
    return window ? callProcedure(*window, message, wParam, lParam) : 0;
}

BOOL PostMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (!find(window)) {
        return FALSE;
    }
    posted.push_back({window, message, wParam, lParam, 0, {0, 0}});
    if (QAbstractEventDispatcher* dispatcher = QAbstractEventDispatcher::instance()) {
        dispatcher->wakeUp();
    }
    return TRUE;
}

LRESULT SendDlgItemMessageA(HWND dialog, int id, UINT message, WPARAM wParam, LPARAM lParam) {
    return SendMessageA(GetDlgItem(dialog, id), message, wParam, lParam);
}

void PostQuitMessage(int exitCode) {
    quitting = true;
    quitCode = exitCode;
}

BOOL GetMessageA(MSG* message, HWND, UINT, UINT) {
    for (;;) {
        buryWidgets();
        *message = {};
        if (takePosted(*message)) {
            return TRUE;
        }
        if (quitting) {
            quitting = false;
            *message = {nullptr, WM_QUIT, static_cast<WPARAM>(quitCode), 0, 0, {0, 0}};
            return FALSE;
        }
        theClock().serveDesktop();
        if (!posted.empty() || quitting) {
            continue;
        }
        if (takeKey(*message) || takePaint(*message) || takeDueTimer(*message)) {
            return TRUE;
        }
        showAllDrawing();
        theClock().waitForDesktop(nextTimerDue());
    }
}

BOOL TranslateMessage(const MSG* message) {
    if ((message->message != WM_KEYDOWN && message->message != WM_SYSKEYDOWN) || !keyInHand) {
        return FALSE;
    }
    const QByteArray letters = encode(keyInHand->text(), controlCodePage());
    for (const char letter : letters) {
        const UINT kind = message->message == WM_SYSKEYDOWN ? WM_SYSCHAR : WM_CHAR;
        PostMessageA(message->hwnd, kind, static_cast<BYTE>(letter), message->lParam);
    }
    return TRUE;
}

LRESULT DispatchMessageA(const MSG* message) {
    if (isKey(message->message)) {
        handOnKey(message->hwnd);
        return 0;
    }
    if (message->message == WM_TIMER && message->lParam != 0) {
        const auto procedure = reinterpret_cast<TIMERPROC>(message->lParam);
        procedure(message->hwnd, WM_TIMER, message->wParam, static_cast<DWORD>(theClock().now() / Millisecond));
        return 0;
    }
    return SendMessageA(message->hwnd, message->message, message->wParam, message->lParam);
}

LRESULT DefWindowProcA(HWND handle, UINT message, WPARAM wParam, LPARAM) {
    Window* window = find(handle);
    if (!window) {
        return 0;
    }
    switch (message) {
        case WM_PAINT: {
            PAINTSTRUCT paint;
            BeginPaint(handle, &paint);
            EndPaint(handle, &paint);
            return 0;
        }
        case WM_ERASEBKGND:
            erase(*window);
            return 1;
        case WM_CLOSE:
            DestroyWindow(handle);
            return 0;
        case WM_SYSCHAR:
            return openMenuByLetter(rootOf(*window), static_cast<BYTE>(wParam));
        default:
            return 0;
    }
}
