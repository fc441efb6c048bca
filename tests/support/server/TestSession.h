#pragma once

#include "IRCConnection.h"
#include "ScriptedServer.h"
#include "SessionLog.h"

/// A session, what it tells, and the server that it is to talk to.
struct TestSession final
{
    TestSession() = default;
    explicit TestSession(const QSslConfiguration &tls)
        : server(tls)
        , isSecure(true)
    {
    }

    /// Begins to connect to the server as `nick`, "Real Name".
    void startConnecting(const QString &nick = QStringLiteral("me"));

    /// Dials, waits until both sides know of each other, and forgets what was told meanwhile.
    /// The server has got the two lines of the registration by then.
    [[nodiscard]] bool open(const QString &nick = QStringLiteral("me"));

    /// The lines that the server has got since the registration, once all that was sent is there.
    /// "<lost>" if they do not arrive.
    [[nodiscard]] QStringList sent();

    /// Waits until the session has handled everything that the server sent so far.
    [[nodiscard]] bool settle();

    ScriptedServer server;
    IRCConnection connection;
    SessionLog log{connection};
    bool isSecure = false;
    int marks = 0;
};
