// What the user does in one go, put into an exchange at every phase, on a line that answers, that loses replies and
// that is silent, gives what the same actions give one by one with time between them: the same writes in the same
// order, the same focus and flags, the same picture at rest.
#include <QImage>
#include <QKeySequence>
#include <QWidget>
#include <sstream>
#include <string>
#include <vector>

#include "TuningPages.h"
#include "platform/linux/Layer.h"
#include "tuning/TuningState.h"

namespace {

using simulator::FaultKind;

struct Act {
    std::function<QPoint()> where;  // of the mouse, on the screen; none for keys
    std::function<void(QPoint)> put;
};
using Acts = std::vector<Act>;

QPoint placeOf(const std::string& verb, int number) {
    const auto at = static_cast<size_t>(number);
    return verb == "bar"             ? desktop::barItems().at(at)
           : verb == "item"          ? desktop::menuItems().at(at)
           : verb.ends_with("entry") ? desktop::listEntries().at(at)
           : verb == "pull"
               ? widgetOf(control(number))->mapToGlobal(middleOf(control(number), QStyle::SC_ScrollBarSlider))
               : desktop::middleOf(*layer::find(control(number)));
}

// A verb and what it is done to, again and again: `click`, `rightclick`, `roll` (the wheel) and `pull` (a thumb, let go
// outside) with a control, `bar` and `item` with a place on the menu bar and in the open menu, `entry` and `rightentry`
// with one of the open list, `key` with a letter or a key's name.
Acts actsOf(const std::string& told) {
    Acts acts;
    std::istringstream words(told);
    for (std::string verb, what; words >> verb >> what;) {
        const int number = std::atoi(what.c_str());
        const auto beside = [=](QPoint way) { return [=] { return placeOf(verb, number) + way; }; };
        if (verb == "key" && what.size() == 1) {
            acts.push_back({nullptr, [=](QPoint) { type(static_cast<char16_t>(what[0])); }});
        } else if (verb == "key") {
            const QKeyCombination struck = QKeySequence(QString::fromStdString(what))[0];
            acts.push_back({nullptr, [=](QPoint) { press(struck.key(), struck.keyboardModifiers()); }});
        } else if (verb == "roll") {
            acts.push_back({beside({0, 0}), [](QPoint place) { desktop::rollWheel(place, -1); }});
        } else {
            const bool pulls = verb == "pull";
            const Qt::MouseButton button = verb.starts_with("right") ? Qt::RightButton : Qt::LeftButton;
            acts.push_back({beside({0, 0}), [=](QPoint place) { desktop::pressButton(place, button); }});
            if (pulls) {
                acts.push_back({beside({40, 0}), desktop::movePointer});
            }
            const QPoint way = pulls ? QPoint(40, 90) : QPoint();
            acts.push_back({beside(way), [=](QPoint place) { desktop::releaseButton(place, button); }});
        }
    }
    return acts;
}

// On the bar: 1 is the ports, 5 to 7 are Configuration, Options and Diagram, 10 is Information. On the pages: 1021,
// 1044 and 1052 are lists, 1040, 1041, 1074 and 1207 boxes, 1014 and 1206 open dialogs.
struct Script {
    const char* name;
    std::string acts;
    std::string writes;
    UINT page = IDM_OPTIONS;
    std::string before = {};  // one by one, as what follows hangs on what the next poll shows
};

const Script Scripts[] = {
    {"type a number and click its button", "click 1164 key Ctrl+A key x key y key 1 key 2 click 1179 key Escape",
     "65 2B 58 E8, 65 2C 59 EA, 65 2D 31 C3, 65 2E 32 C5, 65 2F 00 94, 65 30 00 95, 65 31 00 96", IDM_READINGS,
     "bar 10 item 1 click 1179"},
    {"choose and switch the page", "click 1052 entry 1 click 1041 bar 7 bar 6", "65 0A 90 FF, 65 06 A2 0D"},
    {"switch the page and press where its list was", "bar 5 click 1021 key Escape bar 6", ""},
    {"open a list, leave it by the bar, which needs a second click", "click 1044 bar 7 bar 7 bar 6", ""},
    {"dialogs opened by a click and a key, left by keys and the mouse",
     "click 1041 click 1014 key Escape click 1014 key Tab key Return click 1014 click 1 click 1207",
     "65 06 A2 0D, 65 0A C0 2F"},
    {"the menu by keys, by mouse, and left by a click that acts",
     "key F10 key Right key Down key Escape key Escape bar 1 click 1040", "65 06 C2 2D"},
    {"a thumb pulled and released outside, the dialog left at once", "pull 1137 key Escape click 1074",
     "65 22 B4 3B, 65 0A 88 F7", IDM_CONFIGURATION, "click 1206"},
    {"a double click and the wheel",
     "click 1040 click 1040 roll 1044 roll 1040 click 1044 roll 1044 key End key Return",
     "65 06 C2 2D, 65 06 E2 4D, 65 12 FF 76"},
    {"right clicks do nothing", "rightclick 1044 rightclick 1040 click 1044 rightentry 3 key Escape", ""},
};

enum class LineState { Sound, LosesReplies, Silent };
constexpr Moment Calm = 700 * Millisecond;

struct Outcome {
    std::string writes;
    std::string rest;  // what is open, and where the focus is
    QImage picture;
};

}  // namespace

