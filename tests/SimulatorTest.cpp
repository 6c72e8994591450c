// The simulated controller: its bytes and their times, what a drive and what faults make of them; and the program with
// its device, command line and console.
#include "simulator/Simulator.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>
#include <tuple>

#include "simulator/CommandLine.h"
#include "simulator/Console.h"

using namespace simulator;
namespace fs = std::filesystem;

namespace {

Bytes Hex(const std::string& text) {
    Bytes bytes;
    std::istringstream stream(text);
    for (unsigned value; stream >> std::hex >> value;) {
        bytes.push_back(static_cast<std::uint8_t>(value));
    }
    return bytes;
}

const Bytes AskIdentity = Hex("65 01 01 67");
const Bytes AskLive = Hex("65 02 02 69");
const Bytes Identity = Hex("65 00 65 CA");

Config Of(int family, Scenario scenario = Scenario::Idle) {
    return {.family = family, .wirePace = false, .portLink = "", .scenario = scenario, .faults = {}};
}

}  // namespace

TEST(Simulator, AnswersGoodRequestsAloneAndFindsTheNextOne) {
    Controller controller(Of(4));
    const Bytes parameters = controller.block(3);
    // A wrong sum, neither read nor cell, beyond the last cell.
    for (const char* bad : {"65 06 01 6D", "65 01 02 68", "65 33 01 99"}) {
        EXPECT_EQ(controller.exchange(Hex(bad)), Bytes()) << bad;
    }
    EXPECT_EQ(controller.block(3), parameters);
    for (const char* good : {"00 FF 01 65 01 01 67", "65 01 65 01 01 67"}) {
        EXPECT_EQ(controller.exchange(Hex(good)), Identity) << good;
    }
    EXPECT_EQ(controller.exchange(Hex("65 01 01 67 65 01 01 67")).size(), 8U);
    const Bytes start = Hex("65 01");
    EXPECT_TRUE(controller.receive(start, 100).empty());
    EXPECT_EQ(controller.receive(AskIdentity, 100.03).at(0).reply, Identity) << "after a pause a new request begins";
    EXPECT_TRUE(controller.receive(start, 101).empty());
    EXPECT_FALSE(controller.receive(AskIdentity, 101.005).at(0).request.good);

    Controller foreign(Of(7));
    EXPECT_EQ(foreign.exchange(AskIdentity), Hex("65 00 C5 2A"));
    EXPECT_EQ(foreign.exchange(Hex("65 02 02 69 65 07 07 73")), Bytes());
}

TEST(Simulator, RunsAColdStartOnPetrolIntoADriveOnGas) {
    Controller controller(Of(4, Scenario::Cycle));
    controller.step(5);
    EXPECT_EQ(controller.block(2)[8] & 0x01, 0);
    int status = 0;
    for (int i = 0; i < 600; ++i) {
        controller.step(0.1);
        status |= controller.block(2)[8];
        EXPECT_EQ(std::popcount(controller.block(2)[7]), 3) << "one mixture, the engine, one segment";
    }
    EXPECT_EQ(status, 0xCD);  // gas, over the limit, cut-off, both conditions
}

