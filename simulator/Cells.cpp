#include "simulator/Cells.h"

#include <string_view>

namespace simulator {
namespace {

struct FactoryValue {
    int cell;
    int family2;
    int family4;
};

constexpr int Absent = -1;

constexpr int Low(int value) {
    return value & 0xFF;
}

constexpr int High(int value) {
    return value >> 8;
}

// Periods are 15000000 / RPM.
constexpr int Period2000 = 7500;
constexpr int Period1800 = 8333;
constexpr int Period6500 = 2307;

constexpr FactoryValue FactoryValues[] = {
    {Options, TemperatureMatters | CutOffOn | LimitOn, TemperatureMatters | CutOffOn | LimitOn | GasSensorOther},
    {LambdaType, 0x00, 0x00},
    {LambdaPoint, 25, 25},  // 0.50 V
    {LambdaDelay, 2, 2},    // 10 s
    {EmulType, 0x00, 0x00},
    {EmulBJ_TimeHi, 20, 20},  // 0.5 s
    {EmulBJ_TimeLo, 20, 20},
    {ZAM_OTW_BJ, 0xA9, 0xA9},  // all four corrections at zero
    {ZAM_OTW_DO, 0x75, 0x75},
    {InjectDelay, 5, 5},    // 0.5 s
    {LPGOnTemp, 145, 145},  // 30 degrees
    {AttMax, 60, 60},
    {AttMin, 60, 60},
    {AttInit, 110, 110},
    {TPSJump, 150, 150},  // 3.0 V
    {AttJump, 180, 50},   // steps; percent of the base position
    {LPGOnRPMLo, Low(Period2000), Low(Period2000)},
    {LPGOnRPMHi, High(Period2000), High(Period2000)},
    {IgnitionType, 3, 3},
    {CutOffRPMLo, Low(Period1800), Low(Period1800)},
    {CutOffRPMHi, High(Period1800), High(Period1800)},
    {CutOffSteps, 50, 50},
    {LPGOffRPMLo, Low(Period6500), Low(Period6500)},
    {LPGOffRPMHi, High(Period6500), High(Period6500)},
    {TPSInert, 9, 9},  // 0.20 V
    {AttMax_BJ, 30, 30},
    {AttMin_BJ, 30, 30},
    {Prog1, 5, 40},  // valve opening of 0.5 s; first threshold
    {Prog2, Absent, 90},
    {Prog3, Absent, 150},
    {Prog4, Absent, 210},
    {WOZG, Absent, 5},  // 0.5 s
};

}  // namespace

Cells::Cells(int family, int firmware) : ownFamily(family), ownFirmware(firmware) {
    restoreFactory();
    constexpr int hoursOnGas = 307;
    set(HoursLo, Low(hoursOnGas));
    set(HoursHi, High(hoursOnGas));
    set(Minutes, 41);
    // 15 September 2019: day and month count from 0, the month's fourth bit lies on top of the year.
    set(DateLo, 14);
    set(DateHi, 0x80 | 19);
    int cell = Registration;
    for (char letter : std::string_view("KR4512A")) {
        set(cell++, static_cast<std::uint8_t>(letter));
    }
}

std::optional<int> Cells::fromWire(std::uint8_t number) const {
    int cell = ownFamily == 4 ? number - 1 : number;
    return has(cell) ? std::optional(cell) : std::nullopt;
}

bool Cells::has(int cell) const {
    return served() && cell >= FirstCell && cell <= (ownFamily == 4 ? LastCell : LastCellOfFamily2);
}

std::uint8_t Cells::get(int cell) const {
    return has(cell) ? values[static_cast<std::size_t>(cell)] : std::uint8_t{0};
}

void Cells::set(int cell, std::uint8_t value) {
    if (has(cell) && cell != CommandCell) {
        values[static_cast<std::size_t>(cell)] = value;
    }
}

double Cells::rpm(int low) const {
    int period = get(low) | get(low + 1) << 8;
    return period == 0 ? 0.0 : 15000000.0 / period;
}

void Cells::restoreFactory() {
    for (const FactoryValue& row : FactoryValues) {
        int value = ownFamily == 2 ? row.family2 : row.family4;
        if (value != Absent) {
            set(row.cell, static_cast<std::uint8_t>(value));
        }
    }
    if (ownFirmware >= 2) {
        set(EmulType, get(EmulType) | LongStatus);
    }
}

void Cells::restoreGasThresholds() {
    for (const FactoryValue& row : FactoryValues) {
        if (ownFamily == 4 && row.cell >= Prog1 && row.cell <= Prog4) {
            set(row.cell, static_cast<std::uint8_t>(row.family4));
        }
    }
}

}  // namespace simulator
