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
const Key& Return = Keys[8];
const Key& Escape = Keys[9];

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

std::string nameOf(const Window& control) {
    return walk::nameOf(placeOnTop()) + (" " + std::to_string(control.id));
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

// It meets what is at the place then; a key meets what has the focus.
void User::then(const std::string& words, std::optional<QPoint> place, const std::function<void()>& put) {
    planned.push_back({words, [=, this] {
                           watch.noteInput(place ? desktop::windowAt(*place) : desktop::focusedWindow());
                           put();
                       }});
}

void User::click(QPoint place, const std::string& what, Qt::MouseButton button) {
    then("press " + what + at(place), place, [=] { desktop::pressButton(place, button); });
    then("release" + at(place), place, [=] { desktop::releaseButton(place, button); });
}

void User::drag(QPoint from, QPoint to, const std::string& what) {
    then("press " + what + at(from), from, [=] { desktop::pressButton(from); });
    then("move" + at(to), from, [=] { desktop::movePointer(to); });
    then("release" + at(to), from, [=] { desktop::releaseButton(to); });
}

void User::strike(const Key& key) {
    then(inWords(key), {}, [=] { desktop::strike(key); });
}

// As a keyboard repeats it.
void User::hold(const Key& key) {
    then(inWords(key) + " down", {}, [=] { desktop::pressKey(key); });
    for (unsigned repeat = dice.below(6); repeat > 0; --repeat) {
        then(inWords(key) + " again", {}, [=] { desktop::pressKey(key, true); });
    }
    then(inWords(key) + " up", {}, [=] { desktop::releaseKey(key); });
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
    then("wheel" + at(place), place, [=] { desktop::rollWheel(place, notches); });
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
    const Window* window = placeOnTop() > Place::Oscilloscope ? dialogOnTop() : layer::find(PageWindow);
    std::vector<const Window*> workable;
    for (const Window* control : window ? window->children : std::vector<Window*>()) {
        const bool frame = control->kind == Kind::Static || control->kind == Kind::Progress || control->id == 0;
        if (control->visible && !frame) {
            workable.push_back(control);
        }
    }
    return workable.empty() ? nullptr : dice.oneOf(workable);
}

bool User::close() {
    const bool open = desktop::openList() || desktop::openMenu() || boxOnTop() || dialogOnTop();
    if (open) {
        strike(dice.oneIn(2) ? Return : Escape);
        act();
    }
    return open;
}

void User::planMenu() {
    const std::vector<QPoint> items = desktop::menuItems();
    const unsigned draw = dice.below(6);
    if (draw == 1) {
        click(inWindow({300, 500}), "beside the menu");
    } else if (draw == 2) {
        anyKey();
    } else if (draw > 2 && !items.empty()) {
        click(dice.oneOf(items), "menu item");
    } else {
        strike(Escape);
    }
}

void User::planList() {
    const std::vector<QPoint> entries = desktop::listEntries();
    const unsigned draw = dice.below(8);
    if (draw == 0) {
        strike(Escape);
    } else if (draw == 1) {
        click(inWindow({static_cast<int>(dice.below(1200)), static_cast<int>(dice.below(900))}), "somewhere");
    } else if (draw < 4) {
        anyKey();
    } else if (draw == 4) {
        roll(entries.empty() ? inWindow({300, 300}) : dice.oneOf(entries));
    } else if (!entries.empty()) {
        click(dice.oneOf(entries), "entry");
    } else {
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
    if (control->kind == Kind::ScrollBar) {
        const QRect place(control->outer->mapToGlobal(QPoint()), control->outer->size());
        const QPoint along(place.left() + static_cast<int>(dice.below(static_cast<size_t>(place.width()))), middle.y());
        dice.oneIn(2) ? click(along, nameOf(*control)) : drag(along, middle, nameOf(*control));
    } else if (control->kind == Kind::Edit && dice.oneIn(2)) {
        click(middle, nameOf(*control));
        type(dice.oneOf(std::vector<QString>{"kr1", "w 77", "x", "abc12345"}));
    } else if (dice.oneIn(3)) {
        anyKey();
    } else {
        click(middle, nameOf(*control), dice.oneIn(12) ? Qt::RightButton : Qt::LeftButton);
    }
}

void User::planPage() {
    const std::vector<QPoint> bar = desktop::barItems();
    const Window* control = anyControl();
    const unsigned draw = dice.below(20);
    if (draw >= 8 ? !control : draw < 3 && !bar.empty()) {
        click(dice.oneOf(bar), "menu bar");
    } else if (draw < 8) {
        anyKey();
    } else if (const QPoint middle = desktop::middleOf(*control); draw == 8) {
        roll(middle);
    } else if (dice.oneIn(8)) {
        drag(middle, middle + QPoint(40, 90), nameOf(*control));
    } else if (dice.oneIn(12)) {
        click(middle, nameOf(*control));
        click(middle, nameOf(*control) + " again");
    } else {
        click(middle, nameOf(*control), dice.oneIn(15) ? Qt::RightButton : Qt::LeftButton);
    }
}

}  // namespace walk
