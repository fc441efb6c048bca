#include "WhoInfo.h"

using namespace Qt::StringLiterals;

QStringList WhoInfo::lines(const QString &nick) const
{
    QStringList lines{u"*** WHOIS %1: %2@%3 (%4)"_s.arg(nick, username, hostname, realName)};
    if (isOperator)
        lines << u"*** %1 is an IRC operator"_s.arg(nick);
    lines << u"*** %1 is using %2 (%3)"_s.arg(nick, server, serverInfo);
    if (idleSeconds >= 0)
        lines << u"*** %1 idle %2s, signed on %3"_s.arg(nick, QString::number(idleSeconds),
                                                        signonTime);
    if (!channels.isEmpty())
        lines << u"*** %1 on channels: %2"_s.arg(nick, channels);
    if (!awayMessage.isEmpty())
        lines << u"*** %1 is away: %2"_s.arg(nick, awayMessage);
    return lines;
}
