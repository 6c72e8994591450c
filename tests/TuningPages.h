// What the tests of the Configuration and the Options page share: the page's controls by id, and the program with the
// page at rest.
#pragma once

#include <QComboBox>
#include <array>
#include <initializer_list>
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

inline HWND control(int id) {
    return GetDlgItem(PageWindow, id);
}

inline LRESULT ask(int id, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    return SendMessageA(control(id), message, wParam, lParam);
}

inline bool isList(int id) {
    return qobject_cast<QComboBox*>(widgetOf(control(id))) != nullptr;
}

inline void notify(int id, int code) {
    SendMessageA(PageWindow, WM_COMMAND, MAKEWPARAM(id, code), reinterpret_cast<LPARAM>(control(id)));
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

inline void tick() {
    SendMessageA(PageWindow, WM_TIMER, 1, 0);
}

inline void stopTimer() {
    KillTimer(PageWindow, 1);
}

inline std::string textOf(int id) {
    std::array<char, LangLineSize> text{};
    GetWindowTextA(control(id), text.data(), static_cast<int>(text.size()));
    return text.data();
}

inline std::string entryOf(int id, int entry) {
    std::array<char, LangLineSize> text{};
    ask(id, CB_GETLBTEXT, static_cast<WPARAM>(entry), reinterpret_cast<LPARAM>(text.data()));
    return text.data();
}

inline std::string line(int number) {
    return LangTable[static_cast<size_t>(number)].data();
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
}

class TuningPages : public WindowFixture {
protected:
    void plug(int family, int firmware) {
        simulator::Config config;
        config.family = family;
        config.firmware = firmware;
        config.wirePace = false;
        config.clockRuns = false;
        config.scenario = simulator::Scenario::Idle;
        config.portLink = folder / "ports/COM1";
        server = std::make_unique<simulator::Server>(config);
    }
    // Leaves the page at rest: from here on it ticks when told.
    void open(UINT page) {
        SendMessageA(MainWindow, WM_COMMAND, page, 0);
        settle();
        stopTimer();
        tick();
        sent();
    }
    void connect(int family, int firmware, UINT page) {
        plug(family, firmware);
        writeIni(1, "ang");
        start();
        ASSERT_TRUE(pumpUntil([=] { return LinkLost == 0 && ControllerFamily == family; }));
        EXPECT_EQ(FirmwareVersion, firmware);
        open(page);
    }
    // All that the controller was sent since this was last asked.
    std::string sent() const {
        std::string all;
        for (const simulator::LogEntry& entry : server->log()) {
            all += (all.empty() ? "" : ", ") + hex({entry.request.bytes.begin(), entry.request.bytes.end()});
        }
        server->clearLog();
        return all;
    }
};
