// The layer behind platform/Win32.h: messages, timers, what is to be painted, input and controls.
#include <QTest>
#include <QWidget>
#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "Desktop.h"
#include "LayerWindows.h"
#include "User.h"
#include "resources/Ids.h"

namespace {

constexpr UINT FirstMark = 0x0400;
constexpr UINT SecondMark = 0x0401;

// Takes the next message as the program's loop does and gives its number.
UINT takeMessage() {
    MSG message{};
    GetMessageA(&message, nullptr, 0, 0);
    TranslateMessage(&message);
    DispatchMessageA(&message);
    return message.message;
}

}  // namespace

TEST_F(Layer, SentThenPostedThenInputThenPaintThenTimer) {
    const HWND window = openFrame();
    SetTimer(window, 1, 10, nullptr);
    clock.pass(30 * Millisecond);
    InvalidateRect(window, nullptr, TRUE);
    desktop::pressKey({Qt::Key_F5, "", Qt::NoModifier});
    PostMessageA(window, FirstMark, 1, 0);
    PostMessageA(window, SecondMark, 2, 0);
    SendMessageA(window, FirstMark, 3, 0);
    EXPECT_EQ(seen.back().wParam, 3u) << "a sent message waits for none";
    std::vector<UINT> order;
    while (order.empty() || order.back() != WM_TIMER) {
        order.push_back(takeMessage());
    }
    EXPECT_EQ(order, (std::vector<UINT>{FirstMark, SecondMark, WM_KEYDOWN, WM_PAINT, WM_TIMER}));

    // What a message posts comes before what was waiting behind it.
    InvalidateRect(window, nullptr, TRUE);
    handler = [](HWND target, UINT message) {
        if (message == FirstMark) {
            PostMessageA(target, SecondMark, 0, 0);
        }
        return false;
    };
    PostMessageA(window, FirstMark, 0, 0);
    EXPECT_EQ(takeMessage(), FirstMark);
    EXPECT_EQ(takeMessage(), SecondMark);
    EXPECT_EQ(takeMessage(), WM_PAINT);
}

TEST_F(Layer, ALateTimerIsOneMessage) {
    const HWND window = openFrame();
    SetTimer(window, 1, 10, nullptr);
    SetTimer(window, 2, 15, nullptr);
    clock.pass(100 * Millisecond);
    ASSERT_TRUE(pumpUntil([] { return count(WM_TIMER) >= 2; }));
    std::erase_if(seen, [](const Seen& message) { return message.message != WM_TIMER; });
    EXPECT_TRUE(seen.size() == 2 && seen[0].wParam == 1 && seen[1].wParam == 2);
}

TEST_F(Layer, TimersAreReplacedAndEndWithTheirWindow) {
    const HWND window = openFrame();
    const HWND other = openFrame();
    EXPECT_EQ(SetTimer(window, 7, 10, nullptr), 7u);
    EXPECT_EQ(SetTimer(window, 7, 60000, nullptr), 7u);
    EXPECT_NE(SetTimer(other, 1, 10, nullptr), 0u);
    PostMessageA(other, FirstMark, 0, 0);
    DestroyWindow(other);
    EXPECT_FALSE(KillTimer(other, 1)) << "ended with its window";
    SetTimer(window, 2, 40, nullptr);
    seen.clear();
    ASSERT_TRUE(pumpUntil([] { return count(WM_TIMER) >= 2; }));
    for (const Seen& message : seen) {
        EXPECT_TRUE(message.window == window && message.wParam == 2u) << message.message;
    }
    EXPECT_TRUE(KillTimer(window, 2));
    EXPECT_FALSE(KillTimer(window, 2));
    EXPECT_EQ(SetTimer(other, 1, 10, nullptr), 0u);
}

TEST_F(Layer, KnowsWhatIsToBePainted) {
    const HWND frame =
        CreateWindowExA(0, ClassName, "", WS_SYSMENU, 40, 40, 400, 300, nullptr, nullptr, nullptr, nullptr);
    EXPECT_FALSE(paintsNow(frame)) << "not shown yet";
    ShowWindow(frame, SW_SHOW);
    EXPECT_TRUE(paintsNow(frame));
    EXPECT_EQ(pixelOf(frame, 5, 5), Grey) << "the class's background";
    EXPECT_FALSE(paintsNow(frame)) << "painted already";

    for (const auto& [x, width, height, paints] :
         {std::tuple{40, 400, 300, false}, {60, 400, 300, false}, {60, 420, 300, true}, {60, 420, 280, true}}) {
        SetWindowPos(frame, nullptr, x, 40, width, height, 0);
        EXPECT_EQ(paintsNow(frame), paints) << x << " " << width << "x" << height;
    }
    ShowWindow(frame, SW_HIDE);
    EXPECT_FALSE(paintsNow(frame));
    InvalidateRect(frame, nullptr, TRUE);
    EXPECT_FALSE(paintsNow(frame)) << "nobody sees it";
    ShowWindow(frame, SW_SHOW);
    EXPECT_TRUE(paintsNow(frame));
    EXPECT_TRUE(DestroyWindow(frame));
}

