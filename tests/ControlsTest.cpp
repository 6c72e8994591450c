// Combo boxes and modal dialogs of the layer, as their user works them.
#include <QKeySequence>
#include <sstream>

#include "LayerWindows.h"
#include "User.h"

namespace {

const std::map<WORD, std::string> Names = {{CBN_SELCHANGE, "SELCHANGE"},       {CBN_DROPDOWN, "DROPDOWN"},
                                           {CBN_CLOSEUP, "CLOSEUP"},           {CBN_SELENDOK, "SELENDOK"},
                                           {CBN_SELENDCANCEL, "SELENDCANCEL"}, {CBN_SETFOCUS, "SETFOCUS"},
                                           {CBN_KILLFOCUS, "KILLFOCUS"}};

HWND control(int id) {
    return GetDlgItem(openDialogWindow(), id);
}

LRESULT askBox(UINT message, int number = 0, const char* text = nullptr) {
    return SendMessageA(control(IDC_PORTS), message, static_cast<WPARAM>(number), reinterpret_cast<LPARAM>(text));
}

// What a user or the program does: a key, or a name and, behind a colon, a number.
void act(const std::string& word) {
    static const std::map<std::string, void (*)(int)> acts = {
        {"open", [](int) { clickOn(control(IDC_PORTS)); }},
        {"type", [](int digit) { type(static_cast<char16_t>(u'0' + digit)); }},
        {"click", clickEntry},
        {"point", pointAt},
        // In the dialog's window, where its box and its buttons do not reach.
        {"click-beside",
         [](int) {
             clickAt(openDialogWindow(), {4, 4});
         }},
        {"close", [](int) { widgetOf(openDialogWindow())->close(); }},
        {"wheel", [](int) { roll(control(IDC_PORTS), -1); }},
        {"CB_SETCURSEL", [](int entry) { EXPECT_EQ(askBox(CB_SETCURSEL, entry), entry == 99 ? CB_ERR : entry); }},
        {"CB_ADDSTRING", [](int) { askBox(CB_ADDSTRING, 0, "new"); }},
        {"CB_RESETCONTENT", [](int) { askBox(CB_RESETCONTENT); }}};
    const size_t end = word.find(':');
    if (const auto known = acts.find(word.substr(0, end)); known != acts.end()) {
        known->second(end == std::string::npos ? 0 : std::stoi(word.substr(end + 1)));
    } else {
        const QKeyCombination key = QKeySequence(QString::fromStdString(word))[0];
        press(key.key(), key.keyboardModifiers());
    }
    settle();
}

}  // namespace

// A dialog with a combo box, a default button and a hidden button; its procedure only notes what it is told.
class Controls : public Layer {
protected:
    // Does the steps in the dialog and ends it.
    void inDialog(const std::function<void()>& steps) {
        const HWND frame = openFrame();
        INT_PTR result = 0;
        handler = [&](HWND window, UINT message) {
            if (window == frame && message == Mark) {
                result = DialogBoxParamA(nullptr, MAKEINTRESOURCEA(IDD_PORT), frame, recordDialog, 5);
            } else if (message == WM_COMMAND && LOWORD(seen.back().wParam) == IDC_PORTS) {
                told += Names.at(HIWORD(seen.back().wParam)) + "(" + std::to_string(askBox(CB_GETCURSEL)) + ") ";
            } else if (message == WM_COMMAND) {
                commands += std::to_string(seen.back().wParam) + " ";
            }
            return false;
        };
        PostMessageA(frame, Mark, 0, 0);
        run({{"dialog", dialogShown, [&] {
                  steps();
                  EndDialog(openDialogWindow(), 77);
              }}});
        EXPECT_EQ(result, 77);
    }

    // What the dialog was told of its box, and the commands of all else.
    std::string told, commands;
};

