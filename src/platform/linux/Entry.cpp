#include "platform/linux/Entry.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QScreen>
#include <QTranslator>

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

// Message boxes and file dialogs speak the desktop's language, as far as Qt's own texts are installed in it. They keep
// our windows' direction whatever that language is.
void installLanguage() {
    auto* texts = new QTranslator(qApp);
    if (texts->load(QLocale::system(), QStringLiteral("qtbase"), QStringLiteral("_"),
                    QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        QCoreApplication::installTranslator(texts);
    }
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
}

}  // namespace

void prepareApplication() {
    installStyle();
    installLanguage();
    installInput();
    installLoops();
    QApplication::setQuitOnLastWindowClosed(false);
    for (QScreen* screen : QGuiApplication::screens()) {
        watchScreen(screen);
    }
    QObject::connect(qApp, &QGuiApplication::screenAdded, qApp, watchScreen);
    QObject::connect(qApp, &QGuiApplication::primaryScreenChanged, qApp, tellDesktopChange);
}

}  // namespace layer
