// Check boxes, group boxes, edits and progress bars.
#include <QCheckBox>
#include <QFocusEvent>
#include <QGroupBox>
#include <QLineEdit>
#include <QPainter>
#include <QProgressBar>
#include <QRegularExpressionValidator>
#include <QStyleOptionButton>

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

// Letter by letter, so that none becomes two and a limited text grows past its limit.
QString inCapitals(QString text) {
    for (QChar& letter : text) {
        letter = letter.toUpper();
    }
    return text;
}

class Edit : public QLineEdit {
public:
    Edit(QWidget* parent, HWND shown, DWORD style) : QLineEdit(parent), window(shown) {
        setContextMenuPolicy(Qt::NoContextMenu);
        setAlignment(Qt::AlignVCenter | (style & EditCentred ? Qt::AlignHCenter : Qt::AlignLeft));
        makeReadOnly(style & EditReadOnly);
        if (style & EditNumber) {
            setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]*")), this));
        }
        if (style & EditUpperCase) {
            connect(this, &QLineEdit::textEdited, this, [this](const QString& typed) {
                const int cursor = cursorPosition();
                setText(inCapitals(typed));
                setCursorPosition(cursor);
            });
        }
        connect(this, &QLineEdit::textChanged, this, [this, shown](const QString& now) {
            // What was typed comes once more after its capitals.
            if (now != text()) {
                return;
            }
            if (Window* edit = layer::find(shown)) {
                edit->text = encode(now, controlCodePage());
            }
            notifyParent(shown, EN_UPDATE);
            notifyParent(shown, EN_CHANGE);
        });
    }

    // What cannot be typed into has the colour of the dialog.
    void makeReadOnly(bool readOnly) {
        setReadOnly(readOnly);
        QPalette colours = palette();
        const QColor face = colours.color(QPalette::Window);
        colours.setColor(QPalette::Base, readOnly ? face : QColor(Qt::white));
        colours.setColor(QPalette::Disabled, QPalette::Base, face);
        setPalette(colours);
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
            if (edit.isReadOnly() != (wParam != 0)) {
                edit.makeReadOnly(wParam != 0);
            }
            return TRUE;
        default:
            return DefWindowProcA(window.handle, message, wParam, lParam);
    }
}

QWidget* makeProgressWidget(const Window& window) {
    auto* bar = new QProgressBar(window.parent->client);
    bar->setTextVisible(false);
    return bar;
}

// The bar shows what it is told at once, whether or not the program returns to its loop.
LRESULT progressMessage(Window& window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto& bar = static_cast<QProgressBar&>(*window.outer);
    switch (message) {
        case PBM_SETRANGE: {
            const LRESULT before = MAKELPARAM(bar.minimum(), bar.maximum());
            bar.setRange(LOWORD(lParam), HIWORD(lParam));
            return before;
        }
        case PBM_SETPOS: {
            const LRESULT before = bar.value();
            bar.setValue(static_cast<int>(wParam));
            bar.repaint();
            return before;
        }
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
