// Shapes and text of the layer, by their pixels.
#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "LayerWindows.h"
#include "resources/Ids.h"
#include "shell/AppState.h"
#include "shell/SizeProfiles.h"

using Colours = std::set<COLORREF>;

namespace {

constexpr RECT Field{0, 0, 200, 100};

// Pixel rows and columns of a colour in Field, right and bottom excluded.
RECT boundsOf(HWND window, COLORREF colour) {
    RECT bounds{Field.right, Field.bottom, 0, 0};
    const std::vector<COLORREF> pixels = snapshot(window, Field);
    for (size_t at = 0; at < pixels.size(); ++at) {
        if (pixels[at] == colour) {
            const LONG x = static_cast<LONG>(at) % Field.right;
            const LONG y = static_cast<LONG>(at) / Field.right;
            bounds = {std::min(bounds.left, x), std::min(bounds.top, y), std::max(bounds.right, x + 1),
                      std::max(bounds.bottom, y + 1)};
        }
    }
    return bounds;
}

int columnOf(HWND window, int x, COLORREF colour) {
    return countPixels(window, {x, 0, x + 1, Field.bottom}, [&](COLORREF pixel) { return pixel == colour; });
}

Colours coloursOf(HWND window) {
    const std::vector<COLORREF> pixels = snapshot(window, Field);
    return {pixels.begin(), pixels.end()};
}

}  // namespace

class LayerDrawing : public Layer {
protected:
    void SetUp() override {
        Layer::SetUp();
        window = openFrame();
        dc = GetDC(window);
    }
    void TearDown() override {
        ReleaseDC(window, dc);
        Layer::TearDown();
    }
    void clear() const {
        InvalidateRect(window, nullptr, TRUE);
        UpdateWindow(window);
    }
    void use(HGDIOBJ pen, HGDIOBJ brush) const {
        SelectObject(dc, pen);
        SelectObject(dc, brush);
    }
    // The picture of a text alone, its cells and a margin.
    std::vector<COLORREF> textPicture(HFONT font, std::string_view letters) const {
        clear();
        SelectObject(dc, font);
        ExtTextOutA(dc, 20, 20, ETO_OPAQUE, nullptr, letters.data(), static_cast<UINT>(letters.size()), nullptr);
        return snapshot(window, {15, 15, 200, 60});
    }
    SIZE extentOf(HFONT font, std::string_view letters) const {
        SIZE size{};
        SelectObject(dc, font);
        GetTextExtentPoint32A(dc, letters.data(), static_cast<int>(letters.size()), &size);
        return size;
    }

    HWND window = nullptr;
    HDC dc = nullptr;
};

TEST_F(LayerDrawing, AFreshContextDrawsBlackOnWhite) {
    Rectangle(dc, 10, 10, 20, 20);
    EXPECT_EQ(pixelOf(window, 10, 10), Black);
    EXPECT_EQ(pixelOf(window, 15, 15), White);
    clear();
    ExtTextOutA(dc, 10, 10, ETO_OPAQUE, nullptr, "\x48", 1, nullptr);
    EXPECT_EQ(pixelOf(window, 10, 10), White);
    EXPECT_GT(countPixels(window, Field, darkish), 0);
    EXPECT_EQ(SetTextColor(dc, Red), Black);
    EXPECT_EQ(SetBkColor(dc, Cyan), White);
    EXPECT_EQ(SetTextColor(dc, Black), Red);
}

TEST_F(LayerDrawing, ShapesStayInTheirBoxAndAreNotSmoothed) {
    using Draw = void (*)(HDC, int, int, int, int);
    struct Row {
        const char* what;
        Draw draw;
        bool round;
    };
    const Row rows[] = {
        {"Rectangle", [](HDC to, int l, int t, int r, int b) { Rectangle(to, l, t, r, b); }, false},
        {"RoundRect", [](HDC to, int l, int t, int r, int b) { RoundRect(to, l, t, r, b, 20, 20); }, true},
        {"Ellipse", [](HDC to, int l, int t, int r, int b) { Ellipse(to, l, t, r, b); }, true},
    };
    use(CreatePen(PS_SOLID, 1, Red), CreateSolidBrush(Cyan));
    const RECT boxes[][2] = {{{10, 10, 90, 50}, {10, 10, 90, 50}},
                             {{21, 33, 64, 76}, {21, 33, 64, 76}},
                             {{90, 50, 10, 10}, {10, 10, 90, 50}},
                             {{-20, 40, 60, 90}, {0, 40, 60, 90}}};
    for (const Row& row : rows) {
        for (const auto& [given, filled] : boxes) {
            clear();
            row.draw(dc, given.left, given.top, given.right, given.bottom);
            const std::string what = std::string(row.what) + " " + text(given);
            EXPECT_EQ(text(boundsOf(window, Red)), text(filled)) << what;
            EXPECT_EQ(coloursOf(window), (Colours{Grey, Red, Cyan})) << what;
            EXPECT_EQ(pixelOf(window, filled.right - 1, filled.bottom - 1), row.round ? Grey : Red) << what;
            EXPECT_EQ(pixelOf(window, (filled.left + filled.right) / 2, (filled.top + filled.bottom) / 2), Cyan);
        }
        clear();
        row.draw(dc, 30, 10, 30, 50);
        row.draw(dc, 30, 10, 50, 10);
        EXPECT_EQ(coloursOf(window), Colours{Grey}) << row.what << " without width or height";
    }
}

