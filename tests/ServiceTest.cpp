// The Reset page and the controller information dialog against a simulated controller: what reaches the wire and what
// is shown.
#include <QClipboard>
#include <QGuiApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QPixmap>
#include <QProgressBar>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "TuningPages.h"
#include "model/Cells.h"
#include "platform/linux/Layer.h"
#include "service/ControllerDialog.h"
#include "simulator/Cells.h"

namespace {

using simulator::FaultKind;

const std::string AskIdent = "65 01 01 67";
const std::string AskC = "65 05 05 6F";
const std::string Poll = AskIdent + ", " + AskC;
const std::string Look = AskIdent + ", 65 02 02 69";

// A write to a cell by its number in family 4.
std::string frame(unsigned cell, BYTE value) {
    const auto number = static_cast<std::uint8_t>(cell + 1);
    return hex({0x65, number, value, static_cast<std::uint8_t>(0x65 + number + value)});
}

// The frames of the first steps of a reset, from what the mirrors hold now: the parameters but for the command cell,
// and the minutes.
std::string resetFrames(unsigned steps) {
    std::string all = Look + ", 65 1F 33 B7, 65 02 02 69, 65 03 03 6B, 65 04 04 6D, " + AskC;
    for (unsigned step = 0; step < steps; ++step) {
        const unsigned cell = step < 25 ? 5 + step : step < 32 ? 6 + step : 49;
        all += ", " + frame(cell, CellValue(cell, 4));
    }
    return all;
}

QProgressBar& bar() {
    return *qobject_cast<QProgressBar*>(widgetOf(GetDlgItem(PageWindow, IDC_RESET_PROGRESS)));
}

// The boxes of the Reset page: our names for them and their lines.
const std::map<QMessageBox::Icon, std::pair<std::string, size_t>> Boxes = {
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
    static void clickButton() {
        clickOn(GetDlgItem(PageWindow, IDC_RESET_BUTTON));
    }
    // Clicks the button and answers the box: "done 32" for the box of that name with the bar at 32.
    std::string reset() {
        server->clearLog();
        std::string outcome;
        const auto answer = [&] {
            const auto& [name, text] = Boxes.at(box()->icon());
            EXPECT_EQ(told(), line(137) + ": " + line(text));
            outcome = name + std::to_string(bar().value());
            press(Qt::Key_Return);
        };
        run({{"page", always, clickButton}, {"box", boxShown, answer}});
        EXPECT_EQ(WriteDelay, 0u);
        return outcome;
    }
    // Bytes in all mirrors that the reset's own reads do not renew, since their replies are spoiled.
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
    holdMirrors(20, 3);
    server->clearFaults();
    int shown = -2;
    server->observe([&](const simulator::LogEntry& entry) {
        if (entry.isWrite) {
            EXPECT_EQ(bar().value(), std::max(shown++, 0)) << "as the next cell is written";
        }
    });
    EXPECT_EQ(reset(), "done 32");
    EXPECT_EQ(sent(), resetFrames(33));
    server->observe(nullptr);

    choose(LanguageMenu, 2);
    settle();
    EXPECT_EQ(textOf(IDC_RESET_HEADING) + textOf(IDC_RESET_EXPLANATION) + textOf(IDC_RESET_BUTTON),
              line(134) + line(135) + line(136));

    holdMirrors(20, 3);
    EXPECT_EQ(reset(), "done 32") << "what could not be read back goes out as it was before";
    EXPECT_EQ(sent(), resetFrames(33));
    EXPECT_EQ(A[1], 23);
}

TEST_F(Reset, AWrongEchoEndsTheRunAtItsStep) {
    openPage(4);
    for (int step = 0; step < 33; ++step) {
        server->addFault({.kind = FaultKind::WrongEcho, .count = 1, .onlyWrites = true, .after = step + 1});
        EXPECT_EQ(reset(), "failed " + std::to_string(std::max(step - 1, 0)));
        EXPECT_EQ(sent(), resetFrames(static_cast<unsigned>(step) + 1));
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
        bar().setValue(9);
        if (family % 2 == 0) {
            setLive(7, 0xF8);
            EXPECT_EQ(reset(), "refused 0");
        } else {
            run({{"page", always, clickButton}});
            EXPECT_EQ(bar().value(), 0);
        }
        EXPECT_EQ(sent(), Look);
        closeProgram();
    }
}

class Information : public TuningPages {
protected:
    // In the dialog at rest after a first tick; its timer waits for the body's own ones.
    void inDialog(
        const std::function<void()>& body, void (*leave)() = [] { press(Qt::Key_Escape); }) {
        const auto begin = [&] {
            stopTimer();
            server->clearLog();
            tick();
            body();
        };
        PostMessageA(MainWindow, WM_COMMAND, IDM_CONTROLLER, 0);
        run({{"dialog", dialogShown, begin}, {"closing", always, leave}});
    }
    static std::string fields() {
        return textOf(IDC_INFO_VERSION) + "|" + textOf(IDC_INFO_REGISTRATION) + "|" + textOf(IDC_INFO_HOURS) + "|" +
               textOf(IDC_INFO_DATE);
    }
    // How many controls are grey, nine being those of what is stored, and how many hidden, seven being the date
    // editor. Of the number and of the date whether their buttons store, and whether the number can be typed.
    static std::string look() {
        const auto letter = [](int id) { return textOf(id) == line(198) ? "S" : textOf(id) == line(197) ? "-" : "?"; };
        auto& edit = *qobject_cast<QLineEdit*>(widgetOf(control(IDC_INFO_REGISTRATION)));
        const QColor ground = edit.grab().toImage().pixelColor(edit.width() - 5, edit.height() / 2);
        EXPECT_EQ(ground == Qt::white, !edit.isReadOnly() && edit.isEnabled())
            << "only what can be typed into is white";
        return std::to_string(controls(IsWindowEnabled).size()) + " " +
               std::to_string(controls(IsWindowVisible).size()) + letter(IDC_INFO_REGISTRATION_BUTTON) +
               letter(IDC_INFO_DATE_BUTTON) + (edit.isReadOnly() ? "" : " typing");
    }
    static void toggle(int button) {
        clickOn(control(button));
        tick();
    }
};

TEST_F(Information, EachFamilyShowsWhatItStores) {
    struct Row {
        int family;
        std::string fields;
        void (*leave)();
    };
    const Row rows[] = {
        {1, "Unknown controller|||", [] { press(Qt::Key_Return); }},
        {2, "2.07|||", [] { clickOn(control(IDC_CLOSE)); }},
        {3, "Unknown controller|||", [] { widgetOf(openDialogWindow())->close(); }},
        {4, "4.07|KR4512A|1234h5'|2019-09-15", [] { press(Qt::Key_Escape); }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.family);
        const bool served = row.family == 4;
        startOn(row.family, 7);
        setCell(simulator::HoursLo, 0xD2);
        setCell(simulator::HoursHi, 0x04);
        setCell(simulator::Minutes, 5);
        const auto body = [&] {
            EXPECT_EQ(textOf(topWindow()), line(190));
            EXPECT_EQ(sent(), served ? Poll : AskIdent);
            EXPECT_EQ(fields(), row.fields);
            EXPECT_EQ(look(), served ? "0 7--" : "9 7--");
            toggle(IDC_INFO_REGISTRATION_BUTTON);
            toggle(IDC_INFO_DATE_BUTTON);
            EXPECT_EQ(look(), served ? "0 0SS typing" : "9 7--");
            sent();
            notify(IDC_INFO_HOURS_BUTTON, BN_CLICKED);  // as before the first tick has greyed it
            EXPECT_EQ(sent(), served ? "65 27 00 8C, 65 28 00 8D, 65 32 00 97" : "");
            tick();
            EXPECT_EQ(textOf(IDC_INFO_HOURS), served ? "0h0'" : "");
            SendMessageA(PageWindow, WM_TIMER, 1, 0);
            EXPECT_EQ(sent(), served ? Poll : AskIdent) << "the page below keeps off the link";
        };
        inDialog(body, row.leave);
        EXPECT_EQ(written(), "") << "closing stores nothing";
        closeProgram();
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
        {0, u"żółw 1", "\xAF\xD3\xA3W 1"},
        {2, u"жуё-яю", "\xC6\xD3\xA8-\xDF\xDE"},
        {3, u"ąčę-šž", "\xA5\xC8\xCA-\x8A\x8E"},
        {4, u"řůß", "\xD8\xD9\xDF"},
        {1, u"kr123456", "KR12345"},
        {1, u"k\n", "KPASTED"},
    };
    const auto held = std::span(ParamBlockC).subspan(ParamCByte::Registration, RegistrationLength);
    QGuiApplication::clipboard()->setText(QStringLiteral("pasted-text"));
    for (const Row& row : rows) {
        SCOPED_TRACE(row.number);
        SendMessageA(MainWindow, WM_COMMAND, LanguageItems[row.language], 0);
        settle();
        std::string stored = row.number;
        stored.resize(7);
        inDialog([&] {
            toggle(IDC_INFO_REGISTRATION_BUTTON);
            clickOn(control(IDC_INFO_REGISTRATION));
            press(row.keys.starts_with(u'\b') ? Qt::Key_End : Qt::Key_A, Qt::ControlModifier);
            press(Qt::Key_Delete);
            settle();
            for (const char16_t key : row.keys) {
                key == u'\n'   ? press(Qt::Key_V, Qt::ControlModifier)
                : key == u'\b' ? press(Qt::Key_Backspace)
                               : type(key);
                settle();
            }
            const std::string shown = layer::decode(row.number.c_str(), row.language == 2 ? 1251 : 1250).toStdString();
            EXPECT_EQ(textOf(IDC_INFO_REGISTRATION), shown);
            toggle(IDC_INFO_REGISTRATION_BUTTON);
            EXPECT_EQ(std::string(held.begin(), held.end()), stored);
            EXPECT_EQ(look() + textOf(IDC_INFO_REGISTRATION), "0 7--" + shown);
        });
    }
}

TEST_F(Information, TheDateEditorStartsTodayAndStoresWhatIsChosen) {
    startOn(4);
    // What the lists show, and how many days there are to choose from.
    const auto editor = [] {
        std::string shown;
        for (const int list : {IDC_INFO_YEAR, IDC_INFO_MONTH, IDC_INFO_DAY}) {
            shown += entryOf(list, selected(list)) + "-";
        }
        return shown + std::to_string(entriesOf(IDC_INFO_DAY));
    };
    struct Row {
        WORD year, month, day;
        std::string start;
        std::string picks;  // list, entry, what is then shown
    };
    const Row rows[] = {
        {2024, 2, 29, "2024-02-29-29",
         "Y 23 2023-02-01-28  D 27 2023-02-28-28  Y 20 2020-02-01-29  M 0 2020-01-01-31  D 30 2020-01-31-31  "
         "Y 21 2021-01-31-31  M 3 2021-04-01-30"},
        {2024, 1, 31, "2024-01-31-31", "M 1 2024-02-01-29  Y 22 2022-02-01-28  Y 0 2000-02-01-29  D 28 2000-02-29-29"},
        {1999, 12, 31, "2000-12-31-31", ""},
        {2062, 8, 31, "2062-08-31-31", ""},
        // No year is selected until one is chosen, and nothing stored.
        {2063, 2, 15, "-02-15-28", "M 0 -01-01-31  M 1 -02-01-28  Y 62 2062-02-01-28  M 8 2062-09-01-30"},
    };
    const std::map<char, int> lists = {{'Y', IDC_INFO_YEAR}, {'M', IDC_INFO_MONTH}, {'D', IDC_INFO_DAY}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.start);
        clock->setLocalTime({row.year, row.month, 0, row.day, 0, 0, 0, 0});
        inDialog([&] {
            toggle(IDC_INFO_DATE_BUTTON);
            EXPECT_EQ(editor(), row.start);
            if (row.start[0] == '-') {
                sent();
                toggle(IDC_INFO_DATE_BUTTON);
                EXPECT_EQ(sent(), Poll) << "nothing is stored without a year";
            }
            EXPECT_EQ(look(), "0 0-S");
            std::istringstream picks(row.picks);
            char list = 0;
            unsigned entry = 0;
            for (std::string shown; picks >> list >> entry >> shown;) {
                pick(lists.at(list), entry);
                EXPECT_EQ(editor(), shown) << list << entry;
            }
            const std::string chosen = editor().substr(0, 10);
            toggle(IDC_INFO_DATE_BUTTON);
            EXPECT_EQ(look() + textOf(IDC_INFO_DATE), "0 7--" + chosen);
        });
    }
}

TEST_F(Information, ALostLinkHidesTheEditorsUntilItIsBack) {
    startOn(4);
    for (const std::string open : {"--", "-S", "S- typing", "SS typing"}) {
        SCOPED_TRACE(open);
        inDialog([&] {
            const std::string before = fields();
            for (const size_t at : {0, 1}) {
                if (open[at] == 'S') {
                    toggle(at == 0 ? IDC_INFO_REGISTRATION_BUTTON : IDC_INFO_DATE_BUTTON);
                }
            }
            server->unplug();
            tick(3);
            EXPECT_EQ(look().substr(0, 3) + fields(), "9 7" + line(161) + "|||");
            ASSERT_TRUE(server->replug());
            tick(2);
            EXPECT_EQ(look(), (open[1] == 'S' ? "0 0" : "0 7") + open);
            EXPECT_TRUE(open != "--" || fields() == before);
            EXPECT_EQ(textOf(IDC_INFO_REGISTRATION).empty(), open[0] == 'S') << "what was typed is gone";
        });
    }
}
