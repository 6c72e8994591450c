#include "settings/SettingsFormat.h"

#include <algorithm>
#include <string_view>

#include "files/TextFiles.h"
#include "model/Blocks.h"
#include "model/Cells.h"

namespace {

// A key of either generation; null where that has no such line. A value without a cell is written as 0.
struct ValueRow {
    const char* first;
    const char* second;
    unsigned cell;
};

constexpr unsigned NoCell = 0;

constexpr ValueRow Alike(const char* key, unsigned cell) {
    return {key, key, cell};
}

constexpr const char* HeadersGen1[] = {"[Tarve_X]", "Version=1.2", "[Configuration]"};
constexpr const char* HeadersGen2[] = {"[Tarve_X2]", "Version=4", "[Configuration]"};

constexpr ValueRow Values[] = {
    Alike("Options=", ParamCell::Options),
    Alike("LambdaType=", ParamCell::LambdaType),
    Alike("LambdaPoint=", ParamCell::LambdaPoint),
    Alike("LambdaDelay=", ParamCell::LambdaDelay),
    Alike("EmulType=", ParamCell::EmulType),
    Alike("EmulBJ_TimeHi=", ParamCell::EmulBJ_TimeHi),
    Alike("EmulBJ_TimeLo=", ParamCell::EmulBJ_TimeLo),
    {"EmulDO_TimeHi=", "ZAM_OTW_BJ=", ParamCell::ZAM_OTW_BJ},
    {"EmulDO_TimeLo=", "ZAM_OTW_DO=", ParamCell::ZAM_OTW_DO},
    Alike("InjectDelay=", ParamCell::InjectDelay),
    Alike("LPGOnTemp=", ParamCell::LPGOnTemp),
    Alike("AttMax=", ParamCell::AttMax),
    Alike("AttMin=", ParamCell::AttMin),
    Alike("AttInit=", ParamCell::AttInit),
    Alike("TPSJump=", ParamCell::TPSJump),
    Alike("AttJump=", ParamCell::AttJump),
    Alike("LPGOnRPMLo=", ParamCell::LPGOnRPMLo),
    Alike("LPGOnRPMHi=", ParamCell::LPGOnRPMHi),
    Alike("IgnitionType=", ParamCell::IgnitionType),
    Alike("CutOffRPMLo=", ParamCell::CutOffRPMLo),
    Alike("CutOffRPMHi=", ParamCell::CutOffRPMHi),
    Alike("CutOffSteps=", ParamCell::CutOffSteps),
    Alike("LPGOffRPMLo=", ParamCell::LPGOffRPMLo),
    Alike("LPGOffRPMHi=", ParamCell::LPGOffRPMHi),
    Alike("TPSInert=", ParamCell::TPSInert),
    Alike("AttMax_BJ=", ParamCell::AttMax_BJ),
    Alike("AttMin_BJ=", ParamCell::AttMin_BJ),
    {"Otwarcie_GAZU=", "Prog1=", ParamCell::Prog1Family4},
    {nullptr, "Prog2=", ParamCell::Prog2},
    {nullptr, "Prog3=", ParamCell::Prog3},
    {nullptr, "Prog4=", ParamCell::Prog4},
    {nullptr, "WOZG=", ParamCell::WOZG},
    {nullptr, "NULL=", NoCell},
};

constexpr size_t ValuesGen1 = 28;
constexpr size_t ValuesGen2 = 33;
constexpr size_t CellsGen2 = 32;
static_assert(std::size(Values) == ValuesGen2);
static_assert(SettingsHeaderRows + ValuesGen2 <= SettingsRowRoom);

constexpr auto MakeCells() {
    std::array<unsigned, CellsGen2> cells{};
    for (size_t value = 0; value < cells.size(); ++value) {
        cells[value] = Values[value].cell;
    }
    return cells;
}
constexpr std::array<unsigned, CellsGen2> Cells = MakeCells();

// A key that filled its row would match a longer token of the same beginning.
constexpr void PutKey(SettingsRow& row, std::string_view key) {
    if (key.size() + 1 >= row.size()) {
        throw "a key is too long";
    }
    std::ranges::copy(key, row.begin());
}

constexpr SettingsRows MakeKeys(const char* const (&headers)[SettingsHeaderRows], const char* ValueRow::*key,
                                size_t values) {
    SettingsRows rows{};
    for (size_t row = 0; row < SettingsHeaderRows; ++row) {
        PutKey(rows[row], headers[row]);
    }
    for (size_t value = 0; value < values; ++value) {
        PutKey(rows[SettingsHeaderRows + value], Values[value].*key);
    }
    return rows;
}

constexpr SettingsFormat Gen1 = {
    SettingsKeysGen1, SettingsHeaderRows + ValuesGen1,    ValuesGen1, std::span(Cells).first(ValuesGen1),
    Family2,          "Tarvex settings (*.vrs)\0*.vrs\0", "vrs"};
constexpr SettingsFormat Gen2 = {SettingsKeysGen2, SettingsHeaderRows + ValuesGen2,    ValuesGen2, Cells,
                                 Family4,          "Tarvex settings (*.vr2)\0*.vr2\0", "vr2"};

}  // namespace

constexpr SettingsRows SettingsKeysGen1 = MakeKeys(HeadersGen1, &ValueRow::first, ValuesGen1);
constexpr SettingsRows SettingsKeysGen2 = MakeKeys(HeadersGen2, &ValueRow::second, ValuesGen2);
SettingsRows ScanRows{};
std::array<BYTE, SettingsRowRoom - SettingsHeaderRows> CellImage{};
std::array<bool, SettingsRowRoom - SettingsHeaderRows> CellGiven{};

const SettingsFormat& SettingsFormatOf(int family) {
    return family == Family4 ? Gen2 : Gen1;
}

void ScanSettings(std::FILE* file, const SettingsFormat& format) {
    ScanRows = {};
    CellGiven = {};
    for (size_t row = 0; row < format.rows; ++row) {
        ReadToken(file, ScanRows[row]);
        if (row < SettingsHeaderRows) {
            continue;
        }
        const ScannedNumber number = ReadNumber(file);
        const size_t value = row - SettingsHeaderRows;
        CellGiven[value] = number.found;
        if (number.found) {
            CellImage[value] = static_cast<BYTE>(number.low);
        }
        // A sign alone is a text where a number should be.
        if (number.bareSign) {
            ScanRows[row] = {};
        }
    }
    std::fclose(file);
}

bool SettingsMatch(const SettingsFormat& format) {
    return std::equal(ScanRows.begin(), ScanRows.begin() + static_cast<std::ptrdiff_t>(format.rows),
                      format.keys.begin(), [](const SettingsRow& scanned, const SettingsRow& key) {
                          return std::string_view(scanned.data()) == key.data();
                      });
}

void WriteSettings(std::FILE* file, const SettingsFormat& format) {
    for (size_t row = 0; row < SettingsHeaderRows; ++row) {
        std::fprintf(file, "%s\n", format.keys[row].data());
    }
    for (size_t value = 0; value < format.values; ++value) {
        const unsigned cell = value < format.cells.size() ? format.cells[value] : NoCell;
        std::fprintf(file, "%s %u\n", format.keys[SettingsHeaderRows + value].data(), CellValue(cell, format.family));
    }
}
