// Rows about how soon an input has its effect, in this process, on a controller at the true pace.
#include <poll.h>

#include <QAbstractButton>
#include <algorithm>
#include <atomic>
#include <random>
#include <vector>

#include "Measure.h"
#include "Program.h"
#include "Rows.h"
#include "Workplace.h"
#include "link/Link.h"
#include "model/Blocks.h"
#include "platform/linux/Clock.h"
#include "platform/linux/Input.h"
#include "resources/Ids.h"
#include "shell/AppState.h"
#include "simulator/Simulator.h"

namespace benchmarks {
namespace {

using layer::Moment;
using What = layer::RawInput::What;

constexpr int Inputs = 250;
constexpr unsigned Seed = 1;
// From one input to the next: a rest, and a part that spreads them evenly over whole ticks of every page.
constexpr Moment Rest = 50 * layer::Millisecond;
constexpr Moment Spread = 200 * layer::Millisecond;
constexpr QPoint Outside{1, 1};  // of every control

// The computer's clock, but at a moment of its choice the desktop has an input for the program. In between it sees what
// the program waits for.
class User : public layer::Clock, public QObject {
public:
    User() {
        layer::holdClock(this);
    }
    User(const User&) = delete;
    User& operator=(const User&) = delete;
    ~User() override {
        layer::holdClock(nullptr);
    }

    // Milliseconds from an input to its effect, less what was left of the tick's exchanges when it came.
    double measure(Program& program, const layer::RawInput& input) {
        effect = layer::Never;
        painted = false;
        next = input;
        next.when = due = now() + Rest + std::uniform_int_distribution<Moment>(0, Spread)(random);
        while (effect == layer::Never) {
            program.tick();
        }
        return static_cast<double>(effect - std::max(next.when, exchangeEnd)) / layer::Millisecond;
    }
    // The first time after an input counts.
    void noteEffect() {
        Moment none = layer::Never;
        effect.compare_exchange_strong(none, now());
    }

    Moment now() override {
        return computer.now();
    }
    SYSTEMTIME localTime() override {
        return computer.localTime();
    }
    void waitUntil(Moment end) override {
        computer.waitUntil(end);
    }
    short waitForDevice(int descriptor, short events, Moment end) override {
        noteDrawing();
        const short came = computer.waitForDevice(descriptor, events, end);
        lastByte = (events & POLLIN) != 0 ? now() : lastByte;
        return came;
    }
    void serveDesktop() override {
        computer.serveDesktop();
        bringInput();
    }
    void waitForDesktop(Moment end) override {
        noteDrawing();
        computer.waitForDesktop(std::min(end, due));
        bringInput();
    }

    // For the button whose pixels are the effect.
    bool eventFilter(QObject* button, QEvent* event) override {
        painted = painted || (event->type() == QEvent::Paint && static_cast<QAbstractButton*>(button)->isDown());
        return false;
    }

private:
    void bringInput() {
        if (now() >= due) {
            due = layer::Never;
            exchangeEnd = lastByte;
            layer::putInput(next);
        }
    }
    void noteDrawing() {
        if (painted) {
            noteEffect();
        }
    }

    layer::Clock& computer = layer::theClock();
    std::mt19937 random{Seed};
    layer::RawInput next;
    Moment due = layer::Never;
    Moment lastByte = 0;
    Moment exchangeEnd = 0;  // of the exchange that kept the input waiting, or of one before it
    bool painted = false;
    std::atomic<Moment> effect = layer::Never;  // also set by the controller's thread
};

layer::RawInput Mouse(What what, QPoint at) {
    layer::RawInput input;
    input.what = what;
    input.at = at;
    input.button = Qt::LeftButton;
    return input;
}

QPoint CentreOf(int control) {
    RECT place{};
    GetWindowRect(GetDlgItem(PageWindow, control), &place);
    return {(place.left + place.right) / 2, (place.top + place.bottom) / 2};
}

void ShowPage(Program& program, unsigned command) {
    SendMessageA(MainWindow, WM_COMMAND, MAKEWPARAM(command, 0), 0);
    do {
        program.tick();
    } while (LinkLost != 0 || ParamBlockA[0] == 0);
}

// The release that sets a tick box: until the controller has the request that writes it.
double ClickBox(Program& program, User& user) {
    const QPoint box = CentreOf(IDC_OPTIONS_CUT_OFF_SWITCH);
    layer::putInput(Mouse(What::Press, box));
    program.tick();
    return user.measure(program, Mouse(What::Release, box));
}

// The press of a button: until the program waits again, with the pressed button painted. It is let go elsewhere, so
// that nothing else comes of it.
double PressButton(Program& program, User& user) {
    const QPoint button = CentreOf(IDC_LEARN);
    QApplication::widgetAt(button)->installEventFilter(&user);
    const double milliseconds = user.measure(program, Mouse(What::Press, button));
    layer::putInput(Mouse(What::Release, Outside));
    program.tick();
    return milliseconds;
}

std::vector<double> MeasureInputs(unsigned page, double (*act)(Program&, User&)) {
    Program& program = RunningProgram();
    program.controller.reset();
    ClosePort();
    std::vector<double> milliseconds;
    {
        simulator::Config config;
        config.portLink = PortLink();
        User user;
        simulator::Server controller(config);
        controller.observe([&](const simulator::LogEntry& entry) {
            if (entry.isWrite) {
                user.noteEffect();
            }
        });
        ShowPage(program, page);
        for (int input = 0; input < Inputs; ++input) {
            milliseconds.push_back(act(program, user));
        }
    }
    ClosePort();
    program.controller.emplace();
    ShowPage(program, IDM_READINGS);
    return milliseconds;
}

const std::vector<double>& WireTimes() {
    static const std::vector<double> times = MeasureInputs(IDM_OPTIONS, ClickBox);
    return times;
}

const std::vector<double>& PixelTimes() {
    static const std::vector<double> times = MeasureInputs(IDM_READINGS, PressButton);
    return times;
}

}  // namespace

Result InputToWire() {
    return {Quantile(WireTimes(), 0.5)};
}

Result InputToWireSlow() {
    return {Quantile(WireTimes(), 0.95)};
}

Result InputToPixel() {
    return {Quantile(PixelTimes(), 0.5)};
}

Result InputToPixelSlow() {
    return {Quantile(PixelTimes(), 0.95)};
}

}  // namespace benchmarks
