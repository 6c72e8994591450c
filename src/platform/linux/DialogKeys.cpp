// The keys that a dialog takes for itself: Enter, Escape, Tab and, among buttons, the arrows.
#include <algorithm>

#include "platform/linux/Layer.h"

namespace layer {

namespace {

constexpr DWORD TabStop = 0x00010000;
constexpr DWORD ButtonTypeMask = 0x0F;
constexpr DWORD DefaultButton = 1;

bool isPushButton(const Window& control) {
    return control.kind == Kind::Button && (control.style & ButtonTypeMask) <= DefaultButton;
}

bool canHaveFocus(const Window& control) {
    return control.visible && control.enabled && !isTransparent(control);
}

bool isTabStop(const Window& control) {
    return (control.style & TabStop) != 0;
}

// From one control to the next that will do, round.
HWND nextControl(const Window& dialog, const Window* from, int way, bool (*will)(const Window&)) {
    const auto& controls = dialog.children;
    const auto count = static_cast<std::ptrdiff_t>(controls.size());
    const auto found = std::ranges::find(controls, from);
    std::ptrdiff_t at = found != controls.end() ? found - controls.begin() : way > 0 ? -1 : count;
    for (std::ptrdiff_t tries = 0; tries < count; ++tries) {
        at = (at + way + count) % count;
        const Window& control = *controls[static_cast<size_t>(at)];
        if (&control != from && canHaveFocus(control) && will(control)) {
            return control.handle;
        }
    }
    return nullptr;
}

const Window* focusIn(const Window& dialog) {
    const Window* focused = find(GetFocus());
    return focused && focused->parent == &dialog ? focused : nullptr;
}

// Enter presses the focused button, or else the default one.
int defaultCommand(const Window& dialog) {
    const Window* focused = focusIn(dialog);
    if (focused && isPushButton(*focused)) {
        return focused->id;
    }
    for (const Window* control : dialog.children) {
        if (control->kind == Kind::Button && (control->style & ButtonTypeMask) == DefaultButton) {
            return control->id;
        }
    }
    return IDOK;
}

// A disabled button is not pressed. What the mouse holds is let go first, so that its end is told.
void command(HWND dialog, int id) {
    releaseCapture();
    const HWND button = GetDlgItem(dialog, id);
    if (!button || IsWindowEnabled(button)) {
        SendMessageA(dialog, WM_COMMAND, MAKEWPARAM(static_cast<unsigned>(id), BN_CLICKED),
                     reinterpret_cast<LPARAM>(button));
    }
}

void moveFocus(HWND next) {
    if (!next) {
        return;
    }
    SetFocus(next);
    if (const Window* reached = find(next); reached && reached->kind == Kind::Edit) {
        SendMessageA(next, EM_SETSEL, 0, -1);
    }
}

}  // namespace

HWND firstTabStop(const Window& dialog, const Window* but) {
    for (const Window* control : dialog.children) {
        if (control != but && canHaveFocus(*control) && isTabStop(*control)) {
            return control->handle;
        }
    }
    return nullptr;
}

bool dialogTakesKey(HWND handle, const MSG& message) {
    const Window* dialog = find(handle);
    if (!dialog || message.message != WM_KEYDOWN || activeWindow() != handle) {
        return false;
    }
    const Window* focused = focusIn(*dialog);
    const bool back = keyInHand().modifiers & Qt::ShiftModifier;
    switch (message.wParam) {
        case VK_RETURN:
        case VK_ESCAPE:
            // An open list takes both.
            if (openList()) {
                return false;
            }
            command(handle, message.wParam == VK_RETURN ? defaultCommand(*dialog) : IDCANCEL);
            return true;
        case VK_TAB:
            moveFocus(nextControl(*dialog, focused, back ? -1 : 1, isTabStop));
            return true;
        case VK_LEFT:
        case VK_UP:
        case VK_RIGHT:
        case VK_DOWN:
            if (!focused || focused->kind != Kind::Button) {
                return false;
            }
            moveFocus(nextControl(*dialog, focused, message.wParam == VK_LEFT || message.wParam == VK_UP ? -1 : 1,
                                  [](const Window&) { return true; }));
            return true;
        default:
            return false;
    }
}

}  // namespace layer
