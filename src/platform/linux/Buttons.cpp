// Push buttons, check boxes and group boxes: Qt paints them, what they do is decided here.
#include <QCheckBox>
#include <QGroupBox>
#include <QPainter>
#include <QPushButton>
#include <QStyleOptionButton>

#include "platform/linux/Layer.h"

namespace layer {

namespace {

constexpr DWORD TypeMask = 0x0F;
constexpr DWORD PlainButton = 0;
constexpr DWORD DefaultButton = 1;
constexpr DWORD AutoCheckBox = 3;
constexpr DWORD GroupBox = 7;
constexpr DWORD Multiline = 0x2000;

// A push button whose text may take several lines.
class PushButton : public QPushButton {
public:
    PushButton(QWidget* parent, DWORD style)
        : QPushButton(parent), wraps(style & Multiline), isDefault((style & TypeMask) == DefaultButton) {
        setAutoDefault(false);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        QStyleOptionButton option;
        initStyleOption(&option);
        const QString label = option.text;
        option.text.clear();
        // Enter presses the focused button, or else the default one; the look says which.
        const Window* focused = layer::find(GetFocus());
        const bool otherFocused =
            focused && focused->outer != this && dynamic_cast<const PushButton*>(focused->outer.data());
        option.features.setFlag(QStyleOptionButton::DefaultButton, isDefault && !otherFocused);
        style()->drawControl(QStyle::CE_PushButton, &option, &painter, this);
        QRect inside = rect().adjusted(3, 2, -3, -2);
        if (option.state & QStyle::State_Sunken) {
            inside.translate(style()->pixelMetric(QStyle::PM_ButtonShiftHorizontal, &option, this),
                             style()->pixelMetric(QStyle::PM_ButtonShiftVertical, &option, this));
        }
        const auto role = isEnabled() ? QPalette::Normal : QPalette::Disabled;
        painter.setPen(palette().color(role, QPalette::ButtonText));
        painter.drawText(inside, Qt::AlignCenter | Qt::TextHideMnemonic | (wraps ? Qt::TextWordWrap : 0), label);
    }

private:
    bool wraps;
    bool isDefault;
};

// A check box whose text may take several lines.
class CheckBox : public QCheckBox {
public:
    CheckBox(QWidget* parent, DWORD style) : QCheckBox(parent), wraps(style & Multiline) {
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        QStyleOptionButton option;
        initStyleOption(&option);
        const int side = style()->pixelMetric(QStyle::PM_IndicatorWidth, &option, this);
        const QRect all = rect();
        QStyleOptionButton box = option;
        box.rect = QRect(0, (all.height() - side) / 2, side, side);
        style()->drawPrimitive(QStyle::PE_IndicatorCheckBox, &box, &painter, this);
        const auto role = isEnabled() ? QPalette::Normal : QPalette::Disabled;
        painter.setPen(palette().color(role, QPalette::WindowText));
        const QRect label = all.adjusted(side + 5, 0, 0, 0);
        painter.drawText(label, Qt::AlignLeft | Qt::AlignVCenter | (wraps ? Qt::TextWordWrap : 0), text());
        if (hasFocus()) {
            QStyleOptionFocusRect mark;
            mark.initFrom(this);
            mark.rect = label.adjusted(-2, 0, 0, 0);
            style()->drawPrimitive(QStyle::PE_FrameFocusRect, &mark, &painter, this);
        }
    }

private:
    bool wraps;
};

QAbstractButton* buttonOf(const Window& window) {
    return qobject_cast<QAbstractButton*>(window.outer.data());
}

bool isInside(const Window& window, LPARAM place) {
    const QPoint point(static_cast<short>(LOWORD(place)), static_cast<short>(HIWORD(place)));
    return window.outer->rect().contains(point);
}

// Held by the mouse, which is then captured, or by the space bar.
void hold(Window& window, bool down) {
    buttonOf(window)->setDown(down);
}

void click(Window& window) {
    hold(window, false);
    if (auto* box = qobject_cast<QCheckBox*>(window.outer.data())) {
        box->setChecked(!box->isChecked());
    }
    notifyParent(window.handle, BN_CLICKED);
}

void pressByMouse(Window& window) {
    const HWND handle = window.handle;
    SetFocus(handle);
    if (Window* still = find(handle); still && still->enabled) {
        setCapture(handle);
        hold(*still, true);
    }
}

void releaseByMouse(Window& window, LPARAM place) {
    if (capture() != window.handle) {
        return;
    }
    const bool clicked = buttonOf(window)->isDown() && isInside(window, place);
    hold(window, false);
    releaseCapture();
    if (clicked) {
        click(window);
    }
}

// Pressed once, at its release, however long it is held.
void takeSpace(Window& window, UINT message, LPARAM details) {
    constexpr LPARAM wasDown = 1 << 30;
    if (message == WM_KEYDOWN && !(details & wasDown)) {
        hold(window, true);
    } else if (message == WM_KEYUP && buttonOf(window)->isDown() && capture() != window.handle) {
        click(window);
    }
}

}  // namespace

QWidget* makeButtonWidget(const Window& window) {
    switch (window.style & TypeMask) {
        case PlainButton:
        case DefaultButton:
            return new PushButton(window.parent->client, window.style);
        case AutoCheckBox:
            return new CheckBox(window.parent->client, window.style);
        case GroupBox: {
            // It frames its siblings, whatever the order in which they were made.
            auto* box = new QGroupBox(window.parent->client);
            box->lower();
            return box;
        }
        default:
            reportUnsupported("button type", QString::number(window.style & TypeMask));
            return nullptr;
    }
}

bool isTransparent(const Window& window) {
    return window.kind == Kind::Static || window.kind == Kind::Progress ||
           (window.kind == Kind::Button && (window.style & TypeMask) == GroupBox);
}

LRESULT buttonMessage(Window& window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* box = qobject_cast<QCheckBox*>(window.outer.data());
    if (!buttonOf(window)) {
        return DefWindowProcA(window.handle, message, wParam, lParam);
    }
    switch (message) {
        case BM_GETCHECK:
            return box && box->isChecked() ? BST_CHECKED : BST_UNCHECKED;
        case BM_SETCHECK:
            if (box) {
                box->setChecked(wParam == BST_CHECKED);
            }
            return 0;
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
            pressByMouse(window);
            return 0;
        case WM_MOUSEMOVE:
            if (capture() == window.handle) {
                hold(window, isInside(window, lParam));
            }
            return 0;
        case WM_LBUTTONUP:
            releaseByMouse(window, lParam);
            return 0;
        case WM_KEYDOWN:
        case WM_KEYUP:
            if (wParam == VK_SPACE) {
                takeSpace(window, message, lParam);
            }
            return 0;
        case WM_CAPTURECHANGED:
        case WM_KILLFOCUS:
            hold(window, false);
            if (message == WM_KILLFOCUS && capture() == window.handle) {
                releaseCapture();
            }
            return 0;
        default:
            return DefWindowProcA(window.handle, message, wParam, lParam);
    }
}

}  // namespace layer
