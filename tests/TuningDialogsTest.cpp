// The three tuning dialogs against a simulated controller: what reaches the wire and what is shown.
#include <QAbstractItemView>
#include <QComboBox>
#include <QFontMetrics>
#include <QTest>
#include <QTimer>
#include <array>
#include <string>
#include <vector>

#include "User.h"
#include "link/Link.h"
#include "model/Blocks.h"
#include "platform/linux/Layer.h"
#include "resources/Ids.h"
#include "shell/AppState.h"
#include "simulator/Cells.h"
#include "tuning/CorrectionsDialog.h"
#include "tuning/DialogPoll.h"
#include "tuning/EmulationDialog.h"
#include "tuning/GasLevelDialog.h"
#include "tuning/TuningState.h"

namespace {

const std::string AskIdent = "65 01 01 67";
const std::string AskC = "65 05 05 6F";
const std::string PollA = AskIdent + ", 65 03 03 6B";
const std::string PollC = AskIdent + ", " + AskC;
const std::string PollAC = PollA + ", " + AskC;
constexpr COLORREF DimRed = RGB(128, 84, 79);
constexpr int LampTops[] = {198, 158, 118, 78, 38};
constexpr int Bars[] = {1137, 1122, 1123, 1138};
constexpr int Edits[] = {1009, 1008, 1007, 1139};

HWND control(int id) {
    return GetDlgItem(openDialogWindow(), id);
}

LRESULT selected(int combo) {
    return SendMessageA(control(combo), CB_GETCURSEL, 0, 0);
}

std::string textOf(int id) {
    return widgetOf(control(id))->property("text").toString().toStdString();
}

std::string entryOf(int combo, unsigned entry) {
    std::array<char, 128> text{};
    SendMessageA(control(combo), CB_GETLBTEXT, entry, reinterpret_cast<LPARAM>(text.data()));
    return text.data();
}

void pick(int combo, unsigned entry) {
    SendMessageA(control(combo), CB_SETCURSEL, entry, 0);
    SendMessageA(openDialogWindow(), WM_COMMAND, MAKEWPARAM(combo, CBN_SELCHANGE),
                 reinterpret_cast<LPARAM>(control(combo)));
}

void tick() {
    SendMessageA(openDialogWindow(), WM_TIMER, 2, 0);
}

COLORREF at(int x, int y) {
    return pixelOf(openDialogWindow(), x, y);
}

void repaintDialog() {
    InvalidateRect(openDialogWindow(), nullptr, TRUE);
    UpdateWindow(openDialogWindow());
}

// Letter colours of the lamps from R up to 4/4: Red, Green, dark.
std::string lamps() {
    std::string all;
    for (const int top : LampTops) {
        const bool lowest = top == LampTops[0];
        for (const int y : {top, top + 19}) {
            EXPECT_EQ(at(20, y), Black);
            EXPECT_EQ(at(39, y), Black);
        }
        EXPECT_EQ(at(19, top + 10), Grey);
        EXPECT_EQ(at(40, top + 10), Grey);
        const COLORREF colour = at(21, top + 18);
        all += colour == (lowest ? Red : Green) ? 'X' : colour == (lowest ? DimRed : Olive) ? '-' : '?';
    }
    return all;
}

// Of bars, edits and the factory button: all of them enabled, none, or a mixture.
std::string thresholdsEnabled() {
    int enabled = IsWindowEnabled(control(1141)) ? 1 : 0;
    for (size_t row = 0; row < 4; ++row) {
        enabled += (IsWindowEnabled(control(Bars[row])) ? 1 : 0) + (IsWindowEnabled(control(Edits[row])) ? 1 : 0);
    }
    return enabled == 9 ? "all" : enabled == 0 ? "none" : "some";
}

std::string numbers() {
    std::string all;
    for (const int edit : Edits) {
        all += textOf(edit) + " ";
    }
    return all;
}

void scroll(int bar, WORD code, WORD position = 0) {
    SendMessageA(openDialogWindow(), WM_HSCROLL, MAKEWPARAM(code, position), reinterpret_cast<LPARAM>(control(bar)));
}

LRESULT positionOf(int bar) {
    return SendMessageA(control(bar), SBM_GETPOS, 0, 0);
}

void loseLink(simulator::Server& server) {
    server.unplug();
    for (int round = 0; round < 4; ++round) {
        tick();
    }
    ASSERT_EQ(LinkLost, 1);
}

}  // namespace

