#include "Desktop.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
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
    const QWidgetList windows = QApplication::topLevelWidgets();
    QWidget* found = nullptr;
    for (QWidget* window : windows) {
        const bool above = !found || window->windowType() == Qt::ToolTip || window->windowType() == Qt::Popup ||
                           (window->windowType() == Qt::Dialog && found->windowType() == Qt::Window);
        if (window->isVisible() && window->geometry().contains(place) && above) {
            found = window;
        }
    }
    return found;
}

void sendMouse(QPoint at, Qt::MouseButton button, QEvent::Type type) {
    const QWidget* widget = windowWidgetAt(at);
    if (type == QEvent::MouseButtonPress && !buttons) {
        pressedIn = widget ? widget->windowHandle() : nullptr;
    }
    buttons.setFlag(button, type == QEvent::MouseButtonPress);
    QPointer<QWindow> target = pressedIn ? pressedIn.data() : widget ? widget->windowHandle() : nullptr;
    if (type == QEvent::MouseButtonRelease && !buttons) {
        pressedIn = nullptr;
    }
    const Qt::MouseButtons held = buttons;
    const auto when = static_cast<int>(layer::theClock().now() / Millisecond);
    hand([=] {
        if (target) {
            qt_handleMouseEvent(target, target->mapFromGlobal(at), at, held, button, type, Qt::NoModifier, when);
        }
    });
}

void sendKey(const Key& key, QEvent::Type type, bool isRepeat) {
    QPointer<QWindow> focus = QGuiApplication::focusWindow();
    hand([=] {
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
    const QWidget* const top = windowWidgetAt(at);
    const QPointer<QWindow> window = top ? top->windowHandle() : nullptr;
    hand([=] {
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

void closeTopWindow() {
    QPointer<QWidget> top = layer::foreignDialog();
    if (!top) {
        top = layer::topLevels().empty() ? nullptr : layer::topLevels().back()->outer.data();
    }
    hand([=] {
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
        QWidget* const top = layer::foreignDialog()       ? layer::foreignDialog()
                             : layer::topLevels().empty() ? nullptr
                                                          : layer::topLevels().back()->outer.data();
        if (top) {
            top->activateWindow();
        }
    });
}

Window* windowAt(QPoint place) {
    if (layer::capture()) {
        return layer::find(layer::capture());
    }
    Window* top = windowOf(windowWidgetAt(place));
    return top ? innermost(*top, place) : nullptr;
}

Window* focusedWindow() {
    return layer::find(GetFocus());
}

Window* openList() {
    return layer::find(layer::openList());
}

QMenu* openMenu() {
    for (QWidget* window : QApplication::topLevelWidgets()) {
        auto* menu = qobject_cast<QMenu*>(window);
        if (menu && menu->isVisible()) {
            return menu;
        }
    }
    return nullptr;
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
    const QMenu* menu = openMenu();
    return menu ? middlesOf(menu->actions(), *menu) : std::vector<QPoint>();
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
