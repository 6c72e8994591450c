// The program from its start to its end: ini file, language files, sizes, the window itself.
#include <QWidget>
#include <algorithm>
#include <map>
#include <string>
#include <tuple>

#include "User.h"
#include "link/Link.h"
#include "resources/Ids.h"
#include "shell/AppState.h"
#include "shell/Ini.h"
#include "shell/Language.h"
#include "shell/MainWindow.h"
#include "shell/SizeProfiles.h"

namespace {

std::string slot(size_t line) {
    return LangTable[line].data();
}

}  // namespace

using MainWindowStart = WindowFixture;

TEST_F(MainWindowStart, WithoutAnIniUsesTheDefaultsAndWritesThem) {
    start();
    EXPECT_EQ(readFile("Tarvex.ini"), "[Ustawienia]\nCommPort= 1\nLanguage= pol\n");
    EXPECT_STREQ(PortName, "\\\\.\\COM1");
    EXPECT_STREQ(LangCode.data(), "pol");
    EXPECT_EQ(AppPage, ReadingsPage);
    EXPECT_EQ(marked(LanguageItems, MF_CHECKED) + marked(PortItems, MF_CHECKED) + marked(SizeItems, MF_CHECKED), "115");
    EXPECT_EQ(marked(SizeItems, MF_GRAYED), "");
    EXPECT_FALSE(slot(175).empty());
    EXPECT_EQ(textOf(MainWindow), line(175));
    EXPECT_EQ(text(placeOf(MainWindow)), "0,0 1280x994");
    EXPECT_TRUE(IsWindowVisible(PageWindow));
}

