#include <QWidget>
#include <algorithm>
#include <string>

#include "platform/linux/Layer.h"
#include "resources/Ids.h"
#include "shell/AppState.h"
#include "walk/Walk.h"

namespace walk {

using desktop::Key;
using layer::Kind;
using layer::Window;

namespace {

const Key Keys[] = {
    {Qt::Key_Up, "", Qt::NoModifier},          {Qt::Key_Down, "", Qt::NoModifier},
    {Qt::Key_Left, "", Qt::NoModifier},        {Qt::Key_Right, "", Qt::NoModifier},
    {Qt::Key_Home, "", Qt::NoModifier},        {Qt::Key_End, "", Qt::NoModifier},
    {Qt::Key_PageUp, "", Qt::NoModifier},      {Qt::Key_PageDown, "", Qt::NoModifier},
    {Qt::Key_Return, "\r", Qt::NoModifier},    {Qt::Key_Escape, "\x1B", Qt::NoModifier},
    {Qt::Key_Space, " ", Qt::NoModifier},      {Qt::Key_Tab, "\t", Qt::NoModifier},
    {Qt::Key_F4, "", Qt::NoModifier},          {Qt::Key_F10, "", Qt::NoModifier},
    {Qt::Key_Down, "", Qt::AltModifier},       {Qt::Key_Up, "", Qt::AltModifier},
    {Qt::Key_Alt, "", Qt::NoModifier},         {Qt::Key_Delete, "", Qt::NoModifier},
    {Qt::Key_Backspace, "\b", Qt::NoModifier},
};
const Key Return = {Qt::Key_Return, "\r", Qt::NoModifier};
const Key Escape = {Qt::Key_Escape, "\x1B", Qt::NoModifier};

// Desktops place the window a little differently.
QPoint inWindow(QPoint place) {
    return layer::find(MainWindow)->outer->mapToGlobal(place);
}

std::string at(QPoint place) {
    return " at " + std::to_string(place.x()) + "," + std::to_string(place.y());
}

std::string inWords(const Key& key) {
    const bool letter = !key.text.isEmpty() && key.text.at(0).isPrint();
    return "key " + (key.modifiers & Qt::AltModifier ? std::string("Alt+") : "") +
           (letter ? key.text.toStdString() : std::to_string(key.key));
}

}  // namespace

Moment User::pause() {
    const Moment short_ = dice.below(30000) * Microsecond;
    const Moment usual = dice.below(300000) * Microsecond;
    const Moment wait = rest != 0 ? rest : dice.oneIn(2) ? short_ : usual;
    rest = 0;
    return wait;
}

std::string User::act() {
    if (planned.empty()) {
        plan();
    }
    const Input next = planned.back();
    planned.pop_back();
    if (planned.empty() && dice.oneIn(25)) {
        rest = 2500 * Millisecond;
    }
    next.put();
    return next.words;
}

void User::plan() {
    if (dice.oneIn(150)) {
        disturb();
    } else if (desktop::openList()) {
        planList();
    } else if (desktop::openMenu()) {
        planMenu();
    } else if (fileDialogOnTop()) {
        planFileDialog();
    } else if (boxOnTop()) {
        strike(dice.oneIn(2) ? Return : Escape);
    } else if (placeOnTop() > Place::Oscilloscope) {
        planDialog();
    } else {
        planPage();
    }
    std::ranges::reverse(planned);
}

void User::click(QPoint place, const std::string& what, Qt::MouseButton button) {
    planned.push_back({"press " + what + at(place), [=, this] {
                           watch.noteInput(desktop::windowAt(place));
                           desktop::pressButton(place, button);
                       }});
    planned.push_back({"release" + at(place), [=, this] {
                           watch.noteInput(desktop::windowAt(place));
                           desktop::releaseButton(place, button);
                       }});
}

void User::drag(QPoint from, QPoint to, const std::string& what) {
    click(from, what);
    const Input release = {"release" + at(to), [=, this] {
                               watch.noteInput(desktop::windowAt(from));
                               desktop::releaseButton(to);
                           }};
    planned.back() = {"move" + at(to), [=, this] {
                          watch.noteInput(desktop::windowAt(from));
                          desktop::movePointer(to);
                      }};
    planned.push_back(release);
}

void User::strike(const Key& key) {
    planned.push_back({inWords(key), [=, this] {
                           watch.noteInput(desktop::focusedWindow());
                           desktop::pressKey(key);
                           desktop::releaseKey(key);
                       }});
}

// As a keyboard repeats it.
void User::hold(const Key& key) {
    const auto press = [=, this](bool repeats) {
        return Input{inWords(key) + (repeats ? " again" : " down"), [=, this] {
                         watch.noteInput(desktop::focusedWindow());
                         desktop::pressKey(key, repeats);
                     }};
    };
    planned.push_back(press(false));
    for (unsigned repeat = dice.below(6); repeat > 0; --repeat) {
        planned.push_back(press(true));
    }
    planned.push_back({inWords(key) + " up", [=, this] {
                           watch.noteInput(desktop::focusedWindow());
                           desktop::releaseKey(key);
                       }});
}

void User::doubleClick(QPoint place, const std::string& what) {
    click(place, what);
    click(place, what + " again");
}

void User::disturb() {
    if (dice.oneIn(2)) {
        planned.push_back({"close by the window manager", [this] {
                               watch.noteInput(nullptr);
                               desktop::closeTopWindow();
                           }});
        return;
    }
    planned.push_back({"to another program", [] { desktop::leaveProgram(); }});
    planned.push_back({"and back", [] { desktop::returnToProgram(); }});
}

void User::type(const QString& text) {
    for (const QChar letter : text) {
        strike({letter.toUpper().unicode(), QString(letter), Qt::NoModifier});
    }
}

void User::roll(QPoint place) {
    const int notches = dice.oneIn(2) ? 1 : -1;
    planned.push_back({"wheel" + at(place), [=, this] {
                           watch.noteInput(desktop::windowAt(place));
                           desktop::rollWheel(place, notches);
                       }});
}

void User::anyKey() {
    if (dice.oneIn(4)) {
        type(QString(QChar(dice.oneOf(std::u16string(u"0123456789+-acdfoprs")))));
    } else if (dice.oneIn(5)) {
        hold(dice.oneOf(Keys));
    } else {
        strike(dice.oneOf(Keys));
    }
}

const Window* User::anyControl() {
    const Place top = placeOnTop();
    HWND parent = PageWindow;
    for (const Window* window : layer::topLevels()) {
        if (top > Place::Oscilloscope && window->modal && !window->ended) {
            parent = window->handle;
        }
    }
    const Window* window = layer::find(parent);
    std::vector<const Window*> workable;
    for (const Window* control : window ? window->children : std::vector<Window*>()) {
        const bool frame = control->kind == Kind::Static || control->kind == Kind::Progress || control->id == 0;
        if (control->visible && !frame) {
            workable.push_back(control);
        }
    }
    return workable.empty() ? nullptr : dice.oneOf(workable);
}

void User::planMenu() {
    const std::vector<QPoint> items = desktop::menuItems();
    switch (dice.below(6)) {
        case 0:
            strike(Escape);
            break;
        case 1:
            click(inWindow({300, 500}), "beside the menu");
            break;
        case 2:
            anyKey();
            break;
        default:
            if (!items.empty()) {
                click(dice.oneOf(items), "menu item");
            }
    }
    if (planned.empty()) {
        strike(Escape);
    }
}

void User::planList() {
    const std::vector<QPoint> entries = desktop::listEntries();
    switch (dice.below(8)) {
        case 0:
            strike(Escape);
            break;
        case 1:
            click(inWindow({static_cast<int>(dice.below(1200)), static_cast<int>(dice.below(900))}), "somewhere");
            break;
        case 2:
        case 3:
            anyKey();
            break;
        case 4:
            roll(entries.empty() ? inWindow({300, 300}) : dice.oneOf(entries));
            break;
        default:
            if (!entries.empty()) {
                click(dice.oneOf(entries), "entry");
            }
    }
    if (planned.empty()) {
        strike(Return);
    }
}

void User::planFileDialog() {
    if (dice.oneIn(3)) {
        strike(Escape);
        return;
    }
    type(dice.oneOf(std::vector<QString>{"a", "b", "set"}));
    strike(Return);
}

void User::planDialog() {
    const Window* control = anyControl();
    if (!control || dice.oneIn(12)) {
        strike(dice.oneIn(2) ? Escape : Return);
        return;
    }
    const QPoint middle = desktop::middleOf(*control);
    const std::string name = std::string(nameOf(placeOnTop())) + " " + std::to_string(control->id);
    if (control->kind == Kind::ScrollBar) {
        const QRect place(control->outer->mapToGlobal(QPoint()), control->outer->size());
        const QPoint along(place.left() + static_cast<int>(dice.below(static_cast<size_t>(place.width()))), middle.y());
        dice.oneIn(2) ? click(along, name) : drag(along, middle, name);
    } else if (control->kind == Kind::Edit && dice.oneIn(2)) {
        click(middle, name);
        type(dice.oneOf(std::vector<QString>{"kr1", "w 77", "x", "abc12345"}));
    } else if (dice.oneIn(3)) {
        anyKey();
    } else {
        click(middle, name, dice.oneIn(12) ? Qt::RightButton : Qt::LeftButton);
    }
}

void User::planPage() {
    const std::vector<QPoint> bar = desktop::barItems();
    const Window* control = anyControl();
    const unsigned draw = dice.below(20);
    if (draw < 3 && !bar.empty()) {
        click(dice.oneOf(bar), "menu bar");
    } else if (draw < 8) {
        anyKey();
    } else if (draw == 8 && control) {
        roll(desktop::middleOf(*control));
    } else if (control) {
        const std::string name = std::string(nameOf(placeOnTop())) + " " + std::to_string(control->id);
        const QPoint middle = desktop::middleOf(*control);
        dice.oneIn(8)    ? drag(middle, middle + QPoint(40, 90), name)
        : dice.oneIn(12) ? doubleClick(middle, name)
                         : click(middle, name, dice.oneIn(15) ? Qt::RightButton : Qt::LeftButton);
    } else {
        click(dice.oneOf(bar), "menu bar");
    }
}

}  // namespace walk
