// The Qt widgets behind the windows.
#include <QApplication>
#include <QCloseEvent>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPaintEvent>
#include <QPushButton>
#include <QScreen>
#include <QStyleOptionButton>
#include <QWindow>

#include "platform/linux/Layer.h"

namespace layer {

namespace {

// A fixed-size window of the real desktop at 96 dots an inch: its borders, its caption and one row of menu.
constexpr int BorderWidth = 3;
constexpr int CaptionHeight = 23;
constexpr int MenuHeight = 20;

constexpr DWORD ButtonTypeMask = 0x0F;
constexpr DWORD ButtonMultiline = 0x2000;
constexpr DWORD PlainButton = 0;
constexpr DWORD DefaultButton = 1;
constexpr DWORD AutoCheckBox = 3;
constexpr DWORD GroupBox = 7;
constexpr DWORD StaticTypeMask = 0x1F;
constexpr Qt::WindowFlags DialogFlags =
    Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint;

class FrameWidget : public QWidget {
public:
    explicit FrameWidget(HWND shown)
        : QWidget(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                               Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint),
          window(shown) {
    }

protected:
    void closeEvent(QCloseEvent* event) override {
        askToClose(window, *event);
    }

    void moveEvent(QMoveEvent*) override {
        noteMove(window, *this);
    }

    // The window itself takes the keyboard when it becomes active, so that its accelerators work.
    bool event(QEvent* event) override {
        const bool taken = QWidget::event(event);
        if (event->type() == QEvent::WindowActivate) {
            setFocus();
        }
        return taken;
    }

    void showEvent(QShowEvent*) override {
        connect(windowHandle(), &QWindow::screenChanged, this, &FrameWidget::refreshSurfaces, Qt::UniqueConnection);
    }

private:
    // Another screen may have another density.
    void refreshSurfaces() {
        if (Window* shown = layer::find(window)) {
            resizeTree(*shown);
            invalidateAll(*shown);
        }
    }

    static void resizeTree(Window& window) {
        resizeSurface(window);
        for (Window* child : window.children) {
            resizeTree(*child);
        }
    }

