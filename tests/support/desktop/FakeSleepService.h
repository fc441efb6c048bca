#pragma once

#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QDBusVirtualObject>
#include <QHash>
#include <QStringList>

#include <vector>

/// Stands for one of the two services that keep a machine awake, on a private bus.
///
/// It is there from its making until it goes, and keeps count of what was asked of it.
class FakeSleepService final : public QDBusVirtualObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FakeSleepService)

public:
    enum class Kind { Portal, Logind };
    enum class Manner {
        Grants,
        Refuses,
        Delays, ///< Says nothing until `answer`.
    };

    FakeSleepService(const QString &busAddress, Kind kind, Manner manner = Manner::Grants);
    ~FakeSleepService() override;

    /// The arguments of each asking, with " | " between them.
    [[nodiscard]] QStringList requestTexts() const;

    /// How many grants are held by somebody.
    [[nodiscard]] int heldGrants() const;

    /// How many grants were given back in so many words. The portal also takes back what a program
    /// held that is gone from the bus.
    [[nodiscard]] int releasedGrants() const;

    /// Grants what was asked while it hesitated.
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
    QHash<QString, QString> requests; // The portal's that are not closed, and whose they are.
    int closed = 0;                   // Of the portal's requests.
    std::vector<int> locks;           // logind's, the ends that stay here.
};