TEST(Simulator, DrivesByItsParameters) {
    struct Leg {
        double rpm, throttle, seconds;
        bool learn = false;  // the command goes first
    };
    // The byte of the block lies within the limits at the end.
    const auto check = [](const char* what, const Config& config,
                          const std::vector<std::pair<int, std::uint8_t>>& cells, const std::vector<Leg>& legs,
                          int block, std::size_t byte, int mask, int lowest, int highest) {
        Controller controller(config);
        for (const auto& [cell, value] : cells) {
            controller.cells.set(cell, value);
        }
        for (const Leg& leg : legs) {
            EXPECT_EQ(controller.exchange(leg.learn ? Hex("65 1F 32 B6") : Bytes()).size(), leg.learn ? 3U : 0U);
            controller.driver.rpm = leg.rpm;
            controller.driver.throttle = leg.throttle;
            controller.step(leg.seconds);
        }
        const int seen = controller.block(block)[byte] & mask;
        EXPECT_TRUE(seen >= lowest && seen <= highest) << what << ": " << seen;
    };
    const Config cold = Of(4, Scenario::Cold), second = Of(2, Scenario::Cruise), fourth = Of(4, Scenario::Cruise);
    const Leg up = {2600, 20, 10}, down = {1500, 20, 5}, lifted = {3000, 0, 25}, fast = {7000, 0, 5};
    const Leg road = {2500, 22, 25}, kick = {2500, 80, 28};  // 3.7 V, above the 3.0 V of TPSJump
    check("petrol while cold", cold, {}, {up, down}, 2, 8, 0xC1, 0x40, 0x40);
    check("petrol until slow", cold, {{Options, 0}}, {up}, 2, 8, 0x01, 0, 0);
    check("gas though cold", cold, {{Options, 0}}, {up, down}, 2, 8, 0xC1, 0xC1, 0xC1);
    check("gas when rising", cold, {{Options, SwitchWhenRising}}, {up}, 2, 8, 0x01, 1, 1);
    check("delay", cold, {{Options, SwitchWhenRising}, {InjectDelay, 200}}, {up}, 2, 8, 0x01, 0, 0);
    check("half of the base in cut-off", second, {}, {lifted}, 2, 3, 0xFF, 55, 55);
    check("no cut-off", second, {{Options, LimitOn}}, {lifted}, 2, 8, 0x0D, 0x01, 0x01);
    check("petrol above the limit", second, {{Options, LimitOn}}, {lifted, fast}, 2, 8, 0x0D, 0x04, 0x04);
    check("no limit", second, {{Options, 0}}, {lifted, fast}, 2, 8, 0x0D, 0x01, 0x01);
    check("range on the road", fourth, {{AttMax, 3}}, {road}, 2, 3, 0xFF, 113, 113);
    check("range at idle", fourth, {{AttMax, 3}}, {road, {900, 0, 5}}, 2, 3, 0xFF, 114, 140);
    check("jump in percent", fourth, {{Options, JumpOn}}, {kick}, 2, 3, 0xFF, 110 + 55, 110 + 55);
    check("jump in steps", second, {{Options, JumpOn}}, {kick}, 2, 3, 0xFF, 180, 180);
    check("mirrored, 20 is 4.6 V", fourth, {{Options, JumpOn}, {LambdaType, 1}, {TPSJump, 20}}, {kick}, 2, 3, 0xFF, 50,
          164);
    check("not learning on petrol", cold, {}, {{2500, 22, 2, true}}, 2, 8, 0x32, 0x00, 0x00);
    check("base learnt", fourth, {}, {road, {2500, 22, 8, true}}, 2, 4, 0xFF, 116, 140);
    check("nothing learnt", fourth, {}, {road, {900, 0, 5}, {900, 0, 21, true}}, 2, 8, 0x32, 0x00, 0x00);
    check("too little learnt", fourth, {}, {road, {2500, 22, 2, true}, {900, 0, 20}}, 2, 8, 0x32, 0x30, 0x30);
    check("hours", fourth, {{Minutes, 59}, {HoursLo, 255}}, {kick, kick, kick}, 5, 10, 0xFF, 2, 2);
}

TEST(Simulator, RepliesComeWhenTheLineAndTheFaultsLetThem) {
    // In microseconds since the request began; hangUp 0 for none.
    const auto check = [](bool paced, const char* fault, const Bytes& request, const std::vector<long>& expected,
                          long hangUp = 0) {
        SCOPED_TRACE(fault);
        Config config = Of(2);
        config.wirePace = paced;
        config.faults = {*ParseFault(fault)};
        Responder line(config);
        line.take(request, 7);
        const auto micros = [](double moment) { return moment == Never ? 0 : std::lround((moment - 7) * 1e6); };
        EXPECT_EQ(micros(line.hangUp()), hangUp);
        std::vector<long> arrivals;
        while (line.bytesToCome() > 0) {
            const double due = line.nextByte();
            EXPECT_TRUE(line.give(due - 1e-9).empty());
            arrivals.insert(arrivals.end(), line.give(due).size(), micros(due));
        }
        EXPECT_EQ(arrivals, expected);
    };
    const char* none = "silence=0.0";
    check(true, none, AskIdentity, {5208, 6250, 7292, 8333});
    check(true, none, Hex("65 1E 33 B6"), {235208, 236250, 237292});  // thinks for long
    check(true, "silence", AskIdentity, {});
    check(true, "late", AskIdentity, {305208, 306250, 307292, 308333});
    check(true, "split", AskIdentity, {5208, 6250, 127292, 128333});
    check(true, "doubled=1", AskIdentity, {5208, 6250, 7292, 8333, 9375, 10417, 11458, 12500});
    check(true, "silence=1", Hex("65 01 01 67 65 1E 34 B7"), {9375, 10417, 11458});
    check(true, "hang-up", AskIdentity, {5208, 6250}, 26250);
    check(false, "split", AskIdentity, {0, 0, 120000, 120000});
    std::vector<long> endless(4);
    for (long byte = 1; byte <= 1920; ++byte) {
        endless.push_back(std::lround(static_cast<double>(byte) * 1e6 / 960));
    }
    check(false, "endless", AskIdentity, endless);
}

