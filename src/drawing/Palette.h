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
    Blue,
    Ochre,
    // The system's, behind the controls of a page; it has no pen and no brush.
    DialogFace,
};
constexpr unsigned ColourCount = 14;

// Widths of the pens: shapes; the ticks of the gauge and most traces; the gauge's needle.
enum class PenWidth : BYTE {
    Thin,
    Double,
    Needle,
};

COLORREF ColourValue(Colour colour);
HPEN ColourPen(Colour colour, PenWidth width = PenWidth::Thin);
HBRUSH ColourBrush(Colour colour);
