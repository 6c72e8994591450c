// Pages, sizes, languages and the keyboard of the menu bar, as their user works them.
#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <algorithm>
#include <array>
#include <string>

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

constexpr UINT SizeItems[] = {IDM_SIZE_640X480, IDM_SIZE_800X600, IDM_SIZE_1024X768, IDM_SIZE_1280X960,
                              IDM_SIZE_1280X1024};

// In the order of the menu.
struct LanguageItem {
    const char* code;
    UINT item;
    const char* fileMenu;
    const char* ownName;
    int codePage;
};
constexpr LanguageItem LanguageItems[] = {
    {"pol", IDM_LANGUAGE_POLISH, "Plik", "Polski", 1250},   {"ang", IDM_LANGUAGE_ENGLISH, "File", "English", 1250},
    {"rus", IDM_LANGUAGE_RUSSIAN, "Файл", "Русский", 1251}, {"lit", IDM_LANGUAGE_LITHUANIAN, "Failas", "Lietuvu", 1250},
    {"cs", IDM_LANGUAGE_CZECH, "Soubor", "Czesky", 1250},
};

bool has(UINT item, UINT mark) {
    const UINT state = GetMenuState(MainMenu, item, MF_BYCOMMAND);
    EXPECT_NE(state, 0xFFFFFFFFu) << item;
    return (state & mark) != 0;
}

// The sizes that cannot be chosen, one character each.
std::string greySizes() {
    std::string marks;
    for (const UINT item : SizeItems) {
        marks += has(item, MF_GRAYED) ? 'g' : '.';
    }
    return marks;
}

int barPositionOf(int page) {
    const auto* item = std::ranges::find(PageItems, page, &PageItem::page);
    return FirstPageItem + static_cast<int>(item - std::begin(PageItems));
}

std::string sizeText(HWND window) {
    const RECT place = placeOf(window);
    return std::to_string(place.right - place.left) + "x" + std::to_string(place.bottom - place.top);
}

std::string placeText(HWND window) {
    const RECT place = placeOf(window);
    return std::to_string(place.left) + "," + std::to_string(place.top) + " " + sizeText(window);
}

std::string captionOf(const HWND window) {
    return widgetOf(window)->windowTitle().toStdString();
}

std::string slot(size_t line, int codePage = 1250) {
    return layer::decode(LangTable[line].data(), codePage).toStdString();
}

QString buttonText(HWND button) {
    return widgetOf(button)->property("text").toString();
}

// The one page over the main window, highlighted on the bar by its item alone.
void expectShowing(const PageItem& expected) {
    EXPECT_EQ(AppPage, expected.page);
    EXPECT_EQ(captionOf(MainWindow), slot(expected.captionLine));
    EXPECT_FALSE(slot(expected.captionLine).empty());
    const auto& children = layer::find(MainWindow)->children;
    ASSERT_EQ(children.size(), 1u);
    EXPECT_EQ(children[0]->handle, PageWindow);
    EXPECT_TRUE(IsWindowVisible(PageWindow));
    for (const PageItem& item : PageItems) {
        EXPECT_EQ(has(item.item, MF_HILITE), item.page == expected.page) << item.item;
        const QAction& shown = *menuBar().actions().at(barPositionOf(item.page));
        EXPECT_EQ(shown.property("highlighted").toBool(), item.page == expected.page) << textOf(shown);
    }
}

}  // namespace

class Shell : public WindowFixture {
protected:
    void startIn(const char* language) {
        writeIni(1, language);
        start();
        ASSERT_TRUE(pumpUntil([] { return widgetOf(MainWindow)->isActiveWindow(); }));
        settle();
    }
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
    for (int round = 0; round < 2; ++round) {
        for (const int at : {1, 2, 3, 4, 5, 0}) {
            SCOPED_TRACE(at);
            const HWND before = PageWindow;
            clickOnBar(FirstPageItem + at);
            settle();
            EXPECT_FALSE(IsWindow(before));
            expectShowing(PageItems[at]);
            const HWND shown = PageWindow;
            HiliteMenuItem(MainWindow, MainMenu, PageItems[at].item, MF_UNHILITE);
            clickOnBar(FirstPageItem + at);
            settle();
            EXPECT_EQ(PageWindow, shown) << "the showing page is left alone";
            expectShowing(PageItems[at]);
        }
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
        EXPECT_TRUE(has(IDM_OPTIONS, MF_HILITE)) << menu;
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
        for (const Row& row : rows) {
            SCOPED_TRACE(std::to_string(page.page) + " in " + row.place);
            const HWND before = PageWindow;
            chooseSize(row.profile);
            EXPECT_EQ(SizeProfile, row.profile);
            EXPECT_EQ(placeText(MainWindow), row.place);
            EXPECT_EQ(sizeText(PageWindow), page.page == OscilloscopePage ? templateSize : row.size);
            EXPECT_EQ(PageWindow == before, page.page == ResetPage) << "only the Reset page stays";
            for (int profile = 1; profile <= 5; ++profile) {
                EXPECT_EQ(has(SizeItems[profile - 1], MF_CHECKED), profile == row.profile) << profile;
            }
            expectShowing(page);
        }
    }
    // The two pages with a dialog for each size have letters that grow with it.
    for (const int page : {ConfigurationPage, OptionsPage}) {
        goTo(page);
        std::array<int, 5> letters{};
        for (const int profile : {1, 2, 3, 4, 5}) {
            chooseSize(profile);
            letters[static_cast<size_t>(profile - 1)] = layer::find(PageWindow)->font.pixelSize();
        }
        EXPECT_EQ(letters, (std::array{13, 16, 19, 24, 24})) << page;
    }
}