TEST_F(LayerDrawing, AThinLineLeavesOutItsLastPoint) {
    use(CreatePen(PS_SOLID, 1, Red), CreateSolidBrush(Cyan));
    struct Row {
        POINT from, to;
        RECT drawn;
    };
    for (const Row& row : {Row{{10, 50}, {20, 50}, {10, 50, 20, 51}}, Row{{20, 50}, {10, 50}, {11, 50, 21, 51}},
                           Row{{10, 50}, {10, 70}, {10, 50, 11, 70}}, Row{{10, 70}, {10, 50}, {10, 51, 11, 71}},
                           Row{{10, 50}, {20, 60}, {10, 50, 20, 60}}, Row{{30, 30}, {10, 34}, {11, 30, 31, 35}}}) {
        clear();
        MoveToEx(dc, row.from.x, row.from.y, nullptr);
        LineTo(dc, row.to.x, row.to.y);
        EXPECT_EQ(text(boundsOf(window, Red)), text(row.drawn)) << "to " << row.to.x << "," << row.to.y;
        EXPECT_EQ(coloursOf(window), (Colours{Grey, Red}));
        POINT end{};
        MoveToEx(dc, 0, 0, &end);
        EXPECT_EQ(end.x, row.to.x);
        EXPECT_EQ(end.y, row.to.y);
        clear();
        const POINT points[] = {row.from, row.to};
        EXPECT_TRUE(Polyline(dc, points, 2));
        EXPECT_EQ(text(boundsOf(window, Red)), text(row.drawn)) << "polyline";
    }
    clear();
    const POINT corner[] = {{10, 10}, {20, 10}, {20, 20}};
    Polyline(dc, corner, 3);
    EXPECT_EQ(countPixels(window, Field, [](COLORREF colour) { return colour == Red; }), 20);
}

TEST_F(LayerDrawing, AWideLineHasRoundEnds) {
    use(CreatePen(PS_SOLID, 9, Red), CreateSolidBrush(Cyan));
    const POINT points[] = {{50, 50}, {150, 50}};
    Polyline(dc, points, 2);
    EXPECT_EQ(coloursOf(window), (Colours{Grey, Red}));
    EXPECT_EQ(columnOf(window, 100, Red), 9);
    const RECT bounds = boundsOf(window, Red);
    EXPECT_NEAR(bounds.left, 46, 1);
    EXPECT_NEAR(bounds.right, 155, 1);
    EXPECT_LT(columnOf(window, bounds.left, Red), 7);
    EXPECT_LT(columnOf(window, bounds.right - 1, Red), 7);
}

TEST_F(LayerDrawing, TextFillsItsCellsOrTheGivenRectangle) {
    SetBkColor(dc, Yellow);
    SIZE cell{};
    GetTextExtentPoint32A(dc, "Wi", 2, &cell);
    ExtTextOutA(dc, 30, 40, ETO_OPAQUE, nullptr, "Wild", 2, nullptr);
    EXPECT_EQ(text(boundsOf(window, Yellow)), text({30, 40, 30 + cell.cx, 40 + cell.cy}));
    const std::vector<COLORREF> counted = snapshot(window, Field);
    clear();
    ExtTextOutA(dc, 30, 40, ETO_OPAQUE, nullptr, "Wi", 2, nullptr);
    EXPECT_TRUE(snapshot(window, Field) == counted);

    clear();
    const RECT area{25, 35, 200, 90};
    ExtTextOutA(dc, 30, 40, ETO_OPAQUE, &area, "Wi", 2, nullptr);
    EXPECT_EQ(text(boundsOf(window, Yellow)), text(area));
    EXPECT_EQ(columnOf(window, 199, Yellow), 55);
    EXPECT_GT(countPixels(window, area, darkish), 0);
    clear();
    ExtTextOutA(dc, 30, 40, ETO_OPAQUE, &area, "", 0, nullptr);
    EXPECT_EQ(coloursOf(window), (Colours{Grey, Yellow}));
}

