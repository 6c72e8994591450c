#include "Desktop.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <QWheelEvent>
#include <QWindow>

#include "HeldClock.h"

namespace desktop {

namespace {

using layer::Window;

// Where the mouse goes while a button is held.
QPointer<QWindow> pressedIn;
Qt::MouseButtons buttons;

int stamp() {
    return static_cast<int>(HeldClock::current()->now() / Millisecond);
}

QWidget* windowWidgetAt(QPoint place) {
    if (QWidget* popup = QApplication::activePopupWidget()) {
        return popup->window();
    }
    QWidget* const modal = QApplication::activeModalWidget();
    if (modal && modal->geometry().contains(place)) {
        return modal;
    }
    for (const Window* window : layer::topLevels()) {
        if (window->visible && window->outer && window->outer->geometry().contains(place)) {
            return window->outer;
        }
    }
    return nullptr;
}

void sendMouse(QPoint at, Qt::MouseButton button, QEvent::Type type) {
    if (type == QEvent::MouseButtonPress && !buttons) {
        const QWidget* widget = windowWidgetAt(at);
        pressedIn = widget ? widget->windowHandle() : nullptr;
    }
    buttons.setFlag(button, type == QEvent::MouseButtonPress);
    const QWidget* widget = windowWidgetAt(at);
    QPointer<QWindow> target = pressedIn ? pressedIn.data() : widget ? widget->windowHandle() : nullptr;
    if (type == QEvent::MouseButtonRelease && !buttons) {
        pressedIn = nullptr;
    }
    const Qt::MouseButtons held = buttons;
    const int when = stamp();
    HeldClock::current()->put([=] {
        if (target) {
            qt_handleMouseEvent(target, target->mapFromGlobal(at), at, held, button, type, Qt::NoModifier, when);
        }
    });
}

void sendKey(const Key& key, QEvent::Type type, bool isRepeat) {
    QPointer<QWindow> focus = QGuiApplication::focusWindow();
    HeldClock::current()->put([=] {
        if (focus) {
            qt_handleKeyEvent(focus, type, key.key, key.modifiers, key.text, isRepeat);
        }
    });
}

// The innermost visible window that contains the place.
Window* innermost(Window& window, QPoint place) {
    Window* found = &window;
    for (Window* child : window.children) {
        const bool transparent = child->kind == layer::Kind::Static;
        if (child->visible && child->outer && !transparent &&
            QRect(child->outer->mapToGlobal(QPoint()), child->outer->size()).contains(place)) {
            found = innermost(*child, place);
        }
    }
    return found;
}

Window* windowOf(const QWidget* widget) {
    for (Window* frame : layer::topLevels()) {
        std::vector<Window*> open{frame};
        while (!open.empty()) {
            Window* window = open.back();
            open.pop_back();
            if (widget && (window->outer == widget || window->client == widget)) {
                return window;
            }
            open.insert(open.end(), window->children.begin(), window->children.end());
        }
    }
    return nullptr;
}

std::vector<QPoint> middlesOf(const QList<QAction*>& actions, const auto& widget) {
    std::vector<QPoint> places;
    for (QAction* action : actions) {
        places.push_back(widget.mapToGlobal(widget.actionGeometry(action).center()));
    }
    return places;
}

}  // namespace

void movePointer(QPoint to) {
    sendMouse(to, Qt::NoButton, QEvent::MouseMove);
}

void pressButton(QPoint at, Qt::MouseButton button) {
    sendMouse(at, button, QEvent::MouseButtonPress);
}

void releaseButton(QPoint at, Qt::MouseButton button) {
    sendMouse(at, button, QEvent::MouseButtonRelease);
}

void rollWheel(QPoint at, int notches) {
    QWidget* const top = windowWidgetAt(at);
    const QPointer<QWidget> under = top ? top->childAt(top->mapFromGlobal(at)) : nullptr;
    HeldClock::current()->put([=] {
        if (under) {
            QWheelEvent wheel(under->mapFromGlobal(at), at, QPoint(), QPoint(0, 120 * notches), Qt::NoButton,
                              Qt::NoModifier, Qt::NoScrollPhase, false);
            QSpontaneKeyEvent::setSpontaneous(&wheel);
            qApp->notify(under, &wheel);
        }
    });
}

void pressKey(const Key& key, bool isRepeat) {
    sendKey(key, QEvent::KeyPress, isRepeat);
}

void releaseKey(const Key& key) {
    sendKey(key, QEvent::KeyRelease, false);
}

Window* windowAt(QPoint place) {
    if (QApplication::activePopupWidget()) {
        return openList();
    }
    Window* top = windowOf(windowWidgetAt(place));
    return top ? innermost(*top, place) : nullptr;
}

Window* focusedWindow() {
    const QWidget* widget = QApplication::focusWidget();
    Window* found = nullptr;
    for (; widget && !found; widget = widget->parentWidget()) {
        found = windowOf(widget);
    }
    return found;
}

Window* openList() {
    const QWidget* popup = QApplication::activePopupWidget();
    return popup ? windowOf(qobject_cast<QComboBox*>(popup->parentWidget())) : nullptr;
}

bool menuIsOpen() {
    return qobject_cast<QMenu*>(QApplication::activePopupWidget()) != nullptr;
}

std::vector<QPoint> barItems() {
    for (const Window* window : layer::topLevels()) {
        if (const auto* bar = window->menu ? window->outer->findChild<QMenuBar*>() : nullptr) {
            return middlesOf(bar->actions(), *bar);
        }
    }
    return {};
}

std::vector<QPoint> menuItems() {
    const auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    return menu ? middlesOf(menu->actions(), *menu) : std::vector<QPoint>();
}

std::vector<QPoint> listEntries() {
    std::vector<QPoint> places;
    const Window* combo = openList();
    if (!combo) {
        return places;
    }
    const QAbstractItemView& view = *static_cast<QComboBox&>(*combo->outer).view();
    for (int row = 0; row < view.model()->rowCount(); ++row) {
        const QRect place = view.visualRect(view.model()->index(row, 0));
        if (view.viewport()->rect().contains(place.center())) {
            places.push_back(view.viewport()->mapToGlobal(place.center()));
        }
    }
    return places;
}

QPoint middleOf(const Window& window) {
    return window.outer->mapToGlobal(window.outer->rect().center());
}

}  // namespace desktop
