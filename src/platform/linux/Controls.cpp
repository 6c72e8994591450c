// Check boxes, group boxes, edits and scroll bars.
#include <QBasicTimer>
#include <QCheckBox>
#include <QFocusEvent>
#include <QGroupBox>
#include <QLineEdit>
#include <QPainter>
#include <QRegularExpressionValidator>
#include <QScrollBar>
#include <QStyleOptionButton>
#include <QStyleOptionSlider>

#include "platform/linux/Layer.h"

namespace layer {

namespace {

constexpr DWORD ButtonMultiline = 0x2000;
constexpr DWORD EditCentred = 0x0001;
constexpr DWORD EditUpperCase = 0x0008;
constexpr DWORD EditReadOnly = 0x0800;
constexpr DWORD EditNumber = 0x2000;
constexpr DWORD EditKnown = 0x0080 | EditCentred | EditUpperCase | EditReadOnly | EditNumber;
constexpr DWORD ControlStyleMask = 0xFFFF;
constexpr DWORD ScrollVertical = 0x0001;
constexpr int RepeatDelay = 400;
constexpr int RepeatPeriod = 50;

// A check box that turns itself over; its text may take several lines.
class CheckBox : public QCheckBox {
public:
    CheckBox(QWidget* parent, HWND shown, DWORD style) : QCheckBox(parent), wraps(style & ButtonMultiline) {
        connect(this, &QCheckBox::clicked, this, [shown] { notifyParent(shown, BN_CLICKED); });
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
            QStyleOptionFocusRect focus;
            focus.initFrom(this);
            focus.rect = label.adjusted(-2, 0, 0, 0);
            style()->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, &painter, this);
        }
    }
    bool hitButton(const QPoint& point) const override {
        return rect().contains(point);
    }

private:
    bool wraps;
};

class Edit : public QLineEdit {
public:
    Edit(QWidget* parent, HWND shown, DWORD style) : QLineEdit(parent), window(shown) {
        setContextMenuPolicy(Qt::NoContextMenu);
        setAlignment(Qt::AlignVCenter | (style & EditCentred ? Qt::AlignHCenter : Qt::AlignLeft));
        setReadOnly(style & EditReadOnly);
        if (style & EditNumber) {
            setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]*")), this));
        }
        if (style & EditUpperCase) {
            connect(this, &QLineEdit::textEdited, this, [this](const QString& typed) {
                const int cursor = cursorPosition();
                setText(typed.toUpper());
                setCursorPosition(cursor);
            });
        }
        connect(this, &QLineEdit::textChanged, this, [shown](const QString& now) {
            if (Window* edit = layer::find(shown)) {
                edit->text = encode(now, controlCodePage());
            }
            notifyParent(shown, EN_UPDATE);
            notifyParent(shown, EN_CHANGE);
        });
    }

protected:
    void focusInEvent(QFocusEvent* event) override {
        QLineEdit::focusInEvent(event);
        notifyParent(window, EN_SETFOCUS);
    }
    void focusOutEvent(QFocusEvent* event) override {
        QLineEdit::focusOutEvent(event);
        notifyParent(window, EN_KILLFOCUS);
    }

private:
    HWND window;
};

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
    ScrollBar(QWidget* parent, HWND shown) : QScrollBar(Qt::Horizontal, parent), window(shown) {
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
            grip = event->pos().x() - thumb.left();
            dragging = true;
            return;
        }
        for (const ScrollPart& row : ScrollParts) {
            if (row.part == part) {
                held = row.code;
                holding = true;
                tell(held);
                repeat.start(RepeatDelay, this);
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
        track = QStyle::sliderValueFromPosition(minimum(), maximum(), event->pos().x() - groove.left() - grip,
                                                groove.width() - thumb.width());
        tracked = true;
        tell(SB_THUMBTRACK, track);
    }

    void mouseReleaseEvent(QMouseEvent*) override {
        repeat.stop();
        if (dragging && tracked) {
            tell(SB_THUMBPOSITION, track);
        }
        if (dragging || holding) {
            dragging = tracked = holding = false;
            tell(SB_ENDSCROLL);
        }
    }

    void timerEvent(QTimerEvent* event) override {
        if (event->timerId() != repeat.timerId()) {
            QScrollBar::timerEvent(event);
            return;
        }
        repeat.start(RepeatPeriod, this);
        tell(held);
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
    void tell(WORD code, int position = 0) {
        if (const Window* bar = layer::find(window); bar && bar->parent) {
            SendMessageA(bar->parent->handle, WM_HSCROLL, MAKEWPARAM(code, static_cast<unsigned>(position)),
                         reinterpret_cast<LPARAM>(window));
        }
    }

    HWND window;
    QBasicTimer repeat;
    WORD held = 0;
    bool holding = false;
    bool dragging = false;
    bool tracked = false;
    int grip = 0;
    int track = 0;
};

}  // namespace

QWidget* makeCheckBoxWidget(const Window& window) {
    return new CheckBox(window.parent->client, window.handle, window.style);
}

// It frames its siblings, whatever the order in which they were made.
QWidget* makeGroupBoxWidget(const Window& window) {
    auto* box = new QGroupBox(window.parent->client);
    box->setAttribute(Qt::WA_TransparentForMouseEvents);
    box->lower();
    return box;
}

QWidget* makeEditWidget(const Window& window) {
    if (window.style & ControlStyleMask & ~EditKnown) {
        reportUnsupported("edit style", QString::number(window.style, 16));
    }
    return new Edit(window.parent->client, window.handle, window.style);
}

QWidget* makeScrollBarWidget(const Window& window) {
    if (window.style & ScrollVertical) {
        reportUnsupported("scroll bar", QStringLiteral("vertical"));
    }
    return new ScrollBar(window.parent->client, window.handle);
}

LRESULT buttonMessage(Window& window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* box = qobject_cast<QCheckBox*>(window.outer.data());
    if (box && message == BM_GETCHECK) {
        return box->isChecked() ? BST_CHECKED : BST_UNCHECKED;
    }
    if (box && message == BM_SETCHECK) {
        box->setChecked(wParam == BST_CHECKED);
        return 0;
    }
    return DefWindowProcA(window.handle, message, wParam, lParam);
}

LRESULT editMessage(Window& window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto& edit = static_cast<Edit&>(*window.outer);
    switch (message) {
        case EM_SETLIMITTEXT:
            edit.setMaxLength(wParam ? static_cast<int>(wParam) : 32767);
            return 0;
        case EM_SETREADONLY:
            edit.setReadOnly(wParam != 0);
            return TRUE;
        default:
            return DefWindowProcA(window.handle, message, wParam, lParam);
    }
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

BOOL SetDlgItemInt(HWND dialog, int id, UINT value, BOOL isSigned) {
    const QByteArray text = isSigned ? QByteArray::number(static_cast<INT>(value)) : QByteArray::number(value);
    return SetDlgItemTextA(dialog, id, text.constData());
}

BOOL SetScrollRange(HWND handle, int kind, int lowest, int highest, BOOL) {
    const Window* window = find(handle);
    if (!window || window->kind != Kind::ScrollBar || kind != SB_CTL) {
        return FALSE;
    }
    static_cast<ScrollBar&>(*window->outer).setRange(lowest, highest);
    return TRUE;
}
