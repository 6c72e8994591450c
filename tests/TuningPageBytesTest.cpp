// The Configuration and the Options page byte by byte: what each entry sends, and what each byte of a block shows.
#include <QTimer>
#include <algorithm>
#include <string>
#include <vector>

#include "TuningPages.h"
#include "tuning/ConfigurationPage.h"
#include "tuning/OptionsPage.h"
#include "tuning/TuningState.h"

namespace {

using Values = std::vector<unsigned>;

const std::string Poll = "65 01 01 67, 65 02 02 69, 65 03 03 6B, 65 04 04 6D";

// What every entry of a control writes, from the first on; of a box without and with its tick. Of a value of 16 bits
// the low byte goes to the cell, then the high one to the next cell. With a mask the other bits of the byte must stay.
struct Entries {
    int id;
    int cell;
    Values values;
    bool twoCells = false;
    unsigned mask = 0;
    std::vector<std::pair<int, std::uint8_t>> held = {};  // cells of the controller before
};

Values from(int first, int last, int step = 1) {
    Values values;
    for (int value = first; value != last + step; value += step) {
        values.push_back(static_cast<unsigned>(value));
    }
    return values;
}

std::vector<Entries> configurationEntries(int family) {
    const Values switchOver = {10000, 9375, 8823, 8333, 7894, 7500, 7142, 6818, 6521, 6250, 6000,
                               5769,  5555, 5357, 5172, 5000, 4838, 4687, 4545, 4411, 4285};
    std::vector<Entries> all = {
        // The point that goes with the sensor follows in the next cell.
        {1003, 6, {0x1600, 0x7F10, 0x7F20, 0x7F30, 0x7F40, 0x3C50}, true, 0xF0},
        {1013, 7, from(20, 30), false, 0, {{6, 0x0F}}},
        {1013, 7, from(50, 65), false, 0, {{6, 0x50}}},
        {1013, 7, from(100, 150), false, 0, {{6, 0x10}}},
        {1017, 8, from(1, 255)},
        {1018, 9, {0, 1, 2}, false, 0x03},
        {1019, 10, from(1, 255)},
        {1020, 11, from(1, 255)},
        {1021, 23, from(1, 18)},
        {1022, 21, switchOver, true},
        {1023, 5, {0x00, 0x10}, false, 0x10},
        {1024, 6, {0, 1, 2, 6, 7, 8}, false, 0x0F},
        {1025, 29, from(1, 19)},
        {1026, 14, from(1, 50)},
        {1149, family == 4 ? 37 : 33, from(1, 50)},
        {1074, 9, {0x00, 0x08}, false, 0x08},
    };
    if (family == 4) {
        all.push_back({1140, 9, {0x00, 0x04}, false, 0x04});
    }
    return all;
}

std::vector<Entries> optionsEntries(int family, int firmware) {
    const Values cutOff = {15000, 13636, 12500, 11538, 10714, 10000, 9375, 8823,
                           8333,  7894,  7500,  7142,  6818,  6521,  6250, 6000};
    const Values gasOff = {3750, 3658, 3571, 3488, 3409, 3333, 3260, 3191, 3125, 3061, 3000, 2941, 2884, 2830,
                           2777, 2727, 2678, 2631, 2586, 2542, 2500, 2459, 2419, 2380, 2343, 2307, 2272, 2238,
                           2205, 2173, 2142, 2112, 2083, 2054, 2027, 2000, 1973, 1948, 1923, 1898, 1875};
    const Values temperatures = {94,  99,  104, 109, 114, 120, 125, 130, 135, 140, 145, 151, 156,
                                 161, 166, 171, 176, 182, 187, 192, 197, 201, 202, 204, 206, 208};
    std::vector<Entries> all = {
        {1003, 18, from(0, 255)},
        {1013, 32, from(0, 255)},
        {1043, 31, from(0, 255)},
        {1044, 17, from(0, 255)},
        {1045, 16, from(0, 255)},
        {1046, 20, family == 4 ? from(2, 100, 2) : from(0, 255)},
        {1047, 19, from(0, 250, 5), false, 0, {{6, 0x50}}},
        {1047, 19, from(250, 0, -5), false, 0, {{6, 0x51}}},
        {1048, 24, cutOff, true},
        {1049, 26, from(2, 100, 2)},
        {1050, 27, gasOff, true},
        {1051, 15, temperatures},
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

std::string frames(int family, const Entries& row, unsigned value) {
    std::string all;
    for (int next = 0; next <= (row.twoCells ? 1 : 0); ++next) {
        const auto cell = static_cast<std::uint8_t>(row.cell + next + (family == 4 ? 1 : 0));
        const auto byte = static_cast<std::uint8_t>(next ? value >> 8 : value);
        all += (next ? ", " : "") + hex({0x65, cell, byte, static_cast<std::uint8_t>(0x65 + cell + byte)});
    }
    return all;
}

// What a byte selects in a list of values at equal distances: nothing above the list, the first entry below it.
using EntryOfByte = std::function<int(int)>;

EntryOfByte inSteps(int first, int step, int count) {
    return [=](int byte) {
        const int entry = byte < first ? 0 : (byte - first) / step;
        return entry < count ? entry : -1;
    };
}

EntryOfByte inBits(int lowest, int mask, int count) {
    return [=](int byte) {
        const int entry = byte >> lowest & mask;
        return entry < count ? entry : -1;
    };
}

EntryOfByte whileClear(int bit) {
    return [=](int byte) { return (byte >> bit & 1) == 0; };
}

constexpr int TpsEntries[] = {0, 1, 2, 2, 2, 2, 3, 4, 5, 5, 5, 5, 5, 5, 5, 5};

struct Shown {
    BYTE* byte;
    int id;
    EntryOfByte entry;
    int family = 0;  // 0 for both
};

const std::vector<Shown> OnConfiguration = {
    {A + 1, 1023, inBits(4, 1, 2)},
    {A + 2, 1003, inBits(4, 15, 6)},
    {A + 2, 1024, [](int byte) { return TpsEntries[byte & 15]; }},
    {A + 3, 1013, inSteps(20, 1, 11)},
    {A + 4, 1017, inSteps(1, 1, 255)},
    {A + 5, 1018, inBits(0, 3, 3)},
    {A + 5, 1074, inBits(3, 1, 2)},
    {A + 5, 1140, inBits(2, 1, 2), 4},
    {A + 6, 1019, inSteps(1, 1, 255)},
    {A + 7, 1020, inSteps(1, 1, 255)},
    {A + 8, 1149, inSteps(1, 1, 50), 4},
    {A + 13, 1149, inSteps(1, 1, 50), 2},
    {A + 10, 1026, inSteps(1, 1, 50)},
    {A + 12, 1025, inSteps(1, 1, 19)},
    {B + 7, 1021, inSteps(1, 1, 18)},
};

const std::vector<Shown> OnOptions = {
    {L + 4, 1003, inSteps(0, 1, 256)}, {B + 1, 1045, inSteps(0, 1, 256)},   {B + 2, 1044, inSteps(0, 1, 256)},
    {B + 3, 1047, inSteps(0, 5, 51)},  {B + 4, 1046, inSteps(2, 2, 50), 4}, {B + 4, 1046, inSteps(0, 1, 256), 2},
    {B + 10, 1049, inSteps(2, 2, 50)}, {B + 13, 1043, inSteps(0, 1, 256)},  {B + 14, 1013, inSteps(0, 1, 256)},
    {A + 1, 1034, whileClear(2)},      {A + 1, 1039, inBits(3, 1, 2)},      {A + 1, 1040, inBits(5, 1, 2)},
    {A + 1, 1041, inBits(6, 1, 2)},    {A + 1, 1042, inBits(1, 1, 2)},      {A + 5, 1052, inBits(4, 3, 3)},
    {A + 5, 1207, whileClear(6), 4},
};

}  // namespace

class TuningPageBytes : public TuningPages {
protected:
    // Chooses the entry while all bits outside the mask are as in `others`.
    void expectEntry(int family, const Entries& row, unsigned entry, std::uint8_t others) {
        if (row.mask != 0) {
            setCell(row.cell, others);
        }
        tick();
        server->clearLog();
        const unsigned value = row.values[entry] | (row.mask == 0 ? 0 : others & ~row.mask);
        if (row.id == 1018 && entry == 0) {
            run({{"choice", always, [=] { QTimer::singleShot(0, [=] { pick(1018, entry); }); }},
                 {"dialog", dialogShown, [] { press(Qt::Key_Escape); }}});
            stopTimer();
            ASSERT_EQ(written(), frames(family, row, value)) << "over the dialog of the emulation";
            server->clearLog();
        } else {
            pick(row.id, entry);
            ASSERT_EQ(sent(), frames(family, row, value)) << row.id << " entry " << entry;
        }
        select(row.id, isList(row.id) ? -1 : 1 - static_cast<int>(entry));
        tick();
        ASSERT_EQ(sent(), Poll);
        ASSERT_EQ(selected(row.id), static_cast<int>(entry)) << row.id;
    }
    static void refresh(UINT page) {
        page == IDM_OPTIONS ? RefreshOptionsPage() : RefreshConfigurationPage();
    }
};

TEST_F(TuningPageBytes, EntriesSendTheirBytes) {
    for (const auto& [family, firmware, page] : {std::tuple{2, 9, IDM_CONFIGURATION},
                                                 {2, 9, IDM_OPTIONS},
                                                 {4, 4, IDM_CONFIGURATION},
                                                 {4, 4, IDM_OPTIONS},
                                                 {4, 5, IDM_CONFIGURATION},
                                                 {4, 5, IDM_OPTIONS}}) {
        SCOPED_TRACE(family);
        connect(family, firmware, page);
        for (const Entries& row :
             page == IDM_OPTIONS ? optionsEntries(family, firmware) : configurationEntries(family)) {
            for (const auto& [cell, byte] : row.held) {
                setCell(cell, byte);
            }
            tick();
            if (isList(row.id)) {
                EXPECT_EQ(entriesOf(row.id), static_cast<int>(row.values.size())) << row.id;
            }
            for (unsigned entry = 0; entry < row.values.size(); ++entry) {
                expectEntry(family, row, entry, 0x00);
                if (row.mask != 0) {
                    expectEntry(family, row, entry, 0xFF);
                }
                ASSERT_FALSE(HasFatalFailure());
            }
        }
        closeProgram();
        server.reset();
    }
}

TEST_F(TuningPageBytes, EveryByteOfTheBlocksIsShownAndSendsNothing) {
    connect(4, 5, IDM_CONFIGURATION);
    std::vector<BYTE*> places = {L + 4};
    for (size_t at = 0; at < ParamBlockB.size(); ++at) {
        places.insert(places.end(), {B + at, A + std::min(at, ParamBlockA.size() - 1)});
    }
    for (const auto& [page, family] :
         {std::pair{IDM_CONFIGURATION, 2}, {IDM_OPTIONS, 2}, {IDM_CONFIGURATION, 4}, {IDM_OPTIONS, 4}}) {
        SCOPED_TRACE(family);
        open(page);
        ControllerFamily = family;
        LastByteCount = 99;
        const Ids all = controls();
        for (BYTE* const place : places) {
            clearMirrors();
            for (int byte = 0; byte < 256; ++byte) {
                *place = static_cast<BYTE>(byte);
                refresh(page);
                for (const Shown& row : page == IDM_OPTIONS ? OnOptions : OnConfiguration) {
                    if (row.byte == place && (row.family == 0 || row.family == family)) {
                        ASSERT_EQ(selected(row.id), row.entry(byte)) << row.id << " at " << byte;
                    }
                }
                for (const int id : all) {
                    ASSERT_TRUE(!isList(id) || selected(id) < entriesOf(id)) << id << " at " << byte;
                }
            }
        }
        clearMirrors();
        EXPECT_EQ(sent(), "");
        EXPECT_EQ(LastByteCount, 99u);
        EXPECT_EQ(ComboOpen + TuningDialogOpen + CorrectionsDialogOpen, 0);
    }
}

TEST_F(TuningPageBytes, ValuesThatDependOnASecondByteAreShown) {
    struct Row {
        int id;
        int entry;
        BYTE* low;  // of the byte or the two bytes of the value
        int value;
        int sensor = 0;
    };
    const std::vector<Row> configuration = {
        {1013, -1, A + 3, 200},      {1013, 0, A + 3, 49, 0x50},   {1013, 15, A + 3, 65, 0x50},
        {1013, -1, A + 3, 66, 0x50}, {1013, 50, A + 3, 150, 0x40}, {1013, -1, A + 3, 151, 0xF0},
        {1022, 20, B + 5, 4225},     {1022, 0, B + 5, 0},          {1022, 0, B + 5, 65535},
        {1022, 6, B + 5, 7000},      {1022, -1, B + 5, 4166},
    };
    const std::vector<Row> options = {
        {1047, 0, B + 3, 250, 0x01}, {1047, 50, B + 3, 0, 0x01}, {1047, 0, B + 3, 255, 0x01}, {1048, 15, B + 8, 5882},
        {1048, -1, B + 8, 5769},     {1050, 40, B + 11, 1863},   {1050, -1, B + 11, 1851},    {1050, -1, B + 11, 1},
        {1051, 0, A + 11, 96},       {1051, 1, A + 11, 99},      {1051, 0, A + 11, 0},        {1051, -1, A + 11, 255},
        {1051, 25, A + 11, 209},     {1051, -1, A + 11, 210},
    };
    connect(2, 9, IDM_CONFIGURATION);
    for (const UINT page : {IDM_CONFIGURATION, IDM_OPTIONS}) {
        open(page);
        for (const Row& row : page == IDM_OPTIONS ? options : configuration) {
            clearMirrors();
            A[2] = static_cast<BYTE>(row.sensor);
            row.low[0] = static_cast<BYTE>(row.value);
            row.low[1] = static_cast<BYTE>(row.value >> 8);
            refresh(page);
            EXPECT_EQ(selected(row.id), row.entry) << row.id << " of " << row.value;
        }
        EXPECT_EQ(sent(), "");
    }
}
