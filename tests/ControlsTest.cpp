// Combo boxes and modal dialogs of the layer, as their user works them.
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QTest>
#include <QWheelEvent>
#include <QWindow>
#include <algorithm>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "LayerWindows.h"
#include "User.h"
#include "resources/Ids.h"

namespace {

const std::map<WORD, std::string> Names = {{CBN_SELCHANGE, "SELCHANGE"},       {CBN_DROPDOWN, "DROPDOWN"},
                                           {CBN_CLOSEUP, "CLOSEUP"},           {CBN_SELENDOK, "SELENDOK"},
                                           {CBN_SELENDCANCEL, "SELENDCANCEL"}, {CBN_SETFOCUS, "SETFOCUS"},
                                           {CBN_KILLFOCUS, "KILLFOCUS"}};

HWND combo() {
    return GetDlgItem(openDialogWindow(), IDC_PORTS);
}

LRESULT selection() {
    return SendMessageA(combo(), CB_GETCURSEL, 0, 0);
}

bool listOpen() {
    return SendMessageA(combo(), CB_GETDROPPEDSTATE, 0, 0) != 0;
}

}  // namespace

// A dialog with a combo box, a default button and a hidden button; its procedure only notes what it is told.
class Controls : public Layer {
protected:
    static constexpr UINT OpenDialog = 0x0400;

    void SetUp() override {
        Layer::SetUp();
        frame = openFrame();
        handler = [this](HWND window, UINT message) {
            if (window == frame && message == OpenDialog) {
                result = DialogBoxParamA(nullptr, MAKEINTRESOURCEA(IDD_PORT), frame, recordDialog, 5);
                return true;
            }
            if (message == WM_COMMAND && LOWORD(seen.back().wParam) == IDC_PORTS) {
                told += Names.at(HIWORD(seen.back().wParam)) + "(" + std::to_string(selection()) + ") ";
            }
            return false;
        };
    }
    // Runs the steps in the dialog, which must end it.
    void inDialog(const std::vector<Step>& steps) {
        PostMessageA(frame, OpenDialog, 0, 0);
        run(steps);
    }
    // The commands that the dialog was told, but for those of its box.
    static std::string commands() {
        std::string all;
        for (const Seen& message : seen) {
            if (message.message == WM_COMMAND && LOWORD(message.wParam) != IDC_PORTS) {
                all += std::to_string(message.wParam) + " ";
            }
        }
        seen.clear();
        return all;
    }

    HWND frame = nullptr;
    INT_PTR result = 0;
    std::string told;
};

