#include "simulator/Simulator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <tuple>

#include "SimulatorSamples.h"

using namespace simulator;

namespace {

Bytes Write(Controller& controller, int wireNumber, int value) {
    Bytes frame{Marker, static_cast<std::uint8_t>(wireNumber), static_cast<std::uint8_t>(value)};
    Seal(frame);
    return controller.exchange(frame);
}

int OnGas(const Controller& controller) {
    return controller.block(2)[8] & 0x01;
}

// Turns the engine by hand.
void Drive(Controller& controller, double rpm, double throttle, double seconds) {
    controller.driver.rpm = rpm;
    controller.driver.throttle = throttle;
    controller.step(seconds);
}

// A warm engine on gas whose mixture has found its neutral point.
void Settle(Controller& controller, double rpm, double throttle) {
    Drive(controller, rpm, throttle, 25);
    ASSERT_TRUE(OnGas(controller));
}

}  // namespace

TEST(Simulator, TellsFamilyAndFirmwareAndNothingElseForAForeignFamily) {
    Config config = Of(2);
    config.firmware = 3;
    EXPECT_EQ(Controller(config).exchange(AskIdentity), Hex("65 00 23 88"));
    Controller foreign(Of(7));
    EXPECT_EQ(foreign.exchange(AskIdentity), Hex("65 00 C5 2A"));
    EXPECT_EQ(foreign.exchange(AskLive), Bytes());
    EXPECT_EQ(Write(foreign, 7, 7), Bytes());
}

TEST(Simulator, WritesEveryCellAndReadsItBackInItsBlockByte) {
    Controller second(Of(2));
    Controller fourth(Of(4));
    for (int cell = 5; cell <= 49; ++cell) {
        if (cell == 30) {
            continue;
        }
        Bytes echo{0x65, static_cast<std::uint8_t>(cell), static_cast<std::uint8_t>(0x65 + cell)};
        EXPECT_EQ(Write(second, cell, cell), cell <= 33 ? echo : Bytes()) << cell;
        EXPECT_EQ(Write(fourth, cell + 1, cell), echo) << cell;
    }
    EXPECT_EQ(second.exchange(Hex("65 03 03 6B")), Hex("65 05 06 07 08 09 0A 0B 0C 0D 0E 0F 1D 21 11"));
    EXPECT_EQ(fourth.exchange(Hex("65 03 03 6B")), Hex("65 05 06 07 08 09 0A 0B 25 00 0E 0F 1D FC"));
    Bytes blockB = Hex("65 10 11 13 14 15 16 17 18 19 1A 1B 1C 1F 20 B0");
    EXPECT_EQ(second.exchange(Hex("65 04 04 6D")), blockB);
    EXPECT_EQ(fourth.exchange(Hex("65 04 04 6D")), blockB);
    EXPECT_EQ(fourth.exchange(Hex("65 05 05 6F")),
              Hex("65 21 22 23 24 04 0C 0D 31 26 27 28 29 2A 2B 2C 2D 2E 2F 30 16"));
    EXPECT_EQ(fourth.exchange(AskLive)[4], 18);
    EXPECT_EQ(fourth.exchange(AskLive).size(), 11U);
}

TEST(Simulator, IgnoresBadRequestsAndFindsTheNextGoodOne) {
    Controller controller(Of(4));
    Bytes identity = controller.block(1);
    std::uint8_t options = controller.cells.get(Options);
    // A wrong sum, neither read nor cell, beyond the last cell.
    for (const char* bad : {"65 06 01 6D", "65 01 02 68", "65 33 01 99"}) {
        EXPECT_EQ(controller.exchange(Hex(bad)), Bytes()) << bad;
    }
    EXPECT_EQ(controller.cells.get(Options), options);
    EXPECT_EQ(controller.exchange(Hex("00 FF 01 65 01 01 67")), identity);
    EXPECT_EQ(controller.exchange(Hex("65 01 65 01 01 67")), identity);
    EXPECT_EQ(controller.exchange(Hex("65 01 01 67 65 01 01 67")).size(), 8U);

    Bytes start = Hex("65 01");
    EXPECT_TRUE(controller.receive(start, 100).empty());
    EXPECT_EQ(controller.receive(AskIdentity, 100.03).at(0).reply, identity) << "after a pause a new request begins";
    EXPECT_TRUE(controller.receive(start, 101).empty());
    EXPECT_FALSE(controller.receive(AskIdentity, 101.005).at(0).request.good);
}

