#pragma once

#include <QProcess>
#include <QTemporaryDir>

/// A real IRC server of the system's, on a free port of the loopback, with no wait between lines.
///
/// It goes by "irc.velmora.test". It needs no root, and ends with the object.
class Ngircd final
{
    Q_DISABLE_COPY_MOVE(Ngircd)

public:
    Ngircd() = default;
    ~Ngircd();

    /// Starts the server and waits until it answers; false if it does not, or is not installed.
    [[nodiscard]] bool start();

    /// Kills the server, as a crash would.
    void kill();

    [[nodiscard]] quint16 port() const;

private:
    [[nodiscard]] bool startOn(quint16 candidate);

    QTemporaryDir folder;
    QProcess process;
    quint16 usedPort = 0;
};
