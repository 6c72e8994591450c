#include "User.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QScrollBar>
#include <QStyleOptionSlider>
#include <map>

#include "Desktop.h"
#include "platform/linux/Layer.h"
#include "shell/AppState.h"

namespace {

constexpr Moment StepPeriod = 5 * Millisecond;
constexpr Moment Patience = 10 * Second;

QPoint onScreen(HWND window, QPoint place) {
    return widgetOf(window)->mapToGlobal(place);
}

void rest() {
    if (HeldClock::current()) {
        settle();
    }
}

QPoint centreOf(int row) {
    QAbstractItemView& list = *layer::openListView();
    list.scrollTo(list.model()->index(row, 0));
    return list.viewport()->mapToGlobal(list.visualRect(list.model()->index(row, 0)).center());
}

void endAllDialogs() {
    while (const HWND dialog = openDialogWindow()) {
        EndDialog(dialog, 0);
    }
    PostMessageA(GetDesktopWindow(), WM_NULL, 0, 0);
    if (QWidget* box = layer::foreignDialog()) {
        box->close();
    }
}

}  // namespace

HWND openDialogWindow() {
    const auto& windows = layer::topLevels();
    for (auto window = windows.rbegin(); window != windows.rend(); ++window) {
        if ((*window)->modal && (*window)->visible && !(*window)->ended) {
            return (*window)->handle;
        }
    }
    return nullptr;
}

void run(const std::vector<Step>& steps) {
    HeldClock& clock = *HeldClock::current();
    size_t next = 0;
    Moment patience = clock.now() + Patience;
    std::function<void()> look;
    const auto lookLater = [&] { clock.at(clock.now() + StepPeriod, [&] { clock.put(look); }); };
    look = [&] {
        lookLater();
        if (next < steps.size() && steps[next].ready()) {
            patience = clock.now() + Patience;
            steps[next++].act();
        } else if (clock.now() > patience) {
            ADD_FAILURE() << "waited in vain: " << (next < steps.size() ? steps[next].what : "end of the dialogs");
            next = steps.size();
            patience = clock.now() + Patience;
            endAllDialogs();
        }
    };
    lookLater();
    pumpUntil([&] { return next == steps.size() && !openDialogWindow() && !layer::foreignDialog(); }, 60);
    clock.forget();
}

bool always() {
    return true;
}

bool dialogShown() {
    const HWND dialog = openDialogWindow();
    return dialog && layer::activeWindow() == dialog && widgetOf(dialog)->isActiveWindow() && !layer::nextToPaint();
}

void clickOn(HWND control) {
    clickAt(control, widgetOf(control)->rect().center());
}

void clickAt(HWND window, QPoint place, Qt::MouseButton button) {
    desktop::click(onScreen(window, place), button);
    rest();
}

void drag(HWND window, const std::vector<QPoint>& way) {
    desktop::pressButton(onScreen(window, way.front()));
    for (const QPoint place : way) {
        desktop::movePointer(onScreen(window, place));
        rest();
    }
    desktop::releaseButton(onScreen(window, way.back()));
    rest();
}

void roll(HWND window, int notches) {
    desktop::rollWheel(onScreen(window, widgetOf(window)->rect().center()), notches);
    rest();
}

void press(int key, Qt::KeyboardModifiers modifiers) {
    static const std::map<int, QString> texts = {
        {Qt::Key_Return, "\r"},    {Qt::Key_Escape, "\x1B"}, {Qt::Key_Tab, "\t"},
        {Qt::Key_Backspace, "\b"}, {Qt::Key_Space, " "},     {Qt::Key_Delete, "\x7F"},
    };
    desktop::strike({key, texts.contains(key) ? texts.at(key) : QString(), modifiers});
}

void pressAlt(char16_t letter) {
    desktop::strike({QChar(letter).toUpper().unicode(), QString(letter), Qt::AltModifier});
}

void type(char16_t letter) {
    desktop::strike({QChar(letter).toUpper().unicode(), QString(letter), Qt::NoModifier});
}

QMessageBox* box() {
    return qobject_cast<QMessageBox*>(layer::foreignDialog());
}

bool boxShown() {
    return box() && box()->isActiveWindow();
}

std::string told() {
    return (box()->windowTitle() + ": " + box()->text()).toStdString();
}

Step answer(std::string& text, int key) {
    return {"box", [&text] { return boxShown() && told() != text; },
            [&text, key] {
                text = told();
                press(key);
            }};
}

QMenuBar& menuBar() {
    return *widgetOf(MainWindow)->findChild<QMenuBar*>();
}

QMenu* popup() {
    return desktop::openMenu();
}

std::string textOf(const QAction& item) {
    return item.text().remove(QLatin1Char('&')).toStdString();
}

void clickOnBar(int position) {
    const QPoint place = desktop::barItems().at(static_cast<size_t>(position));
    ASSERT_TRUE(widgetOf(MainWindow)->geometry().contains(place));
    desktop::click(place);
    rest();
}

void choose(int onBar, int item) {
    clickOnBar(onBar);
    ASSERT_TRUE(popup());
    desktop::click(desktop::menuItems().at(static_cast<size_t>(item)));
}

QPoint middleOf(HWND scrollBar, QStyle::SubControl part) {
    const auto& bar = *qobject_cast<QScrollBar*>(widgetOf(scrollBar));
    QStyleOptionSlider option;
    option.initFrom(&bar);
    option.orientation = bar.orientation();
    option.state.setFlag(QStyle::State_Horizontal, bar.orientation() == Qt::Horizontal);
    option.minimum = bar.minimum();
    option.maximum = bar.maximum();
    option.pageStep = bar.pageStep();
    option.sliderPosition = option.sliderValue = bar.value();
    return bar.style()->subControlRect(QStyle::CC_ScrollBar, &option, part, &bar).center();
}

QComboBox& boxOf(HWND combo) {
    return *qobject_cast<QComboBox*>(widgetOf(combo));
}

bool listOpen(HWND combo) {
    return combo && layer::openList() == combo;
}

void pointAt(int row) {
    desktop::movePointer(centreOf(row));
    rest();
}

void clickEntry(int row) {
    desktop::movePointer(centreOf(row));
    desktop::click(centreOf(row));
    rest();
}
