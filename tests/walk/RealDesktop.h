// The walk on an X server instead of the offscreen platform, and whoever has the windows read aloud there.
#pragma once

#include <QAbstractNativeEventFilter>
#include <QDBusConnection>
#include <atomic>

struct xcb_connection_t;

namespace walk {

// What an X server tells comes in order and in its own time: what it has been asked before a mark comes before that.
class Server : public QAbstractNativeEventFilter {
public:
    // Moves the real mouse out of the way.
    Server();
    // Whether nothing but the mark came.
    bool isAtRest();

    bool nativeEventFilter(const QByteArray&, void* message, qintptr*) override;

private:
    xcb_connection_t* const connection;
    const unsigned own;
    bool marked = false;
    bool alone = false;
};

// Asks about every object that the program shows, over the bus for this, again and again: in a thread of its own that
// never ends.
class Reader {
public:
    // Waits until the program takes part.
    Reader();
    // Serves it until it has had so many more answers.
    void serve(int count);

private:
    void read();
    void visit(const QString& service, const QString& path);
    QVariant ask(const QString& service, const QString& path, const QString& interface, const QString& method,
                 const QVariantList& arguments = {});

    std::atomic<int> answers = 0;  // of the program itself
    QDBusConnection bus;
};

}  // namespace walk
