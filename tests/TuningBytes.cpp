#include "TuningBytes.h"

namespace {

Values from(int first, int last, int step = 1) {
    Values values;
    for (int value = first; value != last + step; value += step) {
        values.push_back(static_cast<unsigned>(value));
    }
    return values;
}

// Of 15000000 per revolution and minute, cut to whole numbers.
Values periods(unsigned firstSpeed, unsigned lastSpeed) {
    Values values;
    for (unsigned speed = firstSpeed; speed <= lastSpeed; speed += 100) {
        values.push_back(15000000 / speed);
    }
    return values;
}

// What a byte selects in a list of values at equal distances: nothing above the list, the first entry below it.
std::function<int(int)> inSteps(int first, int step, int count) {
    return [=](int byte) {
        const int entry = byte < first ? 0 : (byte - first) / step;
        return entry < count ? entry : -1;
    };
}

std::function<int(int)> inBits(int lowest, int mask, int count) {
    return [=](int byte) {
        const int entry = byte >> lowest & mask;
        return entry < count ? entry : -1;
    };
}

std::function<int(int)> whileClear(int bit) {
    return [=](int byte) { return (byte >> bit & 1) == 0; };
}

int tpsEntry(int byte) {
    constexpr int entries[] = {0, 1, 2, 2, 2, 2, 3, 4, 5, 5, 5, 5, 5, 5, 5, 5};
    return entries[byte & 15];
}

const BYTE* const A = ParamBlockA.data();
const BYTE* const B = ParamBlockB.data();
const BYTE* const L = LiveBlock.data();

}  // namespace

const std::vector<Shown> OnConfiguration = {
    {A + 1, 1023, inBits(4, 1, 2)},      {A + 2, 1003, inBits(4, 15, 6)},      {A + 3, 1013, inSteps(20, 1, 11)},
    {A + 4, 1017, inSteps(1, 1, 255)},   {A + 5, 1018, inBits(0, 3, 3)},       {A + 5, 1074, inBits(3, 1, 2)},
    {A + 5, 1140, inBits(2, 1, 2), 4},   {A + 6, 1019, inSteps(1, 1, 255)},    {A + 7, 1020, inSteps(1, 1, 255)},
    {A + 8, 1149, inSteps(1, 1, 50), 4}, {A + 13, 1149, inSteps(1, 1, 50), 2}, {A + 10, 1026, inSteps(1, 1, 50)},
    {A + 12, 1025, inSteps(1, 1, 19)},   {B + 7, 1021, inSteps(1, 1, 18)},     {A + 2, 1024, tpsEntry},
};

const std::vector<Shown> OnOptions = {
    {L + 4, 1003, inSteps(0, 1, 256)}, {B + 1, 1045, inSteps(0, 1, 256)},   {B + 2, 1044, inSteps(0, 1, 256)},
    {B + 3, 1047, inSteps(0, 5, 51)},  {B + 4, 1046, inSteps(2, 2, 50), 4}, {B + 4, 1046, inSteps(0, 1, 256), 2},
    {B + 10, 1049, inSteps(2, 2, 50)}, {B + 13, 1043, inSteps(0, 1, 256)},  {B + 14, 1013, inSteps(0, 1, 256)},
    {A + 1, 1039, inBits(3, 1, 2)},    {A + 1, 1040, inBits(5, 1, 2)},      {A + 1, 1041, inBits(6, 1, 2)},
    {A + 1, 1042, inBits(1, 1, 2)},    {A + 5, 1052, inBits(4, 3, 3)},      {A + 1, 1034, whileClear(2)},
    {A + 5, 1207, whileClear(6), 4},
};

std::vector<Entries> configurationEntries(int family) {
    std::vector<Entries> all = {
        {1017, 8, from(1, 255)},
        {1019, 10, from(1, 255)},
        {1020, 11, from(1, 255)},
        {1021, 23, from(1, 18)},
        {1025, 29, from(1, 19)},
        {1026, 14, from(1, 50)},
        {1149, family == 4 ? 37 : 33, from(1, 50)},
        // The point that goes with the sensor follows in the next cell.
        {1003, 6, {0x1600, 0x7F10, 0x7F20, 0x7F30, 0x7F40, 0x3C50}, true, 0xF0},
        {1013, 7, from(20, 30), false, 0, {{6, 0x0F}}},
        {1013, 7, from(50, 65), false, 0, {{6, 0x50}}},
        {1013, 7, from(100, 150), false, 0, {{6, 0x10}}},
        {1018, 9, {0, 1, 2}, false, 0x03},
        {1022, 21, periods(1500, 3500), true},
        {1023, 5, {0x00, 0x10}, false, 0x10},
        {1024, 6, {0, 1, 2, 6, 7, 8}, false, 0x0F},
        {1074, 9, {0x00, 0x08}, false, 0x08},
    };
    if (family == 4) {
        all.push_back({1140, 9, {0x00, 0x04}, false, 0x04});
    }
    return all;
}

std::vector<Entries> optionsEntries(int family, int firmware) {
    const Values temperatures = {94,  99,  104, 109, 114, 120, 125, 130, 135, 140, 145, 151, 156,
                                 161, 166, 171, 176, 182, 187, 192, 197, 201, 202, 204, 206, 208};
    const Values jumps = family == 4 ? from(2, 100, 2) : from(0, 255);
    std::vector<Entries> all = {
        {1003, 18, from(0, 255)},
        {1013, 32, from(0, 255)},
        {1043, 31, from(0, 255)},
        {1044, 17, from(0, 255)},
        {1045, 16, from(0, 255)},
        {1046, 20, jumps},
        {1049, 26, from(2, 100, 2)},
        {1051, 15, temperatures},
        {1047, 19, from(0, 250, 5), false, 0, {{6, 0x50}}},
        {1047, 19, from(250, 0, -5), false, 0, {{6, 0x51}}},
        {1048, 24, periods(1000, 2500), true},
        {1050, 27, periods(4000, 8000), true},
        {1052, 9, {0x00, 0x10, 0x20}, false, 0x30},
        {1034, 5, {0x04, 0x00}, false, 0x04},
        {1039, 5, {0x00, 0x08}, false, 0x08, {{6, 0x01}}},
        {1040, 5, {0x00, 0x20}, false, 0x20},
        {1041, 5, {0x00, 0x40}, false, 0x40},
        {1042, 5, {0x00, 0x02}, false, 0x02},
    };
    if (family == 4 && firmware >= 5) {
        all.push_back({1207, 9, {0x40, 0x00}, false, 0x40});
    }
    return all;
}
