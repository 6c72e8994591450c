// The choice of the port and the two dialogs of the shell, as their user works them.
#include <QAbstractItemView>
#include <QAction>
#include <QComboBox>
#include <QFontMetrics>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTest>
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

HWND portsBox() {
    return GetDlgItem(openDialogWindow(), IDC_PORTS);
}

void clickClose() {
    clickOn(GetDlgItem(openDialogWindow(), IDC_CLOSE));
}

void pressEnter() {
    press(Qt::Key_Return);
}

void pressEscape() {
    press(Qt::Key_Escape);
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
    // Opens the port dialog or, from the Information menu, About.
    static void inDialog(int menu, std::vector<Step> steps) {
        const int item = menu == PortMenu ? OtherPortItem : AboutItem;
        steps.insert(steps.begin(), {"menu", always, [=] { choose(menu, item); }});
        run(steps);
    }
    std::string ini() const {
        return readFile("Tarvex.ini");
    }
};

TEST_F(ShellDialogs, EveryItemOfThePortMenuTakesItsPort) {
    startIn("cs", 100);
    EXPECT_EQ(portMark(), "10 ...COM 100");
    for (const int number : {3, 1, 2, 4, 5, 6, 7, 8, 9}) {
        choose(PortMenu, number - 1);
        settle();
        EXPECT_EQ(PortName, "COM" + std::to_string(number) + ":");
        EXPECT_EQ(portMark(), std::to_string(number) + " ...");
        EXPECT_EQ(ini(), "[Ustawienia]\nCommPort= " + std::to_string(number) + "\nLanguage= cs\n");
    }
}

TEST_F(ShellDialogs, ThePortDialogListsAllPortsAndTakesTheChosenOne) {
    startIn("ang", 0);
    inDialog(PortMenu, {{"list", dialogShown, [] {
                             const QComboBox& box = boxOf(portsBox());
                             ASSERT_EQ(box.count(), 128);
                             for (int row = 0; row < box.count(); ++row) {
                                 EXPECT_EQ(box.itemText(row), QStringLiteral("COM %1").arg(row + 1));
                             }
                             EXPECT_EQ(box.currentIndex(), -1);
                             EXPECT_EQ(textOf(openDialogWindow()), "RS 232");
                             const RECT place = placeOf(openDialogWindow());
                             EXPECT_NEAR(place.left + place.right, 1280, 1);
                             EXPECT_NEAR(place.top + place.bottom, 1024, 1);
                             clickClose();
                         }}});
    EXPECT_STREQ(PortName, "") << "a port that is none is not selected";
    EXPECT_EQ(portMark(), " ...");

    const auto listShown = [] { return listOpen(portsBox()); };
    inDialog(PortMenu, {{"box", dialogShown, [] { clickOn(portsBox()); }},
                        {"open list", listShown,
                         [] {
                             EXPECT_LE(layer::openListView()->height(), 200) << "as high as the template says";
                             clickEntry(11);
                         }},
                        {"choice", [=] { return !listShown(); }, clickClose}});
    EXPECT_STREQ(PortName, "\\\\.\\COM12");
    EXPECT_EQ(portMark(), "10 ...COM 12");
    EXPECT_EQ(ini(), "[Ustawienia]\nCommPort= 12\nLanguage= ang\n");

    const auto selected = [](int entry) { return [=] { return boxOf(portsBox()).currentIndex() == entry; }; };
    inDialog(PortMenu, {{"the current port", selected(11), [] { press(Qt::Key_Home); }},
                        {"first entry", selected(0), pressEscape}});
    EXPECT_EQ(portMark(), "10 ...COM 12") << "Escape leaves all as it was";

    inDialog(PortMenu, {{"list", dialogShown, [] { press(Qt::Key_Home); }}, {"first entry", selected(0), pressEnter}});
    EXPECT_STREQ(PortName, "\\\\.\\COM1") << "the long name, unlike from the menu";
    EXPECT_EQ(portMark(), "1 ...");
}

TEST_F(ShellDialogs, AChoiceMovesThePollingToTheOtherController) {
    startOn(4);
    // At COM 2, of another family.
    simulator::Config config;
    config.family = 2;
    config.wirePace = false;
    HeldController second(*clock, config, 2);
    const auto expectMoved = [](HeldController& left, HeldController& taken, int family) {
        settle();
        ASSERT_TRUE(pumpUntil([=] { return LinkLost == 0 && ControllerFamily == family; }));
        left.clearLog();
        taken.clearLog();
        ASSERT_TRUE(pumpUntil([&] { return taken.log().size() > 8; }));
        EXPECT_TRUE(left.log().empty()) << "the left port is closed";
    };
    choose(PortMenu, 1);
    expectMoved(*server, second, 2);
    // The same port again is closed and opened anew.
    inDialog(PortMenu, {{"list", dialogShown, pressEnter}});
    expectMoved(*server, second, 2);
    choose(PortMenu, 0);
    expectMoved(second, *server, 4);
    // A choice closes the port at once; the next exchange opens the new one.
    ASSERT_EQ(PortOpen, 1);
    SendMessageA(MainWindow, WM_COMMAND, IDM_COM3, 0);
    EXPECT_EQ(PortOpen, 0);
    EXPECT_TRUE(pumpUntil([] { return LinkLost == 1; }));
}

