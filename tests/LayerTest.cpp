// The layer behind platform/Win32.h: messages, timers, what is to be painted, buttons, handles of what has gone.
#include "LayerWindows.h"
#include "User.h"

TEST_F(Layer, SentThenPostedThenInputThenPaintThenTimer) {
    const HWND window = openFrame();
    SetTimer(window, 1, 10, nullptr);
    clock.pass(30 * Millisecond);
    InvalidateRect(window, nullptr, TRUE);
    desktop::pressKey({Qt::Key_F5, "", Qt::NoModifier});
    PostMessageA(window, Mark, 1, 0);
    PostMessageA(window, Mark + 1, 2, 0);
    SendMessageA(window, Mark, 3, 0);
    EXPECT_EQ(seen.back().wParam, 3u) << "a sent message waits for none";
    std::vector<UINT> order;
    while (order.empty() || order.back() != WM_TIMER) {
        MSG message{};
        GetMessageA(&message, nullptr, 0, 0);
        DispatchMessageA(&message);
        order.push_back(message.message);
    }
    EXPECT_EQ(order, (std::vector<UINT>{Mark, Mark + 1, WM_KEYDOWN, WM_PAINT, WM_TIMER}));
}

TEST_F(Layer, TimersNeverQueueAreReplacedAndEndWithTheirWindow) {
    const HWND window = openFrame();
    const HWND other = openFrame();
    // Their ids, in the order in which they come.
    const auto next = [](int times) {
        seen.clear();
        EXPECT_TRUE(pumpUntil([=] { return count(WM_TIMER) >= times; }));
        std::string ids;
        for (const Seen& message : seen) {
            ids += message.message == WM_TIMER ? std::to_string(message.wParam) + " " : "";
        }
        return ids;
    };
    SetTimer(window, 2, 55, nullptr);
    SetTimer(window, 1, 10, nullptr);
    clock.pass(100 * Millisecond);
    EXPECT_EQ(next(2), "1 2 ") << "both late, each once";
    EXPECT_EQ(SetTimer(window, 1, 60000, nullptr), 1u);
    EXPECT_NE(SetTimer(other, 2, 10, nullptr), 0u);
    SetTimer(window, 3, 10, nullptr);
    EXPECT_TRUE(KillTimer(window, 3));
    DestroyWindow(other);
    EXPECT_FALSE(KillTimer(other, 2));
    EXPECT_EQ(next(3), "2 2 2 ") << "1 is slow now, 3 killed";
    EXPECT_EQ(SetTimer(other, 2, 10, nullptr), 0u);
}

TEST_F(Layer, KnowsWhatIsToBePainted) {
    const HWND frame = openFrame();
    const HWND dialog = openDialog(frame);
    const auto place = [](HWND window, int x, int y, int width, int height) {
        return [=] { SetWindowPos(window, nullptr, x, y, width, height, 0); };
    };
    const auto show = [](HWND window, int how) { return [=] { ShowWindow(window, how); }; };
    const auto spoil = [=](const RECT& area) { return [=] { InvalidateRect(frame, &area, TRUE); }; };
    const HWND button = GetDlgItem(dialog, IDC_LEARN);
    place(dialog, 20, 30, 200, 100)();
    place(button, 10, 20, 60, 30)();
    painted(frame);
    const struct {
        const char* what;
        std::function<void()> act;
        std::string ofFrame, ofDialog;
    } rows[] = {
        {"frame moved", place(frame, 60, 0, 400, 300), "", ""},
        {"frame grown", place(frame, 60, 0, 420, 280), "0,0 414x251", "0,0 200x100"},
        {"dialog at its place", place(dialog, 20, 30, 200, 100), "", ""},
        {"dialog moved down by 20", place(dialog, 20, 50, 200, 100), "20,30 200x20", ""},
        {"dialog grown", place(dialog, 20, 50, 200, 120), "", "0,100 200x20"},
        {"button moved", place(button, 100, 20, 60, 30), "", "10,20 60x30"},
        {"button at its place", place(button, 100, 20, 60, 30), "", ""},
        {"dialog hidden", show(dialog, SW_HIDE), "20,50 200x120", ""},
        {"dialog shown", show(dialog, SW_SHOW), "", "0,0 200x120"},
        {"a part of both", spoil({10, 60, 50, 80}), "10,60 10x20", "0,10 30x20"},
        {"more than all", spoil({300, 200, 500, 400}), "300,200 114x51", ""},
        {"frame hidden", show(frame, SW_HIDE), "", ""},
        {"invalid, but hidden", spoil({0, 0, 400, 300}), "", ""},
        {"frame shown", show(frame, SW_SHOW), "0,0 414x251", "0,0 200x120"},
        {"dialog destroyed", [=] { DestroyWindow(dialog); }, "20,50 200x120", ""},
    };
    for (const auto& row : rows) {
        row.act();
        EXPECT_EQ(painted(dialog), row.ofDialog) << row.what;
        EXPECT_EQ(painted(frame), row.ofFrame) << row.what;
        EXPECT_EQ(painted(frame), "") << row.what << ": painted already";
    }
}

