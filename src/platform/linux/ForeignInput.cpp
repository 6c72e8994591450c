// Dialogs and menus of Qt's own: while one runs, all input is handed on to it in its turn.
#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QMouseEvent>
#include <algorithm>
#include <utility>

#include "platform/linux/Input.h"
#include "platform/linux/Layer.h"

namespace layer {

namespace {

std::vector<QPointer<QWidget>> foreign;
bool handing = false;

QWidget* topForeign() {
    if (QWidget* popup = QApplication::activePopupWidget()) {
        return popup;
    }
    QWidget* modal = QApplication::activeModalWidget();
    return modal ? modal : foreign.back().data();
}

// A shortcut's letter, which Qt would look up before the keys that wait.
bool pressesShortcut(QWidget& dialog, const RawInput& input) {
    if (input.what != RawInput::What::KeyDown || input.modifiers != Qt::AltModifier) {
        return false;
    }
    const QKeySequence wanted(Qt::ALT | static_cast<Qt::Key>(input.key));
    for (auto* button : dialog.findChildren<QAbstractButton*>()) {
        if (button->isVisible() && button->isEnabled() && button->shortcut() == wanted) {
            button->click();
            return true;
        }
    }
    for (auto* label : dialog.findChildren<QLabel*>()) {
        if (label->buddy() && QKeySequence::mnemonic(label->text()) == wanted) {
            label->buddy()->setFocus(Qt::ShortcutFocusReason);
            return true;
        }
    }
    return false;
}

}  // namespace

bool isOurs(const QWindow* shown) {
    return shown && std::ranges::any_of(topLevels(), [&](const Window* window) {
               return window->outer && window->outer->windowHandle() == shown;
           });
}

bool isHandingOn() {
    return handing;
}

// Gives Qt what belongs to one of its own dialogs. What was meant for a window that has gone since goes to the dialog
// that came instead, as far as it hits it.
void handOn(const RawInput& input) {
    QWidget* const dialog = topForeign();
    if (!dialog || !dialog->windowHandle() || !input.event) {
        return;
    }
    const bool isKey = input.what == RawInput::What::KeyDown || input.what == RawInput::What::KeyUp;
    QWindow* target = input.window;
    const bool ours = !target || isOurs(target);
    std::shared_ptr<QEvent> event = input.event;
    if (ours || (isKey && target != dialog->windowHandle())) {
        target = dialog->windowHandle();
        if (!isKey && dialog->windowType() != Qt::Popup && !dialog->geometry().contains(input.at)) {
            return;
        }
        if (const auto* mouse = dynamic_cast<QMouseEvent*>(event.get())) {
            event =
                std::make_shared<QMouseEvent>(mouse->type(), target->mapFromGlobal(QPointF(input.at)),
                                              QPointF(input.at), mouse->button(), mouse->buttons(), mouse->modifiers());
        }
    }
    if (isKey && pressesShortcut(*dialog, input)) {
        return;
    }
    const bool before = std::exchange(handing, true);
    QCoreApplication::sendEvent(target, event.get());
    handing = before;
}

void beginForeign(QWidget* dialog) {
    cancelInputMode();
    activate(nullptr);
    foreign.push_back(dialog);
}

void endForeign(QWidget* dialog) {
    std::erase_if(foreign, [&](const QPointer<QWidget>& one) { return !one || one == dialog; });
}

void showForeignMenu(QMenu* menu, QPoint place) {
    foreign.push_back(menu);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(menu, &QMenu::aboutToHide, [menu] { endForeign(menu); });
    menu->popup(place);
}

QWidget* foreignDialog() {
    std::erase_if(foreign, [](const QPointer<QWidget>& one) { return !one; });
    return foreign.empty() ? nullptr : foreign.back().data();
}

}  // namespace layer
