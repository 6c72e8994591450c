#include "tuning/ConfigurationPage.h"

#include <array>

#include "dialogs/Dialogs.h"
#include "link/Link.h"
#include "model/Blocks.h"
#include "model/Cells.h"
#include "resources/Ids.h"
#include "shell/AppState.h"
#include "tuning/EmulationDialog.h"
#include "tuning/GasLevelDialog.h"
#include "tuning/TuningPage.h"
#include "tuning/TuningState.h"

namespace {

constexpr unsigned EmulationWave = 0;
// All sensors without a voltage share this bit of LambdaType, and no other sensor of the list has it.
constexpr unsigned NoVoltageBit = 0x02;
// From this version on the controller has a gas level sensor of its own.
constexpr int GasSensorVersion = 5;
constexpr size_t GasSensorLine = 181;

// LambdaPoint that follows a change to a sensor type: 0.44 V, 1.20 V, and 2.54 V for all that measure up to 5 V.
constexpr BYTE PointOf01 = 22;
constexpr BYTE PointOf16 = 60;
constexpr BYTE PointOf5 = 127;

constexpr std::array SensorTexts = {"0-1 V", "0-5 V -", "0-5 V +", "5-0 V -", "5-0 V +", "0,8-1,6 V"};
static_assert(SensorTexts.size() == LambdaSensor::Volts08To16 + 1);

constexpr std::array<BYTE, 6> TpsTypes = {TpsSensor::Linear,  TpsSensor::Reversed, TpsSensor::None,
                                          TpsSensor::Switch6, TpsSensor::Switch7,  TpsSensor::Type8};

unsigned Options() {
    return ParamBlockA[ParamAByte::Options];
}

unsigned EmulType() {
    return ParamBlockA[ParamAByte::EmulType];
}

// An entry is read by the list that shows, so that no write goes astray while the mirror is a poll ahead of it.
const Choice& ShownLambdaPoints() {
    return LambdaPointChoice(LambdaPointList);
}

void FollowLambdaType() {
    LambdaPointList = LambdaSensorType();
}

// The point of the former sensor has no meaning for another one.
void WriteLambdaPoint(unsigned sensor) {
    const BYTE point = sensor == LambdaSensor::Volts0To1     ? PointOf01
                       : sensor == LambdaSensor::Volts08To16 ? PointOf16
                                                             : PointOf5;
    WriteCell(ParamCell::LambdaPoint, point);
}

bool EmulatesWave() {
    return (EmulType() & EmulTypeBit::TypeMask) == EmulationWave;
}

// The wave alone has times to set.
void OfferWave(unsigned emulation) {
    if (emulation == EmulationWave) {
        RunEmulationDialog();
    }
}

bool HasLowSignal() {
    return ControllerFamily == Family4;
}

bool TpsHasInertia() {
    return (ParamBlockA[ParamAByte::LambdaType] & NoVoltageBit) == 0;
}

bool GasSensorUsed() {
    return ControllerFamily == Family4 && FirmwareVersion >= GasSensorVersion &&
           (EmulType() & EmulTypeBit::SimplePanel) == 0;
}

void OpenGasLevel(unsigned) {
    RunGasLevelDialog();
}

const char* GasSensorText() {
    const size_t type = (Options() & OptionsBit::GasSensorType0) != 0   ? 0
                        : (Options() & OptionsBit::GasSensorType1) != 0 ? 1
                                                                        : 2;
    return LangTable[GasSensorLine + type].data();
}

void RefreshGasSensor() {
    const bool used = GasSensorUsed();
    EnableControl(PageWindow, IDC_CONFIG_GAS_GROUP, used);
    SetControlText(PageWindow, IDC_CONFIG_GAS_SENSOR_TYPE, used ? GasSensorText() : "");
}

constexpr TuningText Groups[] = {
    {IDC_CONFIG_LAMBDA_GROUP, 35},   {IDC_CONFIG_SPEED_GROUP, 36}, {IDC_CONFIG_TPS_GROUP, 37},
    {IDC_CONFIG_INJECTOR_GROUP, 38}, {IDC_CONFIG_GAS_GROUP, 39},
};

using enum TuningKind;

constexpr TuningControl Controls[] = {
    {.kind = List,
     .id = IDC_CONFIG_LAMBDA_TYPE,
     .label = {IDC_CONFIG_LAMBDA_TYPE_LABEL, 40},
     .texts = SensorTexts,
     .cell = ParamCell::LambdaType,
     .mask = LambdaTypeField::SensorMask,
     .chosen = WriteLambdaPoint,
     .refreshed = FollowLambdaType},
    {.kind = List,
     .id = IDC_CONFIG_LAMBDA_POINT,
     .label = {IDC_CONFIG_LAMBDA_POINT_LABEL, 41},
     .unit = {IDC_CONFIG_LAMBDA_POINT_UNIT, 53},
     .choice = ShownLambdaPoints,
     .cell = ParamCell::LambdaPoint},
    {.kind = List,
     .id = IDC_CONFIG_LAMBDA_DELAY,
     .label = {IDC_CONFIG_LAMBDA_DELAY_LABEL, 42},
     .unit = {IDC_CONFIG_LAMBDA_DELAY_UNIT, 54},
     .choice = Fixed<ChoiceName::LambdaDelay>,
     .cell = ParamCell::LambdaDelay},
    {.kind = List,
     .id = IDC_CONFIG_EMULATION,
     .label = {IDC_CONFIG_EMULATION_LABEL, 43},
     .firstEntryLine = 61,
     .entryLines = 3,
     .cell = ParamCell::EmulType,
     .mask = EmulTypeBit::TypeMask,
     .chosen = OfferWave},
    {.kind = List,
     .id = IDC_CONFIG_TIME_HIGH,
     .label = {IDC_CONFIG_TIME_HIGH_LABEL, 44},
     .unit = {IDC_CONFIG_TIME_HIGH_UNIT, 55},
     .choice = Fixed<ChoiceName::EmulationTime>,
     .cell = ParamCell::EmulBJ_TimeHi,
     .enabled = EmulatesWave},
    {.kind = List,
     .id = IDC_CONFIG_TIME_LOW,
     .label = {IDC_CONFIG_TIME_LOW_LABEL, 45},
     .unit = {IDC_CONFIG_TIME_LOW_UNIT, 56},
     .choice = Fixed<ChoiceName::EmulationTime>,
     .cell = ParamCell::EmulBJ_TimeLo,
     .enabled = EmulatesWave},
    {.kind = List,
     .id = IDC_CONFIG_IGNITION,
     .label = {IDC_CONFIG_IGNITION_LABEL, 46},
     .choice = Fixed<ChoiceName::IgnitionType>,
     .cell = ParamCell::IgnitionType},
    {.kind = List,
     .id = IDC_CONFIG_GAS_ON_SPEED,
     .label = {IDC_CONFIG_GAS_ON_SPEED_LABEL, 47},
     .unit = {IDC_CONFIG_GAS_ON_SPEED_UNIT, 57},
     .choice = Fixed<ChoiceName::LPGOnRPM>,
     .cell = ParamCell::LPGOnRPMLo},
    {.kind = List,
     .id = IDC_CONFIG_SPEED_CHANGE,
     .label = {IDC_CONFIG_SPEED_CHANGE_LABEL, 48},
     .firstEntryLine = 82,
     .entryLines = 2,
     .cell = ParamCell::Options,
     .mask = OptionsBit::SpeedChange},
    {.kind = Box,
     .id = IDC_CONFIG_LOW_SIGNAL,
     .line = 185,
     .cell = ParamCell::EmulType,
     .mask = EmulTypeBit::LowSignalFamily4,
     .enabled = HasLowSignal,
     .whenDisabled = WhenDisabled::Ignores},
    {.kind = List,
     .id = IDC_CONFIG_TPS_TYPE,
     .label = {IDC_CONFIG_TPS_TYPE_LABEL, 49},
     .firstEntryLine = 84,
     .entryLines = TpsTypes.size(),
     .cell = ParamCell::LambdaType,
     .mask = LambdaTypeField::TpsMask,
     .values = TpsTypes},
    {.kind = List,
     .id = IDC_CONFIG_TPS_INERTIA,
     .label = {IDC_CONFIG_TPS_INERTIA_LABEL, 50},
     .unit = {IDC_CONFIG_TPS_INERTIA_UNIT, 58},
     .choice = Fixed<ChoiceName::TPSInert>,
     .cell = ParamCell::TPSInert,
     .enabled = TpsHasInertia},
    {.kind = List,
     .id = IDC_CONFIG_OVERLAP,
     .label = {IDC_CONFIG_OVERLAP_LABEL, 51},
     .unit = {IDC_CONFIG_OVERLAP_UNIT, 59},
     .choice = Fixed<ChoiceName::TenthSeconds>,
     .cell = ParamCell::InjectDelay},
    {.kind = Button,
     .id = IDC_CONFIG_GAS_SENSOR,
     .line = 197,
     .label = {IDC_CONFIG_GAS_SENSOR_LABEL, 52},
     .unit = {IDC_CONFIG_GAS_SENSOR_TYPE},
     .enabled = GasSensorUsed,
     .chosen = OpenGasLevel,
     .refreshed = RefreshGasSensor},
    {.kind = Box,
     .id = IDC_CONFIG_EMERGENCY,
     .line = 187,
     .cell = ParamCell::EmulType,
     .mask = EmulTypeBit::EmergencyStart},
    {.kind = List,
     .id = IDC_CONFIG_VALVE,
     .label = {IDC_CONFIG_VALVE_LABEL, 188},
     .unit = {IDC_CONFIG_VALVE_UNIT, 60},
     .choice = Fixed<ChoiceName::TenthSeconds>,
     .cellOfFamily = ValveOpeningCell,
     .shownBy = IDC_CONFIG_EMERGENCY},
};

constexpr TuningPage ConfigurationTable = {Groups, Controls};

}  // namespace

INT_PTR CALLBACK ConfigurationProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return TakeTuningMessage(ConfigurationTable, TickConfiguration, window, message, wParam, lParam);
}

void FillConfigurationLists() {
    FillTuningLists(ConfigurationTable);
}

void ApplyConfigurationTexts() {
    ApplyTuningTexts(ConfigurationTable);
}

void TickConfiguration() {
    if (DialogPause != 0) {
        return;
    }
    if (ComboOpen == 0 && TuningDialogOpen == 0) {
        PollTuningBlocks();
        RefreshConfigurationPage();
    }
    KeepTimer(PageWindow, PageTimer);
}

void RefreshConfigurationPage() {
    RefreshTuning(ConfigurationTable);
}
