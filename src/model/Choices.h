// The value lists of the tuning pages: for every cell that is set from a list, how many entries it has, which entry a
// raw value selects, what an entry writes and how it reads. A new list is a name in ChoiceName and a row in
// Choices.cpp.
#pragma once

#include <span>

#include "platform/Win32.h"

enum class ChoiceName : BYTE {
    LambdaPoint01,
    LambdaPoint16,
    LambdaPoint5,
    LambdaDelay,
    EmulationTime,
    // InjectDelay, Otwarcie_GAZU and WOZG.
    TenthSeconds,
    TPSInert,
    IgnitionType,
    LPGOnRPM,
    CutOffRPM,
    LPGOffRPM,
    AttMax,
    AttMin,
    // AttInit and, in family 2, AttJump.
    Steps,
    // CutOffSteps and, in family 4, AttJump.
    Percent,
    TPSJump,
    TPSJumpReversed,
    LPGOnTemp,
    Count,
};

// Entry i stands for the quantity first + i * step, and its text for textFirst + i * textStep.
struct Choice {
    ChoiceName name;
    unsigned entries;
    int first;
    int step;
    // Between a raw value, 16 bits wide for the speeds, and the quantity.
    int (*toQuantity)(unsigned raw);
    unsigned (*toRaw)(int quantity);
    // The text's value goes to the format as value / unit and value % unit. Without a format it is a language line.
    const char* format;
    int textFirst;
    int textStep;
    int unit;
    // The raw value takes two cells, low byte in the lower one.
    bool twoCells;
};

const Choice& ChoiceOf(ChoiceName name);

// What the list of a cell depends on.
const Choice& LambdaPointChoice(int lambdaSensorType);
const Choice& TPSJumpChoice(int tpsType);
const Choice& AttJumpChoice(int family);

// The raw value of a cell in the mirrors as last read; both cells of a pair.
unsigned StoredRaw(const Choice& choice, unsigned cell, int family);
// Entry for a raw value: 0 for one below the list, an index past the end for one above it.
int EntryOfRaw(const Choice& choice, unsigned raw);
// Raw value that an entry, 0 to entries - 1, writes.
unsigned RawOfEntry(const Choice& choice, unsigned entry);
// Text of an entry, 0 to entries - 1, cut to the size given.
void EntryText(const Choice& choice, unsigned entry, std::span<char> text);
