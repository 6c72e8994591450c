// The choice of the port and the two dialogs of the shell, as their user works them.
#include <QAbstractItemView>
#include <QAction>
#include <QComboBox>
#include <QFontMetrics>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <string>
#include <utility>

#include "User.h"
#include "link/Link.h"
#include "platform/linux/Layer.h"
#include "resources/Ids.h"
#include "shell/AppState.h"
#include "shell/Language.h"
#include "shell/MainWindow.h"

namespace {

// Of the Port and of the Information menu.
constexpr int OtherPortItem = 10;
constexpr int AboutItem = 0;

// The checked item of the Port menu, 1 to 9 and 10 for the last one, and the last one's text.
std::string portMark() {
    return marked(PortItems, MF_CHECKED) + " " + textOf(*menuBar().actions().at(PortMenu)->menu()->actions().last());
}

HWND inTopDialog(int id) {
    return GetDlgItem(openDialogWindow(), id);
}

// Opens the port dialog or, from the Information menu, About.
void inDialog(int menu, std::function<void()> whenShown, const std::vector<Step>& then = {}) {
    std::vector<Step> steps = {{"menu", always, [=] { choose(menu, menu == PortMenu ? OtherPortItem : AboutItem); }},
                               {"dialog", dialogShown, std::move(whenShown)}};
    steps.insert(steps.end(), then.begin(), then.end());
    run(steps);
}

// The text must be seen whole; labels may take as many lines as they have room for.
void expectFits(const layer::Window& control) {
    const QFontMetrics metrics(control.outer->font());
    if (const auto* button = qobject_cast<QPushButton*>(control.outer.data())) {
        EXPECT_LE(metrics.horizontalAdvance(button->text()), button->width() - 6) << button->text().toStdString();
        EXPECT_LE(metrics.height(), button->height());
    } else if (const auto* label = qobject_cast<QLabel*>(control.outer.data()); label && !label->text().isEmpty()) {
        const QRect needed = metrics.boundingRect(QRect(0, 0, label->width(), 1000), Qt::TextWordWrap, label->text());
        EXPECT_LE(needed.width(), label->width()) << label->text().toStdString();
        // A row's empty space below its letters may be cut.
        EXPECT_LE(needed.height(), label->height() + metrics.descent()) << label->text().toStdString();
    }
}

}  // namespace

class ShellDialogs : public WindowFixture {
protected:
    void expectPort(const std::string& name, const std::string& mark, int written) const {
        EXPECT_EQ(PortName, name);
        EXPECT_EQ(portMark(), mark);
        EXPECT_EQ(readFile("Tarvex.ini"), "[Ustawienia]\nCommPort= " + std::to_string(written) + "\nLanguage= ang\n");
    }
};

TEST_F(ShellDialogs, MenuAndDialogTakeTheChosenPort) {
    startIn("ang", 0);
    const auto close = [] { clickOn(inTopDialog(IDC_CLOSE)); };
    const auto listShown = [] { return listOpen(inTopDialog(IDC_PORTS)); };
    const auto toFirst = [] { press(Qt::Key_Home); };
    const auto firstSelected = [] { return boxOf(inTopDialog(IDC_PORTS)).currentIndex() == 0; };
    inDialog(PortMenu, [&] {
        const QComboBox& box = boxOf(inTopDialog(IDC_PORTS));
        ASSERT_EQ(box.count(), 128);
        for (int row = 0; row < box.count(); ++row) {
            EXPECT_EQ(box.itemText(row), QStringLiteral("COM %1").arg(row + 1));
        }
        EXPECT_EQ(box.currentIndex(), -1);
        const RECT place = placeOf(openDialogWindow());
        EXPECT_NEAR(place.left + place.right, 1280, 1);
        EXPECT_NEAR(place.top + place.bottom, 1024, 1);
        close();
    });
    expectPort("", " ...", 0);
    inDialog(PortMenu, [] { clickOn(inTopDialog(IDC_PORTS)); },
             {{"open list", listShown,
               [] {
                   EXPECT_LE(layer::openListView()->height(), 200) << "as high as the template says";
                   clickEntry(11);
               }},
              {"choice", [=] { return !listShown(); }, close}});
    expectPort("\\\\.\\COM12", "10 ...COM 12", 12);
    inDialog(PortMenu, toFirst, {{"first entry", firstSelected, [] { press(Qt::Key_Escape); }}});
    expectPort("\\\\.\\COM12", "10 ...COM 12", 12);
    inDialog(PortMenu, toFirst, {{"first entry", firstSelected, [] { press(Qt::Key_Return); }}});
    // The long name, unlike from the menu.
    expectPort("\\\\.\\COM1", "1 ...", 1);
    for (const int number : {3, 1, 2, 4, 5, 6, 7, 8, 9}) {
        choose(PortMenu, number - 1);
        settle();
        expectPort("COM" + std::to_string(number) + ":", std::to_string(number) + " ...", number);
    }
}