    HWND window;
};

// A push button whose text may take several lines.
class PushButton : public QPushButton {
public:
    PushButton(QWidget* parent, HWND shown, DWORD style)
        : QPushButton(parent), wraps(style & ButtonMultiline), isDefault((style & ButtonTypeMask) == DefaultButton) {
        setAutoDefault(false);
        connect(this, &QPushButton::clicked, this, [shown] { notifyParent(shown, BN_CLICKED); });
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        QStyleOptionButton option;
        initStyleOption(&option);
        const QString label = option.text;
        option.text.clear();
        // Enter presses the focused button, or else the default one; the look says which.
        const bool otherFocused = dynamic_cast<const PushButton*>(QApplication::focusWidget()) && !hasFocus();
        option.features.setFlag(QStyleOptionButton::DefaultButton, isDefault && !otherFocused);
        style()->drawControl(QStyle::CE_PushButton, &option, &painter, this);
        QRect inside = rect().adjusted(3, 2, -3, -2);
        if (option.state & QStyle::State_Sunken) {
            inside.translate(1, 1);
        }
        const auto role = isEnabled() ? QPalette::Normal : QPalette::Disabled;
        painter.setPen(palette().color(role, QPalette::ButtonText));
        painter.drawText(inside, Qt::AlignCenter | Qt::TextHideMnemonic | (wraps ? Qt::TextWordWrap : 0), label);
    }

private:
    bool wraps;
    bool isDefault;
};

}  // namespace

QSize outerSizeFor(QSize client) {
    return {client.width() + 2 * BorderWidth, client.height() + 2 * BorderWidth + CaptionHeight};
}

void askToClose(HWND window, QCloseEvent& event) {
    event.ignore();
    PostMessageA(window, WM_CLOSE, 0, 0);
}

void noteMove(HWND window, const QWidget& widget) {
    if (Window* moved = find(window); moved && widget.isWindow() && widget.isVisible()) {
        moved->place.moveTopLeft(widget.pos());
    }
}

void Canvas::closeEvent(QCloseEvent* event) {
    askToClose(window, *event);
}

void Canvas::moveEvent(QMoveEvent*) {
    noteMove(window, *this);
}

// The wheel belongs to the dialog under the mouse, whichever of its controls that passes over: none takes it for
// itself but an open list.
void Canvas::wheelEvent(QWheelEvent* event) {
    const QPoint at = event->globalPosition().toPoint();
    SendMessageA(window, WM_MOUSEWHEEL, MAKEWPARAM(0, static_cast<unsigned>(event->angleDelta().y())),
                 MAKELPARAM(static_cast<unsigned>(at.x()), static_cast<unsigned>(at.y())));
}

void notifyParent(HWND control, unsigned code) {
    if (const Window* window = find(control); window && window->parent) {
        SendMessageA(window->parent->handle, WM_COMMAND, MAKEWPARAM(static_cast<unsigned>(window->id), code),
                     reinterpret_cast<LPARAM>(control));
    }
}

QSize frameClientSize(const Window& window) {
    const int menu = window.menu ? MenuHeight : 0;
    return {std::max(window.place.width() - 2 * BorderWidth, 0),
            std::max(window.place.height() - 2 * BorderWidth - CaptionHeight - menu, 0)};
}

int menuBarHeight(const Window& window) {
    return window.menu ? MenuHeight : 0;
}

QWidget* makeFrameWidget(Window& window) {
    auto* frame = new FrameWidget(window.handle);
    window.client = new Canvas(frame, window.handle);
    return frame;
}

QWidget* makeDialogWidget(Window& window) {
    const Window* owner = find(window.owner);
    auto* widget = new Canvas(owner ? owner->outer.data() : nullptr, window.handle, DialogFlags);
    widget->setWindowModality(Qt::ApplicationModal);
    return widget;
}

void placeFrame(Window& window) {
    const QSize client = frameClientSize(window);
    const int menu = menuBarHeight(window);
    if (window.client != window.outer) {
        window.client->setGeometry(0, menu, client.width(), client.height());
    }
    if (auto* bar = window.outer->findChild<QMenuBar*>()) {
        bar->setGeometry(0, 0, client.width(), menu);
    }
    window.outer->setFixedSize(client.width(), client.height() + menu);
    window.outer->move(window.place.topLeft());
}

namespace {

QWidget* makeButton(const Window& window) {
    const DWORD type = window.style & ButtonTypeMask;
    switch (type) {
        case PlainButton:
        case DefaultButton:
            return new PushButton(window.parent->client, window.handle, window.style);
        case AutoCheckBox:
            return makeCheckBoxWidget(window);
        case GroupBox:
            return makeGroupBoxWidget(window);
        default:
            reportUnsupported("button type", QString::number(type));
            return nullptr;
    }
}

// Texts, pictures and etched lines.
QWidget* makeStatic(const Window& window) {
    const DWORD type = window.style & StaticTypeMask;
    auto* label = new QLabel(window.parent->client);
    switch (type) {
        case SS_LEFT:
        case SS_CENTER:
        case SS_RIGHT: {
            constexpr Qt::Alignment Sides[] = {Qt::AlignLeft, Qt::AlignHCenter, Qt::AlignRight};
            label->setTextFormat(Qt::PlainText);
            label->setWordWrap(true);
            label->setAlignment(Qt::AlignTop | Sides[type]);
            break;
        }
        case SS_ICON:
            label->setPixmap(iconOf(LoadIconA(nullptr, MAKEINTRESOURCEA(window.imageId))).pixmap(32, 32));
            break;
        case SS_BITMAP: {
            const HBITMAP bitmap = LoadBitmapA(nullptr, MAKEINTRESOURCEA(window.imageId));
            label->setPixmap(QPixmap::fromImage(imageOf(bitmap)));
            DeleteObject(bitmap);
            break;
        }
        case SS_ETCHEDHORZ:
            label->setFrameStyle(static_cast<int>(QFrame::HLine) | QFrame::Sunken);
            break;
        case SS_ETCHEDFRAME:
            label->setFrameStyle(static_cast<int>(QFrame::Box) | QFrame::Sunken);
            break;
        default:
            reportUnsupported("static type", QString::number(type));
    }
    return label;
}

}  // namespace

void makeControlWidget(Window& window) {
    switch (window.kind) {
        case Kind::Button:
            window.outer = makeButton(window);
            break;
        case Kind::Combo:
            window.outer = makeComboWidget(window);
            break;
        case Kind::Edit:
            window.outer = makeEditWidget(window);
            break;
        case Kind::ScrollBar:
            window.outer = makeScrollBarWidget(window);
            break;
        case Kind::Progress:
            window.outer = makeProgressWidget(window);
            break;
        default:
            window.outer = makeStatic(window);
    }
    window.outer->setFont(window.parent->font);
    window.client = window.outer;
}

void applyText(Window& window) {
    const QString text = decode(window.text, controlCodePage());
    if (auto* button = qobject_cast<QAbstractButton*>(window.outer.data())) {
        button->setText(text);
    } else if (auto* box = qobject_cast<QGroupBox*>(window.outer.data())) {
        box->setTitle(text);
    } else if (auto* edit = qobject_cast<QLineEdit*>(window.outer.data())) {
        edit->setText(text);
    } else if (auto* label = qobject_cast<QLabel*>(window.outer.data())) {
        if ((window.style & StaticTypeMask) <= SS_RIGHT) {
            label->setText(text);
        }
    } else if (window.outer && !window.parent) {
        window.outer->setWindowTitle(text);
    }
}

}  // namespace layer
