// What a user does to the program's windows, and waiting for what comes of it.
#pragma once

#include <QString>
#include <QStyle>
#include <functional>
#include <string>
#include <vector>

#include "Desktop.h"
#include "WindowFixture.h"

class QAction;
class QComboBox;
class QMenu;
class QMenuBar;
class QMessageBox;

// The modal dialog on top; null if none is open.
HWND openDialogWindow();

// Does each step as soon as what it waits for holds, in whatever loop runs then, and waits until all are done and no
// dialog is open. A step that waits in vain fails the test and ends the dialogs.
struct Step {
    const char* what;
    std::function<bool()> ready;
    std::function<void()> act;
};
void run(const std::vector<Step>& steps);

// Steps of the usual kinds.
bool always();
bool dialogShown();
// Input of the user, dealt with before they return; places in pixels of the window. A way is gone with the button held.
void clickOn(HWND control);
void clickAt(HWND window, QPoint place, Qt::MouseButton button = Qt::LeftButton);
void drag(HWND window, const std::vector<QPoint>& way);
void roll(HWND window, int notches);
// Keys, dealt with when the program next takes input.
void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
// Alt and a letter as a keyboard sends them.
void pressAlt(char16_t letter);
// A letter without a modifier.
void type(char16_t letter);

// The message box on top, null if there is none; whether it can be answered; "caption: text" of it.
QMessageBox* box();
bool boxShown();
std::string told();
// Answers the next box, whose text is kept; a letter's button stays down for a moment before its box ends.
Step answer(std::string& text, int key = Qt::Key_Return);

QMenuBar& menuBar();
// The open popup; null if there is none.
QMenu* popup();
std::string textOf(const QAction& item);
// Clicks the item of the bar at a position, counted from 0.
void clickOnBar(int position);
// Clicks an item of a drop-down menu, both by position, where a separator counts; it acts when the program next takes
// input.
void choose(int onBar, int item);
enum BarPosition { FileMenu, PortMenu, SizeMenu, LanguageMenu, FirstPageItem, InformationMenu = 10 };

// The middle of a part of a scroll bar.
QPoint middleOf(HWND scrollBar, QStyle::SubControl part);

// The box behind a combo box's window; whether its list is open; a click on an entry of the open list, and the mouse
// moved there.
QComboBox& boxOf(HWND combo);
bool listOpen(HWND combo);
void clickEntry(int row);
void pointAt(int row);
