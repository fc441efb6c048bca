#pragma once

#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QDBusVirtualObject>
#include <QHash>
#include <QStringList>

#include <vector>

/// A fake of one of the two services that inhibit sleep, on a private bus.
///
/// It provides its service from construction to destruction and records the requests.
class FakeSleepService final : public QDBusVirtualObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FakeSleepService)

public:
    enum class Kind { Portal, Logind };
    enum class Manner {
        Grants,
        Refuses,
        Delays, ///< Replies when `grantPending` is called.
    };

    FakeSleepService(const QString &busAddress, Kind kind, Manner manner = Manner::Grants);
    ~FakeSleepService() override;

    /// Returns the interface and the arguments of each request, separated by " | ".
    [[nodiscard]] QStringList requestTexts() const;

    /// Returns how many grants are in force.
    [[nodiscard]] int heldGrants() const;

    /// Returns how many grants were released explicitly. The portal also revokes the grants of a
    /// program that leaves the bus; these are not counted.
    [[nodiscard]] int releasedGrants() const;

    /// Grants the delayed requests.
    void grantPending();

    [[nodiscard]] QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    void grant(const QDBusMessage &message, const QDBusConnection &connection);

    Kind kind;
    Manner manner;
    QString connectionName;
    QStringList asked;
    QList<QDBusMessage> waiting;
    QDBusServiceWatcher holders;
    QHash<QString, QString> requests; // Portal: the open requests and their owners.
    int closed = 0;                   // Portal: the number of closed requests.
    std::vector<int> locks;           // logind: the read end of each lock's pipe.
};
