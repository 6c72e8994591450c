// Drawing contexts and drawing objects, shared by the drawing files of this folder.
#pragma once

#include <QRawFont>

#include "platform/linux/Layer.h"

namespace layer {

// A font as it is drawn: the glyph and the whole-pixel advance of each of the 256 bytes of its code page. Most letters
// are never drawn, so an advance is asked for at its first use.
struct DrawnFont {
    QRawFont face;
    int height = 0;
    int ascent = 0;
    std::array<quint32, 256> glyphs{};
    mutable std::array<int, 256> advances{};  // -1: not known yet
};

struct GdiObject {
    enum class Type { Pen, Brush, Font, Bitmap };
    Type type = Type::Pen;
    QColor colour;
    int width = 1;
    LOGFONTA description{};
    std::shared_ptr<const DrawnFont> font;  // made at its first use, when the desktop connection stands
    QImage image;
    bool stock = false;
};

// Null for a handle that is no living object.
GdiObject* findObject(HGDIOBJ handle);
HGDIOBJ addObject(GdiObject object);
const DrawnFont& drawnFont(GdiObject& object);

struct DeviceContext {
    HWND window = nullptr;  // null for a memory context
    QRegion clip;
    bool clipped = false;
    HGDIOBJ pen = nullptr;
    HGDIOBJ brush = nullptr;
    HGDIOBJ font = nullptr;
    HGDIOBJ bitmap = nullptr;
    QColor penColour;
    int penWidth = 1;
    QColor brushColour;
    COLORREF textColour = RGB(0, 0, 0);
    COLORREF backColour = RGB(255, 255, 255);
    QPoint position;
    std::unique_ptr<QPainter> memoryPainter;
};

// Null for a handle that is no living context.
DeviceContext* findContext(HDC handle);
// The painter of the context's window or bitmap, set to its clip; null if there is nothing to draw on.
QPainter* painterOf(DeviceContext& context);
// Whether a drawing would change anything: false while the same one stands as it was drawn.
bool drawsAnew(DeviceContext& context, const Drawing& drawing);
void markDrawn(DeviceContext& context, const QRect& rect);
// The same for an opaque drawing, which is remembered.
void markDrawn(DeviceContext& context, const QRect& rect, Drawing drawing);

constexpr QColor toColour(COLORREF colour) {
    return QColor(static_cast<int>(colour & 0xFF), static_cast<int>(colour >> 8 & 0xFF),
                  static_cast<int>(colour >> 16 & 0xFF));
}

}  // namespace layer
