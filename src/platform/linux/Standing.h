// The opaque drawings of a surface that stand as they were drawn, so that the same one over it can be left out: most of
// what a poll draws is what the poll before it drew.
#pragma once

#include <QByteArray>
#include <QRect>
#include <QRgb>
#include <algorithm>
#include <cstdint>
#include <vector>

namespace layer {

// A drawing by all that decides its pixels.
struct Drawing {
    enum class Kind { Rectangle, RoundRect, Ellipse, Text };
    Kind kind;
    QRect rect;
    QRect area;  // what text fills beside its cells, or as its size the corners of a rounded rectangle
    QRgb front;
    QRgb back;
    std::uintptr_t tool;  // the pen's width, or the font
    QByteArray text;
    bool operator==(const Drawing&) const = default;
};

class StandingDrawings {
public:
    bool contains(const Drawing& drawing) const {
        return std::ranges::find(known, drawing, &Known::drawing) != known.end();
    }
    void add(Drawing drawing, const QRect& touched) {
        if (known.size() < MostKnown) {
            known.push_back({std::move(drawing), touched});
        }
    }
    // Something is drawn there.
    void cover(const QRect& touched) {
        std::erase_if(known, [&](const Known& one) { return one.touched.intersects(touched); });
    }

private:
    static constexpr std::size_t MostKnown = 200;
    struct Known {
        Drawing drawing;
        QRect touched;
    };
    std::vector<Known> known;
};

}  // namespace layer
