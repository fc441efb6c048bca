#include "DemoServer.h"

#include <array>
#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

struct Line
{
    QLatin1StringView who;
    QStringView text;
};

constexpr auto Channel = "#velmora"_L1;
constexpr auto Mara = "mara"_L1;
constexpr auto Hugo = "hugo"_L1;

constexpr auto Pace = 900ms; // Between two lines, so that a reader can follow.

constexpr std::array Conversation{
        Line{Mara, u"Good evening! Look, somebody has come in."},
        Line{Hugo, u"Welcome! This is a little server on your own machine."},
        Line{Mara, u"There are only the two of us, and we were written in advance."},
        Line{Hugo, u"Each nick has its own colour, so you see at once who is speaking."},
        Line{Mara, u"Links can be clicked: https://www.debian.org/"},
        Line{Hugo, u"Umlauts äöü and ελληνικά go through, and so does 🙂"},
        Line{Mara, u"A longer line is wrapped under its own beginning and not under the time or "
                   u"the nick, so that the column of nicks stays easy to follow with the eye even "
                   u"when somebody has a lot to tell, as some people do."},
        Line{Hugo, u"Say something! We answer. Or try /msg mara hello"},
};

constexpr std::array<QStringView, 4> Answers{
        u"Hello %1! Nice to hear from you.",
        u"You don't say, %1.",
        u"I'd say the same, %1. Then again, I can't say much else.",
        u"Try /away and /back, %1, or /nick with a new name.",
};

QString sourceOf(const QString &nick)
{
    return u":%1!%1@demo"_s.arg(nick);
}

} // namespace

DemoServer::DemoServer(QObject *parent)
    : QObject(parent)
{
    connect(&server, &ScriptedServer::lineReceived, this, &DemoServer::onLine);
    connect(&server, &ScriptedServer::clientLeft, this,
            [this](int client) { guests.remove(client); });
    talk.setInterval(Pace);
    connect(&talk, &QTimer::timeout, this, &DemoServer::sayNextLine);
}

quint16 DemoServer::port() const
{
    return server.port();
}

bool DemoServer::conversationIsOver() const
{
    return saidLines == int(Conversation.size());
}

bool DemoServer::hasHeard(const QString &line) const
{
    for (int client = 0; client < server.clientCount(); ++client) {
        if (server.lines(client).contains(line))
            return true;
    }
    return false;
}

int DemoServer::answerCount() const
{
    return answers;
}

void DemoServer::onLine(int client, const QString &line)
{
    const QString command = line.section(u' ', 0, 0).toUpper();
    const QString word = line.section(u' ', 1, 1);
    if (command == "NICK"_L1)
        onNick(client, word);
    else if (command == "USER"_L1)
        onUser(client);
    else if (command == "PING"_L1)
        server.send(u":demo PONG demo "_s + line.section(u' ', 1), client);
    else if (command == "JOIN"_L1)
        onJoin(client, word);
    else if (command == "PART"_L1)
        onPart(client, word);
    else if (command == "NAMES"_L1)
        sendNames(client, word);
    else if (command == "PRIVMSG"_L1)
        onPrivmsg(client, word);
    else if (command == "AWAY"_L1)
        onAway(client, !word.isEmpty());
    else if (command == "LIST"_L1)
        onList(client);
    else if (command == "WHOIS"_L1)
        onWhois(client, word);
    else if (command == "QUIT"_L1)
        server.close(client);
    // Clients watch the partners of private conversations; many servers don't know how and
    // would say so each time.
    else if (command != "WATCH"_L1)
        reply(client, "421"_L1, u"%1 :Unknown command"_s.arg(command));
}

void DemoServer::sayNextLine()
{
    if (conversationIsOver()) {
        talk.stop();
        return;
    }
    const Line &line = Conversation.at(size_t(saidLines++));
    const QString text = u"%1 PRIVMSG %2 :%3"_s.arg(sourceOf(line.who), Channel, line.text);
    for (auto guest = guests.cbegin(); guest != guests.cend(); ++guest) {
        if (guest->inChannel)
            server.send(text, guest.key());
    }
}

