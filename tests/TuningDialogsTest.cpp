// The three tuning dialogs against a simulated controller: what reaches the wire and what is shown.
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
                                        body();
                                    }}};
        steps.insert(steps.end(), leave.begin(), leave.end());
        run(steps);
        EXPECT_EQ(TuningDialogOpen + CorrectionsDialogOpen, 0);
    }
};

TEST_F(TuningDialogs, ListsShowWhatTheControllerHoldsAndSendEachEntry) {
    struct List {
        int id;
        std::string ends;  // its first and last entry
        int entries, shown;
        unsigned number;  // of its cell on the wire
        int first, step;  // what its entries send
    };
    using Cells = std::vector<std::pair<int, std::uint8_t>>;
    const auto check = [&](int family, void (*open)(), const Cells& cells, const std::string& poll,
                           const std::vector<List>& lists) {
        startOn(family);
        for (const auto& [cell, value] : cells) {
            setCell(cell, value);
        }
        inDialog(open, [&] {
            tick();
            EXPECT_EQ(sent(), poll);
            for (const List& list : lists) {
                SCOPED_TRACE(list.ends);
                EXPECT_EQ(entriesOf(list.id), list.entries);
                EXPECT_EQ(entryOf(list.id, 0) + ".." + entryOf(list.id, list.entries - 1), list.ends);
                EXPECT_EQ(selected(list.id), list.shown);
                for (int entry = 0; entry < list.entries; ++entry) {
                    pick(list.id, static_cast<unsigned>(entry));
                    EXPECT_EQ(sent(), cellFrame(list.number, static_cast<unsigned>(list.first + entry * list.step)));
                }
            }
        });
        closeProgram();
    };
    check(4, RunEmulationDialog, {{simulator::EmulBJ_TimeHi, 40}, {simulator::EmulBJ_TimeLo, 255}}, PollA,
          {{1003, "0,025..6,375", 255, 39, 0x0B, 1, 1}, {1004, "0,025..6,375", 255, 254, 0x0C, 1, 1}});
    for (const auto& [family, poll, cell] : {std::tuple{2, PollA, 0x0Cu}, {4, PollC, 0x0Du}}) {
        check(family, RunCorrectionsDialog, {{simulator::ZAM_OTW_BJ, 0x59}, {simulator::ZAM_OTW_DO, 0x0F}}, poll,
              {{1003, "-12..+18", 16, 6, cell, 0x5F, -1},
               {1013, "-10..+20", 16, 10, cell, 0xF9, -16},
               {1122, "-20..+10", 16, 0, cell + 1, 0x0F, -1},
               {1123, "-16..+14", 16, 15, cell + 1, 0xFF, -16}});
    }
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
    // The heights at which letters stand at this distance.
    const auto letters = [](int x) {
        std::string heights;
        for (const int y : {35, 55, 115, 135}) {
            const auto light = [](COLORREF pixel) { return (pixel & 0xFF) > 160; };
            heights += countPixels(openDialogWindow(), {x, y, x + 8, y + 16}, light) > 0 ? "X" : "-";
        }
        return heights;
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
        EXPECT_EQ(letters(15) + letters(23), "----X--X") << "0 and 1";
        for (const POINT& axis : {POINT{45, 140}, {500, 155}, {49, 65}, {42, 28}, {532, 152}}) {
            EXPECT_EQ(at(axis.x, axis.y), Grey) << axis.x;
        }
        EXPECT_TRUE(at(10, 10) == Black && at(549, 164) == Black && at(9, 10) != Black && at(549, 165) != Black);
        for (const auto& [high, low] : {std::pair{255, 255}, {1, 1}, {0, 0}, {255, 3}, {2, 200}}) {
            plot(high, low, 5);
            EXPECT_EQ(selected(1003), std::max(high - 1, 0)) << "a time of 0 reads as the shortest";
            EXPECT_GT(yellowIn({538, 45, 540, 146}), 0) << high;
            EXPECT_EQ(yellowIn({540, 10, 550, 165}), 0) << high;
            const int phase = (high >> 1) + 2;
            EXPECT_EQ(at(60 + phase - 1, 100), Yellow) << "the first falling edge of " << high;
            EXPECT_EQ(yellowIn({60, 46, 60 + phase - 1, 145}), 0) << "no edge before it";
        }
        EXPECT_EQ(letters(15) + letters(23), "X--XX--X") << "0.8 and 1.6";
        plot(20, 40, 3);
        EXPECT_EQ(letters(15) + letters(23), "----XXXX") << "0 to 5";
        setCell(simulator::EmulBJ_TimeHi, 60);
        tick();
        EXPECT_EQ(at(80, 45), Yellow) << "a new time is plotted without a paint";
    });
}

