// The Reset page and the controller information dialog against a simulated controller: what reaches the wire and what
// is shown.
#include <QClipboard>
#include <QEvent>
#include <QGuiApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QPixmap>
#include <QProgressBar>
#include <algorithm>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "TuningPages.h"
#include "platform/linux/Layer.h"
#include "service/ControllerDialog.h"
#include "service/ResetPage.h"
#include "simulator/Cells.h"

namespace {

using simulator::FaultKind;

const std::string AskIdent = "65 01 01 67";
const std::string AskC = "65 05 05 6F";
const std::string Poll = AskIdent + ", " + AskC;
const std::string Look = AskIdent + ", 65 02 02 69";
const std::string ResetFrame = "65 1F 33 B7";

// A write to a cell by its number in family 4.
std::string frame(int cell, BYTE value) {
    const auto number = static_cast<std::uint8_t>(cell + 1);
    return hex({0x65, number, value, static_cast<std::uint8_t>(0x65 + number + value)});
}

// Where each step's value is read: the letter of the block and the byte, in the order of the cells.
struct Source {
    int cell;
    char block;
    unsigned byte;
};
constexpr Source Sources[] = {
    {5, 'A', 1},   {6, 'A', 2},   {7, 'A', 3},   {8, 'A', 4},   {9, 'A', 5},   {10, 'A', 6},  {11, 'A', 7},
    {12, 'C', 6},  {13, 'C', 7},  {14, 'A', 10}, {15, 'A', 11}, {16, 'B', 1},  {17, 'B', 2},  {18, 'L', 4},
    {19, 'B', 3},  {20, 'B', 4},  {21, 'B', 5},  {22, 'B', 6},  {23, 'B', 7},  {24, 'B', 8},  {25, 'B', 9},
    {26, 'B', 10}, {27, 'B', 11}, {28, 'B', 12}, {29, 'A', 12}, {31, 'B', 13}, {32, 'B', 14}, {33, 'C', 1},
    {34, 'C', 2},  {35, 'C', 3},  {36, 'C', 4},  {37, 'A', 8},  {49, 'C', 8},
};

// The frames of the first steps of a reset, from what the mirrors hold now.
std::string resetFrames(size_t steps) {
    std::string all = Look + ", " + ResetFrame + ", 65 02 02 69, 65 03 03 6B, 65 04 04 6D, " + AskC;
    for (const Source& row : std::span(Sources).first(steps)) {
        const BYTE* block = row.block == 'A' ? A : row.block == 'B' ? B : row.block == 'C' ? ParamBlockC.data() : L;
        all += ", " + frame(row.cell, block[row.byte]);
    }
    return all;
}

QProgressBar& bar() {
    return *qobject_cast<QProgressBar*>(widgetOf(GetDlgItem(PageWindow, IDC_RESET_PROGRESS)));
}

// Each paint of the bar: its position and the writes that had gone out by then.
struct PaintWatch : QObject {
    explicit PaintWatch(HeldController& watched) : server(watched) {
        bar().installEventFilter(this);
    }
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint) {
            const auto log = server.log();
            paints.emplace_back(bar().value(), std::ranges::count_if(log, &simulator::LogEntry::isWrite));
        }
        return false;
    }
    HeldController& server;
    std::vector<std::pair<int, long>> paints;
};

// The boxes of the Reset page: our names for them and their lines.
const std::map<QMessageBox::Icon, std::pair<const char*, size_t>> Boxes = {
    {QMessageBox::Critical, {"refused ", 200}},
    {QMessageBox::Information, {"done ", 138}},
    {QMessageBox::Warning, {"failed ", 139}},
};

}  // namespace

