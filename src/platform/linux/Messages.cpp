// The message queue and its order: sent messages at once, then posted ones, input, WM_PAINT and WM_TIMER.
#include <QAbstractEventDispatcher>
#include <QApplication>
#include <algorithm>
#include <deque>

#include "platform/linux/Clock.h"
#include "platform/linux/Layer.h"

namespace layer {

namespace {

std::deque<MSG> posted;
bool quitting = false;
int quitCode = 0;

bool takePosted(MSG& message) {
    if (posted.empty()) {
        return false;
    }
    message = posted.front();
    posted.pop_front();
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

}  // namespace

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
        open = open ? open : foreignDialog();
        if (open) {
            open->close();
        }
    }
    return nextTimerDue();
}

}  // namespace

void installLoops() {
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
        if (inputWaits()) {
            if (takeInput(*message)) {
                return TRUE;
            }
            continue;
        }
        if (takePaint(*message) || takeDueTimer(*message)) {
            return TRUE;
        }
        showAllDrawing();
        theClock().waitForDesktop(nextTimerDue());
    }
}

BOOL TranslateMessage(const MSG* message) {
    if (message->message != WM_KEYDOWN && message->message != WM_SYSKEYDOWN) {
        return FALSE;
    }
    const RawInput& key = keyInHand();
    const bool letter = key.key >= Qt::Key_A && key.key <= Qt::Key_Z;
    const QByteArray letters = letter && key.modifiers == Qt::ControlModifier
                                   ? QByteArray(1, static_cast<char>(key.key - Qt::Key_A + 1))
                                   : encode(key.text, controlCodePage());
    for (const char typed : letters) {
        const UINT kind = message->message == WM_SYSKEYDOWN ? WM_SYSCHAR : WM_CHAR;
        PostMessageA(message->hwnd, kind, static_cast<BYTE>(typed), message->lParam);
    }
    return TRUE;
}

LRESULT DispatchMessageA(const MSG* message) {
    if (message->message == WM_TIMER && message->lParam != 0) {
        const auto procedure = reinterpret_cast<TIMERPROC>(message->lParam);
        procedure(message->hwnd, WM_TIMER, message->wParam, static_cast<DWORD>(theClock().now() / Millisecond));
        return 0;
    }
    return SendMessageA(message->hwnd, message->message, message->wParam, message->lParam);
}

LRESULT DefWindowProcA(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) {
    static bool f10Pressed = false;
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
        case WM_SYSKEYDOWN:
            f10Pressed = wParam == VK_F10;
            return 0;
        case WM_SYSKEYUP:
            if (!capture() && (wParam == VK_MENU || (wParam == VK_F10 && std::exchange(f10Pressed, false)))) {
                enterMenuBar(rootOf(*window));
            }
            return 0;
        case WM_SYSCHAR:
            openMenuByLetter(rootOf(*window), decode(QByteArray(1, static_cast<char>(wParam)), controlCodePage()));
            return 0;
        case WM_NCLBUTTONDOWN:
            pressMenuBar(*window, {static_cast<short>(LOWORD(lParam)), static_cast<short>(HIWORD(lParam))});
            return 0;
        case WM_MOUSEWHEEL:
            return window->parent ? SendMessageA(window->parent->handle, message, wParam, lParam) : 0;
        default:
            return 0;
    }
}
