#pragma once

#include <QProcess>
#include <QTemporaryDir>

/// A private message bus. From `start` until destruction it is both the session bus and the system
/// bus of this process and of its children.
class PrivateBus final
{
    Q_DISABLE_COPY_MOVE(PrivateBus)

public:
    PrivateBus() = default;
    ~PrivateBus();

    /// Starts the daemon. Returns false if that fails or it is not installed.
    [[nodiscard]] bool start();

    /// Kills the daemon to simulate a crash.
    void kill();

    [[nodiscard]] QString address() const;

    /// Sets the address of both buses for this process and its children.
    static void useAddress(const QString &address);

private:
    QTemporaryDir folder;
    QProcess daemon;
};
