// Windows: their records, creation and end, place, size, state and text.
#include <QGuiApplication>
#include <QScreen>
#include <algorithm>
#include <string>
#include <unordered_map>

#include "platform/linux/Layer.h"

namespace layer {

namespace {

struct RegisteredClass {
    WNDPROC procedure;
    QColor background;
    UINT style;
    LPCSTR menu;
    HICON icon;
};

std::unordered_map<std::string, RegisteredClass>& classes() {
    static std::unordered_map<std::string, RegisteredClass> registered;
    return registered;
}

// Handles are counted up and never used again, so that a stale one is recognised.
std::unordered_map<HWND, std::unique_ptr<Window>>& registry() {
    static std::unordered_map<HWND, std::unique_ptr<Window>> windows;
    return windows;
}

std::vector<Window*> frames;
// Widgets of destroyed windows; deleted once no window procedure runs any more, since one of them may be on the stack.
std::vector<QPointer<QWidget>> graveyard;
int procedureDepth = 0;

void destroyTree(Window& window) {
    const HWND handle = window.handle;
    forgetInput(window);
    window.dying = true;
    callProcedure(window, WM_DESTROY, 0, 0);
    Window* still = find(handle);
    if (!still) {
        return;
    }
    while (!still->children.empty()) {
        destroyTree(*still->children.back());
        still = find(handle);
        if (!still) {
            return;
        }
    }
    killTimers(handle);
    forgetMessages(handle);
    forgetContexts(*still);
    auto& siblings = still->parent ? still->parent->children : frames;
    std::erase(siblings, still);
    if (still->outer) {
        still->outer->hide();
        graveyard.push_back(still->outer);
    }
    registry().erase(handle);
}

void layOut(Window& window) {
    if (!window.outer) {
        return;
    }
    if (!window.parent) {
        placeFrame(window);
    } else {
        window.outer->setGeometry(window.place);
    }
    resizeSurface(window);
}

// What a move or a change of size leaves to be painted: the uncovered part of the parent and the new part of the
// window.
void invalidateMoved(Window& window, const QRect& old) {
    if (!reallyVisible(window)) {
        return;
    }
    if (window.parent) {
        invalidate(*window.parent, QRegion(old) - QRegion(window.place), true);
    }
    if (old.size() != window.place.size()) {
        if (!window.parent) {
            invalidateAll(window);
        } else {
            invalidate(window, QRegion(QRect(QPoint(), window.place.size())) - QRegion(QRect(QPoint(), old.size())),
                       true);
        }
    }
}

// A window that is painted at once paints over its parents, none of which keeps off its children (WS_CLIPCHILDREN):
// what it paints is not theirs to paint any more.
void validateParents(const Window& window) {
    QRegion painted = window.invalid;
    for (const Window* inner = &window; inner->parent; inner = inner->parent) {
        painted.translate(inner->place.topLeft());
        inner->parent->invalid -= painted;
        inner->parent->erase = inner->parent->erase && !inner->parent->invalid.isEmpty();
    }
}

}  // namespace

Window* find(HWND handle) {
    const auto found = registry().find(handle);
    return found == registry().end() ? nullptr : found->second.get();
}

size_t livingWindows() {
    return registry().size();
}

Window& desktop() {
    static Window* screen = &makeWindow(Kind::Desktop, nullptr);
    if (const QScreen* primary = QGuiApplication::primaryScreen()) {
        screen->place = QRect(QPoint(), primary->geometry().size());
    }
    return *screen;
}

const std::vector<Window*>& topLevels() {
    return frames;
}

Window& makeWindow(Kind kind, Window* parent) {
    static std::uintptr_t lastHandle = 0x10000;
    lastHandle += 2;
    const HWND handle = reinterpret_cast<HWND>(lastHandle);
    auto& slot = registry()[handle];
    slot = std::make_unique<Window>();
    slot->handle = handle;
    slot->kind = kind;
    slot->parent = parent;
    if (parent) {
        parent->children.push_back(slot.get());
    } else if (kind != Kind::Desktop) {
        frames.push_back(slot.get());
    }
    return *slot;
}

QSize clientSize(const Window& window) {
    return window.kind == Kind::Desktop || window.parent ? window.place.size() : frameClientSize(window);
}

Window& rootOf(Window& window) {
    return window.parent ? rootOf(*window.parent) : window;
}

bool reallyVisible(const Window& window) {
    return window.visible && (!window.parent || reallyVisible(*window.parent));
}

LRESULT callProcedure(Window& window, UINT message, WPARAM wParam, LPARAM lParam) {
    ++procedureDepth;
    LRESULT result = 0;
    if (window.kind == Kind::Dialog) {
        result = defaultDialogProcedure(window, message, wParam, lParam);
    } else if (window.procedure) {
        result = window.procedure(window.handle, message, wParam, lParam);
    } else {
        result = controlMessage(window, message, wParam, lParam);
    }
    --procedureDepth;
    return result;
}

void buryWidgets() {
    if (procedureDepth > 0) {
        return;
    }
    for (const QPointer<QWidget>& widget : graveyard) {
        delete widget.data();
    }
    graveyard.clear();
}

}  // namespace layer

