// A scroll bar that Qt paints: which of its parts the mouse holds, and where a dragged thumb stands.
#pragma once

#include <QScrollBar>
#include <QStyleOptionSlider>

namespace layer {

class GrippedBar : public QScrollBar {
public:
    using QScrollBar::QScrollBar;

    void grip(QPoint place) {
        held = partAt(place);
        offset = along(place) - along(partRect(QStyle::SC_ScrollBarSlider).topLeft());
        start = value();
    }
    void letGo() {
        held = QStyle::SC_None;
    }
    QStyle::SubControl heldPart() const {
        return held;
    }
    // The hold works only while the mouse is over the part.
    bool isOnHeldPart(QPoint place) const {
        return partAt(place) == held;
    }
    // Where the thumb that is held stands with the mouse there: back where it was if that is far off the bar.
    int positionAt(QPoint place) const {
        constexpr int MarginAlong = 2;  // times its thickness
        constexpr int MarginAcross = 8;
        const bool lies = orientation() == Qt::Horizontal;
        const int thickness = lies ? height() : width();
        const int aside = (lies ? MarginAlong : MarginAcross) * thickness;
        const int above = (lies ? MarginAcross : MarginAlong) * thickness;
        if (!rect().adjusted(-aside, -above, aside, above).contains(place)) {
            return start;
        }
        const QRect groove = partRect(QStyle::SC_ScrollBarGroove);
        const QRect thumb = partRect(QStyle::SC_ScrollBarSlider);
        const int room = lies ? groove.width() - thumb.width() : groove.height() - thumb.height();
        return QStyle::sliderValueFromPosition(minimum(), maximum(), along(place) - along(groove.topLeft()) - offset,
                                               room);
    }

private:
    int along(QPoint point) const {
        return orientation() == Qt::Horizontal ? point.x() : point.y();
    }
    QStyle::SubControl partAt(QPoint place) const {
        QStyleOptionSlider option;
        initStyleOption(&option);
        return style()->hitTestComplexControl(QStyle::CC_ScrollBar, &option, place, this);
    }
    QRect partRect(QStyle::SubControl part) const {
        QStyleOptionSlider option;
        initStyleOption(&option);
        return style()->subControlRect(QStyle::CC_ScrollBar, &option, part, this);
    }

    QStyle::SubControl held = QStyle::SC_None;
    int offset = 0;  // of the mouse in the thumb
    int start = 0;
};

}  // namespace layer
