// The serial layer on a pseudo-terminal, and the link above it on a line whose far end and time the test holds.
#include "link/Link.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/time.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <numeric>
#include <set>
#include <thread>
#include <vector>

#include "HeldLine.h"
#include "model/Blocks.h"
#include "platform/linux/PortTable.h"

namespace {

using Bytes = std::vector<BYTE>;

long millisecondsOf(auto action) {
    const Moment start = layer::theClock().now();
    action();
    return static_cast<long>((layer::theClock().now() - start) / Millisecond);
}

// With the link's own settings.
HANDLE openLine(const char* name = "COM7:") {
    PortName = name;
    OpenPort();
    return PortHandle;
}

// COM7 is a pseudo-terminal: master is the far side of the wire, slave a second look at the tool's side.
class Serial : public testing::Test {
protected:
    Serial() {
        std::array<char, 22> name{"/tmp/link-test-XXXXXX"};
        folder = mkdtemp(name.data());
        layer::setPortDirectory(folder);
        master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
        EXPECT_EQ(grantpt(master) + unlockpt(master), 0);
        slave = open(ptsname(master), O_RDWR | O_NOCTTY | O_CLOEXEC);
        std::filesystem::create_symlink(ptsname(master), folder / "COM7");
    }
    ~Serial() override {
        unplug();
        layer::setPortDirectory(usualPorts);
        std::filesystem::remove_all(folder);
    }
    void unplug() {
        close(std::exchange(master, -1));
        close(std::exchange(slave, -1));
    }
    void put(const Bytes& bytes) const {
        EXPECT_EQ(write(master, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
    // Waits until so many bytes lie at an end.
    static void awaitPending(int end, int count) {
        const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(2);
        int pending = -1;
        while (ioctl(end, FIONREAD, &pending) == 0 && pending != count && std::chrono::steady_clock::now() < giveUp) {
            std::this_thread::yield();
        }
        EXPECT_EQ(pending, count);
    }
    static void expectNothingMoves(HANDLE handle) {
        Bytes bytes(4);
        DWORD got = 9;
        DWORD sent = 9;
        EXPECT_FALSE(ReadFile(handle, bytes.data(), 4, &got, nullptr));
        EXPECT_FALSE(WriteFile(handle, bytes.data(), 4, &sent, nullptr));
        EXPECT_EQ(got + sent, 0u);
    }

    std::filesystem::path folder;
    const std::string usualPorts = layer::portDirectory();
    int master = -1;
    int slave = -1;
};

TEST_F(Serial, NamesReachTheirDevices) {
    const std::map<int, std::string> known{{1, "ttyS0"},    {8, "ttyUSB3"},  {9, "ttyACM0"},  {16, "rfcomm3"},
                                           {17, "ttyS4"},   {44, "ttyS31"},  {45, "ttyUSB4"}, {72, "ttyUSB31"},
                                           {73, "ttyACM4"}, {101, "rfcomm4"}};
    std::set<std::string> devices;
    for (int port = 1; port <= 128; ++port) {
        const std::string name = "COM" + std::to_string(port);
        const std::string device = layer::portDevice(name + ":");
        EXPECT_EQ(layer::portDevice("\\\\.\\" + name), device);
        EXPECT_TRUE(!known.contains(port) || device == "/dev/" + known.at(port)) << name << " " << device;
        devices.insert(device);
    }
    EXPECT_EQ(devices.size(), 128u);
    EXPECT_TRUE(devices.contains(folder / "COM7"));
    for (const char* name : {"", ":", "COM0:", "COM129:", "\\\\.\\COM129", "COM7", "COM:", "\\\\.\\COM",
                             "COM07:", "COM-1:", "LPT1:", "COM7:x", "\\\\.\\COM7:", "COM99999999999:", "/dev/ttyS0"}) {
        EXPECT_EQ(layer::portDevice(name), "") << name;
    }
    std::filesystem::create_symlink(folder / "unplugged", folder / "COM1");
    EXPECT_EQ(layer::portDevice("COM1:"), folder / "COM1");
}

TEST_F(Serial, PortDirectoryStaysWhereTheProcessStarted) {
    const std::string start = std::filesystem::current_path();
    EXPECT_EQ(usualPorts, start + "/ports");
    ASSERT_TRUE(SetCurrentDirectoryA(folder.c_str()));
    EXPECT_EQ(layer::startDirectory(), start);
    std::array<char, 100> text{};
    const DWORD length = static_cast<DWORD>(folder.native().size());
    EXPECT_EQ(GetCurrentDirectoryA(length, text.data()), length + 1);
    EXPECT_EQ(GetCurrentDirectoryA(length + 1, text.data()), length);
    EXPECT_EQ(folder, text.data());
    ASSERT_TRUE(SetCurrentDirectoryA(start.c_str()));
}

TEST_F(Serial, OpensOnlyFreeTerminalsAndRefusesOtherHandles) {
    std::ofstream(folder / "COM3") << "precious";
    EXPECT_EQ(openLine("COM3:"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(std::filesystem::file_size(folder / "COM3"), 8u);
    flock(slave, LOCK_EX | LOCK_NB);
    EXPECT_EQ(openLine(), INVALID_HANDLE_VALUE);
    flock(slave, LOCK_UN);

    int exclusive = 1;
    const HANDLE closed = openLine();
    EXPECT_EQ(openLine("\\\\.\\COM7"), INVALID_HANDLE_VALUE);
    EXPECT_TRUE(CloseHandle(closed));
    EXPECT_TRUE(ioctl(slave, TIOCGEXCL, &exclusive) == 0 && exclusive == 0);
    const HANDLE current = openLine("\\\\.\\COM7");
    for (const HANDLE handle : {HANDLE{nullptr}, INVALID_HANDLE_VALUE, closed}) {
        expectNothingMoves(handle);
        EXPECT_FALSE(PurgeComm(handle, PURGE_TXCLEAR));
        EXPECT_FALSE(CloseHandle(handle));
    }
    EXPECT_TRUE(CloseHandle(current));
}

TEST_F(Serial, EveryByteValuePassesUnchanged) {
    const HANDLE port = openLine();
    termios line{};
    tcgetattr(slave, &line);
    EXPECT_EQ(cfgetospeed(&line), static_cast<speed_t>(B9600));
    Bytes all(256);
    std::iota(all.begin(), all.end(), BYTE{0});
    Bytes back(256);
    DWORD count = 0;
    put(all);
    EXPECT_TRUE(ReadFile(port, back.data(), 256, &count, nullptr));
    EXPECT_EQ(back, all);
    EXPECT_TRUE(WriteFile(port, all.data(), 256, &count, nullptr));
    awaitPending(master, 256);
    back.assign(256, 0);
    EXPECT_EQ(read(master, back.data(), 256), 256);
    EXPECT_EQ(back, all);
    put({1, 2, 3});
    awaitPending(slave, 3);
    EXPECT_TRUE(PurgeComm(port, PURGE_RXCLEAR));
    awaitPending(slave, 0);
    CloseHandle(port);
}

TEST_F(Serial, SignalsEndNeitherAReadNorASleep) {
    const HANDLE port = openLine();
    struct sigaction ignoring {};
    ignoring.sa_handler = [](int) {};
    sigaction(SIGALRM, &ignoring, nullptr);
    const itimerval often{{0, 15000}, {0, 15000}};
    setitimer(ITIMER_REAL, &often, nullptr);
    put({1});
    Bytes buffer(21);
    DWORD count = 9;
    const long took = millisecondsOf([&] { ReadFile(port, buffer.data(), 21, &count, nullptr); });
    EXPECT_EQ(count, 1u);
    EXPECT_TRUE(took >= 200 && took < 500) << took;
    EXPECT_GE(millisecondsOf([] { Sleep(50); }), 50);
    const itimerval never{};
    setitimer(ITIMER_REAL, &never, nullptr);
    CloseHandle(port);
}

TEST_F(Serial, StuckOrVanishedDeviceBlocksNothing) {
    const HANDLE port = openLine();
    COMMTIMEOUTS timeouts{200, 40, 100, 0, 0};
    EXPECT_FALSE(SetCommTimeouts(port, &timeouts));
    timeouts.WriteTotalTimeoutConstant = 100;
    EXPECT_TRUE(SetCommTimeouts(port, &timeouts));
    Bytes buffer(1 << 20);
    DWORD count = 0;
    EXPECT_LT(millisecondsOf([&] { WriteFile(port, buffer.data(), 1 << 20, &count, nullptr); }), 600);
    EXPECT_LT(count, 1u << 20);

    put({1, 2});
    awaitPending(slave, 2);
    std::jthread peer([&] {
        awaitPending(slave, 0);
        unplug();
    });
    EXPECT_LT(millisecondsOf([&] { ReadFile(port, buffer.data(), 21, &count, nullptr); }), 180);
    EXPECT_EQ(count, 2u);
    peer.join();
    EXPECT_LT(millisecondsOf([&] { expectNothingMoves(port); }), 90);
    EXPECT_TRUE(CloseHandle(port));
}

Bytes goodReply(size_t length) {
    Bytes reply(length, 0xA7);
    reply.front() = 0x65;
    reply.back() = static_cast<BYTE>(0x65 + 0xA7 * (length - 2));
    return reply;
}

// Answers whatever is written with the same reply, at once.
class Peer : public FarEnd {
public:
    using FarEnd::FarEnd;
    void sendAfter(int milliseconds, const Bytes& bytes) {
        clock.at(clock.now() + milliseconds * Millisecond, [=, this] { send(bytes); });
    }

    Bytes request;
    Bytes reply;

protected:
    void take(std::span<const BYTE> bytes) override {
        request.insert(request.end(), bytes.begin(), bytes.end());
        sendAfter(0, reply);
    }
};

class Link : public testing::Test {
protected:
    Link() {
        PortName = "COM7:";
    }
    ~Link() override {
        ClosePort();
    }
    // Runs an exchange that gets this reply and takes so long; gives the request that was sent.
    Bytes answer(const Bytes& reply, long took, auto exchange) {
        peer.request.clear();
        peer.reply = reply;
        EXPECT_EQ(millisecondsOf(exchange), took);
        return peer.request;
    }
    void connect(BYTE identity) {
        answer({0x65, 0x00, identity, static_cast<BYTE>(0x65 + identity)}, 0, PollIdentity);
        EXPECT_EQ(LinkLost + LinkRetries, 0);
        EXPECT_EQ(IdentBlock[2], identity);
    }

    HeldClock clock;
    Peer peer{clock, 7};
    // Family 2, version 5, and family 4, version 12.
    const BYTE second = 0x25;
    const BYTE fourth = 0x6C;
};

TEST_F(Link, ReadsEndByTheTotalOrTheIntervalWhicheverIsFirst) {
    // Totals are 260 ms for 4 bytes and 940 for 21; the interval is 200.
    const HANDLE port = openLine();
    const auto check = [&](DWORD asked, const std::vector<int>& arrivals, DWORD count, long took) {
        SCOPED_TRACE(testing::PrintToString(arrivals));
        for (const int arrival : arrivals) {
            peer.sendAfter(arrival, {1});
        }
        Bytes buffer(21);
        DWORD got = 9;
        EXPECT_EQ(millisecondsOf([&] { ReadFile(port, buffer.data(), asked, &got, nullptr); }), took);
        EXPECT_EQ(got, count);
        clock.forget();
        PurgeComm(port, PURGE_RXCLEAR);
    };
    check(4, {0, 10, 20, 30, 40}, 4, 30);
    check(4, {0, 200}, 2, 260);
    check(4, {0, 201}, 1, 200);
    check(4, {250, 259}, 2, 260);
    check(21, {700}, 1, 900);
    check(21, {0, 120, 321}, 2, 320);
    check(21, {0, 190, 380, 570, 760, 939}, 6, 940);
    check(21, {941}, 0, 940);
    // What came in time counts, however late the program wakes.
    clock.at(clock.now() + 258 * Millisecond, [&] { clock.pass(10 * Millisecond); });
    check(4, {258, 259}, 2, 268);
    CloseHandle(port);
}

TEST_F(Link, IdentityAloneDecidesWhetherTheLinkIsGood) {
    const auto check = [&](const Bytes& reply, long took, int retries, int lost, int open, UINT period, BYTE identity) {
        SCOPED_TRACE(testing::PrintToString(reply));
        TimerPeriod = 20;
        LiveBlock[1] = ParamBlockA[1] = ParamBlockB[1] = ParamBlockC[1] = 1;
        EXPECT_EQ(answer(reply, took, ReadIdentBlock), (Bytes{0x65, 0x01, 0x01, 0x67}));
        EXPECT_TRUE(LinkRetries == retries && LinkLost == lost && PortOpen == open);
        EXPECT_TRUE(TimerPeriod == period && IdentBlock[2] == identity);
        EXPECT_EQ(LiveBlock[1] + ParamBlockA[1] + ParamBlockB[1] + ParamBlockC[1], lost ? 0 : 4);
    };
    const Bytes good{0x65, 0x00, 0x6C, 0xD1};
    const Bytes noMarker{0x00, 0x00, 0x6C, 0x6C};
    check(good, 0, 0, 0, 1, 50, fourth);
    check(noMarker, 0, 1, 0, 1, 20, fourth);
    check(noMarker, 0, 2, 0, 1, 20, fourth);
    check(good, 0, 0, 0, 1, 50, fourth);
    check({}, 260, 1, 0, 1, 20, fourth);
    check({0x65, 0x00, 0x25, 0x8B}, 0, 1, 0, 0, 20, fourth);  // bad sums
    check(Bytes(100, 0x65), 0, 1, 0, 0, 20, fourth);
    check({0x65, 0x01}, 200, 1, 0, 0, 20, fourth);
    check({0x65, 0x76, 0x25}, 200, 0, 0, 1, 50, second);  // short, but the rest sums to the missing 0
    check(noMarker, 0, 1, 0, 1, 20, second);
    check(noMarker, 0, 2, 0, 1, 20, second);
    check(noMarker, 0, 2, 1, 0, 500, 0);
    check({}, 260, 2, 1, 0, 500, 0);
    check(good, 0, 0, 0, 1, 50, fourth);
}

TEST_F(Link, GoodRepliesFillTheMirrors) {
    const auto check = [&](auto read, const Bytes& request, auto& mirror, size_t length) {
        mirror.fill(0xEE);
        EXPECT_EQ(answer(goodReply(length), 0, read), request);
        Bytes expected = goodReply(length);
        expected.resize(mirror.size(), 0);
        EXPECT_EQ(Bytes(mirror.begin(), mirror.end()), expected);
        EXPECT_EQ(LastByteCount, length);
    };
    connect(second);
    EXPECT_TRUE(ControllerFamily == 2 && FirmwareVersion == 5);
    check(ReadLiveBlock, {0x65, 0x02, 0x02, 0x69}, LiveBlock, 11);
    check(ReadParamBlockA, {0x65, 0x03, 0x03, 0x6B}, ParamBlockA, 15);
    check(ReadParamBlockB, {0x65, 0x04, 0x04, 0x6D}, ParamBlockB, 16);
    connect(fourth);
    EXPECT_TRUE(ControllerFamily == 4 && FirmwareVersion == 12);
    check(ReadParamBlockA, {0x65, 0x03, 0x03, 0x6B}, ParamBlockA, 14);
    check(ReadParamBlockC, {0x65, 0x05, 0x05, 0x6F}, ParamBlockC, 21);
}

TEST_F(Link, BadRepliesToBlockReadsChangeNothing) {
    connect(second);
    ParamBlockA.fill(0xEE);
    // No marker, a bad sum, too short, nothing, too long.
    const std::pair<Bytes, long> rows[] = {
        {Bytes(15, 0), 0}, {Bytes(15, 0x65), 0}, {goodReply(14), 200}, {{0x65, 0xA7}, 200},
        {{}, 700},         {Bytes(100, 0x65), 0}};
    for (const auto& [reply, took] : rows) {
        answer(reply, took, ReadParamBlockA);
        EXPECT_TRUE(ParamBlockA[0] == 0xEE && ParamBlockA[14] == 0xEE);
        EXPECT_TRUE(LinkLost == 0 && LinkRetries == 0 && PortOpen == 1);
    }
    peer.send(Bytes{0x00, 0x01, 0x02});
    connect(fourth);
}

TEST_F(Link, WriteCellNumbersCellsByFamilyAndLeavesOthersAlone) {
    const auto check = [&](BYTE identity, int family, unsigned cell, BYTE value, const Bytes& request, long delay) {
        SCOPED_TRACE(family);
        connect(identity);
        EXPECT_EQ(ControllerFamily, family);
        const bool served = !request.empty();
        EXPECT_EQ(LinkServed(), served);
        WriteDelay = static_cast<DWORD>(delay);
        const Bytes reply{0xFF, value, 0x11};
        EXPECT_EQ(answer(reply, delay, [&] { WriteCell(cell, value); }), request);
        EXPECT_EQ(LastByteCount, served ? 3u : 4u);
        EXPECT_TRUE(!served || std::ranges::equal(WriteReply, reply));
    };
    check(second, 2, 30, 200, {0x65, 0x1E, 0xC8, 0x4B}, 0);
    check(second, 2, 5, 1, {0x65, 0x05, 0x01, 0x6B}, 0);
    check(fourth, 4, 5, 1, {0x65, 0x06, 0x01, 0x6C}, 60);
    check(fourth, 4, 30, 50, {0x65, 0x1F, 0x32, 0xB6}, 0);
    answer({}, 220, [] { WriteCell(30, 51); });
    EXPECT_TRUE(LastByteCount == 0 && WriteReply[1] == 50);
    for (const auto& [identity, family] : std::map<BYTE, int>{{0x1F, 1}, {0x40, 3}, {0xFF, 8}}) {
        check(identity, family, 30, 50, {}, 0);
    }
    connect(second);
    LoseLink();
    EXPECT_EQ(answer({}, 0, [] { WriteCell(30, 50); }), Bytes());
}

TEST_F(Link, ChangedOrVanishedPortIsFoundByTheNextExchange) {
    connect(fourth);
    PortName = "";
    connect(fourth);
    ClosePort();
    ReadIdentBlock();
    EXPECT_TRUE(PortOpen == 1 && LastByteCount == 0 && LinkRetries == 1);
    ClosePort();
    PortName = "\\\\.\\COM7";
    connect(second);
    peer.unplug();
    for (int tick = 0; tick < 5; ++tick) {
        EXPECT_EQ(millisecondsOf(ReadIdentBlock), 0);
    }
    EXPECT_EQ(LinkLost, 1);
    peer.replug();
    connect(fourth);
}

}  // namespace
