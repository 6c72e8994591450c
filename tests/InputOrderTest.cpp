// What the user does in one go, put into an exchange at every phase, on a line that answers, that loses replies and
// that is silent, gives what the same actions give one by one with time between them: the same writes in the same
// order, the same focus and flags, the same picture at rest.
#include <QImage>
#include <QWidget>
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

Acts operator+(Acts acts, const Acts& more) {
    acts.insert(acts.end(), more.begin(), more.end());
    return acts;
}

Acts click(std::function<QPoint()> where, Qt::MouseButton button = Qt::LeftButton) {
    return {{where, [=](QPoint place) { desktop::pressButton(place, button); }},
            {where, [=](QPoint place) { desktop::releaseButton(place, button); }}};
}

Acts clickControl(int id) {
    return click([=] { return desktop::middleOf(*layer::find(control(id))); });
}

Acts clickBar(int position) {
    return click([=] { return desktop::barItems().at(static_cast<size_t>(position)); });
}

Acts clickItem(int position) {
    return click([=] { return desktop::menuItems().at(static_cast<size_t>(position)); });
}

Acts clickListed(int row) {
    return click([=] { return desktop::listEntries().at(static_cast<size_t>(row)); });
}

Acts key(int code, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    return {{nullptr, [=](QPoint) { press(code, modifiers); }}};
}

Acts keys(const std::u16string& letters) {
    Acts acts;
    for (const char16_t letter : letters) {
        acts.push_back({nullptr, [=](QPoint) { type(letter); }});
    }
    return acts;
}

Acts roll(int id) {
    return {{[=] { return desktop::middleOf(*layer::find(control(id))); },
             [](QPoint place) { desktop::rollWheel(place, -1); }}};
}

// The thumb of a bar, pulled along and released outside.
Acts pullThumb(int id) {
    const auto along = [=](QPoint way) {
        return
            [=] { return widgetOf(control(id))->mapToGlobal(middleOf(control(id), QStyle::SC_ScrollBarSlider) + way); };
    };
    return {{along({0, 0}), [](QPoint place) { desktop::pressButton(place); }},
            {along({40, 0}), [](QPoint place) { desktop::movePointer(place); }},
            {along({40, 90}), [](QPoint place) { desktop::releaseButton(place); }}};
}

constexpr int ConfigurationItem = FirstPageItem + 1;
constexpr int OptionsItem = FirstPageItem + 2;
constexpr int DiagramItem = FirstPageItem + 3;

struct Script {
    const char* name;
    UINT page;
    Acts before;  // one by one, as what follows hangs on what the next poll shows
    Acts acts;
    std::string writes;
};

const std::vector<Script>& scripts() {
    static const std::vector<Script> all = {
        {"type a number and click its button", IDM_READINGS,
         clickBar(InformationMenu) + clickItem(1) + clickControl(IDC_INFO_REGISTRATION_BUTTON),
         clickControl(IDC_INFO_REGISTRATION) + key(Qt::Key_A, Qt::ControlModifier) + keys(u"xy12") +
             clickControl(IDC_INFO_REGISTRATION_BUTTON) + key(Qt::Key_Escape),
         "65 2B 58 E8, 65 2C 59 EA, 65 2D 31 C3, 65 2E 32 C5, 65 2F 00 94, 65 30 00 95, 65 31 00 96"},
        {"choose and switch the page",
         IDM_OPTIONS,
         {},
         clickControl(1052) + clickListed(1) + clickControl(1041) + clickBar(DiagramItem) + clickBar(OptionsItem),
         "65 0A 90 FF, 65 06 A2 0D"},
        {"switch the page and press where its list was",
         IDM_OPTIONS,
         {},
         clickBar(ConfigurationItem) + clickControl(1021) + key(Qt::Key_Escape) + clickBar(OptionsItem),
         ""},
        {"open a list, leave it by the bar, which needs a second click",
         IDM_OPTIONS,
         {},
         clickControl(1044) + clickBar(DiagramItem) + clickBar(DiagramItem) + clickBar(OptionsItem),
         ""},
        {"dialogs opened by a click and a key, left by keys and the mouse",
         IDM_OPTIONS,
         {},
         clickControl(1041) + clickControl(1014) + key(Qt::Key_Escape) + clickControl(1014) + key(Qt::Key_Tab) +
             key(Qt::Key_Return) + clickControl(1014) + clickControl(IDC_CLOSE) + clickControl(1207),
         "65 06 A2 0D, 65 0A C0 2F"},
        {"the menu by keys, by mouse, and left by a click that acts",
         IDM_OPTIONS,
         {},
         key(Qt::Key_F10) + key(Qt::Key_Right) + key(Qt::Key_Down) + key(Qt::Key_Escape) + key(Qt::Key_Escape) +
             clickBar(PortMenu) + clickControl(1040),
         "65 06 C2 2D"},
        {"a thumb pulled and released outside, the dialog left at once", IDM_CONFIGURATION, clickControl(1206),
         pullThumb(IDC_GAS_PROG1_BAR) + key(Qt::Key_Escape) + clickControl(1074), "65 22 B4 3B, 65 0A 88 F7"},
        {"a double click and the wheel",
         IDM_OPTIONS,
         {},
         clickControl(1040) + clickControl(1040) + roll(1044) + roll(1040) + clickControl(1044) + roll(1044) +
             key(Qt::Key_End) + key(Qt::Key_Return),
         "65 06 C2 2D, 65 06 E2 4D, 65 12 FF 76"},
        {"right clicks do nothing",
         IDM_OPTIONS,
         {},
         click([] { return desktop::middleOf(*layer::find(control(1044))); }, Qt::RightButton) +
             click([] { return desktop::middleOf(*layer::find(control(1040))); }, Qt::RightButton) +
             clickControl(1044) + click([] { return desktop::listEntries().at(3); }, Qt::RightButton) +
             key(Qt::Key_Escape),
         ""},
    };
    return all;
}

