// The Diagram page: which part of which picture stands where, and how the two bars move it.
#include <QWidget>
#include <array>
#include <map>
#include <string>
#include <vector>

#include "User.h"
#include "service/DiagramPage.h"
#include "shell/AppState.h"

namespace {

// In the order of the language menu.
constexpr unsigned Pictures[] = {225, 224, 226, 223, 228};
constexpr int Width = 961;
constexpr int Height = 636;

// The picture's pixels, row by row.
const std::vector<COLORREF>& pictureOf(unsigned resource) {
    static std::map<unsigned, std::vector<COLORREF>> known;
    std::vector<COLORREF>& pixels = known[resource];
    if (pixels.empty()) {
        const HDC memory = CreateCompatibleDC(nullptr);
        SelectObject(memory, LoadBitmapA(nullptr, MAKEINTRESOURCEA(resource)));
        for (int at = 0; at < Width * Height; ++at) {
            pixels.push_back(GetPixel(memory, at % Width, at / Width));
        }
        EXPECT_TRUE(pixels.back() != CLR_INVALID && GetPixel(memory, Width, 0) == CLR_INVALID &&
                    GetPixel(memory, 0, Height) == CLR_INVALID);
        DeleteDC(memory);
    }
    return pixels;
}

// Whether the view on the screen is the picture at the present offsets.
bool shows(unsigned resource, const QRect& view) {
    const std::vector<COLORREF>& picture = pictureOf(resource);
    std::vector<COLORREF> expected;
    for (int y = 0; y < view.height(); ++y) {
        const auto row = picture.begin() + Width * (static_cast<int>(DiagramScrollY) + y) + DiagramScrollX;
        expected.insert(expected.end(), row, row + view.width());
    }
    return snapshot(PageWindow, {view.x(), view.y(), view.right() + 1, view.bottom() + 1}) == expected;
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
            EXPECT_NE(picture, std::exchange(picture, Pictures[language]));
            EXPECT_EQ(DiagramScrollX + DiagramScrollY, 0u);
            EXPECT_TRUE(shows(picture, size.view));
            for (const int axis : {0, 1}) {
                EXPECT_EQ(widgetOf(bar(axis))->geometry(), size.bars[axis]);
                EXPECT_TRUE(IsWindowVisible(bar(axis)));
                EXPECT_EQ(SendMessageA(bar(axis), SBM_GETPOS, 0, 0), 1);
            }
        }
    }
    EXPECT_NE(pictureOf(225), pictureOf(224));
    for (const UINT size : {IDM_SIZE_1024X768, IDM_SIZE_1280X960, IDM_SIZE_1280X1024}) {
        choose(size);
        RECT client{};
        GetClientRect(MainWindow, &client);
        EXPECT_TRUE(shows(picture, {(client.right - Width) / 2, (client.bottom - Height) / 2, Width, Height})) << size;
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