TEST(Simulator, ACutLineForgetsAndItsLogKeepsWhatWasSent) {
    Config config = Of(4, Scenario::Ramp);
    config.wirePace = true;
    config.faults = {*ParseFault("hang-up=1")};
    Responder line(config);
    line.take(Hex("65 01 01 67 65 02 02 69 65 13 07"), 1);
    line.cut();
    EXPECT_TRUE(line.nextByte() == Never && line.hangUp() == Never && line.bytesToCome() == 0);
    line.take(Hex("65 13 07 7F 65 13 08 00"), 1.001);
    EXPECT_NEAR(line.nextByte(), 1.001 + 5 * ByteSeconds, 1e-9) << "nothing before it is on the line";
    const Log& log = line.log;
    ASSERT_EQ(log.size(), 4U);
    EXPECT_TRUE(log[0].reply == Hex("65 00") && log[2].seconds == 1.001 && !log[3].request.good);
    for (std::size_t frame = 0; frame < Responder::LogLimit; ++frame) {
        line.take(AskIdentity, 2);
    }
    EXPECT_TRUE(log.size() == Responder::LogLimit && log[0].seconds == 2);
}

TEST(Simulator, RampsEveryLiveByteByItsRule) {
    // After a minute's sleep the engine runs on for five seconds: n = 50, 2500 RPM, period 6000.
    for (const auto& [runs, moment, live] : {std::tuple{true, 2.0, "65 14 34 54 74 98 3A 4C 14 94 3B"},
                                             {true, 60.0, "65 32 52 72 92 70 17 4C 32 B2 A4"},
                                             {false, 2.0, "65 00 20 40 60 FF FF 19 00 80 BC"}}) {
        Config config = Of(4, Scenario::Ramp);
        config.clockRuns = runs;
        Responder engine(config);
        engine.advance(moment);
        EXPECT_EQ(engine.controller.exchange(AskLive), Hex(live));
    }
}

TEST(Simulator, ReadsItsCommandLine) {
    const auto parse = [](std::vector<std::string> words) {
        words.insert(words.begin(), "tarvex-simulator");
        std::vector<char*> arguments(words.size() + 1);
        std::ranges::transform(words, arguments.begin(), [](std::string& word) { return word.data(); });
        return ParseCommandLine(static_cast<int>(words.size()), arguments.data());
    };
    const CommandLine line = parse({"--family=2", "--firmware", "31", "--pace=none", "--port=a/COM1", "--scenario=ramp",
                                    "--fault=late=3", "--fault=silence", "--seed=9", "--verbose"});
    EXPECT_EQ(line.error, "");
    const Config& config = line.config;
    EXPECT_TRUE(config.family == 2 && config.firmware == 31 && config.portLink == "a/COM1");
    EXPECT_TRUE(config.scenario == Scenario::Ramp && config.faults.size() == 2 && config.seed == 9);
    EXPECT_TRUE(line.verbose && !config.wirePace && !line.help);
    EXPECT_EQ(parse({"--family=9"}).error, "read option '--family=9': a family is a number from 1 to 8");
    for (const char* wrong :
         {"--family=2x", "--firmware=32", "--pace=fast", "--port=", "--seed=-1", "--scenario=x", "--fault=late=-1",
          "--seed", "--nonsense", "--verbose=1", "word", "--fault=", "--fault=quiet",
          "--fault=silence=", "--fault=silence=0", "--fault=silence=1.5", "--fault=silence=3x"}) {
        EXPECT_NE(parse({wrong}).error, "") << wrong;
    }
}

namespace {

constexpr double Patience = 10;  // seconds; only a failing test waits so long

class Line {
public:
    explicit Line(const std::string& path) : handle(::open(path.c_str(), O_RDWR | O_NOCTTY)) {
    }
    ~Line() {
        ::close(handle);
    }

    // As much of the reply as comes before the device goes away.
    Bytes ask(const Bytes& request, std::size_t length) const {
        EXPECT_EQ(::write(handle, request.data(), request.size()), static_cast<ssize_t>(request.size()));
        Bytes reply;
        pollfd wanted{handle, POLLIN, 0};
        std::uint8_t byte;
        while (reply.size() < length && ::poll(&wanted, 1, 1000 * static_cast<int>(Patience)) == 1 &&
               ::read(handle, &byte, 1) == 1) {
            reply.push_back(byte);
        }
        return reply;
    }

