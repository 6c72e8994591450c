// Rows about whole processes. The parent holds the wire, the clock and nothing of the toolkit while these run: memory
// in common is counted by halves, and a parent with windows would make both programs look smaller.
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string>
#include <system_error>

#include "FirstPaint.h"
#include "Measure.h"
#include "Rows.h"
#include "Workplace.h"
#include "simulator/Simulator.h"

namespace benchmarks {
namespace {

constexpr int Starts = 15;
constexpr double SettleMilliseconds = 1500;
constexpr double ShareMilliseconds = 6000;

using Arguments = std::array<std::string, 3>;  // program, width, height

[[noreturn]] void Execute(const Arguments& arguments, int socket) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    setenv(ReportVariable, std::to_string(socket).c_str(), 1);
    execl(arguments[0].c_str(), arguments[0].c_str(), arguments[1].c_str(), arguments[2].c_str(), nullptr);
    _exit(127);
}

// A program that has painted its window and stands still; it is killed at the end.
class Watched {
public:
    explicit Watched(const Arguments& arguments) {
        int pair[2];
        if (socketpair(AF_UNIX, SOCK_STREAM, 0, pair) != 0) {
            throw std::system_error(errno, std::generic_category(), "make socket 'report'");
        }
        fcntl(pair[0], F_SETFD, FD_CLOEXEC);
        socket = pair[0];
        const double before = ClockMilliseconds(CLOCK_MONOTONIC);
        process = fork();
        if (process == 0) {
            Execute(arguments, pair[1]);
        }
        close(pair[1]);
        const bool told = process > 0 && read(socket, &first, sizeof first) == sizeof first;
        startMilliseconds = static_cast<double>(first.nanoseconds) / 1e6 - before;
        if (!told) {
            end();
            throw std::system_error(ECHILD, std::generic_category(), "start '" + arguments[0] + "'");
        }
    }
    Watched(const Watched&) = delete;
    Watched& operator=(const Watched&) = delete;
    ~Watched() {
        end();
    }

    void go() const {
        const char leave = 0;
        [[maybe_unused]] const ssize_t sent = send(socket, &leave, 1, MSG_NOSIGNAL);
    }

    pid_t process = -1;
    FirstPaint first{};
    double startMilliseconds = 0;

private:
    void end() const {
        close(socket);
        if (process > 0) {
            kill(process, SIGKILL);
            waitpid(process, nullptr, 0);
        }
    }

    int socket = -1;
};

Arguments Tool() {
    return {ProgramPath("tarvex-watched"), "", ""};
}

// As large as the tool's window on this desktop.
const Arguments& BareWindow() {
    static const Arguments arguments = [] {
        const Watched tool(Tool());
        return Arguments{ProgramPath("bare-window"), std::to_string(tool.first.width),
                         std::to_string(tool.first.height)};
    }();
    return arguments;
}

struct StartFigures {
    Result milliseconds;
    Result megabytes;
};

// Tool and bare window in turns, so that what else the computer does meets both alike.
const StartFigures& Starting() {
    static const StartFigures figures = [] {
        const std::array<Arguments, 2> programs{Tool(), BareWindow()};
        std::array<std::vector<double>, 2> milliseconds;
        std::array<std::vector<double>, 2> megabytes;
        for (int run = 0; run <= Starts; ++run) {
            for (size_t which = 0; which < programs.size(); ++which) {
                const Watched program(programs[which]);
                if (run > 0) {  // the first one brings the files into memory
                    milliseconds[which].push_back(program.startMilliseconds);
                    megabytes[which].push_back(ProportionalMegabytes(program.process));
                }
            }
        }
        return StartFigures{{Quantile(milliseconds[0], 0.5), Quantile(milliseconds[1], 0.5)},
                            {Quantile(megabytes[0], 0.5), Quantile(megabytes[1], 0.5)}};
    }();
    return figures;
}

struct LaterFigures {
    double sharePercent;
    double megabytes;
};

LaterFigures RunOn(const Arguments& arguments) {
    const Watched program(arguments);
    program.go();
    SleepMilliseconds(SettleMilliseconds);
    const double wallBefore = ClockMilliseconds(CLOCK_MONOTONIC);
    const double before = ProcessorMilliseconds(program.process);
    SleepMilliseconds(ShareMilliseconds);
    const double used = ProcessorMilliseconds(program.process) - before;
    const double wall = ClockMilliseconds(CLOCK_MONOTONIC) - wallBefore;
    return {100 * used / wall, ProportionalMegabytes(program.process)};
}

const LaterFigures& Live() {
    static const LaterFigures figures = [] {
        simulator::Config config;
        config.portLink = PortLink();
        const LaterFigures found = [&] {
            simulator::Server controller(config);
            return RunOn(Tool());
        }();
        UnplugPort();
        return found;
    }();
    return figures;
}

}  // namespace

Result StartMilliseconds() {
    return Starting().milliseconds;
}

Result FirstMegabytes() {
    return Starting().megabytes;
}

Result LaterMegabytes() {
    return {Live().megabytes, RunOn(BareWindow()).megabytes};
}

Result LiveShare() {
    return {Live().sharePercent};
}

Result LostShare() {
    return {RunOn(Tool()).sharePercent};
}

}  // namespace benchmarks
