// Mouse and keyboard as a user works them, each at its moment on the held clock: what happened and where on the screen.
// The desktop finds the window, as it is then; the program gets it when it next asks. And what there is to be seen.
#pragma once

#include <QPoint>
#include <QString>
#include <vector>

#include "platform/linux/Layer.h"

class QMenu;

namespace desktop {

void movePointer(QPoint to);
void pressButton(QPoint at, Qt::MouseButton button = Qt::LeftButton);
void releaseButton(QPoint at, Qt::MouseButton button = Qt::LeftButton);
void click(QPoint at, Qt::MouseButton button = Qt::LeftButton);
void rollWheel(QPoint at, int notches);
struct Key {
    int key;
    QString text;
    Qt::KeyboardModifiers modifiers;
};
void pressKey(const Key& key, bool isRepeat = false);
void releaseKey(const Key& key);
void strike(const Key& key);

// The close button of the frame of what is on top.
void closeTopWindow();
// Another program's window takes the keyboard; the program's own has it back.
void leaveProgram();
void returnToProgram();

// The window of the layer that is on top at this place and would get the mouse there; null for Qt's own.
layer::Window* windowAt(QPoint place);
layer::Window* focusedWindow();
// The combo box whose list is open.
layer::Window* openList();
// The popup of the menu that is open; null if none is.
QMenu* openMenu();

// The middles of what can be clicked, on the screen: the items of the menu bar and of the open menu, those entries of
// the open list that show, a control.
std::vector<QPoint> barItems();
std::vector<QPoint> menuItems();
std::vector<QPoint> listEntries();
QPoint middleOf(const layer::Window& window);

}  // namespace desktop
