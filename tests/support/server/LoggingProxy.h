#pragma once

#include "ScriptedServer.h"

#include <QHash>
#include <QStringList>

/// A proxy between a program and an IRC server on the loopback that records every line.
///
/// Most servers send the channel of a JOIN as a trailing parameter, ":a!b@c JOIN :#x"; those of the
/// largest networks send it as a middle one. On request the proxy converts the first form to the
/// second.
class LoggingProxy final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LoggingProxy)

public:
    enum class Joins { Unchanged, Rewritten };

    LoggingProxy(quint16 port, Joins treatment, QObject *parent = nullptr);

    /// Returns the port for the program; 0 if the proxy could not listen.
    [[nodiscard]] quint16 port() const;

    /// Connects later clients to another server port.
    void redirectTo(quint16 port);

    /// Returns the bytes that the program sent in its latest connection.
    [[nodiscard]] QByteArray bytesFromProgram() const;
    /// Returns the lines of all connections in order, with the prefix ">> " for those of the
    /// program and "<< " for those of the server, as the program received them.
    [[nodiscard]] QStringList lines() const;
    /// Returns how often the program has sent exactly this line.
    [[nodiscard]] qsizetype countFromProgram(const QString &line) const;

    /// Waits until the program has sent exactly this line at least `times` times.
    [[nodiscard]] bool waitForProgram(const QString &line, int times = 1) const;
    /// Waits until the server has sent a line that contains this text.
    [[nodiscard]] bool waitForServer(const QString &text) const;
    /// Waits until the program has connected this many times and the latest connection is closed.
    [[nodiscard]] bool waitForEnd(int connections = 1) const;

private:
    void connectToServer(int client);
    void forwardToProgram(int client, QByteArray line);

    quint16 serverPort;
    const Joins joins;
    ScriptedServer programSide;
    QHash<int, QTcpSocket *> serverSockets; // By the number of the program's connection.
    QStringList log;
};