TEST_F(TuningDialogs, AScrolledThresholdIsWrittenOnceAtTheEnd) {
    startOn(4);
    struct Row {
        int bar;
        std::vector<std::array<int, 3>> moves;  // the code, the thumb's position, what the bar then shows
        const char *shown, *frame;
    };
    // By number: 0 and 1 a step down and up, 2 and 3 a page, 5 the held thumb; 4, 6 and 7 move nothing.
    const Row rows[] = {
        {1137, {{0, 0, 39}, {1, 0, 40}, {5, 5, 5}, {2, 0, 0}, {0, 0, 0}, {3, 0, 10}}, "10 90 150 210", "65 22 0A 91"},
        {1137, {{5, 200, 200}, {3, 0, 210}, {4, 7, 210}, {6, 0, 210}, {7, 0, 210}}, "210 90 150 210", "65 22 D2 59"},
        {1122, {{5, 250, 250}, {3, 0, 255}, {1, 0, 255}, {0, 0, 254}}, "210 254 150 210", "65 23 FE 86"},
        {1123, {{5, 9, 9}, {2, 0, 0}}, "210 254 0 210", "65 24 00 89"},
        {1138, {{2, 0, 200}, {5, 255, 255}}, "210 254 0 255", "65 25 FF 89"},
    };
    const auto scroll = [](int bar, int code, int position) {
        SendMessageA(openDialogWindow(), WM_HSCROLL, MAKEWPARAM(code, position),
                     reinterpret_cast<LPARAM>(control(bar)));
    };
    inDialog(RunGasLevelDialog, [&] {
        tick();
        std::string shown = "40 90 150 210";
        for (const Row& row : rows) {
            sent();
            for (const auto& [code, position, becomes] : row.moves) {
                scroll(row.bar, code, position);
                EXPECT_EQ(ask(row.bar, SBM_GETPOS), becomes) << row.bar << " code " << code;
                EXPECT_EQ(thresholds(), shown);
                tick();
                EXPECT_EQ(sent(), "") << "neither written nor polled under the user's hand";
            }
            scroll(row.bar, SB_ENDSCROLL, 0);
            EXPECT_EQ(sent(), row.frame);
            tick();
            EXPECT_EQ(sent(), PollAC);
            EXPECT_EQ(thresholds(), shown = row.shown);
            EXPECT_EQ(ask(row.bar, SBM_GETPOS), row.moves.back()[2]);
        }
        scroll(1137, SB_THUMBPOSITION, 3);
        tick();
        EXPECT_EQ(sent(), PollAC) << "a code that moves nothing stops nothing";
        const QWidget& bar = *widgetOf(control(1137));
        clickAt(control(1137), QPoint(bar.width() - 4, bar.height() / 2));
        EXPECT_EQ(sent(), "65 22 D3 5A");

        // The factory button writes back what the controller has restored.
        clickOn(control(1141));
        EXPECT_EQ(sent(), AskIdent + ", 65 1F 34 B8, " + AskC + ", 65 22 28 AF, 65 23 5A E2, 65 24 96 1F, 65 25 D2 5C");
        tick();
        EXPECT_EQ(thresholds(), "40 90 150 210");
    });
}

