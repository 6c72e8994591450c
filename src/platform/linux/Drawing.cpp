// Drawing objects and shapes: whole pixels, right and bottom excluded, nothing smoothed. PixelRows.h has the rules.
#include <algorithm>
#include <unordered_map>

#include "platform/linux/Context.h"
#include "platform/linux/PixelRows.h"

namespace layer {

namespace {

std::unordered_map<HGDIOBJ, GdiObject>& objects() {
    static std::unordered_map<HGDIOBJ, GdiObject> living;
    return living;
}

QRect normalised(int left, int top, int right, int bottom) {
    return QRect(QPoint(std::min(left, right), std::min(top, bottom)),
                 QSize(std::abs(right - left), std::abs(bottom - top)));
}

int penMargin(const DeviceContext& context) {
    return context.penWidth / 2 + 1;
}

Drawing asDrawing(const DeviceContext& context, Drawing::Kind kind, const QRect& rect, QSize corners = {}) {
    return {kind,
            rect,
            QRect(QPoint(), corners),
            context.penColour.rgb(),
            context.brushColour.rgb(),
            static_cast<std::uintptr_t>(context.penWidth),
            {}};
}

// A shape whose corners are quarters of an ellipse.
BOOL drawShape(HDC dc, Drawing::Kind kind, const QRect& rect, QSize corners) {
    DeviceContext* context = findContext(dc);
    if (!context || rect.isEmpty()) {
        return context != nullptr;
    }
    Drawing drawing = asDrawing(*context, kind, rect, corners);
    QPainter* painter = drawsAnew(*context, drawing) ? painterOf(*context) : nullptr;
    if (!painter) {
        return TRUE;
    }
    paintRounded(*painter, rect, corners, context->penWidth, context->penColour, context->brushColour);
    const int margin = penMargin(*context);
    markDrawn(*context, rect.adjusted(-margin, -margin, margin, margin), std::move(drawing));
    return TRUE;
}

void drawThinRectangle(QPainter& painter, const QRect& rect, QColor pen, QColor brush) {
    if (pen == brush || rect.width() <= 2 || rect.height() <= 2) {
        painter.fillRect(rect, pen);
        return;
    }
    const int innerHeight = rect.height() - 2;
    painter.fillRect(rect.left(), rect.top(), rect.width(), 1, pen);
    painter.fillRect(rect.left(), rect.bottom(), rect.width(), 1, pen);
    painter.fillRect(rect.left(), rect.top() + 1, 1, innerHeight, pen);
    painter.fillRect(rect.right(), rect.top() + 1, 1, innerHeight, pen);
    painter.fillRect(rect.adjusted(1, 1, -1, -1), brush);
}

}  // namespace

GdiObject* findObject(HGDIOBJ handle) {
    const auto found = objects().find(handle);
    return found == objects().end() ? nullptr : &found->second;
}

HGDIOBJ addObject(GdiObject object) {
    static std::uintptr_t lastHandle = 0x30000;
    lastHandle += 2;
    const auto handle = reinterpret_cast<HGDIOBJ>(lastHandle);
    objects()[handle] = std::move(object);
    return handle;
}

size_t livingObjects() {
    return objects().size();
}

QColor colourOf(HBRUSH brush) {
    const GdiObject* object = findObject(brush);
    return object ? object->colour : QColor(Qt::white);
}

QImage imageOf(HBITMAP bitmap) {
    const GdiObject* object = findObject(bitmap);
    return object ? object->image : QImage();
}

}  // namespace layer

using namespace layer;

HPEN CreatePen(int style, int width, COLORREF colour) {
    if (style != PS_SOLID) {
        reportUnsupported("pen style", QString::number(style));
    }
    GdiObject pen;
    pen.type = GdiObject::Type::Pen;
    pen.colour = toColour(colour);
    pen.width = std::max(width, 1);
    return static_cast<HPEN>(addObject(std::move(pen)));
}

HBRUSH CreateSolidBrush(COLORREF colour) {
    GdiObject brush;
    brush.type = GdiObject::Type::Brush;
    brush.colour = toColour(colour);
    return static_cast<HBRUSH>(addObject(std::move(brush)));
}

HGDIOBJ GetStockObject(int object) {
    static const auto stock = [](GdiObject::Type type, COLORREF colour) {
        GdiObject made;
        made.type = type;
        made.colour = toColour(colour);
        made.stock = true;
        return addObject(std::move(made));
    };
    static const HGDIOBJ blackPen = stock(GdiObject::Type::Pen, RGB(0, 0, 0));
    static const HGDIOBJ whiteBrush = stock(GdiObject::Type::Brush, RGB(255, 255, 255));
    static const HGDIOBJ grayBrush = stock(GdiObject::Type::Brush, RGB(128, 128, 128));
    switch (object) {
        case BLACK_PEN:
            return blackPen;
        case WHITE_BRUSH:
            return whiteBrush;
        case GRAY_BRUSH:
            return grayBrush;
        default:
            reportUnsupported("stock object", QString::number(object));
            return nullptr;
    }
}

