// The program from its start to its end: ini file, language files, sizes, the window itself.
#include <QWidget>
#include <algorithm>
#include <map>
#include <string>

#include "User.h"
#include "link/Link.h"
#include "resources/Ids.h"
#include "shell/AppState.h"
#include "shell/Ini.h"
#include "shell/Language.h"
#include "shell/MainWindow.h"
#include "shell/SizeProfiles.h"

using MainWindowStart = WindowFixture;

TEST_F(MainWindowStart, WithoutAnIniUsesTheDefaultsAndWritesThemIfItCan) {
    for (const bool writable : {false, true}) {
        SCOPED_TRACE(writable);
        writable ? std::filesystem::remove(folder / "Tarvex.ini")
                 : std::filesystem::create_directory(folder / "Tarvex.ini");
        start();
        settle();
        EXPECT_EQ(readFile("Tarvex.ini"), writable ? "[Ustawienia]\nCommPort= 1\nLanguage= pol\n" : "");
        EXPECT_STREQ(PortName, "\\\\.\\COM1");
        EXPECT_EQ(marked(LanguageItems, MF_CHECKED) + marked(PortItems, MF_CHECKED) + marked(SizeItems, MF_CHECKED),
                  "115");
        EXPECT_EQ(marked(SizeItems, MF_GRAYED), "");
        EXPECT_EQ(textOf(MainWindow), line(175));
        EXPECT_EQ(text(placeOf(MainWindow)), "0,0 1280x994");
        choose(PortMenu, 4);
        settle();
        EXPECT_STREQ(PortName, "COM5:");
        choose(LanguageMenu, 2);
        settle();
        EXPECT_EQ(readFile("Tarvex.ini"), writable ? "[Ustawienia]\nCommPort= 5\nLanguage= rus\n" : "");
        EXPECT_STREQ(LangCode.data(), "rus");
        closeProgram();
    }
}

TEST_F(MainWindowStart, ReadsTheIniByTheOrderOfItsItems) {
    struct Row {
        const char* what;
        std::string ini;
        unsigned port;
        std::string language;
        int languageItem = 1;
    };
    const Row rows[] = {
        {"as written", "[Ustawienia]\nCommPort= 9\nLanguage= ang\n", 9, "ang", 2},
        {"CR LF", "[Ustawienia]\r\nCommPort= 2\r\nLanguage= cs\r\n", 2, "cs", 5},
        {"one line of other names", "x y 128 z rus", 128, "rus", 3},
        {"empty", "", 0, ""},
        {"no language", "[Ustawienia]\nCommPort= 10\nLanguage=\n", 10, "Language="},
        {"port 129", "[U]\nC 129\nL lit\n", 0, "lit", 4},
        {"port 2 to the 32 and 1", "[U]\nC 4294967297\nL ang\n", 0, "ang", 2},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        writeFile("Tarvex.ini", row.ini);
        start();
        EXPECT_TRUE(pumpUntil([] { return ActiveTimerPeriod == LostLinkPeriod; }));
        EXPECT_EQ(page(0, 0), Grey);
        EXPECT_EQ(redInRow(1) > 20, row.languageItem != 1) << "the lost link, told in a language that has its file";
        EXPECT_EQ(PortName, row.port ? "\\\\.\\COM" + std::to_string(row.port) : "");
        EXPECT_EQ(LangCode.data(), row.language);
        EXPECT_EQ(marked(LanguageItems, MF_CHECKED), std::to_string(row.languageItem));
        EXPECT_EQ(marked(PortItems, MF_CHECKED), row.port ? std::to_string(std::min(row.port, 10u)) : "");
        EXPECT_EQ(readFile("Tarvex.ini"), row.ini) << "reading writes nothing";
        WriteIni();
        EXPECT_EQ(readFile("Tarvex.ini"),
                  "[Ustawienia]\nCommPort= " + std::to_string(row.port) + "\nLanguage= " + row.language + "\n");
        EXPECT_EQ(closeProgram(), 0);
    }
}

