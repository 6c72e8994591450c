#include "platform/linux/Entry.h"

#include <QApplication>
#include <QScreen>

#include "platform/linux/Layer.h"

namespace layer {

namespace {

void tellDesktopChange() {
    std::vector<HWND> windows;
    for (Window* window : topLevels()) {
        windows.push_back(window->handle);
        invalidateAll(*window);
    }
    const QSize size = desktop().place.size();
    for (const HWND window : windows) {
        PostMessageA(window, WM_DISPLAYCHANGE, 32,
                     MAKELPARAM(static_cast<unsigned>(size.width()), static_cast<unsigned>(size.height())));
    }
}

void watchScreen(QScreen* screen) {
    if (screen) {
        QObject::connect(screen, &QScreen::geometryChanged, qApp, tellDesktopChange);
    }
}

}  // namespace

void prepareApplication() {
    installStyle();
    installInput();
    QApplication::setQuitOnLastWindowClosed(false);
    for (QScreen* screen : QGuiApplication::screens()) {
        watchScreen(screen);
    }
    QObject::connect(qApp, &QGuiApplication::screenAdded, qApp, watchScreen);
    QObject::connect(qApp, &QGuiApplication::primaryScreenChanged, qApp, tellDesktopChange);
}

}  // namespace layer
