// Pages, sizes, languages, ports, the keyboard of the menu bar and the shell's two dialogs, as their user works them.
#include <QAbstractItemView>
#include <QAction>
#include <QComboBox>
#include <QFontMetrics>
#include <QMenu>
#include <QMenuBar>
#include <sstream>
#include <string>
#include <utility>

#include "User.h"
#include "link/Link.h"
#include "platform/linux/Layer.h"
#include "resources/Ids.h"
#include "shell/AppState.h"
#include "shell/SizeProfiles.h"

namespace {

// In the order of the bar and of their captions' lines, from 175 on.
constexpr int BarPages[] = {ReadingsPage, ConfigurationPage, OptionsPage, DiagramPage, ResetPage, OscilloscopePage};

void pick(int menu, int item) {
    choose(menu, item);
    settle();
}

void goTo(int position) {
    clickOnBar(FirstPageItem + position);
    settle();
    ASSERT_EQ(AppPage, BarPages[position]);
}

// The items of the bar that are lit in this way.
std::string lit(const char* way) {
    std::string texts;
    for (const QAction* item : menuBar().actions()) {
        texts += item->property(way).toBool() ? textOf(*item) : "";
    }
    return texts;
}

// The one page over the main window, highlighted on the bar by its item alone.
void expectShowing(int position) {
    EXPECT_EQ(AppPage, BarPages[position]);
    EXPECT_EQ(textOf(MainWindow), line(175 + static_cast<size_t>(position)));
    EXPECT_NE(textOf(MainWindow), "");
    const auto& children = layer::find(MainWindow)->children;
    ASSERT_EQ(children.size(), 1u);
    EXPECT_EQ(children[0]->handle, PageWindow);
    EXPECT_TRUE(IsWindowVisible(PageWindow));
    EXPECT_EQ(lit("highlighted"), textOf(*menuBar().actions().at(FirstPageItem + position)));
}

std::string placeInParent(HWND window) {
    const QRect place = widgetOf(window)->geometry();
    return text({place.x(), place.y(), place.x() + place.width(), place.y() + place.height()});
}

// The checked item of the Port menu, 1 to 9 and 10 for the last one, and the last one's text.
std::string portMark() {
    return marked(PortItems, MF_CHECKED) + " " + textOf(*menuBar().actions().at(PortMenu)->menu()->actions().last());
}

HWND portsBox() {
    return GetDlgItem(openDialogWindow(), IDC_PORTS);
}

// Opens the port dialog or, from the Information menu, About.
void inDialog(int menu, std::function<void()> whenShown, const std::vector<Step>& then = {}) {
    std::vector<Step> steps = {{"menu", always, [=] { choose(menu, menu == PortMenu ? 10 : 0); }},
                               {"dialog", dialogShown, std::move(whenShown)}};
    steps.insert(steps.end(), then.begin(), then.end());
    run(steps);
}

// The text must be seen whole; it may take as many rows as it has room for.
void expectFits(const layer::Window& control) {
    const QFontMetrics metrics(control.outer->font());
    const QString text = control.outer->property("text").toString();
    const QSize room = control.outer->size() - QSize(control.kind == layer::Kind::Button ? 6 : 0, 0);
    const QRect needed = metrics.boundingRect(QRect(0, 0, room.width(), 1000), Qt::TextWordWrap, text);
    EXPECT_LE(needed.width(), room.width()) << text.toStdString();
    // A row's empty space below its letters may be cut.
    EXPECT_TRUE(text.isEmpty() || needed.height() <= room.height() + metrics.descent()) << text.toStdString();
}

}  // namespace

class Shell : public WindowFixture {
protected:
    void expectIni(int port, const std::string& language) const {
        EXPECT_EQ(readFile("Tarvex.ini"),
                  "[Ustawienia]\nCommPort= " + std::to_string(port) + "\nLanguage= " + language + "\n");
    }
    void expectPort(const std::string& name, const std::string& mark, int number) const {
        EXPECT_EQ(PortName, name);
        EXPECT_EQ(portMark(), mark);
        expectIni(number, "ang");
    }
};

