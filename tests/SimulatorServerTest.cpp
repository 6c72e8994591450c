// The simulated controller as a program: its device, command line and console.
#include "simulator/CommandLine.h"
#include "simulator/Console.h"
#include "simulator/Simulator.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include "SimulatorSamples.h"

using namespace simulator;
namespace fs = std::filesystem;

namespace {

constexpr double Patience = 10;  // seconds; only a failing test waits so long

class Line {
public:
    explicit Line(const std::string& path) : handle(::open(path.c_str(), O_RDWR | O_NOCTTY)) {
    }
    ~Line() {
        ::close(handle);
    }

    // 0 if none of these events came.
    int await(short events) const {
        pollfd wanted{handle, events, 0};
        ::poll(&wanted, 1, static_cast<int>(Patience * 1000));
        return wanted.revents;
    }
    Bytes ask(const Bytes& request, std::size_t length) const {
        EXPECT_EQ(::write(handle, request.data(), request.size()), static_cast<ssize_t>(request.size()));
        Bytes reply;
        std::uint8_t byte;
        while (reply.size() < length && await(POLLIN) != 0 && ::read(handle, &byte, 1) == 1) {
            reply.push_back(byte);
        }
        return reply;
    }
    bool hungUp() const {
        return (await(0) & POLLHUP) != 0;
    }

    const int handle;
};

std::string LinkPath() {
    return (fs::temp_directory_path() / ("simulator-test-" + std::to_string(::getpid())) / "COM1").string();
}

}  // namespace

TEST(Simulator, ReadsItsCommandLine) {
    auto parse = [](std::vector<std::string> words) {
        words.insert(words.begin(), "tarvex-simulator");
        std::vector<char*> arguments(words.size() + 1);
        std::ranges::transform(words, arguments.begin(), [](std::string& word) { return word.data(); });
        return ParseCommandLine(static_cast<int>(words.size()), arguments.data());
    };
    CommandLine line = parse({"--family=2", "--firmware", "31", "--pace=none", "--port=a/COM1", "--scenario=ramp",
                              "--fault=late=3", "--fault=silence", "--seed=9", "--verbose"});
    EXPECT_EQ(line.error, "");
    const Config& config = line.config;
    EXPECT_TRUE(config.family == 2 && config.firmware == 31 && config.portLink == "a/COM1");
    EXPECT_TRUE(config.scenario == Scenario::Ramp && config.faults.size() == 2 && config.seed == 9);
    EXPECT_TRUE(line.verbose && !config.wirePace && !line.help);
    EXPECT_EQ(parse({"--family=9"}).error, "read option '--family=9': a family is a number from 1 to 8");
    for (const char* wrong : {"--family=2x", "--firmware=32", "--pace=fast", "--port=", "--seed=-1", "--scenario=x",
                              "--fault=late=-1", "--seed", "--nonsense", "--verbose=1", "word"}) {
        EXPECT_NE(parse({wrong}).error, "") << wrong;
    }
}

TEST(Simulator, AnswersOnItsDeviceNeverFasterThanTheWire) {
    Config config = Of(4);
    config.wirePace = true;
    config.portLink = LinkPath();
    fs::create_directories(fs::path(config.portLink).parent_path());
    fs::create_symlink("/nowhere", config.portLink);  // left behind by an earlier run
    {
        Server server(config);
        EXPECT_EQ(fs::read_symlink(config.portLink), server.devicePath());
        Line line(config.portLink);
        termios settings{};
        ::tcgetattr(line.handle, &settings);
        ::cfsetspeed(&settings, B9600);
        ::tcsetattr(line.handle, TCSANOW, &settings);
        EXPECT_EQ(server.lineSpeed(), 9600);
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(line.ask(AskIdentity, 4), Hex("65 00 65 CA"));
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        EXPECT_GE(taken.count(), 8 * ByteSeconds);
        EXPECT_EQ(line.ask(Hex("65 13 07 7F"), 3), Hex("65 07 6C"));
        EXPECT_EQ(server.with([](Controller& controller) { return controller.cells.get(AttInit); }), 7);
        EXPECT_EQ(server.log().size(), 2U);
        server.clearLog();
        EXPECT_TRUE(server.log().empty());
    }
    EXPECT_FALSE(fs::is_symlink(config.portLink));
    std::ofstream(config.portLink) << "not a link";
    EXPECT_THROW(Server{config}, std::system_error) << "a file in the way is not ours to remove";
    fs::remove_all(fs::path(config.portLink).parent_path());
}

