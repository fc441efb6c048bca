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

// Addresses of the two buses, as D-Bus has them. A bus that would have to be
// started first is none: nobody on it could keep the machine awake.
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

/// One link to a bus, from `open` until the object goes.
class Bus final
{
    Q_DISABLE_COPY_MOVE(Bus)

public:
    Bus() = default;
    ~Bus() { close(); }

    /// False if nobody listens there.
    [[nodiscard]] bool open(const QString &address);
    void close();

    QDBusPendingCall call(const QDBusMessage &message) const;

private:
    QString name;
};

// QtDBus's own way onto a bus waits until the bus has said hello, however long that takes. A link
// that knows nothing of buses does not, and the greeting is a call like any other.
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

/// One taking, from the asking until the service has been told that it is over.
class Inhibition final : public QObject
{
    Q_DISABLE_COPY_MOVE(Inhibition)

public:
    Inhibition(QString why, QObject *parent);

    /// False if there is nobody to ask.
    [[nodiscard]] bool begin();

    /// Gives back what is held, or what the service is about to give, and deletes the object.
    void end();

private:
    [[nodiscard]] bool askPortal();
    [[nodiscard]] bool askLogind();
    void ask(const QDBusMessage &question,
             const std::function<void(const QDBusMessage &)> &onReply);
    void onPortalReply(const QDBusMessage &reply);
    void onLogindReply(const QDBusMessage &reply);

    QString reason;
    Bus bus;
    bool isAsking = false;
    bool isOver = false;
    QString request;              // The portal's, empty for none.
    QDBusUnixFileDescriptor lock; // logind's, which is held for as long as this is open.
};

Inhibition::Inhibition(QString why, QObject *parent)
    : QObject(parent)
    , reason(std::move(why))
{
}

bool Inhibition::begin()
{
    return askPortal() || askLogind();
}

void Inhibition::end()
{
    isOver = true;
    if (isAsking)
        return;
    if (request.isEmpty()) {
        deleteLater();
        return;
    }
    ask(QDBusMessage::createMethodCall(u"org.freedesktop.portal.Desktop"_s,
                                       std::exchange(request, QString()),
                                       u"org.freedesktop.portal.Request"_s, u"Close"_s),
        [this](const QDBusMessage &) { deleteLater(); });
}

bool Inhibition::askPortal()
{
    if (!bus.open(sessionAddress()))
        return false;
    constexpr uint Suspend = 4;
    QDBusMessage question = QDBusMessage::createMethodCall(
            u"org.freedesktop.portal.Desktop"_s, u"/org/freedesktop/portal/desktop"_s,
            u"org.freedesktop.portal.Inhibit"_s, u"Inhibit"_s);
    question.setArguments({QString(), Suspend, QVariantMap{{u"reason"_s, reason}}});
    ask(question, [this](const QDBusMessage &reply) { onPortalReply(reply); });
    return true;
}

bool Inhibition::askLogind()
{
    if (!bus.open(systemAddress()))
        return false;
    QDBusMessage question = QDBusMessage::createMethodCall(
            u"org.freedesktop.login1"_s, u"/org/freedesktop/login1"_s,
            u"org.freedesktop.login1.Manager"_s, u"Inhibit"_s);
    question.setArguments({u"idle"_s, u"Velmora"_s, reason, u"block"_s});
    ask(question, [this](const QDBusMessage &reply) { onLogindReply(reply); });
    return true;
}

void Inhibition::ask(const QDBusMessage &question,
                     const std::function<void(const QDBusMessage &)> &onReply)
{
    isAsking = true;
    auto *watcher = new QDBusPendingCallWatcher(bus.call(question), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, onReply] {
        watcher->deleteLater();
        isAsking = false;
        onReply(watcher->reply());
    });
}

void Inhibition::onPortalReply(const QDBusMessage &reply)
{
    const QDBusPendingReply<QDBusObjectPath> handle(reply);
    if (handle.isValid())
        request = handle.value().path();
    else if (!isOver && askLogind())
        return;
    if (isOver)
        end();
}

void Inhibition::onLogindReply(const QDBusMessage &reply)
{
    const QDBusPendingReply<QDBusUnixFileDescriptor> descriptor(reply);
    if (descriptor.isValid())
        lock = descriptor.value();
    if (isOver)
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
    // The application as parent: what is still held goes before the buses do.
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