class TuningDialogs : public WindowFixture {
protected:
    void connect(int family) {
        plugController(family);
        writeIni(1, "ang");
        start();
        ASSERT_TRUE(pumpUntil([=] { return LinkLost == 0 && ControllerFamily == family; }));
    }
    // Over the page that opens it. What the body does runs between two ticks; the timer waits for the body's own ones.
    void inDialog(void (*open)(), const std::function<void()>& body, std::vector<Step> leave = {}) {
        SendMessageA(MainWindow, WM_COMMAND, open == RunCorrectionsDialog ? IDM_OPTIONS : IDM_CONFIGURATION, 0);
        settle();
        std::vector<Step> steps = {{"page", always, [=] { QTimer::singleShot(0, open); }},
                                   {"dialog", dialogShown, [&] { server->clearLog(); }},
                                   {"first tick", [&] { return !server->log().empty(); },
                                    [&] {
                                        KillTimer(openDialogWindow(), 2);
                                        server->clearLog();
                                        body();
                                    }}};
        if (leave.empty()) {
            leave = {{"closing", always, [] { press(Qt::Key_Escape); }}};
        }
        steps.insert(steps.end(), leave.begin(), leave.end());
        run(steps);
        EXPECT_EQ(openDialogWindow(), nullptr);
        EXPECT_EQ(TuningDialogOpen + CorrectionsDialogOpen, 0);
    }
    // All that the controller was sent since this was last asked.
    std::string sent() const {
        std::string frames;
        for (const simulator::LogEntry& entry : server->log()) {
            frames += (frames.empty() ? "" : ", ") + hex({entry.request.bytes.begin(), entry.request.bytes.end()});
        }
        server->clearLog();
        return frames;
    }
    // Each entry must send one frame: the cell's number on the wire and the value of the entry.
    void expectWrites(int combo, unsigned entries, std::uint8_t wireCell,
                      const std::function<std::uint8_t(unsigned)>& value) const {
        EXPECT_EQ(SendMessageA(control(combo), CB_GETCOUNT, 0, 0), static_cast<LRESULT>(entries)) << combo;
        for (unsigned entry = 0; entry < entries; ++entry) {
            pick(combo, entry);
            const std::uint8_t byte = value(entry);
            const auto sum = static_cast<std::uint8_t>(0x65 + wireCell + byte);
            EXPECT_EQ(sent(), hex({0x65, wireCell, byte, sum})) << combo << " entry " << entry;
        }
    }
};

TEST_F(TuningDialogs, EmulationTimesAreChosenAndShown) {
    connect(4);
    setCell(simulator::EmulBJ_TimeHi, 0);
    setCell(simulator::EmulBJ_TimeLo, 255);
    inDialog(RunEmulationDialog, [&] {
        EXPECT_EQ(TuningDialogOpen, 1);
        EXPECT_EQ(widgetOf(openDialogWindow())->windowTitle(), QStringLiteral("Lambda emulation type:   H/L wave"));
        tick();
        EXPECT_EQ(sent(), PollA);
        EXPECT_EQ(selected(1003), 0) << "a time of 0 reads as the shortest";
        EXPECT_EQ(selected(1004), 254);
        EXPECT_EQ(entryOf(1003, 0), "0,025");
        EXPECT_EQ(entryOf(1003, 39), "1,000");
        EXPECT_EQ(entryOf(1004, 254), "6,375");
        expectWrites(1003, 255, 0x0B, [](unsigned entry) { return entry + 1; });
        expectWrites(1004, 255, 0x0C, [](unsigned entry) { return entry + 1; });
        EXPECT_EQ(selected(1003), 254);
        setCell(simulator::EmulBJ_TimeHi, 40);
        tick();
        EXPECT_EQ(selected(1003), 39) << "the controller decides";
    });
}

