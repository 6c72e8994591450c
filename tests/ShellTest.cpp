// Pages, sizes, languages and the keyboard of the menu bar, as their user works them.
#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "User.h"
#include "platform/linux/Layer.h"
#include "resources/Ids.h"
#include "shell/AppState.h"
#include "shell/Language.h"
#include "shell/SizeProfiles.h"

namespace {

// In the order of the bar.
struct PageItem {
    UINT item;
    int page;
    size_t captionLine;
};
constexpr PageItem PageItems[] = {
    {IDM_READINGS, ReadingsPage, 175}, {IDM_CONFIGURATION, ConfigurationPage, 176},
    {IDM_OPTIONS, OptionsPage, 177},   {IDM_DIAGRAM, DiagramPage, 178},
    {IDM_RESET, ResetPage, 179},       {IDM_OSCILLOSCOPE, OscilloscopePage, 180},
};

// In the order of the menu.
struct LanguageRow {
    const char *code, *fileMenu, *ownName;
    bool cyrillic;
};
constexpr LanguageRow Languages[] = {{"pol", "Plik", "Polski", false},
                                     {"ang", "File", "English", false},
                                     {"rus", "Файл", "Русский", true},
                                     {"lit", "Failas", "Lietuvu", false},
                                     {"cs", "Soubor", "Czesky", false}};

bool isLit(UINT item) {
    return (GetMenuState(MainMenu, item, MF_BYCOMMAND) & MF_HILITE) != 0;
}

// The item of the bar that the keyboard is at.
std::string lit() {
    settle();
    return menuBar().activeAction() ? textOf(*menuBar().activeAction()) : "";
}

int barPositionOf(int page) {
    const auto* item = std::ranges::find(PageItems, page, &PageItem::page);
    return FirstPageItem + static_cast<int>(item - std::begin(PageItems));
}

std::string sizeText(HWND window) {
    const std::string place = text(placeOf(window));
    return place.substr(place.find(' ') + 1);
}

// The one page over the main window, highlighted on the bar by its item alone.
void expectShowing(const PageItem& expected) {
    EXPECT_EQ(AppPage, expected.page);
    EXPECT_EQ(textOf(MainWindow), line(expected.captionLine));
    EXPECT_FALSE(line(expected.captionLine).empty());
    const auto& children = layer::find(MainWindow)->children;
    ASSERT_EQ(children.size(), 1u);
    EXPECT_EQ(children[0]->handle, PageWindow);
    EXPECT_TRUE(IsWindowVisible(PageWindow));
    for (const PageItem& item : PageItems) {
        EXPECT_EQ(isLit(item.item), item.page == expected.page) << item.item;
        const QAction& shown = *menuBar().actions().at(barPositionOf(item.page));
        EXPECT_EQ(shown.property("highlighted").toBool(), item.page == expected.page) << textOf(shown);
    }
}

}  // namespace

class Shell : public WindowFixture {
protected:
    static void goTo(int page) {
        clickOnBar(barPositionOf(page));
        settle();
        ASSERT_EQ(AppPage, page);
    }
    static void chooseSize(int profile) {
        choose(SizeMenu, profile - 1);
        settle();
    }
    static void chooseLanguage(int row) {
        choose(LanguageMenu, row);
        settle();
    }
};

TEST_F(Shell, EveryPageItemOnTheBarShowsItsPage) {
    startIn("ang");
    expectShowing(PageItems[0]);
    for (const int at : {1, 2, 3, 4, 5, 0, 3}) {
        SCOPED_TRACE(at);
        const HWND before = PageWindow;
        goTo(PageItems[at].page);
        EXPECT_FALSE(IsWindow(before));
        expectShowing(PageItems[at]);
        const HWND shown = PageWindow;
        HiliteMenuItem(MainWindow, MainMenu, PageItems[at].item, MF_UNHILITE);
        goTo(PageItems[at].page);
        EXPECT_EQ(PageWindow, shown) << "the showing page is left alone";
        expectShowing(PageItems[at]);
    }
}

TEST_F(Shell, TheHighlightComesBackWhenAMenuCloses) {
    startIn("ang");
    goTo(OptionsPage);
    for (const int menu : {FileMenu, PortMenu, SizeMenu, LanguageMenu, InformationMenu}) {
        clickOnBar(menu);
        ASSERT_TRUE(popup()) << menu;
        settle();
        HiliteMenuItem(MainWindow, MainMenu, IDM_OPTIONS, MF_UNHILITE);
        press(Qt::Key_Escape);
        settle();
        EXPECT_FALSE(popup());
        EXPECT_TRUE(isLit(IDM_OPTIONS)) << menu;
    }
}