TEST_F(TuningDialogs, TheSensorTypeIsTwoBitsOfOptionsAndLampsShowTheLevel) {
    for (const int family : {2, 4}) {
        SCOPED_TRACE(family);
        startOn(family);
        server->with([](simulator::Controller& controller) { controller.gas.tank = 0.5; });
        inDialog(RunGasLevelDialog, [&] {
            for (const auto& [options, entry] :
                 {std::pair{0x01, 0}, {0x81, 0}, {0xFE, 1}, {0x00, 2}, {0x7E, 2}, {0xFF, 0}, {0x80, 1}}) {
                setCell(simulator::Options, static_cast<std::uint8_t>(options));
                tick();
                EXPECT_EQ(selected(1003), entry) << options;
                const bool served = family == 4 && entry != 0;
                EXPECT_EQ(thresholds() + lamps(), served ? "40 90 150 210-XX--" : "(0 0 0 0)-----") << options;
            }
            EXPECT_EQ(entryOf(1003, 0) + entryOf(1003, 1) + entryOf(1003, 2), "Digital0-90 Ohm90-0 Ohm");
            for (const auto& [entry, byte] : {std::pair{0u, 0x01u}, {1u, 0x80u}, {2u, 0x00u}}) {
                sent();
                pick(1003, entry);
                EXPECT_EQ(sent(), cellFrame(family == 4 ? 6 : 5, byte));
            }
            repaintDialog();
            EXPECT_EQ(thresholds().front(), '(');
            EXPECT_EQ(lamps(), "-----");
            EXPECT_TRUE(at(479, 259) == Grey && at(479, 260) != Grey);
            const char* const expected[] = {"X----", "-X---", "-XX--", "-XXX-", "-XXXX", "-----", "-----", "-----"};
            for (int level = 0; family == 4 && level < 8; ++level) {
                // The tick's third reply is spoiled, so that the byte set here stands.
                ParamBlockC[5] = static_cast<BYTE>(level | 0xF0);
                server->addFault({.kind = simulator::FaultKind::FlippedBit, .count = 1, .after = 2});
                tick();
                ASSERT_EQ(ParamBlockC[5], level | 0xF0);
                EXPECT_EQ(lamps(), expected[level]) << level;
            }
        });
        closeProgram();
    }
}

TEST_F(TuningDialogs, ALostLinkShowsAndAnUnservedFamilyIsOnlyAskedForItsName) {
    struct Row {
        void (*open)();
        std::string poll;  // of the unserved family
        int entry, lost;   // of the first list
    };
    for (const Row& row : {Row{RunEmulationDialog, AskIdent, 199, 0}, Row{RunGasLevelDialog, PollA, 1, 2},
                           Row{RunCorrectionsDialog, AskIdent, 6, 6}}) {
        SCOPED_TRACE(row.entry);
        startOn(4);
        setCell(simulator::Options, 0x80);
        setCell(simulator::ZAM_OTW_BJ, 0x59);
        inDialog(row.open, [&] {
            const bool gasLevel = row.open == RunGasLevelDialog;
            const auto expectShown = [&](int entry, const char* level) {
                EXPECT_EQ(selected(1003), entry);
                EXPECT_EQ(gasLevel ? thresholds() + lamps() : level, level);
            };
            clearMirrors();
            pick(1003, 0);
            EXPECT_EQ(sent(), row.open == RunEmulationDialog ? "65 0B 01 71" : "") << "other bits were never read";
            setCell(simulator::EmulBJ_TimeHi, 200);
            tick();
            expectShown(row.entry, "40 90 150 210-XXX-");
            server->unplug();
            tick(4);
            EXPECT_TRUE(LinkLost == 1 && ActiveTimerPeriod == 500);
            expectShown(row.lost, "(0 0 0 0)-----");
            EXPECT_TRUE(row.open != RunEmulationDialog || at(61, 100) == Yellow) << "two points a phase";
            server->replug();
            // The gas level dialog's own read may have opened the port in vain.
            tick(2);
            EXPECT_TRUE(LinkLost == 0 && ActiveTimerPeriod == 50);
            expectShown(row.entry, "40 90 150 210-XXX-");

            plugController(1);
            tick(8);
            EXPECT_TRUE(LinkLost == 0 && ControllerFamily == 1);
            sent();
            pick(1003, 0);
            EXPECT_EQ(sent(), "");
            tick();
            EXPECT_EQ(sent(), row.poll);
            SendMessageA(openDialogWindow(), WM_COMMAND, 1141, 0);
            EXPECT_EQ(sent(), gasLevel ? AskIdent : "");
        });
        closeProgram();
    }
}

TEST_F(TuningDialogs, AnOpenListStopsThePolling) {
    startOn(4);
    setCell(simulator::ZAM_OTW_BJ, 0x00);
    struct Row {
        void (*open)();
        const char* frame;
        UINT armed;  // by a tick while the list is open
    };
    for (const Row& row : {Row{RunEmulationDialog, "65 0B 02 72", 0}, Row{RunGasLevelDialog, "65 06 E2 4D", 0},
                           Row{RunCorrectionsDialog, "65 0D 0E 80", 50}}) {
        inDialog(row.open, [] { clickOn(control(1003)); },
                 {{"list", [] { return listOpen(control(1003)); },
                   [&] {
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
                       EXPECT_EQ(sent(), row.frame);
                       EXPECT_EQ(ComboOpen, 0);
                       press(Qt::Key_Return);
                   }}});
    }
}
