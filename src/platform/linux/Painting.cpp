// What is invalid, what is drawn, and how the drawing comes to the screen.
#include <QPaintEvent>
#include <algorithm>
#include <unordered_map>

#include "platform/linux/Context.h"

namespace layer {

namespace {

std::unordered_map<HDC, DeviceContext>& contexts() {
    static std::unordered_map<HDC, DeviceContext> open;
    return open;
}

HDC makeContext(HWND window) {
    static std::uintptr_t lastHandle = 0x20000;
    lastHandle += 2;
    const HDC handle = reinterpret_cast<HDC>(lastHandle);
    DeviceContext& context = contexts()[handle];
    context.window = window;
    SelectObject(handle, GetStockObject(BLACK_PEN));
    SelectObject(handle, GetStockObject(WHITE_BRUSH));
    return handle;
}

void showTree(Window& window) {
    const QRegion changed = window.surface.takeDirty();
    if (!changed.isEmpty() && window.client) {
        window.client->repaint(changed);
    }
    for (Window* child : window.children) {
        showTree(*child);
    }
}

Window* nextInTree(Window& window) {
    if (!window.visible) {
        return nullptr;
    }
    if (!window.invalid.isEmpty()) {
        return &window;
    }
    for (Window* child : window.children) {
        if (Window* found = nextInTree(*child)) {
            return found;
        }
    }
    return nullptr;
}

// What of a window's client area lies inside all its parents'.
QRegion visibleArea(const Window& window) {
    QRegion area(QRect(QPoint(), clientSize(window)));
    QPoint offset;
    const Window* inner = &window;
    while (inner->parent) {
        offset += inner->place.topLeft();
        area &= QRect(-offset, clientSize(*inner->parent));
        inner = inner->parent;
    }
    return area;
}

}  // namespace

void Surface::resize(QSize size, qreal ratio) {
    if (size == logicalSize && ratio == pixelRatio) {
        return;
    }
    open.reset();
    const QImage old = image;
    logicalSize = size;
    pixelRatio = ratio;
    tileColumns = size.width() / TileSize + 1;
    tileRows = size.height() / TileSize + 1;
    dirtyTiles.assign(tileIndex(tileRows, 0), false);
    if (!old.isNull()) {
        image = QImage();
        allocate();
        QPainter(&image).drawImage(QPoint(), old);
    }
    markDirty(QRect(QPoint(), size));
}

void Surface::allocate() {
    image = QImage(logicalSize * pixelRatio, QImage::Format_RGB32);
    image.setDevicePixelRatio(pixelRatio);
    image.fill(fill);
}

QPainter& Surface::painter() {
    if (!open) {
        if (image.isNull()) {
            allocate();
        }
        open = std::make_unique<QPainter>(&image);
    }
    return *open;
}

bool Surface::fillAll(QColor colour) {
    if (!image.isNull() || logicalSize.isEmpty()) {
        return false;
    }
    fill = colour;
    markDirty(QRect(QPoint(), logicalSize));
    return true;
}

void Surface::markDirty(const QRect& rect) {
    const QRect inside = rect & QRect(QPoint(), logicalSize);
    if (inside.isEmpty()) {
        return;
    }
    standing.cover(inside);
    for (int row = inside.top() / TileSize; row <= inside.bottom() / TileSize; ++row) {
        for (int column = inside.left() / TileSize; column <= inside.right() / TileSize; ++column) {
            dirtyTiles[tileIndex(row, column)] = true;
        }
    }
    anyDirty = true;
}

QRegion Surface::takeDirty() {
    if (!anyDirty) {
        return {};
    }
    anyDirty = false;
    std::vector<QRect> runs;
    for (int row = 0; row < tileRows; ++row) {
        for (int column = 0; column < tileColumns; ++column) {
            const size_t tile = tileIndex(row, column);
            if (!dirtyTiles[tile]) {
                continue;
            }
            dirtyTiles[tile] = false;
            const QRect square(column * TileSize, row * TileSize, TileSize, TileSize);
            if (!runs.empty() && runs.back().top() == square.top() && runs.back().right() + 1 == square.left()) {
                runs.back().setRight(square.right());
            } else {
                runs.push_back(square);
            }
        }
    }
    QRegion region;
    region.setRects(runs.data(), static_cast<int>(runs.size()));
    return region;
}

void Surface::paintOn(QPainter& target, const QRegion& region) const {
    for (const QRect& rect : region) {
        if (image.isNull()) {
            target.fillRect(rect, fill);
        } else {
            const QRectF source(QPointF(rect.topLeft()) * pixelRatio, QSizeF(rect.size()) * pixelRatio);
            target.drawImage(QRectF(rect), image, source);
        }
    }
}

QColor Surface::pixel(int x, int y) const {
    if (!QRect(QPoint(), logicalSize).contains(x, y)) {
        return {};
    }
    return image.isNull() ? fill : image.pixelColor(QPoint(x, y) * pixelRatio);
}

void Canvas::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    if (const Window* shown = layer::find(window)) {
        shown->surface.paintOn(painter, event->region());
    }
}