TEST_F(Shell, EverySizeIsTakenByTheWindowAndTheShowingPage) {
    startIn("ang");
    struct Row {
        int profile;
        const char* place;
        const char* size;
    };
    const Row rows[] = {{1, "320,287 640x450", "640x450"},
                        {4, "0,0 1280x930", "1280x930"},
                        {3, "128,143 1024x738", "1024x738"},
                        {2, "240,227 800x570", "800x570"},
                        {5, "0,0 1280x994", "1280x994"}};
    for (const PageItem& page : PageItems) {
        goTo(page.page);
        const std::string templateSize = sizeText(PageWindow);
        std::array<int, 5> letters{};
        for (const Row& row : rows) {
            SCOPED_TRACE(std::to_string(page.page) + " in " + row.place);
            const HWND before = PageWindow;
            chooseSize(row.profile);
            EXPECT_EQ(SizeProfile, row.profile);
            EXPECT_EQ(text(placeOf(MainWindow)), row.place);
            EXPECT_EQ(sizeText(PageWindow), page.page == OscilloscopePage ? templateSize : row.size);
            EXPECT_EQ(PageWindow == before, page.page == ResetPage) << "only the Reset page stays";
            EXPECT_EQ(marked(SizeItems, MF_CHECKED), std::to_string(row.profile));
            expectShowing(page);
            letters[static_cast<size_t>(row.profile - 1)] = layer::find(PageWindow)->font.pixelSize();
        }
        // The two pages with a dialog for each size have letters that grow with it.
        if (page.page == ConfigurationPage || page.page == OptionsPage) {
            EXPECT_EQ(letters, (std::array{13, 16, 19, 24, 24})) << page.page;
        }
    }
}

TEST_F(Shell, AGreySizeCannotBeChosen) {
    startIn("ang");
    for (const auto& [allowed, grey] :
         {std::pair{1, "2 3 4 5"}, {3, "4 5"}, {4, "5"}, {5, ""}, {2, "3 4 5"}, {6, "3 4 5"}}) {
        EnableSizeMenu(allowed);
        EXPECT_EQ(marked(SizeItems, MF_GRAYED), grey) << allowed;
    }
    chooseSize(2);
    EXPECT_EQ(SizeProfile, 2);
    for (const int grey : {3, 4, 5}) {
        chooseSize(grey);
        EXPECT_EQ(SizeProfile, 2) << grey;
        press(Qt::Key_Escape);
        settle();
        ASSERT_FALSE(popup());
    }
    chooseSize(1);
    EXPECT_EQ(SizeProfile, 1);
}

TEST_F(Shell, OnlyTheDiagramPutsADraggedWindowBack) {
    startIn("ang");
    chooseSize(2);
    for (const PageItem& page : PageItems) {
        if (page.page == AppPage) {
            continue;
        }
        widgetOf(MainWindow)->move(70, 80);
        settle();
        ASSERT_EQ(text(placeOf(MainWindow)), "70,80 800x570");
        goTo(page.page);
        EXPECT_EQ(text(placeOf(MainWindow)), page.page == DiagramPage ? "240,227 800x570" : "70,80 800x570")
            << page.page;
    }
}

TEST_F(Shell, EveryLanguageRenewsTextsAndKeepsAllOtherMarks) {
    startIn("ang", 42);
    EnableSizeMenu(3);
    chooseSize(2);
    const auto drawn = [](HFONT font) {
        const HDC dc = GetDC(PageWindow);
        SelectObject(dc, font);
        ExtTextOutA(dc, 20, 20, 0, nullptr, "\xCF\xE6", 2, nullptr);
        ReleaseDC(PageWindow, dc);
        return snapshot(PageWindow, {20, 20, 120, 90});
    };
    const auto large = drawn(LargeFont);
    const auto small = drawn(SmallFont);
    std::string formerCaption;
    for (const int at : {0, 2, 3, 4, 1}) {
        const LanguageRow& language = Languages[at];
        SCOPED_TRACE(language.code);
        goTo(ReadingsPage);
        chooseLanguage(at);
        EXPECT_EQ(readFile("Tarvex.ini"), std::string("[Ustawienia]\nCommPort= 42\nLanguage= ") + language.code + "\n");
        EXPECT_EQ(textOf(GetDlgItem(PageWindow, IDC_LEARN)), line(33));
        EXPECT_NE(textOf(MainWindow), std::exchange(formerCaption, textOf(MainWindow)));
        const QList<QAction*> bar = menuBar().actions();
        EXPECT_EQ(textOf(*bar.at(FileMenu)), language.fileMenu);
        const QList<QAction*> languages = bar.at(LanguageMenu)->menu()->actions();
        EXPECT_EQ(textOf(*languages.at(at)), language.ownName);
        EXPECT_EQ(marked(LanguageItems, MF_CHECKED), std::to_string(at + 1));
        for (int other = 0; other < 5; ++other) {
            const QImage tag = languages.at(other)->icon().pixmap(14, 12).toImage();
            EXPECT_EQ(tag.pixelColor(0, 0), other == at ? QColor(0, 0, 255) : QColor(128, 128, 128)) << other;
        }
        EXPECT_EQ(marked(SizeItems, MF_GRAYED) + " " + marked(SizeItems, MF_CHECKED), "4 5 2");
        EXPECT_EQ(marked(PortItems, MF_CHECKED), "10");
        EXPECT_EQ(textOf(*bar.at(PortMenu)->menu()->actions().last()), "...COM 42");
        EXPECT_EQ(drawn(LargeFont) != large, language.cyrillic);
        EXPECT_EQ(drawn(SmallFont) != small, language.cyrillic);
        for (const PageItem& page : PageItems) {
            goTo(page.page);
            const HWND before = PageWindow;
            chooseLanguage(at);
            EXPECT_EQ(PageWindow == before, page.page == ResetPage) << page.page;
            expectShowing(page);
        }
    }
}

