#include <QApplication>
#include <QFileDialog>
#include <algorithm>
#include <array>
#include <filesystem>

#include "TuningBytes.h"
#include "link/Link.h"
#include "model/Blocks.h"
#include "resources/Ids.h"
#include "scope/OscilloscopePage.h"
#include "shell/AppState.h"
#include "tuning/TuningState.h"
#include "walk/Walk.h"

namespace walk {

namespace {

constexpr Moment EnoughTime = Second;
constexpr unsigned CommandCell = 30;

// What a place may ask for at a poll, and a control by which each dialog is known from those below it.
struct PlaceRow {
    Place place;
    const char* name;
    int control;
    std::vector<unsigned> reads;
};

const std::vector<PlaceRow> Places = {
    {Place::Readings, "Readings", 0, {1, 2, 3, 4}},
    {Place::Configuration, "Configuration", 0, {1, 2, 3, 4}},
    {Place::Options, "Options", 0, {1, 2, 3, 4}},
    {Place::Diagram, "Diagram", 0, {}},
    {Place::Reset, "Reset", 0, {}},
    {Place::Oscilloscope, "Oscilloscope", 0, {1, 2, 3}},
    {Place::Controller, "Controller information", IDC_INFO_VERSION, {1, 5}},
    {Place::Emulation, "Emulation", IDC_EMULATION_HI_LABEL, {1, 3}},
    {Place::GasLevel, "Gas level", IDC_GAS_FACTORY, {1, 3, 5}},
    {Place::Corrections, "Corrections", IDC_CORRECTION_DO_HIGH_LABEL, {1, 3, 5}},
    {Place::About, "About", IDC_ABOUT_NAME, {}},
    {Place::Port, "RS 232", IDC_PORTS, {}},
};

const PlaceRow& rowOf(Place place) {
    return *std::ranges::find(Places, place, &PlaceRow::place);
}

// What a control may write outside the lists and boxes of the tuning pages: these cells, and only this value if there
// is one.
struct Writer {
    Place place;
    int control;
    unsigned first;
    unsigned last;
    int value = -1;
};

const Writer Writers[] = {
    {Place::Readings, IDC_LEARN, CommandCell, CommandCell, 50},
    {Place::Reset, IDC_RESET_BUTTON, 5, 29},
    {Place::Reset, IDC_RESET_BUTTON, CommandCell, CommandCell, 51},
    {Place::Reset, IDC_RESET_BUTTON, 31, 37},
    {Place::Reset, IDC_RESET_BUTTON, 49, 49},
    {Place::Controller, IDC_INFO_REGISTRATION_BUTTON, 42, 48},
    {Place::Controller, IDC_INFO_HOURS_BUTTON, 38, 39, 0},
    {Place::Controller, IDC_INFO_HOURS_BUTTON, 49, 49, 0},
    {Place::Controller, IDC_INFO_DATE_BUTTON, 40, 41},
    {Place::Emulation, IDC_EMULATION_HI, 10, 10},
    {Place::Emulation, IDC_EMULATION_LO, 11, 11},
    {Place::GasLevel, IDC_GAS_SENSOR_TYPE, 5, 5},
    {Place::GasLevel, IDC_GAS_FACTORY, 33, 36},
    {Place::GasLevel, IDC_GAS_FACTORY, CommandCell, CommandCell, 52},
    {Place::GasLevel, IDC_GAS_PROG1_BAR, 33, 33},
    {Place::GasLevel, IDC_GAS_PROG2_BAR, 34, 34},
    {Place::GasLevel, IDC_GAS_PROG3_BAR, 35, 35},
    {Place::GasLevel, IDC_GAS_PROG4_BAR, 36, 36},
    {Place::Corrections, IDC_CORRECTION_BJ_LOW, 12, 12},
    {Place::Corrections, IDC_CORRECTION_BJ_HIGH, 12, 12},
    {Place::Corrections, IDC_CORRECTION_DO_LOW, 13, 13},
    {Place::Corrections, IDC_CORRECTION_DO_HIGH, 13, 13},
};

// The byte of which a masked control changes some bits.
unsigned heldByte(int cell) {
    return cell == 5 ? ParamBlockA[1] : cell == 6 ? ParamBlockA[2] : ParamBlockA[5];
}

// Whether one of the row's entries writes this value to this cell.
bool entryWrites(const Entries& row, unsigned cell, unsigned value) {
    const auto first = static_cast<unsigned>(row.cell);
    const bool masked = cell == first && row.mask != 0;
    if ((cell != first && !(row.twoCells && cell == first + 1)) ||
        (masked && ((value ^ heldByte(row.cell)) & ~row.mask & 0xFF) != 0)) {
        return false;
    }
    const unsigned seen = masked ? value & row.mask : value;
    return std::ranges::any_of(row.values,
                               [&](unsigned entry) { return (cell == first ? entry & 0xFF : entry >> 8) == seen; });
}

std::string hex(std::span<const BYTE> bytes) {
    const auto size = static_cast<qsizetype>(bytes.size());
    return " " + QByteArray(reinterpret_cast<const char*>(bytes.data()), size).toHex(' ').toStdString();
}

// But for the caches that Qt keeps open, and for what its threads wait on.
size_t openFiles() {
    namespace fs = std::filesystem;
    size_t count = 0;
    for (const fs::directory_entry& open : fs::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        const bool own = !fs::read_symlink(open, gone).string().starts_with("/usr/");
        count += own && (open.is_regular_file(gone) || open.is_character_file(gone));
    }
    return count;
}

}  // namespace

const layer::Window* dialogOnTop() {
    for (const layer::Window* window : layer::topLevels()) {
        if (window->modal && !window->ended) {
            return window;
        }
    }
    return nullptr;
}

// A page reads while it is made, before AppPage names it.
Place pageOnTop() {
    return GetDlgItem(PageWindow, IDC_SCOPE_CURSOR) ? Place::Oscilloscope : static_cast<Place>(AppPage);
}

// The place whose polls run.
Place asking() {
    const Place top = placeOnTop();
    return top == Place::Port ? pageOnTop() : top;
}

Place placeOnTop() {
    const layer::Window* dialog = dialogOnTop();
    for (const PlaceRow& row : Places) {
        if (dialog && row.control != 0 && GetDlgItem(dialog->handle, row.control)) {
            return row.place;
        }
    }
    return pageOnTop();
}

const char* nameOf(Place place) {
    return rowOf(place).name;
}

bool boxOnTop() {
    return layer::foreignDialog() != nullptr;
}

bool fileDialogOnTop() {
    return qobject_cast<QFileDialog*>(layer::foreignDialog()) != nullptr;
}

Watch::Watch(HeldClock& held, Line& watched) : clock(held), line(watched) {
    for (const auto& controller : line.controllers) {
        controller->observeBytes([this](std::span<const BYTE> bytes) { takeRequest(bytes); },
                                 [this](BYTE byte) { takeByte(byte); });
    }
}

void Watch::fail(const std::string& what) {
    if (fault.empty()) {
        fault = std::string("at ") + nameOf(placeOnTop()) + ": " + what;
    }
}

void Watch::takeByte(BYTE value) {
    const auto moment = static_cast<std::uint64_t>(clock.now() - HeldClock::Start);
    for (int shift = 0; shift < 64; shift += 8) {
        digest.add(static_cast<BYTE>(moment >> shift));
    }
    digest.add(value);
}

void Watch::noteInput(const layer::Window* met) {
    const Touch touch{placeOnTop(), met ? met->id : 0};
    touched.insert(touch);
    recent.insert(touch);
    fileFlow = fileFlow || boxOnTop();
}

void Watch::takeRequest(std::span<const BYTE> frame) {
    for (const BYTE byte : frame) {
        takeByte(byte);
    }
    if (frame.size() != 4 || frame[0] != 0x65 || frame[3] != static_cast<BYTE>(frame[0] + frame[1] + frame[2])) {
        fail("no frame:" + hex(frame));
        return;
    }
    const unsigned lastCommand = ControllerFamily == 2 ? 4 : 5;
    if (frame[1] == frame[2] && frame[1] <= lastCommand) {
        lastFrame = clock.now();
        ++polls;
        if (!mayRead(frame[1])) {
            fail("a read that nothing here asks for:" + hex(frame));
        }
        return;
    }
    lastWrite = clock.now();
    ++writes;
    const unsigned cell = frame[1] - (ControllerFamily == 4 ? 1u : 0u);
    if (!mayWrite(cell, frame[2])) {
        fail("a write that no input may cause:" + hex(frame));
    }
}

bool Watch::mayRead(unsigned command) const {
    // Saving, loading and the reset read all blocks.
    const layer::Window* focus = desktop::focusedWindow();
    return fileFlow || touched.contains({Place::Reset, IDC_RESET_BUTTON}) ||
           (placeOnTop() == Place::Reset && focus && focus->id == IDC_RESET_BUTTON) ||
           std::ranges::count(rowOf(asking()).reads, command) > 0;
}

bool Watch::mayWrite(const Touch& touch, unsigned cell, BYTE value) {
    const bool configuration = touch.place == Place::Configuration;
    if (configuration || touch.place == Place::Options) {
        // All versions of the firmware write alike, and until its first refresh a page offers what only some have.
        const int family = touch.control == IDC_OPTIONS_FULL_PANEL ? 4 : ControllerFamily;
        const auto rows = configuration ? configurationEntries(family) : optionsEntries(family, 5);
        return std::ranges::any_of(
            rows, [&](const Entries& row) { return row.id == touch.control && entryWrites(row, cell, value); });
    }
    return std::ranges::any_of(Writers, [&](const Writer& row) {
        return row.place == touch.place && row.control == touch.control && row.first <= cell && cell <= row.last &&
               (row.value < 0 || row.value == value);
    });
}

bool Watch::mayWrite(unsigned cell, BYTE value) const {
    const layer::Window* focus = desktop::focusedWindow();
    return (fileFlow && cell >= 5 && cell <= 37 && cell != CommandCell) ||
           (!touched.empty() && focus && mayWrite({placeOnTop(), focus->id}, cell, value)) ||
           std::ranges::any_of(touched, [&](const Touch& touch) { return mayWrite(touch, cell, value); });
}

void Watch::lookAtRest() {
    const Place top = placeOnTop();
    visited.insert(top);
    const State state{top, PageWindow, desktop::openList(), CursorMode, PortNumber};
    if (state != before) {
        before = state;
        changed = clock.now();
    }
    checkFlags();
    checkSound();
    countAll();
    if (!clock.hasInput()) {
        forgetTouches();
        fileFlow = boxOnTop();
    }
}

// A release may wait for a beat of its key, in rests of its own.
void Watch::forgetTouches() {
    if (clock.now() - forgotten > 50 * Millisecond) {
        forgotten = clock.now();
        touched = std::exchange(recent, {});
    }
}

// The program ends with its window, and what it then still has is the next one's.
void Watch::countAll() {
    counted = placeOnTop() == Place::Readings && !boxOnTop() && !desktop::openMenu() && !clock.hasInput();
    if (!counted) {
        return;
    }
    const std::map<std::string, size_t> now = {{"windows", layer::livingWindows()},
                                               {"menus", layer::livingMenus()},
                                               {"objects", layer::livingObjects()},
                                               {"contexts", layer::livingContexts()},
                                               {"timers", layer::livingTimers()},
                                               {"widgets", QApplication::allWidgets().size()},
                                               {"files", openFiles()}};
    if (std::exchange(hadWindow, MainWindow) != MainWindow) {
        had = now;
    }
    for (const auto& [kind, count] : now) {
        if (count != had[kind]) {
            fail(std::to_string(count) + " " + kind + " instead of " + std::to_string(had[kind]));
        }
    }
}

void Watch::checkFlags() {
    const Place top = placeOnTop();
    const auto expect = [&](const char* name, int flag, bool wanted) {
        if (flag != (wanted ? 1 : 0)) {
            fail(std::string(name) + " is " + std::to_string(flag));
        }
    };
    expect("DialogPause", DialogPause, top == Place::About || top == Place::Controller);
    expect("TuningDialogOpen", TuningDialogOpen, top == Place::Emulation || top == Place::GasLevel);
    expect("CorrectionsDialogOpen", CorrectionsDialogOpen, top == Place::Corrections);
    // A choice by key in an open list clears it.
    const bool tuning = top == Place::Configuration || top == Place::Options || top >= Place::Emulation;
    if (ComboOpen != 0 && !(tuning && desktop::openList())) {
        fail("ComboOpen is set and no list is open");
    }
}

void Watch::checkSound() {
    const Moment now = clock.now();
    const Place place = asking();
    if (line.inUse() && line.inUse()->isBusy()) {
        lastBusy = now;
    }
    const Moment since = std::max({line.soundSince(), changed, lastBusy});
    if (line.soundSince() == layer::Never || now - since < 2 * EnoughTime || rowOf(place).reads.empty() ||
        desktop::openList() || (place == Place::Oscilloscope && CursorMode != 0)) {
        return;
    }
    // A held bar keeps its dialog off the link.
    if (now - lastFrame > EnoughTime && place != Place::GasLevel) {
        fail("no poll for a second");
    }
    if (now - lastWrite > EnoughTime && now - changed > EnoughTime) {
        checkControls();
    }
}

void Watch::checkControls() {
    const Place top = placeOnTop();
    if (top != Place::Configuration && top != Place::Options) {
        return;
    }
    line.inUse()->with([&](simulator::Controller& controller) {
        const simulator::Bytes blockA = controller.block(3);
        if (!std::equal(blockA.begin(), blockA.end(), ParamBlockA.begin()) ||
            !std::ranges::equal(controller.block(4), ParamBlockB)) {
            fail("the mirrors are not what the controller holds:" + hex(ParamBlockA) + " |" + hex(ParamBlockB) +
                 " against" + hex(blockA) + " |" + hex(controller.block(4)));
        }
    });
    for (const Shown& row : top == Place::Configuration ? OnConfiguration : OnOptions) {
        const HWND control = GetDlgItem(PageWindow, row.id);
        // Which values these lists have hangs on the sensor.
        const bool other =
            (row.id == IDC_CONFIG_LAMBDA_POINT || row.id == IDC_OPTIONS_JUMP_VOLTS) && ParamBlockA[2] != 0;
        if ((row.family != 0 && row.family != ControllerFamily) || other || !IsWindowEnabled(control)) {
            continue;
        }
        const bool isList = layer::find(control)->kind == layer::Kind::Combo;
        const auto shown = static_cast<int>(SendMessageA(control, isList ? CB_GETCURSEL : BM_GETCHECK, 0, 0));
        if (shown != row.entry(*row.byte)) {
            fail("control " + std::to_string(row.id) + " shows " + std::to_string(shown) + " for " +
                 std::to_string(*row.byte));
        }
    }
}

}  // namespace walk
