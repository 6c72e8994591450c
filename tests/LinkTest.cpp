// The serial layer and the link above it, on a pseudo-terminal whose far end the test plays.
#include "link/Link.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/time.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <future>
#include <map>
#include <numeric>
#include <set>
#include <thread>
#include <vector>

#include "model/Blocks.h"
#include "platform/linux/PortTable.h"

namespace {

using Bytes = std::vector<BYTE>;
using std::chrono::milliseconds;

long millisecondsOf(auto action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start).count();
}

// COM7 is a pseudo-terminal: master is the far side of the wire, slave a second look at the tool's side.
class Wire : public testing::Test {
protected:
    void SetUp() override {
        std::array<char, 22> name{"/tmp/link-test-XXXXXX"};
        folder = mkdtemp(name.data());
        usualPorts = layer::portDirectory();
        layer::setPortDirectory(folder);
        plug();
        PortName = "COM7:";
        LinkRetries = 0;
        LinkLost = 1;
        WriteDelay = 0;
    }
    void TearDown() override {
        ClosePort();
        unplug();
        layer::setPortDirectory(usualPorts);
        std::filesystem::remove_all(folder);
    }
    void plug() {
        master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        ASSERT_EQ(grantpt(master) + unlockpt(master), 0);
        slave = open(ptsname(master), O_RDWR | O_NOCTTY | O_CLOEXEC);
        std::filesystem::create_symlink(ptsname(master), folder / "COM7");
    }
    void unplug() {
        std::filesystem::remove(folder / "COM7");
        close(master);
        close(slave);
    }
    void put(const Bytes& bytes) const {
        EXPECT_EQ(write(master, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }
    // Takes what the tool sends; fewer bytes than asked for if it is silent for two seconds.
    Bytes take(size_t count) const {
        Bytes bytes(count);
        size_t got = 0;
        pollfd ready{master, POLLIN, 0};
        while (got < count && poll(&ready, 1, 2000) > 0) {
            got += static_cast<size_t>(std::max<ssize_t>(0, read(master, bytes.data() + got, count - got)));
        }
        bytes.resize(got);
        return bytes;
    }
    // Waits until so many bytes lie at the tool's end.
    void awaitPending(int count) const {
        const auto giveUp = std::chrono::steady_clock::now() + milliseconds(2000);
        int pending = -1;
        while (ioctl(slave, FIONREAD, &pending) == 0 && pending != count && std::chrono::steady_clock::now() < giveUp) {
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
    // With the link's own settings.
    static HANDLE openLine(const char* name = "COM7:") {
        PortName = name;
        OpenPort();
        return PortHandle;
    }
    // Runs an exchange that gets this reply; gives the request that was sent.
    Bytes answer(const Bytes& reply, auto action) const {
        auto peer = std::async(std::launch::async, [&] {
            Bytes request = take(4);
            put(reply);
            return request;
        });
        action();
        return peer.get();
    }
    void connect(BYTE identity) {
        const Bytes reply{0x65, 0x00, identity, static_cast<BYTE>(0x65 + identity)};
        EXPECT_EQ(answer(reply, ReadIdentBlock), (Bytes{0x65, 0x01, 0x01, 0x67}));
        EXPECT_EQ(Bytes(IdentBlock.begin(), IdentBlock.end()), reply);
        EXPECT_EQ(LinkLost + LinkRetries, 0);
        EXPECT_EQ(TimerPeriod, 50u);
        DecodeIdentity();
    }

    std::filesystem::path folder;
    std::string usualPorts;
    int master = -1;
    int slave = -1;
};

using Serial = Wire;
using Link = Wire;

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
    EXPECT_EQ(take(256), all);
    CloseHandle(port);
}

TEST_F(Serial, ReadsEndByTheTotalOrTheIntervalWhicheverIsFirst) {
    // Totals are 260 ms for 4 bytes and 940 for 21; the interval is 200. Signals in between change nothing.
    const HANDLE port = openLine();
    struct sigaction ignoring {};
    ignoring.sa_handler = [](int) {};
    sigaction(SIGALRM, &ignoring, nullptr);
    const itimerval often{{0, 15000}, {0, 15000}};
    setitimer(ITIMER_REAL, &often, nullptr);
    const auto check = [&](DWORD asked, DWORD comes, int secondAfter, long earliest, long latest) {
        put(Bytes(comes > 0 ? 1 : 0, 1));
        awaitPending(comes > 0 ? 1 : 0);
        std::jthread peer([&] {
            std::this_thread::sleep_for(milliseconds(secondAfter));
            put(Bytes(comes > 1 ? 1 : 0, 2));
        });
        Bytes buffer(21);
        DWORD count = 9;
        const long took = millisecondsOf([&] { ReadFile(port, buffer.data(), asked, &count, nullptr); });
        EXPECT_EQ(count, comes);
        EXPECT_TRUE(took >= earliest && took < latest) << took;
    };
    check(4, 0, 0, 260, 400);
    check(21, 1, 0, 200, 500);
    check(21, 2, 120, 320, 620);
    check(4, 2, 190, 260, 390);
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
    awaitPending(2);
    std::jthread peer([&] {
        awaitPending(0);
        unplug();
    });
    EXPECT_LT(millisecondsOf([&] { ReadFile(port, buffer.data(), 21, &count, nullptr); }), 180);
    EXPECT_EQ(count, 2u);
    peer.join();
    EXPECT_LT(millisecondsOf([&] { expectNothingMoves(port); }), 90);
    EXPECT_TRUE(CloseHandle(port));
    plug();
}

constexpr BYTE Identity2 = 0x25;  // family 2, version 5
constexpr BYTE Identity4 = 0x6C;  // family 4, version 12

Bytes goodReply(size_t length) {
    Bytes reply(length, 0xA7);
    reply.front() = 0x65;
    reply.back() = static_cast<BYTE>(0x65 + 0xA7 * (length - 2));
    return reply;
}

TEST_F(Link, GoodRepliesFillTheMirrors) {
    const auto check = [&](auto read, const Bytes& request, auto& mirror, size_t length) {
        mirror.fill(0xEE);
        EXPECT_EQ(answer(goodReply(length), read), request);
        Bytes expected = goodReply(length);
        expected.resize(mirror.size(), 0);
        EXPECT_EQ(Bytes(mirror.begin(), mirror.end()), expected);
        EXPECT_EQ(LastByteCount, length);
    };
    connect(Identity2);
    EXPECT_TRUE(ControllerFamily == 2 && FirmwareVersion == 5);
    check(ReadLiveBlock, {0x65, 0x02, 0x02, 0x69}, LiveBlock, 11);
    check(ReadParamBlockA, {0x65, 0x03, 0x03, 0x6B}, ParamBlockA, 15);
    check(ReadParamBlockB, {0x65, 0x04, 0x04, 0x6D}, ParamBlockB, 16);
    connect(Identity4);
    EXPECT_TRUE(ControllerFamily == 4 && FirmwareVersion == 12);
    check(ReadParamBlockA, {0x65, 0x03, 0x03, 0x6B}, ParamBlockA, 14);
    check(ReadParamBlockC, {0x65, 0x05, 0x05, 0x6F}, ParamBlockC, 21);
}

TEST_F(Link, BadRepliesToBlockReadsChangeNothing) {
    connect(Identity2);
    ParamBlockA.fill(0xEE);
    Bytes noMarker = goodReply(15);
    noMarker[0] = 0x64;
    Bytes badSum = goodReply(15);
    badSum[5] ^= 0x10;
    for (const Bytes& reply : {noMarker, badSum, goodReply(14), Bytes{0x65, 0xA7}, Bytes(), Bytes(100, 0x65)}) {
        answer(reply, ReadParamBlockA);
        EXPECT_TRUE(ParamBlockA[0] == 0xEE && ParamBlockA[14] == 0xEE);
        EXPECT_TRUE(LinkLost == 0 && LinkRetries == 0 && PortOpen == 1);
    }
    put({0x00, 0x01, 0x02});
    awaitPending(3);
    connect(Identity4);
}

TEST_F(Link, ThirdIdentityWithoutMarkerLosesTheLink) {
    for (int round = 0; round < 2; ++round) {
        connect(Identity4);
        LiveBlock[1] = ParamBlockA[1] = ParamBlockB[1] = ParamBlockC[1] = 0xEE;
        for (int failure = 1; failure <= 2; ++failure) {
            answer({0x00, 0x00, 0x6C, 0x6C}, ReadIdentBlock);
            EXPECT_TRUE(LinkRetries == failure && LinkLost == 0 && PortOpen == 1 && IdentBlock[2] == Identity4);
        }
    }
    for (int repeat = 0; repeat < 2; ++repeat) {
        TimerPeriod = 20;
        answer({}, ReadIdentBlock);
        EXPECT_TRUE(LinkRetries == 2 && LinkLost == 1 && PortOpen == 0 && TimerPeriod == 500);
        EXPECT_EQ(IdentBlock[2] + LiveBlock[1] + ParamBlockA[1] + ParamBlockB[1] + ParamBlockC[1], 0);
    }
    EXPECT_EQ(DecodeIdentity(), 1);
    connect(Identity4);
}

TEST_F(Link, BadSumOfTheIdentityOnlyClosesThePort) {
    connect(Identity4);
    LinkRetries = 1;
    TimerPeriod = 20;
    for (const Bytes& reply : {Bytes{0x65, 0x00, 0x25, 0x8B}, Bytes(100, 0x65), Bytes{0x65, 0x01}}) {
        answer(reply, ReadIdentBlock);
        EXPECT_TRUE(PortOpen == 0 && LinkLost == 0 && LinkRetries == 1 && TimerPeriod == 20);
        EXPECT_EQ(IdentBlock[2], Identity4);
    }
    answer({0x65, 0x76, 0x25}, ReadIdentBlock);  // short, but the rest sums to the missing 0
    EXPECT_TRUE(PortOpen == 1 && LinkRetries == 0 && IdentBlock[2] == Identity2 && LastByteCount == 3);
}

TEST_F(Link, WriteCellNumbersCellsByFamily) {
    const auto check = [&](BYTE identity, unsigned cell, BYTE value, const Bytes& request) {
        connect(identity);
        EXPECT_EQ(answer({0xFF, value, 0x11}, [&] { WriteCell(cell, value); }), request);
        EXPECT_EQ(WriteReply, (std::array<BYTE, 3>{0xFF, value, 0x11}));
        EXPECT_EQ(LastByteCount, 3u);
    };
    check(Identity2, 30, 200, {0x65, 0x1E, 0xC8, 0x4B});
    check(Identity2, 5, 1, {0x65, 0x05, 0x01, 0x6B});
    check(Identity4, 5, 1, {0x65, 0x06, 0x01, 0x6C});
    check(Identity4, 30, 50, {0x65, 0x1F, 0x32, 0xB6});
    answer({}, [] { WriteCell(30, 51); });
    EXPECT_TRUE(LastByteCount == 0 && WriteReply[1] == 50);
    WriteDelay = 60;
    EXPECT_GE(millisecondsOf([&] { check(Identity4, 30, 50, {0x65, 0x1F, 0x32, 0xB6}); }), 60);
}

TEST_F(Link, OtherFamiliesAndALostLinkAreNeverWrittenTo) {
    for (const auto& [identity, family] : std::map<BYTE, int>{{0x1F, 1}, {0x40, 3}, {0xFF, 8}, {0x20, 2}}) {
        // A frame that a write had sent would stand before this request.
        connect(identity);
        EXPECT_EQ(ControllerFamily, family);
        EXPECT_EQ(LinkServed(), family == 2);
        if (family == 2) {
            LoseLink();
        }
        LastByteCount = 9;
        WriteCell(30, 50);
        EXPECT_EQ(LastByteCount, 9u);
    }
    EXPECT_FALSE(FamilyServed());
    connect(Identity2);
}

TEST_F(Link, ChangedOrVanishedPortIsFoundByTheNextExchange) {
    connect(Identity4);
    PortName = "";
    connect(Identity4);
    ClosePort();
    ReadIdentBlock();
    EXPECT_TRUE(PortOpen == 1 && LastByteCount == 0 && LinkRetries == 1);
    ClosePort();
    PortName = "\\\\.\\COM7";
    connect(Identity2);
    unplug();
    for (int tick = 0; tick < 5; ++tick) {
        EXPECT_LT(millisecondsOf(ReadIdentBlock), 90);
    }
    EXPECT_EQ(LinkLost, 1);
    plug();
    connect(Identity4);
}

}  // namespace