TEST_F(Layer, KnowsWhatAChildCoversAndUncovers) {
    const HWND frame = openFrame();
    const HWND dialog = openDialog(frame);
    SetWindowPos(dialog, nullptr, 20, 30, 200, 100, 0);
    paintsNow(frame);
    paintsNow(dialog);
    const auto expectPainted = [&](const char* what, const std::string& frameArea, bool dialogToo) {
        EXPECT_EQ(paintsNow(dialog), dialogToo) << what;
        EXPECT_EQ(paintsNow(frame) ? text(lastPaint) : "", frameArea) << what;
    };
    SetWindowPos(dialog, nullptr, 20, 30, 200, 100, 0);
    expectPainted("same place and size", "", false);
    SetWindowPos(dialog, nullptr, 20, 50, 200, 100, 0);
    expectPainted("moved down by 20", "20,30 200x20", false);
    SetWindowPos(dialog, nullptr, 20, 50, 200, 120, 0);
    expectPainted("grown", "", true);
    const HWND button = GetDlgItem(dialog, IDC_LEARN);
    SetWindowPos(button, nullptr, 100, 20, 60, 30, 0);
    expectPainted("button moved", "", true);
    SetWindowPos(button, nullptr, 100, 20, 60, 30, 0);
    expectPainted("button at the same place", "", false);
    ShowWindow(dialog, SW_HIDE);
    expectPainted("hidden", "20,50 200x120", false);
    ShowWindow(dialog, SW_SHOW);
    expectPainted("shown", "", true);
    DestroyWindow(dialog);
    expectPainted("destroyed", "20,50 200x120", false);
}

TEST_F(Layer, PaintsTheInvalidPartOnceAndErasesOnRequest) {
    const HWND frame = openFrame();
    const HDC dc = GetDC(frame);
    Rectangle(dc, 0, 0, 100, 100);
    ReleaseDC(frame, dc);
    const RECT part{10, 20, 30, 50};
    InvalidateRect(frame, &part, FALSE);
    EXPECT_TRUE(paintsNow(frame));
    EXPECT_EQ(text(lastPaint), text(part));
    EXPECT_EQ(pixelOf(frame, 15, 25), White) << "not erased";
    InvalidateRect(frame, &part, TRUE);
    EXPECT_TRUE(paintsNow(frame));
    EXPECT_EQ(pixelOf(frame, 15, 25), Grey);
    EXPECT_TRUE(pixelOf(frame, 9, 25) == White && pixelOf(frame, 30, 25) == White);

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
    EXPECT_FALSE(paintsNow(frame));
}

TEST_F(Layer, WhatIsDrawnBesidePaintingStaysAndIsShown) {
    const HWND frame = openFrame();
    const HDC dc = GetDC(frame);
    Rectangle(dc, 50, 60, 90, 80);
    ReleaseDC(frame, dc);
    PostMessageA(frame, FirstMark, 0, 0);
    ASSERT_TRUE(pumpUntil([] { return count(FirstMark) > 0; }));
    EXPECT_EQ(pixelOf(frame, 70, 70), White);
    const QImage shown = widgetOf(frame)->grab().toImage();
    EXPECT_EQ(shown.pixelColor(70, 70), QColor(Qt::white));
    EXPECT_EQ(shown.pixelColor(95, 70), QColor(128, 128, 128));
}

TEST_F(Layer, AButtonClicksOncePerClickAndOnlyForItsUser) {
    const HWND dialog = openDialog(openFrame());
    const HWND button = GetDlgItem(dialog, IDC_LEARN);
    const auto expectClicks = [&](int expected, const char* what) {
        runDry(dialog);
        EXPECT_EQ(count(WM_COMMAND), expected) << what;
    };
    SetWindowTextA(button, "text");
    EnableWindow(button, FALSE);
    EnableWindow(button, TRUE);
    SetWindowPos(button, nullptr, 10, 10, 80, 40, 0);
    expectClicks(0, "no user");
    clickOn(button);
    expectClicks(1, "mouse");
    const auto click = std::ranges::find(seen, WM_COMMAND, &Seen::message);
    ASSERT_NE(click, seen.end());
    EXPECT_TRUE(click->wParam == MAKEWPARAM(IDC_LEARN, BN_CLICKED) && reinterpret_cast<HWND>(click->lParam) == button);
    press(Qt::Key_Space);
    expectClicks(2, "space");
    const desktop::Key space{Qt::Key_Space, QStringLiteral(" "), Qt::NoModifier};
    desktop::pressKey(space);
    for (int beat = 0; beat < 3; ++beat) {
        runDry(dialog);
        clock.pass(660 * Millisecond);
        desktop::releaseKey(space);
        desktop::pressKey(space);
    }
    expectClicks(2, "space held, each beat told as a release and a press");
    desktop::releaseKey(space);
    expectClicks(3, "space let go");
    EnableWindow(button, FALSE);
    clickOn(button);
    press(Qt::Key_Space);
    expectClicks(3, "disabled");
}

