#include "platform/linux/PixelRows.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace layer {

namespace {

// The quotient rounded up, for a divisor above 0.
int dividedUp(std::int64_t number, std::int64_t divisor) {
    return static_cast<int>(number / divisor + (number % divisor > 0 ? 1 : 0));
}

using Corner = QVarLengthArray<QPoint, 128>;

// The upper left quarter of the outline of an ellipse, from its side to its tip. The ellipse's own equation decides on
// each next pixel: in the next row and in the next column, the one of two neighbours where it is off by less.
Corner cornerOf(QSize size) {
    const std::int64_t width = size.width() - 1;
    const std::int64_t height = size.height() - 1;
    // Distances from the middle are doubled, since it may lie between pixels.
    const auto off = [=](std::int64_t x, std::int64_t y) {
        return x * x * height * height + y * y * width * width - width * width * height * height;
    };
    std::int64_t x = width;
    std::int64_t y = height % 2;
    Corner points;
    points.append({0, static_cast<int>(height - y) / 2});
    while (x > 1 || y < height) {
        const bool inwards = y == height || (x > 1 && off(x - 2, y + 2) + off(x, y + 2) >= 0);
        const bool upwards = x <= 1 || (y < height && off(x - 2, y + 2) + off(x - 2, y) <= 0);
        x -= inwards || !upwards ? 2 : 0;
        y += upwards || !inwards ? 2 : 0;
        points.append({static_cast<int>(width - x) / 2, static_cast<int>(height - y) / 2});
    }
    return points;
}

}  // namespace

PixelRows::PixelRows(int firstRow, int lastRow, int penWidth)
    : top(firstRow - penWidth), runs(lastRow - firstRow + 1 + 2 * penWidth, Nothing) {
}

void PixelRows::cover(int y, Run pixels) {
    Run& run = runs[y - top];
    if (run != Nothing && (pixels.right < run.left || run.right < pixels.left)) {
        apart.append(QRect(pixels.left, y, pixels.right - pixels.left, 1));
    } else {
        run = {std::min(run.left, pixels.left), std::max(run.right, pixels.right)};
    }
}

void PixelRows::addLine(QPoint from, QPoint to, int penWidth) {
    if (penWidth == 1) {
        addThinLine(from, to);
        return;
    }
    if (from != to) {
        addBand(from, to, penWidth);
    }
    addPoint(from, penWidth);
    addPoint(to, penWidth);
}

// A pen is a disc; an even one reaches further to the left and up.
void PixelRows::addPoint(QPoint point, int penWidth) {
    const QPoint corner = point - QPoint(penWidth / 2, penWidth / 2);
    for (const QPoint& at : cornerOf({penWidth, penWidth})) {
        for (const int y : {at.y(), penWidth - 1 - at.y()}) {
            cover(corner.y() + y, {corner.x() + at.x(), corner.x() + penWidth - at.x()});
        }
    }
}

// One pixel a step along the longer way. Halfway between two it takes the upper or left one.
void PixelRows::addThinLine(QPoint from, QPoint to) {
    const QPoint way = to - from;
    const int steps = std::max(std::abs(way.x()), std::abs(way.y()));
    const auto along = [steps](int start, int length, int step) {
        return start + dividedUp(std::int64_t{2} * length * step - steps, std::int64_t{2} * steps);
    };
    for (int step = 0; step < steps; ++step) {
        const int x = along(from.x(), way.x(), step);
        cover(along(from.y(), way.y(), step), {x, x + 1});
    }
}

// The straight part of a wide line: its width across the line is a whole number of pixels on each axis, rounded up. The
// half of it with the odd pixel lies to the right.
void PixelRows::addBand(QPoint from, QPoint to, int penWidth) {
    const QPoint way = to - from;
    const double scale = penWidth / std::hypot(way.x(), way.y());
    const int across = static_cast<int>(std::ceil(std::abs(way.y()) * scale));
    const int along = static_cast<int>(std::ceil(std::abs(way.x()) * scale));
    const int side = way.y() == 0 || (way.x() > 0) != (way.y() > 0) ? 1 : -1;
    const QPoint right((across + 1) / 2, side * ((along + 1) / 2));
    const QPoint left(across / 2, side * (along / 2));
    PixelRows band(std::min(from.y(), to.y()), std::max(from.y(), to.y()), penWidth);
    band.addEdge(from + right, to + right);
    band.addEdge(to + right, to - left);
    band.addEdge(to - left, from - left);
    band.addEdge(from - left, from + right);
    for (qsizetype row = 0; row < band.runs.size(); ++row) {
        if (band.runs[row].left < band.runs[row].right) {
            cover(band.top + static_cast<int>(row), band.runs[row]);
        }
    }
}

// What lies between two edges is filled: from the pixel on the left one to before that on the right one, from the row
// of the upper end to before that of the lower one.
void PixelRows::addEdge(QPoint from, QPoint to) {
    if (from.y() > to.y()) {
        std::swap(from, to);
    }
    const QPoint way = to - from;
    for (int row = 0; row < way.y(); ++row) {
        const int x = from.x() + dividedUp(std::int64_t{way.x()} * row, way.y());
        Run& run = runs[from.y() + row - top];
        run = {std::min(run.left, x), std::max(run.right, x)};
    }
}

void PixelRows::paint(QPainter& painter, QColor colour) const {
    for (qsizetype next = 0; next < runs.size();) {
        const qsizetype first = next;
        const Run run = runs[first];
        while (next < runs.size() && runs[next] == run) {
            ++next;
        }
        if (run.left < run.right) {
            painter.fillRect(run.left, top + static_cast<int>(first), run.right - run.left,
                             static_cast<int>(next - first), colour);
        }
    }
    for (const QRect& piece : apart) {
        painter.fillRect(piece, colour);
    }
}

PixelRows PixelRows::between(const PixelRows& left, const PixelRows& right) {
    PixelRows inside(left.top, left.top + static_cast<int>(left.runs.size()) - 1, 0);
    for (qsizetype row = 0; row < inside.runs.size(); ++row) {
        if (left.runs[row] != Nothing && right.runs[row] != Nothing) {
            inside.runs[row] = {left.runs[row].right, right.runs[row].left};
        }
    }
    return inside;
}

void paintRounded(QPainter& painter, const QRect& rect, QSize corners, int penWidth, QColor pen, QColor brush) {
    const Corner corner = cornerOf(corners.boundedTo(rect.size()).expandedTo({1, 1}));
    // From the middle of the top by the left side to the middle of the bottom.
    QVarLengthArray<QPoint, 256> half;
    for (auto point = corner.rbegin(); point != corner.rend(); ++point) {
        half.append(rect.topLeft() + *point);
    }
    for (const QPoint& point : corner) {
        half.append({rect.left() + point.x(), rect.bottom() - point.y()});
    }
    const auto mirrored = [&](QPoint point) { return QPoint(rect.left() + rect.right() - point.x(), point.y()); };
    // All round in one direction, so that the end which a thin line leaves out is the start of the next one.
    PixelRows left(rect.top(), rect.bottom(), penWidth);
    PixelRows right = left;
    for (qsizetype index = 1; index < half.size(); ++index) {
        left.addLine(half[index - 1], half[index], penWidth);
        right.addLine(mirrored(half[index]), mirrored(half[index - 1]), penWidth);
    }
    left.addLine(half.back(), mirrored(half.back()), penWidth);
    right.addLine(mirrored(half.front()), half.front(), penWidth);
    PixelRows::between(left, right).paint(painter, brush);
    left.paint(painter, pen);
    right.paint(painter, pen);
}

}  // namespace layer
