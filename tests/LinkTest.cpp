// The serial layer on a pseudo-terminal, and the link above it on a line whose far end and time the test holds.
#include "link/Link.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/time.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
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

TEST_F(Serial, NamesReachTheirDevicesWhereverTheProgramHasGone) {
    const std::filesystem::path start = std::filesystem::current_path();
    ASSERT_TRUE(SetCurrentDirectoryA(folder.c_str()));
    EXPECT_EQ(layer::startDirectory(), start);
    EXPECT_EQ(usualPorts, start / "ports");
    std::array<char, 100> text{};
    const DWORD length = static_cast<DWORD>(folder.native().size());
    EXPECT_EQ(GetCurrentDirectoryA(length, text.data()), length + 1);
    EXPECT_EQ(GetCurrentDirectoryA(length + 1, text.data()), length);
    EXPECT_EQ(folder, text.data());
    const std::map<int, std::string> known{{1, "/dev/ttyS0"},    {7, folder / "COM7"}, {16, "/dev/rfcomm3"},
                                           {17, "/dev/ttyS4"},   {44, "/dev/ttyS31"},  {45, "/dev/ttyUSB4"},
                                           {73, "/dev/ttyACM4"}, {101, "/dev/rfcomm4"}};
    std::set<std::string> devices;
    for (int port = 1; port <= 128; ++port) {
        const std::string name = "COM" + std::to_string(port);
        const std::string device = layer::portDevice(name + ":");
        EXPECT_EQ(layer::portDevice("\\\\.\\" + name), device);
        EXPECT_TRUE(!known.contains(port) || device == known.at(port)) << name << " " << device;
        devices.insert(device);
    }
    EXPECT_EQ(devices.size(), 128u);
    for (const char* name : {"", ":", "COM0:", "COM129:", "\\\\.\\COM129", "COM7", "COM:", "\\\\.\\COM",
                             "COM07:", "COM-1:", "LPT1:", "COM7:x", "\\\\.\\COM7:", "COM99999999999:", "/dev/ttyS0"}) {
        EXPECT_EQ(layer::portDevice(name), "") << name;
    }
    std::filesystem::create_symlink(folder / "unplugged", folder / "COM1");
    EXPECT_EQ(layer::portDevice("COM1:"), folder / "COM1");
    std::filesystem::current_path(start);
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

TEST_F(Serial, EveryByteValuePassesUnchangedAndSignalsEndNothing) {
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

    struct sigaction ignoring {};
    ignoring.sa_handler = [](int) {};
    sigaction(SIGALRM, &ignoring, nullptr);
    const itimerval often{{0, 15000}, {0, 15000}};
    setitimer(ITIMER_REAL, &often, nullptr);
    put({1});
    const long took = millisecondsOf([&] { ReadFile(port, back.data(), 21, &count, nullptr); });
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

TEST_F(Link, GoodRepliesFillTheMirrorsAndBadOnesChangeNothing) {
    const auto check = [&](auto read, BYTE command, auto& mirror, size_t length, long silence) {
        SCOPED_TRACE(int{command});
        const Bytes request{0x65, command, command, static_cast<BYTE>(0x65 + 2 * command)};
        Bytes good(length, 0xA7);
        good.front() = 0x65;
        good.back() = static_cast<BYTE>(0x65 + 0xA7 * (length - 2));
        const Bytes tooShort(good.begin(), good.end() - 1);
        mirror.fill(0xEE);
        // No marker, a bad sum, too short, nothing, too long.
        const std::pair<Bytes, long> bad[] = {{Bytes(length, 0), 0}, {Bytes(length, 0x65), 0},
                                              {tooShort, 200},       {{0x65, 0xA7}, 200},
                                              {{}, silence},         {Bytes(100, 0x65), 0}};
        for (const auto& [reply, took] : bad) {
            EXPECT_EQ(answer(reply, took, read), request);
            EXPECT_TRUE(std::ranges::all_of(mirror, [](BYTE byte) { return byte == 0xEE; }));
            EXPECT_TRUE(LinkLost == 0 && LinkRetries == 0 && PortOpen == 1);
        }
        answer(good, 0, read);
        EXPECT_EQ(LastByteCount, length);
        good.resize(mirror.size(), 0);
        EXPECT_TRUE(std::ranges::equal(mirror, good));
    };
    connect(second);
    EXPECT_TRUE(ControllerFamily == 2 && FirmwareVersion == 5);
    check(ReadLiveBlock, 2, LiveBlock, 11, 540);
    check(ReadParamBlockA, 3, ParamBlockA, 15, 700);
    check(ReadParamBlockB, 4, ParamBlockB, 16, 740);
    peer.send(Bytes{0x00, 0x01, 0x02});
    connect(fourth);
    EXPECT_TRUE(ControllerFamily == 4 && FirmwareVersion == 12);
    check(ReadParamBlockA, 3, ParamBlockA, 14, 660);
    check(ReadParamBlockC, 5, ParamBlockC, 21, 940);
}

TEST_F(Link, AWriteWaitsForItsReplyOnlyAndGoesToNobodyElse) {
    connect(fourth);
    WriteDelay = 60;
    EXPECT_EQ(answer({0xFF, 0x32, 0x11}, 60, [] { WriteCell(5, 50); }), (Bytes{0x65, 0x06, 0x32, 0x9D}));
    EXPECT_EQ(answer({}, 280, [] { WriteCell(5, 51); }), (Bytes{0x65, 0x06, 0x33, 0x9E}));
    EXPECT_TRUE(LastByteCount == 0 && WriteReply[1] == 50);
    for (const BYTE identity : {0x1F, 0x40, 0xFF}) {
        connect(identity);
        EXPECT_EQ(answer({}, 0, [] { WriteCell(5, 50); }), Bytes()) << int{identity};
    }
}

}  // namespace
