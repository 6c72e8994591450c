// The parameter cells of one controller. Cells are numbered alike in both generations; family 4 has each of them one
// number higher on the wire.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace simulator {

enum Cell : int {
    Options = 5,
    LambdaType,
    LambdaPoint,
    LambdaDelay,
    EmulType,
    EmulBJ_TimeHi,
    EmulBJ_TimeLo,
    ZAM_OTW_BJ,
    ZAM_OTW_DO,
    InjectDelay,
    LPGOnTemp,
    AttMax,
    AttMin,
    AttInit,
    TPSJump,
    AttJump,
    LPGOnRPMLo,
    LPGOnRPMHi,
    IgnitionType,
    CutOffRPMLo,
    CutOffRPMHi,
    CutOffSteps,
    LPGOffRPMLo,
    LPGOffRPMHi,
    TPSInert,
    CommandCell,
    AttMax_BJ,
    AttMin_BJ,
    Prog1,  // family 2 keeps the valve opening time here
    Prog2,
    Prog3,
    Prog4,
    WOZG,
    HoursLo,
    HoursHi,
    DateLo,
    DateHi,
    Registration,  // seven characters
    Minutes = 49,
};
constexpr int FirstCell = Options;
constexpr int LastCell = Minutes;
constexpr int LastCellOfFamily2 = Prog1;
static_assert(CommandCell == 30 && WOZG == 37 && Registration + 7 == Minutes);

// Bits of the Options cell.
constexpr std::uint8_t GasSensorPlain = 0x01;  // the sensor type without thresholds
constexpr std::uint8_t TemperatureMatters = 0x02;
constexpr std::uint8_t BaseFollows = 0x04;  // the base position is the controller's own business
constexpr std::uint8_t JumpOn = 0x08;
constexpr std::uint8_t SwitchWhenRising = 0x10;
constexpr std::uint8_t CutOffOn = 0x20;
constexpr std::uint8_t LimitOn = 0x40;
constexpr std::uint8_t GasSensorOther = 0x80;

// Bits of the EmulType cell.
constexpr std::uint8_t EmergencyStart = 0x08;
constexpr std::uint8_t LongStatus = 0x80;

class Cells {
public:
    Cells(int family, int firmware);

    // The cell that a wire number means; nothing where this family has none.
    std::optional<int> fromWire(std::uint8_t number) const;
    bool has(int cell) const;

    // Cells that the family lacks read 0 and take nothing. The command cell stores nothing.
    std::uint8_t get(int cell) const;
    void set(int cell, std::uint8_t value);
    bool option(std::uint8_t mask) const {
        return (get(Options) & mask) != 0;
    }

    // Engine speed of a period pair whose low byte lies in `low`, in RPM; 0 for a period of 0.
    double rpm(int low) const;

    // The controller's own parameters; what it knows about the car, its hours and its installation stays.
    void restoreFactory();
    void restoreGasThresholds();

    int family() const {
        return ownFamily;
    }
    bool served() const {
        return ownFamily == 2 || ownFamily == 4;
    }

private:
    int ownFamily;
    int ownFirmware;
    std::array<std::uint8_t, LastCell + 1> values{};
};

}  // namespace simulator
