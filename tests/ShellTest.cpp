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

// In the order of the bar and of their captions' lines.
struct PageItem {
    UINT item;
    int page;
};
constexpr PageItem PageItems[] = {{IDM_READINGS, ReadingsPage}, {IDM_CONFIGURATION, ConfigurationPage},
                                  {IDM_OPTIONS, OptionsPage},   {IDM_DIAGRAM, DiagramPage},
                                  {IDM_RESET, ResetPage},       {IDM_OSCILLOSCOPE, OscilloscopePage}};
constexpr size_t FirstCaptionLine = 175;

// In the order of the menu: the code and the first item of the bar.
constexpr const char* Languages[][2] = {
    {"pol", "Plik"}, {"ang", "File"}, {"rus", "Файл"}, {"lit", "Failas"}, {"cs", "Soubor"}};
constexpr int Russian = 2;

// The highlighted items of the bar.
std::string highlighted() {
    std::string texts;
    for (const QAction* item : menuBar().actions()) {
        texts += item->property("highlighted").toBool() ? textOf(*item) : "";
    }
    return texts;
}

// The item of the bar that the keyboard is at.
std::string lit() {
    settle();
    const QList<QAction*> items = menuBar().actions();
    const auto item =
        std::ranges::find_if(items, [](const QAction* one) { return one->property("selected").toBool(); });
    return item == items.end() ? "" : textOf(**item);
}

int barPositionOf(int page) {
    const auto* item = std::ranges::find(PageItems, page, &PageItem::page);
    return FirstPageItem + static_cast<int>(item - std::begin(PageItems));
}

// The one page over the main window, highlighted on the bar by its item alone.
void expectShowing(const PageItem& expected) {
    EXPECT_EQ(AppPage, expected.page);
    EXPECT_EQ(textOf(MainWindow), line(FirstCaptionLine + static_cast<size_t>(&expected - PageItems)));
    EXPECT_NE(textOf(MainWindow), "");
    const auto& children = layer::find(MainWindow)->children;
    ASSERT_EQ(children.size(), 1u);
    EXPECT_EQ(children[0]->handle, PageWindow);
    EXPECT_TRUE(IsWindowVisible(PageWindow));
    EXPECT_EQ(highlighted(), textOf(*menuBar().actions().at(barPositionOf(expected.page))));
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
        EXPECT_EQ(highlighted(), "") << "the bar still has the keyboard";
        press(Qt::Key_Escape);
        settle();
        EXPECT_EQ(highlighted(), "Options") << menu;
    }
}