TEST(Simulator, ResetsRestoreFactoryValuesAndLeaveTheInstallationAlone) {
    for (int family : {2, 4}) {
        Controller fresh(Of(family));
        Controller controller(Of(family));
        int offset = family == 4 ? 1 : 0;
        for (int cell = 5; cell <= 37; ++cell) {
            if (cell != 30) {
                Write(controller, cell + offset, 1);
            }
        }
        Write(controller, 42 + offset, 'Z');
        Write(controller, 30 + offset, 52);
        EXPECT_EQ(controller.cells.get(Prog1), family == 4 ? 40 : 1);
        EXPECT_EQ(controller.cells.get(AttMax), 1) << "the thresholds alone";
        EXPECT_EQ(Write(controller, 30 + offset, 51), Hex("65 33 98"));
        for (int command : {3, 4}) {
            EXPECT_EQ(controller.block(command), fresh.block(command)) << family;
        }
        EXPECT_EQ(controller.cells.get(AttInit), fresh.cells.get(AttInit));
        EXPECT_EQ(controller.cells.get(Registration), family == 4 ? 'Z' : 0);
    }
}

TEST(Simulator, SwitchesToGasWhenSpeedAndTemperatureAllowIt) {
    Controller controller(Of(4, Scenario::Cold));
    Drive(controller, 2600, 20, 5);
    Drive(controller, 1500, 20, 5);
    EXPECT_EQ(controller.block(2)[8] & 0xC1, 0x40) << "fast enough and slow again, but cold";
    controller.engine.heldTemperature = 40;
    controller.step(0.3);
    EXPECT_FALSE(OnGas(controller)) << "within InjectDelay";
    controller.step(0.5);
    EXPECT_EQ(controller.block(2)[8] & 0xC1, 0xC1);
    EXPECT_EQ(controller.block(2)[9], 171);  // 40 degrees

    Controller uncaring(Of(4, Scenario::Cold));
    uncaring.cells.set(Options, 0);
    Drive(uncaring, 2600, 20, 10);
    EXPECT_FALSE(OnGas(uncaring)) << "waits for the speed to fall";
    uncaring.cells.set(Options, SwitchWhenRising);
    uncaring.step(2);
    EXPECT_TRUE(OnGas(uncaring));
}

TEST(Simulator, RunsAColdStartOnPetrolIntoADriveOnGas) {
    Controller controller(Of(4, Scenario::Cycle));
    controller.step(5);
    EXPECT_FALSE(OnGas(controller));
    EXPECT_LT(controller.engine.temperature(), 25);
    int seen = 0;
    int segments = 0;
    for (int i = 0; i < 600; ++i) {
        controller.step(0.1);
        Bytes live = controller.block(2);
        seen |= live[8];
        segments |= live[7] & 0xF0;
        EXPECT_TRUE(std::has_single_bit(static_cast<unsigned>(live[7] & 0xF0)));
        EXPECT_TRUE(std::has_single_bit(static_cast<unsigned>(live[7] & 0x07)));
        EXPECT_EQ(live[10], SumOf(std::span(live).first(10)));
    }
    EXPECT_EQ(seen, 0xCD);  // gas, over the limit, cut-off, both conditions
    EXPECT_EQ(segments, 0xF0);
}

TEST(Simulator, CutsOffAndLeavesGasByItsParameters) {
    Controller controller(Of(2));
    Settle(controller, 3000, 0);
    EXPECT_EQ(controller.block(2)[8] & 0x0D, 0x09);
    EXPECT_EQ(controller.block(2)[3], 55);  // half of the base position 110
    const auto without = [&](int option, double rpm) {
        controller.cells.set(Options, controller.cells.get(Options) & ~option);
        Drive(controller, rpm, 0, 5);
        return controller.block(2)[8] & 0x0D;
    };
    EXPECT_EQ(without(CutOffOn, 3000), 0x01);
    EXPECT_EQ(without(CutOffOn, 7000), 0x04);
    EXPECT_EQ(without(LimitOn, 7000), 0x01);
}