TEST_F(Layer, WhatIsDrawnShowsAndStaysUntilItsPartIsErased) {
    const HWND frame = openFrame();
    Rectangle(GetDC(frame), 0, 0, 100, 100);
    EXPECT_EQ(shown(frame).pixelColor(70, 70), QColor(Qt::white));
    EXPECT_EQ(shown(frame).pixelColor(105, 70), QColor(128, 128, 128));
    const RECT part{10, 20, 30, 50};
    for (const BOOL erased : {FALSE, TRUE}) {
        InvalidateRect(frame, &part, erased);
        EXPECT_EQ(painted(frame), text(part));
        EXPECT_EQ(pixelOf(frame, 29, 49), erased ? Grey : White);
        EXPECT_TRUE(pixelOf(frame, 9, 25) == White && pixelOf(frame, 30, 25) == White);
    }

    // What a paint draws is cut to the invalid part.
    handler = [](HWND window, UINT message) {
        if (message == WM_PAINT) {
            PAINTSTRUCT paint;
            Rectangle(BeginPaint(window, &paint), -10, -10, 300, 300);
            EndPaint(window, &paint);
        }
        return message == WM_PAINT;
    };
    InvalidateRect(frame, &part, FALSE);
    UpdateWindow(frame);
    EXPECT_EQ(pixelOf(frame, 29, 49), White);
    EXPECT_EQ(pixelOf(frame, 150, 150), Grey);
}

TEST_F(Layer, AButtonClicksOncePerClickAndOnlyForItsUser) {
    const HWND button = GetDlgItem(openDialog(openFrame()), IDC_LEARN);
    const auto expectClicks = [&](int expected, const char* what) {
        settle();
        EXPECT_EQ(count(WM_COMMAND), expected) << what;
        EXPECT_TRUE(expected == 0 || GetFocus() == button) << what;
    };
    SetWindowTextA(button, "text");
    EnableWindow(button, FALSE);
    EnableWindow(button, TRUE);
    SetWindowPos(button, nullptr, 10, 10, 80, 40, 0);
    expectClicks(0, "no user");
    clickOn(button);
    expectClicks(1, "mouse");
    press(Qt::Key_Space);
    expectClicks(2, "space");
    const desktop::Key space{Qt::Key_Space, QStringLiteral(" "), Qt::NoModifier};
    desktop::pressKey(space);
    for (int beat = 0; beat < 3; ++beat) {
        settle();
        clock.pass(660 * Millisecond);
        desktop::releaseKey(space);
        desktop::pressKey(space);
    }
    expectClicks(2, "space held, each beat told as a release and a press");
    desktop::releaseKey(space);
    expectClicks(3, "space let go");
    for (const Qt::Key key : {Qt::Key_Tab, Qt::Key_Backtab, Qt::Key_Right, Qt::Key_Return}) {
        press(key);
    }
    expectClicks(3, "keys that only a modal dialog takes");
    EnableWindow(button, FALSE);
    clickOn(button);
    press(Qt::Key_Space);
    settle();
    EXPECT_EQ(count(WM_COMMAND), 3) << "disabled";
}

TEST_F(Layer, DeadAndNullHandlesFailAndHarmNothing) {
    const HWND frame = openFrame();
    const HWND dialog = openDialog(frame);
    const HWND button = GetDlgItem(dialog, IDC_LEARN);
    const HDC dc = GetDC(dialog);
    const HBRUSH brush = CreateSolidBrush(Red);
    EXPECT_TRUE(DeleteObject(brush) && DestroyWindow(dialog));
    RECT rect{};
    PAINTSTRUCT paint{};
    char buffer[8] = "full";
    for (const HWND dead : {dialog, button, HWND{nullptr}}) {
        EXPECT_FALSE(IsWindow(dead) || IsWindowVisible(dead) || IsWindowEnabled(dead) || DestroyWindow(dead));
        EXPECT_FALSE(ShowWindow(dead, SW_SHOW) || UpdateWindow(dead) || EnableWindow(dead, TRUE));
        EXPECT_FALSE(SetWindowPos(dead, nullptr, 0, 0, 10, 10, 0) || SetWindowTextA(dead, "text"));
        EXPECT_FALSE(GetWindowRect(dead, &rect) || GetClientRect(dead, &rect));
        EXPECT_TRUE(GetWindowTextA(dead, buffer, 8) == 0 && buffer[0] == 0);
        EXPECT_FALSE(GetDlgItem(dead, IDC_LEARN) || GetDC(dead) || BeginPaint(dead, &paint) || SetMenu(dead, nullptr));
        EXPECT_FALSE(PostMessageA(dead, Mark, 0, 0) || SendMessageA(dead, Mark, 0, 0));
        EXPECT_FALSE(CreateDialogParamA(nullptr, MAKEINTRESOURCEA(IDD_READINGS), dead, recordDialog, 0));
    }
    EXPECT_FALSE(Rectangle(dc, 0, 0, 10, 10) || LineTo(dc, 10, 10) ||
                 ExtTextOutA(dc, 0, 0, 0, nullptr, "A", 1, nullptr));
    EXPECT_EQ(GetPixel(dc, 1, 1), CLR_INVALID);
    EXPECT_FALSE(SelectObject(GetDC(frame), brush) || DeleteObject(brush) || DeleteObject(GetStockObject(WHITE_BRUSH)));
    EXPECT_EQ(CreateDialogParamA(nullptr, MAKEINTRESOURCEA(9999), frame, recordDialog, 0), nullptr);
}