class Reset : public TuningPages {
protected:
    void openPage(int family) {
        connect(family, 5, IDM_RESET);
        setLive(7, 0);
    }
    // Clicks the button and answers the box: "done 32" for the box of that name with the bar at 32, "32" without one.
    std::string reset() {
        server->clearLog();
        std::string outcome;
        bool ended = false;
        const auto click = [&] {
            clickOn(GetDlgItem(PageWindow, IDC_RESET_BUTTON));
            ended = true;
        };
        run({{"page", always, click},
             {"end", [&] { return ended || boxShown(); },
              [&] {
                  if (!ended) {
                      const auto& [name, text] = Boxes.at(box()->icon());
                      EXPECT_EQ(told(), line(137) + ": " + line(text));
                      outcome = name;
                      press(Qt::Key_Return);
                  }
              }}});
        EXPECT_TRUE(ended);
        EXPECT_EQ(WriteDelay, 0u);
        return outcome + std::to_string(bar().value());
    }
    // Bytes in all mirrors that the run's own reads do not renew, since their replies are spoiled.
    void holdMirrors(unsigned first, unsigned step) {
        for (unsigned at = 0; at < 15; ++at) {
            A[at] = static_cast<BYTE>(first + step * at);
            B[at] = static_cast<BYTE>(first + step * (at + 20));
            ParamBlockC[at] = static_cast<BYTE>(first + step * (at + 40));
        }
        setLive(4, static_cast<std::uint8_t>(first + step * 60));
        server->addFault({.kind = FaultKind::FlippedBit, .count = 5, .after = 2});
    }
};

TEST_F(Reset, FirstGenerationGetsOneCommandAndTheTimeForIt) {
    openPage(2);
    const Moment start = clock->now();
    EXPECT_EQ(reset(), "done 0") << "though it answers later than a read waits";
    EXPECT_GE(clock->now() - start, 250 * Millisecond);
    EXPECT_EQ(sent(), Look + ", 65 1E 33 B6");
    server->addFault({.kind = FaultKind::Silence, .onlyWrites = true});
    EXPECT_EQ(reset(), "failed 0") << "the reply of the first time does not count";
    EXPECT_EQ(sent(), Look + ", 65 1E 33 B6");
}

TEST_F(Reset, SecondGenerationIsReadBackAndWrittenCellByCell) {
    openPage(4);
    setLive(4, 99);
    for (const Source& row : Sources) {
        setCell(row.cell, 99);
    }
    const PaintWatch watch(*server);
    EXPECT_EQ(reset(), "done 32");
    EXPECT_EQ(sent(), resetFrames(33));
    EXPECT_EQ(std::ranges::count(RestoreTable, 99, &RestoreRow::value), 2) << "all but base position and minutes";
    for (int step = 1; step < 33; ++step) {
        EXPECT_GT(std::ranges::count(watch.paints, std::pair(step, step + 2L)), 0) << "on the screen before the next";
    }
    EXPECT_TRUE(watch.paints[0] == std::pair(0, 0L) && std::ranges::is_sorted(watch.paints));

    choose(LanguageMenu, 2);
    settle();
    EXPECT_EQ(bar().value(), 32) << "another language leaves the progress alone";
    EXPECT_EQ(textOf(IDC_RESET_HEADING) + textOf(IDC_RESET_EXPLANATION) + textOf(IDC_RESET_BUTTON),
              line(134) + line(135) + line(136));

    // What could not be read back goes out as it was before; here each byte is another one.
    holdMirrors(20, 3);
    EXPECT_EQ(reset(), "done 32");
    EXPECT_EQ(sent(), resetFrames(33));
    EXPECT_EQ(RestoreTable[13].value, 200);
}

TEST_F(Reset, AWrongEchoEndsTheRunAtItsStep) {
    openPage(4);
    for (int step = 0; step < 33; ++step) {
        server->addFault({.kind = FaultKind::WrongEcho, .count = 1, .onlyWrites = true, .after = step + 1});
        EXPECT_EQ(reset(), "failed " + std::to_string(std::max(step - 1, 0)));
        EXPECT_EQ(sent(), resetFrames(static_cast<size_t>(step) + 1));
    }
    // A missing one passes only for the value before.
    for (const auto& [difference, outcome] : {std::pair{0u, "done 32"}, {3u, "failed 3"}}) {
        server->clearFaults();
        holdMirrors(70, difference);
        server->addFault({.kind = FaultKind::Silence, .count = 1, .onlyWrites = true, .after = 4});
        EXPECT_EQ(reset(), outcome);
    }
}

