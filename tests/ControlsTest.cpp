// Combo boxes, modal dialogs and message boxes of the layer, as their user works them.
#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QMessageBox>
#include <QTest>
#include <QWheelEvent>
#include <QWindow>
#include <algorithm>
#include <string>
#include <vector>

#include "LayerWindows.h"
#include "User.h"
#include "platform/linux/Layer.h"
#include "resources/Ids.h"

namespace {

const char* nameOf(WORD code) {
    switch (code) {
        case CBN_SELCHANGE:
            return "SELCHANGE";
        case CBN_DROPDOWN:
            return "DROPDOWN";
        case CBN_CLOSEUP:
            return "CLOSEUP";
        case CBN_SELENDOK:
            return "SELENDOK";
        case CBN_SELENDCANCEL:
            return "SELENDCANCEL";
        case CBN_SETFOCUS:
            return "SETFOCUS";
        case CBN_KILLFOCUS:
            return "KILLFOCUS";
        default:
            return "another";
    }
}

HWND combo() {
    return GetDlgItem(openDialogWindow(), IDC_PORTS);
}

LRESULT selection() {
    return SendMessageA(combo(), CB_GETCURSEL, 0, 0);
}

bool listOpen() {
    return SendMessageA(combo(), CB_GETDROPPEDSTATE, 0, 0) != 0;
}

void fill(int count) {
    SendMessageA(combo(), CB_RESETCONTENT, 0, 0);
    for (int row = 0; row < count; ++row) {
        SendMessageA(combo(), CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(std::to_string(row).c_str()));
    }
}

void roll(QWidget& target) {
    QWheelEvent wheel(QPointF(5, 5), QPointF(5, 5), QPoint(), QPoint(0, -120), Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(&target, &wheel);
}

// In the window of a dialog, where its box and its buttons do not reach.
void clickBeside() {
    QTest::mouseClick(widgetOf(openDialogWindow())->windowHandle(), Qt::LeftButton, {}, QPoint(4, 4));
}

}  // namespace

// A dialog with a combo box, a default button and a hidden button; its procedure only notes what it is told.
class Controls : public Layer {
protected:
    static constexpr UINT OpenDialog = 0x0400;
    static constexpr UINT Mark = 0x0401;

