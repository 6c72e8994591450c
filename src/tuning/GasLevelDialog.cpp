#include "tuning/GasLevelDialog.h"

#include <algorithm>
#include <array>

#include "dialogs/Dialogs.h"
#include "drawing/Palette.h"
#include "link/Link.h"
#include "model/Blocks.h"
#include "model/Cells.h"
#include "resources/Ids.h"
#include "shell/AppState.h"
#include "tuning/DialogPoll.h"
#include "tuning/TuningState.h"

namespace {

// Prog1 to Prog4 with their controls, and where the value comes from and goes to.
struct ThresholdRow {
    int bar;
    int edit;
    unsigned cell;
    unsigned byte;  // in ParamBlockC
};

constexpr std::array Thresholds{
    ThresholdRow{IDC_GAS_PROG1_BAR, IDC_GAS_PROG1_EDIT, ParamCell::Prog1Family4, ParamCByte::Prog1},
    ThresholdRow{IDC_GAS_PROG2_BAR, IDC_GAS_PROG2_EDIT, ParamCell::Prog2, ParamCByte::Prog2},
    ThresholdRow{IDC_GAS_PROG3_BAR, IDC_GAS_PROG3_EDIT, ParamCell::Prog3, ParamCByte::Prog3},
    ThresholdRow{IDC_GAS_PROG4_BAR, IDC_GAS_PROG4_EDIT, ParamCell::Prog4, ParamCByte::Prog4},
};
constexpr int MostThreshold = 255;

// From process start to exit. GasThreshold, 0 to 255, in the order of Thresholds: the scroll bars move them and each
// tick overwrites them with what the controller holds. GasLevel, 0 to 7, is that of the last tick with family 4.
std::array<int, Thresholds.size()> GasThreshold{};
int GasLevel = 0;
// 1 from the first news of a scroll bar to its last: no tick may take the threshold from under the user's hand.
int ScrollbarDragging = 0;

constexpr size_t TitleLine = 39;
constexpr std::array<size_t, 3> SensorTypeLines{181, 182, 183};
constexpr std::array Texts{
    DialogText{IDC_GAS_FACTORY, 189},
    DialogText{IDC_GAS_SENSOR_LABEL, 52},
    DialogText{IDC_CLOSE, CloseLine},
};

// The bits of Options by entry of the sensor type list.
constexpr std::array<unsigned, SensorTypeLines.size()> SensorBits{OptionsBit::GasSensorType0,
                                                                  OptionsBit::GasSensorType1, 0};

// What the paint covers and therefore makes draw itself again, with the state in which it leaves it.
struct CoveredControl {
    int control;
    BOOL enabled;
};

constexpr std::array CoveredControls{
    CoveredControl{IDC_GAS_MARK_RESERVE, TRUE}, CoveredControl{IDC_GAS_MARK_1, TRUE},
    CoveredControl{IDC_GAS_MARK_2, TRUE},       CoveredControl{IDC_GAS_MARK_3, TRUE},
    CoveredControl{IDC_GAS_MARK_4, TRUE},       CoveredControl{IDC_GAS_FACTORY, FALSE},
    CoveredControl{IDC_GAS_PROG1_EDIT, FALSE},  CoveredControl{IDC_GAS_PROG2_EDIT, FALSE},
    CoveredControl{IDC_GAS_PROG3_EDIT, FALSE},  CoveredControl{IDC_GAS_PROG4_EDIT, FALSE},
    CoveredControl{IDC_GAS_PROG1_BAR, FALSE},   CoveredControl{IDC_GAS_PROG2_BAR, FALSE},
    CoveredControl{IDC_GAS_PROG3_BAR, FALSE},   CoveredControl{IDC_GAS_PROG4_BAR, FALSE},
};

constexpr RECT Ground{0, 0, 500, 260};

// The lamps from R up to 4/4, in pixels of the dialog.
constexpr int LampLeft = 20;
constexpr int LampRight = 40;
constexpr int LampHeight = 20;
constexpr std::array LampTops{198, 158, 118, 78, 38};

// Which lamps a level lights, as bits in the order of LampTops; a level that has no row lights none.
constexpr std::array<unsigned, 5> LampsOfLevel{0b00001, 0b00010, 0b00110, 0b01110, 0b11110};
constexpr unsigned NoLamps = 0;

const HBRUSH DimRed = CreateSolidBrush(RGB(128, 84, 79));

HBRUSH LampBrush(std::size_t lamp, bool lit) {
    if (lamp == 0) {
        return lit ? ColourBrush(Colour::Red) : DimRed;
    }
    return ColourBrush(lit ? Colour::Green : Colour::Olive);
}

void DrawLamps(HDC dc, unsigned lit) {
    for (std::size_t lamp = 0; lamp < LampTops.size(); ++lamp) {
        SelectObject(dc, LampBrush(lamp, (lit >> lamp & 1) != 0));
        Rectangle(dc, LampLeft, LampTops[lamp], LampRight, LampTops[lamp] + LampHeight);
    }
}

BYTE Options() {
    return ParamBlockA[ParamAByte::Options];
}

int SensorEntry() {
    if (Options() & OptionsBit::GasSensorType0) {
        return 0;
    }
    return Options() & OptionsBit::GasSensorType1 ? 1 : 2;
}

// Sensor type 0 has no thresholds, and no other family than this has any.
bool ThresholdsServed() {
    return !(Options() & OptionsBit::GasSensorType0) && ControllerFamily == Family4;
}

unsigned LitLamps() {
    const auto level = static_cast<std::size_t>(GasLevel);
    return LinkLost == 0 && ThresholdsServed() && level < LampsOfLevel.size() ? LampsOfLevel[level] : NoLamps;
}

void EnableThresholds(HWND dialog, BOOL enabled) {
    for (const ThresholdRow& row : Thresholds) {
        EnableWindow(GetDlgItem(dialog, row.bar), enabled);
        EnableWindow(GetDlgItem(dialog, row.edit), enabled);
    }
    EnableWindow(GetDlgItem(dialog, IDC_GAS_FACTORY), enabled);
}

void ShowBar(HWND dialog, std::size_t index) {
    SendDlgItemMessageA(dialog, Thresholds[index].bar, SBM_SETPOS, static_cast<WPARAM>(GasThreshold[index]), TRUE);
}

void ShowNumber(HWND dialog, std::size_t index, int number) {
    SetDlgItemInt(dialog, Thresholds[index].edit, static_cast<UINT>(number), FALSE);
}

void InitDialog(HWND dialog) {
    CentreDialog(dialog);
    for (std::size_t index = 0; index < Thresholds.size(); ++index) {
        SetScrollRange(GetDlgItem(dialog, Thresholds[index].bar), SB_CTL, 0, MostThreshold, TRUE);
        ShowNumber(dialog, index, 0);
    }
    SetWindowTextA(dialog, LangTable[TitleLine].data());
    SetDialogTexts(dialog, Texts);
    for (const size_t line : SensorTypeLines) {
        AddEntry(dialog, IDC_GAS_SENSOR_TYPE, LangTable[line].data());
    }
}

void PaintDialog(HWND dialog) {
    PAINTSTRUCT paint{};
    BeginPaint(dialog, &paint);
    EndPaint(dialog, &paint);
    ArmDialogTimer(dialog);
    const HDC dc = GetDC(dialog);
    SelectObject(dc, ColourPen(Colour::Grey));
    SelectObject(dc, ColourBrush(Colour::Grey));
    Rectangle(dc, Ground.left, Ground.top, Ground.right, Ground.bottom);
    SelectObject(dc, ColourPen(Colour::Black));
    DrawLamps(dc, NoLamps);
    ReleaseDC(dialog, dc);
    EnableWindow(GetDlgItem(dialog, IDC_CLOSE), TRUE);
    for (const CoveredControl& row : CoveredControls) {
        EnableWindow(GetDlgItem(dialog, row.control), row.enabled ? FALSE : TRUE);
        EnableWindow(GetDlgItem(dialog, row.control), row.enabled);
    }
}

void ReadBlocks() {
    ReadParamBlockA();
    if (LinkLost == 0 && ControllerFamily == Family4) {
        ReadParamBlockC();
        GasLevel = ParamBlockC[ParamCByte::GasLevel] & GasLevelMask;
    }
}

void Tick(HWND dialog) {
    if (ScrollbarDragging != 0 || ComboOpen != 0) {
        return;
    }
    PollIdentity();
    ReadBlocks();
    for (std::size_t index = 0; index < Thresholds.size(); ++index) {
        GasThreshold[index] = ParamBlockC[Thresholds[index].byte];
    }
    RefreshGasLevelDialog(dialog);
    KeepDialogTimer(dialog);
}

// The threshold after a scroll code, within 0 to 255; the same for a code that moves nothing.
int Scrolled(int value, WORD code, WORD position) {
    switch (code) {
        case SB_LINEUP:
            return std::max(value - 1, 0);
        case SB_LINEDOWN:
            return std::min(value + 1, MostThreshold);
        case SB_PAGEUP:
            return std::max(value - 10, 0);
        case SB_PAGEDOWN:
            return std::min(value + 10, MostThreshold);
        case SB_THUMBTRACK:
            return position;
        default:
            return value;
    }
}

bool MovesThreshold(WORD code) {
    return code <= SB_PAGEDOWN || code == SB_THUMBTRACK;
}
static_assert(SB_LINEUP == 0 && SB_LINEDOWN == 1 && SB_PAGEUP == 2 && SB_PAGEDOWN == 3);

void ScrollThreshold(HWND dialog, std::size_t index, WORD code, WORD position) {
    GasThreshold[index] = Scrolled(GasThreshold[index], code, position);
    if (MovesThreshold(code)) {
        ScrollbarDragging = 1;
    }
    ShowBar(dialog, index);
    if (code == SB_ENDSCROLL) {
        ShowNumber(dialog, index, GasThreshold[index]);
        WriteCell(Thresholds[index].cell, static_cast<BYTE>(GasThreshold[index]));
        ScrollbarDragging = 0;
    }
}

void TakeScroll(HWND dialog, HWND bar, WORD code, WORD position) {
    for (std::size_t index = 0; index < Thresholds.size(); ++index) {
        if (GetDlgItem(dialog, Thresholds[index].bar) == bar) {
            ScrollThreshold(dialog, index, code, position);
        }
    }
}

// The controller puts its thresholds back on the command; writing them to their cells is what makes them last.
void RestoreThresholds() {
    PollIdentity();
    if (ControllerFamily != Family4) {
        return;
    }
    WriteCell(CommandCell, Command::GasThresholdReset);
    ReadParamBlockC();
    for (const ThresholdRow& row : Thresholds) {
        WriteCell(row.cell, ParamBlockC[row.byte]);
    }
}

void TakeSensorType(HWND dialog, WORD news) {
    const int entry = ChosenEntry(dialog, IDC_GAS_SENSOR_TYPE, news);
    if (entry != NoEntry && FamilyServed() && CellKnown(ParamCell::Options, ControllerFamily)) {
        const unsigned others = Options() & ~static_cast<unsigned>(OptionsBit::GasSensorMask);
        WriteCell(ParamCell::Options, static_cast<BYTE>(others | SensorBits[static_cast<std::size_t>(entry)]));
    }
}

void TakeCommand(HWND dialog, WORD id, WORD news) {
    switch (id) {
        case IDC_CLOSE:
        case IDC_CANCEL:
            CloseTuningDialog(dialog, id, TuningDialogOpen);
            break;
        case IDC_GAS_SENSOR_TYPE:
            TakeSensorType(dialog, news);
            break;
        case IDC_GAS_FACTORY:
            RestoreThresholds();
            break;
        default:
            break;
    }
}

INT_PTR CALLBACK GasLevelProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            InitDialog(dialog);
            return 1;
        case WM_PAINT:
            PaintDialog(dialog);
            return 1;
        case WM_COMMAND:
            TakeCommand(dialog, LOWORD(wParam), HIWORD(wParam));
            return 0;
        case WM_HSCROLL:
            TakeScroll(dialog, reinterpret_cast<HWND>(lParam), LOWORD(wParam), HIWORD(wParam));
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

void RunGasLevelDialog() {
    ScrollbarDragging = 0;
    RunDialog(IDD_GAS_LEVEL, GasLevelProc, TuningDialogOpen);
}

void RefreshGasLevelDialog(HWND window) {
    SelectEntry(window, IDC_GAS_SENSOR_TYPE, SensorEntry());
    const bool served = ThresholdsServed();
    EnableThresholds(window, served ? TRUE : FALSE);
    for (std::size_t index = 0; index < Thresholds.size(); ++index) {
        ShowNumber(window, index, served ? GasThreshold[index] : 0);
        if (served) {
            ShowBar(window, index);
        }
    }
    const HDC dc = GetDC(window);
    DrawLamps(dc, LitLamps());
    ReleaseDC(window, dc);
}
