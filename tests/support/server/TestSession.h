#pragma once

#include "IRCConnection.h"
#include "ScriptedServer.h"
#include "SessionLog.h"

/// A session, the log of its signals, and a scripted server for it.
struct TestSession final
{
    TestSession() = default;
    explicit TestSession(const QSslConfiguration &tls)
        : server(tls)
        , isSecure(true)
    {
    }

    /// Begins to connect to the server as `nick`, with the real name "Real Name".
    void startConnecting(const QString &nick = QStringLiteral("me"));

    /// Connects, waits until both sides are connected and the server has received the two lines of
    /// the registration, and clears the log.
    [[nodiscard]] bool open(const QString &nick = QStringLiteral("me"));

    /// Waits until the server has received all lines that were sent, and returns those since the
    /// registration; "<lost>" if they do not arrive.
    [[nodiscard]] QStringList sent();

    /// Waits until the session has handled all lines that the server sent so far.
    [[nodiscard]] bool settle();

    ScriptedServer server;
    IRCConnection connection;
    SessionLog log{connection};
    bool isSecure = false;
    int marks = 0;
};