TEST_F(Shell, AGreySizeCannotBeChosen) {
    startIn("ang");
    struct Row {
        int allowed;
        const char* grey;
    };
    for (const Row& row : {Row{1, ".gggg"}, Row{2, "..ggg"}, Row{3, "...gg"}, Row{4, "....g"}, Row{5, "....."}}) {
        EnableSizeMenu(row.allowed);
        EXPECT_EQ(greySizes(), row.grey);
    }
    EnableSizeMenu(2);
    EnableSizeMenu(6);
    EXPECT_EQ(greySizes(), "..ggg") << "a size that is none changes no item";
    EnableSizeMenu(2);
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
        ASSERT_EQ(placeText(MainWindow), "70,80 800x570");
        goTo(page.page);
        EXPECT_EQ(placeText(MainWindow), page.page == DiagramPage ? "240,227 800x570" : "70,80 800x570") << page.page;
    }
}

TEST_F(Shell, EveryLanguageRenewsTextsAndKeepsAllOtherMarks) {
    writeIni(42, "ang");
    start();
    settle();
    EnableSizeMenu(3);
    chooseSize(2);
    std::string formerCaption;
    std::string formerLearn;
    for (const int at : {0, 2, 3, 4, 1}) {
        const LanguageItem& language = LanguageItems[at];
        SCOPED_TRACE(language.code);
        goTo(ReadingsPage);
        chooseLanguage(at);
        EXPECT_EQ(readFile("Tarvex.ini"), std::string("[Ustawienia]\nCommPort= 42\nLanguage= ") + language.code + "\n");
        EXPECT_EQ(captionOf(MainWindow), slot(175, language.codePage));
        EXPECT_EQ(buttonText(GetDlgItem(PageWindow, IDC_LEARN)).toStdString(), slot(33, language.codePage));
        EXPECT_NE(captionOf(MainWindow), formerCaption);
        EXPECT_NE(slot(33), formerLearn);
        formerCaption = captionOf(MainWindow);
        formerLearn = slot(33);
        const QList<QAction*> bar = menuBar().actions();
        EXPECT_EQ(textOf(*bar.at(FileMenu)), language.fileMenu);
        const QList<QAction*> languages = bar.at(LanguageMenu)->menu()->actions();
        EXPECT_EQ(textOf(*languages.at(at)), language.ownName);
        for (const LanguageItem& other : LanguageItems) {
            const bool chosen = other.item == language.item;
            EXPECT_EQ(has(other.item, MF_CHECKED), chosen) << other.code;
            const QImage tag = languages.at(&other - LanguageItems)->icon().pixmap(14, 12).toImage();
            EXPECT_EQ(tag.pixelColor(0, 0), chosen ? QColor(0, 0, 255) : QColor(128, 128, 128)) << other.code;
        }
        EXPECT_EQ(greySizes(), "...gg");
        EXPECT_TRUE(has(IDM_SIZE_800X600, MF_CHECKED));
        EXPECT_TRUE(has(IDM_COM_OTHER, MF_CHECKED));
        EXPECT_EQ(textOf(*bar.at(PortMenu)->menu()->actions().last()), "...COM 42");
        EXPECT_TRUE(has(IDM_READINGS, MF_HILITE));
        for (const PageItem& page : PageItems) {
            goTo(page.page);
            EXPECT_EQ(captionOf(MainWindow), slot(page.captionLine, language.codePage));
            const HWND before = PageWindow;
            chooseLanguage(at);
            EXPECT_EQ(PageWindow == before, page.page == ResetPage) << page.page;
            EXPECT_EQ(captionOf(MainWindow), slot(page.captionLine, language.codePage));
        }
    }
}

TEST_F(Shell, TheFontsFollowTheLanguage) {
    startIn("pol");
    const auto drawn = [](HFONT font) {
        const HDC dc = GetDC(PageWindow);
        SelectObject(dc, font);
        ExtTextOutA(dc, 20, 20, 0, nullptr, "\xCF\xE6", 2, nullptr);
        ReleaseDC(PageWindow, dc);
        return snapshot(PageWindow, {20, 20, 120, 90});
    };
    const auto large = drawn(LargeFont);
    const auto small = drawn(SmallFont);
    EXPECT_NE(large, small);
    for (const int at : {1, 2, 4, 2, 3, 0}) {
        chooseLanguage(at);
        const bool cyrillic = LanguageItems[at].codePage == 1251;
        EXPECT_EQ(drawn(LargeFont) != large, cyrillic) << LanguageItems[at].code;
        EXPECT_EQ(drawn(SmallFont) != small, cyrillic) << LanguageItems[at].code;
    }
}