void DemoServer::answer(int client, const QString &target)
{
    const auto guest = guests.constFind(client);
    if (guest == guests.cend())
        return; // Gone before the answer was ready.
    const int turn = answers++;
    const QString text = Answers.at(size_t(turn) % Answers.size()).toString().arg(guest->nick);
    // In the channel the two take turns; in private the one who was spoken to answers.
    const bool inPrivate = target != Channel;
    const QString who = inPrivate ? target : QString(turn % 2 == 0 ? Mara : Hugo);
    const QString where = inPrivate ? guest->nick : target;
    server.send(u"%1 PRIVMSG %2 :%3"_s.arg(sourceOf(who), where, text), client);
}

void DemoServer::onNick(int client, const QString &nick)
{
    Guest &guest = guests[client];
    if (nick == Mara || nick == Hugo) {
        reply(client, "433"_L1, nick + u" :Nickname is already in use"_s);
        return;
    }
    if (guest.welcomed)
        echo(client, u"NICK "_s + nick);
    guest.nick = nick;
}

void DemoServer::onUser(int client)
{
    Guest &guest = guests[client];
    guest.welcomed = true;
    reply(client, "001"_L1, u":Welcome to the demo, "_s + guest.nick);
    reply(client, "002"_L1, u":Your host is demo, on your own machine"_s);
    reply(client, "375"_L1, u":- demo message of the day"_s);
    reply(client, "372"_L1, u":- Nothing that is said here leaves this machine."_s);
    reply(client, "376"_L1, u":End of message of the day"_s);
}

void DemoServer::onJoin(int client, const QString &channel)
{
    // The channel goes out as a middle parameter, as the largest networks send it.
    echo(client, u"JOIN "_s + channel);
    if (channel == Channel) {
        guests[client].inChannel = true;
        reply(client, "332"_L1, channel + u" :Two people who were written in advance"_s);
        talk.start();
    }
    sendNames(client, channel);
}

void DemoServer::onPart(int client, const QString &channel)
{
    echo(client, u"PART %1 :Leaving"_s.arg(channel));
    if (channel == Channel)
        guests[client].inChannel = false;
}

void DemoServer::onPrivmsg(int client, const QString &target)
{
    if (target != Channel && target != Mara && target != Hugo) {
        reply(client, "401"_L1, target + u" :No such nick/channel"_s);
        return;
    }
    QTimer::singleShot(Pace, this, [this, client, target] { answer(client, target); });
}

void DemoServer::onAway(int client, bool away)
{
    if (away)
        reply(client, "306"_L1, u":You have been marked as being away"_s);
    else
        reply(client, "305"_L1, u":You are no longer marked as being away"_s);
}

void DemoServer::onList(int client)
{
    reply(client, "321"_L1, u"Channel :Users  Name"_s);
    reply(client, "322"_L1, u"%1 3 :Two people who were written in advance"_s.arg(Channel));
    reply(client, "323"_L1, u":End of LIST"_s);
}

void DemoServer::onWhois(int client, const QString &nick)
{
    if (nick == Mara || nick == Hugo) {
        reply(client, "311"_L1, u"%1 %1 demo * :Written in advance"_s.arg(nick));
        reply(client, "319"_L1, u"%1 :@%2"_s.arg(nick, Channel));
    }
    reply(client, "318"_L1, nick + u" :End of WHOIS list"_s);
}

void DemoServer::sendNames(int client, const QString &channel)
{
    const QString people = channel == Channel ? u"@%1 +%2 "_s.arg(Mara, Hugo) : QString();
    reply(client, "353"_L1, u"= %1 :%2%3"_s.arg(channel, people, guests[client].nick));
    reply(client, "366"_L1, channel + u" :End of NAMES list"_s);
}

void DemoServer::reply(int client, QLatin1StringView numeric, const QString &rest)
{
    const QString nick = guests[client].nick;
    server.send(u":demo %1 %2 %3"_s.arg(numeric, nick.isEmpty() ? u"*"_s : nick, rest), client);
}

void DemoServer::echo(int client, const QString &line)
{
    server.send(u"%1 %2"_s.arg(sourceOf(guests[client].nick), line), client);
}
