// What mouse and keys do in a menu bar and its popups: from the press, Alt or letter that begins it to the end, all
// input is the menu's, while the program goes on behind it.
#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <algorithm>

#include "platform/linux/Layer.h"

namespace layer {

namespace {

QMenuBar* barOf(const Window& window) {
    return window.outer ? window.outer->findChild<QMenuBar*>() : nullptr;
}

bool canChoose(const QAction* item) {
    return item && !item->isSeparator() && item->isEnabled();
}

// The next item that begins with the letter, after the given one and round, and whether it is the only one.
QAction* byLetter(const QList<QAction*>& items, const QString& letter, const QAction* after, bool& only) {
    QList<QAction*> matches;
    for (QAction* item : items) {
        if (!item->isSeparator() && item->text().startsWith(letter, Qt::CaseInsensitive)) {
            matches.append(item);
        }
    }
    only = matches.size() == 1;
    return matches.isEmpty() ? nullptr : matches[(matches.indexOf(after) + 1) % matches.size()];
}

class MenuMode : public InputMode {
public:
    void begin(Window& frame) {
        window = frame.handle;
        bar = barOf(frame);
        setInputMode(this);
        SendMessageA(window, WM_ENTERMENULOOP, 0, 0);
    }
    bool isOn() const {
        return window != nullptr;
    }
    void end() {
        if (!isOn()) {
            return;
        }
        select(nullptr);
        setInputMode(nullptr);
        held = false;
        SendMessageA(std::exchange(window, nullptr), WM_EXITMENULOOP, 0, 0);
    }
    void cancel() override {
        end();
    }

    bool take(const RawInput& input) override {
        if (!bar) {
            end();
            return false;
        }
        switch (input.what) {
            case RawInput::What::Press:
                return input.button != Qt::LeftButton || press(input.at);
            case RawInput::What::Release:
                if (input.button == Qt::LeftButton) {
                    release(input.at);
                }
                return true;
            case RawInput::What::Move:
                move(input.at);
                return true;
            case RawInput::What::KeyDown:
                if (!input.repeats || input.key != Qt::Key_Alt) {
                    takeKey(input);
                }
                return true;
            default:
                return true;
        }
    }

    // False for what lies outside: it ends the menu and does what it does.
    bool press(QPoint place) {
        held = true;
        if (popup && popup->geometry().contains(place)) {
            mark(popup->actionAt(popup->mapFromGlobal(place)));
            return true;
        }
        QAction* const item = itemAt(place);
        if (item && item == selected && popup) {
            end();
        } else if (item) {
            select(item);
            open(false);
        } else {
            end();
            return bar->rect().contains(bar->mapFromGlobal(place));
        }
        return true;
    }

    void select(QAction* item) {
        closePopup();
        if (selected) {
            selected->setProperty(SelectProperty, false);
        }
        selected = item;
        if (selected) {
            selected->setProperty(SelectProperty, true);
        }
        if (bar) {
            bar->update();
        }
    }

    void open(bool withFirst) {
        if (!selected || !selected->menu() || !selected->isEnabled()) {
            return;
        }
        popup = selected->menu();
        popup->resize(popup->sizeHint());
        popup->move(bar->mapToGlobal(bar->actionGeometry(selected).bottomLeft()));
        popup->show();
        marked = nullptr;
        if (withFirst) {
            step(1);
        }
    }

    // As by Enter.
    void choose(QAction* item) {
        const QPointer<QAction> chosen = item;
        end();
        if (canChoose(chosen)) {
            chosen->trigger();
        }
    }

    void enter() {
        if (popup) {
            marked ? choose(marked) : end();
        } else if (selected && selected->menu()) {
            open(true);
        } else if (selected) {
            choose(selected);
        }
    }

    void letter(const QString& typed) {
        bool only = false;
        QAction* const found =
            popup ? byLetter(popup->actions(), typed, marked, only) : byLetter(bar->actions(), typed, selected, only);
        if (!found) {
            return;
        }
        popup ? mark(found) : select(found);
        if (only) {
            enter();
        }
    }

