// A thousand commands in a row leave nothing behind.
#include <malloc.h>

#include <QApplication>
#include <QPixmapCache>
#include <QTimer>
#include <random>

#include "User.h"
#include "link/Link.h"
#include "platform/linux/Layer.h"
#include "resources/Ids.h"
#include "shell/AppState.h"

namespace {

constexpr UINT Pages[] = {IDM_READINGS, IDM_CONFIGURATION, IDM_OPTIONS, IDM_DIAGRAM, IDM_RESET, IDM_OSCILLOSCOPE};
constexpr UINT Others[] = {IDM_ABOUT, IDM_COM_OTHER, IDM_COM1, IDM_COM2, IDM_COM3, IDM_COM9};
const std::span<const UINT> Commands[] = {Pages, SizeItems, LanguageItems, Others};
constexpr int DeepestDialog = 3;

struct Counts {
    size_t windows, menus, objects, contexts, timers, widgets;
    bool operator==(const Counts&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Counts& counts) {
    return out << counts.windows << " windows, " << counts.menus << " menus, " << counts.objects << " objects, "
               << counts.contexts << " contexts, " << counts.timers << " timers, " << counts.widgets << " widgets";
}

Counts countAll() {
    return {layer::livingWindows(),  layer::livingMenus(),  layer::livingObjects(),
            layer::livingContexts(), layer::livingTimers(), static_cast<size_t>(QApplication::allWidgets().size())};
}

int openDialogs() {
    int open = 0;
    for (const layer::Window* window : layer::topLevels()) {
        open += window->modal && !window->ended;
    }
    return open;
}

}  // namespace

class Hammer : public WindowFixture {
protected:
    static void send(std::initializer_list<UINT> commands) {
        for (const UINT command : commands) {
            SendMessageA(MainWindow, WM_COMMAND, command, 0);
        }
        settle();
    }
    // The state in which all is counted.
    static void rest() {
        send({IDM_COM9, IDM_SIZE_800X600, IDM_LANGUAGE_POLISH, IDM_OPTIONS, IDM_READINGS});
        ASSERT_TRUE(pumpUntil([] { return LinkLost == 1 && ActiveTimerPeriod == LostLinkPeriod; }));
        settle();
    }
    void command() {
        const bool close = openDialogs() > 0 && (openDialogs() >= DeepestDialog || dice() % 2 == 0);
        if (close && openDialogWindow()) {
            PostMessageA(openDialogWindow(), WM_COMMAND, dice() % 2 ? IDC_CLOSE : IDC_CANCEL, 0);
        } else if (!close) {
            const std::span<const UINT> group = Commands[dice() % std::size(Commands)];
            PostMessageA(MainWindow, WM_COMMAND, group[dice() % group.size()], 0);
            ++done;
        }
    }
    // Runs on for a while on each controller in turn.
    void poll(simulator::Server& controller, UINT port) {
        send({port, IDM_READINGS});
        const size_t before = controller.log().size();
        ASSERT_TRUE(pumpUntil([&] { return controller.log().size() >= before + 10; }));
    }
    void commandUntil(int wanted) {
        QTimer timer;
        timer.callOnTimeout([&] {
            if (done < wanted) {
                command();
            } else if (const HWND dialog = openDialogWindow()) {
                PostMessageA(dialog, WM_COMMAND, IDC_CANCEL, 0);
            }
        });
        timer.start(2);
        ASSERT_TRUE(pumpUntil([&] { return done >= wanted && openDialogs() == 0; }, 100));
    }

    std::mt19937 dice{4711};
    int done = 0;
};

TEST_F(Hammer, AThousandCommandsLeaveNothingBehind) {
    // The style's pictures are kept until a bound of their own is reached.
    QPixmapCache::setCacheLimit(0);
    plugController(4);
    simulator::Config faulty;
    faulty.family = 2;
    faulty.wirePace = false;
    faulty.portLink = folder / "ports/COM2";
    faulty.faults = {{simulator::FaultKind::LostByte, 0.05},
                     {simulator::FaultKind::FlippedBit, 0.1},
                     {simulator::FaultKind::Garbage, 0.1},
                     {simulator::FaultKind::HangUp, 0.02}};
    simulator::Server second(faulty);
    writeIni(1, "ang");
    start();
    send({IDM_CONFIGURATION, IDM_OPTIONS, IDM_DIAGRAM, IDM_RESET, IDM_OSCILLOSCOPE});
    rest();
    const Counts before = countAll();
    size_t used = 0;
    for (int quarter = 1; quarter <= 4; ++quarter) {
        poll(*server, IDM_COM1);
        commandUntil(quarter * 250 - 125);
        poll(second, IDM_COM2);
        commandUntil(quarter * 250);
        const auto& children = layer::find(MainWindow)->children;
        ASSERT_EQ(children.size(), 1u);
        EXPECT_EQ(children[0]->handle, PageWindow);
        EXPECT_TRUE(IsWindowVisible(PageWindow));
        EXPECT_TRUE(IsWindowEnabled(MainWindow));
        EXPECT_EQ(DialogPause, 0);
        rest();
        EXPECT_EQ(countAll(), before) << "quarter " << quarter;
        // The logs of the controllers grow on purpose.
        server->clearLog();
        second.clearLog();
        const size_t now = mallinfo2().uordblks;
        if (quarter == 4) {
            EXPECT_LT(now, used + 100000) << "of " << used;
        }
        used = quarter == 2 ? now : used;
    }
    send({IDM_COM1});
    EXPECT_TRUE(pumpUntil([] { return LinkLost == 0; })) << "and it still reads";
}