TEST_F(TuningDialogs, ThePlotFollowsTheTimesAndTheSensor) {
    connect(2);
    const auto plot = [&](std::uint8_t high, std::uint8_t low, std::uint8_t sensor) {
        setCell(simulator::EmulBJ_TimeHi, high);
        setCell(simulator::EmulBJ_TimeLo, low);
        setCell(simulator::LambdaType, static_cast<std::uint8_t>(sensor << 4));
        repaintDialog();
        EXPECT_NE(at(300, 100), Black) << "a paint covers the plot";
        tick();
    };
    const auto letters = [](int x, int y) {
        return countPixels(openDialogWindow(), {x, y, x + 8, y + 16},
                           [](COLORREF pixel) { return (pixel & 0xFF) > 160; }) > 0;
    };
    inDialog(RunEmulationDialog, [&] {
        // 12 points high, 22 low: a rising edge every 34 from 93 on, a falling one from 71 on.
        plot(20, 40, 0);
        for (const int x : {0, 34, 408}) {
            for (const POINT& on : {POINT{60, 45}, {70, 45}, {71, 100}, {71, 145}, {92, 145}, {93, 100}}) {
                EXPECT_EQ(at(x + on.x, on.y), Yellow) << x << " " << on.x;
            }
            EXPECT_EQ(at(x + 72, 45), Black);
            EXPECT_EQ(at(x + 94, 145), Black);
        }
        EXPECT_TRUE(letters(23, 35) && letters(23, 135) && !letters(15, 35) && !letters(23, 115));
        for (const POINT& axis : {POINT{45, 140}, {500, 155}, {49, 65}, {42, 28}, {532, 152}}) {
            EXPECT_EQ(at(axis.x, axis.y), Grey) << axis.x;
        }
        EXPECT_EQ(at(10, 10) + at(549, 164) + at(50, 65), Black * 3);
        EXPECT_NE(at(9, 10), Black);
        EXPECT_NE(at(549, 165), Black);
        const auto yellowIn = [](const RECT& area) {
            return countPixels(openDialogWindow(), area, [](COLORREF pixel) { return pixel == Yellow; });
        };
        for (const auto& [high, low] : {std::pair{255, 255}, {1, 1}, {0, 0}, {255, 3}, {2, 200}}) {
            SCOPED_TRACE(high);
            plot(static_cast<std::uint8_t>(high), static_cast<std::uint8_t>(low), 5);
            EXPECT_GT(yellowIn({538, 45, 540, 146}), 0);
            EXPECT_EQ(yellowIn({540, 10, 550, 165}), 0);
            const int phase = (high >> 1) + 2;
            EXPECT_EQ(at(60 + phase - 1, 100), Yellow) << "the first falling edge";
            EXPECT_EQ(yellowIn({60, 46, 60 + phase - 1, 145}), 0) << "no edge before it";
        }
        EXPECT_TRUE(letters(15, 35) && letters(15, 135) && !letters(23, 115));
        plot(20, 40, 3);
        EXPECT_TRUE(letters(23, 35) && letters(23, 55) && letters(23, 115) && letters(23, 135) && !letters(15, 35));
        setCell(simulator::EmulBJ_TimeHi, 60);
        tick();
        EXPECT_EQ(at(80, 45), Yellow) << "a new time is plotted without a paint";
    });
}