TEST_F(MainWindowStart, ReadsTheIniByTheOrderOfItsItems) {
    struct Row {
        const char* what;
        std::string ini;
        unsigned port;
        std::string language;
        const char *languageItem, *portItem;
    };
    const std::string longName(500, 'x');
    const Row rows[] = {
        {"as written", "[Ustawienia]\nCommPort= 7\nLanguage= ang\n", 7, "ang", "2", "7"},
        {"CR LF", "[Ustawienia]\r\nCommPort= 2\r\nLanguage= cs\r\n", 2, "cs", "5", "2"},
        {"other names", "x\ny 128\nz rus", 128, "rus", "3", "10"},
        {"one line", "[Ustawienia] CommPort= 9 Language= lit", 9, "lit", "4", "9"},
        {"empty", "", 0, "", "1", ""},
        {"binary", std::string("\x01\xFF\xFE\x7F=\x9C", 6), 0, "\x01\xFF\xFE\x7F=\x9C", "1", ""},
        {"section only", "[Ustawienia]\n", 0, "[Ustawienia]", "1", ""},
        {"no number", "[Ustawienia]\nCommPort= \n", 0, "CommPort=", "1", ""},
        {"no language", "[Ustawienia]\nCommPort= 5\nLanguage=\n", 5, "Language=", "1", "5"},
        {"port 129", "[U]\nC 129\nL ang\n", 0, "ang", "2", ""},
        {"port -1", "[U]\nC -1\nL ang\n", 0, "ang", "2", ""},
        {"port 2 to the 32 and 1", "[U]\nC 4294967297\nL ang\n", 0, "ang", "2", ""},
        {"long language", "[U]\nC 3\nL " + longName + "\n", 3, std::string(63, 'x'), "1", "3"},
        {"wrong case", "[U]\nC 3\nL ANG\n", 3, "ANG", "1", "3"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        writeFile("Tarvex.ini", row.ini);
        start();
        EXPECT_TRUE(pumpUntil([] { return ActiveTimerPeriod == LostLinkPeriod; }));
        EXPECT_EQ(page(0, 0), Grey);
        EXPECT_EQ(redInRow(1) > 20, *row.languageItem != '1') << "the lost link, told in a language that has its file";
        EXPECT_EQ(PortName, row.port ? "\\\\.\\COM" + std::to_string(row.port) : "");
        EXPECT_EQ(LangCode.data(), row.language);
        EXPECT_EQ(marked(LanguageItems, MF_CHECKED), row.languageItem);
        EXPECT_EQ(marked(PortItems, MF_CHECKED), row.portItem);
        EXPECT_EQ(readFile("Tarvex.ini"), row.ini) << "reading writes nothing";
        WriteIni();
        EXPECT_EQ(readFile("Tarvex.ini"),
                  "[Ustawienia]\nCommPort= " + std::to_string(row.port) + "\nLanguage= " + row.language + "\n");
        EXPECT_EQ(closeProgram(), 0);
    }
}

TEST_F(MainWindowStart, ReadsLanguageFilesByTheirOnlyRule) {
    const std::string cut(127, 'x');
    std::string manyLines;
    for (int line = 0; line < 10000; ++line) {
        manyLines += "a=" + std::to_string(line) + "\n";
    }
    struct Row {
        const char* what;
        std::string file;
        std::map<size_t, std::string> filled;  // all others keep what they held
    };
    const Row rows[] = {
        {"plain", "a=x\nb=y\n", {{0, "x"}, {1, "y"}}},
        {"empty", "", {}},
        {"a line without =", "a=x\nnothing\nb=y\n", {{0, "x"}, {2, "y"}}},
        {"= at the line's end", "a=\nb=y\nc=z\n", {{0, "y"}, {1, "z"}}},
        {"= at the line's end, then none", "a=\nb\nc=z\n", {{0, "\nb"}, {1, "z"}}},
        {"two =", "a=one=two\nb=y\n", {{0, "two"}, {1, "y"}}},
        {"CR LF", "a=x\r\nb=y\r\n", {{0, "x"}, {1, "y"}}},
        {"CR alone", "a=x\ry\n", {{0, "x\ry"}}},
        {"no newline at the end", "a=x\nb=y", {{0, "x"}, {1, "y"}}},
        {"= at the file's end", "a=x\nb=", {{0, "x"}}},
        {"128 bytes", "a=" + cut + "!\nb=y\n", {{0, cut}, {1, "y"}}},
        {"10 KB in the last slot", std::string(208, '\n') + "a=" + std::string(10240, 'x') + "\nb=y\n", {{208, cut}}},
    };
    std::filesystem::remove(folder / "Lang");
    std::filesystem::create_directory(folder / "Lang");
    GetCurrentDirectoryA(static_cast<DWORD>(StartDirectory.size()), StartDirectory.data());
    std::copy_n("own", 4, LangCode.data());
    const auto readAnew = [] {
        for (auto& line : LangTable) {
            std::copy_n("old", 4, line.data());
        }
        ReadLanguageFile();
    };
    for (const Row& row : rows) {
        writeFile("Lang/Tarvex_lang.own", row.file);
        readAnew();
        for (size_t line = 0; line < LangTable.size(); ++line) {
            const auto expected = row.filled.find(line);
            EXPECT_EQ(slot(line), expected == row.filled.end() ? "old" : expected->second) << row.what << " " << line;
        }
    }
    writeFile("Lang/Tarvex_lang.own", manyLines);
    readAnew();
    for (size_t line = 0; line < LangTable.size(); ++line) {
        EXPECT_EQ(slot(line), std::to_string(line));
    }
    // The path starts where the program was started, not where it has gone since.
    writeFile("Lang/Tarvex_lang.own", "a=x\n");
    std::filesystem::current_path("/");
    readAnew();
    EXPECT_EQ(slot(0), "x");
    EXPECT_EQ(std::filesystem::current_path(), folder);
}

TEST(MainWindowSizes, FollowTheDesktop) {
    struct Row {
        int width, height, profile;
    };
    for (const Row& row :
         {Row{1920, 1080, 5}, Row{1280, 1024, 5}, Row{1280, 1023, 4}, Row{1280, 960, 4}, Row{1279, 1024, 3},
          Row{1280, 959, 3}, Row{1024, 600, 3}, Row{1023, 768, 2}, Row{800, 600, 2}, Row{799, 2000, 1}, Row{0, 0, 1}}) {
        EXPECT_EQ(ProfileForDesktop(row.width, row.height), row.profile) << row.width << "x" << row.height;
    }
}

TEST_F(MainWindowStart, EverySizeHasItsPlaces) {
    start();
    struct Row {
        int profile;
        const char *page, *button;
    };
    for (const Row& row : {Row{1, "-5,-10 640x450", "540,358 71x30"}, Row{2, "-5,-10 800x570", "685,465 80x40"},
                           Row{3, "-5,-10 1024x738", "875,610 105x60"}, Row{4, "-5,-10 1280x930", "1100,780 120x75"},
                           Row{5, "-5,-10 1280x994", "1100,840 120x75"}}) {
        useProfile(row.profile);
        for (const auto& [window, place] :
             {std::pair{PageWindow, row.page}, {GetDlgItem(PageWindow, IDC_LEARN), row.button}}) {
            const QRect shown = widgetOf(window)->geometry();
            EXPECT_EQ(text({shown.x(), shown.y(), shown.x() + shown.width(), shown.y() + shown.height()}), place);
        }
    }
}

TEST_F(MainWindowStart, CentresTheWindowOnADesktopThatIsWiderByMoreThan50) {
    start();
    useProfile(1);
    for (const auto& [width, height, place] :
         {std::tuple{690, 1000, "0,0 640x450"}, {691, 1000, "25,275 640x450"}, {640, 480, "0,0 640x450"}}) {
        DesktopRect = {0, 0, width, height};
        PlaceMainWindow();
        EXPECT_EQ(text(placeOf(MainWindow)), place) << width;
    }
}

TEST_F(MainWindowStart, ADesktopThatHasChangedChangesOnlyTheGreyItems) {
    start();
    EnableSizeMenu(2);
    repaint();
    EXPECT_EQ(marked(SizeItems, MF_GRAYED), "3 4 5") << "the desktop is as it was";
    useProfile(1);
    LastDesktopWidth = 800;
    LastDesktopHeight = 600;
    repaint();
    EXPECT_EQ(marked(SizeItems, MF_GRAYED), "");
    EXPECT_EQ(text(placeOf(MainWindow)), "320,287 640x450");
    EXPECT_EQ(LastDesktopWidth, 1280);
}

TEST_F(MainWindowStart, EveryWayOutEndsTheLoopWithZeroAndFreesThePort) {
    for (void (*leave)() : std::initializer_list<void (*)()>{[] { widgetOf(MainWindow)->close(); },
                                                             [] { PostMessageA(MainWindow, WM_COMMAND, IDM_EXIT, 0); },
                                                             [] { press(Qt::Key_F4, Qt::AltModifier); }}) {
        startOn(4);
        const HWND window = MainWindow;
        const HWND page = PageWindow;
        EXPECT_TRUE(server->isOpen()) << "the program holds the port";
        clock->put(leave);
        EXPECT_EQ(RunMessageLoop(), 0);
        EXPECT_EQ(PortOpen, 0);
        EXPECT_FALSE(server->isOpen());
        EXPECT_FALSE(IsWindow(window));
        EXPECT_FALSE(IsWindow(page));
        server.reset();
        LinkLost = 1;
    }
}
