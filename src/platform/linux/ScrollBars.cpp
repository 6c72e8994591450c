// Scroll bars that are controls.
#include <QMouseEvent>
#include <QScrollBar>
#include <QStyleOptionSlider>
#include <QWheelEvent>

#include "platform/linux/Layer.h"

namespace layer {

namespace {

constexpr DWORD ScrollVertical = 0x0001;
constexpr UINT_PTR RepeatTimer = 1;
constexpr UINT RepeatDelay = 400;
constexpr UINT RepeatPeriod = 50;

void CALLBACK repeatHeld(HWND window, UINT, UINT_PTR, DWORD);

struct ScrollKey {
    int key;
    WORD code;
};

constexpr ScrollKey ScrollKeys[] = {
    {Qt::Key_Left, SB_LINELEFT},  {Qt::Key_Up, SB_LINELEFT},     {Qt::Key_Right, SB_LINERIGHT},
    {Qt::Key_Down, SB_LINERIGHT}, {Qt::Key_PageUp, SB_PAGELEFT}, {Qt::Key_PageDown, SB_PAGERIGHT},
    {Qt::Key_Home, SB_LEFT},      {Qt::Key_End, SB_RIGHT},
};

struct ScrollPart {
    QStyle::SubControl part;
    WORD code;
};

constexpr ScrollPart ScrollParts[] = {
    {QStyle::SC_ScrollBarSubLine, SB_LINELEFT},
    {QStyle::SC_ScrollBarAddLine, SB_LINERIGHT},
    {QStyle::SC_ScrollBarSubPage, SB_PAGELEFT},
    {QStyle::SC_ScrollBarAddPage, SB_PAGERIGHT},
};

// Tells its parent what the user does; where the thumb then stands is the parent's decision, so that it follows the
// mouse only while it is held.
class ScrollBar : public QScrollBar {
public:
    ScrollBar(QWidget* parent, HWND shown, Qt::Orientation along) : QScrollBar(along, parent), window(shown) {
        setFocusPolicy(Qt::StrongFocus);
        setContextMenuPolicy(Qt::NoContextMenu);
        setRange(0, 100);
        setPageStep(1);
    }

    int setPosition(int position) {
        const int before = value();
        setValue(position);
        return before;
    }

    void repeat() {
        SetTimer(window, RepeatTimer, RepeatPeriod, repeatHeld);
        tell(held);
    }

protected:
    void mousePressEvent(QMouseEvent* event) override {
        if (event->button() != Qt::LeftButton) {
            return;
        }
        QStyleOptionSlider option;
        initStyleOption(&option);
        const auto part = style()->hitTestComplexControl(QStyle::CC_ScrollBar, &option, event->pos(), this);
        if (part == QStyle::SC_ScrollBarSlider) {
            const QRect thumb = style()->subControlRect(QStyle::CC_ScrollBar, &option, part, this);
            grip = along(event->pos()) - along(thumb.topLeft());
            dragging = true;
            return;
        }
        for (const ScrollPart& row : ScrollParts) {
            if (row.part == part) {
                held = row.code;
                holding = true;
                tell(held);
                SetTimer(window, RepeatTimer, RepeatDelay, repeatHeld);
            }
        }
    }

    void mouseMoveEvent(QMouseEvent* event) override {
        if (!dragging) {
            return;
        }
        QStyleOptionSlider option;
        initStyleOption(&option);
        const QRect groove = style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarGroove, this);
        const QRect thumb = style()->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, this);
        const int room =
            orientation() == Qt::Horizontal ? groove.width() - thumb.width() : groove.height() - thumb.height();
        track = QStyle::sliderValueFromPosition(minimum(), maximum(),
                                                along(event->pos()) - along(groove.topLeft()) - grip, room);
        tracked = true;
        tell(SB_THUMBTRACK, track);
    }

    void mouseReleaseEvent(QMouseEvent*) override {
        KillTimer(window, RepeatTimer);
        if (dragging && tracked) {
            tell(SB_THUMBPOSITION, track);
        }
        if (dragging || holding) {
            dragging = tracked = holding = false;
            tell(SB_ENDSCROLL);
        }
    }

    void keyPressEvent(QKeyEvent* event) override {
        const auto* row = std::ranges::find(ScrollKeys, event->key(), &ScrollKey::key);
        if (row != std::end(ScrollKeys)) {
            tell(row->code);
        }
    }

    void keyReleaseEvent(QKeyEvent* event) override {
        if (!event->isAutoRepeat() &&
            std::ranges::find(ScrollKeys, event->key(), &ScrollKey::key) != std::end(ScrollKeys)) {
            tell(SB_ENDSCROLL);
        }
    }

    void wheelEvent(QWheelEvent* event) override {
        event->ignore();
    }

private:
    int along(QPoint point) const {
        return orientation() == Qt::Horizontal ? point.x() : point.y();
    }
    void tell(WORD code, int position = 0) {
        if (const Window* bar = layer::find(window); bar && bar->parent) {
            SendMessageA(bar->parent->handle, orientation() == Qt::Horizontal ? WM_HSCROLL : WM_VSCROLL,
                         MAKEWPARAM(code, static_cast<unsigned>(position)), reinterpret_cast<LPARAM>(window));
        }
    }

    HWND window;
    WORD held = 0;
    bool holding = false;
    bool dragging = false;
    bool tracked = false;
    int grip = 0;
    int track = 0;
};

void CALLBACK repeatHeld(HWND window, UINT, UINT_PTR, DWORD) {
    if (const Window* bar = layer::find(window)) {
        static_cast<ScrollBar&>(*bar->outer).repeat();
    }
}

}  // namespace

QWidget* makeScrollBarWidget(const Window& window) {
    return new ScrollBar(window.parent->client, window.handle,
                         window.style & ScrollVertical ? Qt::Vertical : Qt::Horizontal);
}

LRESULT scrollBarMessage(Window& window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto& bar = static_cast<ScrollBar&>(*window.outer);
    switch (message) {
        case SBM_SETPOS:
            return bar.setPosition(static_cast<int>(wParam));
        case SBM_GETPOS:
            return bar.value();
        default:
            return DefWindowProcA(window.handle, message, wParam, lParam);
    }
}

}  // namespace layer

using namespace layer;

BOOL SetScrollRange(HWND handle, int kind, int lowest, int highest, BOOL) {
    const Window* window = find(handle);
    if (!window || window->kind != Kind::ScrollBar || kind != SB_CTL) {
        return FALSE;
    }
    static_cast<ScrollBar&>(*window->outer).setRange(lowest, highest);
    return TRUE;
}