TEST_F(Shell, EverySizeIsTakenByTheWindowAndTheShowingPage) {
    startIn("ang");
    struct Row {
        int profile;
        const char *corner, *size, *learnButton;
        int letters;  // of the two pages with a dialog for each size
    };
    const Row rows[] = {{1, "320,287", "640x450", "540,358 71x30", 13},
                        {4, "0,0", "1280x930", "1100,780 120x75", 24},
                        {3, "128,143", "1024x738", "875,610 105x60", 19},
                        {2, "240,227", "800x570", "685,465 80x40", 16},
                        {5, "0,0", "1280x994", "1100,840 120x75", 24}};
    for (int page = 0; page < 6; ++page) {
        goTo(page);
        const std::string asMade = text(placeOf(PageWindow));
        for (const Row& row : rows) {
            SCOPED_TRACE(std::to_string(page) + " in " + row.size);
            const HWND former = PageWindow;
            pick(SizeMenu, row.profile - 1);
            EXPECT_EQ(marked(SizeItems, MF_CHECKED), std::to_string(row.profile));
            EXPECT_EQ(text(placeOf(MainWindow)), row.corner + std::string(" ") + row.size);
            EXPECT_TRUE(text(placeOf(PageWindow))
                            .ends_with(AppPage == OscilloscopePage ? asMade.substr(asMade.find(' ')) : row.size));
            EXPECT_EQ(PageWindow == former, AppPage == ResetPage) << "only the Reset page stays";
            if (AppPage == ReadingsPage) {
                EXPECT_EQ(placeInParent(PageWindow), std::string("-5,-10 ") + row.size);
                EXPECT_EQ(placeInParent(GetDlgItem(PageWindow, IDC_LEARN)), row.learnButton);
            } else if (AppPage == ConfigurationPage || AppPage == OptionsPage) {
                EXPECT_EQ(layer::find(PageWindow)->font.pixelSize(), row.letters);
            }
            expectShowing(page);
        }
    }
}

TEST_F(Shell, AClickInTheSilenceOfALostReplyWaitsForItsEnd) {
    startOn(4);
    server->addFault({.kind = simulator::FaultKind::Silence, .count = 1});
    const QPoint options = desktop::barItems().at(FirstPageItem + 2);
    server->observe([&](const simulator::LogEntry&) {    // as the request goes out
        clock->at(clock->now() + 3 * Millisecond, [=] {  // while the reply is awaited
            desktop::pressButton(options);
            desktop::releaseButton(options);
        });
        server->observe(nullptr);
    });
    EXPECT_FALSE(pumpUntil([] { return AppPage == OptionsPage; }, 0.2));  // seconds of held time
    EXPECT_TRUE(pumpUntil([] { return AppPage == OptionsPage; }, 0.5));
}

TEST_F(Shell, EveryPageItemOnTheBarShowsItsPageAndOnlyTheDiagramPutsADraggedWindowBack) {
    startIn("ang");
    expectShowing(0);
    pick(SizeMenu, 1);
    for (const int page : {1, 2, 3, 4, 5, 0, 3}) {
        SCOPED_TRACE(page);
        widgetOf(MainWindow)->move(70, 80);
        settle();
        const HWND former = PageWindow;
        goTo(page);
        EXPECT_FALSE(IsWindow(former));
        EXPECT_EQ(text(placeOf(MainWindow)), AppPage == DiagramPage ? "240,227 800x570" : "70,80 800x570");
        const HWND shown = PageWindow;
        HiliteMenuItem(MainWindow, MainMenu, IDM_OPTIONS, MF_HILITE);
        goTo(page);
        EXPECT_EQ(PageWindow, shown) << "the showing page is left alone";
        expectShowing(page);
    }
    for (const int menu : {FileMenu, PortMenu, SizeMenu, LanguageMenu, InformationMenu}) {
        clickOnBar(menu);
        ASSERT_TRUE(popup()) << menu;
        settle();
        HiliteMenuItem(MainWindow, MainMenu, IDM_DIAGRAM, MF_UNHILITE);
        press(Qt::Key_Escape);
        settle();
        EXPECT_FALSE(popup());
        EXPECT_EQ(lit("highlighted"), "") << "the bar still has the keyboard";
        press(Qt::Key_Escape);
        settle();
        EXPECT_EQ(lit("highlighted"), "Diagram") << menu;
    }
}

