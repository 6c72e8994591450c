// The colours of the drawn pages, with their pens and brushes. Pens and brushes are made before the program's entry and
// live until the process ends.
#pragma once

#include <array>

#include "platform/Win32.h"

enum class Colour : BYTE {
    Black,
    White,
    Silver,
    Grey,
    PaleGrey,
    Red,
    DarkGreen,
    Green,
    Cyan,
    Yellow,
    Navy,
    Olive,
};
constexpr unsigned ColourCount = 12;

// Widths of the pens: shapes, the ticks of the gauge, its needle.
enum class PenWidth : BYTE {
    Thin,
    Tick,
    Needle,
};

COLORREF ColourValue(Colour colour);
HPEN ColourPen(Colour colour, PenWidth width = PenWidth::Thin);
HBRUSH ColourBrush(Colour colour);
