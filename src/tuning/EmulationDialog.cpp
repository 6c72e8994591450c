#include "tuning/EmulationDialog.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "dialogs/Dialogs.h"
#include "drawing/Palette.h"
#include "link/Link.h"
#include "model/Blocks.h"
#include "model/Cells.h"
#include "model/Choices.h"
#include "model/Text.h"
#include "resources/Ids.h"
#include "shell/AppState.h"
#include "tuning/DialogPoll.h"
#include "tuning/TuningState.h"

namespace {

// From process start to exit. The raw times last plotted, and 1 from a paint, which covers the plot, to the next one.
int PlottedHi = 0;
int PlottedLo = 0;
int PlotStale = 0;

constexpr size_t EmulationTypeLine = 43;
constexpr size_t WaveEntryLine = 61;

constexpr std::array Texts{
    DialogText{IDC_EMULATION_HI_LABEL, 44}, DialogText{IDC_EMULATION_LO_LABEL, 45},
    DialogText{IDC_EMULATION_HI_UNIT, 55},  DialogText{IDC_EMULATION_LO_UNIT, 56},
    DialogText{IDC_CLOSE, CloseLine},
};

struct TimeRow {
    int combo;
    unsigned cell;
};

constexpr std::array TimeRows{
    TimeRow{IDC_EMULATION_HI, ParamCell::EmulBJ_TimeHi},
    TimeRow{IDC_EMULATION_LO, ParamCell::EmulBJ_TimeLo},
};

const Choice& Times() {
    return ChoiceOf(ChoiceName::EmulationTime);
}

// The plot in pixels of the dialog.
constexpr RECT PlotArea{10, 10, 550, 165};
constexpr std::array<std::array<POINT, 3>, 2> ArrowHeads{{
    {{{42, 28}, {45, 20}, {48, 29}}},
    {{{532, 152}, {540, 155}, {531, 158}}},
}};
constexpr POINT VerticalTop{45, 20};
constexpr POINT Origin{45, 155};
constexpr POINT HorizontalEnd{540, 155};
constexpr int TickCount = 6;
constexpr int TickLeft = 40;
constexpr int TickRight = 50;
constexpr int TickBottom = 145;
constexpr int TickStep = 20;
constexpr int WaveLeft = 60;
constexpr int WaveHigh = 45;
constexpr int WaveLow = 145;
constexpr int WaveLimit = 480;

struct ScaleText {
    const char* text;
    int x;
    int y;
};

constexpr ScaleText UnitText{"[ V ]", 15, 15};
constexpr std::array Scale0To1{ScaleText{"0", 23, 135}, ScaleText{"1", 23, 35}};
constexpr std::array Scale08To16{ScaleText{"0.8", 15, 135}, ScaleText{"1.6", 15, 35}};
constexpr std::array Scale0To5{
    ScaleText{"0", 23, 135}, ScaleText{"1", 23, 115}, ScaleText{"2", 23, 95},
    ScaleText{"3", 23, 75},  ScaleText{"4", 23, 55},  ScaleText{"5", 23, 35},
};

std::span<const ScaleText> ScaleOf(int lambdaSensorType) {
    switch (lambdaSensorType) {
        case LambdaSensor::Volts0To1:
            return Scale0To1;
        case LambdaSensor::Volts08To16:
            return Scale08To16;
        default:
            return Scale0To5;
    }
}

void DrawLine(HDC dc, POINT from, POINT to) {
    MoveToEx(dc, from.x, from.y, nullptr);
    LineTo(dc, to.x, to.y);
}

void DrawScaleText(HDC dc, const ScaleText& text) {
    ExtTextOutA(dc, text.x, text.y, ETO_OPAQUE, nullptr, text.text, static_cast<UINT>(std::strlen(text.text)), nullptr);
}

void DrawScale(HDC dc) {
    SelectObject(dc, ColourBrush(Colour::Black));
    Rectangle(dc, PlotArea.left, PlotArea.top, PlotArea.right, PlotArea.bottom);
    SelectObject(dc, ColourPen(Colour::Grey));
    DrawLine(dc, VerticalTop, Origin);
    DrawLine(dc, Origin, HorizontalEnd);
    for (const auto& head : ArrowHeads) {
        Polyline(dc, head.data(), static_cast<int>(head.size()));
    }
    for (int tick = 0; tick < TickCount; ++tick) {
        const int y = TickBottom - tick * TickStep;
        DrawLine(dc, {TickLeft, y}, {TickRight, y});
    }
    SetTextColor(dc, ColourValue(Colour::White));
    SetBkColor(dc, ColourValue(Colour::Black));
    DrawScaleText(dc, UnitText);
    for (const ScaleText& text : ScaleOf(LambdaSensorType())) {
        DrawScaleText(dc, text);
    }
}

// One phase of the wave after the `drawn` points before it; returns how many there are then. The first point stands
// below or above the last one, so that the edge is upright.
int DrawPhase(HDC dc, int drawn, int raw, int y) {
    const int end = std::min(drawn + (raw >> 1) + 2, WaveLimit + 1);
    int back = 1;
    for (; drawn < end; ++drawn) {
        LineTo(dc, WaveLeft + drawn - back, y);
        back = 0;
    }
    return drawn;
}

void DrawWave(HDC dc) {
    SelectObject(dc, ColourPen(Colour::Yellow));
    MoveToEx(dc, WaveLeft, WaveHigh, nullptr);
    for (int drawn = 0; drawn < WaveLimit;) {
        drawn = DrawPhase(dc, drawn, PlottedHi, WaveHigh);
        drawn = DrawPhase(dc, drawn, PlottedLo, WaveLow);
    }
}

void InitDialog(HWND dialog) {
    CentreDialog(dialog);
    std::array<char, 16> entry{};
    for (const TimeRow& row : TimeRows) {
        for (unsigned index = 0; index < Times().entries; ++index) {
            EntryText(Times(), index, entry);
            AddEntry(dialog, row.combo, entry.data());
        }
    }
    SetDialogTexts(dialog, Texts);
    std::array<char, size_t{2} * LangLineSize> title{};
    FormatText(title, "%s:   %s", LangTable[EmulationTypeLine].data(), LangTable[WaveEntryLine].data());
    SetWindowTextA(dialog, title.data());
}

void PaintDialog(HWND dialog) {
    ArmDialogTimer(dialog);
    PlotStale = 1;
}

void RefreshPlot(HWND dialog) {
    const int high = ParamBlockA[ParamAByte::EmulBJ_TimeHi];
    const int low = ParamBlockA[ParamAByte::EmulBJ_TimeLo];
    if (high != PlottedHi || low != PlottedLo || PlotStale != 0) {
        PlotStale = 0;
        PlottedHi = high;
        PlottedLo = low;
        DrawEmulationPlot(dialog);
    }
}

void Tick(HWND dialog) {
    if (ComboOpen != 0) {
        return;
    }
    PollIdentity();
    if (LinkServed()) {
        ReadParamBlockA();
    }
    RefreshPlot(dialog);
    for (const TimeRow& row : TimeRows) {
        SelectEntry(dialog, row.combo, EntryOfRaw(Times(), CellValue(row.cell, ControllerFamily)));
    }
    KeepDialogTimer(dialog);
}

void TakeCommand(HWND dialog, WORD id, WORD news) {
    if (id == IDC_CLOSE || id == IDC_CANCEL) {
        CloseTuningDialog(dialog, id, TuningDialogOpen);
        return;
    }
    for (const TimeRow& row : TimeRows) {
        if (row.combo != id) {
            continue;
        }
        if (const int entry = ChosenEntry(dialog, id, news); entry != NoEntry) {
            WriteCell(row.cell, static_cast<BYTE>(RawOfEntry(Times(), static_cast<unsigned>(entry))));
        }
    }
}

INT_PTR CALLBACK EmulationProc(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    switch (message) {
        case WM_INITDIALOG:
            InitDialog(dialog);
            return 1;
        case WM_PAINT:
            PaintDialog(dialog);
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

void RunEmulationDialog() {
    RunDialog(IDD_EMULATION, EmulationProc, TuningDialogOpen);
}

void DrawEmulationPlot(HWND window) {
    const HDC dc = GetDC(window);
    DrawScale(dc);
    DrawWave(dc);
    ReleaseDC(window, dc);
}
