#include "tuning/OptionsPage.h"

#include "dialogs/Dialogs.h"
#include "link/Link.h"
#include "model/Blocks.h"
#include "model/Cells.h"
#include "resources/Ids.h"
#include "shell/AppState.h"
#include "tuning/CorrectionsDialog.h"
#include "tuning/TuningPage.h"
#include "tuning/TuningState.h"

namespace {

// The first version of Family4 that knows panels with the whole gas level.
constexpr int FullPanelVersion = 5;

// The jump of the actuator reads as a position in steps or as an increase in percent.
constexpr TuningText StepsLabel = {IDC_OPTIONS_JUMP_LABEL, 110};
constexpr TuningText StepsUnit = {IDC_OPTIONS_JUMP_UNIT, 123};
constexpr int PercentLabelLine = 132;
constexpr int PercentUnitLine = 126;

const Choice& AttJumps() {
    return AttJumpChoice(ControllerFamily);
}

const Choice& TPSJumps() {
    return TPSJumpChoice(TPSType());
}

bool JumpPossible() {
    return TpsHasVoltage(TPSType());
}

bool KnowsFullPanel() {
    return ControllerFamily == Family4 && FirmwareVersion >= FullPanelVersion;
}

// The mirror takes the freed base position at once, so that a second change of Options before the next poll keeps it.
void FreeBase(unsigned ticked) {
    if (ticked != 0) {
        ParamBlockA[ParamAByte::Options] &= static_cast<BYTE>(~OptionsBit::AttInitLocked);
    }
}

void ShowJumpTexts() {
    const bool percent = AttJumpIsPercent(ControllerFamily);
    SetControlText(PageWindow, StepsUnit.id,
                   LangTable[static_cast<size_t>(percent ? PercentUnitLine : StepsUnit.line)].data());
    SetControlText(PageWindow, StepsLabel.id,
                   LangTable[static_cast<size_t>(percent ? PercentLabelLine : StepsLabel.line)].data());
}

void OpenCorrections(unsigned) {
    RunCorrectionsDialog();
}

constexpr TuningText Groups[] = {
    {IDC_OPTIONS_ACTUATOR_GROUP, 92},    {IDC_OPTIONS_CUT_OFF_GROUP, 93}, {IDC_OPTIONS_GAS_OFF_GROUP, 94},
    {IDC_OPTIONS_TEMPERATURE_GROUP, 95}, {IDC_OPTIONS_SOUND_GROUP, 96},
};

using enum TuningKind;

constexpr TuningControl Controls[] = {
    {.kind = Button, .id = IDC_OPTIONS_CORRECTIONS, .line = 97, .chosen = OpenCorrections},
    {.kind = Box,
     .id = IDC_OPTIONS_BASE_SWITCH,
     .line = 104,
     .cell = ParamCell::Options,
     .mask = OptionsBit::AttInitLocked,
     .inverted = true,
     .chosen = FreeBase},
    {.kind = List,
     .id = IDC_OPTIONS_BASE,
     .unit = {IDC_OPTIONS_BASE_UNIT, 118},
     .choice = Fixed<ChoiceName::Steps>,
     .cell = ParamCell::AttInit,
     .shownBy = IDC_OPTIONS_BASE_SWITCH},
    {.kind = List,
     .id = IDC_OPTIONS_IDLE_UP,
     .label = {IDC_OPTIONS_IDLE_UP_LABEL, 106},
     .unit = {IDC_OPTIONS_IDLE_UP_UNIT, 120},
     .choice = Fixed<ChoiceName::AttMax>,
     .cell = ParamCell::AttMax_BJ},
    {.kind = List,
     .id = IDC_OPTIONS_IDLE_DOWN,
     .label = {IDC_OPTIONS_IDLE_DOWN_LABEL, 105},
     .unit = {IDC_OPTIONS_IDLE_DOWN_UNIT, 119},
     .choice = Fixed<ChoiceName::AttMin>,
     .cell = ParamCell::AttMin_BJ},
    {.kind = List,
     .id = IDC_OPTIONS_LOAD_UP,
     .label = {IDC_OPTIONS_LOAD_UP_LABEL, 108},
     .unit = {IDC_OPTIONS_LOAD_UP_UNIT, 122},
     .choice = Fixed<ChoiceName::AttMax>,
     .cell = ParamCell::AttMax},
    {.kind = List,
     .id = IDC_OPTIONS_LOAD_DOWN,
     .label = {IDC_OPTIONS_LOAD_DOWN_LABEL, 107},
     .unit = {IDC_OPTIONS_LOAD_DOWN_UNIT, 121},
     .choice = Fixed<ChoiceName::AttMin>,
     .cell = ParamCell::AttMin},
    {.kind = Box,
     .id = IDC_OPTIONS_JUMP_SWITCH,
     .line = 109,
     .cell = ParamCell::Options,
     .mask = OptionsBit::TpsJump,
     .enabled = JumpPossible,
     .whenDisabled = WhenDisabled::Clears},
    {.kind = List,
     .id = IDC_OPTIONS_JUMP,
     .label = StepsLabel,
     .unit = StepsUnit,
     .choice = AttJumps,
     .firstChoice = Fixed<ChoiceName::Percent>,
     .cell = ParamCell::AttJump,
     .shownBy = IDC_OPTIONS_JUMP_SWITCH,
     .refreshed = ShowJumpTexts},
    {.kind = List,
     .id = IDC_OPTIONS_JUMP_VOLTS,
     .label = {IDC_OPTIONS_JUMP_VOLTS_LABEL, 111},
     .unit = {IDC_OPTIONS_JUMP_VOLTS_UNIT, 124},
     .choice = TPSJumps,
     .cell = ParamCell::TPSJump,
     .shownBy = IDC_OPTIONS_JUMP_SWITCH},
    {.kind = Box,
     .id = IDC_OPTIONS_CUT_OFF_SWITCH,
     .line = 112,
     .cell = ParamCell::Options,
     .mask = OptionsBit::CutOff},
    {.kind = List,
     .id = IDC_OPTIONS_CUT_OFF_SPEED,
     .label = {IDC_OPTIONS_CUT_OFF_SPEED_LABEL, 113},
     .unit = {IDC_OPTIONS_CUT_OFF_SPEED_UNIT, 125},
     .choice = Fixed<ChoiceName::CutOffRPM>,
     .cell = ParamCell::CutOffRPMLo,
     .shownBy = IDC_OPTIONS_CUT_OFF_SWITCH},
    {.kind = List,
     .id = IDC_OPTIONS_CUT_OFF_STEPS,
     .label = {IDC_OPTIONS_CUT_OFF_STEPS_LABEL, 114},
     .unit = {IDC_OPTIONS_CUT_OFF_STEPS_UNIT, 126},
     .choice = Fixed<ChoiceName::Percent>,
     .cell = ParamCell::CutOffSteps,
     .shownBy = IDC_OPTIONS_CUT_OFF_SWITCH},
    {.kind = Box,
     .id = IDC_OPTIONS_GAS_OFF_SWITCH,
     .line = 115,
     .cell = ParamCell::Options,
     .mask = OptionsBit::LpgOffLimit},
    {.kind = List,
     .id = IDC_OPTIONS_GAS_OFF_SPEED,
     .unit = {IDC_OPTIONS_GAS_OFF_SPEED_UNIT, 127},
     .choice = Fixed<ChoiceName::LPGOffRPM>,
     .cell = ParamCell::LPGOffRPMLo,
     .shownBy = IDC_OPTIONS_GAS_OFF_SWITCH},
    {.kind = Box,
     .id = IDC_OPTIONS_TEMPERATURE_SWITCH,
     .line = 116,
     .cell = ParamCell::Options,
     .mask = OptionsBit::TemperatureCondition},
    {.kind = List,
     .id = IDC_OPTIONS_TEMPERATURE,
     .unit = {IDC_OPTIONS_TEMPERATURE_UNIT, 128},
     .choice = Fixed<ChoiceName::LPGOnTemp>,
     .cell = ParamCell::LPGOnTemp,
     .shownBy = IDC_OPTIONS_TEMPERATURE_SWITCH},
    {.kind = Box,
     .id = IDC_OPTIONS_FULL_PANEL,
     .line = 202,
     .label = {IDC_OPTIONS_PANEL_GROUP, 201},
     .cell = ParamCell::EmulType,
     .mask = EmulTypeBit::SimplePanel,
     .inverted = true,
     .enabled = KnowsFullPanel,
     .whenDisabled = WhenDisabled::Clears},
    {.kind = List,
     .id = IDC_OPTIONS_SOUND,
     .label = {IDC_OPTIONS_SOUND_LABEL, 117},
     .firstEntryLine = 129,
     .entryLines = 3,
     .cell = ParamCell::EmulType,
     .mask = EmulTypeBit::ChoiceMask},
};

constexpr TuningPage OptionsTable = {Groups, Controls};

}  // namespace

INT_PTR CALLBACK OptionsProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return TakeTuningMessage(OptionsTable, TickOptions, window, message, wParam, lParam);
}

void FillOptionsLists() {
    FillTuningLists(OptionsTable);
}

void ApplyOptionsTexts() {
    ApplyTuningTexts(OptionsTable);
}

void TickOptions() {
    if (DialogPause != 0 || CorrectionsDialogOpen != 0) {
        return;
    }
    if (ComboOpen == 0) {
        PollTuningBlocks();
        RefreshOptionsPage();
    }
    KeepTimer(PageWindow, PageTimer);
}

void RefreshOptionsPage() {
    RefreshTuning(OptionsTable);
}
