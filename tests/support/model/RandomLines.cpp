#include "RandomLines.h"

using namespace Qt::StringLiterals;

// Without "Server" and "List": a conversation with such a name replaces the record of that tab, and
// the window can't be compared with the model any more. Other tests cover it.
QStringList RandomLines::nicks()
{
    return {u"ann"_s, u"Ann"_s, u"bob"_s,    u"carol"_s, u"dave"_s,
            u"eve"_s, u"EVE"_s, u"@frank"_s, u"~gus"_s,  u"a_nick_of_more_than_16"_s};
}

QStringList RandomLines::channels()
{
    return {u"#one"_s, u"#ONE"_s, u"#two"_s, u"#кофе"_s, u"#"_s};
}

QString RandomLines::text()
{
    static const QStringList texts{u"hello"_s,
                                   u"me, look here"_s,
                                   u"see https://www.qt.io/ and www.example.org"_s,
                                   u"привет 🎉 日本語"_s,
                                   u"<b>bold</b> & \u0002bold\u0002 \u000304,01red\u0003"_s,
                                   u"100% %1 %2"_s,
                                   u":colon"_s,
                                   u"  blanks   inside"_s,
                                   u"\u0001ACTION waves\u0001"_s,
                                   QString(300, u'x')};
    return random.pick(texts);
}

QString RandomLines::nickOrOwn(const QString &ownNick)
{
    return random.chance(15) ? ownNick : nick();
}

QString RandomLines::names(const QString &ownNick)
{
    static const QStringList prefixes{QString(), QString(), u"@"_s, u"+"_s, u"%"_s, u"~"_s, u"&"_s};
    QStringList entries{random.pick(prefixes) + ownNick};
    for (int more = random.below(8); more > 0; --more)
        entries.append(random.pick(prefixes) + nick());
    return entries.join(u' ');
}

QString RandomLines::userMessage(const QString &ownNick)
{
    const QString who = nickOrOwn(ownNick);
    const QString from = u":%1!user@host "_s.arg(who);
    switch (random.below(12)) {
    case 0:
    case 1:
        return from + u"PRIVMSG "_s + channel() + u" :"_s + text();
    case 2:
        return u":%1!user@host PRIVMSG %2 :"_s.arg(nick(), ownNick) + text();
    case 3:
    case 4:
        return from + u"JOIN "_s + channel();
    case 5:
        return from + u"JOIN :"_s + channel();
    case 6:
        return from + u"PART "_s + channel() + u" :"_s + text();
    case 7:
        return from + u"QUIT :"_s + text();
    case 8:
        return from + u"KICK "_s + channel() + u' ' + nickOrOwn(ownNick) + u" :"_s + text();
    case 9:
    case 10:
        return from + u"NICK :"_s
               + (who == ownNick ? random.pick(QStringList{u"me"_s, u"mine"_s}) : nick());
    default:
        return from + random.pick(QStringList{u"MODE"_s, u"TOPIC"_s, u"NOTICE"_s, u"INVITE"_s})
               + u' ' + channel() + u" :"_s + text();
    }
}

QString RandomLines::numeric(const QString &ownNick)
{
    const auto reply = [&](const QString &number, const QString &rest) -> QString {
        return u":irc.test %1 %2 "_s.arg(number, ownNick) + rest;
    };
    switch (random.below(9)) {
    case 0:
    case 1:
        return reply(u"353"_s, u"= "_s + channel() + u" :"_s + names(ownNick));
    case 2:
    case 3:
        return reply(u"366"_s, channel() + u" :End of /NAMES list."_s);
    case 4:
        return reply(u"332"_s, channel() + u" :"_s + text());
    case 5:
        return reply(u"604"_s, nick() + u" user host "_s + random.pick(QStringList{u"1"_s, u"2"_s})
                                       + u" :is online"_s);
    case 6:
        return reply(u"433"_s, nick() + u" :Nickname is already in use"_s);
    case 7:
        return random.chance(30) ? reply(u"001"_s, u":Welcome"_s)
                                 : reply(u"372"_s, u":- "_s + text());
    default:
        return random.pick(QStringList{u"PING :token"_s, u"PING"_s, u"PONG :x"_s, u"ERROR :x"_s,
                                       u":irc.test NOTICE * :hello"_s, u"366"_s, u":irc.test"_s});
    }
}

QString RandomLines::listReply(const QString &ownNick)
{
    const QString from = u":irc.test %1 "_s + ownNick + u' ';
    switch (random.below(4)) {
    case 0:
        return from.arg(u"321"_s) + u"Channel :Users Name"_s;
    case 1:
        return from.arg(u"323"_s) + u":End of /LIST"_s;
    default:
        return from.arg(u"322"_s) + channel() + u' ' + QString::number(random.below(100)) + u" :"_s
               + text();
    }
}

QString RandomLines::whoisReply(const QString &ownNick)
{
    static const QStringList rests{u"311 %1 %2 user host * :Real Name"_s,
                                   u"312 %1 %2 irc.test :A server"_s,
                                   u"313 %1 %2 :is an operator"_s,
                                   u"317 %1 %2 12 1700000000 :seconds idle"_s,
                                   u"319 %1 %2 :#one @#two"_s,
                                   u"301 %1 %2 :gone"_s,
                                   u"318 %1 %2 :End of /WHOIS list."_s,
                                   u"318 %1"_s};
    return u":irc.test "_s + random.pick(rests).replace(u"%1"_s, ownNick).replace(u"%2"_s, nick());
}

QString RandomLines::line(const QString &ownNick)
{
    const int kind = random.below(100);
    if (kind < 60)
        return userMessage(ownNick);
    if (kind < 85)
        return numeric(ownNick);
    return kind < 92 ? listReply(ownNick) : whoisReply(ownNick);
}

QByteArray RandomLines::garbage()
{
    QByteArray bytes;
    for (int size = random.below(80); size > 0; --size)
        bytes.append(static_cast<char>(random.below(256)));
    return bytes + "\r\n";
}

QString RandomLines::nextRecorded(const QString &ownNick)
{
    QString next = recorded.at(nextIndex);
    nextIndex = (nextIndex + 1) % recorded.size();
    return next.replace(u"alice"_s, ownNick);
}

QByteArray RandomLines::bytes(const QString &ownNick)
{
    QByteArray bytes;
    for (int more = random.below(5); more >= 0; --more) {
        const int kind = random.below(100);
        if (kind < 4)
            bytes += garbage();
        else
            bytes += (kind < 35 ? nextRecorded(ownNick) : line(ownNick)).toUtf8() + "\r\n";
    }
    return bytes;
}
