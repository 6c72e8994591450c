// The Diagram page: which part of which picture stands where, and how the two bars move it.
#include <QWidget>
#include <algorithm>
#include <array>
#include <ranges>
#include <utility>

#include "User.h"
#include "service/DiagramPage.h"
#include "shell/AppState.h"

namespace {

// In the order of the language menu.
constexpr unsigned Pictures[] = {225, 224, 226, 223, 228};

// Whether the view on the screen is the picture at the present offsets.
bool shows(unsigned resource, const QRect& view) {
    const HDC page = GetDC(PageWindow);
    const HDC picture = CreateCompatibleDC(nullptr);
    const HBITMAP bitmap = LoadBitmapA(nullptr, MAKEINTRESOURCEA(resource));
    SelectObject(picture, bitmap);
    const auto differs = [&](int at) {
        const int x = at % view.width();
        const int y = at / view.width();
        return GetPixel(page, view.x() + x, view.y() + y) !=
               GetPixel(picture, static_cast<int>(DiagramScrollX) + x, static_cast<int>(DiagramScrollY) + y);
    };
    const bool same = std::ranges::none_of(std::views::iota(0, view.width() * view.height()), differs);
    ReleaseDC(PageWindow, page);
    DeleteDC(picture);
    DeleteObject(bitmap);
    return same;
}

// The bars by axis, 0 for the horizontal one.
HWND bar(int axis) {
    return GetDlgItem(PageWindow, axis == 0 ? 1120 : 1121);
}

unsigned offset(int axis) {
    return axis == 0 ? DiagramScrollX : DiagramScrollY;
}

void scroll(int axis, unsigned code, unsigned position = 0) {
    SendMessageA(PageWindow, axis == 0 ? WM_HSCROLL : WM_VSCROLL, MAKEWPARAM(code, position), 0);
}

void choose(UINT item) {
    SendMessageA(MainWindow, WM_COMMAND, item, 0);
    settle();
}

// The sizes in which the picture is scrolled; the bars' places are those on the page.
struct ScrolledSize {
    UINT size;
    QRect view;
    QRect bars[2];
    unsigned largest[2];
};
const ScrolledSize ScrolledSizes[] = {
    {IDM_SIZE_640X480, {10, 10, 600, 370}, {{10, 380, 600, 15}, {610, 10, 15, 370}}, {361, 266}},
    {IDM_SIZE_800X600, {10, 10, 750, 485}, {{10, 495, 750, 20}, {760, 10, 20, 485}}, {211, 151}},
};

}  // namespace

using Diagram = WindowFixture;

TEST_F(Diagram, EachLanguageHasItsPictureInEverySize) {
    startIn("xx", 9);
    choose(IDM_DIAGRAM);
    unsigned picture = 224;  // English for a language that has none
    for (const ScrolledSize& size : ScrolledSizes) {
        choose(size.size);
        for (size_t language = 0; language < 5; ++language) {
            SCOPED_TRACE(language);
            scroll(0, SB_THUMBTRACK, 77);
            scroll(1, SB_PAGEDOWN);
            EXPECT_TRUE(shows(picture, size.view));
            choose(LanguageItems[language]);
            EXPECT_EQ(DiagramScrollX + DiagramScrollY, 0u);
            EXPECT_FALSE(shows(std::exchange(picture, Pictures[language]), size.view)) << "languages differ";
            EXPECT_TRUE(shows(picture, size.view));
            for (const int axis : {0, 1}) {
                EXPECT_EQ(widgetOf(bar(axis))->geometry(), size.bars[axis]);
                EXPECT_TRUE(IsWindowVisible(bar(axis)));
                EXPECT_EQ(SendMessageA(bar(axis), SBM_GETPOS, 0, 0), 1);
            }
        }
    }
    for (const UINT size : {IDM_SIZE_1024X768, IDM_SIZE_1280X960, IDM_SIZE_1280X1024}) {
        choose(size);
        RECT client{};
        GetClientRect(MainWindow, &client);
        EXPECT_TRUE(shows(picture, {(client.right - 961) / 2, (client.bottom - 636) / 2, 961, 636})) << size;
        EXPECT_FALSE(IsWindowVisible(bar(0)) || IsWindowVisible(bar(1)));
    }
}

TEST_F(Diagram, OffsetsEndAtOneAndAtTheLargest) {
    startIn("ang", 9);
    choose(IDM_DIAGRAM);
    for (const ScrolledSize& size : ScrolledSizes) {
        choose(size.size);
        for (const int axis : {0, 1}) {
            const unsigned end = size.largest[axis];
            const std::array<unsigned, 3> moves[] = {
                {SB_LINEUP, 0, 1},           {SB_LINEUP, 10, 1},       {SB_LINEUP, 12, 2},
                {SB_PAGEUP, 30, 1},          {SB_PAGEUP, 50, 1},       {SB_PAGEUP, 52, 2},
                {SB_LINEDOWN, end - 9, end}, {SB_PAGEDOWN, end, end},  {SB_LINEDOWN, end - 11, end - 1},
                {SB_THUMBPOSITION, 7, 7},    {SB_ENDSCROLL, end, end}, {SB_PAGEDOWN, end - 51, end - 1}};
            for (const auto& [code, from, to] : moves) {
                scroll(axis, SB_THUMBTRACK, from);
                scroll(axis, code, 99);
                EXPECT_EQ(offset(axis), to) << axis << ": code " << code << " from " << from;
                EXPECT_EQ(SendMessageA(bar(axis), SBM_GETPOS, 0, 0), to);
                EXPECT_TRUE(shows(224, size.view)) << axis << ": code " << code << " from " << from;
            }
            scroll(axis, SB_THUMBTRACK, 1);
            for (const auto& [part, to] : {std::pair{QStyle::SC_ScrollBarAddLine, 11u},
                                           {QStyle::SC_ScrollBarAddPage, 61},
                                           {QStyle::SC_ScrollBarSubLine, 51},
                                           {QStyle::SC_ScrollBarSubPage, 1}}) {
                clickAt(bar(axis), middleOf(bar(axis), part));
                EXPECT_EQ(offset(axis), to) << axis << ": click on part " << part;
            }
            const QPoint grip = middleOf(bar(axis), QStyle::SC_ScrollBarSlider);
            drag(bar(axis), {grip, grip + QPoint(30, 30), widgetOf(bar(axis))->rect().bottomRight()});
            EXPECT_EQ(offset(axis), end) << "the thumb pulled to the end";
            EXPECT_TRUE(shows(224, size.view));
        }
    }
}