struct Outcome {
    std::string writes;
    int flags = 0;
    int focus = 0;
    QImage picture;
};

}  // namespace

class InputOrder : public TuningPages, public testing::WithParamInterface<size_t> {
protected:
    enum class LineState { Sound, LosesReplies, Silent };

    void begin(const Script& script) {
        startOn(4, 5);
        SendMessageA(MainWindow, WM_COMMAND, script.page, 0);
        // All pages have read all by then.
        letPass(Second);
        server->clearLog();
    }
    // At rest on a sound line.
    Outcome end() {
        server->clearFaults();
        letPass(3 * Second);
        const layer::Window* focus = layer::find(GetFocus());
        Outcome outcome{written(), ComboOpen + 2 * DialogPause + 4 * TuningDialogOpen + 8 * CorrectionsDialogOpen,
                        focus ? focus->id : -1, widgetOf(MainWindow)->grab().toImage()};
        server->clearLog();
        letPass(Second);
        EXPECT_TRUE(AppPage == DiagramPage || !server->log().empty()) << "polling goes on";
        closeProgram();
        server.reset();
        return outcome;
    }
    void letPass(Moment duration) {
        const Moment end = clock->now() + duration;
        pumpUntil([&] { return clock->now() >= end; }, 100);
    }
    // One by one, and at the end what follows; a dialog may be open by then. Gives where the mouse went.
    void play(const Acts& acts, std::vector<QPoint>& places, const std::function<void()>& then) {
        if (places.size() == acts.size()) {
            then();
            return;
        }
        const Act& act = acts[places.size()];
        places.push_back(act.where ? act.where() : QPoint());
        act.put(places.back());
        clock->at(clock->now() + 700 * Millisecond, [&acts, &places, then, this] { play(acts, places, then); });
    }
    Outcome slowly(const Script& script, std::vector<QPoint>& places) {
        begin(script);
        std::vector<QPoint> before;
        play(script.before, before, [&] { play(script.acts, places, [] {}); });
        letPass(static_cast<Moment>(script.before.size() + script.acts.size()) * 700 * Millisecond);
        return end();
    }
    // The phase is counted from the first byte of a poll.
    Outcome inOneGo(const Script& script, const std::vector<QPoint>& places, Moment phase, Moment gap, LineState line) {
        begin(script);
        std::vector<QPoint> before;
        bool begun = false;
        server->observe([&](const simulator::LogEntry& entry) {
            if (before.size() < script.before.size() || entry.request.bytes[1] != 1 || std::exchange(begun, true)) {
                return;
            }
            Moment when = clock->now() + phase;
            for (size_t at = 0; at < places.size(); ++at, when += gap) {
                clock->at(when, [put = script.acts[at].put, place = places[at]] { put(place); });
            }
        });
        play(script.before, before, [&] {
            if (line != LineState::Sound) {
                server->addFault({.kind = FaultKind::Silence, .probability = line == LineState::Silent ? 1 : 0.34});
            }
        });
        letPass(static_cast<Moment>(script.before.size()) * 700 * Millisecond + phase +
                static_cast<Moment>(places.size()) * gap + 2 * Second);
        EXPECT_TRUE(begun);
        server->observe(nullptr);
        return end();
    }
};

TEST_P(InputOrder, IsThatOfTheUserWhateverTheLineDoes) {
    const Script& script = scripts()[GetParam()];
    SCOPED_TRACE(script.name);
    std::vector<QPoint> places;
    const Outcome calm = slowly(script, places);
    ASSERT_EQ(calm.writes, script.writes);
    ASSERT_EQ(calm.flags, 0);
    // Within the request, the wait for the reply, the reply and the pause behind it, and behind a timer.
    const Moment phases[] = {
        0, 2100 * Microsecond, 4400 * Microsecond, 9 * Millisecond, 31 * Millisecond, 50 * Millisecond};
    for (const LineState line : {LineState::Sound, LineState::LosesReplies, LineState::Silent}) {
        for (const Moment phase : phases) {
            for (const Moment gap : {300 * Microsecond, 23 * Millisecond}) {
                SCOPED_TRACE("line " + std::to_string(static_cast<int>(line)) + " phase " + std::to_string(phase) +
                             " gap " + std::to_string(gap));
                const Outcome fast = inOneGo(script, places, phase, gap, line);
                if (line != LineState::Silent) {
                    EXPECT_EQ(fast.writes, calm.writes);
                    EXPECT_TRUE(fast.picture == calm.picture);
                } else {
                    EXPECT_TRUE(calm.writes.starts_with(fast.writes)) << fast.writes;
                }
                EXPECT_EQ(fast.flags, 0);
                EXPECT_EQ(fast.focus, calm.focus);
                if (HasFailure()) {
                    return;
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Scripts, InputOrder, testing::Range(size_t{0}, scripts().size()));
