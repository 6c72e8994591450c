// What the tests of the tuning pages and their dialogs share: the controls by id of the dialog on top, if there is one,
// otherwise of the page; and the program with the page at rest.
#pragma once

#include <QComboBox>
#include <set>
#include <string>

#include "User.h"
#include "link/Link.h"
#include "model/Blocks.h"
#include "resources/Ids.h"
#include "shell/AppState.h"

using Ids = std::set<int>;

inline BYTE* const A = ParamBlockA.data();
inline BYTE* const B = ParamBlockB.data();
inline BYTE* const L = LiveBlock.data();

inline HWND topWindow() {
    const HWND dialog = openDialogWindow();
    return dialog ? dialog : PageWindow;
}

inline HWND control(int id) {
    return GetDlgItem(topWindow(), id);
}

inline LRESULT ask(int id, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    return SendMessageA(control(id), message, wParam, lParam);
}

inline bool isList(int id) {
    return qobject_cast<QComboBox*>(widgetOf(control(id))) != nullptr;
}

inline void notify(int id, int code) {
    SendMessageA(topWindow(), WM_COMMAND, MAKEWPARAM(id, code), reinterpret_cast<LPARAM>(control(id)));
}

// Without a notification, as the page itself does it.
inline void select(int id, int entry) {
    ask(id, isList(id) ? CB_SETCURSEL : BM_SETCHECK, static_cast<WPARAM>(entry));
}

inline int selected(int id) {
    return static_cast<int>(ask(id, isList(id) ? CB_GETCURSEL : BM_GETCHECK));
}

inline void pick(int id, unsigned entry) {
    select(id, static_cast<int>(entry));
    notify(id, isList(id) ? CBN_SELCHANGE : BN_CLICKED);
}

// The pages' timer is number 1, that of the dialogs number 2.
inline UINT_PTR timerOnTop() {
    return topWindow() == PageWindow ? 1 : 2;
}

inline void tick(int rounds = 1) {
    for (int round = 0; round < rounds; ++round) {
        SendMessageA(topWindow(), WM_TIMER, timerOnTop(), 0);
    }
}

inline void stopTimer() {
    KillTimer(topWindow(), timerOnTop());
}

inline std::string textOf(int id) {
    return textOf(control(id));
}

inline std::string entryOf(int id, int entry) {
    return boxOf(control(id)).itemText(entry).toStdString();
}

inline int entriesOf(int id) {
    return static_cast<int>(ask(id, CB_GETCOUNT));
}

// All controls of the page that have an id, or those of which something does not hold.
inline Ids controls(BOOL (*holds)(HWND) = nullptr) {
    Ids ids;
    for (int id = 1000; id < 1300; ++id) {
        if (control(id) && !(holds && holds(control(id)))) {
            ids.insert(id);
        }
    }
    return ids;
}

inline void clearMirrors() {
    LiveBlock = {};
    ParamBlockA = {};
    ParamBlockB = {};
    ParamBlockC = {};
}

// A write by the cell's number on the wire; the value's low byte.
inline std::string cellFrame(unsigned number, unsigned value) {
    const auto byte = [](unsigned whole) { return static_cast<std::uint8_t>(whole); };
    return hex({0x65, byte(number), byte(value), byte(0x65 + number + value)});
}

// With the mouse: an entry of a list; a box has but its other state.
inline void chooseByMouse(int id, int entry) {
    ASSERT_TRUE(pumpUntil([=] { return IsWindowVisible(control(id)) && IsWindowEnabled(control(id)); }));
    clickOn(control(id));
    if (isList(id)) {
        ASSERT_TRUE(pumpUntil([=] { return listOpen(control(id)) && ComboOpen == 1; }));
        clickEntry(entry);
        ASSERT_TRUE(pumpUntil([=] { return !listOpen(control(id)) && ComboOpen == 0; }));
    }
}

class TuningPages : public WindowFixture {
protected:
    // Leaves the page at rest: from here on it ticks when told.
    void open(UINT page) {
        SendMessageA(MainWindow, WM_COMMAND, page, 0);
        settle();
        stopTimer();
        tick();
        sent();
    }
    void connect(int family, int firmware, UINT page) {
        startOn(family, firmware);
        open(page);
    }
};