TEST_F(Reset, NothingIsWrittenWhileTheEngineRunsOrToOtherFamilies) {
    for (const int family : {1, 2, 3, 4}) {
        SCOPED_TRACE(family);
        openPage(family);
        setLive(7, family % 2 == 0 ? 0xF8 : 0);
        bar().setValue(9);
        EXPECT_EQ(reset(), family % 2 == 0 ? "refused 0" : "0");
        EXPECT_EQ(sent(), Look);
        closeProgram();
        server.reset();
    }
}

TEST_F(Reset, APressFindsTheLostControllerAgain) {
    openPage(4);
    EXPECT_EQ(reset(), "done 32");
    server->unplug();
    EXPECT_EQ(reset(), "failed 0") << "not yet known to be gone";
    EXPECT_EQ(reset(), "failed 0");
    EXPECT_EQ(reset(), "0");
    EXPECT_EQ(LinkLost, 1);
    ASSERT_TRUE(server->replug());
    // The read after the identity has opened the port in vain.
    EXPECT_EQ(reset(), "0");
    EXPECT_EQ(reset(), "done 32");
}

class Information : public TuningPages {
protected:
    // In the dialog at rest; its timer waits for the body's own ticks.
    void inDialog(const std::function<void()>& body, std::vector<Step> then = {}, void (*leave)() = pressEscape) {
        PostMessageA(MainWindow, WM_COMMAND, IDM_CONTROLLER, 0);
        then.insert(then.begin(), {"dialog", dialogShown, [&] {
                                       stopTimer();
                                       server->clearLog();
                                       EXPECT_EQ(DialogPause, 1);
                                       body();
                                   }});
        then.push_back({"closing", always, leave});
        run(then);
        EXPECT_EQ(DialogPause, 0);
        EXPECT_TRUE(IsWindowEnabled(MainWindow));
    }
    static void pressEscape() {
        press(Qt::Key_Escape);
    }
    static std::string fields() {
        return textOf(IDC_INFO_VERSION) + "|" + textOf(IDC_INFO_REGISTRATION) + "|" + textOf(IDC_INFO_HOURS) + "|" +
               textOf(IDC_INFO_DATE);
    }
    // How many of the nine controls of what is stored are enabled, and how many of the date editor's seven show.
    static std::string served() {
        constexpr int stored[] = {1194, 1164, 1179, 1195, 1171, 1182, 1196, 1172, 1180};
        constexpr int editor[] = {1188, 1003, 1004, 1005, 1189, 1190, 1191};
        return std::to_string(std::ranges::count_if(stored, IsWindowEnabled, control)) + " " +
               std::to_string(std::ranges::count_if(editor, IsWindowVisible, control));
    }
    // Of the number and of the date whether their buttons store, and whether the number can be typed.
    static std::string editing() {
        const auto letter = [](int id) { return textOf(id) == line(198) ? "S" : textOf(id) == line(197) ? "-" : "?"; };
        auto& edit = *qobject_cast<QLineEdit*>(widgetOf(control(IDC_INFO_REGISTRATION)));
        const QColor ground = edit.grab().toImage().pixelColor(edit.width() - 5, edit.height() / 2);
        EXPECT_EQ(ground == Qt::white, !edit.isReadOnly() && edit.isEnabled())
            << "only what can be typed into is white";
        return std::string(letter(IDC_INFO_REGISTRATION_BUTTON)) + letter(IDC_INFO_DATE_BUTTON) +
               (edit.isReadOnly() ? "" : " typing");
    }
    static void toggle(int button) {
        clickOn(control(button));
        tick();
    }
};

