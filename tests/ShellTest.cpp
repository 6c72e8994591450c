// Pages, sizes, languages and the keyboard of the menu bar, as their user works them.
#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <sstream>
#include <string>
#include <utility>

#include "User.h"
#include "platform/linux/Layer.h"
#include "resources/Ids.h"
#include "shell/AppState.h"
#include "shell/Language.h"
#include "shell/SizeProfiles.h"

namespace {

// In the order of the bar and of their captions' lines.
constexpr int BarPages[] = {ReadingsPage, ConfigurationPage, OptionsPage, DiagramPage, ResetPage, OscilloscopePage};
constexpr size_t FirstCaptionLine = 175;

// The items of the bar that are lit in this way.
std::string lit(const char* way) {
    std::string texts;
    for (const QAction* item : menuBar().actions()) {
        texts += item->property(way).toBool() ? textOf(*item) : "";
    }
    return texts;
}

void goTo(int position) {
    clickOnBar(FirstPageItem + position);
    settle();
    ASSERT_EQ(AppPage, BarPages[position]);
}

void chooseSize(int profile) {
    choose(SizeMenu, profile - 1);
    settle();
}

void chooseLanguage(int row) {
    choose(LanguageMenu, row);
    settle();
}

// The one page over the main window, highlighted on the bar by its item alone.
void expectShowing(int position) {
    EXPECT_EQ(AppPage, BarPages[position]);
    EXPECT_EQ(textOf(MainWindow), line(FirstCaptionLine + static_cast<size_t>(position)));
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

}  // namespace

using Shell = WindowFixture;

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
            chooseSize(row.profile);
            EXPECT_EQ(SizeProfile, row.profile);
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

TEST_F(Shell, EveryPageItemOnTheBarShowsItsPageAndOnlyTheDiagramPutsADraggedWindowBack) {
    startIn("ang");
    expectShowing(0);
    chooseSize(2);
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
    chooseSize(2);
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
        chooseLanguage(at);
        EXPECT_EQ(readFile("Tarvex.ini"), std::string("[Ustawienia]\nCommPort= 42\nLanguage= ") + code + "\n");
        EXPECT_EQ(textOf(GetDlgItem(PageWindow, IDC_LEARN)), line(33));
        EXPECT_NE(textOf(MainWindow), std::exchange(formerCaption, textOf(MainWindow)));
        const QList<QAction*> bar = menuBar().actions();
        EXPECT_EQ(textOf(*bar.at(FileMenu)), fileMenu);
        EXPECT_EQ(textOf(*bar.at(PortMenu)->menu()->actions().last()), "...COM 42");
        EXPECT_EQ(marked(LanguageItems, MF_CHECKED), std::to_string(at + 1));
        EXPECT_EQ(marked(SizeItems, MF_GRAYED) + " " + marked(SizeItems, MF_CHECKED), "4 5 2");
        EXPECT_EQ(marked(PortItems, MF_CHECKED), "10");
        for (int other = 0; other < 5; ++other) {
            const QImage tag = bar.at(LanguageMenu)->menu()->actions().at(other)->icon().pixmap(14, 12).toImage();
            EXPECT_EQ(tag.pixelColor(0, 0), other == at ? QColor(0, 0, 255) : QColor(128, 128, 128)) << other;
        }
        EXPECT_EQ(drawn() != latin, std::string(code) == "rus");
        for (int page = 0; page < 6; ++page) {
            goTo(page);
            const HWND before = PageWindow;
            chooseLanguage(at);
            EXPECT_EQ(PageWindow == before, AppPage == ResetPage) << page;
            expectShowing(page);
        }
    }
}

TEST_F(Shell, ALanguageWhoseFileIsGoneOrUnknownLeavesTheFormerTexts) {
    std::filesystem::remove(folder / "Lang");
    std::filesystem::copy(LANGUAGE_DIRECTORY, folder / "Lang");
    startIn("deu");
    EXPECT_EQ(textOf(*menuBar().actions().first()), "Plik");
    EXPECT_EQ(textOf(MainWindow), "");
    EXPECT_EQ(marked(LanguageItems, MF_CHECKED), "1");
    choose(PortMenu, 3);
    settle();
    EXPECT_EQ(readFile("Tarvex.ini"), "[Ustawienia]\nCommPort= 4\nLanguage= deu\n") << "kept until another is chosen";
    chooseLanguage(1);
    EXPECT_EQ(readFile("Tarvex.ini"), "[Ustawienia]\nCommPort= 4\nLanguage= ang\n");
    const std::string english = textOf(MainWindow);
    EXPECT_NE(english, "");
    std::filesystem::remove(folder / "Lang/Tarvex_lang.pol");
    chooseLanguage(0);
    EXPECT_EQ(textOf(MainWindow), english);
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
    press(Qt::Key_Escape);
}