TEST_F(TuningDialogs, AScrolledThresholdIsWrittenOnceAtTheEnd) {
    connect(4);
    const std::array<std::uint8_t, 4> held = {5, 250, 100, 0};
    for (int row = 0; row < 4; ++row) {
        setCell(simulator::Prog1 + row, held[static_cast<size_t>(row)]);
    }
    struct Move {
        WORD code;
        WORD position;
        LRESULT becomes;
    };
    struct Row {
        int bar;
        std::vector<Move> moves;
        const char* shown;
        const char* frame;
    };
    // By number: 0 and 1 a step down and up, 2 and 3 a page, 5 the held thumb; 4, 6 and 7 move nothing.
    const Row rows[] = {
        {1137, {{0, 0, 4}, {1, 0, 5}, {2, 0, 0}, {0, 0, 0}, {3, 0, 10}}, "10 250 100 0 ", "65 22 0A 91"},
        {1137, {{5, 200, 200}, {3, 0, 210}, {4, 7, 210}, {6, 0, 210}, {7, 0, 210}}, "210 250 100 0 ", "65 22 D2 59"},
        {1122, {{3, 0, 255}, {1, 0, 255}, {0, 0, 254}}, "210 254 100 0 ", "65 23 FE 86"},
        {1123, {{5, 9, 9}, {2, 0, 0}}, "210 254 0 0 ", "65 24 00 89"},
        {1138, {{2, 0, 0}, {5, 255, 255}}, "210 254 0 255 ", "65 25 FF 89"},
    };
    inDialog(RunGasLevelDialog, [&] {
        tick();
        std::string shown = "5 250 100 0 ";
        for (const Row& row : rows) {
            sent();
            for (const Move& move : row.moves) {
                scroll(row.bar, move.code, move.position);
                EXPECT_EQ(positionOf(row.bar), move.becomes) << row.bar << " code " << move.code;
                EXPECT_EQ(numbers(), shown);
                tick();
                EXPECT_EQ(sent(), "") << "neither written nor polled under the user's hand";
            }
            scroll(row.bar, SB_ENDSCROLL);
            EXPECT_EQ(sent(), row.frame);
            shown = row.shown;
            EXPECT_EQ(numbers(), shown);
            tick();
            EXPECT_EQ(sent(), PollAC);
            EXPECT_EQ(numbers(), shown);
            EXPECT_EQ(positionOf(row.bar), row.moves.back().becomes);
        }
        scroll(1137, SB_THUMBPOSITION, 3);
        tick();
        EXPECT_EQ(sent(), PollAC) << "a code that moves nothing stops nothing";
        QWidget& bar = *widgetOf(control(1137));
        QTest::mouseClick(&bar, Qt::LeftButton, {}, QPoint(bar.width() - 4, bar.height() / 2));
        EXPECT_EQ(sent(), "65 22 D3 5A");
    });
}

TEST_F(TuningDialogs, TheFactoryButtonWritesBackWhatTheControllerRestored) {
    connect(4);
    for (int row = 0; row < 4; ++row) {
        setCell(simulator::Prog1 + row, static_cast<std::uint8_t>(row + 1));
    }
    inDialog(RunGasLevelDialog, [&] {
        tick();
        EXPECT_EQ(numbers(), "1 2 3 4 ");
        sent();
        clickOn(control(1141));
        EXPECT_EQ(sent(), AskIdent + ", 65 1F 34 B8, " + AskC + ", 65 22 28 AF, 65 23 5A E2, 65 24 96 1F, 65 25 D2 5C");
        tick();
        EXPECT_EQ(numbers(), "40 90 150 210 ");
    });
}

TEST_F(TuningDialogs, LampsShowTheLevel) {
    connect(4);
    setCell(simulator::Options, 0x80);
    server->with([](simulator::Controller& controller) { controller.gas.tank = 0.5; });
    inDialog(RunGasLevelDialog, [&] {
        tick();
        EXPECT_EQ(lamps(), "-XX--");
        repaintDialog();
        EXPECT_EQ(lamps(), "-----");
        EXPECT_EQ(thresholdsEnabled(), "none");
        for (const int id : {1, 1150, 1151, 1152, 1153, 1154}) {
            EXPECT_TRUE(IsWindowEnabled(control(id))) << id;
        }
        EXPECT_EQ(at(479, 259), Grey);
        EXPECT_NE(at(479, 260), Grey);
        const char* const expected[] = {"X----", "-X---", "-XX--", "-XXX-", "-XXXX", "-----", "-----", "-----"};
        for (int level = 0; level < 8; ++level) {
            // The tick's third reply is spoiled, so that the byte set here stands.
            ParamBlockC[5] = static_cast<BYTE>(level | 0xF0);
            server->addFault({simulator::FaultKind::Split, 1, 2});
            server->addFault({simulator::FaultKind::FlippedBit, 1, 1});
            tick();
            server->clearFaults();
            ASSERT_EQ(ParamBlockC[5], level | 0xF0);
            EXPECT_EQ(lamps(), expected[level]) << level;
        }
        EXPECT_EQ(thresholdsEnabled(), "all");
    });
}

