#include "readings/ReadingsPage.h"

#include "link/Link.h"
#include "model/Cells.h"
#include "readings/ReadingsDrawing.h"
#include "readings/ReadingsModel.h"
#include "resources/Ids.h"
#include "shell/AppState.h"

unsigned ParamTickCount = 0;

namespace {

// Every fourth tick reads the parameter blocks too, so that the live values stay fast.
constexpr unsigned TicksPerParamRead = 4;
constexpr int LearnStoppedLine = 32;

void PaintPage(HWND window) {
    PlaceReadingsPage(window);
    SetTimer(window, PageTimer, TimerPeriod, nullptr);
}

void ReadDueBlocks() {
    ReadLiveBlock();
    if (++ParamTickCount >= TicksPerParamRead) {
        ReadParamBlockA();
        ReadParamBlockB();
        ParamTickCount = 0;
    }
}

}  // namespace

INT_PTR CALLBACK ReadingsProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            return 1;
        case WM_DESTROY:
            return 0;
        case WM_PAINT:
            PaintPage(window);
            return 0;
        case WM_COMMAND:
            if (LOWORD(wParam) == IDC_LEARN) {
                PressLearnButton();
            }
            return 0;
        case WM_TIMER:
            TickReadings();
            return 0;
        default:
            DefWindowProcA(window, message, wParam, lParam);
            return 0;
    }
}

void PlaceReadingsPage(HWND window) {
    SetWindowPos(window, nullptr, -5, -10, ProfileWidth, ProfileHeight, 0);
}

void TickReadings() {
    if (DialogPause != 0 || ComboOpen != 0) {
        return;
    }
    PollIdentity();
    if (LinkServed()) {
        ReadDueBlocks();
    }
    UpdateReadings();
    KeepTimer(PageWindow, PageTimer);
}

void UpdateReadings() {
    DrawReadings(EvaluateReadings());
}

void PressLearnButton() {
    DecodeIdentity();
    if (!LinkServed() || OnGas == 0) {
        return;
    }
    if (LearnRunning != 0) {
        DrawStatusNotice(LearnStoppedLine);
        StatusHold = 0;
        LearnRequested = 0;
    } else {
        LearnRequested = 1;
    }
    WriteCell(CommandCell, Command::ToggleLearning);
}
