// The process entry on Linux: connects to the desktop and runs the program's own entry.
#include <QApplication>

#include "platform/Win32.h"
#include "platform/linux/Entry.h"

int main(int count, char** arguments) {
    QApplication application(count, arguments);
    QApplication::setApplicationName(QStringLiteral("tarvex"));
    layer::prepareApplication();
    layer::closeOnSignals();
    char noArguments[] = "";
    return WinMain(nullptr, nullptr, noArguments, SW_SHOWDEFAULT);
}