TEST_F(TuningDialogs, TheSensorTypeIsTwoBitsOfOptions) {
    for (const int family : {4, 2}) {
        SCOPED_TRACE(family);
        connect(family);
        inDialog(RunGasLevelDialog, [&] {
            EXPECT_EQ(entryOf(1003, 0) + entryOf(1003, 1) + entryOf(1003, 2), "Digital0-90 Ohm90-0 Ohm");
            for (const auto& [options, entry] :
                 {std::pair{0x01, 0}, {0x81, 0}, {0x80, 1}, {0xFE, 1}, {0x00, 2}, {0x7E, 2}, {0xFF, 0}}) {
                setCell(simulator::Options, static_cast<std::uint8_t>(options));
                tick();
                EXPECT_EQ(sent(), family == 4 ? PollAC : PollA);
                EXPECT_EQ(selected(1003), entry) << options;
                const bool served = family == 4 && entry != 0;
                EXPECT_EQ(thresholdsEnabled(), served ? "all" : "none") << options;
                EXPECT_EQ(numbers(), served ? "40 90 150 210 " : "0 0 0 0 ") << options;
                EXPECT_EQ(lamps() == "-----", !served) << options;
            }
            const std::uint8_t written[] = {0x7F, 0xFE, 0x7E};
            expectWrites(1003, 3, family == 4 ? 6 : 5, [&](unsigned entry) { return written[entry]; });
        });
        closeProgram();
        server.reset();
    }
}

TEST_F(TuningDialogs, CorrectionsAreNibblesCountedDownwards) {
    for (const int family : {2, 4}) {
        SCOPED_TRACE(family);
        connect(family);
        setCell(simulator::ZAM_OTW_BJ, 0x59);
        setCell(simulator::ZAM_OTW_DO, 0x0F);
        inDialog(RunCorrectionsDialog, [&] {
            EXPECT_EQ(CorrectionsDialogOpen, 1);
            EXPECT_EQ(widgetOf(openDialogWindow())->windowTitle(), QStringLiteral("Actuator corrections"));
            tick();
            EXPECT_EQ(sent(), family == 2 ? PollA : PollC);
            const auto shown = [](int combo) { return entryOf(combo, static_cast<unsigned>(selected(combo))); };
            EXPECT_EQ(shown(1003) + " " + shown(1013) + " " + shown(1122) + " " + shown(1123), "0 +10 -20 +14");
            EXPECT_EQ(entryOf(1003, 0) + " " + entryOf(1003, 5) + " " + entryOf(1003, 7) + " " + entryOf(1003, 15),
                      "-12 -2 +2 +18");
            EXPECT_EQ(entryOf(1013, 0) + entryOf(1013, 15), "-10+20");
            EXPECT_EQ(entryOf(1122, 15) + entryOf(1123, 0), "+10-16");
            const auto cell = static_cast<std::uint8_t>(family == 2 ? 0x0C : 0x0D);
            expectWrites(1003, 16, cell, [](unsigned entry) { return 0x50 + 15 - entry; });
            expectWrites(1013, 16, cell, [](unsigned entry) { return (15 - entry) * 16 + 9; });
            expectWrites(1122, 16, cell + 1, [](unsigned entry) { return 15 - entry; });
            expectWrites(1123, 16, cell + 1, [](unsigned entry) { return (15 - entry) * 16 + 15; });
        });
        closeProgram();
        server.reset();
    }
}

TEST_F(TuningDialogs, AFamilyThatIsNotServedIsOnlyAskedForItsName) {
    connect(1);
    inDialog(RunEmulationDialog, [&] {
        tick();
        EXPECT_EQ(sent(), AskIdent);
        pick(1003, 7);
        EXPECT_EQ(sent(), "");
    });
    inDialog(RunGasLevelDialog, [&] {
        tick();
        EXPECT_EQ(sent(), PollA);
        EXPECT_EQ(thresholdsEnabled() + lamps() + numbers(), "none-----0 0 0 0 ");
        pick(1003, 1);
        EXPECT_EQ(sent(), "");
        SendMessageA(openDialogWindow(), WM_COMMAND, 1141, 0);
        EXPECT_EQ(sent(), AskIdent);
    });
    inDialog(RunCorrectionsDialog, [&] {
        tick();
        EXPECT_EQ(sent(), AskIdent);
        EXPECT_EQ(selected(1003), CB_ERR);
        pick(1003, 7);
        tick();
        EXPECT_EQ(selected(1003), 7);
        EXPECT_EQ(sent(), AskIdent);
    });
}

