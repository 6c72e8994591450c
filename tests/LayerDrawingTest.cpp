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

TEST_F(LayerDrawing, OnlyAThinLineLeavesOutItsLastPoint) {
    struct Row {
        int pen;
        POINT from, to;
        RECT drawn;
    };
    for (const Row& row : {Row{1, {10, 50}, {20, 50}, {10, 50, 20, 51}}, Row{1, {20, 50}, {10, 50}, {11, 50, 21, 51}},
                           Row{1, {10, 50}, {10, 70}, {10, 50, 11, 70}}, Row{1, {10, 70}, {10, 50}, {10, 51, 11, 71}},
                           Row{1, {10, 50}, {20, 60}, {10, 50, 20, 60}}, Row{1, {30, 30}, {10, 34}, {11, 30, 31, 35}},
                           Row{2, {10, 50}, {20, 50}, {9, 49, 21, 51}}, Row{2, {10, 70}, {10, 50}, {9, 49, 11, 71}},
                           Row{2, {30, 30}, {10, 34}, {9, 29, 31, 35}}, Row{2, {10, 50}, {11, 90}, {9, 49, 12, 91}},
                           Row{2, {10, 50}, {10, 50}, {9, 49, 11, 51}}}) {
        use(CreatePen(PS_SOLID, row.pen, Red), CreateSolidBrush(Cyan));
        clear();
        MoveToEx(dc, row.from.x, row.from.y, nullptr);
        LineTo(dc, row.to.x, row.to.y);
        EXPECT_EQ(text(boundsOf(window, Red)), text(row.drawn)) << "to " << row.to.x << "," << row.to.y;
        EXPECT_EQ(coloursOf(window), (Colours{Grey, Red}));
        for (int x = row.drawn.left; x < row.drawn.right; ++x) {
            EXPECT_GE(columnOf(window, x, Red), row.pen) << "a gap at " << x;
        }
        POINT end{};
        MoveToEx(dc, 0, 0, &end);
        EXPECT_EQ(end.x, row.to.x);
        EXPECT_EQ(end.y, row.to.y);
        clear();
        const POINT points[] = {row.from, row.to};
        EXPECT_TRUE(Polyline(dc, points, 2));
        EXPECT_EQ(text(boundsOf(window, Red)), text(row.drawn)) << "polyline";
    }
    use(CreatePen(PS_SOLID, 1, Red), CreateSolidBrush(Cyan));
    clear();
    const POINT corner[] = {{10, 10}, {20, 10}, {20, 20}};
    Polyline(dc, corner, 3);
    EXPECT_EQ(countPixels(window, Field, [](COLORREF colour) { return colour == Red; }), 20);
}

TEST_F(LayerDrawing, LinesAndRoundShapesTakeThePixelsOfTheRealDesktop) {
    static constexpr POINT Thin[] = {{20, 20}, {28, 24}, {24, 32}, {20, 29}, {28, 25}};
    static constexpr POINT Double[] = {{20, 20}, {27, 22}, {29, 29}, {22, 33}};
    static constexpr POINT Needle[] = {{23, 20}, {20, 22}};
    const struct {
        int pen;
        BOOL (*draw)(HDC);
        int left, top;
        std::vector<std::string> rows;  // # the pen, o the brush
    } pictures[] = {
        {1,
         [](HDC to) { return Polyline(to, Thin, 5); },
         20,
         20,  // ties in all directions
         {"##.......", "..##.....", "....##...", "......##.", "........#", ".......#.", ".....###.", "...##.#..",
          ".##...#..", "#....#...", ".##..#...", "...##....", "....#...."}},
        {2,
         [](HDC to) { return Polyline(to, Double, 4); },
         19,
         19,
         {"##.........", "######.....", ".########..", ".....#####.", "........##.", "........##.", "........###",
          ".........##", ".........##", ".........##", ".........##", ".......####", ".....#####.", "..######...",
          "..####....."}},
        {4,
         [](HDC to) { return Polyline(to, Needle, 2); },
         18,
         18,
         {"....##.", "...####", ".######", "#######", "#######", ".##.##."}},
        {1,
         [](HDC to) { return Ellipse(to, 20, 20, 31, 28); },
         20,
         20,
         {"...#####...", "..#ooooo#..", ".#ooooooo#.", "#ooooooooo#", "#ooooooooo#", ".#ooooooo#.", "..#ooooo#..",
          "...#####..."}},
        {4,
         [](HDC to) { return Ellipse(to, 20, 20, 32, 32); },
         18,
         18,
         {".....#####.....", "...#########...", "..############.", ".#############.", ".#######o######",
          "######oooo#####", "####ooooooo####", "#####oooooo####", "#####oooooo####", "#####ooooo#####",
          ".#####ooo#####.", ".##############", "..###########..", "...###########.", ".....#######..."}},
        {1,
         [](HDC to) { return RoundRect(to, 20, 20, 36, 27, 10, 7); },
         20,
         20,
         {"...##########...", ".##oooooooooo##.", "#oooooooooooooo#", "#oooooooooooooo#", "#oooooooooooooo#",
          ".##oooooooooo##.", "...##########..."}},
    };
    for (const auto& [pen, draw, left, top, rows] : pictures) {
        use(CreatePen(PS_SOLID, pen, Red), CreateSolidBrush(Cyan));
        clear();
        EXPECT_TRUE(draw(dc));
        std::vector<std::string> drawn(rows.size());
        for (size_t row = 0; row < rows.size(); ++row) {
            const int y = top + static_cast<int>(row);
            for (const COLORREF one : snapshot(window, {left, y, left + static_cast<int>(rows[0].size()), y + 1})) {
                drawn[row] += one == Red ? '#' : one == Cyan ? 'o' : '.';
            }
        }
        EXPECT_EQ(drawn, rows);
        const RECT whole{left, top, left + static_cast<int>(rows[0].size()), top + static_cast<int>(rows.size())};
        EXPECT_EQ(text(boundsOf(window, Red)), text(whole));
    }
}

