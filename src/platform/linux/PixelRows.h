// Which pixels lines and outlines take. A point of the program lies in the middle of its pixel.
#pragma once

#include <QPainter>
#include <QVarLengthArray>
#include <climits>

namespace layer {

// Pixels that lie in one unbroken run in each row, but for few that stand apart.
class PixelRows {
public:
    // Has room for what a pen of this width draws from one row to another.
    PixelRows(int firstRow, int lastRow, int penWidth);
    // The pixels of a line; a thin one leaves out its last point.
    void addLine(QPoint from, QPoint to, int penWidth);
    void paint(QPainter& painter, QColor colour) const;
    // What lies between two that have the same rows.
    static PixelRows between(const PixelRows& left, const PixelRows& right);

private:
    // The right end is excluded. A run that ends before it begins takes no pixel.
    struct Run {
        int left;
        int right;
        bool operator==(const Run&) const = default;
    };
    static constexpr Run Nothing{INT_MAX, INT_MIN};

    void cover(int y, Run pixels);
    void addThinLine(QPoint from, QPoint to);
    void addPoint(QPoint point, int penWidth);
    void addBand(QPoint from, QPoint to, int penWidth);
    void addEdge(QPoint from, QPoint to);

    int top;
    QVarLengthArray<Run, 256> runs;
    QVarLengthArray<QRect, 4> apart;
};

// A rectangle whose corners are quarters of an ellipse of that size: its outline, and the brush within.
void paintRounded(QPainter& painter, const QRect& rect, QSize corners, int penWidth, QColor pen, QColor brush);

}  // namespace layer
