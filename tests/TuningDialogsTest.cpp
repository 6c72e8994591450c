// The three tuning dialogs against a simulated controller: what reaches the wire and what is shown.
#include <QAbstractItemView>
#include <QTest>
#include <array>
#include <string>
#include <vector>

#include "TuningPages.h"
#include "simulator/Cells.h"
#include "tuning/CorrectionsDialog.h"
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

COLORREF at(int x, int y) {
    return pixelOf(openDialogWindow(), x, y);
}

void repaintDialog() {
    InvalidateRect(openDialogWindow(), nullptr, TRUE);
    UpdateWindow(openDialogWindow());
}

// Letter colours of the lamps from R up to 4/4: X for lit, - for dark.
std::string lamps() {
    std::string all;
    for (const int top : LampTops) {
        const bool lowest = top == LampTops[0];
        EXPECT_TRUE(at(20, top) == Black && at(39, top + 19) == Black);
        EXPECT_TRUE(at(19, top + 10) == Grey && at(40, top + 10) == Grey);
        const COLORREF colour = at(21, top + 18);
        all += colour == (lowest ? Red : Green) ? 'X' : colour == (lowest ? DimRed : Olive) ? '-' : '?';
    }
    return all;
}

// The threshold's numbers, if all that belongs to them is enabled; in brackets if nothing is.
std::string thresholds() {
    size_t enabled = IsWindowEnabled(control(1141)) ? 1 : 0;
    std::string numbers;
    for (size_t row = 0; row < 4; ++row) {
        enabled += (IsWindowEnabled(control(Bars[row])) ? 1 : 0) + (IsWindowEnabled(control(Edits[row])) ? 1 : 0);
        numbers += (row == 0 ? "" : " ") + textOf(Edits[row]);
    }
    return enabled == 9 ? numbers : enabled == 0 ? "(" + numbers + ")" : "some of " + numbers;
}

}  // namespace

class TuningDialogs : public TuningPages {
protected:
    // Over the page that opens it. What the body does runs between two ticks; the timer waits for the body's own ones.
    void inDialog(void (*open)(), const std::function<void()>& body,
                  std::vector<Step> leave = {{"closing", always, [] { press(Qt::Key_Escape); }}}) {
        SendMessageA(MainWindow, WM_COMMAND, open == RunCorrectionsDialog ? IDM_OPTIONS : IDM_CONFIGURATION, 0);
        settle();
        std::vector<Step> steps = {{"page", always, open},
                                   {"dialog", dialogShown, [&] { server->clearLog(); }},
                                   {"first tick", [&] { return !server->log().empty(); },
                                    [&] {
                                        stopTimer();
                                        server->clearLog();
                                        EXPECT_EQ(CorrectionsDialogOpen, open == RunCorrectionsDialog ? 1 : 0);
                                        EXPECT_EQ(TuningDialogOpen + CorrectionsDialogOpen, 1);
                                        body();
                                    }}};
        steps.insert(steps.end(), leave.begin(), leave.end());
        run(steps);
        EXPECT_EQ(openDialogWindow(), nullptr);
        EXPECT_EQ(TuningDialogOpen + CorrectionsDialogOpen, 0);
    }
    // Each entry must send one frame: the cell's number on the wire and the value of the entry.
    void expectWrites(int combo, int entries, int wireCell, const std::function<int(int)>& value) const {
        EXPECT_EQ(entriesOf(combo), entries) << combo;
        for (int entry = 0; entry < entries; ++entry) {
            pick(combo, static_cast<unsigned>(entry));
            const auto cell = static_cast<std::uint8_t>(wireCell);
            const auto byte = static_cast<std::uint8_t>(value(entry));
            EXPECT_EQ(sent(), hex({0x65, cell, byte, static_cast<std::uint8_t>(0x65 + cell + byte)}))
                << combo << " entry " << entry;
        }
    }
    void setThresholds(std::array<std::uint8_t, 4> values) {
        for (int row = 0; row < 4; ++row) {
            setCell(simulator::Prog1 + row, values[static_cast<size_t>(row)]);
        }
    }
};

