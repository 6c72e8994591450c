#include "model/Choices.h"

#include <array>
#include <cstddef>

#include "model/Blocks.h"
#include "model/Cells.h"
#include "model/Codecs.h"
#include "model/Text.h"
#include "shell/AppState.h"

namespace {

int Plain(unsigned raw) {
    return static_cast<int>(raw);
}

unsigned PlainRaw(int quantity) {
    return static_cast<unsigned>(quantity);
}

// A reversed throttle sensor counts from 250, its 5 V, downwards.
constexpr int ReversedTop = 250;

int Reversed(unsigned raw) {
    return ReversedTop - static_cast<int>(raw);
}

unsigned ReversedRaw(int quantity) {
    return static_cast<unsigned>(ReversedTop - quantity);
}

int Speed(unsigned raw) {
    return static_cast<int>(PeriodToRPM(HighByte(raw), LowByte(raw)));
}

unsigned SpeedRaw(int quantity) {
    return RPMToPeriod(static_cast<unsigned>(quantity));
}

unsigned TemperatureRaw(int quantity) {
    return TemperatureToRaw(quantity);
}

constexpr int FirstIgnitionLine = 64;

using N = ChoiceName;

// name, entries, first, step, raw to quantity, quantity to raw, format, text first, text step, unit, two cells
constexpr std::array ChoiceRows{
    Choice{N::LambdaPoint01, 11, 20, 1, Plain, PlainRaw, "0,%ld", 40, 2, 1, false},
    Choice{N::LambdaPoint16, 16, 50, 1, Plain, PlainRaw, "1,%02ld", 0, 2, 1, false},
    Choice{N::LambdaPoint5, 51, 100, 1, Plain, PlainRaw, "%ld:%02ld", 200, 2, 100, false},
    Choice{N::LambdaDelay, 255, 1, 1, Plain, PlainRaw, "%ld:%02ld", 5, 5, 60, false},
    Choice{N::EmulationTime, 255, 1, 1, Plain, PlainRaw, "%ld,%03ld", 25, 25, 1000, false},
    Choice{N::TenthSeconds, 50, 1, 1, Plain, PlainRaw, "%ld,%ld", 1, 1, 10, false},
    Choice{N::TPSInert, 19, 1, 1, Plain, PlainRaw, "%ld,%02ld", 4, 2, 100, false},
    Choice{N::IgnitionType, 18, 1, 1, Plain, PlainRaw, nullptr, FirstIgnitionLine, 1, 1, false},
    Choice{N::LPGOnRPM, 21, 1500, 100, Speed, SpeedRaw, "%ld", 1500, 100, 1, true},
    Choice{N::CutOffRPM, 16, 1000, 100, Speed, SpeedRaw, "%ld", 1000, 100, 1, true},
    Choice{N::LPGOffRPM, 41, 4000, 100, Speed, SpeedRaw, "%ld", 4000, 100, 1, true},
    Choice{N::AttMax, 256, 0, 1, Plain, PlainRaw, "+%ld", 0, 1, 1, false},
    Choice{N::AttMin, 256, 0, 1, Plain, PlainRaw, "-%ld", 0, 1, 1, false},
    Choice{N::Steps, 256, 0, 1, Plain, PlainRaw, "%ld", 0, 1, 1, false},
    Choice{N::Percent, 50, 2, 2, Plain, PlainRaw, "%ld", 2, 2, 1, false},
    Choice{N::TPSJump, 51, 0, 5, Plain, PlainRaw, "%ld,%ld", 0, 1, 10, false},
    Choice{N::TPSJumpReversed, 51, 0, 5, Reversed, ReversedRaw, "%ld,%ld", 0, 1, 10, false},
    Choice{N::LPGOnTemp, 26, 10, 2, RawToTemperature, TemperatureRaw, "%ld", 10, 2, 1, false},
};

constexpr bool RowsFollowTheNames() {
    for (std::size_t i = 0; i < ChoiceRows.size(); ++i) {
        if (static_cast<std::size_t>(ChoiceRows[i].name) != i) {
            return false;
        }
    }
    return ChoiceRows.size() == static_cast<std::size_t>(ChoiceName::Count);
}
static_assert(RowsFollowTheNames(), "ChoiceOf finds a row by its name");

}  // namespace

const Choice& ChoiceOf(ChoiceName name) {
    return ChoiceRows[static_cast<std::size_t>(name)];
}

const Choice& LambdaPointChoice(int lambdaSensorType) {
    switch (lambdaSensorType) {
        case LambdaSensor::Volts0To1:
            return ChoiceOf(ChoiceName::LambdaPoint01);
        case LambdaSensor::Volts08To16:
            return ChoiceOf(ChoiceName::LambdaPoint16);
        default:
            return ChoiceOf(ChoiceName::LambdaPoint5);
    }
}

const Choice& TPSJumpChoice(int tpsType) {
    return ChoiceOf(tpsType == TpsSensor::Reversed ? ChoiceName::TPSJumpReversed : ChoiceName::TPSJump);
}

const Choice& AttJumpChoice(int family) {
    return ChoiceOf(AttJumpIsPercent(family) ? ChoiceName::Percent : ChoiceName::Steps);
}

unsigned StoredRaw(const Choice& choice, unsigned cell, int family) {
    const unsigned low = CellValue(cell, family);
    return choice.twoCells ? CellValue(cell + 1, family) * 256u + low : low;
}

int EntryOfRaw(const Choice& choice, unsigned raw) {
    const int quantity = choice.toQuantity(raw);
    return quantity < choice.first ? 0 : (quantity - choice.first) / choice.step;
}

unsigned RawOfEntry(const Choice& choice, unsigned entry) {
    return choice.toRaw(choice.first + static_cast<int>(entry) * choice.step);
}

void EntryText(const Choice& choice, unsigned entry, std::span<char> text) {
    const int value = choice.textFirst + static_cast<int>(entry) * choice.textStep;
    if (choice.format == nullptr) {
        CopyText(text, LangTable[static_cast<std::size_t>(value)].data());
        return;
    }
    FormatText(text, choice.format, static_cast<long>(value / choice.unit), static_cast<long>(value % choice.unit));
}
