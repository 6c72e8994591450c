#include "service/ResetPage.h"

#include "dialogs/Dialogs.h"
#include "link/Link.h"
#include "model/Blocks.h"
#include "model/Cells.h"
#include "resources/Ids.h"
#include "shell/AppState.h"

std::array<RestoreRow, RestoreSteps> RestoreTable{};

namespace {

constexpr DWORD Family2ResetDelay = 250;
constexpr size_t EchoByte = 1;

constexpr std::array Texts{
    DialogText{IDC_RESET_HEADING, 134},
    DialogText{IDC_RESET_EXPLANATION, 135},
    DialogText{IDC_RESET_BUTTON, 136},
};

struct Box {
    size_t line;
    UINT icon;
};
constexpr size_t CaptionLine = 137;
constexpr Box Refused = {200, MB_ICONHAND};
constexpr Box Done = {138, MB_ICONINFORMATION};
constexpr Box Failed = {139, MB_ICONEXCLAMATION};

void Show(const Box& box) {
    MessageBoxA(PageWindow, LangTable[box.line].data(), LangTable[CaptionLine].data(), MB_OK | box.icon);
}

struct PlacedControl {
    int id;
    Place place;
};
constexpr size_t PlacedCount = 4;

// By SizeProfile.
constexpr std::array<std::array<PlacedControl, PlacedCount>, 5> Places = {{
    {{{IDC_RESET_HEADING, {65, 90, 800, 40}},
      {IDC_RESET_EXPLANATION, {65, 130, 800, 40}},
      {IDC_RESET_BUTTON, {85, 190, 450, 45}},
      {IDC_RESET_PROGRESS, {85, 250, 450, 25}}}},
    {{{IDC_RESET_HEADING, {150, 130, 800, 40}},
      {IDC_RESET_EXPLANATION, {150, 170, 800, 40}},
      {IDC_RESET_BUTTON, {120, 250, 550, 55}},
      {IDC_RESET_PROGRESS, {120, 320, 550, 30}}}},
    {{{IDC_RESET_HEADING, {250, 150, 800, 40}},
      {IDC_RESET_EXPLANATION, {250, 200, 800, 40}},
      {IDC_RESET_BUTTON, {150, 300, 700, 65}},
      {IDC_RESET_PROGRESS, {150, 390, 700, 40}}}},
    {{{IDC_RESET_HEADING, {360, 250, 800, 40}},
      {IDC_RESET_EXPLANATION, {360, 300, 800, 40}},
      {IDC_RESET_BUTTON, {220, 400, 800, 75}},
      {IDC_RESET_PROGRESS, {220, 500, 800, 50}}}},
    {{{IDC_RESET_HEADING, {360, 300, 800, 40}},
      {IDC_RESET_EXPLANATION, {360, 350, 800, 40}},
      {IDC_RESET_BUTTON, {220, 450, 800, 75}},
      {IDC_RESET_PROGRESS, {220, 550, 800, 50}}}},
}};

void InitPage(HWND window) {
    SendDlgItemMessageA(window, IDC_RESET_PROGRESS, PBM_SETRANGE, 0, MAKELPARAM(0, RestoreSteps - 1));
}

void PaintPage(HWND window) {
    PAINTSTRUCT paint;
    BeginPaint(window, &paint);
    EndPaint(window, &paint);
    ApplyResetTexts();
    PlaceResetPage();
}

// At once, since no message of the bar's own runs before the reset ends.
void ShowProgress(size_t step) {
    const HWND bar = GetDlgItem(PageWindow, IDC_RESET_PROGRESS);
    SendMessageA(bar, PBM_SETPOS, step, 0);
    UpdateWindow(bar);
}

void SendResetCommand() {
    WriteCell(CommandCell, Command::FactoryReset);
}

// The controller is busy for longer than a reply may take; a missing reply must not pass for an older one.
const Box& ResetFamily2() {
    WriteReply[EchoByte] = 0;
    WriteDelay = Family2ResetDelay;
    SendResetCommand();
    WriteDelay = 0;
    return WriteReply[EchoByte] == Command::FactoryReset ? Done : Failed;
}

// All parameters, without the command cell between them, and the minutes on gas, as the controller now reports them.
void BuildRestoreTable() {
    size_t step = 0;
    const auto add = [&](unsigned cell) { RestoreTable[step++] = {cell, CellValue(cell, Family4)}; };
    for (unsigned cell = ParamCell::Options; cell <= ParamCell::WOZG; ++cell) {
        if (cell != CommandCell) {
            add(cell);
        }
    }
    add(ParamCell::Minutes);
}
static_assert(ParamCell::WOZG - ParamCell::Options + 1 == RestoreSteps, "Minutes stands in for the command cell");

const Box& ResetFamily4() {
    SendResetCommand();
    ReadLiveBlock();
    ReadParamBlockA();
    ReadParamBlockB();
    ReadParamBlockC();
    BuildRestoreTable();
    for (size_t step = 0; step < RestoreTable.size(); ++step) {
        WriteCell(RestoreTable[step].cell, RestoreTable[step].value);
        if (WriteReply[EchoByte] != RestoreTable[step].value) {
            return Failed;
        }
        ShowProgress(step);
    }
    return Done;
}

// Nothing is written while the engine runs, and nothing at all without a controller that is served.
void RestoreFactorySettings() {
    ShowProgress(0);
    PollIdentity();
    ReadLiveBlock();
    if ((LiveBlock[LiveByte::EngineState] & EngineStateBit::EngineOn) != 0) {
        Show(Refused);
    } else if (ControllerFamily == Family2) {
        Show(ResetFamily2());
    } else if (ControllerFamily == Family4) {
        Show(ResetFamily4());
    }
}

}  // namespace

INT_PTR CALLBACK ResetProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            InitPage(window);
            return 1;
        case WM_PAINT:
            PaintPage(window);
            return 0;
        case WM_COMMAND:
            if (LOWORD(wParam) == IDC_RESET_BUTTON) {
                RestoreFactorySettings();
            }
            return 0;
        case WM_DESTROY:
        case WM_TIMER:
            return 0;
        default:
            DefWindowProcA(window, message, wParam, lParam);
            return 0;
    }
}

void ApplyResetTexts() {
    SetDialogTexts(PageWindow, Texts);
}

void PlaceResetPage() {
    SetWindowPos(PageWindow, nullptr, 0, 0, ProfileWidth, ProfileHeight, 0);
    for (const PlacedControl& control : Places[static_cast<size_t>(SizeProfile - 1)]) {
        PlaceControl(PageWindow, control.id, control.place);
    }
}
