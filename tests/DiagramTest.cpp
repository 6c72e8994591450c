// The Diagram page: which part of which picture stands where, and how the two bars move it.
#include <QTest>
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

// The picture's pixels, row by row.
const std::vector<COLORREF>& pictureOf(unsigned resource) {
    static std::map<unsigned, std::vector<COLORREF>> known;
    std::vector<COLORREF>& pixels = known[resource];
    if (pixels.empty()) {
        const HBITMAP bitmap = LoadBitmapA(nullptr, MAKEINTRESOURCEA(resource));
        const HDC memory = CreateCompatibleDC(nullptr);
        SelectObject(memory, bitmap);
        for (int at = 0; at < 961 * 636; ++at) {
            pixels.push_back(GetPixel(memory, at % 961, at / 961));
        }
        EXPECT_TRUE(GetPixel(memory, 960, 635) != CLR_INVALID && GetPixel(memory, 961, 0) == CLR_INVALID &&
                    GetPixel(memory, 0, 636) == CLR_INVALID);
        DeleteDC(memory);
        DeleteObject(bitmap);
    }
    return pixels;
}

// Whether the view on the screen is the picture at the present offsets.
bool shows(unsigned resource, const QRect& view) {
    const std::vector<COLORREF>& picture = pictureOf(resource);
    std::vector<COLORREF> expected;
    for (int y = 0; y < view.height(); ++y) {
        const auto row = picture.begin() + 961 * (static_cast<int>(DiagramScrollY) + y) + DiagramScrollX;
        expected.insert(expected.end(), row, row + view.width());
    }
    return snapshot(PageWindow, {view.x(), view.y(), view.right() + 1, view.bottom() + 1}) == expected;
}

// The bars by axis, 0 for the horizontal one.
HWND bar(int axis) {
    return GetDlgItem(PageWindow, axis == 0 ? 1120 : 1121);
}

unsigned& offset(int axis) {
    return axis == 0 ? DiagramScrollX : DiagramScrollY;
}

void scroll(int axis, WORD code, unsigned position = 0) {
    SendMessageA(PageWindow, axis == 0 ? WM_HSCROLL : WM_VSCROLL, MAKEWPARAM(code, position),
                 reinterpret_cast<LPARAM>(bar(axis)));
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

class Diagram : public WindowFixture {
protected:
    void openIn(const std::string& language) {
        startIn(language, 9);
        choose(IDM_DIAGRAM);
        choose(IDM_SIZE_640X480);
    }
};

TEST_F(Diagram, EachLanguageHasItsPictureInEverySize) {
    openIn("xx");
    EXPECT_NE(pictureOf(225), pictureOf(224));
    unsigned picture = 224;  // English for a language that has none
    for (const ScrolledSize& size : ScrolledSizes) {
        choose(size.size);
        for (size_t language = 0; language < 5; ++language) {
            SCOPED_TRACE(language);
            scroll(0, SB_THUMBTRACK, 77);
            scroll(1, SB_PAGEDOWN);
            EXPECT_TRUE(shows(picture, size.view));
            choose(LanguageItems[language]);
            picture = Pictures[language];
            EXPECT_EQ(DiagramScrollX + DiagramScrollY, 0u);
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
        for (size_t language = 0; language < 5; ++language) {
            choose(LanguageItems[language]);
            EXPECT_TRUE(shows(Pictures[language], {(client.right - 961) / 2, (client.bottom - 636) / 2, 961, 636}));
            EXPECT_FALSE(IsWindowVisible(bar(0)) || IsWindowVisible(bar(1)));
        }
    }
}

TEST_F(Diagram, OffsetsEndAtOneAndAtTheLargest) {
    openIn("ang");
    for (const ScrolledSize& size : ScrolledSizes) {
        choose(size.size);
        for (const int axis : {0, 1}) {
            const unsigned end = size.largest[axis];
            const std::array<unsigned, 3> moves[] = {
                {SB_LINEUP, 0, 1},
                {SB_LINEUP, 5, 1},
                {SB_LINEUP, 10, 1},
                {SB_LINEUP, 11, 1},
                {SB_LINEUP, 12, 2},
                {SB_PAGEUP, 0, 1},
                {SB_PAGEUP, 30, 1},
                {SB_PAGEUP, 50, 1},
                {SB_PAGEUP, 51, 1},
                {SB_PAGEUP, 52, 2},
                {SB_LINEDOWN, end, end},
                {SB_LINEDOWN, end - 9, end},
                {SB_LINEDOWN, end - 11, end - 1},
                {SB_PAGEDOWN, end, end},
                {SB_PAGEDOWN, end - 49, end},
                {SB_PAGEDOWN, end - 51, end - 1},
                {SB_THUMBPOSITION, 7, 7},
                {SB_ENDSCROLL, 7, 7},
            };
            for (const auto& [code, from, to] : moves) {
                scroll(axis, SB_THUMBTRACK, from);
                scroll(axis, static_cast<WORD>(code), 99);
                EXPECT_EQ(offset(axis), to) << axis << ": code " << code << " from " << from;
                EXPECT_EQ(SendMessageA(bar(axis), SBM_GETPOS, 0, 0), to);
                EXPECT_TRUE(shows(224, size.view));
            }
        }
    }
}

TEST_F(Diagram, TheMouseScrollsByTheBars) {
    openIn("ang");
    for (const int axis : {0, 1}) {
        QWidget& widget = *widgetOf(bar(axis));
        for (const auto& [part, to] : {std::pair{QStyle::SC_ScrollBarAddLine, 10u},
                                       {QStyle::SC_ScrollBarAddPage, 60},
                                       {QStyle::SC_ScrollBarSubLine, 50},
                                       {QStyle::SC_ScrollBarSubPage, 1}}) {
            clickAt(bar(axis), middleOf(bar(axis), part));
            EXPECT_EQ(offset(axis), to) << axis << " part " << part;
        }
        const QPoint grip = middleOf(bar(axis), QStyle::SC_ScrollBarSlider);
        const auto along = [&](int way) { return widget.mapToGlobal(axis == 0 ? QPoint(way, 5) : QPoint(5, way)); };
        const int start = axis == 0 ? grip.x() : grip.y();
        const int length = axis == 0 ? widget.width() : widget.height();
        desktop::pressButton(along(start));
        for (const int way : {start + 20, start + 90, length + 20}) {
            const unsigned before = offset(axis);
            desktop::movePointer(along(way));
            settle();
            EXPECT_GT(offset(axis), before) << "while the thumb is held";
            EXPECT_TRUE(shows(224, ScrolledSizes[0].view));
        }
        desktop::releaseButton(along(length + 20));
        settle();
        EXPECT_EQ(offset(axis), ScrolledSizes[0].largest[axis]);
    }
}