TEST(Simulator, KeepsTheActuatorInItsRangeAndJumpsByThrottle) {
    Controller controller(Of(4, Scenario::Cruise));
    Settle(controller, 2500, 22);
    EXPECT_GT(controller.block(2)[3], 115);
    controller.cells.set(AttMax, 3);
    controller.step(1);
    EXPECT_EQ(controller.block(2)[3], 113);
    Drive(controller, 900, 0, 5);
    EXPECT_GT(controller.block(2)[3], 113) << "at idle the other pair holds";
    for (const auto& [family, position] : {std::pair{4, 110 + 55}, {2, 180}}) {
        Controller jumping(Of(family, Scenario::Cruise));
        Settle(jumping, 2500, 80);  // 3.7 V, above the 3.0 V of TPSJump
        jumping.cells.set(Options, jumping.cells.get(Options) | JumpOn);
        jumping.step(3);
        EXPECT_EQ(jumping.block(2)[3], position);
        jumping.cells.set(LambdaType, 1);
        jumping.cells.set(TPSJump, 20);  // mirrored: 4.6 V
        jumping.step(3);
        EXPECT_LT(jumping.block(2)[3], position);
    }
}

TEST(Simulator, SwingsLambdaAroundThePointOfEachSensor) {
    // The raw signal at the point is the neutral one.
    for (const auto& [type, point, neutral] : {std::tuple{0, 25, 26}, {1, 125, 128}, {4, 125, 128}, {5, 60, 61}}) {
        Controller controller(Of(4, Scenario::Cruise));
        controller.cells.set(LambdaType, static_cast<std::uint8_t>(type << 4));
        controller.cells.set(LambdaPoint, static_cast<std::uint8_t>(point));
        Settle(controller, 2500, 22);
        int crossings = 0;
        bool above = false;
        for (int i = 0; i < 200; ++i) {
            controller.step(0.1);
            bool now = controller.block(2)[2] > neutral;
            crossings += now != above;
            above = now;
        }
        EXPECT_TRUE(crossings > 12 && crossings < 60) << type << ": " << crossings;
    }
}

TEST(Simulator, LearnsTheBasePositionWithThrottleOnGas) {
    Controller controller(Of(4, Scenario::Cruise));
    controller.gas.choice = FuelChoice::Petrol;
    controller.step(1);
    EXPECT_EQ(Write(controller, 31, 50), Hex("65 32 97"));
    auto running = [&] { return (controller.block(2)[8] & 0x02) != 0; };
    auto result = [&] { return controller.block(2)[8] & 0x30; };
    auto secondsToTheEnd = [&] {
        int tenths = 0;
        for (; tenths < 300 && running(); ++tenths) {
            controller.step(0.1);
        }
        return tenths * 0.1;
    };
    EXPECT_FALSE(running()) << "not on petrol";

    controller.gas.choice = FuelChoice::Auto;
    controller.step(15);
    Write(controller, 31, 50);
    EXPECT_TRUE(running());
    EXPECT_LT(secondsToTheEnd(), LearnLimitSeconds);
    EXPECT_EQ(result(), 0x10);
    EXPECT_GT(controller.block(2)[4], 115);

    Write(controller, 31, 50);
    Write(controller, 31, 50);
    EXPECT_FALSE(running()) << "the same command stops it";

    Drive(controller, 900, 0, 3);
    Write(controller, 31, 50);
    EXPECT_GT(secondsToTheEnd(), LearnLimitSeconds - 1);
    EXPECT_EQ(result(), 0x00) << "nothing was learnt at idle";

    Drive(controller, 900, 30, 3);
    Write(controller, 31, 50);
    controller.step(2);
    controller.driver.throttle = 0;
    secondsToTheEnd();
    EXPECT_EQ(result(), 0x30) << "too little was";
}

TEST(Simulator, CountsGasAndItsTime) {
    Controller controller(Of(4, Scenario::Cruise));
    controller.cells.set(Minutes, 59);
    controller.cells.set(HoursLo, 255);
    controller.cells.set(HoursHi, 0);
    double tank = controller.gas.tank;
    controller.step(62);
    Bytes block = controller.block(5);
    EXPECT_TRUE(block[8] == 0 && block[9] == 0 && block[10] == 1);
    EXPECT_LT(controller.gas.tank, tank);
    controller.gas.tank = 0.4;  // a signal of 102, between the second and the third threshold
    EXPECT_EQ(controller.block(5)[5], 2);
    controller.cells.set(Prog3, 100);
    EXPECT_EQ(controller.block(5)[5], 3);
}

TEST(Simulator, RepeatsARunBySeedWhateverTheSteps) {
    Config config = Of(4, Scenario::Cycle);
    Controller first(config);
    Controller second(config);
    config.seed = 2;
    Controller other(config);
    bool differs = false;
    for (int i = 0; i < 100; ++i) {
        first.step(0.5);
        second.step(0.25);
        second.step(0.25);
        other.step(0.5);
        EXPECT_EQ(first.block(2), second.block(2)) << i;
        differs = differs || first.block(2) != other.block(2);
    }
    EXPECT_TRUE(differs);
}

