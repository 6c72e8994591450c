// The Diagram page: which part of which picture stands where, and how the two bars move it.
#include <QImage>
#include <QPixmap>
#include <QTest>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "User.h"
#include "platform/linux/Layer.h"
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

// Pixels of the view on the screen that are not those of the picture at the present offsets.
int wrongPixels(unsigned resource, const QRect& view) {
    const QImage shown = widgetOf(PageWindow)->grab(view).toImage();
    const std::vector<COLORREF>& picture = pictureOf(resource);
    int wrong = 0;
    for (int at = 0; at < view.width() * view.height(); ++at) {
        const QPoint place(at % view.width(), at / view.width());
        const QRgb pixel = shown.pixel(place);
        const size_t inPicture = (DiagramScrollY + static_cast<unsigned>(place.y())) * 961 + DiagramScrollX +
                                 static_cast<unsigned>(place.x());
        wrong += picture[inPicture] != RGB(qRed(pixel), qGreen(pixel), qBlue(pixel));
    }
    return wrong;
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
    EXPECT_EQ(wrongPixels(224, ScrolledSizes[0].view), 0) << "English for a language that has none";
    EXPECT_NE(pictureOf(225), pictureOf(224));
    for (size_t language = 0; language < 5; ++language) {
        SCOPED_TRACE(language);
        for (const ScrolledSize& size : ScrolledSizes) {
            choose(size.size);
            scroll(0, SB_THUMBTRACK, 77);
            scroll(1, SB_PAGEDOWN);
            EXPECT_EQ(wrongPixels(Pictures[language == 0 ? 1 : language - 1], size.view), 0);
            choose(LanguageItems[language]);
            EXPECT_EQ(DiagramScrollX + DiagramScrollY, 0u);
            EXPECT_EQ(wrongPixels(Pictures[language], size.view), 0);
            for (const int axis : {0, 1}) {
                EXPECT_EQ(widgetOf(bar(axis))->geometry(), size.bars[axis]);
                EXPECT_TRUE(IsWindowVisible(bar(axis)));
                EXPECT_EQ(SendMessageA(bar(axis), SBM_GETPOS, 0, 0), 1);
            }
            choose(LanguageItems[language == 0 ? 1 : language - 1]);
        }
        choose(LanguageItems[language]);
        for (const UINT size : {IDM_SIZE_1024X768, IDM_SIZE_1280X960, IDM_SIZE_1280X1024}) {
            choose(size);
            RECT client{};
            GetClientRect(MainWindow, &client);
            const QRect view((client.right - 961) / 2, (client.bottom - 636) / 2, 961, 636);
            EXPECT_EQ(wrongPixels(Pictures[language], view), 0) << size;
            EXPECT_FALSE(IsWindowVisible(bar(0)) || IsWindowVisible(bar(1)));
        }
    }
}

TEST_F(Diagram, OffsetsEndAtOneAndAtTheLargest) {
    openIn("ang");
    struct Row {
        WORD code;
        bool back;
        const char* moves;  // from and to, counted from 0 backwards, else from the largest
    };
    const Row rows[] = {
        {SB_LINEUP, true, "0 1  5 1  10 1  11 1  12 2"},
        {SB_PAGEUP, true, "0 1  30 1  50 1  51 1  52 2"},
        {SB_LINEDOWN, false, "0 0  9 0  10 0  11 1"},
        {SB_PAGEDOWN, false, "0 0  49 0  50 0  51 1"},
        {SB_THUMBPOSITION, true, "7 7"},
        {SB_ENDSCROLL, true, "7 7"},
        {SB_LEFT, true, "7 7"},
        {SB_RIGHT, true, "7 7"},
    };
    for (const ScrolledSize& size : ScrolledSizes) {
        choose(size.size);
        for (const int axis : {0, 1}) {
            for (const Row& row : rows) {
                const auto place = [&](unsigned by) { return row.back ? by : size.largest[axis] - by; };
                std::istringstream moves(row.moves);
                for (unsigned from = 0, to = 0; moves >> from >> to;) {
                    scroll(axis, SB_THUMBTRACK, place(from));
                    scroll(axis, row.code, 99);
                    EXPECT_EQ(offset(axis), place(to)) << axis << ": code " << row.code << " from " << from;
                    EXPECT_EQ(SendMessageA(bar(axis), SBM_GETPOS, 0, 0), place(to));
                }
                EXPECT_EQ(wrongPixels(224, size.view), 0);
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
            QTest::mouseClick(&widget, Qt::LeftButton, {}, middleOf(bar(axis), part));
            EXPECT_EQ(offset(axis), to) << axis << " part " << part;
        }
        const QPoint grip = middleOf(bar(axis), QStyle::SC_ScrollBarSlider);
        QTest::mousePress(&widget, Qt::LeftButton, {}, grip);
        for (const int way : {20, 90, 5000}) {
            const unsigned before = offset(axis);
            QTest::mouseMove(&widget, grip + (axis == 0 ? QPoint(way, 0) : QPoint(0, way)));
            EXPECT_GT(offset(axis), before) << "while the thumb is held";
            EXPECT_EQ(wrongPixels(224, ScrolledSizes[0].view), 0);
        }
        QTest::mouseRelease(&widget, Qt::LeftButton, {}, grip);
        EXPECT_EQ(offset(axis), ScrolledSizes[0].largest[axis]);
    }
}

TEST_F(Diagram, LeavingThePageFreesThePicture) {
    openIn("ang");
    const auto count = [] { return std::pair(layer::livingObjects(), layer::livingContexts()); };
    const auto there = count();
    choose(IDM_RESET);
    EXPECT_EQ(DiagramBitmap, nullptr);
    EXPECT_EQ(count(), std::pair(there.first - 1, there.second - 1));
    choose(IDM_DIAGRAM);
    choose(IDM_LANGUAGE_POLISH);
    choose(IDM_SIZE_1280X1024);
    EXPECT_EQ(count(), there);
}