TEST_F(Controls, AComboBoxTellsWhatItsUserDoes) {
    // What a user or the program does to a box with the entries 0 to 15, of which 2 is selected.
    const std::map<std::string, std::function<void()>> acts = {
        {"open", [] { clickOn(combo()); }},
        {"down", [] { press(Qt::Key_Down); }},
        {"Enter", [] { press(Qt::Key_Return); }},
        {"Escape", [] { press(Qt::Key_Escape); }},
        {"space", [] { press(Qt::Key_Space); }},
        {"F4", [] { press(Qt::Key_F4); }},
        {"Alt+down", [] { press(Qt::Key_Down, Qt::AltModifier); }},
        {"Alt+up", [] { press(Qt::Key_Up, Qt::AltModifier); }},
        {"type7", [] { type(u'7'); }},
        {"type1", [] { type(u'1'); }},
        {"type5", [] { type(u'5'); }},
        {"click2", [] { clickEntry(2); }},
        {"click4", [] { clickEntry(4); }},
        {"hover5", [] { pointAt(5); }},
        // In the dialog's window, where its box and its buttons do not reach.
        {"click-beside",
         [] {
             clickAt(openDialogWindow(), {4, 4});
         }},
        {"wheel", [] { roll(combo(), -1); }},
        {"wheel-list", [] { roll(combo(), -1); }},
        {"CB_SETCURSEL7", [] { SendMessageA(combo(), CB_SETCURSEL, 7, 0); }},
        {"CB_SETCURSEL99", [] { EXPECT_EQ(SendMessageA(combo(), CB_SETCURSEL, 99, 0), CB_ERR); }},
        {"CB_ADDSTRING", [] { SendMessageA(combo(), CB_ADDSTRING, 0, reinterpret_cast<LPARAM>("new")); }},
        {"CB_RESETCONTENT", [] { SendMessageA(combo(), CB_RESETCONTENT, 0, 0); }},
        {"CB_SHOWDROPDOWN", [] { SendMessageA(combo(), CB_SHOWDROPDOWN, listOpen() ? FALSE : TRUE, 0); }},
    };
    struct Row {
        const char *acts, *told;
        LRESULT selected;
    };
    const Row rows[] = {
        {"type1 type5", "SELENDOK(10) SELCHANGE(10) SELENDOK(15) SELCHANGE(15) ", 15},
        {"open click4", "DROPDOWN(2) SELENDOK(4) CLOSEUP(4) SELCHANGE(4) ", 4},
        {"open click2", "DROPDOWN(2) SELENDOK(2) CLOSEUP(2) SELCHANGE(2) ", 2},
        {"open Escape", "DROPDOWN(2) SELENDCANCEL(2) CLOSEUP(2) ", 2},
        {"open click-beside", "DROPDOWN(2) SELENDCANCEL(2) CLOSEUP(2) ", 2},
        {"open hover5 Enter", "DROPDOWN(2) SELENDOK(5) CLOSEUP(5) SELCHANGE(5) ", 5},
        {"open Enter", "DROPDOWN(2) SELENDOK(2) CLOSEUP(2) ", 2},
        {"open down down Escape", "DROPDOWN(2) SELCHANGE(3) SELCHANGE(4) SELENDCANCEL(4) CLOSEUP(4) ", 4},
        {"open down down Enter", "DROPDOWN(2) SELCHANGE(3) SELCHANGE(4) SELENDOK(4) CLOSEUP(4) ", 4},
        {"open down click2", "DROPDOWN(2) SELCHANGE(3) SELENDOK(2) CLOSEUP(2) SELCHANGE(2) ", 2},
        {"open type7 Enter", "DROPDOWN(2) SELCHANGE(7) SELENDOK(7) CLOSEUP(7) ", 7},
        {"open wheel-list Escape", "DROPDOWN(2) SELENDCANCEL(2) CLOSEUP(2) ", 2},
        {"open down CB_SETCURSEL7 down Enter", "DROPDOWN(2) SELCHANGE(3) SELCHANGE(8) SELENDOK(8) CLOSEUP(8) ", 8},
        {"F4 hover5 F4", "DROPDOWN(2) SELENDCANCEL(2) CLOSEUP(2) ", 2},
        {"Alt+down down Alt+up", "DROPDOWN(2) SELCHANGE(3) SELENDCANCEL(3) CLOSEUP(3) ", 3},
        {"CB_SHOWDROPDOWN CB_SHOWDROPDOWN", "DROPDOWN(2) SELENDCANCEL(2) CLOSEUP(2) ", 2},
        {"down", "SELENDOK(3) SELCHANGE(3) ", 3},
        {"type7", "SELENDOK(7) SELCHANGE(7) ", 7},
        {"space", "", 2},
        {"wheel", "", 2},
        {"CB_SETCURSEL7", "", 7},
        {"CB_ADDSTRING", "", 2},
        {"CB_RESETCONTENT", "", CB_ERR},
        {"CB_SETCURSEL99", "", CB_ERR},
    };
    const auto tryAll = [&] {
        for (const Row& row : rows) {
            SendMessageA(combo(), CB_RESETCONTENT, 0, 0);
            for (int entry = 0; entry < 16; ++entry) {
                SendMessageA(combo(), CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(std::to_string(entry).c_str()));
            }
            EXPECT_EQ(selection(), CB_ERR) << "none until one is made";
            EXPECT_EQ(SendMessageA(combo(), CB_SETCURSEL, 2, 0), 2);
            SetFocus(combo());
            settle();
            told.clear();
            seen.clear();
            std::istringstream words(row.acts);
            for (std::string act; words >> act;) {
                acts.at(act)();
                settle();
            }
            EXPECT_EQ(told, row.told) << row.acts;
            EXPECT_EQ(selection(), row.selected) << row.acts;
            EXPECT_FALSE(listOpen()) << row.acts;
            EXPECT_EQ(commands(), "") << row.acts << ": a key of the list is not one of the dialog";
            // Only the first row types a word; letters of one row are not the beginning of the next row's.
            clock.pass(2 * Second);
        }
        EndDialog(openDialogWindow(), 1);
    };
    inDialog({{"dialog", dialogShown, tryAll}});
}

TEST_F(Controls, ADialogTakesItsKeys) {
    QImage asDefault;
    const auto focused = [](int id) { return [=] { return GetFocus() == GetDlgItem(openDialogWindow(), id); }; };
    const auto told = [](const char* command) {
        return [=] { return std::ranges::count(seen, WM_COMMAND, &Seen::message) > 0 && commands() == command; };
    };
    const auto close = [] { return widgetOf(GetDlgItem(openDialogWindow(), IDC_CLOSE)); };
    const auto tab = [] { press(Qt::Key_Tab); };
    const auto enter = [] { press(Qt::Key_Return); };
    const auto escape = [] { press(Qt::Key_Escape); };
    inDialog({{"dialog", dialogShown, [] { ShowWindow(GetDlgItem(openDialogWindow(), IDC_CANCEL), SW_SHOW); }},
              {"the first tab stop", focused(IDC_PORTS),
               [&] {
                   asDefault = close()->grab().toImage();
                   seen.clear();
                   enter();
               }},
              {"Enter for the default button", told("1 "), escape},
              {"Escape", told("2 "), tab},
              {"default button", focused(IDC_CLOSE), tab},
              {"other button", focused(IDC_CANCEL),
               [&] {
                   EXPECT_NE(close()->grab().toImage(), asDefault) << "no longer what Enter presses";
                   enter();
               }},
              {"Enter for the focused button", told("2 "), [] { press(Qt::Key_Space); }},
              {"space", told("2 "), tab},
              {"round", focused(IDC_PORTS), [] { press(Qt::Key_Tab, Qt::ShiftModifier); }},
              {"and back", focused(IDC_CANCEL), [] { widgetOf(openDialogWindow())->close(); }},
              {"the window's own button", told("2 "),
               [&] {
                   EnableWindow(GetDlgItem(openDialogWindow(), IDC_CLOSE), FALSE);
                   SetFocus(combo());
                   enter();
                   escape();
               }},
              {"a disabled default button stays unpressed", told("2 "), [] { EndDialog(openDialogWindow(), 77); }}});
    EXPECT_EQ(result, 77);
}