    void SetUp() override {
        Layer::SetUp();
        frame = openFrame();
        handler = [this](HWND window, UINT message) {
            if (window == frame && message == OpenDialog) {
                result = DialogBoxParamA(nullptr, MAKEINTRESOURCEA(IDD_PORT), frame, recordDialog, 5);
                return true;
            }
            if (message == WM_COMMAND && LOWORD(seen.back().wParam) == IDC_PORTS) {
                const std::string name = nameOf(HIWORD(seen.back().wParam));
                told += name + "(" + std::to_string(selection()) + ") ";
            }
            return observe && observe(window, message);
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
    std::function<bool(HWND, UINT)> observe;
};

TEST_F(Controls, AComboBoxTellsWhatItsUserDoes) {
    struct Row {
        const char* what;
        std::vector<void (*)()> acts;
        const char* told;
        LRESULT selected;
    };
    const auto open = [] { clickOn(combo()); };
    const auto down = [] { press(Qt::Key_Down); };
    const auto enter = [] { press(Qt::Key_Return); };
    const auto escape = [] { press(Qt::Key_Escape); };
    const auto f4 = [] { press(Qt::Key_F4); };
    const Row rows[] = {
        {"mouse", {open, [] { clickEntry(combo(), 4); }}, "DROPDOWN(2) SELENDOK(4) CLOSEUP(4) SELCHANGE(4) ", 4},
        {"mouse, the same entry",
         {open, [] { clickEntry(combo(), 2); }},
         "DROPDOWN(2) SELENDOK(2) CLOSEUP(2) SELCHANGE(2) ",
         2},
        {"Escape", {open, escape}, "DROPDOWN(2) SELENDCANCEL(2) CLOSEUP(2) ", 2},
        {"click beside", {open, clickBeside}, "DROPDOWN(2) SELENDCANCEL(2) CLOSEUP(2) ", 2},
        {"hover, Escape", {open, [] { pointAt(combo(), 5); }, escape}, "DROPDOWN(2) SELENDCANCEL(2) CLOSEUP(2) ", 2},
        {"hover, Enter",
         {open, [] { pointAt(combo(), 5); }, enter},
         "DROPDOWN(2) SELENDOK(5) CLOSEUP(5) SELCHANGE(5) ",
         5},
        {"Enter at once", {open, enter}, "DROPDOWN(2) SELENDOK(2) CLOSEUP(2) ", 2},
        {"arrows, Escape",
         {open, down, down, escape},
         "DROPDOWN(2) SELCHANGE(3) SELCHANGE(4) SELENDCANCEL(4) CLOSEUP(4) ",
         4},
        {"arrows, Enter",
         {open, down, down, enter},
         "DROPDOWN(2) SELCHANGE(3) SELCHANGE(4) SELENDOK(4) CLOSEUP(4) ",
         4},
        {"arrow, mouse",
         {open, down, [] { clickEntry(combo(), 2); }},
         "DROPDOWN(2) SELCHANGE(3) SELENDOK(2) CLOSEUP(2) SELCHANGE(2) ",
         2},
        {"letter in the list",
         {open, [] { type(u'7'); }, enter},
         "DROPDOWN(2) SELCHANGE(7) SELENDOK(7) CLOSEUP(7) ",
         7},
        {"F4 twice", {f4, f4}, "DROPDOWN(2) SELENDCANCEL(2) CLOSEUP(2) ", 2},
        {"F4, hover, F4", {f4, [] { pointAt(combo(), 5); }, f4}, "DROPDOWN(2) SELENDCANCEL(2) CLOSEUP(2) ", 2},
        {"Alt and arrows",
         {[] { press(Qt::Key_Down, Qt::AltModifier); }, down, [] { press(Qt::Key_Up, Qt::AltModifier); }},
         "DROPDOWN(2) SELCHANGE(3) SELENDCANCEL(3) CLOSEUP(3) ",
         3},
        {"wheel over the open list",
         {open, [] { roll(*boxOf(combo()).view()->viewport()); }, escape},
         "DROPDOWN(2) SELENDCANCEL(2) CLOSEUP(2) ",
         2},
        {"down", {down}, "SELENDOK(3) SELCHANGE(3) ", 3},
        {"up", {[] { press(Qt::Key_Up); }}, "SELENDOK(1) SELCHANGE(1) ", 1},
        {"End", {[] { press(Qt::Key_End); }}, "SELENDOK(9) SELCHANGE(9) ", 9},
        {"letter", {[] { type(u'7'); }}, "SELENDOK(7) SELCHANGE(7) ", 7},
        {"letter of no entry", {[] { type(u'x'); }}, "", 2},
        {"space", {[] { press(Qt::Key_Space); }}, "", 2},
        {"wheel", {[] { roll(boxOf(combo())); }}, "", 2},
        {"CB_SETCURSEL", {[] { SendMessageA(combo(), CB_SETCURSEL, 6, 0); }}, "", 6},
        {"CB_ADDSTRING", {[] { SendMessageA(combo(), CB_ADDSTRING, 0, reinterpret_cast<LPARAM>("new")); }}, "", 2},
        {"CB_RESETCONTENT", {[] { SendMessageA(combo(), CB_RESETCONTENT, 0, 0); }}, "", CB_ERR},
        {"an index that is none", {[] { EXPECT_EQ(SendMessageA(combo(), CB_SETCURSEL, 99, 0), CB_ERR); }}, "", CB_ERR},
        {"opened by the program",
         {[] { SendMessageA(combo(), CB_SHOWDROPDOWN, TRUE, 0); },
          [] { SendMessageA(combo(), CB_SHOWDROPDOWN, FALSE, 0); }},
         "DROPDOWN(2) SELENDCANCEL(2) CLOSEUP(2) ",
         2},
        {"a selection by the program in the open list",
         {open, down, [] { SendMessageA(combo(), CB_SETCURSEL, 7, 0); }, down, enter},
         "DROPDOWN(2) SELCHANGE(3) SELCHANGE(8) SELENDOK(8) CLOSEUP(8) ",
         8},
    };
    const auto tryAll = [&] {
        for (const Row& row : rows) {
            fill(10);
            EXPECT_EQ(selection(), CB_ERR) << "none until one is made";
            EXPECT_EQ(SendMessageA(combo(), CB_SETCURSEL, 2, 0), 2);
            widgetOf(combo())->setFocus();
            settle();
            told.clear();
            seen.clear();
            for (const auto act : row.acts) {
                act();
                settle();
            }
            EXPECT_EQ(told, row.told) << row.what;
            EXPECT_EQ(selection(), row.selected) << row.what;
            EXPECT_FALSE(listOpen()) << row.what;
            EXPECT_EQ(commands(), "") << row.what << ": a key of the list is not one of the dialog";
            // Letters typed for one row are not the beginning of the next row's word.
            QApplication::setKeyboardInputInterval(0);
        }
        EndDialog(openDialogWindow(), 1);
    };
    inDialog({{"dialog", dialogShown, tryAll}});
}

TEST_F(Controls, ALongListOpensAtItsSelectionAndFindsWhatIsTyped) {
    inDialog({{"dialog", dialogShown, [&] {
                   fill(255);
                   EXPECT_EQ(SendMessageA(combo(), CB_GETCOUNT, 0, 0), 255);
                   SendMessageA(combo(), CB_SETCURSEL, 200, 0);
                   clickOn(combo());
                   settle();
                   const QAbstractItemView& list = *boxOf(combo()).view();
                   const QRect shown = list.visualRect(list.model()->index(200, 0));
                   EXPECT_TRUE(list.viewport()->rect().contains(shown));
                   EXPECT_EQ(list.currentIndex().row(), 200);
                   EXPECT_LE(list.height(), 200) << "as high as the template says";
                   press(Qt::Key_Escape);
                   settle();
                   told.clear();
                   for (const char16_t letter : u"150") {
                       if (letter) {
                           type(letter);
                       }
                   }
                   settle();
                   EXPECT_EQ(told, "SELENDOK(1) SELCHANGE(1) SELENDOK(15) SELCHANGE(15) SELENDOK(150) SELCHANGE(150) ");
                   EndDialog(openDialogWindow(), 1);
               }}});
}

TEST_F(Controls, ADialogTakesItsKeys) {
    HWND close = nullptr;
    HWND cancel = nullptr;
    QImage asDefault;
    const auto focused = [](const HWND& control) { return [&] { return widgetOf(control)->hasFocus(); }; };
    const auto told = [](const char* command) {
        return [=] {
            return std::ranges::any_of(seen,
                                       [](const Seen& message) {
                                           return message.message == WM_COMMAND && LOWORD(message.wParam) != IDC_PORTS;
                                       }) &&
                   commands() == command;
        };
    };
    const auto tab = [] { press(Qt::Key_Tab); };
    const auto enter = [] { press(Qt::Key_Return); };
    inDialog({{"dialog", dialogShown,
               [&] {
                   close = GetDlgItem(openDialogWindow(), IDC_CLOSE);
                   cancel = GetDlgItem(openDialogWindow(), IDC_CANCEL);
                   ShowWindow(cancel, SW_SHOW);
                   EXPECT_TRUE(widgetOf(combo())->hasFocus()) << "the first tab stop";
                   asDefault = widgetOf(close)->grab().toImage();
                   seen.clear();
                   enter();
               }},
              {"Enter for the default button", told("1 "), [] { press(Qt::Key_Escape); }},
              {"Escape", told("2 "), tab},
              {"default button", focused(close), tab},
              {"other button", focused(cancel),
               [&] {
                   EXPECT_NE(widgetOf(close)->grab().toImage(), asDefault) << "no longer what Enter presses";
                   enter();
               }},
              {"Enter for the focused button", told("2 "), [] { press(Qt::Key_Space); }},
              {"space", told("2 "), tab},
              {"round", [] { return widgetOf(combo())->hasFocus(); }, [] { press(Qt::Key_Tab, Qt::ShiftModifier); }},
              {"and back", focused(cancel), [&] { widgetOf(openDialogWindow())->close(); }},
              {"the window's own button", told("2 "),
               [&] {
                   EXPECT_EQ(widgetOf(close)->grab().toImage().size(), asDefault.size());
                   EnableWindow(close, FALSE);
                   widgetOf(combo())->setFocus();
                   enter();
                   press(Qt::Key_Escape);
               }},
              {"a disabled default button stays unpressed", told("2 "), [] { EndDialog(openDialogWindow(), 77); }}});
    EXPECT_EQ(result, 77);
}

TEST_F(Controls, BehindADialogTimersAndMessagesGoOnAndItsOwnerWaits) {
    SetTimer(frame, 3, 10, nullptr);
    inDialog({{"dialog", dialogShown,
               [&] {
                   EXPECT_FALSE(IsWindowEnabled(frame));
                   EXPECT_EQ(GetParent(openDialogWindow()), frame);
                   seen.clear();
                   PostMessageA(frame, Mark, 0, 0);
                   InvalidateRect(frame, nullptr, TRUE);
               }},
              {"timers", [] { return count(WM_TIMER) >= 3; },
               [&] {
                   EXPECT_EQ(count(Mark), 1);
                   EXPECT_GE(count(WM_PAINT), 1);
                   EXPECT_EQ(seen.front().message, Mark);
                   EndDialog(openDialogWindow(), -9);
                   EXPECT_FALSE(IsWindowEnabled(frame)) << "until the loop has ended";
               }}});
    EXPECT_EQ(result, -9);
    EXPECT_TRUE(IsWindowEnabled(frame));
    EXPECT_TRUE(pumpUntil([&] { return widgetOf(frame)->isActiveWindow(); }));
    // An owner that was disabled before stays so.
    EnableWindow(frame, FALSE);
    inDialog({{"dialog", dialogShown, [] { EndDialog(openDialogWindow(), 0); }}});
    EXPECT_FALSE(IsWindowEnabled(frame));
}

TEST_F(Controls, ADialogMayEndBeforeItIsShown) {
    bool parameterCame = false;
    observe = [&](HWND window, UINT message) {
        if (message == WM_INITDIALOG) {
            parameterCame = seen.back().lParam == 5;
            EndDialog(window, 12);
        }
        EXPECT_FALSE(message == WM_PAINT && window != frame);
        return message == WM_INITDIALOG;
    };
    inDialog({{"end", [&] { return result == 12; }, [] {}}});
    EXPECT_TRUE(parameterCame);
    EXPECT_TRUE(IsWindowEnabled(frame));
    EXPECT_EQ(openDialogWindow(), nullptr);
    EXPECT_EQ(DialogBoxParamA(nullptr, MAKEINTRESOURCEA(9999), frame, recordDialog, 0), -1);
    EXPECT_TRUE(IsWindowEnabled(frame));
    EXPECT_FALSE(EndDialog(frame, 1));
}

TEST_F(Controls, AQuitMessageInADialogEndsAllLoops) {
    lastExitCode = -1;
    inDialog({{"dialog", dialogShown, [] { PostQuitMessage(6); }}});
    EXPECT_TRUE(pumpUntil([] { return lastExitCode != -1; }));
    EXPECT_EQ(lastExitCode, 6);
    EXPECT_EQ(openDialogWindow(), nullptr);
    EXPECT_TRUE(IsWindowEnabled(frame));
}

TEST_F(Controls, MessageBoxesGiveTheAnswer) {
    struct Row {
        const char* what;
        UINT type;
        int answer;
        std::function<void()> act;
    };
    const auto box = [] { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()); };
    const auto clickAnswer = [=](QMessageBox::StandardButton button) {
        return [=] { QTest::mouseClick(box()->button(button), Qt::LeftButton); };
    };
    const auto key = [](int code) { return [=] { press(code); }; };
    const Row rows[] = {
        {"OK by Enter", MB_OK | MB_ICONINFORMATION, IDOK, key(Qt::Key_Return)},
        {"OK by Escape", MB_OK | MB_ICONEXCLAMATION, IDOK, key(Qt::Key_Escape)},
        {"OK by click", MB_OK, IDOK, clickAnswer(QMessageBox::Ok)},
        {"Yes by Enter", MB_YESNO, IDYES, key(Qt::Key_Return)},
        {"Yes by click", MB_YESNO | MB_ICONEXCLAMATION, IDYES, clickAnswer(QMessageBox::Yes)},
        {"No by click", MB_YESNO, IDNO, clickAnswer(QMessageBox::No)},
        {"No by space", MB_YESNO, IDNO,
         [=] {
             box()->button(QMessageBox::No)->setFocus();
             press(Qt::Key_Space);
         }},
    };
    SetTimer(frame, 3, 10, nullptr);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        int answer = 0;
        observe = [&](HWND window, UINT message) {
            if (window == frame && message == Mark) {
                answer = MessageBoxA(frame, "one & two\n<b>\xB3</b>", "caption", row.type);
            }
            return message == Mark;
        };
        PostMessageA(frame, Mark, 0, 0);
        run({{"box", [=] { return box() && box()->isActiveWindow(); },
              [=] {
                  EXPECT_EQ(box()->text(), QStringLiteral("one & two\n<b>\u0142</b>"));
                  EXPECT_EQ(box()->windowTitle(), QStringLiteral("caption"));
                  EXPECT_EQ(box()->icon(), (row.type & 0xF0) == MB_ICONEXCLAMATION   ? QMessageBox::Warning
                                           : (row.type & 0xF0) == MB_ICONINFORMATION ? QMessageBox::Information
                                                                                     : QMessageBox::NoIcon);
                  seen.clear();
              }},
             {"timers", [] { return count(WM_TIMER) >= 2; }, row.act}});
        EXPECT_EQ(answer, row.answer);
    }
}