TEST_F(LayerDrawing, EachProfileHasItsFontsInBothCharacterSets) {
    struct Row {
        int profile;
        int largeHeight, largeWidth, smallHeight, smallWidth;
    };
    constexpr std::string_view Letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    CreateFonts();
    std::set<HFONT> fonts;
    for (const char* code : {"pol", "rus"}) {
        std::copy_n(code, 4, LangCode.data());
        double largeRatio = 0;
        double smallRatio = 0;
        for (const Row& row : {Row{1, 28, 11, 14, 6}, Row{2, 36, 14, 18, 8}, Row{3, 49, 18, 18, 8},
                               Row{4, 62, 23, 24, 12}, Row{5, 65, 23, 24, 12}}) {
            SetSizeProfile(row.profile);
            ChooseFonts();
            fonts.insert({LargeFont, SmallFont});
            const SIZE large = extentOf(LargeFont, Letters);
            const SIZE small = extentOf(SmallFont, Letters);
            EXPECT_EQ(large.cy, row.largeHeight) << row.profile;
            EXPECT_EQ(small.cy, row.smallHeight) << row.profile;
            // Widths follow the asked average, alike in all sizes.
            const double largeNow = large.cx / 52.0 / row.largeWidth;
            const double smallNow = small.cx / 52.0 / row.smallWidth;
            largeRatio = largeRatio == 0 ? largeNow : largeRatio;
            smallRatio = smallRatio == 0 ? smallNow : smallRatio;
            EXPECT_NEAR(largeNow / largeRatio, 1, 0.06) << row.profile;
            EXPECT_NEAR(smallNow / smallRatio, 1, 0.1) << row.profile;
            textPicture(LargeFont, "\x48gj\xB9");
            const RECT drawn = boundsOf(window, White);
            EXPECT_EQ(drawn.bottom - drawn.top, row.largeHeight) << row.profile;
        }
    }
    EXPECT_EQ(fonts.size(), 20u);
    LangCode = {};
}

TEST_F(LayerDrawing, BytesAreTheLettersOfTheFontsCodePage) {
    LOGFONTA description{};
    description.lfHeight = 24;
    description.lfCharSet = EASTEUROPE_CHARSET;
    const HFONT latin = CreateFontIndirectA(&description);
    description.lfCharSet = RUSSIAN_CHARSET;
    const HFONT cyrillic = CreateFontIndirectA(&description);
    EXPECT_TRUE(textPicture(latin, "AHX 09") == textPicture(cyrillic, "AHX 09"));
    // Cyrillic letters that look like Latin ones.
    EXPECT_TRUE(textPicture(cyrillic, "\xC0\xC2\xC5\xCC\xCD\xCE\xD0\xD1\xD2\xD5") == textPicture(latin, "ABEMHOPCTX"));
    EXPECT_FALSE(textPicture(latin, "\xE6") == textPicture(cyrillic, "\xE6"));
    EXPECT_TRUE(textPicture(latin, "\xB0") == textPicture(cyrillic, "\xB0")) << "the degree sign is in both";
    // Every letter of the languages has a picture of its own, and none that of a missing one.
    const struct {
        HFONT font;
        std::string_view letters;
    } alphabets[] = {
        {latin,
         "\xB9\xE6\xEA\xB3\xF1\xF3\x9C\x9F\xBF\xA5\xC6\xCA\xA3\xD1\xD3\x8C\x8F\xAF"    // Polish
         "\xE1\xE8\xEF\xE9\xEC\xED\xF2\xF8\x9A\x9D\xFA\xF9\xFD\x9E\xC8\xD8\x8A\x8E"},  // Czech
        {cyrillic,
         "\xE0\xE1\xE2\xE3\xE4\xE5\xE6\xE7\xE8\xE9\xEA\xEB\xEC\xED\xEE\xEF\xF0\xF1\xF2\xF3\xF4\xF5\xF6"
         "\xF7\xF8\xF9\xFA\xFB\xFC\xFD\xFE\xFF"},
    };
    for (const auto& [font, letters] : alphabets) {
        std::set<std::vector<COLORREF>> pictures{textPicture(font, std::string_view("\x01", 1))};
        for (size_t at = 0; at < letters.size(); ++at) {
            EXPECT_TRUE(pictures.insert(textPicture(font, letters.substr(at, 1))).second)
                << "byte " << static_cast<unsigned>(static_cast<BYTE>(letters[at]));
        }
    }
}

TEST_F(LayerDrawing, CopiesBitmapsAndLeavesOutWhatLiesOutside) {
    const HBITMAP tag = LoadBitmapA(nullptr, MAKEINTRESOURCEA(IDB_TAG_POLISH_CHOSEN));
    ASSERT_NE(tag, nullptr);
    const HDC memory = CreateCompatibleDC(dc);
    SelectObject(memory, tag);
    EXPECT_TRUE(BitBlt(dc, 30, 40, 100, 100, memory, 2, 3, SRCCOPY));
    EXPECT_EQ(pixelOf(window, 29, 40), Grey);
    for (int y = 3; y < 12; ++y) {
        for (int x = 2; x < 12; ++x) {
            EXPECT_EQ(pixelOf(window, 28 + x, 37 + y), GetPixel(memory, x, y)) << x << "," << y;
        }
    }
    EXPECT_EQ(pixelOf(window, 40, 49), Grey) << "below the bitmap's last row";
    EXPECT_TRUE(DeleteDC(memory));
    EXPECT_EQ(GetPixel(memory, 0, 0), CLR_INVALID);
}