TEST_F(Controls, AComboBoxTellsWhatItsUserDoes) {
    // On a box with the entries 0 to 15, of which 2 is selected.
    const struct {
        const char *acts, *told;
        LRESULT selected;
    } rows[] = {
        {"type:1 type:5", "SELENDOK(10) SELCHANGE(10) SELENDOK(15) SELCHANGE(15) ", 15},
        {"open click:4", "DROPDOWN(2) SELENDOK(4) CLOSEUP(4) SELCHANGE(4) ", 4},
        {"open click:2", "DROPDOWN(2) SELENDOK(2) CLOSEUP(2) SELCHANGE(2) ", 2},
        {"open click-beside", "DROPDOWN(2) SELENDCANCEL(2) CLOSEUP(2) ", 2},
        {"open point:5 Return", "DROPDOWN(2) SELENDOK(5) CLOSEUP(5) SELCHANGE(5) ", 5},
        {"open Return", "DROPDOWN(2) SELENDOK(2) CLOSEUP(2) ", 2},
        {"open Down Down Esc", "DROPDOWN(2) SELCHANGE(3) SELCHANGE(4) SELENDCANCEL(4) CLOSEUP(4) ", 4},
        {"open Down click:2", "DROPDOWN(2) SELCHANGE(3) SELENDOK(2) CLOSEUP(2) SELCHANGE(2) ", 2},
        {"open type:7 Return", "DROPDOWN(2) SELCHANGE(7) SELENDOK(7) CLOSEUP(7) ", 7},
        {"open wheel Esc", "DROPDOWN(2) SELENDCANCEL(2) CLOSEUP(2) ", 2},
        {"open Down CB_SETCURSEL:7 Down Return", "DROPDOWN(2) SELCHANGE(3) SELCHANGE(8) SELENDOK(8) CLOSEUP(8) ", 8},
        {"F4 point:5 F4", "DROPDOWN(2) SELENDCANCEL(2) CLOSEUP(2) ", 2},
        {"Alt+Down Down Alt+Up", "DROPDOWN(2) SELCHANGE(3) SELENDCANCEL(3) CLOSEUP(3) ", 3},
        {"Down", "SELENDOK(3) SELCHANGE(3) ", 3},
        {"Space wheel CB_ADDSTRING", "", 2},
        {"CB_SETCURSEL:7", "", 7},
        {"CB_RESETCONTENT", "", CB_ERR},
        {"CB_SETCURSEL:99", "", CB_ERR},
    };
    inDialog([&] {
        for (const auto& row : rows) {
            SCOPED_TRACE(row.acts);
            askBox(CB_RESETCONTENT);
            for (int entry = 0; entry < 16; ++entry) {
                askBox(CB_ADDSTRING, 0, std::to_string(entry).c_str());
            }
            EXPECT_EQ(askBox(CB_GETCURSEL), CB_ERR) << "none until one is made";
            act("CB_SETCURSEL:2");
            SetFocus(control(IDC_PORTS));
            told.clear();
            std::istringstream words(row.acts);
            for (std::string word; words >> word;) {
                act(word);
            }
            EXPECT_EQ(told, row.told);
            EXPECT_EQ(askBox(CB_GETCURSEL), row.selected);
            EXPECT_FALSE(askBox(CB_GETDROPPEDSTATE));
            EXPECT_EQ(commands, "") << "a key of the list is not one of the dialog";
            // Only the first row types a word; letters of one row are not the beginning of the next row's.
            clock.pass(2 * Second);
        }
    });
}

TEST_F(Controls, ADialogTakesItsKeys) {
    const struct {
        const char *what, *act, *commands;
        int focus;
    } rows[] = {
        {"the default button", "Return", "1 ", IDC_PORTS},
        {"cancel", "Esc", "2 ", IDC_PORTS},
        {"to the default button", "Tab", "", IDC_CLOSE},
        {"to the other button", "Tab", "", IDC_CANCEL},
        {"the focused button", "Return", "2 ", IDC_CANCEL},
        {"the focused button", "Space", "2 ", IDC_CANCEL},
        {"round", "Tab", "", IDC_PORTS},
        {"and back", "Shift+Tab", "", IDC_CANCEL},
        {"the window's own button", "close", "2 ", IDC_CANCEL},
        {"over the disabled default button", "Shift+Tab", "", IDC_PORTS},
        {"which stays unpressed", "Return", "", IDC_PORTS},
    };
    inDialog([&] {
        ShowWindow(control(IDC_CANCEL), SW_SHOW);
        EXPECT_EQ(GetFocus(), control(IDC_PORTS)) << "the first tab stop";
        const QImage asDefault = widgetOf(control(IDC_CLOSE))->grab().toImage();
        for (const auto& row : rows) {
            SCOPED_TRACE(row.what);
            commands.clear();
            act(row.act);
            EXPECT_EQ(commands, row.commands);
            EXPECT_EQ(GetFocus(), control(row.focus));
            if (row.focus == IDC_CANCEL) {
                EXPECT_NE(widgetOf(control(IDC_CLOSE))->grab().toImage(), asDefault) << "not what Enter presses";
            }
            if (row.act == std::string("close")) {
                EnableWindow(control(IDC_CLOSE), FALSE);
            }
        }
    });
}