    const int handle;
};

class SimulatorDevice : public testing::Test {
protected:
    SimulatorDevice() {
        config.portLink = folder / "COM1";
    }
    ~SimulatorDevice() override {
        fs::remove_all(folder);
    }

    const fs::path folder = fs::temp_directory_path() / ("simulator-test-" + std::to_string(::getpid()));
    Config config = Of(4);
};

}  // namespace

TEST_F(SimulatorDevice, AnswersAtThePaceOfTheWireAndComesBackAfterAHangUp) {
    config.wirePace = true;
    fs::create_directories(folder);
    fs::create_symlink("/nowhere", config.portLink);  // left behind by an earlier run
    {
        Server server(config);
        EXPECT_EQ(fs::read_symlink(config.portLink), server.devicePath());
        const Line line(config.portLink);
        termios settings{};
        ::tcgetattr(line.handle, &settings);
        ::cfsetspeed(&settings, B9600);
        ::tcsetattr(line.handle, TCSANOW, &settings);
        EXPECT_EQ(server.lineSpeed(), 9600);
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(line.ask(AskIdentity, 4), Identity);
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        EXPECT_GE(taken.count(), 8 * ByteSeconds);
        server.addFault(*ParseFault("hang-up=1"));
        EXPECT_LT(line.ask(AskIdentity, 4).size(), 4U);
        ASSERT_TRUE(server.waitPlugged(Patience));
        EXPECT_EQ(Line(config.portLink).ask(AskIdentity, 4), Identity);
    }
    EXPECT_FALSE(fs::is_symlink(config.portLink));
    std::ofstream(config.portLink) << "not a link";
    EXPECT_THROW(Server{config}, std::system_error) << "a file in the way is not ours to remove";
}

TEST_F(SimulatorDevice, OutlivesAUserWhoNeverReadsAndFreesThePortWhenHeIsGone) {
    Server server(config);
    {
        Line line(config.portLink);
        ASSERT_EQ(::ioctl(line.handle, TIOCEXCL), 0);
        // Their replies are more than the device buffers.
        for (int frame = 0; frame < 4500; ++frame) {
            line.ask(Hex("65 05 05 6F"), 0);
        }
        line.ask(AskLive, 0);
        // A busy computer may take one in two pieces so late that it counts as cut off.
        ASSERT_TRUE(server.waitFor(
            [](const Log& log) { return log.size() > 4400 && log.back().request.bytes[1] == AskLive[1]; }, Patience));
        // A logged reply has been sent, or lost for want of room.
        ::tcflush(line.handle, TCIFLUSH);
        EXPECT_EQ(line.ask(AskIdentity, 4), Identity);
    }
    int exclusive = 1;
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::duration<double>(Patience);
    while (exclusive != 0 && std::chrono::steady_clock::now() < giveUp) {
        const Line next(config.portLink);
        ::ioctl(next.handle, TIOCGEXCL, &exclusive);
        std::this_thread::yield();
    }
    EXPECT_EQ(exclusive, 0);
}

TEST_F(SimulatorDevice, ObeysTheConsole) {
    config.scenario = Scenario::Off;
    Server server(config);
    const auto run = [&](const char* line) { return RunConsoleCommand(server, line).text; };
    for (const char* right : {"set 18 99", "live 9 200", "start", "throttle 40", "gas", "fault garbage 1"}) {
        EXPECT_EQ(run(right), "") << right;
    }
    server.with([](Controller& controller) {
        controller.step(5);
        EXPECT_NEAR(controller.engine.rpm(), 900 + 55 * 40, 150);
        const Bytes live = controller.block(2);
        EXPECT_TRUE((live[8] & 0x01) == 1 && live[9] == 200 && live[4] == 99);
    });
    const Line line(config.portLink);
    EXPECT_NE(line.ask(AskIdentity, 4)[0], Marker);
    EXPECT_EQ(line.ask(AskIdentity, 4), Identity);
    for (const char* wrong :
         {"set 50 1", "set 30 51", "set 5", "set 5 256", "temp hot", "fault", "live 10 0", "jump"}) {
        EXPECT_NE(run(wrong), "") << wrong;
    }
    EXPECT_EQ(run("unplug"), "");
    EXPECT_NE(run("show").find("unplugged"), std::string::npos);
    EXPECT_TRUE(RunConsoleCommand(server, "quit").quit);
}
