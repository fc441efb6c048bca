#pragma once

#include "ScriptedServer.h"

#include <QHash>
#include <QStringList>

/// Stands between a program and an IRC server on the loopback, passes every line on and keeps what
/// went by.
///
/// Most servers send the channel of a JOIN as a trailing parameter, ":a!b@c JOIN :#x"; the
/// daemons of the largest networks send it as a middle one. On request the proxy turns the first
/// form into the second.
class LoggingProxy final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LoggingProxy)

public:
    enum class Joins { Unchanged, Rewritten };

    LoggingProxy(quint16 port, Joins treatment, QObject *parent = nullptr);

    /// Where the program has to connect to; 0 if the proxy could not listen.
    [[nodiscard]] quint16 port() const;

    /// Further connections go to this port instead.
    void redirectTo(quint16 port);

    /// The byte stream that the program sent in its latest connection.
    [[nodiscard]] QByteArray bytesFromProgram() const;
    /// Every line that went by in all connections, in order, each with ">> " in front when it came
    /// from the program and "<< " when it came from the server (as it was passed on).
    [[nodiscard]] QStringList lines() const;
    /// How often the program has sent exactly this line.
    [[nodiscard]] qsizetype countFromProgram(const QString &line) const;

    /// Waits until the program has sent exactly this line, `times` times in all.
    [[nodiscard]] bool waitForProgram(const QString &line, int times = 1) const;
    /// Waits until the server has sent a line that contains this text.
    [[nodiscard]] bool waitForServer(const QString &text) const;
    /// Waits until the program has made so many connections and the latest is closed again.
    [[nodiscard]] bool waitForEnd(int connections = 1) const;

private:
    void connectOnwards(int client);
    void passToProgram(int client, QByteArray line);

    quint16 serverPort;
    const Joins joins;
    ScriptedServer towardsProgram;
    QHash<int, QTcpSocket *> towardsServer; // By the number of the program's connection.
    QStringList log;
};