TEST(Simulator, OutlivesAUserWhoNeverReads) {
    Server server(Of(4));
    Line line(server.devicePath());
    constexpr std::size_t frames = 4500;  // whose replies are more than the device buffers
    for (std::size_t i = 0; i < frames; ++i) {
        line.ask(Hex("65 05 05 6F"), 0);
    }
    ASSERT_TRUE(server.waitForFrames(frames, Patience));
    server.clearLog();
    line.ask(AskLive, 0);
    ASSERT_TRUE(server.waitForFrames(1, Patience));
    // A logged reply has been sent, or lost for want of room.
    ::tcflush(line.handle, TCIFLUSH);
    EXPECT_EQ(line.ask(AskIdentity, 4), Hex("65 00 65 CA"));
}

TEST(Simulator, GoesAwayAndComesBackUnderTheSameLink) {
    Config config = Of(4);
    config.portLink = LinkPath();
    Server server(config);
    {
        Line line(config.portLink);
        server.addFault(*ParseFault("late=1"));
        line.ask(AskLive, 0);
        ASSERT_TRUE(server.waitForFrames(1, Patience));
        server.unplug();
        EXPECT_TRUE(line.hungUp());
        EXPECT_FALSE(fs::exists(config.portLink));
        EXPECT_EQ(server.devicePath(), "");
        ASSERT_TRUE(server.replug());
    }
    Line line(config.portLink);
    EXPECT_EQ(line.ask(AskIdentity, 4), Hex("65 00 65 CA")) << "a reply that was under way is gone";
    server.addFault(*ParseFault("hang-up=1"));
    EXPECT_LT(line.ask(AskIdentity, 4).size(), 4U);
    EXPECT_TRUE(line.hungUp());
    ASSERT_TRUE(server.waitPlugged(Patience));
    EXPECT_EQ(Line(config.portLink).ask(AskIdentity, 4).size(), 4U);
    server.stop();
    fs::remove_all(fs::path(config.portLink).parent_path());
}

TEST(Simulator, FreesAnExclusivePortWhenItsUserIsGone) {
    Server server(Of(4));
    {
        Line user(server.devicePath());
        ASSERT_EQ(::ioctl(user.handle, TIOCEXCL), 0);
    }
    int exclusive = 1;
    auto giveUp = std::chrono::steady_clock::now() + std::chrono::duration<double>(Patience);
    while (exclusive != 0 && std::chrono::steady_clock::now() < giveUp) {
        Line next(server.devicePath());
        ::ioctl(next.handle, TIOCGEXCL, &exclusive);
        std::this_thread::yield();
    }
    EXPECT_EQ(exclusive, 0);
}

TEST(Simulator, ObeysTheConsole) {
    Server server(Of(2, Scenario::Off));
    auto run = [&](const char* line) { return RunConsoleCommand(server, line).text; };
    for (const char* right : {"set 18 99", "live 9 200", "start", "throttle 40", "gas", "fault garbage 1"}) {
        EXPECT_EQ(run(right), "") << right;
    }
    server.with([](Controller& controller) {
        controller.step(5);
        EXPECT_TRUE((controller.block(2)[8] & 0x01));
        EXPECT_NEAR(controller.engine.rpm(), 900 + 55 * 40, 150);
        EXPECT_EQ(controller.cells.get(AttInit), 99);
        EXPECT_EQ(controller.block(2)[9], 200);
    });
    Line line(server.devicePath());
    EXPECT_NE(line.ask(AskIdentity, 4), Hex("65 00 25 8A"));
    EXPECT_EQ(line.ask(AskIdentity, 4), Hex("65 00 25 8A"));
    for (const char* wrong :
         {"set 34 1", "set 30 51", "set 5", "set 5 256", "temp hot", "fault", "live 10 0", "jump"}) {
        EXPECT_NE(run(wrong), "") << wrong;
    }
    EXPECT_EQ(run("unplug"), "");
    EXPECT_NE(run("show").find("unplugged"), std::string::npos);
    EXPECT_TRUE(RunConsoleCommand(server, "quit").quit);
}
