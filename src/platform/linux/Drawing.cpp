// Drawing objects and shapes: whole pixels, right and bottom excluded, nothing smoothed.
#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "platform/linux/Context.h"

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

// Up to this width a pen is a square that is led along the line, which looks round; wider ones have Qt's round ends.
constexpr int WidestSquarePen = 2;

// A line in runs of pixels; which it takes does not hang on its direction. A thin one leaves out its last point.
void drawLine(QPainter& painter, QPoint from, QPoint to, int penWidth, QColor colour) {
    const QPoint way = to - from;
    const int steps = std::max(std::abs(way.x()), std::abs(way.y()));
    const auto along = [steps](int start, int length, int step) {
        return start + static_cast<int>(std::floor(static_cast<double>(length) * step / std::max(steps, 1) + 0.5));
    };
    const QSize pen(penWidth, penWidth);
    const QPoint corner(penWidth / 2, penWidth / 2);
    const int count = penWidth > 1 ? steps + 1 : steps;
    QRect run;
    for (int step = 0; step < count; ++step) {
        const QRect point(QPoint(along(from.x(), way.x(), step), along(from.y(), way.y(), step)) - corner, pen);
        const QRect longer = run | point;
        if (longer.width() > penWidth && longer.height() > penWidth) {
            painter.fillRect(run, colour);
            run = point;
        } else {
            run = longer;
        }
    }
    painter.fillRect(run, colour);
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

// Fills and outlines a shape whose Qt rectangle is one pixel smaller, since Qt's outline runs on its right and bottom.
template <typename Draw>
BOOL drawShape(HDC dc, Drawing::Kind kind, const QRect& rect, QSize corners, Draw draw) {
    DeviceContext* context = findContext(dc);
    if (!context || rect.isEmpty()) {
        return context != nullptr;
    }
    Drawing drawing = asDrawing(*context, kind, rect, corners);
    QPainter* painter = drawsAnew(*context, drawing) ? painterOf(*context) : nullptr;
    if (!painter) {
        return TRUE;
    }
    painter->setPen(QPen(context->penColour, context->penWidth));
    painter->setBrush(context->brushColour);
    draw(*painter, rect.adjusted(0, 0, -1, -1));
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
    if (context->penWidth > 1) {
        return drawShape(dc, Drawing::Kind::Rectangle, rect, {},
                         [](QPainter& painter, const QRect& shape) { painter.drawRect(shape); });
    }
    Drawing drawing = asDrawing(*context, Drawing::Kind::Rectangle, rect);
    if (QPainter* painter = drawsAnew(*context, drawing) ? painterOf(*context) : nullptr) {
        drawThinRectangle(*painter, rect, context->penColour, context->brushColour);
        markDrawn(*context, rect, std::move(drawing));
    }
    return TRUE;
}

BOOL RoundRect(HDC dc, int left, int top, int right, int bottom, int cornerWidth, int cornerHeight) {
    return drawShape(dc, Drawing::Kind::RoundRect, normalised(left, top, right, bottom), {cornerWidth, cornerHeight},
                     [&](QPainter& painter, const QRect& shape) {
                         painter.drawRoundedRect(shape, cornerWidth / 2.0, cornerHeight / 2.0);
                     });
}

BOOL Ellipse(HDC dc, int left, int top, int right, int bottom) {
    return drawShape(dc, Drawing::Kind::Ellipse, normalised(left, top, right, bottom), {},
                     [](QPainter& painter, const QRect& shape) { painter.drawEllipse(shape); });
}

BOOL Polyline(HDC dc, const POINT* points, int count) {
    DeviceContext* context = findContext(dc);
    QPainter* painter = context && count > 1 ? painterOf(*context) : nullptr;
    if (!painter) {
        return FALSE;
    }
    QPolygon line;
    for (int index = 0; index < count; ++index) {
        line.append(QPoint(points[index].x, points[index].y));
    }
    if (context->penWidth > WidestSquarePen) {
        painter->setPen(QPen(context->penColour, context->penWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter->setBrush(Qt::NoBrush);
        painter->drawPolyline(line);
    } else {
        for (int index = 1; index < count; ++index) {
            drawLine(*painter, line[index - 1], line[index], context->penWidth, context->penColour);
        }
    }
    const int margin = penMargin(*context);
    markDrawn(*context, line.boundingRect().adjusted(-margin, -margin, margin, margin));
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
