#include "SleepInhibitor.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusUnixFileDescriptor>
#include <QHash>
#include <QPointer>

#include <functional>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

// Returns the address of the session bus, as D-Bus looks it up. "autolaunch:" is ignored: a bus
// that D-Bus would have to start has no service that keeps the machine awake.
QString sessionAddress()
{
    QString given = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    if (!given.isEmpty() && !given.startsWith("autolaunch:"_L1))
        return given;
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return folder.isEmpty() ? QString() : QString(u"unix:path="_s + folder + u"/bus"_s);
}

QString systemAddress()
{
    return qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS",
                                u"unix:path=/var/run/dbus/system_bus_socket"_s);
}

/// A connection to a bus, closed by the destructor.
class Bus final
{
    Q_DISABLE_COPY_MOVE(Bus)

public:
    Bus() = default;
    ~Bus() { close(); }

    /// Returns false if the connection fails.
    [[nodiscard]] bool open(const QString &address);
    void close();

    QDBusPendingCall call(const QDBusMessage &message) const;

private:
    QString name;
};

// Works around QDBusConnection::connectToBus(), which blocks until the bus replies to Hello. A peer
// connection does not block, and Hello is sent asynchronously.
bool Bus::open(const QString &address)
{
    close();
    if (address.isEmpty())
        return false;
    static int count = 0;
    name = u"velmora-sleep-%1"_s.arg(++count);
    if (!QDBusConnection::connectToPeer(address, name).isConnected()) {
        close();
        return false;
    }
    call(QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                        u"org.freedesktop.DBus"_s, u"Hello"_s));
    return true;
}

void Bus::close()
{
    if (!name.isEmpty())
        QDBusConnection::disconnectFromPeer(std::exchange(name, QString()));
}

QDBusPendingCall Bus::call(const QDBusMessage &message) const
{
    return QDBusConnection(name).asyncCall(message);
}

/// One inhibition, from the request until the service has released it.
class Inhibition final : public QObject
{
    Q_DISABLE_COPY_MOVE(Inhibition)

public:
    Inhibition(QString why, QObject *parent);

    /// Returns false if there is no bus.
    [[nodiscard]] bool begin();

    /// Releases the inhibition, also one that the service has yet to grant, and deletes the object.
    void end();

private:
    [[nodiscard]] bool requestFromPortal();
    [[nodiscard]] bool requestFromLogind();
    void send(const QDBusMessage &message,
              const std::function<void(const QDBusMessage &)> &onReply);
    void onPortalReply(const QDBusMessage &reply);
    void onLogindReply(const QDBusMessage &reply);

    QString reason;
    Bus bus;
    bool isPending = false;
    bool isReleased = false;
    QString requestPath;          // Of the portal's request, empty for none.
    QDBusUnixFileDescriptor lock; // Keeps logind's inhibitor lock while open.
};

Inhibition::Inhibition(QString why, QObject *parent)
    : QObject(parent)
    , reason(std::move(why))
{
}

bool Inhibition::begin()
{
    return requestFromPortal() || requestFromLogind();
}

void Inhibition::end()
{
    isReleased = true;
    if (isPending)
        return;
    if (requestPath.isEmpty()) {
        deleteLater();
        return;
    }
    send(QDBusMessage::createMethodCall(u"org.freedesktop.portal.Desktop"_s,
                                        std::exchange(requestPath, QString()),
                                        u"org.freedesktop.portal.Request"_s, u"Close"_s),
         [this](const QDBusMessage &) { deleteLater(); });
}

bool Inhibition::requestFromPortal()
{
    if (!bus.open(sessionAddress()))
        return false;
    constexpr uint Suspend = 4;
    QDBusMessage message = QDBusMessage::createMethodCall(
            u"org.freedesktop.portal.Desktop"_s, u"/org/freedesktop/portal/desktop"_s,
            u"org.freedesktop.portal.Inhibit"_s, u"Inhibit"_s);
    message.setArguments({QString(), Suspend, QVariantMap{{u"reason"_s, reason}}});
    send(message, [this](const QDBusMessage &reply) { onPortalReply(reply); });
    return true;
}

bool Inhibition::requestFromLogind()
{
    if (!bus.open(systemAddress()))
        return false;
    QDBusMessage message = QDBusMessage::createMethodCall(
            u"org.freedesktop.login1"_s, u"/org/freedesktop/login1"_s,
            u"org.freedesktop.login1.Manager"_s, u"Inhibit"_s);
    message.setArguments({u"idle"_s, u"Velmora"_s, reason, u"block"_s});
    send(message, [this](const QDBusMessage &reply) { onLogindReply(reply); });
    return true;
}

void Inhibition::send(const QDBusMessage &message,
                      const std::function<void(const QDBusMessage &)> &onReply)
{
    isPending = true;
    auto *watcher = new QDBusPendingCallWatcher(bus.call(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, onReply] {
        watcher->deleteLater();
        isPending = false;
        onReply(watcher->reply());
    });
}

void Inhibition::onPortalReply(const QDBusMessage &reply)
{
    const QDBusPendingReply<QDBusObjectPath> handle(reply);
    if (handle.isValid())
        requestPath = handle.value().path();
    else if (!isReleased && requestFromLogind())
        return;
    if (isReleased)
        end();
}

void Inhibition::onLogindReply(const QDBusMessage &reply)
{
    const QDBusPendingReply<QDBusUnixFileDescriptor> descriptor(reply);
    if (descriptor.isValid())
        lock = descriptor.value();
    if (isReleased)
        end();
}

QHash<quint32, QPointer<Inhibition>> &inhibitions()
{
    static QHash<quint32, QPointer<Inhibition>> all;
    return all;
}

} // namespace

namespace SleepInhibitor {

quint32 acquire(const QString &reason)
{
    // The application as parent deletes the object before QtDBus closes its connections.
    auto *inhibition = new Inhibition(reason, QCoreApplication::instance());
    if (!inhibition->begin()) {
        delete inhibition;
        return 0;
    }
    static quint32 last = 0;
    inhibitions().insert(++last, inhibition);
    return last;
}

void release(quint32 assertion)
{
    if (Inhibition *inhibition = inhibitions().take(assertion))
        inhibition->end();
}

} // namespace SleepInhibitor
