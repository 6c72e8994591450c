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
#include <array>
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
    static std::vector<Step> opened(int menu, int item, std::vector<Step> then) {
        then.insert(then.begin(), {"menu", always, [=] { choose(menu, item); }});
        return then;
    }
    static void inPorts(const std::vector<Step>& steps) {
        run(opened(PortMenu, OtherPortItem, steps));
    }
    static void inAbout(const std::vector<Step>& steps) {
        run(opened(InformationMenu, AboutItem, steps));
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
        EXPECT_EQ(PortNumber, static_cast<unsigned>(number));
        EXPECT_EQ(portMark(), std::to_string(number) + " ...");
        EXPECT_EQ(ini(), "[Ustawienia]\nCommPort= " + std::to_string(number) + "\nLanguage= cs\n");
    }
}

TEST_F(ShellDialogs, ThePortDialogListsAllPortsAndTakesTheChosenOne) {
    startIn("ang", 7);
    inPorts({{"list", dialogShown,
              [] {
                  const QComboBox& box = boxOf(portsBox());
                  ASSERT_EQ(box.count(), 128);
                  for (int row = 0; row < box.count(); ++row) {
                      EXPECT_EQ(box.itemText(row), QStringLiteral("COM %1").arg(row + 1));
                  }
                  EXPECT_EQ(box.currentIndex(), 6);
                  EXPECT_EQ(textOf(openDialogWindow()), "RS 232");
                  const RECT place = placeOf(openDialogWindow());
                  EXPECT_NEAR(place.left + place.right, 1280, 1);
                  EXPECT_NEAR(place.top + place.bottom, 1024, 1);
                  clickOn(portsBox());
              }},
             {"open list", [] { return boxOf(portsBox()).view()->isVisible(); }, [] { clickEntry(portsBox(), 11); }},
             {"choice", [] { return !boxOf(portsBox()).view()->isVisible(); }, clickClose}});
    EXPECT_STREQ(PortName, "\\\\.\\COM12");
    EXPECT_EQ(portMark(), "10 ...COM 12");
    EXPECT_EQ(ini(), "[Ustawienia]\nCommPort= 12\nLanguage= ang\n");

    inPorts({{"list", dialogShown, [] { press(Qt::Key_Home); }},
             {"first entry", [] { return boxOf(portsBox()).currentIndex() == 0; }, pressEscape}});
    EXPECT_EQ(PortNumber, 12u) << "Escape leaves all as it was";
    EXPECT_EQ(portMark(), "10 ...COM 12");

    inPorts({{"list", dialogShown,
              [] {
                  for (int up = 0; up < 3; ++up) {
                      press(Qt::Key_Up);
                  }
              }},
             {"entry 9", [] { return boxOf(portsBox()).currentIndex() == 8; }, pressEnter}});
    EXPECT_STREQ(PortName, "\\\\.\\COM9") << "the long name, unlike from the menu";
    EXPECT_EQ(portMark(), "9 ...");
    EXPECT_EQ(ini(), "[Ustawienia]\nCommPort= 9\nLanguage= ang\n");
}

TEST_F(ShellDialogs, APortThatIsNoneIsNotSelected) {
    startIn("ang", 0);
    inPorts({{"list", dialogShown, [] {
                  EXPECT_EQ(boxOf(portsBox()).currentIndex(), -1);
                  clickClose();
              }}});
    EXPECT_STREQ(PortName, "");
    EXPECT_EQ(portMark(), " ...");
}