TEST_F(TuningDialogs, EmulationTimesAreChosenAndShown) {
    startOn(4);
    setCell(simulator::EmulBJ_TimeHi, 0);
    setCell(simulator::EmulBJ_TimeLo, 255);
    inDialog(RunEmulationDialog, [&] {
        EXPECT_EQ(textOf(openDialogWindow()), "Lambda emulation type:   H/L wave");
        tick();
        EXPECT_EQ(sent(), PollA);
        EXPECT_EQ(selected(1003), 0) << "a time of 0 reads as the shortest";
        EXPECT_EQ(selected(1004), 254);
        EXPECT_EQ(entryOf(1003, 0) + " " + entryOf(1003, 39) + " " + entryOf(1004, 254), "0,025 1,000 6,375");
        expectWrites(1003, 255, 0x0B, [](int entry) { return entry + 1; });
        expectWrites(1004, 255, 0x0C, [](int entry) { return entry + 1; });
        setCell(simulator::EmulBJ_TimeHi, 40);
        tick();
        EXPECT_EQ(selected(1003), 39) << "the controller decides";
    });
}

TEST_F(TuningDialogs, ThePlotFollowsTheTimesAndTheSensor) {
    startOn(2);
    const auto plot = [&](int high, int low, int sensor) {
        setCell(simulator::EmulBJ_TimeHi, static_cast<std::uint8_t>(high));
        setCell(simulator::EmulBJ_TimeLo, static_cast<std::uint8_t>(low));
        setCell(simulator::LambdaType, static_cast<std::uint8_t>(sensor << 4));
        repaintDialog();
        EXPECT_NE(at(300, 100), Black) << "a paint covers the plot";
        tick();
    };
    const auto letters = [](int x, int y) {
        return countPixels(openDialogWindow(), {x, y, x + 8, y + 16},
                           [](COLORREF pixel) { return (pixel & 0xFF) > 160; }) > 0;
    };
    const auto yellowIn = [](const RECT& area) {
        return countPixels(openDialogWindow(), area, [](COLORREF pixel) { return pixel == Yellow; });
    };
    inDialog(RunEmulationDialog, [&] {
        // 12 points high, 22 low: a rising edge every 34 from 93 on, a falling one from 71 on.
        plot(20, 40, 0);
        for (const int x : {0, 34, 408}) {
            for (const POINT& on : {POINT{60, 45}, {70, 45}, {71, 100}, {71, 145}, {92, 145}, {93, 100}}) {
                EXPECT_EQ(at(x + on.x, on.y), Yellow) << x << " " << on.x;
            }
            EXPECT_TRUE(at(x + 72, 45) == Black && at(x + 94, 145) == Black);
        }
        EXPECT_TRUE(letters(23, 35) && letters(23, 135) && !letters(15, 35) && !letters(23, 115));
        for (const POINT& axis : {POINT{45, 140}, {500, 155}, {49, 65}, {42, 28}, {532, 152}}) {
            EXPECT_EQ(at(axis.x, axis.y), Grey) << axis.x;
        }
        EXPECT_TRUE(at(10, 10) == Black && at(549, 164) == Black && at(9, 10) != Black && at(549, 165) != Black);
        for (const auto& [high, low] : {std::pair{255, 255}, {1, 1}, {0, 0}, {255, 3}, {2, 200}}) {
            plot(high, low, 5);
            EXPECT_GT(yellowIn({538, 45, 540, 146}), 0) << high;
            EXPECT_EQ(yellowIn({540, 10, 550, 165}), 0) << high;
            const int phase = (high >> 1) + 2;
            EXPECT_EQ(at(60 + phase - 1, 100), Yellow) << "the first falling edge of " << high;
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
    startOn(4);
    setThresholds({5, 250, 100, 0});
    struct Move {
        WORD code, position;
        LRESULT becomes;
    };
    struct Row {
        int bar;
        std::vector<Move> moves;
        const char *shown, *frame;
    };
    // By number: 0 and 1 a step down and up, 2 and 3 a page, 5 the held thumb; 4, 6 and 7 move nothing.
    const Row rows[] = {
        {1137, {{0, 0, 4}, {1, 0, 5}, {2, 0, 0}, {0, 0, 0}, {3, 0, 10}}, "10 250 100 0", "65 22 0A 91"},
        {1137, {{5, 200, 200}, {3, 0, 210}, {4, 7, 210}, {6, 0, 210}, {7, 0, 210}}, "210 250 100 0", "65 22 D2 59"},
        {1122, {{3, 0, 255}, {1, 0, 255}, {0, 0, 254}}, "210 254 100 0", "65 23 FE 86"},
        {1123, {{5, 9, 9}, {2, 0, 0}}, "210 254 0 0", "65 24 00 89"},
        {1138, {{2, 0, 0}, {5, 255, 255}}, "210 254 0 255", "65 25 FF 89"},
    };
    const auto scroll = [](int bar, WORD code, WORD position) {
        SendMessageA(openDialogWindow(), WM_HSCROLL, MAKEWPARAM(code, position),
                     reinterpret_cast<LPARAM>(control(bar)));
    };
    inDialog(RunGasLevelDialog, [&] {
        tick();
        std::string shown = "5 250 100 0";
        for (const Row& row : rows) {
            sent();
            for (const Move& move : row.moves) {
                scroll(row.bar, move.code, move.position);
                EXPECT_EQ(ask(row.bar, SBM_GETPOS), move.becomes) << row.bar << " code " << move.code;
                EXPECT_EQ(thresholds(), shown);
                tick();
                EXPECT_EQ(sent(), "") << "neither written nor polled under the user's hand";
            }
            scroll(row.bar, SB_ENDSCROLL, 0);
            EXPECT_EQ(sent(), row.frame);
            shown = row.shown;
            tick();
            EXPECT_EQ(sent(), PollAC);
            EXPECT_EQ(thresholds(), shown);
            EXPECT_EQ(ask(row.bar, SBM_GETPOS), row.moves.back().becomes);
        }
        scroll(1137, SB_THUMBPOSITION, 3);
        tick();
        EXPECT_EQ(sent(), PollAC) << "a code that moves nothing stops nothing";
        QWidget& bar = *widgetOf(control(1137));
        clickAt(control(1137), QPoint(bar.width() - 4, bar.height() / 2));
        EXPECT_EQ(sent(), "65 22 D3 5A");

        // The factory button writes back what the controller has restored.
        clickOn(control(1141));
        EXPECT_EQ(sent(), AskIdent + ", 65 1F 34 B8, " + AskC + ", 65 22 28 AF, 65 23 5A E2, 65 24 96 1F, 65 25 D2 5C");
        tick();
        EXPECT_EQ(thresholds(), "40 90 150 210");
    });
}

TEST_F(TuningDialogs, LampsShowTheLevel) {
    startOn(4);
    setCell(simulator::Options, 0x80);
    server->with([](simulator::Controller& controller) { controller.gas.tank = 0.5; });
    inDialog(RunGasLevelDialog, [&] {
        tick();
        EXPECT_EQ(lamps(), "-XX--");
        repaintDialog();
        EXPECT_EQ(lamps(), "-----");
        EXPECT_EQ(thresholds().front(), '(');
        EXPECT_TRUE(at(479, 259) == Grey && at(479, 260) != Grey);
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
    });
}

TEST_F(TuningDialogs, TheSensorTypeIsTwoBitsOfOptions) {
    for (const int family : {4, 2}) {
        SCOPED_TRACE(family);
        startOn(family);
        inDialog(RunGasLevelDialog, [&] {
            EXPECT_EQ(entryOf(1003, 0) + entryOf(1003, 1) + entryOf(1003, 2), "Digital0-90 Ohm90-0 Ohm");
            for (const auto& [options, entry] :
                 {std::pair{0x01, 0}, {0x81, 0}, {0x80, 1}, {0xFE, 1}, {0x00, 2}, {0x7E, 2}, {0xFF, 0}}) {
                setCell(simulator::Options, static_cast<std::uint8_t>(options));
                tick();
                EXPECT_EQ(sent(), family == 4 ? PollAC : PollA);
                EXPECT_EQ(selected(1003), entry) << options;
                const bool served = family == 4 && entry != 0;
                EXPECT_EQ(thresholds(), served ? "40 90 150 210" : "(0 0 0 0)") << options;
                EXPECT_EQ(lamps() == "-----", !served) << options;
            }
            constexpr int Written[] = {0x7F, 0xFE, 0x7E};
            expectWrites(1003, 3, family == 4 ? 6 : 5, [&](int entry) { return Written[entry]; });
        });
        closeProgram();
        server.reset();
    }
}

TEST_F(TuningDialogs, CorrectionsAreNibblesCountedDownwards) {
    for (const int family : {2, 4}) {
        SCOPED_TRACE(family);
        startOn(family);
        setCell(simulator::ZAM_OTW_BJ, 0x59);
        setCell(simulator::ZAM_OTW_DO, 0x0F);
        inDialog(RunCorrectionsDialog, [&] {
            EXPECT_EQ(textOf(openDialogWindow()), "Actuator corrections");
            tick();
            EXPECT_EQ(sent(), family == 2 ? PollA : PollC);
            std::string shown;
            for (const int list : {1003, 1013, 1122, 1123}) {
                shown += entryOf(list, 0) + ".." + entryOf(list, 15) + ": " + entryOf(list, selected(list)) + "  ";
            }
            EXPECT_EQ(shown, "-12..+18: 0  -10..+20: +10  -20..+10: -20  -16..+14: +14  ");
            EXPECT_EQ(entryOf(1003, 5) + " " + entryOf(1003, 7), "-2 +2");
            const int cell = family == 2 ? 0x0C : 0x0D;
            expectWrites(1003, 16, cell, [](int entry) { return 0x5F - entry; });
            expectWrites(1013, 16, cell, [](int entry) { return 0xF9 - 16 * entry; });
            expectWrites(1122, 16, cell + 1, [](int entry) { return 0x0F - entry; });
            expectWrites(1123, 16, cell + 1, [](int entry) { return 0xFF - 16 * entry; });
        });
        closeProgram();
        server.reset();
    }
}

TEST_F(TuningDialogs, AFamilyThatIsNotServedIsOnlyAskedForItsName) {
    startOn(1);
    struct Row {
        void (*open)();
        std::string poll;
        int selected;  // after a choice and a tick
    };
    for (const Row& row : {Row{RunEmulationDialog, AskIdent, 0}, Row{RunGasLevelDialog, PollA, 2},
                           Row{RunCorrectionsDialog, AskIdent, 7}}) {
        inDialog(row.open, [&] {
            tick();
            EXPECT_EQ(sent(), row.poll);
            pick(1003, row.open == RunGasLevelDialog ? 1 : 7);
            EXPECT_EQ(sent(), "");
            tick();
            EXPECT_EQ(sent(), row.poll);
            EXPECT_EQ(selected(1003), row.selected);
            if (row.open == RunGasLevelDialog) {
                EXPECT_EQ(thresholds() + lamps(), "(0 0 0 0)-----");
                SendMessageA(openDialogWindow(), WM_COMMAND, 1141, 0);
                EXPECT_EQ(sent(), AskIdent);
            }
        });
    }
}

TEST_F(TuningDialogs, ALostLinkShowsAndComesBack) {
    startOn(4);
    setCell(simulator::Options, 0x80);
    setCell(simulator::EmulBJ_TimeHi, 200);
    setCell(simulator::ZAM_OTW_BJ, 0x59);
    struct Row {
        void (*open)();
        int lost, back;  // the first list's entry
    };
    for (const Row& row :
         {Row{RunEmulationDialog, 0, 199}, Row{RunGasLevelDialog, 2, 1}, Row{RunCorrectionsDialog, 6, 6}}) {
        inDialog(row.open, [&] {
            const bool gasLevel = row.open == RunGasLevelDialog;
            tick();
            EXPECT_TRUE(!gasLevel || lamps() != "-----");
            server->unplug();
            tick(4);
            ASSERT_EQ(LinkLost, 1);
            EXPECT_EQ(ActiveTimerPeriod, 500u);
            EXPECT_EQ(selected(1003), row.lost);
            EXPECT_TRUE(!gasLevel || thresholds() + lamps() == "(0 0 0 0)-----");
            EXPECT_TRUE(row.open != RunEmulationDialog || at(61, 100) == Yellow) << "two points a phase";
            LastByteCount = 99;
            pick(1003, 2);
            EXPECT_EQ(LastByteCount, 99u) << "nothing is written";
            ASSERT_TRUE(server->replug());
            // The gas level dialog's own read may have opened the port in vain.
            tick(2);
            EXPECT_EQ(LinkLost, 0);
            EXPECT_EQ(ActiveTimerPeriod, 50u);
            EXPECT_EQ(selected(1003), row.back);
            EXPECT_TRUE(!gasLevel || thresholds() == "40 90 150 210");
        });
    }
}

TEST_F(TuningDialogs, AnOpenListStopsThePollingAndEveryWayOutEndsThePause) {
    startOn(4);
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
                  {"list", [] { return listOpen(control(1003)); },
                   [&] {
                       EXPECT_EQ(ComboOpen, 1);
                       sent();
                       ActiveTimerPeriod = 0;
                       tick();
                       EXPECT_EQ(sent(), "");
                       EXPECT_EQ(ActiveTimerPeriod, row.armed);
                       stopTimer();
                       clickEntry(1);
                   }},
                  {"choice", [&] { return !server->log().empty(); },
                   [&] {
                       EXPECT_EQ(ComboOpen, 0);
                       EXPECT_EQ(sent(), row.frame);
                       press(Qt::Key_Return);
                   }}});
        for (void (*leave)() : std::initializer_list<void (*)()>{[] { clickOn(control(1)); },
                                                                 [] { widgetOf(openDialogWindow())->close(); }}) {
            inDialog(row.open, [] {}, {{"closing", always, leave}});
        }
    }
}