HGDIOBJ SelectObject(HDC dc, HGDIOBJ handle) {
    DeviceContext* context = findContext(dc);
    const GdiObject* object = findObject(handle);
    if (!context || !object) {
        return nullptr;
    }
    switch (object->type) {
        case GdiObject::Type::Pen:
            context->penColour = object->colour;
            context->penWidth = object->width;
            return std::exchange(context->pen, handle);
        case GdiObject::Type::Brush:
            context->brushColour = object->colour;
            return std::exchange(context->brush, handle);
        case GdiObject::Type::Font:
            return std::exchange(context->font, handle);
        case GdiObject::Type::Bitmap:
            context->memoryPainter.reset();
            return std::exchange(context->bitmap, handle);
    }
    return nullptr;
}

BOOL DeleteObject(HGDIOBJ handle) {
    const GdiObject* object = findObject(handle);
    if (!object || object->stock) {
        return FALSE;
    }
    return objects().erase(handle) > 0;
}

BOOL Rectangle(HDC dc, int left, int top, int right, int bottom) {
    DeviceContext* context = findContext(dc);
    const QRect rect = normalised(left, top, right, bottom);
    if (!context || rect.isEmpty()) {
        return context != nullptr;
    }
    constexpr QSize OnePixel(1, 1);
    if (context->penWidth > 1 || rect.size() == OnePixel) {
        return drawShape(dc, Drawing::Kind::Rectangle, rect, OnePixel);
    }
    Drawing drawing = asDrawing(*context, Drawing::Kind::Rectangle, rect);
    if (QPainter* painter = drawsAnew(*context, drawing) ? painterOf(*context) : nullptr) {
        drawThinRectangle(*painter, rect, context->penColour, context->brushColour);
        markDrawn(*context, rect, std::move(drawing));
    }
    return TRUE;
}

BOOL RoundRect(HDC dc, int left, int top, int right, int bottom, int cornerWidth, int cornerHeight) {
    return drawShape(dc, Drawing::Kind::RoundRect, normalised(left, top, right, bottom), {cornerWidth, cornerHeight});
}

BOOL Ellipse(HDC dc, int left, int top, int right, int bottom) {
    const QRect rect = normalised(left, top, right, bottom);
    return drawShape(dc, Drawing::Kind::Ellipse, rect, rect.size());
}

BOOL Polyline(HDC dc, const POINT* points, int count) {
    DeviceContext* context = findContext(dc);
    QPainter* painter = context && count > 1 ? painterOf(*context) : nullptr;
    if (!painter) {
        return FALSE;
    }
    QRect bounds;
    for (int index = 1; index < count; ++index) {
        const QPoint from(points[index - 1].x, points[index - 1].y);
        const QPoint to(points[index].x, points[index].y);
        PixelRows rows(std::min(from.y(), to.y()), std::max(from.y(), to.y()), context->penWidth);
        rows.addLine(from, to, context->penWidth);
        rows.paint(*painter, context->penColour);
        bounds |= QRect(from, QSize(1, 1)) | QRect(to, QSize(1, 1));
    }
    const int margin = penMargin(*context);
    markDrawn(*context, bounds.adjusted(-margin, -margin, margin, margin));
    return TRUE;
}

BOOL MoveToEx(HDC dc, int x, int y, POINT* previous) {
    DeviceContext* context = findContext(dc);
    if (!context) {
        return FALSE;
    }
    if (previous) {
        *previous = {context->position.x(), context->position.y()};
    }
    context->position = {x, y};
    return TRUE;
}

BOOL LineTo(HDC dc, int x, int y) {
    DeviceContext* context = findContext(dc);
    if (!context) {
        return FALSE;
    }
    const POINT line[] = {{context->position.x(), context->position.y()}, {x, y}};
    context->position = {x, y};
    return Polyline(dc, line, 2);
}

COLORREF GetPixel(HDC dc, int x, int y) {
    const DeviceContext* context = findContext(dc);
    const Window* window = context ? find(context->window) : nullptr;
    QColor colour;
    if (window) {
        colour = window->surface.pixel(x, y);
    } else if (const GdiObject* bitmap = context ? findObject(context->bitmap) : nullptr) {
        colour = bitmap->image.valid(x, y) ? bitmap->image.pixelColor(x, y) : QColor();
    }
    return colour.isValid() ? RGB(static_cast<unsigned>(colour.red()), static_cast<unsigned>(colour.green()),
                                  static_cast<unsigned>(colour.blue()))
                            : CLR_INVALID;
}

BOOL BitBlt(HDC to, int x, int y, int width, int height, HDC from, int fromX, int fromY, DWORD operation) {
    if (operation != SRCCOPY) {
        reportUnsupported("raster operation", QString::number(operation, 16));
    }
    DeviceContext* target = findContext(to);
    DeviceContext* source = findContext(from);
    const GdiObject* bitmap = source ? findObject(source->bitmap) : nullptr;
    QPainter* painter = target ? painterOf(*target) : nullptr;
    if (!bitmap || !painter) {
        return FALSE;
    }
    source->memoryPainter.reset();
    const QRect available = QRect(fromX, fromY, width, height) & bitmap->image.rect();
    painter->drawImage(QPoint(x, y) + available.topLeft() - QPoint(fromX, fromY), bitmap->image, available);
    markDrawn(*target, QRect(x, y, width, height));
    return TRUE;
}

DWORD GetSysColor(int index) {
    if (index != COLOR_3DFACE) {
        reportUnsupported("system colour", QString::number(index));
    }
    return RGB(qRed(FaceColour), qGreen(FaceColour), qBlue(FaceColour));
}
