#include "DemoServer.h"

#include <algorithm>
#include <array>
#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

enum class Action { Speaks, Whispers, Joins };

struct Line
{
    QLatin1StringView nick;
    Action action = Action::Speaks;
    QStringView text;
};

struct ListedChannel
{
    QLatin1StringView name;
    int userCount = 0;
    QLatin1StringView topic;
};

constexpr auto Channel = "#velmora"_L1;
constexpr auto Topic =
        u"\u0002Walks and talks\u0002 \u00B7 the next one: \u000303Saturday\u0003, nine "
        u"o'clock at the station \u00B7 https://www.openstreetmap.org/";

constexpr auto Mara = "mara"_L1;
constexpr auto Hugo = "hugo"_L1;
constexpr auto Greta = "greta"_L1;
constexpr auto Nils = "nils"_L1;
constexpr auto Yuki = "yuki"_L1; // Joins later.

constexpr auto Pace = 900ms; // Between two lines, so that users can read them.

constexpr std::array Conversation{
        Line{Mara, Action::Speaks, u"Good evening! We are just talking about the weekend."},
        Line{Hugo, Action::Speaks, u"They say it will stay dry until Sunday."},
        Line{Nils, Action::Speaks,
             u"Then let's go up to the lake. Here is the way: "
             u"https://www.openstreetmap.org/search?query=lake"},
        Line{Greta, Action::Speaks, u"All the way round, or only as far as the mill?"},
        Line{Nils, Action::Speaks,
             u"All the way round. That's four hours and a half with a rest at the mill, and from "
             u"the ridge behind it you can see the whole valley down to the town, which is worth "
             u"the climb, even for those of us who would rather sit in the shade and read."},
        Line{Yuki, Action::Joins, {}},
        Line{Yuki, Action::Speaks, u"Did somebody say lake? Is there room for one more? 🙂"},
        Line{Hugo, Action::Speaks, u"Always. But bring something to eat, the mill is closed."},
        Line{Nils, Action::Whispers, u"Could you take me along to the station?"},
        Line{Greta, Action::Speaks, u"I'll make my Käsekuchen, or a τυρόπιτα if the oven agrees."},
        Line{Yuki, Action::Speaks, u"Both! 🍰"},
        Line{Mara, Action::Speaks, u"Nine o'clock at the station, then. Who else is coming?"},
};

constexpr std::array<QStringView, 4> Answers{
        u"Lovely, %1. See you there!",
        u"You don't say, %1.",
        u"I'd say the same, %1. Then again, I was written in advance and can't say much else.",
        u"Try /away and /back, %1, or /nick with a new name.",
};

constexpr std::array ListedChannels{
        ListedChannel{"#astronomy"_L1, 58, "Clear skies | Jupiter is up all night this month"_L1},
        ListedChannel{"#books"_L1, 87, "What are you reading? | This month: short stories"_L1},
        ListedChannel{"#chess"_L1, 34, "Blitz on Fridays at 20:00 UTC"_L1},
        ListedChannel{"#cinema"_L1, 73, "No endings without a warning, please"_L1},
        ListedChannel{"#cooking"_L1, 212, "Soup season! | Ask for the recipe of the week"_L1},
        ListedChannel{"#cycling"_L1, 46, ""_L1},
        ListedChannel{"#gardening"_L1, 61, "It's not too late for the garlic"_L1},
        ListedChannel{"#help"_L1, 143,
                      "Ask your question and wait a while: somebody will come by"_L1},
        ListedChannel{"#linux"_L1, 655,
                      "Say which distribution you use | Long output goes to a paste site"_L1},
        ListedChannel{"#lobby"_L1, 301, "Welcome! Be kind to one another"_L1},
        ListedChannel{"#music"_L1, 176, "Now playing: whatever you like"_L1},
        ListedChannel{"#photography"_L1, 65, "This week: reflections"_L1},
        ListedChannel{"#trains"_L1, 41, "The night train is back"_L1},
        ListedChannel{Channel, 6, "Walks and talks"_L1},
};

bool isScriptedUser(const QString &nick)
{
    return nick == Mara || nick == Hugo || nick == Greta || nick == Nils || nick == Yuki;
}

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
    conversationTimer.setInterval(Pace);
    connect(&conversationTimer, &QTimer::timeout, this, &DemoServer::sendNextLine);
}

quint16 DemoServer::port() const
{
    return server.port();
}

bool DemoServer::isConversationOver() const
{
    return sentLines == int(Conversation.size());
}