    QPointer<QMenuBar> bar;

private:
    QAction* itemAt(QPoint place) const {
        return bar->actionAt(bar->mapFromGlobal(place));
    }

    void closePopup() {
        if (popup) {
            popup->hide();
        }
        popup = nullptr;
        marked = nullptr;
    }

    void mark(QAction* item) {
        marked = item && !item->isSeparator() ? item : nullptr;
        popup->setActiveAction(marked);
    }

    void move(QPoint place) {
        QAction* const item = itemAt(place);
        if (item && item != selected && (held || popup)) {
            select(item);
            open(false);
        } else if (popup && popup->geometry().contains(place)) {
            mark(popup->actionAt(popup->mapFromGlobal(place)));
        }
    }

    void release(QPoint place) {
        if (!std::exchange(held, false)) {
            return;
        }
        if (popup && popup->geometry().contains(place)) {
            if (canChoose(popup->actionAt(popup->mapFromGlobal(place)))) {
                choose(marked);
            }
            return;
        }
        const QAction* const item = itemAt(place);
        if (!item) {
            end();
        } else if (item == selected && !item->menu() && item->isEnabled()) {
            choose(selected);
        }
    }

    // To the next entry of the popup, past separators and round.
    void step(int way) {
        const QList<QAction*> items = popup->actions();
        const auto count = items.size();
        qsizetype at = marked ? items.indexOf(marked) : way > 0 ? -1 : count;
        for (qsizetype tries = 0; tries < count; ++tries) {
            at = (at + way + count) % count;
            if (!items[at]->isSeparator()) {
                mark(items[at]);
                return;
            }
        }
    }

    void stepOnBar(int way) {
        const bool wasOpen = popup != nullptr;
        const QList<QAction*> items = bar->actions();
        select(items[(items.indexOf(selected) + way + items.size()) % items.size()]);
        if (wasOpen) {
            open(true);
        }
    }

    void takeKey(const RawInput& input) {
        switch (input.key) {
            case Qt::Key_Alt:
            case Qt::Key_F10:
                end();
                break;
            case Qt::Key_Escape:
                popup ? closePopup() : end();
                break;
            case Qt::Key_Left:
            case Qt::Key_Right:
                stepOnBar(input.key == Qt::Key_Left ? -1 : 1);
                break;
            case Qt::Key_Up:
            case Qt::Key_Down:
                popup ? step(input.key == Qt::Key_Up ? -1 : 1) : open(true);
                break;
            case Qt::Key_Home:
            case Qt::Key_End:
                if (popup) {
                    marked = nullptr;
                    step(input.key == Qt::Key_Home ? 1 : -1);
                }
                break;
            case Qt::Key_Return:
            case Qt::Key_Enter:
                enter();
                break;
            case Qt::Key_Space:
                if (!popup) {
                    enter();
                }
                break;
            default:
                if (!input.text.isEmpty() && input.text.at(0).isLetterOrNumber()) {
                    letter(input.text);
                }
        }
    }

    HWND window = nullptr;
    QPointer<QAction> selected;  // of the bar
    QPointer<QMenu> popup;       // while it is open
    QPointer<QAction> marked;    // of the popup
    bool held = false;           // by the mouse
};

MenuMode& menuMode() {
    static MenuMode mode;
    return mode;
}

bool canBegin(const Window& window) {
    return barOf(window) && window.enabled && !menuMode().isOn();
}

}  // namespace

void enterMenuBar(Window& window) {
    if (canBegin(window)) {
        menuMode().begin(window);
        menuMode().select(menuMode().bar->actions().first());
    }
}

void pressMenuBar(Window& window, QPoint onScreen) {
    if (canBegin(window) && barOf(window)->actionAt(barOf(window)->mapFromGlobal(onScreen))) {
        menuMode().begin(window);
        menuMode().press(onScreen);
    }
}

void openMenuByLetter(Window& window, const QString& letter) {
    bool only = false;
    if (canBegin(window) && byLetter(barOf(window)->actions(), letter, nullptr, only)) {
        menuMode().begin(window);
        menuMode().letter(letter);
    }
}

void leaveMenu() {
    menuMode().end();
}

}  // namespace layer
