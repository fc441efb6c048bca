#pragma once

#include <QProcess>
#include <QTemporaryDir>

/// A message bus of the test's own, which both of the machine's buses are for this process and for
/// whatever it starts, from `start` until the object goes.
class PrivateBus final
{
    Q_DISABLE_COPY_MOVE(PrivateBus)

public:
    PrivateBus() = default;
    ~PrivateBus();

    /// False if the daemon does not come up, or is not installed.
    [[nodiscard]] bool start();

    /// Kills the daemon, as a crash would.
    void kill();

    [[nodiscard]] QString address() const;

    /// Makes `address` both of the buses, whoever listens there.
    static void useAddress(const QString &address);

private:
    QTemporaryDir folder;
    QProcess daemon;
};