TEST_F(ShellDialogs, AnIniThatCannotBeReadOrWrittenStopsNothing) {
    std::filesystem::create_directory(folder / "Tarvex.ini");
    start();
    settle();
    EXPECT_STREQ(LangCode.data(), "pol");
    EXPECT_EQ(portMark(), "1 ...");
    choose(PortMenu, 4);
    settle();
    EXPECT_STREQ(PortName, "COM5:");
    EXPECT_EQ(portMark(), "5 ...");
    choose(LanguageMenu, 2);
    settle();
    EXPECT_STREQ(LangCode.data(), "rus");
    EXPECT_TRUE(std::filesystem::is_directory(folder / "Tarvex.ini"));
}

TEST_F(ShellDialogs, PollingGoesOnBehindThePortDialogAndStopsBehindAbout) {
    startOn(4);
    inDialog(PortMenu, {{"dialog", dialogShown,
                         [&] {
                             EXPECT_FALSE(IsWindowEnabled(MainWindow));
                             server->clearLog();
                         }},
                        {"frames", [&] { return server->log().size() > 8; }, pressEscape}});
    EXPECT_TRUE(IsWindowEnabled(MainWindow));
    for (void (*leave)() : {pressEnter, pressEscape}) {
        inDialog(InformationMenu, {{"dialog", dialogShown, [&] {
                                        EXPECT_FALSE(IsWindowEnabled(MainWindow));
                                        server->clearLog();
                                        SendMessageA(PageWindow, WM_TIMER, 1, 0);
                                        EXPECT_TRUE(server->log().empty());
                                        leave();
                                    }}});
        EXPECT_TRUE(IsWindowEnabled(MainWindow));
        EXPECT_TRUE(pumpUntil([&] { return server->log().size() > 8; }));
    }
}

TEST_F(ShellDialogs, TheKeysOfTheProgramWorkBeforeAndAfterADialog) {
    startIn("ang");
    for (const char* when : {"at the start", "after a dialog"}) {
        run({{"keys that are none of the program's", always,
              [] {
                  type(u'/');
                  press(Qt::Key_F4);
                  press(Qt::Key_F5, Qt::AltModifier);
              }},
             {"Alt+/", always,
              [] {
                  EXPECT_EQ(openDialogWindow(), nullptr);
                  pressAlt(u'/');
              }},
             {when, [] { return dialogShown() && DialogPause == 1; }, pressEscape}});
    }
}

TEST_F(ShellDialogs, ExitBehindADialogEndsTheProgram) {
    startIn("ang");
    lastExitCode = -1;
    inDialog(PortMenu, {{"dialog", dialogShown, [] { PostMessageA(MainWindow, WM_COMMAND, IDM_EXIT, 0); }}});
    EXPECT_FALSE(IsWindow(MainWindow));
    EXPECT_EQ(openDialogWindow(), nullptr);
    EXPECT_TRUE(pumpUntil([] { return lastExitCode == 0; }));
}

TEST_F(ShellDialogs, TextsOfTheDialogsFollowTheLanguageAndFit) {
    startIn("ang");
    std::string former;
    for (int language = 0; language < 5; ++language) {
        SCOPED_TRACE(language);
        choose(LanguageMenu, language);
        settle();
        const auto textIn = [](int id) { return textOf(GetDlgItem(openDialogWindow(), id)); };
        const auto expectAllFits = [] {
            for (const layer::Window* control : layer::find(openDialogWindow())->children) {
                expectFits(*control);
            }
        };
        inDialog(InformationMenu, {{"dialog", dialogShown, [&] {
                                        EXPECT_EQ(textIn(IDC_ABOUT_NAME), line(156));
                                        EXPECT_EQ(textOf(openDialogWindow()), line(157));
                                        EXPECT_EQ(textIn(IDC_ABOUT_VERSION), line(158));
                                        EXPECT_EQ(textIn(IDC_CLOSE), line(160));
                                        EXPECT_NE(line(157), std::exchange(former, line(157)));
                                        expectAllFits();
                                        pressEnter();
                                    }}});
        inDialog(PortMenu, {{"dialog", dialogShown, [&] {
                                 EXPECT_EQ(textIn(IDC_CLOSE), line(160));
                                 expectAllFits();
                                 pressEscape();
                             }}});
    }
}