TEST_F(ShellDialogs, AChoiceMovesThePollingToTheOtherController) {
    startOn(4);
    // At COM 2, of another family.
    simulator::Config config;
    config.family = 2;
    config.wirePace = false;
    HeldController second(*clock, config, 2);
    const auto expectPolled = [&](HeldController& taken, HeldController& left, int family) {
        settle();
        ASSERT_TRUE(pumpUntil([=] { return LinkLost == 0 && ControllerFamily == family; }));
        left.clearLog();
        taken.clearLog();
        ASSERT_TRUE(pumpUntil([&] { return taken.log().size() > 8; }));
        EXPECT_TRUE(left.log().empty()) << "the left port is closed";
    };
    choose(PortMenu, 1);
    expectPolled(second, *server, 2);
    // The same port again is closed and opened anew.
    inDialog(PortMenu, [] {
        EXPECT_EQ(boxOf(inTopDialog(IDC_PORTS)).currentIndex(), 1);
        press(Qt::Key_Return);
    });
    expectPolled(second, *server, 2);
    choose(PortMenu, 0);
    expectPolled(*server, second, 4);
    // A choice closes the port at once; the next exchange opens the new one.
    ASSERT_EQ(PortOpen, 1);
    SendMessageA(MainWindow, WM_COMMAND, IDM_COM3, 0);
    EXPECT_EQ(PortOpen, 0);
    EXPECT_TRUE(pumpUntil([] { return LinkLost == 1; }));
}

TEST_F(ShellDialogs, PollingGoesOnBehindThePortDialogAndStopsBehindAbout) {
    startOn(4);
    const auto polled = [&] { return server->log().size() > 8; };
    inDialog(PortMenu, [&] { server->clearLog(); }, {{"frames", polled, [] { press(Qt::Key_Escape); }}});
    // By its key, before and after a dialog; others that look like it are none of the program's.
    for (const int leave : {Qt::Key_Return, Qt::Key_Escape}) {
        type(u'/');
        press(Qt::Key_F4);
        press(Qt::Key_F5, Qt::AltModifier);
        settle();
        EXPECT_EQ(openDialogWindow(), nullptr);
        run({{"Alt+/", always, [] { pressAlt(u'/'); }}, {"About", dialogShown, [&] {
                                                             server->clearLog();
                                                             SendMessageA(PageWindow, WM_TIMER, 1, 0);
                                                             EXPECT_TRUE(server->log().empty());
                                                             press(leave);
                                                         }}});
        EXPECT_TRUE(IsWindowEnabled(MainWindow));
        EXPECT_TRUE(pumpUntil(polled));
    }
}

TEST_F(ShellDialogs, TextsOfTheDialogsFollowTheLanguageAndFit) {
    startIn("ang");
    for (int language = 0; language < 5; ++language) {
        choose(LanguageMenu, language);
        settle();
        std::string texts;
        for (const int menu : {InformationMenu, PortMenu}) {
            inDialog(menu, [&] {
                texts += textOf(openDialogWindow()) + "|";
                for (const layer::Window* control : layer::find(openDialogWindow())->children) {
                    expectFits(*control);
                    texts += (control->id & 0xFFFF) == 0xFFFF ? "" : textOf(control->handle) + "|";
                }
                press(Qt::Key_Escape);
            });
        }
        EXPECT_EQ(texts, line(157) + "|" + line(156) + "|" + line(158) + "|" + line(160) + "|RS 232||" + line(160) +
                             "|Cancel|")
            << language;
    }
}
