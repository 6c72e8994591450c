// What the Configuration and the Options page share: each is a table with one row a control, and the procedures here
// are the loops over it. A new parameter is a row in the page's table, with its ids in resources/Ids.h and its place in
// resources/TuningPages.rc; a new kind of row or column is declared here.
//
// Every control writes through: a choice goes to the controller at once, and what the page then shows is what the next
// poll reads back. The procedures work on PageWindow and on the mirrors as last read.
#pragma once

#include <span>

#include "model/Choices.h"
#include "platform/Win32.h"

// A text that the language sets: control id, 0 for none, and line of LangTable.
struct TuningText {
    int id = 0;
    int line = 0;
};

enum class TuningKind : BYTE {
    List,
    Box,
    Button,
};

enum class WhenDisabled : BYTE {
    Shows,    // goes on showing its value
    Clears,   // shows no tick, though the bit may be set
    Ignores,  // keeps the tick that it had, and a click writes nothing
};

// One control. What a row leaves out does not apply to it.
struct TuningControl {
    TuningKind kind;
    int id;
    // The text of a box or button; the label and the unit beside it, which share its being enabled and shown. A unit
    // without a line is a text of the page's own.
    int line = 0;
    TuningText label = {};
    TuningText unit = {};

    // Entries of a list: one of these.
    const Choice& (*choice)() = nullptr;
    std::span<const char* const> texts = {};
    int firstEntryLine = 0;
    int entryLines = 0;
    // With what a new window's list is filled, if not with its choice.
    const Choice& (*firstChoice)() = nullptr;

    // The cell, by itself or by family. With a choice the list stands for all of it, both cells of a pair; else for
    // the bits of the mask, as the entry's number or by the table `values`, which rises from 0.
    unsigned cell = 0;
    unsigned (*cellOfFamily)(int family) = nullptr;
    BYTE mask = 0;
    bool inverted = false;  // a box that is ticked while its bit is clear
    std::span<const BYTE> values = {};

    bool (*enabled)() = nullptr;
    WhenDisabled whenDisabled = WhenDisabled::Shows;
    int shownBy = 0;  // the box whose tick shows the row

    // What else belongs to a choice, after its write: entry of a list, 1 for a box now ticked, 0 else.
    void (*chosen)(unsigned entry) = nullptr;
    // What else belongs to a refresh of the row.
    void (*refreshed)() = nullptr;
};

struct TuningPage {
    std::span<const TuningText> groups;
    std::span<const TuningControl> controls;  // in the order of the refresh
};

// A list that is always the same, as a row's choice.
template <ChoiceName name>
const Choice& Fixed() {
    return ChoiceOf(name);
}

// Fills the lists of a new window.
void FillTuningLists(const TuningPage& page);

// Sets all texts from LangTable.
void ApplyTuningTexts(const TuningPage& page);

// Brings every control into line with the mirrors; one that is so already is left alone. Raises no notification.
void RefreshTuning(const TuningPage& page);

// The dialog procedure of both pages, with the page's own tick: a notification of a control writes a choice to the
// controller and keeps ComboOpen, a paint starts the timer and puts the page over the client area.
INT_PTR TakeTuningMessage(const TuningPage& page, void (*tick)(), HWND window, UINT message, WPARAM wParam,
                          LPARAM lParam);

// The reads of one poll: the identity and, if the link serves, LiveBlock, ParamBlockA and ParamBlockB.
void PollTuningBlocks();