TEST_F(Shell, EverySizeIsTakenByTheWindowAndTheShowingPage) {
    startIn("ang");
    const std::pair<int, std::string> rows[] = {{1, "320,287 640x450"},
                                                {4, "0,0 1280x930"},
                                                {3, "128,143 1024x738"},
                                                {2, "240,227 800x570"},
                                                {5, "0,0 1280x994"}};
    const auto sizeOf = [](const std::string& place) { return place.substr(place.find(' ')); };
    for (const PageItem& page : PageItems) {
        goTo(page.page);
        const std::string ofTemplate = text(placeOf(PageWindow));
        std::array<int, 5> letters{};
        for (const auto& [profile, place] : rows) {
            SCOPED_TRACE(std::to_string(page.page) + " in " + place);
            const HWND former = PageWindow;
            chooseSize(profile);
            EXPECT_EQ(SizeProfile, profile);
            EXPECT_EQ(text(placeOf(MainWindow)), place);
            EXPECT_EQ(sizeOf(text(placeOf(PageWindow))), sizeOf(page.page == OscilloscopePage ? ofTemplate : place));
            EXPECT_EQ(PageWindow == former, page.page == ResetPage) << "only the Reset page stays";
            EXPECT_EQ(marked(SizeItems, MF_CHECKED), std::to_string(profile));
            expectShowing(page);
            letters[static_cast<size_t>(profile - 1)] = layer::find(PageWindow)->font.pixelSize();
        }
        // The two pages with a dialog for each size have letters that grow with it.
        if (page.page == ConfigurationPage || page.page == OptionsPage) {
            EXPECT_EQ(letters, (std::array{13, 16, 19, 24, 24})) << page.page;
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

TEST_F(Shell, AGreySizeCannotBeChosen) {
    startIn("ang");
    for (const auto& [allowed, grey] :
         {std::pair{1, "2 3 4 5"}, {3, "4 5"}, {4, "5"}, {5, ""}, {2, "3 4 5"}, {6, "3 4 5"}}) {
        EnableSizeMenu(allowed);
        EXPECT_EQ(marked(SizeItems, MF_GRAYED), grey) << allowed;
    }
    chooseSize(2);
    chooseSize(3);
    EXPECT_EQ(SizeProfile, 2);
    press(Qt::Key_Escape);
    settle();
    ASSERT_FALSE(popup());
    chooseSize(1);
    EXPECT_EQ(SizeProfile, 1);
}

TEST_F(Shell, EveryPageItemOnTheBarShowsItsPageAndOnlyTheDiagramPutsADraggedWindowBack) {
    startIn("ang");
    expectShowing(PageItems[0]);
    chooseSize(2);
    for (const int at : {1, 2, 3, 4, 5, 0, 3}) {
        SCOPED_TRACE(at);
        const PageItem& page = PageItems[at];
        widgetOf(MainWindow)->move(70, 80);
        settle();
        const HWND former = PageWindow;
        goTo(page.page);
        EXPECT_FALSE(IsWindow(former));
        EXPECT_EQ(text(placeOf(MainWindow)), page.page == DiagramPage ? "240,227 800x570" : "70,80 800x570");
        const HWND shown = PageWindow;
        HiliteMenuItem(MainWindow, MainMenu, page.item, MF_UNHILITE);
        goTo(page.page);
        EXPECT_EQ(PageWindow, shown) << "the showing page is left alone";
        expectShowing(page);
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
    std::string formerCaption;
    for (const int at : {0, 2, 3, 4, 1}) {
        const auto& [code, fileMenu] = Languages[at];
        SCOPED_TRACE(code);
        goTo(ReadingsPage);
        chooseLanguage(at);
        EXPECT_EQ(readFile("Tarvex.ini"), std::string("[Ustawienia]\nCommPort= 42\nLanguage= ") + code + "\n");
        EXPECT_EQ(textOf(GetDlgItem(PageWindow, IDC_LEARN)), line(33));
        EXPECT_NE(textOf(MainWindow), std::exchange(formerCaption, textOf(MainWindow)));
        const QList<QAction*> bar = menuBar().actions();
        EXPECT_EQ(textOf(*bar.at(FileMenu)), fileMenu);
        const QList<QAction*> languages = bar.at(LanguageMenu)->menu()->actions();
        EXPECT_EQ(marked(LanguageItems, MF_CHECKED), std::to_string(at + 1));
        for (int other = 0; other < 5; ++other) {
            const QImage tag = languages.at(other)->icon().pixmap(14, 12).toImage();
            EXPECT_EQ(tag.pixelColor(0, 0), other == at ? QColor(0, 0, 255) : QColor(128, 128, 128)) << other;
        }
        EXPECT_EQ(marked(SizeItems, MF_GRAYED) + " " + marked(SizeItems, MF_CHECKED), "4 5 2");
        EXPECT_EQ(marked(PortItems, MF_CHECKED), "10");
        EXPECT_EQ(textOf(*bar.at(PortMenu)->menu()->actions().last()), "...COM 42");
        EXPECT_EQ(drawn() != latin, at == Russian);
        for (const PageItem& page : PageItems) {
            goTo(page.page);
            const HWND before = PageWindow;
            chooseLanguage(at);
            EXPECT_EQ(PageWindow == before, page.page == ResetPage) << page.page;
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
    EXPECT_STREQ(LangCode.data(), "pol");
}

TEST_F(Shell, AltAndLettersChooseOnTheBarAndEscapeLeavesIt) {
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
    press(Qt::Key_Alt);
    expectAt("File", "", ResetPage);
    press(Qt::Key_Escape);
    expectAt("", "", ResetPage);
    EXPECT_EQ(highlighted(), "Reset");
    // In an open popup a letter chooses its item.
    pressAlt(u's');
    expectAt("Size", "640x480", ResetPage);
    type(u'8');
    expectAt("", "", ResetPage);
    EXPECT_EQ(SizeProfile, 2);
    SendMessageA(MainWindow, WM_COMMAND, IDM_LANGUAGE_RUSSIAN, 0);
    settle();
    pressAlt(u'\u0441');  // Схема and Сброс
    expectAt("Схема", "", ResetPage);
    press(Qt::Key_Escape);
}
