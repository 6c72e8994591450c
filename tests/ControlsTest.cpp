// Combo boxes and modal dialogs of the layer, as their user works them.
#include <QWidget>
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

HWND control(int id) {
    return GetDlgItem(openDialogWindow(), id);
}

LRESULT tell(UINT message, int number = 0, const char* text = nullptr) {
    return SendMessageA(control(IDC_PORTS), message, static_cast<WPARAM>(number), reinterpret_cast<LPARAM>(text));
}

LRESULT selection() {
    return tell(CB_GETCURSEL);
}

// What a user or the program does to a box: a name and, behind a colon, a number.
void act(const std::string& word) {
    static const std::map<std::string, std::pair<Qt::Key, Qt::KeyboardModifiers>> keys = {
        {"down", {Qt::Key_Down, {}}},
        {"Enter", {Qt::Key_Return, {}}},
        {"Escape", {Qt::Key_Escape, {}}},
        {"space", {Qt::Key_Space, {}}},
        {"F4", {Qt::Key_F4, {}}},
        {"Alt+down", {Qt::Key_Down, Qt::AltModifier}},
        {"Alt+up", {Qt::Key_Up, Qt::AltModifier}}};
    static const std::map<std::string, void (*)(int)> acts = {
        {"open", [](int) { clickOn(control(IDC_PORTS)); }},
        {"type", [](int digit) { type(static_cast<char16_t>(u'0' + digit)); }},
        {"click", clickEntry},
        {"hover", pointAt},
        // In the dialog's window, where its box and its buttons do not reach.
        {"click-beside",
         [](int) {
             clickAt(openDialogWindow(), {4, 4});
         }},
        {"wheel", [](int) { roll(control(IDC_PORTS), -1); }},
        {"CB_SETCURSEL", [](int entry) { EXPECT_EQ(tell(CB_SETCURSEL, entry), entry == 99 ? CB_ERR : entry); }},
        {"CB_ADDSTRING", [](int) { tell(CB_ADDSTRING, 0, "new"); }},
        {"CB_RESETCONTENT", [](int) { tell(CB_RESETCONTENT); }},
        {"CB_SHOWDROPDOWN", [](int shown) { tell(CB_SHOWDROPDOWN, shown); }}};
    const size_t end = word.find(':');
    const std::string name = word.substr(0, end);
    if (keys.contains(name)) {
        press(keys.at(name).first, keys.at(name).second);
    } else {
        acts.at(name)(end == std::string::npos ? 0 : std::stoi(word.substr(end + 1)));
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
                return true;
            }
            if (message == WM_COMMAND) {
                const auto [id, code] = std::pair(LOWORD(seen.back().wParam), HIWORD(seen.back().wParam));
                if (id == IDC_PORTS) {
                    told += Names.at(code) + "(" + std::to_string(selection()) + ") ";
                } else {
                    commands += std::to_string(seen.back().wParam) + " ";
                }
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
    struct Row {
        const char *acts, *told;
        LRESULT selected;
    };
    // On a box with the entries 0 to 15, of which 2 is selected.
    const Row rows[] = {
        {"type:1 type:5", "SELENDOK(10) SELCHANGE(10) SELENDOK(15) SELCHANGE(15) ", 15},
        {"open click:4", "DROPDOWN(2) SELENDOK(4) CLOSEUP(4) SELCHANGE(4) ", 4},
        {"open click:2", "DROPDOWN(2) SELENDOK(2) CLOSEUP(2) SELCHANGE(2) ", 2},
        {"open click-beside", "DROPDOWN(2) SELENDCANCEL(2) CLOSEUP(2) ", 2},
        {"open hover:5 Enter", "DROPDOWN(2) SELENDOK(5) CLOSEUP(5) SELCHANGE(5) ", 5},
        {"open Enter", "DROPDOWN(2) SELENDOK(2) CLOSEUP(2) ", 2},
        {"open down down Escape", "DROPDOWN(2) SELCHANGE(3) SELCHANGE(4) SELENDCANCEL(4) CLOSEUP(4) ", 4},
        {"open down click:2", "DROPDOWN(2) SELCHANGE(3) SELENDOK(2) CLOSEUP(2) SELCHANGE(2) ", 2},
        {"open type:7 Enter", "DROPDOWN(2) SELCHANGE(7) SELENDOK(7) CLOSEUP(7) ", 7},
        {"open wheel Escape", "DROPDOWN(2) SELENDCANCEL(2) CLOSEUP(2) ", 2},
        {"open down CB_SETCURSEL:7 down Enter", "DROPDOWN(2) SELCHANGE(3) SELCHANGE(8) SELENDOK(8) CLOSEUP(8) ", 8},
        {"F4 hover:5 F4", "DROPDOWN(2) SELENDCANCEL(2) CLOSEUP(2) ", 2},
        {"Alt+down down Alt+up", "DROPDOWN(2) SELCHANGE(3) SELENDCANCEL(3) CLOSEUP(3) ", 3},
        {"CB_SHOWDROPDOWN:1 CB_SHOWDROPDOWN:0", "DROPDOWN(2) SELENDCANCEL(2) CLOSEUP(2) ", 2},
        {"down", "SELENDOK(3) SELCHANGE(3) ", 3},
        {"space", "", 2},
        {"wheel", "", 2},
        {"CB_SETCURSEL:7 CB_ADDSTRING", "", 7},
        {"CB_RESETCONTENT", "", CB_ERR},
        {"CB_SETCURSEL:99", "", CB_ERR},
    };
    inDialog([&] {
        for (const Row& row : rows) {
            tell(CB_RESETCONTENT);
            for (int entry = 0; entry < 16; ++entry) {
                tell(CB_ADDSTRING, 0, std::to_string(entry).c_str());
            }
            EXPECT_EQ(selection(), CB_ERR) << "none until one is made";
            act("CB_SETCURSEL:2");
            SetFocus(control(IDC_PORTS));
            settle();
            told.clear();
            std::istringstream words(row.acts);
            for (std::string word; words >> word;) {
                act(word);
            }
            EXPECT_EQ(told, row.told) << row.acts;
            EXPECT_EQ(selection(), row.selected) << row.acts;
            EXPECT_FALSE(tell(CB_GETDROPPEDSTATE)) << row.acts;
            EXPECT_EQ(commands, "") << row.acts << ": a key of the list is not one of the dialog";
            // Only the first row types a word; letters of one row are not the beginning of the next row's.
            clock.pass(2 * Second);
        }
    });
}

TEST_F(Controls, ADialogTakesItsKeys) {
    const auto key = [](Qt::Key code, Qt::KeyboardModifiers with = {}) { return [=] { press(code, with); }; };
    const struct {
        const char* what;
        std::function<void()> act;
        std::string commands;
        int focus;
    } rows[] = {
        {"Enter for the default button", key(Qt::Key_Return), "1 ", IDC_PORTS},
        {"Escape", key(Qt::Key_Escape), "2 ", IDC_PORTS},
        {"default button", key(Qt::Key_Tab), "", IDC_CLOSE},
        {"other button", key(Qt::Key_Tab), "", IDC_CANCEL},
        {"Enter for the focused button", key(Qt::Key_Return), "2 ", IDC_CANCEL},
        {"space", key(Qt::Key_Space), "2 ", IDC_CANCEL},
        {"round", key(Qt::Key_Tab), "", IDC_PORTS},
        {"and back", key(Qt::Key_Tab, Qt::ShiftModifier), "", IDC_CANCEL},
        {"the window's own button", [] { widgetOf(openDialogWindow())->close(); }, "2 ", IDC_CANCEL},
        {"to the box", key(Qt::Key_Tab), "", IDC_PORTS},
        {"a disabled default button", [] { EnableWindow(control(IDC_CLOSE), FALSE); }, "", IDC_PORTS},
        {"stays unpressed", key(Qt::Key_Return), "", IDC_PORTS},
    };
    inDialog([&] {
        ShowWindow(control(IDC_CANCEL), SW_SHOW);
        EXPECT_EQ(GetFocus(), control(IDC_PORTS)) << "the first tab stop";
        const QImage asDefault = widgetOf(control(IDC_CLOSE))->grab().toImage();
        for (const auto& row : rows) {
            commands.clear();
            row.act();
            settle();
            EXPECT_EQ(commands, row.commands) << row.what;
            EXPECT_EQ(GetFocus(), control(row.focus)) << row.what;
            EXPECT_TRUE(row.focus != IDC_CANCEL || widgetOf(control(IDC_CLOSE))->grab().toImage() != asDefault)
                << row.what << ": the look says what Enter presses";
        }
    });
}
