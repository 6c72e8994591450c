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
constexpr UINT PortItems[] = {IDM_COM1, IDM_COM2, IDM_COM3, IDM_COM4, IDM_COM5,
                              IDM_COM6, IDM_COM7, IDM_COM8, IDM_COM9, IDM_COM_OTHER};

// The checked item of the Port menu, 1 to 9 and 10 for the last one, and the last one's text.
std::string portMark() {
    std::string marks;
    for (size_t at = 0; at < std::size(PortItems); ++at) {
        if (GetMenuState(MainMenu, PortItems[at], MF_BYCOMMAND) & MF_CHECKED) {
            marks += std::to_string(at + 1) + " ";
        }
    }
    return marks + textOf(*menuBar().actions().at(PortMenu)->menu()->actions().last());
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
    void startIn(const char* language, unsigned port = 1) {
        writeIni(port, language);
        start();
        ASSERT_TRUE(pumpUntil([] { return widgetOf(MainWindow)->isActiveWindow(); }));
        settle();
    }
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
    // A second controller, at COM 2, of another family than the one at COM 1.
    void plugSecond() {
        simulator::Config config;
        config.family = 2;
        config.wirePace = false;
        config.portLink = folder / "ports/COM2";
        second = std::make_unique<simulator::Server>(config);
    }
    static bool reads(int family) {
        return pumpUntil([=] { return LinkLost == 0 && ControllerFamily == family; });
    }
    std::unique_ptr<simulator::Server> second;
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
                  EXPECT_EQ(widgetOf(openDialogWindow())->windowTitle(), QStringLiteral("RS 232"));
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
    EXPECT_EQ(portMark(), "...");
    inPorts({{"list", dialogShown,
              [] {
                  EXPECT_EQ(SendMessageA(portsBox(), CB_GETCURSEL, 0, 0), CB_ERR);
                  EXPECT_EQ(boxOf(portsBox()).currentText(), QString());
              }},
             {"button", always, clickClose}});
    EXPECT_EQ(PortNumber, 0u);
    EXPECT_STREQ(PortName, "");
    EXPECT_EQ(portMark(), "...");
}

TEST_F(ShellDialogs, AChoiceMovesThePollingToTheOtherController) {
    plugController(4);
    plugSecond();
    startIn("ang");
    ASSERT_TRUE(reads(4));
    EXPECT_TRUE(second->log().empty());
    for (int round = 0; round < 2; ++round) {
        choose(PortMenu, 1);
        settle();
        ASSERT_TRUE(reads(2));
        server->clearLog();
        ASSERT_TRUE(pumpUntil([&] { return second->log().size() > 8; }));
        EXPECT_TRUE(server->log().empty()) << "the left port is closed";
        // The same port again is closed and opened anew.
        inPorts({{"list", dialogShown, pressEnter}});
        ASSERT_TRUE(reads(2));
        choose(PortMenu, 0);
        settle();
        ASSERT_TRUE(reads(4));
        second->clearLog();
        ASSERT_TRUE(pumpUntil([&] { return server->log().size() > 8; }));
        EXPECT_TRUE(second->log().empty());
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

TEST_F(ShellDialogs, AnIniThatCannotBeWrittenStopsNoChoice) {
    startIn("ang");
    std::filesystem::remove(folder / "Tarvex.ini");
    std::filesystem::create_directory(folder / "Tarvex.ini");
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
    plugController(4);
    startIn("ang");
    ASSERT_TRUE(reads(4));
    inPorts({{"dialog", dialogShown,
              [&] {
                  EXPECT_FALSE(IsWindowEnabled(MainWindow));
                  EXPECT_EQ(DialogPause, 0);
                  server->clearLog();
              }},
             {"frames", [&] { return server->log().size() > 8; }, pressEscape}});
    EXPECT_TRUE(IsWindowEnabled(MainWindow));

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
             {"leaving", always, pressEscape}});
    EXPECT_EQ(DialogPause, 0);
    EXPECT_TRUE(IsWindowEnabled(MainWindow));
    EXPECT_TRUE(pumpUntil([&] { return server->log().size() > 8; }));
}

TEST_F(ShellDialogs, AboutIsLeftInEveryWay) {
    startIn("ang");
    const std::vector<std::pair<const char*, void (*)()>> ways = {
        {"Enter", pressEnter},
        {"Escape", pressEscape},
        {"its button", clickClose},
        {"the window's own button", [] { widgetOf(openDialogWindow())->close(); }},
        {"space", [] { press(Qt::Key_Space); }},
    };
    for (const auto& [what, leave] : ways) {
        SCOPED_TRACE(what);
        bool shown = false;
        inAbout({{"dialog", dialogShown, [&] { shown = DialogPause == 1; }}, {"leaving", always, leave}});
        EXPECT_TRUE(shown);
        EXPECT_EQ(DialogPause, 0);
        EXPECT_TRUE(IsWindowEnabled(MainWindow));
        EXPECT_EQ(openDialogWindow(), nullptr);
    }
}

TEST_F(ShellDialogs, TheKeysOfTheProgramWorkBeforeAndAfterADialog) {
    startIn("ang");
    lastExitCode = -1;
    for (const char* when : {"at the start", "after a dialog"}) {
        bool shown = false;
        run({{"Alt+/", always, [] { pressAlt(u'/'); }},
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
    const char* const codes[] = {"pol", "ang", "rus", "lit", "cs"};
    for (int row = 0; row < 5; ++row) {
        SCOPED_TRACE(codes[row]);
        choose(LanguageMenu, row);
        settle();
        const int codePage = CurrentLanguage().charSet == RUSSIAN_CHARSET ? 1251 : 1250;
        const auto line = [=](size_t at) { return layer::decode(LangTable[at].data(), codePage); };
        inAbout({{"dialog", dialogShown,
                  [&] {
                      const HWND dialog = openDialogWindow();
                      const auto textIn = [=](int id) {
                          return widgetOf(GetDlgItem(dialog, id))->property("text").toString();
                      };
                      EXPECT_EQ(textIn(IDC_ABOUT_NAME), line(156));
                      EXPECT_EQ(widgetOf(dialog)->windowTitle(), line(157));
                      EXPECT_EQ(textIn(IDC_ABOUT_VERSION), line(158));
                      EXPECT_EQ(textIn(IDC_CLOSE), line(160));
                      EXPECT_NE(line(157).toStdString(), former);
                      former = line(157).toStdString();
                      for (const layer::Window* control : layer::find(dialog)->children) {
                          expectFits(*control);
                      }
                  }},
                 {"leaving", always, pressEnter}});
        inPorts({{"dialog", dialogShown,
                  [&] {
                      EXPECT_EQ(widgetOf(GetDlgItem(openDialogWindow(), IDC_CLOSE))->property("text").toString(),
                                line(160));
                      for (const layer::Window* control : layer::find(openDialogWindow())->children) {
                          expectFits(*control);
                      }
                  }},
                 {"leaving", always, pressEscape}});
    }
}
