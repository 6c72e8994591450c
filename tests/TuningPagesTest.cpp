// The Configuration and the Options page byte by byte: what each entry sends, and what each byte of a block shows.
#include <QAbstractItemModel>
#include <QAbstractItemView>
#include <QComboBox>
#include <QTimer>
#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <vector>

#include "User.h"
#include "link/Link.h"
#include "model/Blocks.h"
#include "resources/Ids.h"
#include "shell/AppState.h"
#include "tuning/ConfigurationPage.h"
#include "tuning/OptionsPage.h"
#include "tuning/TuningState.h"

namespace {

using Ids = std::set<int>;
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

HWND control(int id) {
    return GetDlgItem(PageWindow, id);
}

LRESULT ask(int id, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    return SendMessageA(control(id), message, wParam, lParam);
}

bool isList(int id) {
    return qobject_cast<QComboBox*>(widgetOf(control(id))) != nullptr;
}

void notify(int id, int code) {
    SendMessageA(PageWindow, WM_COMMAND, MAKEWPARAM(id, code), reinterpret_cast<LPARAM>(control(id)));
}

// Without a notification, as the page itself does it.
void select(int id, int entry) {
    ask(id, isList(id) ? CB_SETCURSEL : BM_SETCHECK, static_cast<WPARAM>(entry));
}

int selected(int id) {
    return static_cast<int>(ask(id, isList(id) ? CB_GETCURSEL : BM_GETCHECK));
}

void pick(int id, unsigned entry) {
    select(id, static_cast<int>(entry));
    notify(id, isList(id) ? CBN_SELCHANGE : BN_CLICKED);
}

void tick() {
    SendMessageA(PageWindow, WM_TIMER, 1, 0);
}

void stopTimer() {
    KillTimer(PageWindow, 1);
}

std::string textOf(int id) {
    std::array<char, LangLineSize> text{};
    GetWindowTextA(control(id), text.data(), static_cast<int>(text.size()));
    return text.data();
}

std::string entryOf(int id, int entry) {
    std::array<char, LangLineSize> text{};
    ask(id, CB_GETLBTEXT, static_cast<WPARAM>(entry), reinterpret_cast<LPARAM>(text.data()));
    return text.data();
}

std::string line(int number) {
    return LangTable[static_cast<size_t>(number)].data();
}

// All controls of the page that have an id, or those of which something does not hold.
Ids controls(BOOL (*holds)(HWND) = nullptr) {
    Ids ids;
    for (int id = 1000; id < 1300; ++id) {
        if (control(id) && !(holds && holds(control(id)))) {
            ids.insert(id);
        }
    }
    return ids;
}

Ids joined(std::initializer_list<Ids> parts) {
    Ids all;
    for (const Ids& part : parts) {
        all.insert(part.begin(), part.end());
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

BYTE* const A = ParamBlockA.data();
BYTE* const B = ParamBlockB.data();
BYTE* const L = LiveBlock.data();

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

void clearMirrors() {
    LiveBlock = {};
    ParamBlockA = {};
    ParamBlockB = {};
}

}  // namespace

class TuningPages : public WindowFixture {
protected:
    void plug(int family, int firmware) {
        simulator::Config config;
        config.family = family;
        config.firmware = firmware;
        config.wirePace = false;
        config.clockRuns = false;
        config.scenario = simulator::Scenario::Idle;
        config.portLink = folder / "ports/COM1";
        server = std::make_unique<simulator::Server>(config);
    }
    // Leaves the page at rest: from here on it ticks when told.
    void open(UINT page) {
        SendMessageA(MainWindow, WM_COMMAND, page, 0);
        settle();
        stopTimer();
        tick();
        sent();
    }
    void connect(int family, int firmware, UINT page) {
        plug(family, firmware);
        writeIni(1, "ang");
        start();
        ASSERT_TRUE(pumpUntil([=] { return LinkLost == 0 && ControllerFamily == family; }));
        EXPECT_EQ(FirmwareVersion, firmware);
        open(page);
    }
    // All that the controller was sent since this was last asked.
    std::string sent() const {
        std::string all;
        for (const simulator::LogEntry& entry : server->log()) {
            all += (all.empty() ? "" : ", ") + hex({entry.request.bytes.begin(), entry.request.bytes.end()});
        }
        server->clearLog();
        return all;
    }
    void pickAndClose(int id, unsigned entry) {
        run({{"choice", always, [=] { QTimer::singleShot(0, [=] { pick(id, entry); }); }},
             {"dialog", dialogShown, [] { press(Qt::Key_Escape); }}});
        stopTimer();
    }
    // Chooses the entry while all bits outside the mask are as in `others`.
    void expectEntry(int family, const Entries& row, unsigned entry, std::uint8_t others) {
        if (row.mask != 0) {
            setCell(row.cell, others);
        }
        tick();
        server->clearLog();
        const unsigned value = row.values[entry] | (row.mask == 0 ? 0 : others & ~row.mask);
        if (row.id == 1018 && entry == 0) {
            pickAndClose(row.id, entry);
            ASSERT_EQ(writtenFrames().size(), 1u);
            EXPECT_EQ(hex(writtenFrames()[0]), frames(family, row, value)) << "over the dialog of the emulation";
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
    void expectEntries(int family, int firmware) {
        connect(family, firmware, IDM_CONFIGURATION);
        for (const UINT page : {IDM_CONFIGURATION, IDM_OPTIONS}) {
            open(page);
            const bool options = page == IDM_OPTIONS;
            for (const Entries& row : options ? optionsEntries(family, firmware) : configurationEntries(family)) {
                for (const auto& [cell, byte] : row.held) {
                    setCell(cell, byte);
                }
                tick();
                if (isList(row.id)) {
                    EXPECT_EQ(ask(row.id, CB_GETCOUNT), static_cast<LRESULT>(row.values.size())) << row.id;
                }
                for (unsigned entry = 0; entry < row.values.size(); ++entry) {
                    expectEntry(family, row, entry, 0x00);
                    if (row.mask != 0) {
                        expectEntry(family, row, entry, 0xFF);
                    }
                    ASSERT_FALSE(HasFatalFailure());
                }
            }
        }
    }
    // Every byte at every place shows what it should and sends nothing.
    void expectBytes(UINT page, int family, void (*refresh)(), const std::vector<Shown>& rows) {
        open(page);
        ControllerFamily = family;
        LastByteCount = 99;
        std::vector<BYTE*> places = {L + 4};
        for (size_t at = 0; at < ParamBlockB.size(); ++at) {
            places.insert(places.end(), {B + at, A + std::min(at, ParamBlockA.size() - 1)});
        }
        const Ids all = controls();
        for (BYTE* const place : places) {
            clearMirrors();
            for (int byte = 0; byte < 256; ++byte) {
                *place = static_cast<BYTE>(byte);
                refresh();
                for (const Shown& row : rows) {
                    if (row.byte == place && (row.family == 0 || row.family == family)) {
                        ASSERT_EQ(selected(row.id), row.entry(byte)) << row.id << " at " << byte;
                    }
                }
                for (const int id : all) {
                    ASSERT_TRUE(!isList(id) || selected(id) < ask(id, CB_GETCOUNT)) << id << " at " << byte;
                }
            }
        }
        clearMirrors();
        EXPECT_EQ(sent(), "");
        EXPECT_EQ(LastByteCount, 99u);
        EXPECT_EQ(ComboOpen + TuningDialogOpen + CorrectionsDialogOpen, 0);
    }
};

TEST_F(TuningPages, EntriesSendTheirBytesInFamily2) {
    expectEntries(2, 9);
}

TEST_F(TuningPages, EntriesSendTheirBytesInFamily4) {
    expectEntries(4, 4);
}

TEST_F(TuningPages, EntriesSendTheirBytesInFamily4WithGasLevel) {
    expectEntries(4, 5);
}

TEST_F(TuningPages, EveryByteOfTheBlocksIsShown) {
    connect(4, 5, IDM_CONFIGURATION);
    for (const int family : {2, 4}) {
        SCOPED_TRACE(family);
        expectBytes(IDM_CONFIGURATION, family, RefreshConfigurationPage, OnConfiguration);
        expectBytes(IDM_OPTIONS, family, RefreshOptionsPage, OnOptions);
    }
}

TEST_F(TuningPages, ValuesThatDependOnASecondByteAreShown) {
    struct Row {
        int id;
        int entry;
        std::vector<std::pair<BYTE*, int>> bytes;
    };
    const auto period = [](BYTE* low, int value) {
        return std::vector<std::pair<BYTE*, int>>{{low, value & 255}, {low + 1, value >> 8}};
    };
    const std::vector<Row> configuration = {
        {1013, -1, {{A + 2, 0x00}, {A + 3, 200}}}, {1013, 0, {{A + 2, 0x50}, {A + 3, 49}}},
        {1013, 15, {{A + 2, 0x50}, {A + 3, 65}}},  {1013, -1, {{A + 2, 0x50}, {A + 3, 66}}},
        {1013, 0, {{A + 2, 0x40}, {A + 3, 99}}},   {1013, 50, {{A + 2, 0x40}, {A + 3, 150}}},
        {1013, 50, {{A + 2, 0xF0}, {A + 3, 150}}}, {1013, -1, {{A + 2, 0x60}, {A + 3, 151}}},
        {1022, 0, period(B + 5, 0)},               {1022, 0, period(B + 5, 65535)},
        {1022, 0, period(B + 5, 10000)},           {1022, 1, period(B + 5, 9375)},
        {1022, 20, period(B + 5, 4225)},           {1022, -1, period(B + 5, 4166)},
        {1022, -1, period(B + 5, 1)},
    };
    const std::vector<Row> options = {
        {1047, 0, {{A + 2, 0x01}, {B + 3, 250}}}, {1047, 50, {{A + 2, 0x01}, {B + 3, 0}}},
        {1047, 1, {{A + 2, 0x01}, {B + 3, 245}}}, {1047, 0, {{A + 2, 0x01}, {B + 3, 255}}},
        {1048, 0, period(B + 8, 0)},              {1048, 0, period(B + 8, 15001)},
        {1048, 15, period(B + 8, 5882)},          {1048, -1, period(B + 8, 5769)},
        {1050, 0, period(B + 11, 0)},             {1050, 0, period(B + 11, 3751)},
        {1050, 40, period(B + 11, 1863)},         {1050, -1, period(B + 11, 1851)},
        {1051, 0, {{A + 11, 0}}},                 {1051, 0, {{A + 11, 96}}},
        {1051, 1, {{A + 11, 99}}},                {1051, 25, {{A + 11, 209}}},
        {1051, -1, {{A + 11, 210}}},              {1051, -1, {{A + 11, 255}}},
    };
    connect(2, 9, IDM_CONFIGURATION);
    for (const UINT page : {IDM_CONFIGURATION, IDM_OPTIONS}) {
        open(page);
        for (const Row& row : page == IDM_OPTIONS ? options : configuration) {
            clearMirrors();
            for (const auto& [byte, value] : row.bytes) {
                *byte = static_cast<BYTE>(value);
            }
            page == IDM_OPTIONS ? RefreshOptionsPage() : RefreshConfigurationPage();
            EXPECT_EQ(selected(row.id), row.entry) << row.id << " of " << row.bytes.back().second;
        }
        EXPECT_EQ(sent(), "");
    }
}

TEST_F(TuningPages, FamilyAndBitsDecideWhatIsOffered) {
    const Ids Times = {1019, 1020, 1079, 1080, 1091, 1092}, Inertia = {1025, 1085, 1093}, LowSignal = {1140},
              Gas = {1130, 1088, 1206, 1007}, Valve = {1096, 1149, 1095}, Base = {1003, 1057},
              Jump = {1046, 1047, 1064, 1065, 1058, 1059}, CutOff = {1048, 1060, 1061, 1066, 1067, 1049},
              GasOff = {1050, 1062}, Temperature = {1051, 1063}, JumpSwitch = {1039}, Panel = {1209, 1207};
    struct Row {
        UINT page;
        int family, firmware;
        int a1, a2, a5;
        Ids disabled, hidden;
        std::string text = {};  // of the gas level sensor, or the label of the jump
    };
    const Ids NoFeature = joined({Jump, CutOff, GasOff, Temperature});
    connect(4, 5, IDM_CONFIGURATION);
    const std::vector<Row> rows = {
        {IDM_CONFIGURATION, 2, 9, 0x01, 0x00, 0x00, joined({LowSignal, Gas}), Valve},
        {IDM_CONFIGURATION, 4, 4, 0x01, 0x00, 0x00, Gas, Valve},
        {IDM_CONFIGURATION, 4, 5, 0x81, 0x00, 0x08, {}, {}, line(181)},
        {IDM_CONFIGURATION, 4, 31, 0x80, 0x05, 0xBC, {}, {}, line(182)},
        {IDM_CONFIGURATION, 4, 5, 0x7E, 0xFD, 0x00, {}, Valve, line(183)},
        {IDM_CONFIGURATION, 4, 5, 0x01, 0x00, 0x40, Gas, Valve},
        {IDM_CONFIGURATION, 4, 5, 0x01, 0x02, 0x01, joined({Times, Inertia}), Valve, line(181)},
        {IDM_CONFIGURATION, 4, 5, 0x01, 0x03, 0x02, joined({Times, Inertia}), Valve, line(181)},
        {IDM_CONFIGURATION, 4, 5, 0x01, 0x06, 0x03, joined({Times, Inertia}), Valve, line(181)},
        {IDM_CONFIGURATION, 2, 9, 0xFF, 0x07, 0xFF, joined({LowSignal, Gas, Times, Inertia}), {}},
        {IDM_CONFIGURATION, 1, 0, 0x00, 0x00, 0x00, joined({LowSignal, Gas}), Valve},
        {IDM_CONFIGURATION, 6, 9, 0x00, 0x00, 0x00, joined({LowSignal, Gas}), Valve},
        {IDM_OPTIONS, 2, 9, 0x04, 0x00, 0x00, Panel, joined({Base, NoFeature}), line(110)},
        {IDM_OPTIONS, 4, 5, 0x00, 0x00, 0x00, {}, NoFeature, line(132)},
        {IDM_OPTIONS, 4, 4, 0xFF, 0x00, 0x00, Panel, Base, line(132)},
        {IDM_OPTIONS, 4, 31, 0x0C, 0x01, 0x40, {}, joined({Base, CutOff, GasOff, Temperature}), line(132)},
        {IDM_OPTIONS, 4, 5, 0x24, 0x08, 0x00, {}, joined({Base, Jump, GasOff, Temperature}), line(132)},
        {IDM_OPTIONS, 4, 5, 0x44, 0x0F, 0x00, {}, joined({Base, Jump, CutOff, Temperature}), line(132)},
        {IDM_OPTIONS, 4, 5, 0x06, 0x04, 0x00, {}, joined({Base, Jump, CutOff, GasOff}), line(132)},
        {IDM_OPTIONS, 4, 5, 0x6E, 0x02, 0x00, JumpSwitch, joined({Base, Jump}), line(132)},
        {IDM_OPTIONS, 4, 5, 0x6A, 0x13, 0x00, JumpSwitch, Jump, line(132)},
        {IDM_OPTIONS, 2, 9, 0x6A, 0x26, 0x00, joined({JumpSwitch, Panel}), Jump, line(110)},
        {IDM_OPTIONS, 2, 9, 0x6A, 0xF7, 0x00, joined({JumpSwitch, Panel}), Jump, line(110)},
        {IDM_OPTIONS, 2, 9, 0x6A, 0xF5, 0x00, Panel, {}, line(110)},
        {IDM_OPTIONS, 1, 0, 0x00, 0x00, 0x00, Panel, NoFeature, line(110)},
    };
    UINT page = 0;
    for (size_t at = 0; at < rows.size(); ++at) {
        const Row& row = rows[at];
        SCOPED_TRACE(at);
        if (page != row.page) {
            open(page = row.page);
        }
        clearMirrors();
        ControllerFamily = row.family;
        FirmwareVersion = row.firmware;
        A[1] = static_cast<BYTE>(row.a1);
        A[2] = static_cast<BYTE>(row.a2);
        A[5] = static_cast<BYTE>(row.a5);
        page == IDM_OPTIONS ? RefreshOptionsPage() : RefreshConfigurationPage();
        EXPECT_EQ(controls(IsWindowEnabled), row.disabled);
        EXPECT_EQ(controls(IsWindowVisible), row.hidden);
        EXPECT_EQ(textOf(page == IDM_OPTIONS ? 1064 : 1007), row.text);
        if (page == IDM_OPTIONS) {
            EXPECT_EQ(textOf(1058), line(row.family == 4 ? 126 : 123));
            EXPECT_EQ(ask(1046, CB_GETCOUNT), row.family == 4 ? 50 : 256);
            EXPECT_EQ(selected(1207), row.disabled.contains(1207) || row.a5 == 0x40 ? 0 : 1);
            EXPECT_EQ(selected(1039), row.hidden.contains(1046) ? 0 : 1);
        } else if (row.family != 4) {
            pick(1140, 1);
        }
        EXPECT_EQ(sent(), "");
    }
}

TEST_F(TuningPages, TextsStandInTheirPlaces) {
    struct Lines {
        int id, line, count = 1;  // of ids and lines that rise together, or of a list's entries
    };
    struct Page {
        UINT page;
        std::vector<Lines> texts, entries;
        std::vector<std::pair<int, const char*>> ends;  // first and last entry of a list
    };
    const std::vector<Page> pages = {
        {IDM_CONFIGURATION,
         {{1126, 35, 5}, {1075, 40, 12}, {1088, 52}, {1089, 53, 4}, {1087, 57}, {1093, 58, 3}, {1140, 185}, {1074, 187},
          {1096, 188}, {1206, 197}},
         {{1018, 61, 3}, {1021, 64, 18}, {1023, 82, 2}, {1024, 84, 6}},
         {{1003, "0-1 V..0,8-1,6 V"}, {1013, "0,40..0,60"}, {1017, "0:05..21:15"}, {1019, "0,025..6,375"},
          {1020, "0,025..6,375"}, {1022, "1500..3500"}, {1025, "0,04..0,40"}, {1026, "0,1..5,0"}, {1149, "0,1..5,0"}}},
        {IDM_OPTIONS,
         {{1131, 92, 5}, {1014, 97}, {1034, 104}, {1075, 105, 4}, {1039, 109}, {1065, 111}, {1040, 112}, {1066, 113, 2},
          {1041, 115, 2}, {1079, 117}, {1057, 118}, {1085, 119, 2}, {1088, 121}, {1136, 122}, {1059, 124, 5},
          {1209, 201}, {1207, 202}},
         {{1052, 129, 3}},
         {{1003, "0..255"}, {1013, "-0..-255"}, {1043, "+0..+255"}, {1044, "-0..-255"}, {1045, "+0..+255"},
          {1046, "2..100"}, {1047, "0,0..5,0"}, {1048, "1000..2500"}, {1049, "2..100"}, {1050, "4000..8000"},
          {1051, "10..60"}}},
    };
    connect(4, 5, IDM_CONFIGURATION);
    setCell(simulator::LambdaType, 0x00);
    for (const Page& page : pages) {
        open(page.page);
        for (const Lines& row : page.texts) {
            for (int at = 0; at < row.count; ++at) {
                EXPECT_EQ(textOf(row.id + at), line(row.line + at)) << row.id + at;
            }
        }
        for (const Lines& row : page.entries) {
            for (int at = 0; at < row.count; ++at) {
                EXPECT_EQ(entryOf(row.id, at), line(row.line + at)) << row.id;
            }
        }
        for (const auto& [id, ends] : page.ends) {
            EXPECT_EQ(entryOf(id, 0) + ".." + entryOf(id, static_cast<int>(ask(id, CB_GETCOUNT)) - 1), ends) << id;
        }
    }
}

TEST_F(TuningPages, OnlyAChoiceWrites) {
    connect(4, 5, IDM_CONFIGURATION);
    setCell(simulator::LambdaType, 0x00);
    for (const UINT page : {IDM_CONFIGURATION, IDM_OPTIONS, IDM_CONFIGURATION}) {
        open(page);
        for (const int id : controls()) {
            for (const int code : {2, 3, 5, 6, CBN_DROPDOWN, 8, 9, 10}) {
                notify(id, code);
                EXPECT_EQ(ComboOpen, isList(id) && code == CBN_DROPDOWN ? 1 : 0) << id << " code " << code;
            }
        }
        EXPECT_EQ(sent(), "");
        ComboOpen = 1;
        pick(1013, 4);
        EXPECT_EQ(sent(), page == IDM_OPTIONS ? "65 21 04 8A" : "65 08 18 85");
        EXPECT_EQ(ComboOpen, 1) << "the close of the list is still to come";
        ComboOpen = 0;
    }
}

TEST_F(TuningPages, ChoicesBetweenTwoPollsWorkFromTheOldBytes) {
    connect(2, 9, IDM_OPTIONS);
    setCell(simulator::Options, 0xFF);
    tick();
    sent();
    pick(1040, 0);
    pick(1041, 0);
    EXPECT_EQ(sent(), "65 05 DF 49, 65 05 BF 29");
    pick(1034, 1);
    pick(1041, 0);
    EXPECT_EQ(sent(), "65 05 FB 65, 65 05 BB 25") << "freeing the base is seen at once";
    pick(1034, 0);
    pick(1041, 0);
    EXPECT_EQ(sent(), "65 05 FF 69, 65 05 BB 25") << "locking it is not";
    setCell(simulator::LambdaType, 0x00);
    open(IDM_CONFIGURATION);
    pick(1003, 5);
    A[2] = 0x50;
    pick(1013, 3);
    EXPECT_EQ(sent(), "65 06 50 BB, 65 07 3C A8, 65 07 17 83") << "the list that shows decides";
    tick();
    EXPECT_EQ(LambdaPointList, 5);
    EXPECT_EQ(ask(1013, CB_GETCOUNT), 16);
    EXPECT_EQ(selected(1013), 0) << "23 is below the new list";
}

TEST_F(TuningPages, ALinkLostBehindAnOpenListShowsOnceItIsClosed) {
    struct Row {
        UINT page;
        int id, cell, entry;  // of the value 10
    };
    for (const Row& row : {Row{IDM_CONFIGURATION, 1017, 8, 9}, Row{IDM_OPTIONS, 1043, 31, 10}}) {
        SCOPED_TRACE(row.id);
        connect(4, 5, row.page);
        setCell(row.cell, 10);
        tick();
        EXPECT_EQ(selected(row.id), row.entry);
        run({{"box", always, [=] { clickOn(control(row.id)); }},
             {"list", [=] { return boxOf(control(row.id)).view()->isVisible(); },
              [&] {
                  EXPECT_EQ(ComboOpen, 1);
                  sent();
                  server->unplug();
                  for (int round = 0; round < 6; ++round) {
                      tick();
                  }
                  EXPECT_EQ(LinkLost, 0);
                  EXPECT_EQ(selected(row.id), row.entry);
                  press(Qt::Key_Escape);
              }},
             {"closed list", [] { return ComboOpen == 0; }, stopTimer}});
        for (int round = 0; round < 4; ++round) {
            tick();
        }
        EXPECT_EQ(LinkLost, 1);
        EXPECT_EQ(ActiveTimerPeriod, 500u);
        LastByteCount = 99;
        for (const int id : controls()) {
            if (isList(id)) {
                EXPECT_EQ(selected(id), 0) << id;
                pick(id, 1);
            }
        }
        EXPECT_EQ(LastByteCount, 99u);
        if (row.page == IDM_OPTIONS) {
            EXPECT_EQ(ask(1046, CB_GETCOUNT), 256);
            for (const int box : {1034, 1039, 1040, 1041, 1042, 1207}) {
                EXPECT_EQ(selected(box), box == 1034 ? 1 : 0) << box;
            }
        }
        ASSERT_TRUE(server->replug());
        tick();
        tick();
        EXPECT_EQ(selected(row.id), row.entry);
        closeProgram();
        server.reset();
    }
}

TEST_F(TuningPages, AnotherFamilyRebuildsTheJumpOnce) {
    connect(4, 5, IDM_OPTIONS);
    int added = 0;
    const auto watch = QObject::connect(boxOf(control(1046)).model(), &QAbstractItemModel::rowsInserted,
                                        [&](const QModelIndex&, int first, int last) { added += last - first + 1; });
    for (const int family : {2, 4}) {
        SCOPED_TRACE(family);
        added = 0;
        server.reset();
        plug(family, 5);
        setCell(simulator::AttJump, 8);
        for (int round = 0; round < 8; ++round) {
            tick();
            EXPECT_EQ(ask(1046, CB_GETCOUNT), ControllerFamily == 4 ? 50 : 256);
            EXPECT_EQ(textOf(1058), line(ControllerFamily == 4 ? 126 : 123));
            EXPECT_EQ(IsWindowEnabled(control(1207)) != 0, ControllerFamily == 4);
        }
        ASSERT_EQ(ControllerFamily, family);
        EXPECT_EQ(selected(1046), family == 4 ? 3 : 8);
        EXPECT_EQ(added, family == 4 ? 50 : 256);
    }
    QObject::disconnect(watch);
}
