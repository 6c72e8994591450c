// The Qt widgets behind the windows.
#include <QAbstractButton>
#include <QCloseEvent>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPaintEvent>
#include <QPainter>
#include <QScreen>
#include <QWindow>

#include "platform/linux/Layer.h"

namespace layer {

namespace {

// A fixed-size window of the real desktop at 96 dots an inch: its borders, its caption and one row of menu.
constexpr int BorderWidth = 3;
constexpr int CaptionHeight = 23;
constexpr int MenuHeight = 20;

constexpr DWORD StaticTypeMask = 0x1F;
constexpr QSize IconSize(32, 32);
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

}  // namespace

QSize outerSizeFor(QSize client) {
    return {client.width() + 2 * BorderWidth, client.height() + 2 * BorderWidth + CaptionHeight};
}

void askToClose(HWND window, QCloseEvent& event) {
    event.ignore();
    RawInput input;
    input.what = RawInput::What::Close;
    input.closed = window;
    putInput(std::move(input));
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

bool notifyParent(HWND control, unsigned code) {
    // One that goes with its window tells nobody.
    if (const Window* window = find(control); window && window->parent && !window->parent->dying) {
        SendMessageA(window->parent->handle, WM_COMMAND, MAKEWPARAM(static_cast<unsigned>(window->id), code),
                     reinterpret_cast<LPARAM>(control));
    }
    return find(control) != nullptr;
}

void showCues(Window& root) {
    QWidget* const widget = root.outer;
    if (widget && !widget->testAttribute(Qt::WA_KeyboardFocusChange)) {
        widget->setAttribute(Qt::WA_KeyboardFocusChange);
        if (const Window* focused = find(GetFocus())) {
            focused->client->update();
        }
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

// A picture in the middle of its control, on the colour of its own upper left corner.
QPixmap centred(const QImage& picture, QSize size) {
    QPixmap ground(size);
    ground.fill(picture.pixelColor(0, 0));
    QPainter(&ground).drawImage(size.width() / 2 - picture.width() / 2, size.height() / 2 - picture.height() / 2,
                                picture);
    return ground;
}

// Shadow and light of what is etched.
void etch(QLabel& label) {
    QPalette colours = label.palette();
    colours.setColor(QPalette::Dark, QColor(160, 160, 160));
    colours.setColor(QPalette::Light, Qt::white);
    label.setPalette(colours);
}

// Texts, pictures and etched lines. A picture that is not centred gives its control its own size; a line is the edge
// round a control without height.
QWidget* makeStatic(Window& window) {
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
            label->setPixmap(iconOf(LoadIconA(nullptr, MAKEINTRESOURCEA(window.imageId))).pixmap(IconSize));
            window.place.setSize(IconSize);
            break;
        case SS_BITMAP: {
            const HBITMAP bitmap = LoadBitmapA(nullptr, MAKEINTRESOURCEA(window.imageId));
            const QImage picture = imageOf(bitmap);
            DeleteObject(bitmap);
            if ((window.style & SS_CENTERIMAGE) == 0) {
                window.place.setSize(picture.size());
            }
            label->setPixmap(centred(picture, window.place.size()));
            break;
        }
        case SS_ETCHEDHORZ:
            etch(*label);
            label->setFrameStyle(static_cast<int>(QFrame::Panel) | QFrame::Sunken);
            window.place.setSize({window.place.width() + 2, 2});
            break;
        case SS_ETCHEDFRAME:
            etch(*label);
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
            window.outer = makeButtonWidget(window);
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
    // Only the layer moves the keyboard.
    window.outer->setFocusPolicy(Qt::NoFocus);
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
        edit->setCursorPosition(0);
    } else if (auto* label = qobject_cast<QLabel*>(window.outer.data())) {
        if ((window.style & StaticTypeMask) <= SS_RIGHT) {
            label->setText(text);
        }
    } else if (window.outer && !window.parent) {
        window.outer->setWindowTitle(text);
    }
}

}  // namespace layer
