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
#include "shell/AppState.h"
#include "shell/MainWindow.h"
#include "walk/RealDesktop.h"
#include "walk/Walk.h"

namespace {

struct Order {
    unsigned seed = 0;
    int inputs = 0;
    int from = -1;
};

bool readOrder(int count, char** arguments, Order& order) {
    const auto number = [&](int at) { return std::strtol(arguments[at], nullptr, 10); };
    if (count != 3 && !(count == 5 && std::string(arguments[3]) == "--from")) {
        return false;
    }
    order = {static_cast<unsigned>(number(1)), static_cast<int>(number(2)),
             count == 5 ? static_cast<int>(number(4)) : -1};
    return order.inputs > 0;
}

constexpr Moment LastRest = 4 * Second;
constexpr int AnswersAnInput = 20;

class Session {
public:
    explicit Session(const Order& asked)
        : order(asked), dice(asked.seed), line(clock, dice), watch(clock, line), user(clock, dice, watch) {
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
        for (;;) {
            if (!startProgram()) {
                std::fprintf(stderr, "start program: no window\n");
                std::_Exit(2);
            }
            RunMessageLoop();
            forgetProgram();
        }
    }

private:
    void next() {
        if (done == order.inputs) {
            line.mend();
            clock.at(clock.now() + LastRest, [this] { end(); });
            return;
        }
        const std::string words = user.act();
        if (order.from >= 0 && done >= order.from) {
            std::printf("%6d %13.6f  %s\n", done, static_cast<double>(clock.now() - HeldClock::Start) / 1e9,
                        words.c_str());
            std::fflush(stdout);
        }
        ++done;
        if (done * 10 % order.inputs < 10 && order.from < 0) {
            std::printf("%d inputs, %.0f s\n", done, static_cast<double>(clock.now() - HeldClock::Start) / 1e9);
            std::fflush(stdout);
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
        std::uint64_t digest = watch.digest;
        for (int row = 0; row < picture.height(); ++row) {
            const uchar* const bytes = picture.constScanLine(row);
            for (qsizetype at = 0; at < picture.bytesPerLine(); ++at) {
                digest = (digest ^ bytes[at]) * 0x100000001B3;
            }
        }
        std::printf("%d reads and %d writes on %zu pages and dialogs\n", watch.polls, watch.writes,
                    watch.visited.size());
        std::printf("digest %016llx\n", static_cast<unsigned long long>(digest));
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
    Order order;
    if (!readOrder(count, arguments, order)) {
        std::fprintf(stderr, "walk SEED INPUTS [--from N]\n");
        return 2;
    }
    auto screen = std::make_unique<OffscreenDesktop>();
    const QApplication application(count, arguments);
    screen.reset();
    layer::prepareApplication();
    Session(order).run();
}
