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
#include <QTest>
#include <QWindow>

#include "platform/linux/Layer.h"
#include "shell/AppState.h"

namespace {

constexpr Moment StepPeriod = 5 * Millisecond;
constexpr Moment Patience = 10 * Second;

// Where the desktop sends keys: on to an open list or menu, else to the widget in focus.
QWindow* keyTarget() {
    QWindow* focus = QGuiApplication::focusWindow();
    return focus ? focus : QApplication::activeWindow()->windowHandle();
}

void endAllDialogs() {
    while (const HWND dialog = openDialogWindow()) {
        EndDialog(dialog, 0);
    }
    PostMessageA(GetDesktopWindow(), WM_NULL, 0, 0);
    if (QWidget* box = QApplication::activeModalWidget()) {
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
    pumpUntil([&] { return next == steps.size() && !QApplication::activeModalWidget(); }, 60);
    clock.forget();
}

bool always() {
    return true;
}

bool dialogShown() {
    const HWND dialog = openDialogWindow();
    return dialog && widgetOf(dialog)->isActiveWindow() && !layer::nextToPaint();
}

void clickOn(HWND control) {
    QTest::mouseClick(widgetOf(control), Qt::LeftButton);
}

void press(int key, Qt::KeyboardModifiers modifiers) {
    QTest::keyClick(keyTarget(), static_cast<Qt::Key>(key), modifiers);
}

void pressAlt(char16_t letter) {
    const QString text(letter);
    QTest::sendKeyEvent(QTest::Click, keyTarget(), static_cast<Qt::Key>(text.toUpper().at(0).unicode()), text,
                        Qt::AltModifier);
}

void type(char16_t letter) {
    const QString text(letter);
    QTest::sendKeyEvent(QTest::Click, keyTarget(), static_cast<Qt::Key>(text.toUpper().at(0).unicode()), text,
                        Qt::NoModifier);
}

QMessageBox* box() {
    return qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
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
    return qobject_cast<QMenu*>(QApplication::activePopupWidget());
}

std::string textOf(const QAction& item) {
    return item.text().remove(QLatin1Char('&')).toStdString();
}

void clickOnBar(int position) {
    QMenuBar& bar = menuBar();
    QAction* item = bar.actions().at(position);
    ASSERT_TRUE(bar.rect().contains(bar.actionGeometry(item).center()));
    QTest::mouseClick(&bar, Qt::LeftButton, {}, bar.actionGeometry(item).center());
}

void choose(int onBar, int item) {
    clickOnBar(onBar);
    ASSERT_TRUE(popup());
    QMenu& open = *popup();
    QTest::mouseClick(&open, Qt::LeftButton, {}, open.actionGeometry(open.actions().at(item)).center());
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

namespace {

QPoint centreOf(HWND combo, int row) {
    QAbstractItemView& list = *boxOf(combo).view();
    list.scrollTo(list.model()->index(row, 0));
    return list.viewport()->mapTo(list.window(), list.visualRect(list.model()->index(row, 0)).center());
}

QWindow* listOf(HWND combo) {
    return boxOf(combo).view()->window()->windowHandle();
}

}  // namespace

void pointAt(HWND combo, int row) {
    const QPoint centre = centreOf(combo, row);
    // The first movement after an opening may be too small to count.
    QTest::mouseMove(listOf(combo), centre - QPoint(20, 0));
    QTest::mouseMove(listOf(combo), centre);
}

void clickEntry(HWND combo, int row) {
    pointAt(combo, row);
    QTest::mouseClick(listOf(combo), Qt::LeftButton, {}, centreOf(combo, row));
}
