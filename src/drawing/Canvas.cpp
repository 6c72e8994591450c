#include "drawing/Canvas.h"

#include <cstddef>
#include <cstring>

#include "shell/AppState.h"

namespace {

constexpr int CornerSize = 20;

}  // namespace

int DesignX(int x) {
    return static_cast<int>(x * ScaleX);
}

int DesignY(int y) {
    return static_cast<int>(y * ScaleY);
}

Canvas OpenCanvas(HWND window) {
    return {
        .window = window,
        .shapes = GetDC(window),
        .text = GetDC(window),
        .pen = nullptr,
        .brush = nullptr,
        .font = nullptr,
        .textColour = Colour::Black,
        .background = Colour::White,
    };
}

void CloseCanvas(Canvas& canvas) {
    ReleaseDC(canvas.window, canvas.shapes);
    ReleaseDC(canvas.window, canvas.text);
}

void UseShapeColours(Canvas& canvas, HPEN pen, Colour brush) {
    if (pen != canvas.pen) {
        SelectObject(canvas.shapes, pen);
        canvas.pen = pen;
    }
    if (HBRUSH wanted = ColourBrush(brush); wanted != canvas.brush) {
        SelectObject(canvas.shapes, wanted);
        canvas.brush = wanted;
    }
}

void UseText(Canvas& canvas, HFONT font, Colour colour, Colour background) {
    if (font != canvas.font) {
        SelectObject(canvas.text, font);
        canvas.font = font;
    }
    if (colour != canvas.textColour) {
        SetTextColor(canvas.text, ColourValue(colour));
        canvas.textColour = colour;
    }
    if (background != canvas.background) {
        SetBkColor(canvas.text, ColourValue(background));
        canvas.background = background;
    }
}

void DrawShape(Canvas& canvas, const ShapeRow& row) {
    UseShapeColours(canvas, ColourPen(row.pen), row.brush);
    const int left = DesignX(row.left);
    const int top = DesignY(row.top);
    const int right = DesignX(row.right);
    const int bottom = DesignY(row.bottom);
    if (row.kind == ShapeKind::RoundBox) {
        RoundRect(canvas.shapes, left, top, right, bottom, CornerSize, CornerSize);
    } else {
        Rectangle(canvas.shapes, left, top, right, bottom);
    }
}

void DrawShapes(Canvas& canvas, std::span<const ShapeRow> rows) {
    for (const ShapeRow& row : rows) {
        DrawShape(canvas, row);
    }
}

void FillBox(Canvas& canvas, Colour colour, int left, int top, int right, int bottom) {
    DrawShape(canvas, {ShapeKind::Box, colour, colour, left, top, right, bottom});
}

void DrawTextAtPixel(Canvas& canvas, int x, int y, const char* text) {
    ExtTextOutA(canvas.text, x, y, ETO_OPAQUE, nullptr, text, static_cast<UINT>(std::strlen(text)), nullptr);
}

void DrawTextAt(Canvas& canvas, int x, int y, const char* text) {
    DrawTextAtPixel(canvas, DesignX(x), DesignY(y), text);
}

void DrawLabels(Canvas& canvas, std::span<const LabelRow> rows) {
    for (const LabelRow& row : rows) {
        const bool literal = row.line == LiteralText;
        DrawTextAt(canvas, row.x, row.y, literal ? row.literal : LangTable[static_cast<std::size_t>(row.line)].data());
    }
}
