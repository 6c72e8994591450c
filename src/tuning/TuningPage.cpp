#include "tuning/TuningPage.h"

#include <algorithm>
#include <array>
#include <bit>

#include "dialogs/Dialogs.h"
#include "link/Link.h"
#include "model/Cells.h"
#include "model/Codecs.h"
#include "shell/AppState.h"
#include "tuning/DialogPoll.h"

namespace {

const char* Line(int line) {
    return LangTable[static_cast<size_t>(line)].data();
}

LRESULT Ask(int id, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    return SendDlgItemMessageA(PageWindow, id, message, wParam, lParam);
}

bool Ticked(int box) {
    return Ask(box, BM_GETCHECK) == static_cast<LRESULT>(BST_CHECKED);
}

bool Enabled(const TuningControl& control) {
    return control.enabled == nullptr || control.enabled();
}

unsigned CellOf(const TuningControl& control) {
    return control.cellOfFamily == nullptr ? control.cell : control.cellOfFamily(ControllerFamily);
}

void AddChoice(int list, const Choice& choice) {
    std::array<char, LangLineSize> text{};
    for (unsigned entry = 0; entry < choice.entries; ++entry) {
        EntryText(choice, entry, text);
        AddEntry(PageWindow, list, text.data());
    }
}

void FillList(const TuningControl& control) {
    for (const char* text : control.texts) {
        AddEntry(PageWindow, control.id, text);
    }
    for (int entry = 0; entry < control.entryLines; ++entry) {
        AddEntry(PageWindow, control.id, Line(control.firstEntryLine + entry));
    }
    if (control.choice != nullptr) {
        AddChoice(control.id, control.firstChoice == nullptr ? control.choice() : control.firstChoice());
    }
}

// The entry of a list, maybe past its end, or 1 for a tick.
int StoredEntry(const TuningControl& control) {
    const unsigned cell = CellOf(control);
    if (control.choice != nullptr) {
        const Choice& choice = control.choice();
        return EntryOfRaw(choice, StoredRaw(choice, cell, ControllerFamily));
    }
    const unsigned value = (CellValue(cell, ControllerFamily) & control.mask) >> std::countr_zero(control.mask);
    if (!control.values.empty()) {
        // A value between two of the table reads as the lower one.
        return static_cast<int>(std::ranges::upper_bound(control.values, value) - control.values.begin()) - 1;
    }
    return static_cast<int>(control.inverted ? value ^ 1u : value);
}

void WriteEntry(const TuningControl& control, unsigned entry) {
    const unsigned cell = CellOf(control);
    if (control.choice != nullptr) {
        const Choice& choice = control.choice();
        const unsigned raw = RawOfEntry(choice, entry);
        WriteCell(cell, LowByte(raw));
        if (choice.twoCells) {
            WriteCell(cell + 1, HighByte(raw));
        }
        return;
    }
    if (!CellKnown(cell, ControllerFamily)) {
        return;
    }
    const unsigned code = control.values.empty() ? entry : control.values[entry];
    const unsigned value = control.inverted ? code ^ 1u : code;
    const unsigned others = CellValue(cell, ControllerFamily) & ~static_cast<unsigned>(control.mask);
    WriteCell(cell, LowByte(others | value << std::countr_zero(control.mask)));
}

void Choose(const TuningControl& control, unsigned entry) {
    if (control.whenDisabled == WhenDisabled::Ignores && !Enabled(control)) {
        return;
    }
    if (control.kind != TuningKind::Button) {
        WriteEntry(control, entry);
    }
    if (control.chosen != nullptr) {
        control.chosen(entry);
    }
}

// A stale list is told by its number of entries, which differs between all lists that a control may hold.
void RefreshList(const TuningControl& list) {
    LRESULT count = Ask(list.id, CB_GETCOUNT);
    if (list.choice != nullptr && count != static_cast<LRESULT>(list.choice().entries)) {
        Ask(list.id, CB_RESETCONTENT);
        AddChoice(list.id, list.choice());
        count = Ask(list.id, CB_GETCOUNT);
    }
    // A value past the end selects nothing.
    const int stored = StoredEntry(list);
    const int entry = stored < count ? stored : -1;
    if (Ask(list.id, CB_GETCURSEL) != entry) {
        Ask(list.id, CB_SETCURSEL, static_cast<WPARAM>(entry));
    }
}

void RefreshBox(const TuningControl& box) {
    const bool enabled = Enabled(box);
    if (!enabled && box.whenDisabled == WhenDisabled::Ignores) {
        return;
    }
    const bool tick = (enabled || box.whenDisabled == WhenDisabled::Shows) && StoredEntry(box) != 0;
    if (Ticked(box.id) != tick) {
        Ask(box.id, BM_SETCHECK, tick ? BST_CHECKED : BST_UNCHECKED);
    }
}

void RefreshControl(const TuningControl& control) {
    const std::array row{control.id, control.label.id, control.unit.id};
    const bool enabled = Enabled(control);
    const bool shown = control.shownBy == 0 || Ticked(control.shownBy);
    for (const int id : row) {
        if (id != 0 && control.enabled != nullptr) {
            EnableControl(PageWindow, id, enabled);
        }
        if (id != 0 && control.shownBy != 0) {
            ShowControl(PageWindow, id, shown);
        }
    }
    if (control.kind == TuningKind::List) {
        RefreshList(control);
    } else if (control.kind == TuningKind::Box) {
        RefreshBox(control);
    }
    if (control.refreshed != nullptr) {
        control.refreshed();
    }
}

void ApplyText(const TuningText& text) {
    if (text.id != 0 && text.line != 0) {
        SetDlgItemTextA(PageWindow, text.id, Line(text.line));
    }
}

void TakeTuningCommand(const TuningPage& page, WPARAM wParam) {
    const WORD id = LOWORD(wParam);
    const WORD code = HIWORD(wParam);
    const auto control = std::ranges::find(page.controls, id, &TuningControl::id);
    if (control == page.controls.end()) {
        return;
    }
    if (control->kind == TuningKind::List) {
        const int entry = ChosenEntry(PageWindow, id, code);
        if (entry != NoEntry) {
            Choose(*control, static_cast<unsigned>(entry));
        }
    } else if (code == BN_CLICKED) {
        Choose(*control, Ticked(id) ? 1 : 0);
    }
}

void PaintTuningPage(HWND window) {
    SetTimer(window, PageTimer, TimerPeriod, nullptr);
    PAINTSTRUCT paint;
    BeginPaint(window, &paint);
    EndPaint(window, &paint);
    SetWindowPos(window, nullptr, 0, 0, ProfileWidth, ProfileHeight, 0);
}

}  // namespace

void FillTuningLists(const TuningPage& page) {
    for (const TuningControl& control : page.controls) {
        FillList(control);
    }
}

void ApplyTuningTexts(const TuningPage& page) {
    for (const TuningText& group : page.groups) {
        ApplyText(group);
    }
    for (const TuningControl& control : page.controls) {
        ApplyText({control.id, control.line});
        ApplyText(control.label);
        ApplyText(control.unit);
    }
}

void RefreshTuning(const TuningPage& page) {
    for (const TuningControl& control : page.controls) {
        RefreshControl(control);
    }
}

void PollTuningBlocks() {
    PollIdentity();
    if (LinkServed()) {
        ReadLiveBlock();
        ReadParamBlockA();
        ReadParamBlockB();
    }
}

INT_PTR TakeTuningMessage(const TuningPage& page, void (*tick)(), HWND window, UINT message, WPARAM wParam,
                          LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            return 1;
        case WM_DESTROY:
            return 0;
        case WM_PAINT:
            PaintTuningPage(window);
            return 0;
        case WM_COMMAND:
            TakeTuningCommand(page, wParam);
            return 0;
        case WM_TIMER:
            tick();
            return 0;
        default:
            DefWindowProcA(window, message, wParam, lParam);
            return 0;
    }
}
