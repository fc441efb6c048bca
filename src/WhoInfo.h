#pragma once

#include <QString>
#include <QStringList>

/// What the numerics of one WHOIS reply have reported so far.
struct WhoInfo
{
    QString username;
    QString hostname;
    QString realName;
    QString server;
    QString serverInfo;
    QString channels;
    QString awayMessage;
    bool isOperator = false;
    int idleSeconds = -1; ///< -1 until the server has sent it.
    QString signonTime;   ///< The server's descriptive text, not a time.

    /// Returns the lines that show the reply about `nick`: always the first and the server's, the
    /// others only if there is something to show.
    [[nodiscard]] QStringList lines(const QString &nick) const;
};