bool DemoServer::hasReceived(const QString &line) const
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
    // Like servers without WATCH, but without an error for each private conversation.
    else if (command != "WATCH"_L1)
        reply(client, "421"_L1, u"%1 :Unknown command"_s.arg(command));
}

void DemoServer::sendNextLine()
{
    if (isConversationOver()) {
        conversationTimer.stop();
        return;
    }
    const Line &line = Conversation.at(size_t(sentLines++));
    for (auto guest = guests.cbegin(); guest != guests.cend(); ++guest) {
        if (!guest->isInChannel)
            continue;
        const QString target = line.action == Action::Whispers ? guest->nick : QString(Channel);
        const QString message = line.action == Action::Joins
                                        ? u"JOIN "_s + target
                                        : u"PRIVMSG %1 :%2"_s.arg(target, line.text);
        server.send(sourceOf(line.nick) + u' ' + message, guest.key());
    }
}

void DemoServer::answer(int client, const QString &target)
{
    const auto guest = guests.constFind(client);
    if (guest == guests.cend())
        return; // The client has disconnected.
    const int number = answers++;
    const QString text = Answers.at(size_t(number) % Answers.size()).toString().arg(guest->nick);
    // In the channel, two users answer in turn.
    const bool isPrivate = target != Channel;
    const QString sender = isPrivate ? target : QString(number % 2 == 0 ? Mara : Hugo);
    const QString recipient = isPrivate ? guest->nick : target;
    server.send(u"%1 PRIVMSG %2 :%3"_s.arg(sourceOf(sender), recipient, text), client);
}

void DemoServer::onNick(int client, const QString &nick)
{
    Guest &guest = guests[client];
    if (isScriptedUser(nick)) {
        reply(client, "433"_L1, nick + u" :Nickname is already in use"_s);
        return;
    }
    if (guest.isRegistered)
        echo(client, u"NICK "_s + nick);
    guest.nick = nick;
}

void DemoServer::onUser(int client)
{
    Guest &guest = guests[client];
    guest.isRegistered = true;
    reply(client, "001"_L1, u":Welcome to the demo, "_s + guest.nick);
    reply(client, "002"_L1, u":Your host is demo, on your own machine"_s);
    reply(client, "375"_L1, u":- demo message of the day"_s);
    reply(client, "372"_L1, u":- Nothing that is said here leaves this machine."_s);
    reply(client, "372"_L1,
          u":- Those in %1 were written in advance. Talk to them!"_s.arg(Channel));
    reply(client, "376"_L1, u":End of message of the day"_s);
}

void DemoServer::onJoin(int client, const QString &channel)
{
    // The channel is a middle parameter, as the largest networks send it.
    echo(client, u"JOIN "_s + channel);
    if (channel == Channel) {
        guests[client].isInChannel = true;
        reply(client, "332"_L1, channel + u" :"_s + Topic);
        conversationTimer.start();
    }
    sendNames(client, channel);
}

void DemoServer::onPart(int client, const QString &channel)
{
    echo(client, u"PART %1 :Leaving"_s.arg(channel));
    if (channel == Channel)
        guests[client].isInChannel = false;
}

void DemoServer::onPrivmsg(int client, const QString &target)
{
    if (target != Channel && !isScriptedUser(target)) {
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
    for (const ListedChannel &listed : ListedChannels)
        reply(client, "322"_L1,
              u"%1 %2 :%3"_s.arg(listed.name, QString::number(listed.userCount), listed.topic));
    reply(client, "323"_L1, u":End of LIST"_s);
}

void DemoServer::onWhois(int client, const QString &nick)
{
    if (isScriptedUser(nick)) {
        reply(client, "311"_L1, u"%1 %1 demo * :Written in advance"_s.arg(nick));
        reply(client, "319"_L1, u"%1 :@%2"_s.arg(nick, Channel));
    }
    reply(client, "318"_L1, nick + u" :End of WHOIS list"_s);
}

void DemoServer::sendNames(int client, const QString &channel)
{
    QString names;
    if (channel == Channel) {
        names = u"@%1 +%2 %3 %4 "_s.arg(Mara, Hugo, Nils, Greta);
        const auto sentEnd = Conversation.cbegin() + sentLines;
        if (std::any_of(Conversation.cbegin(), sentEnd,
                        [](const Line &line) { return line.action == Action::Joins; }))
            names += Yuki + u' ';
    }
    reply(client, "353"_L1, u"= %1 :%2%3"_s.arg(channel, names, guests[client].nick));
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