TEST_F(Information, EachFamilyShowsWhatItStores) {
    struct Row {
        int family;
        std::string fields, polls, editing, erased;
        void (*leave)();
    };
    const Row rows[] = {
        {1, "Unknown controller|||", AskIdent, "0 0--", "", [] { press(Qt::Key_Return); }},
        {2, "2.07|||", AskIdent, "0 0--", "", [] { clickOn(control(IDC_CLOSE)); }},
        {3, "Unknown controller|||", AskIdent, "0 0--", "", [] { widgetOf(openDialogWindow())->close(); }},
        {4, "4.07|KR4512A|1234h5'|2019-09-15", Poll, "9 7SS typing", "65 27 00 8C, 65 28 00 8D, 65 32 00 97",
         pressEscape},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.family);
        startOn(row.family, 7);
        setCell(simulator::HoursLo, 0xD2);
        setCell(simulator::HoursHi, 0x04);
        setCell(simulator::Minutes, 5);
        inDialog(
            [&] {
                EXPECT_EQ(textOf(topWindow()), line(190));
                tick();
                EXPECT_EQ(sent(), row.polls);
                EXPECT_EQ(fields(), row.fields);
                EXPECT_EQ(served() + editing(), row.family == 4 ? "9 0--" : "0 0--");
                toggle(IDC_INFO_REGISTRATION_BUTTON);
                toggle(IDC_INFO_DATE_BUTTON);
                EXPECT_EQ(served() + editing(), row.editing);
                sent();
                clickOn(control(IDC_INFO_HOURS_BUTTON));
                EXPECT_EQ(sent(), row.erased);
                tick();
                EXPECT_EQ(textOf(IDC_INFO_HOURS), row.family == 4 ? "0h0'" : "");
                SendMessageA(PageWindow, WM_TIMER, 1, 0);
                EXPECT_EQ(sent(), row.polls) << "the page below keeps off the link";
            },
            {}, row.leave);
        EXPECT_EQ(written(), "") << "closing stores nothing";
        EXPECT_TRUE(pumpUntil([&] { return server->log().size() > 8; })) << "the page goes on";
        closeProgram();
        server.reset();
    }
}

TEST_F(Information, TheTypedNumberIsStoredInCapitals) {
    startOn(4);
    struct Row {
        size_t language;
        std::u16string keys;  // a line feed pastes; without a backspace first the former number is deleted
        std::string number;   // bytes
    };
    const Row rows[] = {
        {1, u"\b\bx", "KR451X"},
        {1, u"", ""},
        {1, u"ab 1", "AB 1"},
        {0, u"żółw1", "\xAF\xD3\xA3W1"},
        {2, u"жуё-яю", "\xC6\xD3\xA8-\xDF\xDE"},
        {3, u"ąčę-šž", "\xA5\xC8\xCA-\x8A\x8E"},
        {4, u"řůß", "\xD8\xD9\xDF"},
        {1, u"kr123456", "KR12345"},
        {1, u"k\n", "KPASTED"},
    };
    QGuiApplication::clipboard()->setText(QStringLiteral("pasted-text"));
    for (const Row& row : rows) {
        SCOPED_TRACE(row.number);
        SendMessageA(MainWindow, WM_COMMAND, LanguageItems[row.language], 0);
        settle();
        const std::string shown = layer::decode(row.number.c_str(), row.language == 2 ? 1251 : 1250).toStdString();
        std::string frames;
        for (size_t place = 0; place < 7; ++place) {
            const char letter = place < row.number.size() ? row.number[place] : '\0';
            frames += (place == 0 ? "" : ", ") + frame(42 + static_cast<int>(place), static_cast<BYTE>(letter));
        }
        const auto typeKeys = [&] {
            tick();
            toggle(IDC_INFO_REGISTRATION_BUTTON);
            clickOn(control(IDC_INFO_REGISTRATION));
            press(row.keys.starts_with(u'\b') ? Qt::Key_End : Qt::Key_A, Qt::ControlModifier);
            press(Qt::Key_Delete);
            for (const char16_t key : row.keys) {
                key == u'\n'   ? press(Qt::Key_V, Qt::ControlModifier)
                : key == u'\b' ? press(Qt::Key_Backspace)
                               : type(key);
            }
        };
        inDialog(typeKeys, {{"number", [&] { return textOf(IDC_INFO_REGISTRATION) == shown; },
                             [&] {
                                 sent();
                                 clickOn(control(IDC_INFO_REGISTRATION_BUTTON));
                                 EXPECT_EQ(sent(), frames);
                                 tick();
                                 EXPECT_EQ(editing() + textOf(IDC_INFO_REGISTRATION), "--" + shown);
                             }}});
    }
}