class InputOrder : public TuningPages, public testing::WithParamInterface<size_t> {
protected:
    // Where the mouse goes is seen when it is first done.
    void put(const Acts& todo, std::vector<QPoint>& seen, Moment first, Moment gap) {
        for (size_t at = 0; at < todo.size(); ++at) {
            clock->at(first + static_cast<Moment>(at) * gap, [&todo, &seen, at] {
                if (at == seen.size()) {
                    seen.push_back(todo[at].where ? todo[at].where() : QPoint());
                }
                todo[at].put(seen[at]);
            });
        }
    }
    void letPassUntil(Moment moment) {
        pumpUntil([&] { return clock->now() >= moment; }, 100);
    }
    // The phase is counted from the first byte of a poll. Gives how it is at rest on a sound line.
    Outcome play(Moment phase, Moment gap, LineState line) {
        startOn(4, 5);
        SendMessageA(MainWindow, WM_COMMAND, script.page, 0);
        // All pages have read all by then.
        letPassUntil(clock->now() + Second);
        server->clearLog();
        std::vector<QPoint> placesBefore;
        put(before, placesBefore, clock->now(), Calm);
        const Moment ready = clock->now() + static_cast<Moment>(before.size()) * Calm;
        bool begun = false;
        // A dialog may be open by then, whose loop runs within the one here.
        clock->at(ready, [&] {
            if (line != LineState::Sound) {
                server->addFault({.kind = FaultKind::Silence, .probability = line == LineState::Silent ? 1 : 0.34});
            }
            server->observe([&](const simulator::LogEntry& entry) {
                if (entry.request.bytes[1] == 1 && !std::exchange(begun, true)) {
                    put(acts, places, clock->now() + phase, gap);
                }
            });
        });
        letPassUntil(ready + phase + static_cast<Moment>(acts.size()) * gap + 2 * Second);
        EXPECT_TRUE(begun);
        server->observe(nullptr);
        server->clearFaults();
        letPassUntil(clock->now() + 3 * Second);

        const layer::Window* focus = layer::find(GetFocus());
        const int open = ComboOpen + 2 * DialogPause + 4 * TuningDialogOpen + 8 * CorrectionsDialogOpen;
        Outcome outcome{written(), std::to_string(open) + " at " + std::to_string(focus ? focus->id : -1),
                        widgetOf(MainWindow)->grab().toImage()};
        server->clearLog();
        letPassUntil(clock->now() + Second);
        EXPECT_TRUE(AppPage == DiagramPage || !server->log().empty()) << "polling goes on";
        closeProgram();
        return outcome;
    }

    const Script& script = Scripts[GetParam()];
    const Acts before = actsOf(script.before);
    const Acts acts = actsOf(script.acts);
    std::vector<QPoint> places;
};

TEST_P(InputOrder, IsThatOfTheUserWhateverTheLineDoes) {
    SCOPED_TRACE(script.name);
    const Outcome calm = play(0, Calm, LineState::Sound);
    ASSERT_EQ(calm.writes, script.writes);
    ASSERT_TRUE(calm.rest.starts_with("0 ")) << calm.rest;
    // Within the request, the wait for the reply, the reply and the pause behind it, and behind a timer.
    const Moment phases[] = {
        0, 2100 * Microsecond, 4400 * Microsecond, 9 * Millisecond, 31 * Millisecond, 50 * Millisecond};
    for (const LineState line : {LineState::Sound, LineState::LosesReplies, LineState::Silent}) {
        for (const Moment phase : phases) {
            for (const Moment gap : {300 * Microsecond, 23 * Millisecond}) {
                SCOPED_TRACE("line " + std::to_string(static_cast<int>(line)) + " phase " + std::to_string(phase) +
                             " gap " + std::to_string(gap));
                const Outcome fast = play(phase, gap, line);
                if (line == LineState::Silent) {
                    EXPECT_TRUE(calm.writes.starts_with(fast.writes)) << fast.writes;
                } else {
                    EXPECT_EQ(fast.writes, calm.writes);
                    EXPECT_TRUE(fast.picture == calm.picture);
                }
                EXPECT_EQ(fast.rest, calm.rest);
                if (HasFailure()) {
                    return;
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, InputOrder, testing::Range(size_t{0}, std::size(Scripts)));