using namespace layer;

ATOM RegisterClassA(const WNDCLASSA* windowClass) {
    auto& registered = classes();
    if (registered.contains(windowClass->lpszClassName)) {
        return 0;
    }
    registered[windowClass->lpszClassName] = {windowClass->lpfnWndProc, colourOf(windowClass->hbrBackground),
                                              windowClass->style, windowClass->lpszMenuName, windowClass->hIcon};
    return static_cast<ATOM>(0xC000 + registered.size());
}

HWND CreateWindowExA(DWORD exStyle, LPCSTR className, LPCSTR title, DWORD style, int x, int y, int width, int height,
                     HWND parent, HMENU menu, HINSTANCE instance, LPVOID) {
    const auto found = classes().find(className);
    if (found == classes().end()) {
        return nullptr;
    }
    if (parent || (style & WS_CHILD)) {
        reportUnsupported("window", QString::fromLatin1(className) + QStringLiteral(" as a child"));
    }
    Window& window = makeWindow(Kind::Frame, nullptr);
    const HWND handle = window.handle;
    window.style = style | WS_CAPTION;
    window.exStyle = exStyle;
    window.procedure = found->second.procedure;
    window.background = found->second.background;
    window.place = QRect(x, y, width, height);
    window.text = title ? title : "";
    window.menu = menu ? menu : found->second.menu ? LoadMenuA(instance, found->second.menu) : nullptr;
    window.outer = makeFrameWidget(window);
    window.outer->setWindowIcon(iconOf(found->second.icon));
    attachMenu(window);
    applyText(window);
    layOut(window);
    if (callProcedure(window, WM_CREATE, 0, 0) == -1) {
        DestroyWindow(handle);
    }
    Window* created = find(handle);
    if (created && (style & WS_VISIBLE)) {
        ShowWindow(handle, SW_SHOW);
    }
    return created ? handle : nullptr;
}

BOOL DestroyWindow(HWND handle) {
    Window* window = find(handle);
    if (!window || window->dying || window->kind == Kind::Desktop) {
        return FALSE;
    }
    Window* parent = window->parent;
    const QRect left = window->place;
    const bool uncovers = parent && reallyVisible(*window);
    const HWND parentHandle = parent ? parent->handle : nullptr;
    destroyTree(*window);
    if (uncovers) {
        if (Window* uncovered = find(parentHandle)) {
            invalidate(*uncovered, left, true);
        }
    }
    return TRUE;
}

BOOL IsWindow(HWND handle) {
    return find(handle) != nullptr;
}

BOOL IsWindowVisible(HWND handle) {
    const Window* window = find(handle);
    return window && reallyVisible(*window);
}

BOOL IsWindowEnabled(HWND handle) {
    const Window* window = find(handle);
    return window && window->enabled;
}

BOOL ShowWindow(HWND handle, int command) {
    Window* window = find(handle);
    if (!window || !window->outer) {
        return FALSE;
    }
    const bool before = window->visible;
    const bool show = command != SW_HIDE;
    if (before == show) {
        return before;
    }
    if (!show) {
        letGo(*window, window->parent ? firstTabStop(*window->parent, window) : nullptr);
        window = find(handle);
        if (!window) {
            return before;
        }
    }
    if (!show && window->parent && reallyVisible(*window)) {
        invalidate(*window->parent, window->place, true);
    }
    window->visible = show;
    window->outer->setVisible(show);
    if (show) {
        invalidateAll(*window);
        if (!window->parent) {
            activate(handle);
        }
    } else if (activeWindow() == handle) {
        activateNext();
    }
    return before;
}