void invalidate(Window& window, const QRegion& region, bool erase) {
    if (!window.client || !reallyVisible(window) || (window.kind != Kind::Frame && window.kind != Kind::Dialog)) {
        return;
    }
    const QRegion area = region & visibleArea(window);
    if (area.isEmpty()) {
        return;
    }
    window.invalid += area;
    window.erase = window.erase || erase;
    // No window keeps off its children, so they are painted anew with it.
    for (Window* child : window.children) {
        invalidate(*child, area.translated(-child->place.topLeft()), erase);
    }
}

void invalidateAll(Window& window) {
    invalidate(window, QRect(QPoint(), clientSize(window)), true);
}

void erase(Window& window) {
    const QRegion area = window.invalid;
    const QRect whole(QPoint(), clientSize(window));
    const bool all = (QRegion(whole) - area).isEmpty();
    if (all && window.surface.fillAll(window.background)) {
        return;
    }
    for (const QRect& rect : area) {
        window.surface.painter().setClipping(false);
        window.surface.painter().fillRect(rect, window.background);
        window.surface.markDirty(rect);
    }
}

void resizeSurface(Window& window) {
    if (window.kind == Kind::Frame || window.kind == Kind::Dialog) {
        window.surface.resize(clientSize(window), window.client->devicePixelRatioF());
    }
}

void showAllDrawing() {
    for (Window* window : topLevels()) {
        showTree(*window);
    }
}

Window* nextToPaint() {
    for (Window* window : topLevels()) {
        if (Window* found = nextInTree(*window)) {
            return found;
        }
    }
    return nullptr;
}

void forgetContexts(const Window& window) {
    std::erase_if(contexts(), [&](const auto& entry) { return entry.second.window == window.handle; });
}

size_t livingContexts() {
    return contexts().size();
}

DeviceContext* findContext(HDC handle) {
    const auto found = contexts().find(handle);
    return found == contexts().end() ? nullptr : &found->second;
}

QPainter* painterOf(DeviceContext& context) {
    QPainter* painter = nullptr;
    if (Window* window = find(context.window)) {
        if (window->surface.size().isEmpty() || !reallyVisible(*window)) {
            return nullptr;
        }
        painter = &window->surface.painter();
    } else if (GdiObject* bitmap = findObject(context.bitmap)) {
        if (!context.memoryPainter) {
            context.memoryPainter = std::make_unique<QPainter>(&bitmap->image);
        }
        painter = context.memoryPainter.get();
    }
    if (painter && context.clipped) {
        painter->setClipRegion(context.clip);
    } else if (painter && painter->hasClipping()) {
        painter->setClipping(false);
    }
    return painter;
}

bool drawsAnew(DeviceContext& context, const Drawing& drawing) {
    const Window* window = context.clipped ? nullptr : find(context.window);
    return !window || !window->surface.standing.contains(drawing);
}

void markDrawn(DeviceContext& context, const QRect& rect, Drawing drawing) {
    markDrawn(context, rect);
    if (Window* window = context.clipped ? nullptr : find(context.window)) {
        window->surface.standing.add(std::move(drawing), rect);
    }
}

void markDrawn(DeviceContext& context, const QRect& rect) {
    if (Window* window = find(context.window)) {
        window->surface.markDirty(rect);
    }
}

}  // namespace layer

using namespace layer;

HDC GetDC(HWND window) {
    return find(window) ? makeContext(window) : nullptr;
}

int ReleaseDC(HWND, HDC dc) {
    return contexts().erase(dc) > 0 ? 1 : 0;
}

HDC CreateCompatibleDC(HDC) {
    return makeContext(nullptr);
}

BOOL DeleteDC(HDC dc) {
    return contexts().erase(dc) > 0;
}

HDC BeginPaint(HWND handle, PAINTSTRUCT* paint) {
    *paint = {};
    Window* window = find(handle);
    if (!window) {
        return nullptr;
    }
    const HDC dc = makeContext(handle);
    DeviceContext* context = findContext(dc);
    context->clip = window->invalid;
    context->clipped = true;
    const QRect bounds = window->invalid.boundingRect();
    paint->hdc = dc;
    paint->rcPaint = {bounds.left(), bounds.top(), bounds.left() + bounds.width(), bounds.top() + bounds.height()};
    if (window->erase) {
        window->erase = false;
        callProcedure(*window, WM_ERASEBKGND, reinterpret_cast<WPARAM>(dc), 0);
        window = find(handle);
    }
    if (window) {
        window->invalid = QRegion();
    }
    return dc;
}

BOOL EndPaint(HWND, const PAINTSTRUCT* paint) {
    ReleaseDC(nullptr, paint->hdc);
    return TRUE;
}

BOOL InvalidateRect(HWND handle, const RECT* rect, BOOL eraseToo) {
    Window* window = find(handle);
    if (!window) {
        return FALSE;
    }
    const QRect area = rect ? QRect(rect->left, rect->top, rect->right - rect->left, rect->bottom - rect->top)
                            : QRect(QPoint(), clientSize(*window));
    invalidate(*window, area, eraseToo != FALSE);
    return TRUE;
}
