#pragma once

#include <QString>
#include <QStringList>

/// The user's settings for one server.
///
/// Host and port are not among them; they form the server id (see ServerStore). Intended:
/// `authMethod`, `password` and `encoding` are only edited and stored. Registration sends NICK and
/// USER alone, and the wire is always UTF-8.
struct ServerConfig
{
    QString nickname;
    QString altNickname; ///< Requested if `nickname` is in use; empty for none.
    QString realName;
    QString authMethod = QStringLiteral("NickServ (/nickserv IDENTIFY)");
    QString password;     ///< Plain text.
    QStringList autojoin; ///< Channels to join after registration, each with its leading "#".
    QString encoding = QStringLiteral("UTF-8 (Unicode)");
    bool useSsl = false;
    bool spareFlag = false; ///< Copied with the record, but neither stored nor used.
};