TEST(Simulator, RampsEveryLiveByteByItsRule) {
    Controller controller(Of(4, Scenario::Ramp));
    EXPECT_EQ(controller.exchange(AskLive), Hex("65 00 20 40 60 FF FF 19 00 80 BC"));
    controller.step(2.0);  // n = 20: 1000 RPM, period 15000
    EXPECT_EQ(controller.exchange(AskLive), Hex("65 14 34 54 74 98 3A 4C 14 94 3B"));
    controller.overrideLive(8, 0x81);
    EXPECT_EQ(controller.block(2)[8], 0x81);
}

TEST(Simulator, FaultsDoWhatTheySay) {
    const Bytes reply = Hex("65 32 97");
    auto spoil = [&](const char* text, bool isWrite = true) {
        return Faults(7, {*ParseFault(text)}).send(reply, isWrite);
    };
    auto values = [](const Transmission& sent) {
        Bytes bytes(sent.bytes.size());
        std::ranges::transform(sent.bytes, bytes.begin(), &TimedByte::value);
        return bytes;
    };
    EXPECT_EQ(spoil("lost-byte").bytes.size(), 2U);
    EXPECT_EQ(spoil("garbage").bytes.size(), 3U);
    EXPECT_NE(values(spoil("garbage"))[0], Marker);
    EXPECT_EQ(values(spoil("split")), reply);
    Bytes flipped = values(spoil("flipped-bit"));
    int bits = 0;
    for (std::size_t i = 0; i < reply.size(); ++i) {
        bits += std::popcount(static_cast<unsigned>(flipped.at(i) ^ reply[i]));
    }
    EXPECT_EQ(bits, 1);
    Bytes echo = values(spoil("wrong-echo"));
    EXPECT_NE(echo[1], reply[1]);
    EXPECT_EQ(echo[2], SumOf(std::span(echo).first(2)));
    EXPECT_EQ(values(spoil("wrong-echo", false)), reply);

    Faults twice(1, {*ParseFault("silence=2")});
    for (bool silent : {true, true, false}) {
        EXPECT_EQ(twice.send(reply, false).bytes.empty(), silent);
    }
    Faults often(1, {*ParseFault("silence=0.25")});
    int lost = 0;
    for (int i = 0; i < 1000; ++i) {
        lost += often.send(reply, false).bytes.empty();
    }
    EXPECT_NEAR(lost, 250, 50);
    for (const char* wrong : {"", "quiet", "silence=", "silence=0", "silence=1.5", "silence=3x"}) {
        EXPECT_FALSE(ParseFault(wrong)) << wrong;
    }
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
    check(true, "doubled=1", Hex("65 01 01 67 65 1E 34 B7"),
          {5208, 6250, 7292, 8333, 9375, 10417, 11458, 12500, 13542, 14583, 15625});
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
    std::size_t observed = 0;
    line.observe([&](const LogEntry& entry) { observed += entry.reply.size(); });
    line.take(Hex("65 01 01 67 65 02 02 69 65 13 07"), 1);
    line.cut();
    EXPECT_TRUE(line.nextByte() == Never && line.hangUp() == Never && line.bytesToCome() == 0);
    line.take(Hex("65 13 07 7F 65 13 08 00"), 1.001);
    EXPECT_NEAR(line.nextByte(), 1.001 + 5 * ByteSeconds, 1e-9) << "nothing before it is on the line";
    EXPECT_EQ(observed, 2U + 11U + 3U);
    const Log& log = line.log;
    ASSERT_EQ(log.size(), 4U);
    EXPECT_TRUE(log[0].request.good && !log[0].isWrite && log[0].seconds == 1);
    EXPECT_EQ(log[0].reply, Hex("65 00"));
    EXPECT_TRUE(log[2].isWrite && log[2].seconds == 1.001 && log[2].reply == Hex("65 07 6C"));
    EXPECT_TRUE(!log[3].request.good && log[3].reply.empty());
    for (std::size_t frame = 0; frame < Responder::LogLimit; ++frame) {
        line.take(AskIdentity, 2);
    }
    EXPECT_TRUE(log.size() == Responder::LogLimit && log[0].seconds == 2);

    for (const auto& [runs, moment, byte] : {std::tuple{true, 2.0, 20}, {true, 60.0, 50}, {false, 2.0, 0}}) {
        config.clockRuns = runs;
        Responder engine(config);
        engine.advance(moment);
        EXPECT_EQ(engine.controller.block(2)[1], byte) << moment;
    }
}
