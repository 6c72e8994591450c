#include "Desktop.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <QWheelEvent>
#include <QWindow>
#include <algorithm>

#include "HeldClock.h"

namespace desktop {

using layer::Window;

namespace {

// A menu of Qt's own leaves the keyboard where it was, on every desktop but the offscreen one.
void keepFocus(QWindow* next) {
    static QPointer<QWindow> before;
    if (!next || next->type() != Qt::Popup) {
        before = next;
    } else if (before) {
        before->requestActivate();
    }
}

// In real time there is nothing to wait for.
void hand(std::function<void()> input) {
    static const auto kept = QObject::connect(qApp, &QGuiApplication::focusWindowChanged, keepFocus);
    HeldClock* clock = HeldClock::current();
    clock ? clock->put(std::move(input)) : input();
}

QWidget* windowWidgetAt(QPoint place) {
    QWidget* found = nullptr;
    for (QWidget* window : QApplication::topLevelWidgets()) {
        const bool above = !found || window->windowType() == Qt::ToolTip || window->windowType() == Qt::Popup ||
                           (window->windowType() == Qt::Dialog && found->windowType() == Qt::Window);
        if (window->isVisible() && window->geometry().contains(place) && above) {
            found = window;
        }
    }
    return found;
}

QPointer<QWindow> windowOn(QPoint place) {
    const QWidget* widget = windowWidgetAt(place);
    return widget ? widget->windowHandle() : nullptr;
}

void sendMouse(QPoint at, Qt::MouseButton button, QEvent::Type type) {
    // Where the mouse goes while a button is held.
    static QPointer<QWindow> pressedIn;
    static Qt::MouseButtons buttons;
    if (type == QEvent::MouseButtonPress && !buttons) {
        pressedIn = windowOn(at);
    }
    buttons.setFlag(button, type == QEvent::MouseButtonPress);
    const QPointer<QWindow> target = pressedIn ? pressedIn : windowOn(at);
    if (type == QEvent::MouseButtonRelease && !buttons) {
        pressedIn = nullptr;
    }
    const auto when = static_cast<int>(layer::theClock().now() / Millisecond);
    hand([=, held = buttons] {
        if (target) {
            qt_handleMouseEvent(target, target->mapFromGlobal(at), at, held, button, type, Qt::NoModifier, when);
        }
    });
}

void sendKey(const Key& key, QEvent::Type type, bool isRepeat) {
    hand([=, focus = QPointer<QWindow>(QGuiApplication::focusWindow())] {
        if (focus) {
            qt_handleKeyEvent(focus, type, key.key, key.modifiers, key.text, isRepeat);
        }
    });
}

QWidget* topWindow() {
    QWidget* const foreign = layer::foreignDialog();
    return foreign || layer::topLevels().empty() ? foreign : layer::topLevels().back()->outer.data();
}

// The innermost visible window that contains the place.
Window* innermost(Window& window, QPoint place) {
    Window* found = &window;
    for (Window* child : window.children) {
        if (child->visible && child->outer && child->kind != layer::Kind::Static &&
            QRect(child->outer->mapToGlobal(QPoint()), child->outer->size()).contains(place)) {
            found = innermost(*child, place);
        }
    }
    return found;
}

std::vector<QPoint> middlesOf(const auto* widget) {
    std::vector<QPoint> places;
    for (QAction* action : widget ? widget->actions() : QList<QAction*>()) {
        places.push_back(widget->mapToGlobal(widget->actionGeometry(action).center()));
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

void click(QPoint at, Qt::MouseButton button) {
    pressButton(at, button);
    releaseButton(at, button);
}

void rollWheel(QPoint at, int notches) {
    hand([=, window = windowOn(at)] {
        if (window) {
            QWheelEvent wheel(window->mapFromGlobal(QPointF(at)), at, QPoint(), QPoint(0, 120 * notches), Qt::NoButton,
                              Qt::NoModifier, Qt::NoScrollPhase, false);
            QCoreApplication::sendEvent(window, &wheel);
        }
    });
}

void pressKey(const Key& key, bool isRepeat) {
    sendKey(key, QEvent::KeyPress, isRepeat);
}

void releaseKey(const Key& key) {
    sendKey(key, QEvent::KeyRelease, false);
}

void strike(const Key& key) {
    pressKey(key);
    releaseKey(key);
}

void closeTopWindow() {
    hand([top = QPointer<QWidget>(topWindow())] {
        if (top) {
            top->close();
        }
    });
}

void leaveProgram() {
    static auto* other = new QWindow;
    other->setGeometry(0, 0, 1, 1);
    hand([] {
        other->show();
        other->requestActivate();
    });
}

void returnToProgram() {
    hand([] {
        if (QWidget* const top = topWindow()) {
            top->activateWindow();
        }
    });
}

Window* windowAt(QPoint place) {
    if (layer::capture()) {
        return layer::find(layer::capture());
    }
    const QWidget* const widget = windowWidgetAt(place);
    const auto top = std::ranges::find(layer::topLevels(), widget, [](const Window* one) { return one->outer.data(); });
    return widget && top != layer::topLevels().end() ? innermost(**top, place) : nullptr;
}

Window* focusedWindow() {
    return layer::find(GetFocus());
}

Window* openList() {
    return layer::find(layer::openList());
}

QMenu* openMenu() {
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (auto* menu = qobject_cast<QMenu*>(window); menu && menu->isVisible()) {
            return menu;
        }
    }
    return nullptr;
}

std::vector<QPoint> barItems() {
    for (const Window* window : layer::topLevels()) {
        if (const auto* bar = window->menu ? window->outer->findChild<QMenuBar*>() : nullptr) {
            return middlesOf(bar);
        }
    }
    return {};
}

std::vector<QPoint> menuItems() {
    return middlesOf(openMenu());
}

std::vector<QPoint> listEntries() {
    std::vector<QPoint> places;
    const QAbstractItemView* view = layer::openListView();
    for (int row = 0; view && row < view->model()->rowCount(); ++row) {
        const QRect place = view->visualRect(view->model()->index(row, 0));
        if (view->viewport()->rect().contains(place.center())) {
            places.push_back(view->viewport()->mapToGlobal(place.center()));
        }
    }
    return places;
}

QPoint middleOf(const Window& window) {
    return window.outer->mapToGlobal(window.outer->rect().center());
}

}  // namespace desktop
