#pragma once

#include <QStringList>
#include <QTcpSocket>

/// Another user on an IRC server of the loopback. Records the lines it receives and answers PING.
class PlainClient final
{
    Q_DISABLE_COPY_MOVE(PlainClient)

public:
    PlainClient();

    /// Connects and registers. Returns false if the server does not accept the nick.
    [[nodiscard]] bool registerAt(quint16 port, const QString &nick);

    void send(const QString &line);

    /// Returns the received lines without their line ends.
    [[nodiscard]] QStringList lines() const;
    [[nodiscard]] bool waitFor(const QString &text) const;

private:
    void read();

    QTcpSocket socket;
    QStringList received;
};
