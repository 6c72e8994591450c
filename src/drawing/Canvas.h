// Drawing on a page in design coordinates: the two drawing contexts of a page's window, with what is selected in them,
// so that nothing is selected twice. A page opens a canvas, draws and closes it; nothing outlives the call.
#pragma once

#include <span>

#include "drawing/Palette.h"
#include "platform/Win32.h"

// Design coordinates to pixels of the showing profile, each truncated by itself.
int DesignX(int x);
int DesignY(int y);

struct Canvas {
    HWND window;
    HDC shapes;
    HDC text;
    // What is selected; null before the first choice. Colours start as those of a fresh context.
    HPEN pen;
    HBRUSH brush;
    HFONT font;
    Colour textColour;
    Colour background;
};

Canvas OpenCanvas(HWND window);
void CloseCanvas(Canvas& canvas);

void UseShapeColours(Canvas& canvas, HPEN pen, Colour brush);
void UseText(Canvas& canvas, HFONT font, Colour colour, Colour background);

enum class ShapeKind : BYTE {
    Box,
    // With corners of 20 by 20 pixels.
    RoundBox,
};

// A shape in design coordinates, drawn with a thin pen.
struct ShapeRow {
    ShapeKind kind;
    Colour pen;
    Colour brush;
    int left;
    int top;
    int right;
    int bottom;
};

void DrawShape(Canvas& canvas, const ShapeRow& row);
void DrawShapes(Canvas& canvas, std::span<const ShapeRow> rows);
// A box whose pen and brush are of one colour.
void FillBox(Canvas& canvas, Colour colour, int left, int top, int right, int bottom);

// The text up to its end, in the font and colours in use, with its upper left corner at pixels or at a design point.
void DrawTextAtPixel(Canvas& canvas, int x, int y, const char* text);
void DrawTextAt(Canvas& canvas, int x, int y, const char* text);

// A language line, or a literal for LiteralText, and its design point.
constexpr int LiteralText = -1;
struct LabelRow {
    int line;
    const char* literal;
    int x;
    int y;
};

void DrawLabels(Canvas& canvas, std::span<const LabelRow> rows);