TEST_F(LayerDrawing, TextFillsItsCellsOrTheGivenRectangle) {
    SetBkColor(dc, Yellow);
    SIZE cell{};
    GetTextExtentPoint32A(dc, "Wi", 2, &cell);
    ExtTextOutA(dc, 30, 40, ETO_OPAQUE, nullptr, "Wild", 2, nullptr);
    EXPECT_EQ(text(boundsOf(window, Yellow)), text({30, 40, 30 + cell.cx, 40 + cell.cy})) << "two letters of four";
    clear();
    const RECT area{25, 35, 200, 90};
    ExtTextOutA(dc, 30, 40, ETO_OPAQUE, &area, "Wi", 2, nullptr);
    EXPECT_EQ(text(boundsOf(window, Yellow)), text(area));
    EXPECT_EQ(columnOf(window, 199, Yellow), 55);
    EXPECT_GT(countPixels(window, area, darkish), 0);
}

TEST_F(LayerDrawing, ANumberLeavesNothingOfTheOneItReplaces) {
    CreateFonts();
    for (int profile = 1; profile <= 5; ++profile) {
        SetSizeProfile(profile);
        ChooseFonts();
        const auto fresh = textPicture(LargeFont, "1111");
        for (char digit = '0'; digit <= '9'; ++digit) {
            textPicture(LargeFont, std::string(4, digit));
            ExtTextOutA(dc, 20, 20, ETO_OPAQUE, nullptr, "1111", 4, nullptr);
            EXPECT_TRUE(snapshot(window, {15, 15, 200, 60}) == fresh) << digit << ", size " << profile;
        }
    }
}

TEST_F(LayerDrawing, EachProfileHasItsFontsInBothCharacterSets) {
    constexpr std::string_view Letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    constexpr SIZE Large[] = {{11, 28}, {14, 36}, {18, 49}, {23, 62}, {23, 65}};
    constexpr SIZE Small[] = {{6, 14}, {8, 18}, {8, 18}, {12, 24}, {12, 24}};
    CreateFonts();
    std::set<HFONT> fonts;
    for (const char* code : {"pol", "rus"}) {
        std::copy_n(code, 4, LangCode.data());
        // Widths follow the asked average, alike in all sizes; a letter wider or narrower than it is the face's affair.
        const auto expectCells = [&](HFONT font, const SIZE& asked, double& ratio, double tolerance) {
            const SIZE cells = extentOf(font, Letters);
            EXPECT_EQ(cells.cy, asked.cy);
            const double now = static_cast<double>(cells.cx) / 52 / static_cast<double>(asked.cx);
            ratio = ratio == 0 ? now : ratio;
            EXPECT_NEAR(now / ratio, 1, tolerance) << asked.cy;
            fonts.insert(font);
        };
        double largeRatio = 0;
        double smallRatio = 0;
        for (int profile = 1; profile <= 5; ++profile) {
            SetSizeProfile(profile);
            ChooseFonts();
            expectCells(LargeFont, Large[profile - 1], largeRatio, 0.06);
            expectCells(SmallFont, Small[profile - 1], smallRatio, 0.1);
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
