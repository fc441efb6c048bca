#include "FakeSleepService.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>

#include <array>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

QString toText(const QVariant &argument)
{
    if (argument.canConvert<QDBusArgument>()) {
        const auto map = qdbus_cast<QVariantMap>(argument);
        QStringList pairs;
        for (auto pair = map.cbegin(); pair != map.cend(); ++pair)
            pairs.append(pair.key() + u'=' + pair.value().toString());
        return pairs.join(u',');
    }
    return argument.toString();
}

// A pipe whose write end is closed polls as hung up.
bool isWriteEndOpen(int readEnd)
{
    pollfd entry{readEnd, POLLIN, 0};
    return poll(&entry, 1, 0) == 0;
}

} // namespace

FakeSleepService::FakeSleepService(const QString &busAddress, Kind serviceKind,
                                   Manner serviceManner)
    : kind(serviceKind)
    , manner(serviceManner)
{
    static int count = 0;
    connectionName = u"fake-sleep-service-%1"_s.arg(++count);
    QDBusConnection connection = QDBusConnection::connectToBus(busAddress, connectionName);
    connection.registerVirtualObject(u"/"_s, this, QDBusConnection::SubPath);
    connection.registerService(kind == Kind::Portal ? u"org.freedesktop.portal.Desktop"_s
                                                    : u"org.freedesktop.login1"_s);

    holders.setConnection(connection);
    holders.setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
    connect(&holders, &QDBusServiceWatcher::serviceUnregistered, this, [this](const QString &gone) {
        requests.removeIf([&gone](const auto &request) { return request.value() == gone; });
    });
}

FakeSleepService::~FakeSleepService()
{
    QDBusConnection::disconnectFromBus(connectionName);
    for (const int lock : locks)
        ::close(lock);
}

QStringList FakeSleepService::requestTexts() const
{
    return asked;
}

int FakeSleepService::heldGrants() const
{
    if (kind == Kind::Portal)
        return static_cast<int>(requests.size());
    return static_cast<int>(std::count_if(locks.begin(), locks.end(), isWriteEndOpen));
}

int FakeSleepService::releasedGrants() const
{
    return kind == Kind::Portal ? closed : static_cast<int>(locks.size()) - heldGrants();
}

void FakeSleepService::grantPending()
{
    for (const QDBusMessage &message : std::exchange(waiting, {}))
        grant(message, QDBusConnection(connectionName));
}

QString FakeSleepService::introspect(const QString & /*path*/) const
{
    return {};
}

bool FakeSleepService::handleMessage(const QDBusMessage &message, const QDBusConnection &connection)
{
    if (message.member() == "Close"_L1) {
        closed += requests.remove(message.path()) ? 1 : 0;
        return connection.send(message.createReply());
    }
    if (message.member() != "Inhibit"_L1)
        return false;

    QStringList arguments{message.interface()};
    for (const QVariant &argument : message.arguments())
        arguments.append(toText(argument));
    asked.append(arguments.join(u" | "_s));
    if (manner == Manner::Grants)
        grant(message, connection);
    else if (manner == Manner::Refuses)
        connection.send(message.createErrorReply(QDBusError::AccessDenied, u"No."_s));
    else
        waiting.append(message);
    return true;
}

void FakeSleepService::grant(const QDBusMessage &message, const QDBusConnection &connection)
{
    if (kind == Kind::Portal) {
        const QString request =
                u"/org/freedesktop/portal/desktop/request/1_1/t%1"_s.arg(asked.size());
        requests.insert(request, message.service());
        holders.addWatchedService(message.service());
        connection.send(message.createReply(QVariant::fromValue(QDBusObjectPath(request))));
        return;
    }
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        return;
    locks.push_back(ends[0]);
    // QDBusUnixFileDescriptor duplicates the descriptor.
    connection.send(message.createReply(QVariant::fromValue(QDBusUnixFileDescriptor(ends[1]))));
    ::close(ends[1]);
}
