// Shapes and text of the layer, by their pixels.
#include <set>
#include <string_view>
#include <tuple>

#include "LayerWindows.h"
#include "shell/AppState.h"
#include "shell/SizeProfiles.h"

namespace {

constexpr RECT Field{0, 0, 200, 100};
constexpr RECT TextField{15, 15, 200, 60};

}  // namespace

class LayerDrawing : public Layer {
protected:
    void SetUp() override {
        Layer::SetUp();
        window = openFrame();
        dc = GetDC(window);
        CreateFonts();
    }
    // Empty, and shown so.
    void clear() const {
        InvalidateRect(window, nullptr, TRUE);
        settle();
    }
    void usePen(int width) const {
        SelectObject(dc, CreatePen(PS_SOLID, width, Red));
        SelectObject(dc, CreateSolidBrush(Cyan));
    }
    void write(std::string_view letters) const {
        ExtTextOutA(dc, 20, 20, ETO_OPAQUE, nullptr, letters.data(), static_cast<UINT>(letters.size()), nullptr);
    }
    // The colours on the screen in Field, each with the pixel rows and columns that it takes.
    std::map<COLORREF, RECT> colours() const {
        std::map<COLORREF, RECT> found;
        const QImage picture = shown(window);
        for (int at = 0; at < Field.right * Field.bottom; ++at) {
            const LONG x = at % Field.right;
            const LONG y = at / Field.right;
            const QRgb pixel = picture.pixel(static_cast<int>(x), static_cast<int>(y));
            const COLORREF colour = RGB(qRed(pixel), qGreen(pixel), qBlue(pixel));
            RECT& bounds = found.try_emplace(colour, Field.right, Field.bottom, 0, 0).first->second;
            bounds = {std::min(bounds.left, x), std::min(bounds.top, y), std::max(bounds.right, x + 1),
                      std::max(bounds.bottom, y + 1)};
        }
        return found;
    }
    int redIn(const RECT& area) const {
        return countPixels(window, area, [](COLORREF pixel) { return pixel == Red; });
    }
    // The large and the small one.
    static std::pair<HFONT, HFONT> fontsOf(const char* language, int profile) {
        std::copy_n(language, 4, LangCode.data());
        SetSizeProfile(profile);
        ChooseFonts();
        return {LargeFont, SmallFont};
    }
    // The picture of a text alone, its cells and a margin.
    std::vector<COLORREF> textPicture(HFONT font, std::string_view letters) const {
        clear();
        SelectObject(dc, font);
        write(letters);
        return snapshot(window, TextField);
    }

    HWND window = nullptr;
    HDC dc = nullptr;
};

TEST_F(LayerDrawing, ShapesStayInTheirBoxAndAreNotSmoothed) {
    Rectangle(dc, 10, 10, 20, 20);
    EXPECT_TRUE(pixelOf(window, 10, 10) == Black && pixelOf(window, 15, 15) == White) << "of a fresh context";
    using Draw = BOOL (*)(HDC, int, int, int, int);
    const std::tuple<const char*, Draw, COLORREF> shapes[] = {
        {"Rectangle", Rectangle, Red},
        {"Ellipse", Ellipse, Grey},
        {"RoundRect", [](HDC to, int l, int t, int r, int b) { return RoundRect(to, l, t, r, b, 20, 20); }, Grey}};
    const RECT boxes[][2] = {{{21, 33, 64, 76}, {21, 33, 64, 76}},
                             {{90, 50, 10, 10}, {10, 10, 90, 50}},
                             {{-20, 40, 60, 90}, {0, 40, 60, 90}}};
    usePen(1);
    for (const auto& [name, draw, corner] : shapes) {
        for (const auto& [given, filled] : boxes) {
            clear();
            draw(dc, given.left, given.top, given.right, given.bottom);
            const std::string what = name + (" " + text(given));
            const LONG middle = (filled.top + filled.bottom) / 2;
            EXPECT_EQ(text(colours()[Red]), text(filled)) << what;
            EXPECT_EQ(colours().size(), 3u) << what << " is smoothed";
            EXPECT_EQ(pixelOf(window, filled.right - 1, filled.bottom - 1), corner) << what;
            EXPECT_EQ(pixelOf(window, filled.right - 1, middle), Red) << what;
            EXPECT_EQ(pixelOf(window, filled.right - 2, middle), Cyan) << what;
        }
        clear();
        draw(dc, 30, 10, 30, 50);
        draw(dc, 30, 10, 50, 10);
        EXPECT_EQ(colours().size(), 1u) << name << " without width or height";
    }
}