TEST_F(ShellDialogs, AChoiceMovesThePollingToTheOtherController) {
    startOn(4);
    // At COM 2, of another family.
    simulator::Config config;
    config.family = 2;
    config.wirePace = false;
    config.portLink = folder / "ports/COM2";
    simulator::Server second(config);
    const auto expectMoved = [](simulator::Server& left, simulator::Server& taken, int family) {
        settle();
        ASSERT_TRUE(pumpUntil([=] { return LinkLost == 0 && ControllerFamily == family; }));
        left.clearLog();
        taken.clearLog();
        ASSERT_TRUE(pumpUntil([&] { return taken.log().size() > 8; }));
        EXPECT_TRUE(left.log().empty()) << "the left port is closed";
    };
    for (int round = 0; round < 2; ++round) {
        choose(PortMenu, 1);
        expectMoved(*server, second, 2);
        // The same port again is closed and opened anew.
        inPorts({{"list", dialogShown, pressEnter}});
        expectMoved(*server, second, 2);
        choose(PortMenu, 0);
        expectMoved(second, *server, 4);
    }
    // A choice closes the port at once; the next exchange opens the new one.
    ASSERT_EQ(PortOpen, 1);
    bool closedAtOnce = false;
    run({{"choice", always, [&] {
              SendMessageA(MainWindow, WM_COMMAND, IDM_COM3, 0);
              closedAtOnce = PortOpen == 0;
          }}});
    EXPECT_TRUE(closedAtOnce);
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
    inPorts({{"dialog", dialogShown,
              [&] {
                  EXPECT_FALSE(IsWindowEnabled(MainWindow));
                  EXPECT_EQ(DialogPause, 0);
                  server->clearLog();
              }},
             {"frames", [&] { return server->log().size() > 8; }, pressEscape}});
    EXPECT_TRUE(IsWindowEnabled(MainWindow));

    const std::vector<std::pair<const char*, void (*)()>> ways = {
        {"Enter", pressEnter},
        {"Escape", pressEscape},
        {"its button", clickClose},
        {"the window's own button", [] { widgetOf(openDialogWindow())->close(); }},
        {"space", [] { press(Qt::Key_Space); }},
    };
    for (const auto& [what, leave] : ways) {
        SCOPED_TRACE(what);
        inAbout({{"dialog", dialogShown,
                  [&] {
                      EXPECT_EQ(DialogPause, 1);
                      EXPECT_FALSE(IsWindowEnabled(MainWindow));
                      server->clearLog();
                      for (int tick = 0; tick < 5; ++tick) {
                          SendMessageA(PageWindow, WM_TIMER, 1, 0);
                      }
                      EXPECT_TRUE(server->log().empty());
                  }},
                 {"leaving", always, leave}});
        EXPECT_EQ(openDialogWindow(), nullptr);
        EXPECT_EQ(DialogPause, 0);
        EXPECT_TRUE(IsWindowEnabled(MainWindow));
        EXPECT_TRUE(pumpUntil([&] { return server->log().size() > 8; }));
    }
}

TEST_F(ShellDialogs, TheKeysOfTheProgramWorkBeforeAndAfterADialog) {
    startIn("ang");
    lastExitCode = -1;
    for (const char* when : {"at the start", "after a dialog"}) {
        bool shown = false;
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
             {when, dialogShown, [&] { shown = DialogPause == 1; }},
             {"leaving", always, pressEscape}});
        EXPECT_TRUE(shown) << when;
    }
    press(Qt::Key_F4, Qt::AltModifier);
    EXPECT_TRUE(pumpUntil([] { return lastExitCode == 0; }));
}

TEST_F(ShellDialogs, ExitBehindADialogEndsTheProgram) {
    startIn("ang");
    lastExitCode = -1;
    inPorts({{"dialog", dialogShown, [] { PostMessageA(MainWindow, WM_COMMAND, IDM_EXIT, 0); }}});
    EXPECT_FALSE(IsWindow(MainWindow));
    EXPECT_EQ(openDialogWindow(), nullptr);
    EXPECT_TRUE(pumpUntil([] { return lastExitCode != -1; }));
    EXPECT_EQ(lastExitCode, 0);
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
        inAbout({{"dialog", dialogShown,
                  [&] {
                      EXPECT_EQ(textIn(IDC_ABOUT_NAME), line(156));
                      EXPECT_EQ(textOf(openDialogWindow()), line(157));
                      EXPECT_EQ(textIn(IDC_ABOUT_VERSION), line(158));
                      EXPECT_EQ(textIn(IDC_CLOSE), line(160));
                      EXPECT_NE(line(157), std::exchange(former, line(157)));
                      expectAllFits();
                  }},
                 {"leaving", always, pressEnter}});
        inPorts({{"dialog", dialogShown,
                  [&] {
                      EXPECT_EQ(textIn(IDC_CLOSE), line(160));
                      expectAllFits();
                  }},
                 {"leaving", always, pressEscape}});
    }
}
