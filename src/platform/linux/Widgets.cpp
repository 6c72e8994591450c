// The Qt widgets behind the windows.
#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
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
constexpr DWORD StaticTypeMask = 0x1F;

class FrameWidget : public QWidget {
public:
    explicit FrameWidget(HWND shown)
        : QWidget(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                               Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint),
          window(shown) {
    }

protected:
    void closeEvent(QCloseEvent* event) override {
        event->ignore();
        PostMessageA(window, WM_CLOSE, 0, 0);
    }

    // The user has dragged the window.
    void moveEvent(QMoveEvent*) override {
        if (Window* moved = layer::find(window); moved && isVisible()) {
            moved->place.moveTopLeft(pos());
        }
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
    PushButton(QWidget* parent, HWND shown, bool multiline) : QPushButton(parent), window(shown), wraps(multiline) {
        setAutoDefault(false);
        connect(this, &QPushButton::clicked, this, [shown] {
            if (const Window* button = layer::find(shown); button && button->parent) {
                SendMessageA(button->parent->handle, WM_COMMAND,
                             MAKEWPARAM(static_cast<unsigned>(button->id), BN_CLICKED),
                             reinterpret_cast<LPARAM>(shown));
            }
        });
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        QStyleOptionButton option;
        initStyleOption(&option);
        const QString label = option.text;
        option.text.clear();
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
    HWND window;
    bool wraps;
};

}  // namespace

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

void placeFrame(Window& window) {
    const QSize client = frameClientSize(window);
    const int menu = menuBarHeight(window);
    window.client->setGeometry(0, menu, client.width(), client.height());
    if (auto* bar = window.outer->findChild<QMenuBar*>()) {
        bar->setGeometry(0, 0, client.width(), menu);
    }
    window.outer->setFixedSize(client.width(), client.height() + menu);
    window.outer->move(window.place.topLeft());
}

void makeControlWidget(Window& window) {
    QWidget* parent = window.parent->client;
    if (window.kind == Kind::Button) {
        if ((window.style & ButtonTypeMask) > 1) {
            reportUnsupported("button type", QString::number(window.style & ButtonTypeMask));
        }
        window.outer = new PushButton(parent, window.handle, window.style & ButtonMultiline);
    } else {
        const DWORD type = window.style & StaticTypeMask;
        if (type > 2) {
            reportUnsupported("static type", QString::number(type));
        }
        auto* label = new QLabel(parent);
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
        constexpr Qt::Alignment Sides[] = {Qt::AlignLeft, Qt::AlignHCenter, Qt::AlignRight};
        label->setAlignment(Qt::AlignTop | Sides[type]);
        window.outer = label;
    }
    window.outer->setFont(window.parent->font);
    window.client = window.outer;
}

void applyText(Window& window) {
    const QString text = decode(window.text, controlCodePage());
    if (auto* button = qobject_cast<QPushButton*>(window.outer.data())) {
        button->setText(text);
    } else if (auto* label = qobject_cast<QLabel*>(window.outer.data())) {
        label->setText(text);
    } else if (window.outer && !window.parent) {
        window.outer->setWindowTitle(text);
    }
}

}  // namespace layer
