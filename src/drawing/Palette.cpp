#include "drawing/Palette.h"

#include <cstddef>

namespace {

struct PaletteRow {
    Colour colour;
    COLORREF value;
};

constexpr std::array PaletteRows{
    PaletteRow{Colour::Black, RGB(0, 0, 0)},          PaletteRow{Colour::White, RGB(255, 255, 255)},
    PaletteRow{Colour::Silver, RGB(192, 192, 192)},   PaletteRow{Colour::Grey, RGB(128, 128, 128)},
    PaletteRow{Colour::PaleGrey, RGB(210, 210, 210)}, PaletteRow{Colour::Red, RGB(255, 0, 0)},
    PaletteRow{Colour::DarkGreen, RGB(0, 128, 0)},    PaletteRow{Colour::Green, RGB(0, 255, 0)},
    PaletteRow{Colour::Cyan, RGB(0, 255, 255)},       PaletteRow{Colour::Yellow, RGB(255, 255, 0)},
    PaletteRow{Colour::Navy, RGB(0, 0, 128)},         PaletteRow{Colour::Olive, RGB(128, 128, 0)},
    PaletteRow{Colour::Blue, RGB(0, 0, 255)},         PaletteRow{Colour::Ochre, RGB(128, 120, 0)},
};

constexpr bool RowsFollowTheColours() {
    for (std::size_t i = 0; i < PaletteRows.size(); ++i) {
        if (static_cast<std::size_t>(PaletteRows[i].colour) != i) {
            return false;
        }
    }
    return PaletteRows.size() == ColourCount;
}
static_assert(RowsFollowTheColours(), "a row is found by its colour");

// In pixels, by PenWidth.
constexpr std::array PenWidths{1, 2, 4};

struct Tools {
    std::array<HPEN, PenWidths.size()> pens;
    HBRUSH brush;
};

std::array<Tools, ColourCount> MakeTools() {
    std::array<Tools, ColourCount> tools{};
    for (std::size_t i = 0; i < ColourCount; ++i) {
        for (std::size_t width = 0; width < PenWidths.size(); ++width) {
            tools[i].pens[width] = CreatePen(PS_SOLID, PenWidths[width], PaletteRows[i].value);
        }
        tools[i].brush = CreateSolidBrush(PaletteRows[i].value);
    }
    return tools;
}

const std::array<Tools, ColourCount> ColourTools = MakeTools();

}  // namespace

COLORREF ColourValue(Colour colour) {
    return colour == Colour::DialogFace ? GetSysColor(COLOR_3DFACE)
                                        : PaletteRows[static_cast<std::size_t>(colour)].value;
}

HPEN ColourPen(Colour colour, PenWidth width) {
    return ColourTools[static_cast<std::size_t>(colour)].pens[static_cast<std::size_t>(width)];
}

HBRUSH ColourBrush(Colour colour) {
    return ColourTools[static_cast<std::size_t>(colour)].brush;
}