TEST_F(Shell, EveryLanguageRenewsTextsAndKeepsAllOtherMarks) {
    startIn("ang", 42);
    EnableSizeMenu(3);
    pick(SizeMenu, 1);
    const auto drawn = [] {
        const HDC dc = GetDC(PageWindow);
        SelectObject(dc, LargeFont);
        ExtTextOutA(dc, 20, 20, 0, nullptr, "\xCF\xE6", 2, nullptr);
        ReleaseDC(PageWindow, dc);
        return snapshot(PageWindow, {20, 20, 120, 90});
    };
    const auto latin = drawn();
    // In the order of the menu: the code and the first item of the bar.
    constexpr const char* Languages[][2] = {
        {"pol", "Plik"}, {"ang", "File"}, {"rus", "Файл"}, {"lit", "Failas"}, {"cs", "Soubor"}};
    std::string formerCaption;
    for (const int at : {0, 2, 3, 4, 1}) {
        const auto& [code, fileMenu] = Languages[at];
        SCOPED_TRACE(code);
        goTo(0);
        pick(LanguageMenu, at);
        expectIni(42, code);
        EXPECT_EQ(textOf(GetDlgItem(PageWindow, IDC_LEARN)), line(33));
        EXPECT_NE(textOf(MainWindow), std::exchange(formerCaption, textOf(MainWindow)));
        const QList<QAction*> bar = menuBar().actions();
        EXPECT_EQ(textOf(*bar.at(FileMenu)), fileMenu);
        EXPECT_EQ(marked(LanguageItems, MF_CHECKED), std::to_string(at + 1));
        EXPECT_EQ(marked(SizeItems, MF_GRAYED) + " " + marked(SizeItems, MF_CHECKED), "4 5 2");
        EXPECT_EQ(portMark(), "10 ...COM 42");
        for (int other = 0; other < 5; ++other) {
            const QImage tag = bar.at(LanguageMenu)->menu()->actions().at(other)->icon().pixmap(14, 12).toImage();
            EXPECT_EQ(tag.pixelColor(0, 0), other == at ? QColor(0, 0, 255) : QColor(128, 128, 128)) << other;
        }
        EXPECT_EQ(drawn() != latin, std::string(code) == "rus");
        for (int page = 0; page < 6; ++page) {
            goTo(page);
            const HWND before = PageWindow;
            pick(LanguageMenu, at);
            EXPECT_EQ(PageWindow == before, AppPage == ResetPage) << page;
            expectShowing(page);
        }
    }
    std::filesystem::remove(folder / "Lang");
    const std::string english = textOf(MainWindow);
    pick(LanguageMenu, 0);
    expectIni(42, "pol");
    EXPECT_EQ(textOf(MainWindow), english) << "a language whose file is gone";
    EXPECT_EQ(textOf(*menuBar().actions().first()), "Plik");
}

TEST_F(Shell, AltAndLettersChooseOnTheBarAndEscapeLeavesIt) {
    startIn("ang");
    struct Row {
        const char *keys, *item, *firstEntry;  // where the keyboard is, what its popup begins with
        int page;
    };
    // Reset and Readings share their first letter, Port and Diagram have one of their own; none has q.
    for (const Row& row :
         {Row{"Alt+d", "", "", DiagramPage}, Row{"Alt+p", "Port", "COM 1", DiagramPage},
          Row{"Escape Escape", "", "", DiagramPage}, Row{"Alt+r", "Readings", "", DiagramPage},
          Row{"r", "Reset", "", DiagramPage}, Row{"Enter", "", "", ResetPage}, Row{"Alt+q", "", "", ResetPage},
          Row{"Alt", "File", "", ResetPage}, Row{"Escape", "", "", ResetPage},
          Row{"Alt+s", "Size", "640x480", ResetPage}, Row{"8", "", "", ResetPage}}) {
        std::istringstream keys(row.keys);
        for (std::string key; keys >> key;) {
            const auto letter = static_cast<char16_t>(key.back());
            key == "Escape"  ? press(Qt::Key_Escape)
            : key == "Enter" ? press(Qt::Key_Return)
            : key == "Alt"   ? press(Qt::Key_Alt)
            : key.size() > 1 ? pressAlt(letter)
                             : type(letter);
        }
        settle();
        EXPECT_EQ(lit("selected"), row.item) << row.keys;
        EXPECT_EQ(popup() ? textOf(*popup()->actions().first()) : "", row.firstEntry) << row.keys;
        EXPECT_EQ(AppPage, row.page) << row.keys;
    }
    EXPECT_EQ(lit("highlighted"), "Reset");
    EXPECT_EQ(SizeProfile, 2);
    SendMessageA(MainWindow, WM_COMMAND, IDM_LANGUAGE_RUSSIAN, 0);
    settle();
    pressAlt(u'\u0441');  // Схема and Сброс
    settle();
    EXPECT_EQ(lit("selected"), "Схема");
}