TEST_F(Shell, ALanguageWhoseFileIsGoneCutOrUnknownLeavesTheFormerTexts) {
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
    EXPECT_STREQ(LangCode.data(), "pol");
    writeFile("Lang/Tarvex_lang.cs", "a=first\nb=second\n");
    chooseLanguage(4);
    EXPECT_EQ(line(1), "second");
    EXPECT_EQ(textOf(MainWindow), english);
    EXPECT_EQ(textOf(*menuBar().actions().first()), "Soubor");
    chooseLanguage(3);
    EXPECT_NE(textOf(MainWindow), english);
}

TEST_F(Shell, AltAndALetterChooseOnTheBar) {
    startIn("ang");
    // What the keyboard is at, the first item of the open popup, the page.
    const auto expectAt = [](const std::string& item, const std::string& open, int page) {
        EXPECT_EQ(lit(), item);
        EXPECT_EQ(popup() ? textOf(*popup()->actions().first()) : "", open) << item;
        EXPECT_EQ(AppPage, page) << item;
    };
    // Reset and Readings share their first letter, Port and Diagram have one of their own.
    pressAlt(u'd');
    expectAt("", "", DiagramPage);
    pressAlt(u'p');
    expectAt("Port", "COM 1", DiagramPage);
    press(Qt::Key_Escape);
    press(Qt::Key_Escape);
    expectAt("", "", DiagramPage);
    pressAlt(u'r');
    expectAt("Readings", "", DiagramPage);
    type(u'r');
    expectAt("Reset", "", DiagramPage);
    press(Qt::Key_Return);
    expectAt("", "", ResetPage);
    pressAlt(u'q');
    expectAt("", "", ResetPage);
    SendMessageA(MainWindow, WM_COMMAND, IDM_LANGUAGE_RUSSIAN, 0);
    settle();
    pressAlt(u'\u0441');  // Схема and Сброс
    expectAt("Схема", "", ResetPage);
    press(Qt::Key_Escape);
    settle();
    pressAlt(u'\u044F');
    expectAt("Язык", "Польский", ResetPage);
    press(Qt::Key_Escape);
}

TEST_F(Shell, AltAloneLeadsToTheBarAndEscapeBack) {
    startIn("ang");
    SendMessageA(MainWindow, WM_COMMAND, IDM_CONFIGURATION, 0);
    settle();
    press(Qt::Key_Alt);
    EXPECT_EQ(lit(), "File");
    for (int steps = 0; steps < FirstPageItem + 2; ++steps) {
        press(Qt::Key_Right);
        settle();
    }
    EXPECT_EQ(lit(), "Options");
    press(Qt::Key_Return);
    settle();
    EXPECT_EQ(AppPage, OptionsPage);
    press(Qt::Key_Alt);
    EXPECT_EQ(lit(), "File");
    press(Qt::Key_Escape);
    EXPECT_EQ(lit(), "");
    EXPECT_EQ(AppPage, OptionsPage);

    // In an open popup a letter chooses its item, and arrows and Enter do.
    pressAlt(u's');
    settle();
    type(u'8');
    settle();
    EXPECT_EQ(SizeProfile, 2);
    EXPECT_FALSE(popup());
    pressAlt(u's');
    settle();
    ASSERT_TRUE(popup());
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    settle();
    EXPECT_EQ(SizeProfile, 3) << "the letter has highlighted the first item";
    EXPECT_TRUE(isLit(IDM_OPTIONS));
}
