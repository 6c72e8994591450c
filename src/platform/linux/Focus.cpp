// Which window has the mouse, which one is active, which one has the keyboard.
#include <QApplication>

#include "platform/linux/Input.h"
#include "platform/linux/Layer.h"

namespace layer {

namespace {

HWND captured = nullptr;
HWND active = nullptr;
HWND focus = nullptr;

bool isWithin(HWND handle, const Window& window) {
    for (const Window* inner = find(handle); inner; inner = inner->parent) {
        if (inner == &window) {
            return true;
        }
    }
    return false;
}

void tellCaptureLost(HWND window) {
    if (Window* loser = find(window)) {
        callProcedure(*loser, WM_CAPTURECHANGED, 0, 0);
    }
}

}  // namespace

HWND capture() {
    return captured;
}

void setCapture(HWND window) {
    const HWND before = std::exchange(captured, window);
    if (before && before != window) {
        tellCaptureLost(before);
    }
}

void releaseCapture() {
    setCapture(nullptr);
}

HWND activeWindow() {
    return active;
}

void activate(HWND handle) {
    if (handle == active) {
        return;
    }
    cancelInputMode();
    releaseCapture();
    if (Window* before = find(active)) {
        before->lastFocus = focus;
    }
    active = handle;
    Window* root = find(handle);
    if (!root) {
        SetFocus(nullptr);
        return;
    }
    // A dialog remembers which control had the keyboard; a frame takes it itself, but for what its first page chose
    // before it was shown.
    const Window* last = root->kind == Kind::Dialog ? find(root->lastFocus) : nullptr;
    if (!isWithin(focus, *root)) {
        SetFocus(last && last->enabled && reallyVisible(*last) ? last->handle : handle);
    }
    if (Window* still = find(handle); still && still->outer && !still->outer->isActiveWindow()) {
        still->outer->activateWindow();
    }
}

void activateNext() {
    const auto& windows = topLevels();
    for (auto window = windows.rbegin(); window != windows.rend(); ++window) {
        if ((*window)->visible && (*window)->enabled && !(*window)->dying) {
            activate((*window)->handle);
            return;
        }
    }
    activate(nullptr);
}

void letGo(Window& window, HWND next) {
    if (isWithin(captured, window)) {
        releaseCapture();
    }
    if (isWithin(focus, window)) {
        SetFocus(next);
    }
}

void forgetInput(const Window& window) {
    captured = isWithin(captured, window) ? nullptr : captured;
    focus = isWithin(focus, window) ? nullptr : focus;
    active = active == window.handle ? nullptr : active;
}

}  // namespace layer

using namespace layer;

HWND GetFocus() {
    return focus;
}

HWND SetFocus(HWND handle) {
    const HWND before = focus;
    Window* const next = find(handle);
    for (const Window* window = next; window; window = window->parent) {
        if (!window->enabled) {
            return nullptr;
        }
    }
    if (before == handle) {
        return before;
    }
    focus = handle;
    if (Window* loser = find(before)) {
        callProcedure(*loser, WM_KILLFOCUS, reinterpret_cast<WPARAM>(handle), 0);
    }
    Window* const winner = find(handle);
    if (winner && focus == handle) {
        callProcedure(*winner, WM_SETFOCUS, reinterpret_cast<WPARAM>(before), 0);
    }
    if (const Window* shown = find(focus); shown && shown->client) {
        shown->client->setFocus(Qt::OtherFocusReason);
    } else if (QWidget* widget = QApplication::focusWidget(); widget && !foreignDialog()) {
        widget->clearFocus();
    }
    return before;
}