TEST_F(LayerDrawing, OnlyAThinLineLeavesOutItsLastPoint) {
    struct Row {
        int pen;
        POINT from, to;
        const char* drawn;
        int pixels;
    };
    for (const Row& row : {Row{1, {20, 50}, {10, 50}, "11,50 10x1", 10}, Row{1, {10, 50}, {10, 70}, "10,50 1x20", 20},
                           Row{1, {10, 50}, {20, 60}, "10,50 10x10", 10}, Row{1, {30, 30}, {10, 34}, "11,30 20x5", 20},
                           Row{2, {10, 50}, {20, 50}, "9,49 12x2", 24}, Row{2, {10, 70}, {10, 50}, "9,49 2x22", 44},
                           Row{2, {30, 30}, {10, 34}, "9,29 22x6", 49}, Row{2, {10, 50}, {11, 90}, "9,49 3x42", 85},
                           Row{2, {10, 50}, {10, 50}, "9,49 2x2", 4}}) {
        usePen(row.pen);
        clear();
        MoveToEx(dc, row.from.x, row.from.y, nullptr);
        LineTo(dc, row.to.x, row.to.y);
        EXPECT_EQ(text(colours()[Red]), row.drawn) << row.pen << " wide";
        EXPECT_EQ(redIn(Field), row.pixels) << row.drawn << " has gaps or more than its line";
        EXPECT_EQ(colours().size(), 2u) << row.drawn << " is smoothed";
    }
    // Each with the last point of the one before it.
    usePen(1);
    clear();
    const POINT corner[] = {{10, 10}, {20, 10}, {20, 20}};
    Polyline(dc, corner, 3);
    MoveToEx(dc, 50, 10, nullptr);
    LineTo(dc, 60, 10);
    LineTo(dc, 60, 20);
    EXPECT_TRUE(redIn({10, 10, 21, 21}) == 20 && redIn({50, 10, 61, 21}) == 20);
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
        usePen(pen);
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
        EXPECT_EQ(text(colours()[Red]), text(whole));
    }
}

TEST_F(LayerDrawing, TextFillsItsCellsOrTheGivenRectangle) {
    EXPECT_EQ(SetBkColor(dc, Yellow), White);
    SIZE cell{};
    GetTextExtentPoint32A(dc, "Wi", 2, &cell);
    ExtTextOutA(dc, 30, 40, ETO_OPAQUE, nullptr, "Wild", 2, nullptr);
    EXPECT_EQ(text(colours()[Yellow]), text({30, 40, 30 + cell.cx, 40 + cell.cy})) << "two letters of four";
    clear();
    const RECT area{25, 35, 200, 90};
    ExtTextOutA(dc, 30, 40, ETO_OPAQUE, &area, "Wi", 2, nullptr);
    EXPECT_EQ(text(colours()[Yellow]), text(area));
    EXPECT_EQ(pixelOf(window, 199, 89), Yellow);
    EXPECT_GT(countPixels(window, area, darkish), 0);
}

TEST_F(LayerDrawing, EachProfileHasItsFontsAndANumberLeavesNothingOfTheOneItReplaces) {
    constexpr std::string_view Letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    constexpr SIZE Large[] = {{11, 28}, {14, 36}, {18, 49}, {23, 62}, {23, 65}};
    constexpr SIZE Small[] = {{6, 14}, {8, 18}, {8, 18}, {12, 24}, {12, 24}};
    std::set<HFONT> fonts;
    // The letters are a quarter wider than the average character that is asked for, alike in all sizes.
    const auto expectCells = [&](HFONT font, const SIZE& asked, double tolerance) {
        SIZE cells{};
        SelectObject(dc, font);
        GetTextExtentPoint32A(dc, Letters.data(), 52, &cells);
        EXPECT_EQ(cells.cy, asked.cy);
        EXPECT_NEAR(static_cast<double>(cells.cx) / 52 / static_cast<double>(asked.cx), 1.25, tolerance) << asked.cy;
        fonts.insert(font);
    };
    for (const char* code : {"pol", "rus"}) {
        for (int profile = 1; profile <= 5; ++profile) {
            const auto [large, small] = fontsOf(code, profile);
            expectCells(large, Large[profile - 1], 0.06);
            expectCells(small, Small[profile - 1], 0.1);
            const auto fresh = textPicture(large, "1111");
            for (char digit = '0'; digit <= '9'; ++digit) {
                textPicture(large, std::string(4, digit));
                write("1111");
                EXPECT_TRUE(snapshot(window, TextField) == fresh) << digit << ", size " << profile;
            }
        }
    }
    EXPECT_EQ(fonts.size(), 20u);
}

TEST_F(LayerDrawing, BytesAreTheLettersOfTheFontsCodePage) {
    const HFONT latin = fontsOf("pol", 2).first;
    const HFONT cyrillic = fontsOf("rus", 2).first;
    // Cyrillic letters that look like Latin ones, and what is in both.
    EXPECT_TRUE(textPicture(cyrillic, "\xC0\xC2\xC5\xCC\xCD\xCE\xD0\xD1\xD2\xD5 AH 09\xB0") ==
                textPicture(latin, "ABEMHOPCTX AH 09\xB0"));
    // Every letter of the languages has a picture of its own, and none that of a missing one.
    for (const auto& [font, letters] :
         {std::pair(latin,
                    std::string_view("\xB9\xE6\xEA\xB3\xF1\xF3\x9C\x9F\xBF\xA5\xC6\xCA\xA3\xD1\xD3\x8C\x8F\xAF"
                                     "\xE1\xE8\xEF\xE9\xEC\xED\xF2\xF8\x9A\x9D\xFA\xF9\xFD\x9E\xC8\xD8\x8A\x8E")),
          std::pair(cyrillic, std::string_view("\xE0\xE1\xE2\xE3\xE4\xE5\xE6\xE7\xE8\xE9\xEA\xEB\xEC\xED\xEE\xEF"
                                               "\xF0\xF1\xF2\xF3\xF4\xF5\xF6\xF7\xF8\xF9\xFA\xFB\xFC\xFD\xFE\xFF"))}) {
        std::set<std::vector<COLORREF>> pictures{textPicture(font, "\x01")};
        for (size_t at = 0; at < letters.size(); ++at) {
            EXPECT_TRUE(pictures.insert(textPicture(font, letters.substr(at, 1))).second)
                << "byte " << static_cast<unsigned>(static_cast<BYTE>(letters[at]));
        }
    }
}