TEST_F(Information, TheDateEditorStartsTodayAndStoresWhatIsChosen) {
    startOn(4);
    struct Row {
        WORD year, month, day;
        std::string start;  // entries of year and month, days offered, day
        std::string picks;  // list, entry, then days offered and day
        std::string frames, shown;
    };
    const Row rows[] = {
        {2026, 11, 23, "26 10 30 23", "", "65 29 56 E4, 65 2A 9A 29", "2026-11-23"},
        {2024, 2, 29, "24 1 29 29", "Y 23 28 1  D 27 28 28  Y 20 29 1  M 0 31 1  D 30 31 31  Y 21 31 31  M 3 30 1", "",
         ""},
        {2024, 1, 31, "24 0 31 31", "M 1 29 1  Y 22 28 1  Y 0 29 1  D 28 29 29", "65 29 3C CA, 65 2A 00 8F",
         "2000-02-29"},
        {1999, 12, 31, "0 11 31 31", "", "65 29 7E 0C, 65 2A 80 0F", "2000-12-31"},
        {2062, 8, 31, "62 7 31 31", "", "65 29 FE 8C, 65 2A 3E CD", "2062-08-31"},
        // No year is selected until one is chosen, and nothing stored.
        {2063, 1, 15, "-1 0 31 15", "M 1 28 1  M 8 30 1  Y 62 30 1", "65 29 00 8E, 65 2A BE 4D", "2062-09-01"},
        {2200, 2, 10, "-1 1 29 10", "Y 1 28 1", "65 29 20 AE, 65 2A 01 90", "2001-02-01"},
    };
    const auto days = [] {
        return std::to_string(entriesOf(IDC_INFO_DAY)) + " " + std::to_string(selected(IDC_INFO_DAY) + 1);
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.start);
        clock->setLocalTime({row.year, row.month, 0, row.day, 0, 0, 0, 0});
        inDialog([&] {
            tick();
            EXPECT_EQ(entriesOf(IDC_INFO_YEAR), 63);
            EXPECT_EQ(entryOf(IDC_INFO_YEAR, 62) + entryOf(IDC_INFO_MONTH, 0) + entryOf(IDC_INFO_MONTH, 11),
                      "20620112");
            toggle(IDC_INFO_DATE_BUTTON);
            const auto entry = [](int id) { return std::to_string(selected(id)) + " "; };
            EXPECT_EQ(entry(IDC_INFO_YEAR) + entry(IDC_INFO_MONTH) + days(), row.start);
            sent();
            if (row.start[0] == '-') {
                toggle(IDC_INFO_DATE_BUTTON);
                EXPECT_EQ(sent(), Poll) << "nothing is stored without a year";
            }
            EXPECT_EQ(served() + editing(), "9 7-S");
            std::istringstream picks(row.picks);
            char list = 0;
            for (unsigned entry = 0, count = 0, day = 0; picks >> list >> entry >> count >> day;) {
                pick(list == 'Y' ? IDC_INFO_YEAR : list == 'M' ? IDC_INFO_MONTH : IDC_INFO_DAY, entry);
                EXPECT_EQ(days(), std::to_string(count) + " " + std::to_string(day)) << list << entry;
            }
            if (!row.frames.empty()) {
                clickOn(control(IDC_INFO_DATE_BUTTON));
                EXPECT_EQ(sent(), row.frames);
                tick();
                EXPECT_EQ(served() + editing() + textOf(IDC_INFO_DATE), "9 0--" + row.shown);
            }
        });
    }
}

TEST_F(Information, ALostLinkHidesTheEditorsUntilItIsBack) {
    startOn(4);
    for (const std::string open : {"--", "-S", "S- typing", "SS typing"}) {
        SCOPED_TRACE(open);
        inDialog([&] {
            tick();
            const std::string before = fields();
            const bool number = open[0] == 'S', date = open[1] == 'S';
            if (number) {
                toggle(IDC_INFO_REGISTRATION_BUTTON);
            }
            if (date) {
                toggle(IDC_INFO_DATE_BUTTON);
            }
            server->unplug();
            tick(3);
            EXPECT_EQ(served() + fields(), "0 0" + line(161) + "|||");
            EXPECT_EQ(RegEditOpen + 2 * DateEditOpen, number + 2 * date);
            ASSERT_TRUE(server->replug());
            tick(2);
            EXPECT_EQ(served() + editing(), (date ? "9 7" : "9 0") + open);
            EXPECT_TRUE(number || date || fields() == before);
            EXPECT_EQ(textOf(IDC_INFO_REGISTRATION).empty(), number) << "what was typed is gone";
        });
    }
}