TEST_F(Shell, MenuAndDialogTakeTheChosenPort) {
    startIn("ang", 0);
    inDialog(PortMenu, [] {
        const QComboBox& box = boxOf(portsBox());
        ASSERT_EQ(box.count(), 128);
        for (int row = 0; row < box.count(); ++row) {
            EXPECT_EQ(box.itemText(row), QStringLiteral("COM %1").arg(row + 1));
        }
        const RECT place = placeOf(openDialogWindow());
        EXPECT_NEAR(place.left + place.right, 1280, 1);
        EXPECT_NEAR(place.top + place.bottom, 1024, 1);
        clickOn(GetDlgItem(openDialogWindow(), IDC_CLOSE));
    });
    expectPort("", " ...", 0);
    const auto listShown = [] { return listOpen(portsBox()); };
    inDialog(PortMenu, [] { clickOn(portsBox()); },
             {{"open list", listShown,
               [] {
                   EXPECT_LE(layer::openListView()->height(), 200) << "as high as the template says";
                   clickEntry(127);
               }},
              {"choice", [=] { return !listShown(); }, [] { press(Qt::Key_Return); }}});
    expectPort("\\\\.\\COM128", "10 ...COM 128", 128);
    inDialog(PortMenu, [] { press(Qt::Key_Home); },
             {{"first entry", [] { return boxOf(portsBox()).currentIndex() == 0; }, [] { press(Qt::Key_Escape); }}});
    expectPort("\\\\.\\COM128", "10 ...COM 128", 128);
    for (const int number : {3, 1, 2, 4, 5, 6, 7, 8, 9}) {
        pick(PortMenu, number - 1);
        expectPort("COM" + std::to_string(number) + ":", std::to_string(number) + " ...", number);
    }
}

TEST_F(Shell, AChoiceClosesTheFormerPortAndPollsTheOtherController) {
    startOn(4);
    simulator::Config config;
    config.family = 2;
    HeldController second(*clock, config, 2);
    const auto expectFound = [&](int family) {
        EXPECT_TRUE(pumpUntil([=] { return LinkLost == 0 && ControllerFamily == family; }));
        EXPECT_TRUE(server->isOpen() == (family == 4) && second.isOpen() == (family == 2));
    };
    pick(PortMenu, 1);
    expectFound(2);
    inDialog(PortMenu, [] {
        press(Qt::Key_Home);
        press(Qt::Key_Return);
    });
    expectFound(4);
    pick(PortMenu, 2);
    EXPECT_TRUE(pumpUntil([] { return LinkLost == 1; }));
    EXPECT_FALSE(server->isOpen() || second.isOpen());
}

TEST_F(Shell, OnlyAltAndSlashOpensAboutBeforeAndAfterADialog) {
    startIn("ang");
    for (const int leave : {Qt::Key_Return, Qt::Key_Escape}) {
        type(u'/');
        press(Qt::Key_F4);
        press(Qt::Key_F5, Qt::AltModifier);
        settle();
        EXPECT_EQ(openDialogWindow(), nullptr);
        run({{"Alt+/", always, [] { pressAlt(u'/'); }},
             {"About", [] { return dialogShown() && DialogPause == 1; }, [=] { press(leave); }}});
    }
}

TEST_F(Shell, TextsOfTheDialogsFollowTheLanguageAndFit) {
    startIn("ang");
    for (int language = 0; language < 5; ++language) {
        pick(LanguageMenu, language);
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
