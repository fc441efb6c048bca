#pragma once

#include <QString>
#include <QStringList>

/// What the numerics of one WHOIS reply have told so far.
struct WhoisReply
{
    QString username;
    QString hostname;
    QString realName;
    QString server;
    QString serverInfo;
    QString channels;
    QString awayMessage;
    bool isOperator = false;
    int idleSeconds = -1; ///< -1 until the server has told it.
    QString signonTime;   ///< The server's descriptive text, not a time.

    /// The lines that show the reply on `nick`. What was not told is left out, but for the first
    /// line and the server's, which are always there.
    [[nodiscard]] QStringList lines(const QString &nick) const;
};