TEST_F(Shell, ALanguageWhoseFileIsGoneOrCutLeavesTheFormerTexts) {
    std::filesystem::remove(folder / "Lang");
    std::filesystem::copy(LANGUAGE_DIRECTORY, folder / "Lang");
    startIn("ang");
    const std::string english = captionOf(MainWindow);
    std::filesystem::remove(folder / "Lang/Tarvex_lang.pol");
    chooseLanguage(0);
    EXPECT_EQ(captionOf(MainWindow), english);
    EXPECT_EQ(textOf(*menuBar().actions().first()), "Plik");
    EXPECT_STREQ(LangCode.data(), "pol");
    writeFile("Lang/Tarvex_lang.cs", "a=first\nb=second\n");
    chooseLanguage(4);
    EXPECT_EQ(slot(1), "second");
    EXPECT_EQ(captionOf(MainWindow), english);
    EXPECT_EQ(textOf(*menuBar().actions().first()), "Soubor");
    chooseLanguage(3);
    EXPECT_NE(captionOf(MainWindow), english);
}

TEST_F(Shell, AnUnknownLanguageIsKeptUntilAnotherIsChosen) {
    startIn("deu");
    EXPECT_EQ(textOf(*menuBar().actions().first()), "Plik");
    EXPECT_EQ(captionOf(MainWindow), "");
    EXPECT_TRUE(has(IDM_LANGUAGE_POLISH, MF_CHECKED));
    choose(PortMenu, 3);
    settle();
    EXPECT_EQ(readFile("Tarvex.ini"), "[Ustawienia]\nCommPort= 4\nLanguage= deu\n");
    chooseLanguage(1);
    EXPECT_EQ(readFile("Tarvex.ini"), "[Ustawienia]\nCommPort= 4\nLanguage= ang\n");
    EXPECT_EQ(captionOf(MainWindow), slot(175));
    EXPECT_FALSE(slot(175).empty());
}

TEST_F(Shell, AltAndALetterChooseOnTheBar) {
    startIn("ang");
    // Reset and Readings share their first letter, Port and Diagram have one of their own.
    pressAlt(u'd');
    settle();
    EXPECT_EQ(AppPage, DiagramPage);
    pressAlt(u'p');
    settle();
    ASSERT_TRUE(popup());
    EXPECT_EQ(textOf(*popup()->actions().first()), "COM 1");
    press(Qt::Key_Escape);
    press(Qt::Key_Escape);
    settle();
    ASSERT_FALSE(popup());
    ASSERT_FALSE(menuBar().activeAction());

    pressAlt(u'r');
    settle();
    ASSERT_TRUE(menuBar().activeAction());
    EXPECT_EQ(textOf(*menuBar().activeAction()), "Readings");
    type(u'r');
    settle();
    EXPECT_EQ(textOf(*menuBar().activeAction()), "Reset");
    EXPECT_EQ(AppPage, DiagramPage) << "highlighted, not chosen";
    press(Qt::Key_Return);
    settle();
    EXPECT_EQ(AppPage, ResetPage);
    pressAlt(u'q');
    settle();
    EXPECT_EQ(AppPage, ResetPage);
    EXPECT_FALSE(popup());
}

TEST_F(Shell, AltAloneLeadsToTheBarAndEscapeBack) {
    startIn("ang");
    SendMessageA(MainWindow, WM_COMMAND, IDM_CONFIGURATION, 0);
    settle();
    press(Qt::Key_Alt);
    settle();
    ASSERT_TRUE(menuBar().activeAction());
    EXPECT_EQ(textOf(*menuBar().activeAction()), "File");
    for (int steps = 0; steps < FirstPageItem + 2; ++steps) {
        press(Qt::Key_Right);
        settle();
    }
    EXPECT_EQ(textOf(*menuBar().activeAction()), "Options");
    press(Qt::Key_Return);
    settle();
    EXPECT_EQ(AppPage, OptionsPage);

    press(Qt::Key_Alt);
    settle();
    press(Qt::Key_Escape);
    settle();
    EXPECT_FALSE(menuBar().activeAction());
    EXPECT_EQ(AppPage, OptionsPage);

    // In an open popup a letter chooses its item, and arrows and Enter do.
    pressAlt(u's');
    settle();
    ASSERT_TRUE(popup());
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
    EXPECT_TRUE(has(IDM_OPTIONS, MF_HILITE));
}

TEST_F(Shell, LettersOfTheBarFollowTheLanguage) {
    startIn("rus");
    pressAlt(u'\u0441');  // Схема and Сброс
    settle();
    ASSERT_TRUE(menuBar().activeAction());
    EXPECT_EQ(textOf(*menuBar().activeAction()), "Схема");
    EXPECT_EQ(AppPage, ReadingsPage);
    press(Qt::Key_Escape);
    settle();
    pressAlt(u'\u044F');  // Язык
    settle();
    ASSERT_TRUE(popup());
    EXPECT_EQ(textOf(*popup()->actions().at(2)), "Русский");
    press(Qt::Key_Escape);
}
