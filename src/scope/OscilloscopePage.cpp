#include "scope/OscilloscopePage.h"

#include <array>

#include "dialogs/Dialogs.h"
#include "link/Link.h"
#include "resources/Ids.h"
#include "scope/ScopeCapture.h"
#include "scope/ScopeDrawing.h"
#include "shell/AppState.h"

int CursorMode = 0;
unsigned CursorPos = LowestCursor;
unsigned CursorPrevPos = 0;
unsigned ScopeParamsRead = 0;

namespace {

// Shorter than the exchanges of a tick, so that the link alone sets the pace, also while it is lost.
constexpr UINT ScopePeriod = 20;
constexpr unsigned CursorPage = 10;
constexpr int LinesPerNotch = 3;

constexpr Place AsInTemplate = {0, 0, 0, 0};

struct ControlPlaces {
    Place bar;
    Place box;
};

// By SizeProfile.
constexpr std::array<ControlPlaces, 5> Places = {{
    {{137, 0, 364, 20}, {490, 20, 550, 40}},
    {{180, 0, 440, 25}, AsInTemplate},
    {{235, 0, 548, 30}, {800, 0, 900, 25}},
    {{300, 10, 677, 40}, {1000, 0, 1100, 45}},
    {{300, 15, 677, 45}, {1000, 0, 1100, 50}},
}};

HWND CursorBar() {
    return GetDlgItem(PageWindow, IDC_SCOPE_CURSOR_BAR);
}

void PaintPage(HWND window) {
    SetTimer(window, PageTimer, TimerPeriod, nullptr);
    PAINTSTRUCT paint;
    BeginPaint(window, &paint);
    EndPaint(window, &paint);
    const ControlPlaces& places = Places[static_cast<size_t>(SizeProfile - 1)];
    PlaceControl(window, IDC_SCOPE_CURSOR_BAR, places.bar);
    if (places.box.width != AsInTemplate.width) {
        PlaceControl(window, IDC_SCOPE_CURSOR, places.box);
    }
    DrawScopeTraces();
}

void SwitchCursor() {
    CursorMode = SendDlgItemMessageA(PageWindow, IDC_SCOPE_CURSOR, BM_GETCHECK, 0, 0) == BST_CHECKED ? 1 : 0;
    ShowWindow(CursorBar(), CursorMode != 0 ? SW_SHOW : SW_HIDE);
    DrawScopeTraces();
}

// A step that leaves the range, also by wrapping below 0, ends where it was heading.
unsigned Bounded(unsigned position, unsigned end) {
    return position < LowestCursor || position > HighestCursor ? end : position;
}

unsigned ScrolledPosition(WORD code, WORD thumb) {
    switch (code) {
        case SB_THUMBTRACK:
            return thumb;
        case SB_PAGERIGHT:
            return Bounded(CursorPos + CursorPage, HighestCursor);
        case SB_PAGELEFT:
            return Bounded(CursorPos - CursorPage, LowestCursor);
        case SB_LINERIGHT:
            return Bounded(CursorPos + 1, HighestCursor);
        case SB_LINELEFT:
            return Bounded(CursorPos - 1, LowestCursor);
        default:
            return CursorPos;
    }
}

void ScrollCursor(WORD code, WORD thumb) {
    CursorPos = ScrolledPosition(code, thumb);
    SendMessageA(CursorBar(), SBM_SETPOS, CursorPos, TRUE);
}

// A notch of the wheel over the page is some steps of the bar.
void WheelCursor(short turned) {
    if (CursorMode == 0) {
        return;
    }
    for (int line = 0; line < LinesPerNotch; ++line) {
        ScrollCursor(turned > 0 ? SB_LINELEFT : SB_LINERIGHT, 0);
    }
}

void ReadDueBlocks() {
    PollIdentity();
    if (!LinkServed()) {
        ScopeParamsRead = 0;
        return;
    }
    ReadLiveBlock();
    if (ScopeParamsRead == 0) {
        ReadParamBlockA();
        ++ScopeParamsRead;
    }
}

void TickScope() {
    if (DialogPause != 0) {
        return;
    }
    if (CursorMode == 0) {
        ReadDueBlocks();
        SweepStep();
    } else {
        CursorStep();
    }
    TimerPeriod = ScopePeriod;
    KeepTimer(PageWindow, PageTimer);
}

}  // namespace

INT_PTR CALLBACK ScopeProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            ResetScopeBuffers();
            return 1;
        case WM_DESTROY:
            return 0;
        case WM_PAINT:
            PaintPage(window);
            return 0;
        case WM_COMMAND:
            if (LOWORD(wParam) == IDC_SCOPE_CURSOR && HIWORD(wParam) == BN_CLICKED) {
                SwitchCursor();
            }
            return 0;
        case WM_HSCROLL:
            ScrollCursor(LOWORD(wParam), HIWORD(wParam));
            return 0;
        case WM_MOUSEWHEEL:
            WheelCursor(static_cast<short>(HIWORD(wParam)));
            return 0;
        case WM_TIMER:
            TickScope();
            return 0;
        default:
            DefWindowProcA(window, message, wParam, lParam);
            return 0;
    }
}

void FillScopePage() {
    RedrawScope();
    SweepPos = FirstColumn;
}

void RedrawScope() {
    DrawScopeFrame();
    DrawScopeTraces();
}

void SweepStep() {
    if (CursorMode == 0 && LinkLost == 0) {
        DrawSweptColumn(CaptureColumn());
    }
    ScopeReadouts(SampleNow(), ScopeMoment::Now);
}

void CursorStep() {
    CursorPos = static_cast<unsigned>(SendMessageA(CursorBar(), SBM_GETPOS, 0, 0));
    DrawScopeCursor();
    ScopeReadouts(ScopeSamples[CursorPos], ScopeMoment::Stored);
}
