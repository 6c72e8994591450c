#include "tuning/CorrectionsDialog.h"

#include <array>

#include "dialogs/Dialogs.h"
#include "link/Link.h"
#include "model/Blocks.h"
#include "model/Cells.h"
#include "model/Text.h"
#include "resources/Ids.h"
#include "shell/AppState.h"
#include "tuning/DialogPoll.h"
#include "tuning/TuningState.h"

namespace {

// A correction cell, its byte:
//
//   bits 7 to 4   bits 3 to 0
//   opening       closing      field 0 to 15; entry of the list = 15 - field
constexpr int MostField = 15;

struct CorrectionRow {
    int combo;
    unsigned cell;
    unsigned mask;
    unsigned shift;
    int first;  // number of the first entry; the list climbs by NumberStep
};

constexpr int NumberStep = 2;
constexpr std::array Corrections{
    CorrectionRow{IDC_CORRECTION_BJ_LOW, ParamCell::ZAM_OTW_BJ, CorrectionField::LowMask, 0, -12},
    CorrectionRow{IDC_CORRECTION_BJ_HIGH, ParamCell::ZAM_OTW_BJ, CorrectionField::HighMask, CorrectionField::HighShift,
                  -10},
    CorrectionRow{IDC_CORRECTION_DO_LOW, ParamCell::ZAM_OTW_DO, CorrectionField::LowMask, 0, -20},
    CorrectionRow{IDC_CORRECTION_DO_HIGH, ParamCell::ZAM_OTW_DO, CorrectionField::HighMask, CorrectionField::HighShift,
                  -16},
};

constexpr size_t TitleLine = 98;
constexpr std::array Texts{
    DialogText{IDC_CORRECTION_BJ_LOW_LABEL, 99},
    DialogText{IDC_CORRECTION_BJ_HIGH_LABEL, 100},
    DialogText{IDC_CORRECTION_DO_LOW_LABEL, 101},
    DialogText{IDC_CORRECTION_DO_HIGH_LABEL, 102},
    DialogText{IDC_CLOSE, 103},
};

void InitDialog(HWND dialog) {
    FillCorrectionsDialog(dialog);
    CentreDialog(dialog);
}

void ReadBlock() {
    if (LinkLost == 0 && ControllerFamily == Family2) {
        ReadParamBlockA();
    }
    if (LinkLost == 0 && ControllerFamily == Family4) {
        ReadParamBlockC();
    }
}

void Tick(HWND dialog) {
    if (ComboOpen == 0) {
        PollIdentity();
        ReadBlock();
        RefreshCorrectionsDialog(dialog);
    }
    KeepDialogTimer(dialog);
}

// The other nibble stays as last read.
void WriteCorrection(const CorrectionRow& row, int entry) {
    if (!CellKnown(row.cell, ControllerFamily)) {
        return;
    }
    const unsigned field = static_cast<unsigned>(MostField - entry);
    const unsigned other = CellValue(row.cell, ControllerFamily) & ~row.mask;
    WriteCell(row.cell, static_cast<BYTE>(other | field << row.shift));
}

void TakeCommand(HWND dialog, WORD id, WORD news) {
    if (id == IDC_CLOSE || id == IDC_CANCEL) {
        CloseTuningDialog(dialog, id, CorrectionsDialogOpen);
        return;
    }
    for (const CorrectionRow& row : Corrections) {
        if (row.combo != id) {
            continue;
        }
        if (const int entry = ChosenEntry(dialog, id, news); entry != NoEntry) {
            WriteCorrection(row, entry);
        }
    }
}

INT_PTR CALLBACK CorrectionsProc(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    switch (message) {
        case WM_INITDIALOG:
            InitDialog(dialog);
            return 1;
        case WM_PAINT:
            ArmDialogTimer(dialog);
            return 0;
        case WM_COMMAND:
            TakeCommand(dialog, LOWORD(wParam), HIWORD(wParam));
            return 0;
        case WM_TIMER:
            Tick(dialog);
            return 0;
        case WM_DESTROY:
            StopDialogTimer(dialog);
            return 0;
        default:
            return 0;
    }
}

}  // namespace

void RunCorrectionsDialog() {
    RunDialog(IDD_CORRECTIONS, CorrectionsProc, CorrectionsDialogOpen);
}

void FillCorrectionsDialog(HWND window) {
    SetWindowTextA(window, LangTable[TitleLine].data());
    SetDialogTexts(window, Texts);
    std::array<char, 8> text{};
    for (const CorrectionRow& row : Corrections) {
        for (int entry = 0; entry <= MostField; ++entry) {
            const int number = row.first + entry * NumberStep;
            FormatText(text, number > 0 ? "+%ld" : "%ld", static_cast<long>(number));
            AddEntry(window, row.combo, text.data());
        }
    }
}

void RefreshCorrectionsDialog(HWND window) {
    if (!FamilyServed()) {
        return;
    }
    for (const CorrectionRow& row : Corrections) {
        const unsigned field = (CellValue(row.cell, ControllerFamily) & row.mask) >> row.shift;
        SelectEntry(window, row.combo, MostField - static_cast<int>(field));
    }
}
