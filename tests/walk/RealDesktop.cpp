#include "walk/RealDesktop.h"

#include <xcb/xcb.h>

#include <QAccessible>
#include <QCursor>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QGuiApplication>
#include <QScreen>
#include <thread>

namespace walk {

Server::Server()
    : connection(qApp->nativeInterface<QNativeInterface::QX11Application>()->connection()),
      own(xcb_generate_id(connection)) {
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    xcb_create_window(connection, 0, own, root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, 0, 0, nullptr);
    qApp->installNativeEventFilter(this);
    QCursor::setPos(QGuiApplication::primaryScreen()->geometry().bottomRight());
}

bool Server::isAtRest() {
    xcb_client_message_event_t mark{};
    mark.response_type = XCB_CLIENT_MESSAGE;
    mark.format = 32;
    mark.window = own;
    xcb_send_event(connection, 0, own, 0, reinterpret_cast<const char*>(&mark));
    xcb_flush(connection);
    marked = false;
    alone = true;
    while (!marked) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return alone;
}

bool Server::nativeEventFilter(const QByteArray&, void* message, qintptr*) {
    const auto* event = static_cast<const xcb_client_message_event_t*>(message);
    const bool isMark = (event->response_type & 0x7F) == XCB_CLIENT_MESSAGE && event->window == own;
    marked = marked || isMark;
    alone = alone && isMark;
    return isMark;
}

namespace {

const QString Spi = QStringLiteral("org.a11y.atspi.");
const QString Accessible = Spi + "Accessible";
const QString Registry = Spi + "Registry";

// What is asked of an object that has the interface: a method or a property.
struct Question {
    const char* interface;
    const char* name;
    QVariantList arguments = {};
    bool isProperty = false;
};
const QList<Question> Questions = {
    {"Accessible", "GetState"},
    {"Accessible", "GetAttributes"},
    {"Accessible", "GetRelationSet"},
    {"Accessible", "GetIndexInParent"},
    {"Accessible", "Name", {}, true},
    {"Accessible", "Description", {}, true},
    {"Accessible", "Parent", {}, true},
    {"Component", "GetExtents", {0u}},
    {"Component", "GetAccessibleAtPoint", {400, 300, 0u}},
    {"Action", "GetActions"},
    {"Text", "GetText", {0, -1}},
    {"Text", "GetCharacterExtents", {0, 0u}},
    {"Text", "CaretOffset", {}, true},
    {"Value", "CurrentValue", {}, true},
    {"Selection", "GetSelectedChild", {0}},
    {"Table", "GetAccessibleAt", {0, 0}},
    {"Table", "GetSelectedRows"},
};

}  // namespace

Reader::Reader() : bus(QString()) {
    std::thread([this] { read(); }).detach();
    while (!QAccessible::isActive()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

void Reader::serve(int count) {
    const int wanted = answers + count;
    while (answers < wanted) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

void Reader::read() {
    bus = QDBusConnection::sessionBus();
    const QVariant address = ask("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress");
    bus = QDBusConnection::connectToBus(address.toString(), "reader");
    for (const char* events : {"object:", "window:", "focus:"}) {
        ask(Registry, "/org/a11y/atspi/registry", Registry, "RegisterEvent", {events});
    }
    for (;;) {
        visit(Registry, "/org/a11y/atspi/accessible/root");
    }
}

QVariant Reader::ask(const QString& service, const QString& path, const QString& interface, const QString& method,
                     const QVariantList& arguments) {
    QDBusMessage question = QDBusMessage::createMethodCall(service, path, interface, method);
    question.setArguments(arguments);
    const QDBusMessage answer = bus.call(question);
    if (answer.type() != QDBusMessage::ReplyMessage) {
        return {};  // the object has gone
    }
    answers += service.startsWith(':');
    return answer.arguments().value(0);
}

void Reader::visit(const QString& service, const QString& path) {
    const QStringList interfaces = ask(service, path, Accessible, "GetInterfaces").toStringList();
    for (const Question& question : Questions) {
        const QString interface = Spi + question.interface;
        if (interfaces.contains(interface) && question.isProperty) {
            ask(service, path, "org.freedesktop.DBus.Properties", "Get", {interface, question.name});
        } else if (interfaces.contains(interface)) {
            ask(service, path, interface, question.name, question.arguments);
        }
    }
    const QVariant children = ask(service, path, Accessible, "GetChildren");
    if (!children.isValid()) {
        return;
    }
    const auto list = children.value<QDBusArgument>();
    for (list.beginArray(); !list.atEnd(); list.endStructure()) {
        QString childService;
        QDBusObjectPath childPath;
        list.beginStructure();
        list >> childService >> childPath;
        visit(childService, childPath.path());
    }
}

}  // namespace walk
