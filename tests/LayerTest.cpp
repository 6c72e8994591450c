// The layer behind platform/Win32.h: messages, timers, what is to be painted, input and controls.
#include <QElapsedTimer>
#include <QTest>
#include <QThread>
#include <QWidget>
#include <array>
#include <optional>
#include <vector>

#include "LayerWindows.h"
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

void stayBusy(int milliseconds) {
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < milliseconds) {
        QThread::yieldCurrentThread();
    }
}

}  // namespace

TEST_F(Layer, SentThenPostedThenInputThenPaintThenTimer) {
    const HWND window = openFrame();
    SetTimer(window, 1, 10, nullptr);
    stayBusy(30);
    InvalidateRect(window, nullptr, TRUE);
    QTest::keyPress(widgetOf(window), Qt::Key_F5);
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
    stayBusy(100);
    std::vector<WPARAM> rung;
    handler = [&](HWND, UINT message) {
        if (message == WM_TIMER) {
            rung.push_back(seen.back().wParam);
        }
        return false;
    };
    ASSERT_TRUE(pumpUntil([&] { return rung.size() >= 2; }));
    EXPECT_EQ(rung, (std::vector<WPARAM>{1, 2}));
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
        EXPECT_EQ(message.window, window) << message.message;
        EXPECT_NE(message.wParam, 7u);
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

    struct Row {
        const char* what;
        int x, y, width, height;
        bool paints;
    };
    for (const Row& row : {Row{"same place and size", 40, 40, 400, 300, false}, Row{"moved", 60, 50, 400, 300, false},
                           Row{"wider", 60, 50, 420, 300, true}, Row{"lower", 60, 50, 420, 280, true}}) {
        SetWindowPos(frame, nullptr, row.x, row.y, row.width, row.height, 0);
        EXPECT_EQ(paintsNow(frame), row.paints) << row.what;
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
    const auto expectPainted = [&](const char* what, std::optional<RECT> frameArea, bool dialogToo) {
        EXPECT_EQ(paintsNow(dialog), dialogToo) << what;
        EXPECT_EQ(paintsNow(frame), frameArea.has_value()) << what;
        if (frameArea) {
            EXPECT_EQ(text(lastPaint), text(*frameArea)) << what;
        }
    };
    SetWindowPos(dialog, nullptr, 20, 30, 200, 100, 0);
    expectPainted("same place and size", std::nullopt, false);
    SetWindowPos(dialog, nullptr, 20, 50, 200, 100, 0);
    expectPainted("moved down by 20", RECT{20, 30, 220, 50}, false);
    SetWindowPos(dialog, nullptr, 20, 50, 200, 120, 0);
    expectPainted("grown", std::nullopt, true);
    const HWND button = GetDlgItem(dialog, IDC_LEARN);
    SetWindowPos(button, nullptr, 100, 20, 60, 30, 0);
    paintsNow(dialog);
    SetWindowPos(button, nullptr, 100, 20, 60, 30, 0);
    expectPainted("button at the same place", std::nullopt, false);
    SetWindowPos(button, nullptr, 10, 60, 60, 30, 0);
    expectPainted("button moved", std::nullopt, true);
    ShowWindow(dialog, SW_HIDE);
    expectPainted("hidden", RECT{20, 50, 220, 170}, false);
    ShowWindow(dialog, SW_SHOW);
    expectPainted("shown", std::nullopt, true);
    DestroyWindow(dialog);
    expectPainted("destroyed", RECT{20, 50, 220, 170}, false);
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
    EXPECT_EQ(pixelOf(frame, 9, 25), White);
    EXPECT_EQ(pixelOf(frame, 30, 25), White);

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
    EXPECT_EQ(shown.pixelColor(50, 60), QColor(Qt::black));
    EXPECT_EQ(shown.pixelColor(95, 70), QColor(128, 128, 128));
}

TEST_F(Layer, AButtonClicksOncePerClickAndOnlyForItsUser) {
    const HWND dialog = openDialog(openFrame());
    const HWND button = GetDlgItem(dialog, IDC_LEARN);
    ASSERT_NE(button, nullptr);
    const auto expectClicks = [&](int expected, const char* what) {
        runDry(dialog);
        EXPECT_EQ(count(WM_COMMAND), expected) << what;
        seen.clear();
    };
    SetWindowTextA(button, "text");
    EnableWindow(button, FALSE);
    EnableWindow(button, TRUE);
    SetWindowPos(button, nullptr, 10, 10, 80, 40, 0);
    expectClicks(0, "no user");

    handler = [&](HWND, UINT message) {
        if (message == WM_COMMAND) {
            EXPECT_EQ(seen.back().wParam, MAKEWPARAM(IDC_LEARN, BN_CLICKED));
            EXPECT_EQ(reinterpret_cast<HWND>(seen.back().lParam), button);
        }
        return false;
    };
    QWidget* widget = widgetOf(button);
    QTest::mouseClick(widget, Qt::LeftButton);
    expectClicks(1, "mouse");
    QTest::mousePress(widget, Qt::LeftButton);
    QTest::mouseRelease(widget, Qt::LeftButton, {}, QPoint(300, 200));
    expectClicks(0, "let go beside it");
    widget->setFocus();
    QTest::keyClick(widget, Qt::Key_Space);
    expectClicks(1, "space");
    EnableWindow(button, FALSE);
    QTest::mouseClick(widget, Qt::LeftButton);
    QTest::keyClick(widget, Qt::Key_Space);
    expectClicks(0, "disabled");
    EXPECT_FALSE(IsWindowEnabled(button));
}

TEST_F(Layer, TabMovesNoFocus) {
    const HWND frame = openFrame();
    const HWND first = GetDlgItem(openDialog(frame), IDC_LEARN);
    openDialog(frame);
    QWidget* widget = widgetOf(first);
    widget->setFocus();
    ASSERT_TRUE(widget->hasFocus());
    for (const Qt::Key key : {Qt::Key_Tab, Qt::Key_Backtab, Qt::Key_Right}) {
        QTest::keyClick(widget, key);
        runDry(frame);
        EXPECT_TRUE(widget->hasFocus()) << key;
    }
}

TEST_F(Layer, AcceleratorsReachTheWindowAsCommands) {
    const HWND frame = openFrame();
    struct Row {
        const char* what;
        int key;
        Qt::KeyboardModifiers modifiers;
        UINT command;
    };
    for (const Row& row :
         {Row{"Alt+/", Qt::Key_Slash, Qt::AltModifier, IDM_ABOUT}, Row{"Alt+F4", Qt::Key_F4, Qt::AltModifier, IDM_EXIT},
          Row{"/", Qt::Key_Slash, Qt::NoModifier, 0}, Row{"F4", Qt::Key_F4, Qt::NoModifier, 0},
          Row{"Alt+F5", Qt::Key_F5, Qt::AltModifier, 0}}) {
        seen.clear();
        const QString letter = row.key == Qt::Key_Slash ? QStringLiteral("/") : QString();
        QTest::sendKeyEvent(QTest::Click, widgetOf(frame), static_cast<Qt::Key>(row.key), letter, row.modifiers);
        runDry(frame);
        EXPECT_EQ(count(WM_COMMAND), row.command ? 1 : 0) << row.what;
        for (const Seen& message : seen) {
            if (message.message == WM_COMMAND) {
                EXPECT_EQ(message.wParam, MAKEWPARAM(row.command, 1)) << row.what;
            }
        }
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
        EXPECT_FALSE(IsWindow(dead));
        EXPECT_FALSE(IsWindowVisible(dead));
        EXPECT_FALSE(IsWindowEnabled(dead));
        EXPECT_FALSE(DestroyWindow(dead));
        EXPECT_FALSE(ShowWindow(dead, SW_SHOW));
        EXPECT_FALSE(UpdateWindow(dead));
        EXPECT_FALSE(EnableWindow(dead, TRUE));
        EXPECT_FALSE(SetWindowPos(dead, nullptr, 0, 0, 10, 10, 0));
        EXPECT_FALSE(GetWindowRect(dead, &rect));
        EXPECT_FALSE(GetClientRect(dead, &rect));
        EXPECT_FALSE(SetWindowTextA(dead, "text"));
        EXPECT_EQ(GetWindowTextA(dead, buffer.data(), 8), 0);
        EXPECT_STREQ(buffer.data(), "");
        EXPECT_EQ(GetDlgItem(dead, IDC_LEARN), nullptr);
        EXPECT_EQ(GetDC(dead), nullptr);
        EXPECT_EQ(BeginPaint(dead, &paint), nullptr);
        EXPECT_FALSE(PostMessageA(dead, FirstMark, 0, 0));
        EXPECT_EQ(SendMessageA(dead, FirstMark, 0, 0), 0);
        EXPECT_EQ(CreateDialogParamA(nullptr, MAKEINTRESOURCEA(IDD_READINGS), dead, recordDialog, 0), nullptr);
        EXPECT_FALSE(SetMenu(dead, nullptr));
    }
    EXPECT_EQ(GetPixel(dc, 1, 1), CLR_INVALID);
    EXPECT_FALSE(Rectangle(dc, 0, 0, 10, 10));
    EXPECT_FALSE(LineTo(dc, 10, 10));
    EXPECT_FALSE(ExtTextOutA(dc, 0, 0, ETO_OPAQUE, nullptr, "A", 1, nullptr));
    const HDC living = GetDC(frame);
    EXPECT_EQ(SelectObject(living, brush), nullptr);
    EXPECT_FALSE(DeleteObject(brush));
    EXPECT_FALSE(DeleteObject(GetStockObject(WHITE_BRUSH)));
    ReleaseDC(frame, living);
    EXPECT_EQ(CreateDialogParamA(nullptr, MAKEINTRESOURCEA(9999), frame, recordDialog, 0), nullptr);
    EXPECT_FALSE(paintsNow(frame) && paintsNow(frame));
}

TEST_F(Layer, ADialogThatLeavesItsPaintAloneIsValidatedForIt) {
    const HWND dialog = openDialog(openFrame());
    dialogPaints = false;
    InvalidateRect(dialog, nullptr, TRUE);
    seen.clear();
    UpdateWindow(dialog);
    EXPECT_EQ(count(WM_PAINT), 1);
    UpdateWindow(dialog);
    EXPECT_EQ(count(WM_PAINT), 1);
    EXPECT_EQ(pixelOf(dialog, 2, 2), RGB(240, 240, 240));
}

TEST_F(Layer, LoadsStringsCutToTheirBuffer) {
    std::array<char, 10> text{"untouched"};
    EXPECT_EQ(LoadStringA(nullptr, IDS_TITLE, text.data(), 10), 6);
    EXPECT_STREQ(text.data(), "Tarvex");
    EXPECT_EQ(LoadStringA(nullptr, IDS_CLASS_NAME, text.data(), 10), 8);
    EXPECT_STREQ(text.data(), "TARVEXxx");
    EXPECT_EQ(LoadStringA(nullptr, IDS_TITLE, text.data(), 4), 3);
    EXPECT_STREQ(text.data(), "Tar");
    EXPECT_EQ(LoadStringA(nullptr, 2, text.data(), 10), 0);
    EXPECT_STREQ(text.data(), "");
    EXPECT_EQ(LoadStringA(nullptr, 7000, text.data(), 10), 0);
}
