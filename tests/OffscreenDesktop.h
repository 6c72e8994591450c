// A desktop of a known size that nobody sees, unless QT_QPA_PLATFORM asks for another one.
#pragma once

#include <QByteArray>
#include <QTemporaryFile>

// The description of the desktop, there while the connection to it is made. The largest window size needs all of it.
class OffscreenDesktop {
public:
    OffscreenDesktop() {
        const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
        if (!platform.isEmpty() && !platform.startsWith("offscreen")) {
            return;
        }
        if (!file.open() ||
            file.write(R"({"screens":[{"name":"desktop","x":0,"y":0,"width":1280,"height":1024,)"
                       R"("logicalDpi":96,"logicalBaseDpi":96,"dpr":1}]})") < 0 ||
            !file.flush()) {
            qFatal("write screen '%s': failed", qPrintable(file.fileName()));
        }
        qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + file.fileName().toLocal8Bit());
    }

private:
    QTemporaryFile file;
};