TEST_F(TuningDialogs, ALostLinkShowsAndComesBack) {
    connect(4);
    setCell(simulator::Options, 0x80);
    setCell(simulator::EmulBJ_TimeHi, 200);
    setCell(simulator::ZAM_OTW_BJ, 0x59);
    const auto writesNothing = [] {
        LastByteCount = 99;
        pick(1003, 2);
        return LastByteCount == 99;
    };
    const auto comesBack = [&] {
        ASSERT_TRUE(server->replug());
        // The gas level dialog's own read may have opened the port in vain.
        tick();
        tick();
        EXPECT_EQ(LinkLost, 0);
        EXPECT_EQ(ActiveTimerPeriod, 50u);
    };
    inDialog(RunEmulationDialog, [&] {
        loseLink(*server);
        EXPECT_EQ(ActiveTimerPeriod, 500u);
        EXPECT_EQ(selected(1003) + selected(1004), 0);
        EXPECT_EQ(at(61, 100), Yellow) << "two points a phase";
        EXPECT_TRUE(writesNothing());
        comesBack();
        EXPECT_EQ(selected(1003), 199);
    });
    inDialog(RunGasLevelDialog, [&] {
        tick();
        EXPECT_NE(lamps(), "-----");
        loseLink(*server);
        EXPECT_EQ(thresholdsEnabled() + lamps() + numbers(), "none-----0 0 0 0 ");
        EXPECT_TRUE(writesNothing());
        comesBack();
        EXPECT_EQ(thresholdsEnabled() + numbers(), "all40 90 150 210 ");
    });
    inDialog(RunCorrectionsDialog, [&] {
        tick();
        loseLink(*server);
        EXPECT_EQ(selected(1003), 6);
        EXPECT_EQ(selected(1013), 10);
        EXPECT_TRUE(writesNothing());
        comesBack();
        EXPECT_EQ(selected(1003), 6);
    });
}

TEST_F(TuningDialogs, AnOpenListStopsThePolling) {
    connect(4);
    setCell(simulator::Options, 0x00);
    setCell(simulator::ZAM_OTW_BJ, 0x00);
    struct Row {
        void (*open)();
        const char* frame;
        UINT armed;  // by a tick while the list is open
    };
    for (const Row& row : {Row{RunEmulationDialog, "65 0B 02 72", 0}, Row{RunGasLevelDialog, "65 06 80 EB", 0},
                           Row{RunCorrectionsDialog, "65 0D 0E 80", 50}}) {
        SCOPED_TRACE(row.frame);
        inDialog(row.open, [&] { tick(); },
                 {{"box", always, [] { clickOn(control(1003)); }},
                  {"list", [] { return boxOf(control(1003)).view()->isVisible(); },
                   [&] {
                       EXPECT_EQ(ComboOpen, 1);
                       sent();
                       ActiveTimerPeriod = 0;
                       tick();
                       EXPECT_EQ(sent(), "");
                       EXPECT_EQ(ActiveTimerPeriod, row.armed);
                       KillTimer(openDialogWindow(), 2);
                       clickEntry(control(1003), 1);
                   }},
                  {"choice", [&] { return !server->log().empty(); },
                   [&] {
                       EXPECT_EQ(ComboOpen, 0);
                       EXPECT_EQ(sent(), row.frame);
                       press(Qt::Key_Escape);
                   }}});
    }
}

TEST_F(TuningDialogs, EveryWayOutClearsThePauseFlag) {
    connect(4);
    for (void (*open)() : {RunEmulationDialog, RunGasLevelDialog, RunCorrectionsDialog}) {
        for (void (*leave)() :
             std::initializer_list<void (*)()>{[] { press(Qt::Key_Return); }, [] { clickOn(control(1)); },
                                               [] { widgetOf(openDialogWindow())->close(); }}) {
            inDialog(open, [] {}, {{"closing", always, leave}});
        }
    }
    int flag = 0;
    RunTuningDialog(9999, nullptr, flag);
    EXPECT_EQ(flag, 0) << "a dialog that cannot be made";
}
