#include "IRCParser.h"

#include "IRCConnection.h"
#include "TabNames.h"

using namespace Qt::StringLiterals;

namespace {

struct Line
{
    QString text; // Trimmed, so that trailing blanks of the last parameter are gone.
    QString prefix;
    QString command;
    QStringList params; // The middle parameters; the trailing one is never among them.
    QString trailing;   // Empty too if there is none.
    QString nick;       // The prefix up to its first "!".
};

// True if the line was one of the keep-alive words. They are told by the line's first four letters
// alone, so only without a prefix.
bool answerKeepAlive(const QString &text, IRCConnection *connection)
{
    if (text.startsWith("PING"_L1)) {
        QString token = text.mid(5).trimmed();
        if (token.startsWith(u':'))
            token.remove(0, 1);
        connection->sendRaw(u"PONG :"_s + token);
        return true;
    }
    return text.startsWith("PONG"_L1);
}

// False if the line is a prefix and nothing else.
bool splitLine(const QString &text, Line &line)
{
    line.text = text;
    qsizetype pos = 0;
    if (text.startsWith(u':')) {
        const qsizetype end = text.indexOf(u' ', 1);
        if (end < 0)
            return false;
        line.prefix = text.mid(1, end - 1);
        line.nick = line.prefix.section(u'!', 0, 0);
        pos = end + 1;
    }

    const qsizetype commandEnd = text.indexOf(u' ', pos);
    line.command = text.mid(pos, commandEnd < 0 ? -1 : commandEnd - pos);
    // A command without parameters is meant to come round again as the first of them.
    if (commandEnd >= 0)
        pos = commandEnd + 1;

    while (pos < text.size()) {
        if (text.at(pos) == u':') {
            line.trailing = text.mid(pos + 1);
            break;
        }
        const qsizetype end = text.indexOf(u' ', pos);
        line.params.append(text.mid(pos, end < 0 ? -1 : end - pos));
        if (end < 0)
            break;
        pos = end + 1;
    }
    return true;
}

QString withoutColon(QString word)
{
    if (word.startsWith(u':'))
        word.remove(0, 1);
    return word;
}

void handlePrivmsg(const Line &line, IRCConnection *connection)
{
    if (line.params.isEmpty() || line.trailing.isEmpty())
        return;
    // Only "#" makes a channel: any other target is a private message, kept under its sender.
    const QString &target = TabNames::isChannel(line.params.at(0)) ? line.params.at(0) : line.nick;
    emit connection->privmsgReceived(line.nick, target, line.trailing);
}

void handleJoin(const Line &line, IRCConnection *connection)
{
    // A channel in the trailing parameter is not looked for, so it counts as an empty one.
    const QString channel = withoutColon(line.params.value(0));
    emit connection->joinReceived(line.nick, channel);
    if (line.nick == connection->currentNick())
        connection->sendRaw(u"NAMES "_s + channel);
}

void handleNick(const Line &line, IRCConnection *connection)
{
    const QString given = line.trailing.isEmpty() ? line.params.value(0) : line.trailing;
    emit connection->nickChanged(line.nick, withoutColon(given.trimmed()));
}

void handleListStart(const Line &line, IRCConnection *connection)
{
    connection->resetListCounters();
    if (!line.prefix.isEmpty())
        connection->setListServerName(line.prefix);
    emit connection->listStartReceived();
}

void handleListRow(const Line &line, IRCConnection *connection)
{
    if (line.params.size() < 3)
        return;
    connection->addListChannel(line.params.at(2).toInt());
    emit connection->listChannelReceived(line.params.at(1), line.params.at(2), line.trailing);
}

void handleListEnd(IRCConnection *connection)
{
    emit connection->listInfoReceived(connection->getListServerName(),
                                      connection->getTotalListChannels(),
                                      connection->getTotalListUsers());
    emit connection->listEndReceived();
}

void handleWelcome(IRCConnection *connection)
{
    emit connection->serverMessage(u"Connected and registered."_s);
    connection->setRegistered(true);
    emit connection->registered();
}

void handleWhoisEnd(const Line &line, IRCConnection *connection)
{
    const QString nick = line.params.value(1);
    emit connection->whoisEndReceived(line.params.size() >= 2 ? nick : u"Server"_s, nick);
}

// The commands that are words; false if `command` is none of them.
bool handleWord(const QString &command, const Line &line, IRCConnection *connection)
{
    if (command == "PRIVMSG"_L1)
        handlePrivmsg(line, connection);
    else if (command == "JOIN"_L1)
        handleJoin(line, connection);
    else if (command == "PART"_L1)
        emit connection->partReceived(line.nick, line.params.value(0), line.trailing);
    else if (command == "QUIT"_L1)
        emit connection->quitReceived(line.nick, line.trailing);
    else if (command == "KICK"_L1)
        emit connection->kickReceived(line.params.value(0), line.params.value(1), line.nick,
                                      line.trailing);
    else if (command == "NICK"_L1)
        handleNick(line, connection);
    else
        return false;
    return true;
}

// Name lists, channel listing, topic and registration; false if `command` is none of them.
bool handleReply(const QString &command, const Line &line, IRCConnection *connection)
{
    const QStringList &params = line.params;
    if (command == "353"_L1) {
        if (params.size() >= 3)
            emit connection->namesList(params.at(2), line.trailing.split(u' ', Qt::SkipEmptyParts));
    } else if (command == "366"_L1) {
        emit connection->namesListFinished(params.value(1));
    } else if (command == "321"_L1) {
        handleListStart(line, connection);
    } else if (command == "322"_L1) {
        handleListRow(line, connection);
    } else if (command == "323"_L1) {
        handleListEnd(connection);
    } else if (command == "332"_L1) {
        emit connection->topicReceived(params.value(1), line.trailing);
    } else if (command == "433"_L1) {
        connection->tryNextNick();
    } else if (command == "001"_L1) {
        handleWelcome(connection);
    } else {
        return false;
    }
    return true;
}

// WHOIS and presence; false if `command` is none of them.
bool handleWhois(const QString &command, const Line &line, IRCConnection *connection)
{
    const QStringList &params = line.params;
    if (command == "311"_L1) {
        if (params.size() >= 5)
            emit connection->whoisUserReceived(params.at(1), params.at(2), params.at(3),
                                               line.trailing);
    } else if (command == "312"_L1) {
        // One parameter more than servers send, so that their ordinary line is dropped.
        if (params.size() >= 4)
            emit connection->whoisServerReceived(params.at(1), params.at(2), line.trailing);
    } else if (command == "313"_L1) {
        if (params.size() >= 2)
            emit connection->whoisOperatorReceived(params.at(1));
    } else if (command == "317"_L1) {
        if (params.size() >= 4)
            emit connection->whoisIdleReceived(params.at(1), params.at(2).toInt(), line.trailing);
    } else if (command == "319"_L1) {
        if (params.size() >= 2)
            emit connection->whoisChannelsReceived(params.at(1), line.trailing);
    } else if (command == "318"_L1) {
        handleWhoisEnd(line, connection);
    } else if (command == "301"_L1) {
        if (params.size() >= 2)
            emit connection->whoisAwayReceived(params.at(1), line.trailing);
    } else if (command == "600"_L1 || command == "601"_L1 || command == "602"_L1
               || command == "604"_L1 || command == "605"_L1 || command == "606"_L1) {
        // The numeric itself does not decide who is online.
        if (params.size() >= 5)
            emit connection->watchStatus(params.at(1), params.at(4) == "1"_L1);
    } else {
        return false;
    }
    return true;
}

} // namespace

void IRCParser::parseLine(const QString &line, IRCConnection *connection)
{
    const QString text = line.trimmed();
    if (text.isEmpty() || answerKeepAlive(text, connection))
        return;

    Line parts;
    if (!splitLine(text, parts))
        return;

    const QString command = parts.command.toUpper();
    if (handleWord(command, parts, connection) || handleReply(command, parts, connection)
        || handleWhois(command, parts, connection)) {
        return;
    }
    if (!parts.command.isEmpty() && parts.command.front().isDigit())
        emit connection->serverMessage(text);
}