BOOL UpdateWindow(HWND handle) {
    Window* window = find(handle);
    if (!window) {
        return FALSE;
    }
    if (reallyVisible(*window) && !window->invalid.isEmpty()) {
        validateParents(*window);
        callProcedure(*window, WM_PAINT, 0, 0);
    }
    window = find(handle);
    if (!window) {
        return FALSE;
    }
    std::vector<HWND> below;
    for (const Window* child : window->children) {
        below.push_back(child->handle);
    }
    for (const HWND child : below) {
        UpdateWindow(child);
    }
    return TRUE;
}

BOOL EnableWindow(HWND handle, BOOL enable) {
    Window* window = find(handle);
    if (!window || !window->outer) {
        return FALSE;
    }
    const bool before = window->enabled;
    if (!enable) {
        letGo(*window, nullptr);
        window = find(handle);
        if (!window) {
            return !before;
        }
    }
    window->enabled = enable != FALSE;
    // A disabled window of its own does not grey its controls; the modal dialog over it keeps the input away.
    if (window->parent) {
        window->outer->setEnabled(window->enabled);
    }
    return !before;
}

BOOL SetWindowPos(HWND handle, HWND, int x, int y, int width, int height, UINT flags) {
    Window* window = find(handle);
    if (!window || !window->outer) {
        return FALSE;
    }
    const QRect old = window->place;
    if (!(flags & SWP_NOMOVE)) {
        window->place.moveTopLeft({x, y});
    }
    if (!(flags & SWP_NOSIZE)) {
        window->place.setSize({std::max(width, 0), std::max(height, 0)});
    }
    if (!(flags & SWP_NOZORDER) && window->parent) {
        auto& siblings = window->parent->children;
        if (siblings.back() != window) {
            std::erase(siblings, window);
            siblings.push_back(window);
            window->outer->raise();
        }
    }
    if (window->place != old) {
        layOut(*window);
        invalidateMoved(*window, old);
    }
    return TRUE;
}

BOOL GetWindowRect(HWND handle, RECT* rect) {
    Window* window = handle == GetDesktopWindow() ? &desktop() : find(handle);
    if (!window) {
        return FALSE;
    }
    QRect place = window->place;
    if (window->parent && window->outer) {
        place.moveTopLeft(window->outer->mapToGlobal(QPoint()));
    }
    *rect = {place.left(), place.top(), place.left() + place.width(), place.top() + place.height()};
    return TRUE;
}

BOOL GetClientRect(HWND handle, RECT* rect) {
    const Window* window = find(handle);
    if (!window) {
        return FALSE;
    }
    const QSize size = clientSize(*window);
    *rect = {0, 0, size.width(), size.height()};
    return TRUE;
}

HWND GetDesktopWindow() {
    return desktop().handle;
}

HWND GetParent(HWND handle) {
    const Window* window = find(handle);
    return window && window->parent ? window->parent->handle : window ? window->owner : nullptr;
}

BOOL SetWindowTextA(HWND handle, LPCSTR text) {
    Window* window = find(handle);
    if (!window) {
        return FALSE;
    }
    const QByteArray before = std::exchange(window->text, text ? text : "");
    applyText(*window);
    // A field tells of every text that it is given, also of the one that it has.
    if (window->kind == Kind::Edit && window->text == before && notifyParent(handle, EN_UPDATE)) {
        notifyParent(handle, EN_CHANGE);
    }
    return TRUE;
}

int GetWindowTextA(HWND handle, LPSTR buffer, int size) {
    const Window* window = find(handle);
    if (size <= 0) {
        return 0;
    }
    const int length = window ? std::min<int>(size - 1, static_cast<int>(window->text.size())) : 0;
    std::copy_n(window ? window->text.constData() : "", length, buffer);
    buffer[length] = '\0';
    return length;
}

HWND GetDlgItem(HWND dialog, int id) {
    const Window* window = find(dialog);
    if (!window) {
        return nullptr;
    }
    const auto found = std::ranges::find(window->children, id, &Window::id);
    return found == window->children.end() ? nullptr : (*found)->handle;
}

BOOL SetDlgItemTextA(HWND dialog, int id, LPCSTR text) {
    return SetWindowTextA(GetDlgItem(dialog, id), text);
}