// What a text may be otherwise is in the corpus of the readers.
TEST_F(MainWindowStart, ReadsTheLanguageFileWhereItStartedAndOddLinesByTheirOnlyRule) {
    std::filesystem::remove(folder / "Lang");
    std::filesystem::create_directory(folder / "Lang");
    startIn("own");
    writeFile("Lang/Tarvex_lang.own", "a=\nb=y\nc=\nd\ne=z\rx\nf=");
    std::filesystem::current_path("/");
    ReadLanguageFile();
    EXPECT_EQ(std::filesystem::current_path(), folder);
    const std::map<size_t, std::string> filled = {{0, "y"}, {1, "\nd"}, {2, "z\rx"}};
    for (size_t slot = 0; slot < LangTable.size(); ++slot) {
        EXPECT_EQ(LangTable[slot].data(), filled.contains(slot) ? filled.at(slot) : "") << slot;
    }
}

TEST_F(MainWindowStart, TheDesktopDecidesPlaceAndSizes) {
    struct Row {
        int width, height, profile;
        const char* place;  // of a window of the smallest size
    };
    const Row rows[] = {
        {1920, 1080, 5, "640,315"}, {1280, 1024, 5, "320,287"}, {1280, 1023, 4, "320,286"}, {1280, 960, 4, "320,255"},
        {1279, 1024, 3, "319,287"}, {1280, 959, 3, "320,254"},  {1024, 600, 3, "192,75"},   {1023, 768, 2, "191,159"},
        {800, 600, 2, "80,75"},     {799, 2000, 1, "79,775"},   {691, 1000, 1, "25,275"},   {690, 1000, 1, "0,0"},
    };
    startIn("ang");
    useProfile(1);
    for (const Row& row : rows) {
        EXPECT_EQ(ProfileForDesktop(row.width, row.height), row.profile) << row.width << "x" << row.height;
        DesktopRect = {0, 0, row.width, row.height};
        PlaceMainWindow();
        EXPECT_EQ(text(placeOf(MainWindow)), std::string(row.place) + " 640x450") << row.width << "x" << row.height;
    }
    for (const auto& [allowed, grey] : {std::pair{1, "2 3 4 5"}, {3, "4 5"}, {5, ""}, {2, "3 4 5"}, {6, "3 4 5"}}) {
        EnableSizeMenu(allowed);
        EXPECT_EQ(marked(SizeItems, MF_GRAYED), grey) << allowed;
    }
    choose(SizeMenu, 2);
    settle();
    EXPECT_EQ(SizeProfile, 1) << "grey";
    press(Qt::Key_Escape);
    choose(SizeMenu, 1);
    settle();
    EXPECT_EQ(SizeProfile, 2);
    repaint();
    EXPECT_EQ(marked(SizeItems, MF_GRAYED), "3 4 5") << "the desktop is as it was";
    LastDesktopWidth = 800;
    repaint();
    EXPECT_EQ(marked(SizeItems, MF_GRAYED), "") << "the desktop has changed";
    EXPECT_EQ(text(placeOf(MainWindow)), "240,227 800x570") << "which moves nothing";
}

TEST_F(MainWindowStart, EveryWayOutEndsTheLoopWithZeroAndFreesThePort) {
    const auto command = [](UINT item) { PostMessageA(MainWindow, WM_COMMAND, item, 0); };
    const std::function<void()> ways[] = {[] { widgetOf(MainWindow)->close(); },
                                          [] { press(Qt::Key_F4, Qt::AltModifier); }, [=] { command(IDM_EXIT); },
                                          [=] {
                                              command(IDM_COM_OTHER);
                                              command(IDM_EXIT);  // behind its dialog
                                          }};
    for (const auto& leave : ways) {
        startOn(4);
        const HWND window = MainWindow;
        EXPECT_TRUE(server->isOpen()) << "the program holds the port";
        clock->put(leave);
        EXPECT_EQ(RunMessageLoop(), 0);
        EXPECT_FALSE(PortOpen || server->isOpen() || IsWindow(window) || IsWindow(PageWindow) || openDialogWindow());
        server.reset();
        LinkLost = 1;
    }
}
