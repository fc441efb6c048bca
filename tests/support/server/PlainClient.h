#pragma once

#include <QStringList>
#include <QTcpSocket>

/// Another person on an IRC server of the loopback: says what it is told to, keeps what it hears
/// and answers each PING.
class PlainClient final
{
    Q_DISABLE_COPY_MOVE(PlainClient)

public:
    PlainClient();

    /// Connects and registers; false if the server doesn't welcome the nick.
    [[nodiscard]] bool registerAt(quint16 port, const QString &nick);

    void send(const QString &line);

    /// Every line that came, without its line end.
    [[nodiscard]] QStringList lines() const;
    /// Waits until a line has come that contains this text.
    [[nodiscard]] bool waitFor(const QString &text) const;

private:
    void read();

    QTcpSocket socket;
    QStringList heard;
};
