// walk SEED INPUTS [--from N]: the real program's windows on a held clock and line, with a random user and a random
// line; ends with 0 and a line "digest HEX" if nothing was found. --from tells the inputs from that number on in words.
#include <QApplication>
#include <QWidget>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "OffscreenDesktop.h"
#include "Program.h"
#include "platform/linux/Entry.h"
#include "resources/Ids.h"
#include "shell/AppState.h"
#include "shell/MainWindow.h"
#include "walk/RealDesktop.h"
#include "walk/Walk.h"

namespace {

struct Order {
    unsigned seed;
    int inputs;
    int from;  // -1: none is told
};

bool readOrder(std::span<char*> words, Order& order) {
    const auto number = [&](size_t at) { return static_cast<int>(std::strtol(words[at], nullptr, 10)); };
    const bool tells = words.size() == 5 && std::string(words[3]) == "--from";
    if (words.size() != 3 && !tells) {
        return false;
    }
    order = {static_cast<unsigned>(number(1)), number(2), tells ? number(4) : -1};
    return order.inputs > 0;
}

constexpr Moment LastRest = 4 * Second;
constexpr int AnswersAnInput = 20;

class Session {
public:
    explicit Session(const Order& asked)
        : order(asked), dice(asked.seed), line(clock, dice), watch(clock, line), user(dice, watch) {
        if (QGuiApplication::platformName() == u"xcb") {
            server = std::make_unique<walk::Server>();
        }
        if (server && qEnvironmentVariableIsSet("QT_LINUX_ACCESSIBILITY_ALWAYS_ON")) {
            reader = std::make_unique<walk::Reader>();
        }
        clock.whenAtRest([this] {
            if (server && !server->isAtRest()) {
                return true;
            }
            if (reader && std::exchange(readAt, done) != done) {
                reader->serve(AnswersAnInput);
            }
            watch.lookAtRest();
            stopAtFault();
            return false;
        });
        clock.at(clock.now() + Second, [this] { next(); });
    }

    // The program may be closed by its user, who then starts it anew.
    [[noreturn]] void run() {
        place.writeIni(1, dice.oneOf(std::to_array({"ang", "pol", "rus", "lit", "cs"})));
        while (startProgram()) {
            RunMessageLoop();
            forgetProgram();
        }
        std::fprintf(stderr, "start program: no window\n");
        leave(2);
    }

private:
    void next() {
        if (done >= order.inputs && user.isDone()) {
            line.mend();
            clock.at(clock.now() + LastRest, [this] { end(); });
            return;
        }
        const std::string words = user.act();
        const double seconds = static_cast<double>(clock.now() - HeldClock::Start) / 1e9;
        if (order.from >= 0 && done >= order.from) {
            std::printf("%6d %13.6f  %s\n", done, seconds, words.c_str());
        }
        ++done;
        if (done * 10 % order.inputs < 10 && order.from < 0) {
            std::printf("%d inputs, %.0f s\n", done, seconds);
        }
        clock.at(clock.now() + user.pause(), [this] { next(); });
    }

    void stopAtFault() {
        if (!watch.fault.empty()) {
            std::printf("seed %u, input %d, %s\n", order.seed, done, watch.fault.c_str());
            leave(1);
        }
    }

    void end() {
        const QImage picture = layer::find(MainWindow)->outer->grab().toImage();
        for (const uchar byte : std::span(picture.constBits(), static_cast<size_t>(picture.sizeInBytes()))) {
            watch.digest.add(byte);
        }
        desktop::returnToProgram();
        goHome();
    }

    // Back on the main screen there is as much of everything as there was at first.
    void goHome() {
        const bool home = !user.close();
        if (home) {
            PostMessageA(MainWindow, WM_COMMAND, IDM_READINGS, 0);
        }
        clock.at(clock.now() + Second, [=, this] { home&& watch.hasCounted() ? tell() : goHome(); });
    }

    void tell() {
        std::printf("%d reads and %d writes on %zu pages and dialogs\n", watch.polls, watch.writes,
                    watch.visited.size());
        std::printf("digest %016llx\n", static_cast<unsigned long long>(watch.digest.sum));
        leave(0);
    }

    // The program's own loops are still on the stack.
    [[noreturn]] void leave(int code) {
        std::fflush(stdout);
        std::filesystem::current_path("/");
        std::filesystem::remove_all(place.path);
        std::_Exit(code);
    }

    const Order order;
    const ProgramFolder place;
    HeldClock clock;
    walk::Dice dice;
    walk::Line line;
    walk::Watch watch;
    walk::User user;
    int done = 0;
    std::unique_ptr<walk::Server> server;
    std::unique_ptr<walk::Reader> reader;
    int readAt = 0;  // of the inputs
};

}  // namespace

int main(int count, char** arguments) {
    Order order{};
    if (!readOrder({arguments, static_cast<size_t>(count)}, order)) {
        std::fprintf(stderr, "walk SEED INPUTS [--from N]\n");
        return 2;
    }
    // What it has told so far is seen also of one that hangs.
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    auto screen = std::make_unique<OffscreenDesktop>();
    const QApplication application(count, arguments);
    screen.reset();
    layer::prepareApplication();
    Session(order).run();
}
