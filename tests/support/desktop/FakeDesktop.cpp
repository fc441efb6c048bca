#include "FakeDesktop.h"

#include "Waiting.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const auto WatcherService = u"org.kde.StatusNotifierWatcher"_s;
const auto NotificationService = u"org.freedesktop.Notifications"_s;
const auto IconPath = u"/StatusNotifierItem"_s;
const auto IconInterface = u"org.kde.StatusNotifierItem"_s;
const auto MenuInterface = u"com.canonical.dbusmenu"_s;
const auto PropertyInterface = u"org.freedesktop.DBus.Properties"_s;

FakeDesktop::Notification readNotification(const QVariantList &arguments)
{
    return {.program = arguments.value(0).toString(),
            .icon = arguments.value(2).toString(),
            .title = arguments.value(3).toString(),
            .text = arguments.value(4).toString(),
            .actions = arguments.value(5).toStringList(),
            .hints = qdbus_cast<QVariantMap>(arguments.value(6)),
            .duration = arguments.value(7).toInt()};
}

FakeDesktop::MenuEntry readEntry(const QDBusArgument &argument)
{
    FakeDesktop::MenuEntry entry;
    QVariantMap properties;
    argument.beginStructure();
    argument >> entry.id >> properties;
    argument.endStructure();
    entry.label = properties.value(u"label"_s).toString().remove(u'_');
    entry.isSeparator = properties.value(u"type"_s) == u"separator"_s;
    return entry;
}

} // namespace

FakeDesktop::FakeDesktop(const QString &busAddress)
{
    static int count = 0;
    connectionName = u"fake-desktop-%1"_s.arg(++count);
    QDBusConnection connection = QDBusConnection::connectToBus(busAddress, connectionName);
    connection.registerVirtualObject(u"/"_s, this, QDBusConnection::SubPath);
    connection.registerService(NotificationService);
    connection.registerService(WatcherService);
}

FakeDesktop::~FakeDesktop()
{
    QDBusConnection::disconnectFromBus(connectionName);
}

QList<FakeDesktop::Notification> FakeDesktop::notifications() const
{
    return notified;
}

void FakeDesktop::clickNotification(uint number) const
{
    QDBusMessage click = QDBusMessage::createSignal(u"/org/freedesktop/Notifications"_s,
                                                    NotificationService, u"ActionInvoked"_s);
    click.setArguments({number, u"default"_s});
    QDBusConnection(connectionName).send(click);
}

bool FakeDesktop::waitForIcon() const
{
    return QTest::qWaitFor([this] { return !iconOwner.isEmpty(); }, WaitTimeout);
}

QVariant FakeDesktop::iconProperty(const QString &name) const
{
    const QDBusMessage reply = call(IconPath, PropertyInterface, u"Get"_s, {IconInterface, name});
    return qvariant_cast<QDBusVariant>(reply.arguments().value(0)).variant();
}

bool FakeDesktop::callIcon(const QString &method) const
{
    return call(IconPath, IconInterface, method, {0, 0}).type() == QDBusMessage::ReplyMessage;
}

QList<FakeDesktop::MenuEntry> FakeDesktop::menu() const
{
    const QString path = qvariant_cast<QDBusObjectPath>(iconProperty(u"Menu"_s)).path();
    const QDBusMessage reply = call(path, MenuInterface, u"GetLayout"_s, {0, -1, QStringList()});
    QList<MenuEntry> entries;
    if (reply.arguments().size() < 2)
        return entries;
    const auto root = qvariant_cast<QDBusArgument>(reply.arguments().at(1));
    int id = 0;
    QVariantMap properties;
    root.beginStructure();
    root >> id >> properties;
    root.beginArray();
    while (!root.atEnd()) {
        QDBusVariant child;
        root >> child;
        entries.append(readEntry(qvariant_cast<QDBusArgument>(child.variant())));
    }
    root.endArray();
    root.endStructure();
    return entries;
}

bool FakeDesktop::choose(const QString &label) const
{
    const QString path = qvariant_cast<QDBusObjectPath>(iconProperty(u"Menu"_s)).path();
    const QList<MenuEntry> entries = menu();
    for (const MenuEntry &entry : entries) {
        if (entry.label != label)
            continue;
        const QDBusMessage reply =
                call(path, MenuInterface, u"Event"_s,
                     {entry.id, u"clicked"_s, QVariant::fromValue(QDBusVariant(QString())), 0U});
        return reply.type() == QDBusMessage::ReplyMessage;
    }
    return false;
}

// Qt reads only the properties that the introspection data describe.
QString FakeDesktop::introspect(const QString & /*path*/) const
{
    return u"<interface name=\"%1\"><property name=\"IsStatusNotifierHostRegistered\" type=\"b\" "
           "access=\"read\"/></interface>"_s.arg(WatcherService);
}

bool FakeDesktop::handleMessage(const QDBusMessage &message, const QDBusConnection &connection)
{
    const QString member = message.member();
    if (message.interface() == WatcherService && member == "RegisterStatusNotifierItem"_L1) {
        iconOwner = message.service();
        return connection.send(message.createReply());
    }
    if (message.interface() == PropertyInterface && member == "Get"_L1)
        return connection.send(message.createReply(QVariant::fromValue(QDBusVariant(true))));
    if (message.interface() == NotificationService && member == "Notify"_L1) {
        notified.append(readNotification(message.arguments()));
        return connection.send(message.createReply(static_cast<uint>(notified.size())));
    }
    return false;
}

QDBusMessage FakeDesktop::call(const QString &path, const QString &interface, const QString &method,
                               const QVariantList &arguments) const
{
    QDBusMessage request = QDBusMessage::createMethodCall(iconOwner, path, interface, method);
    request.setArguments(arguments);
    return QDBusConnection(connectionName).call(request, QDBus::Block, WaitTimeout);
}