TEST_F(Layer, TabMovesNoFocus) {
    const HWND frame = openFrame();
    const HWND button = GetDlgItem(openDialog(frame), IDC_LEARN);
    openDialog(frame);
    SetFocus(button);
    for (const Qt::Key key : {Qt::Key_Tab, Qt::Key_Backtab, Qt::Key_Right}) {
        press(key);
        runDry(frame);
        EXPECT_EQ(GetFocus(), button) << key;
    }
}

TEST_F(Layer, DeadAndNullHandlesFailAndHarmNothing) {
    const HWND frame = openFrame();
    const HWND dialog = openDialog(frame);
    const HWND button = GetDlgItem(dialog, IDC_LEARN);
    const HDC dc = GetDC(dialog);
    const HBRUSH brush = CreateSolidBrush(Red);
    EXPECT_TRUE(DeleteObject(brush));
    EXPECT_TRUE(DestroyWindow(dialog));
    RECT rect{};
    PAINTSTRUCT paint{};
    std::array<char, 8> buffer{"full"};
    for (const HWND dead : {dialog, button, HWND{nullptr}}) {
        EXPECT_FALSE(IsWindow(dead) || IsWindowVisible(dead) || IsWindowEnabled(dead) || DestroyWindow(dead));
        EXPECT_FALSE(ShowWindow(dead, SW_SHOW) || UpdateWindow(dead) || EnableWindow(dead, TRUE));
        EXPECT_FALSE(SetWindowPos(dead, nullptr, 0, 0, 10, 10, 0) || SetWindowTextA(dead, "text"));
        EXPECT_FALSE(GetWindowRect(dead, &rect) || GetClientRect(dead, &rect));
        EXPECT_TRUE(GetWindowTextA(dead, buffer.data(), 8) == 0 && buffer[0] == 0);
        EXPECT_FALSE(GetDlgItem(dead, IDC_LEARN) || GetDC(dead) || BeginPaint(dead, &paint) || SetMenu(dead, nullptr));
        EXPECT_FALSE(PostMessageA(dead, FirstMark, 0, 0) || SendMessageA(dead, FirstMark, 0, 0));
        EXPECT_FALSE(CreateDialogParamA(nullptr, MAKEINTRESOURCEA(IDD_READINGS), dead, recordDialog, 0));
    }
    EXPECT_EQ(GetPixel(dc, 1, 1), CLR_INVALID);
    EXPECT_FALSE(Rectangle(dc, 0, 0, 10, 10) || LineTo(dc, 10, 10) ||
                 ExtTextOutA(dc, 0, 0, 0, nullptr, "A", 1, nullptr));
    const HDC living = GetDC(frame);
    EXPECT_EQ(SelectObject(living, brush), nullptr);
    EXPECT_FALSE(DeleteObject(brush) || DeleteObject(GetStockObject(WHITE_BRUSH)));
    ReleaseDC(frame, living);
    EXPECT_EQ(CreateDialogParamA(nullptr, MAKEINTRESOURCEA(9999), frame, recordDialog, 0), nullptr);
}

TEST_F(Layer, ADialogThatLeavesItsPaintAloneIsValidatedForIt) {
    const HWND dialog = openDialog(openFrame());
    dialogPaints = false;
    InvalidateRect(dialog, nullptr, TRUE);
    EXPECT_TRUE(paintsNow(dialog));
    EXPECT_FALSE(paintsNow(dialog));
    EXPECT_EQ(pixelOf(dialog, 2, 2), RGB(240, 240, 240));
}

TEST_F(Layer, LoadsStringsCutToTheirBuffer) {
    std::array<char, 10> text{"untouched"};
    for (const auto& [id, room, loaded] :
         {std::tuple{IDS_TITLE, 10, "Tarvex"}, {IDS_CLASS_NAME, 10, "TARVEXxx"}, {IDS_TITLE, 4, "Tar"}, {2, 10, ""}}) {
        EXPECT_EQ(LoadStringA(nullptr, static_cast<UINT>(id), text.data(), room),
                  static_cast<int>(std::string_view(loaded).size()));
        EXPECT_STREQ(text.data(), loaded);
    }
}
