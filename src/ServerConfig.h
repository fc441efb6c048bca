#pragma once

#include <QString>
#include <QStringList>

/// What the user has settled about one server, as it is edited, stored and handed to the session.
///
/// A server's host and port are no fields of it: they are its identity and live in its server id
/// (see ServerStore). `authMethod`, `password` and `encoding` are kept and edited for the user and
/// reach no line on the wire: registration is NICK and USER alone, and the wire is always UTF-8.
struct ServerConfig
{
    QString nickname;
    QString altNickname; ///< Asked for when `nickname` is taken; empty for none.
    QString realName;
    QString authMethod = QStringLiteral("NickServ (/nickserv IDENTIFY)");
    QString password;     ///< In plain text, in memory as in the store.
    QStringList autojoin; ///< Channels to join after registration, each with its leading "#".
    QString encoding = QStringLiteral("UTF-8 (Unicode)");
    bool useSsl = false;
    bool spareFlag = false; ///< Travels with the record; nothing stores it or looks at it.
};
