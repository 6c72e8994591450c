// Scroll bars that are controls: Qt paints them, what they do is decided here.
#include <algorithm>

#include "platform/linux/GrippedBar.h"
#include "platform/linux/Layer.h"

namespace layer {

namespace {

constexpr DWORD ScrollVertical = 0x0001;
constexpr DWORD TabStop = 0x00010000;
constexpr UINT_PTR RepeatTimer = 1;
constexpr UINT RepeatDelay = 400;
constexpr UINT RepeatPeriod = 50;

struct ScrollKey {
    WPARAM key;
    WORD code;
};

constexpr ScrollKey ScrollKeys[] = {
    {VK_LEFT, SB_LINELEFT},  {VK_UP, SB_LINELEFT},    {VK_RIGHT, SB_LINERIGHT}, {VK_DOWN, SB_LINERIGHT},
    {VK_PRIOR, SB_PAGELEFT}, {VK_NEXT, SB_PAGERIGHT}, {VK_HOME, SB_LEFT},       {VK_END, SB_RIGHT},
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

void CALLBACK repeatHeld(HWND window, UINT, UINT_PTR, DWORD);

// Tells its parent what the user does; where the thumb then stands is the parent's decision, so that it follows the
// mouse only while it is held.
class ScrollBar : public GrippedBar {
public:
    ScrollBar(QWidget* parent, HWND shown, Qt::Orientation along) : GrippedBar(along, parent), window(shown) {
        setContextMenuPolicy(Qt::NoContextMenu);
        setRange(0, 100);
        setPageStep(1);
    }

    int setPosition(int position) {
        const int before = value();
        setValue(position);
        return before;
    }

    void press(QPoint place) {
        setCapture(window);
        at = place;
        tracked = false;
        grip(place);
        if (const auto* row = codeOf(heldPart()); row && tell(row->code)) {
            SetTimer(window, RepeatTimer, RepeatDelay, repeatHeld);
        }
    }

    void repeat() {
        SetTimer(window, RepeatTimer, RepeatPeriod, repeatHeld);
        const auto* row = codeOf(heldPart());
        if (row && isOnHeldPart(at)) {
            tell(row->code);
        }
    }

    void move(QPoint place) {
        at = place;
        if (heldPart() != QStyle::SC_ScrollBarSlider) {
            return;
        }
        const int position = positionAt(place);
        if (position != track || !tracked) {
            track = position;
            tracked = true;
            tell(SB_THUMBTRACK, track);
        }
    }

    // The end of a hold, by the release or because it was taken away.
    void release() {
        if (heldPart() == QStyle::SC_None) {
            return;
        }
        KillTimer(window, RepeatTimer);
        const bool dragged = heldPart() == QStyle::SC_ScrollBarSlider && tracked;
        letGo();
        const HWND handle = window;
        if (capture() == handle) {
            releaseCapture();
        }
        if (!dragged || tell(SB_THUMBPOSITION, track)) {
            tellFor(handle, SB_ENDSCROLL, 0);
        }
    }

    void takeKey(WPARAM key, bool down) {
        const auto* row = std::ranges::find(ScrollKeys, key, &ScrollKey::key);
        if (row != std::end(ScrollKeys)) {
            tell(down ? row->code : SB_ENDSCROLL);
        }
    }

private:
    static const ScrollPart* codeOf(QStyle::SubControl part) {
        const auto* row = std::ranges::find(ScrollParts, part, &ScrollPart::part);
        return row == std::end(ScrollParts) ? nullptr : row;
    }
    // False if the bar has gone by then.
    bool tell(WORD code, int position = 0) {
        return tellFor(window, code, position);
    }
    static bool tellFor(HWND bar, WORD code, int position) {
        const Window* window = layer::find(bar);
        if (!window || !window->parent) {
            return false;
        }
        const bool across = !(window->style & ScrollVertical);
        SendMessageA(window->parent->handle, across ? WM_HSCROLL : WM_VSCROLL,
                     MAKEWPARAM(code, static_cast<unsigned>(position)), reinterpret_cast<LPARAM>(bar));
        return layer::find(bar) != nullptr;
    }

    HWND window;
    QPoint at;  // the mouse, while it holds the bar
    bool tracked = false;
    int track = 0;
};

ScrollBar& barOf(const Window& window) {
    return static_cast<ScrollBar&>(*window.outer);
}

void CALLBACK repeatHeld(HWND window, UINT, UINT_PTR, DWORD) {
    if (const Window* bar = layer::find(window)) {
        barOf(*bar).repeat();
    }
}

}  // namespace

QWidget* makeScrollBarWidget(const Window& window) {
    return new ScrollBar(window.parent->client, window.handle,
                         window.style & ScrollVertical ? Qt::Vertical : Qt::Horizontal);
}

LRESULT scrollBarMessage(Window& window, UINT message, WPARAM wParam, LPARAM lParam) {
    ScrollBar& bar = barOf(window);
    const QPoint place(static_cast<short>(LOWORD(lParam)), static_cast<short>(HIWORD(lParam)));
    switch (message) {
        case SBM_SETPOS:
            return bar.setPosition(static_cast<int>(wParam));
        case SBM_GETPOS:
            return bar.value();
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
            if (window.style & TabStop) {
                SetFocus(window.handle);
            }
            bar.press(place);
            return 0;
        case WM_MOUSEMOVE:
            bar.move(place);
            return 0;
        case WM_LBUTTONUP:
        case WM_CAPTURECHANGED:
        case WM_CANCELMODE:
            bar.release();
            return 0;
        case WM_KEYDOWN:
        case WM_KEYUP:
            bar.takeKey(wParam, message == WM_KEYDOWN);
            return 0;
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
