#include "IRCParser.h"

#include "ChannelNames.h"
#include "IRCConnection.h"

using namespace Qt::StringLiterals;

namespace {

struct Message
{
    QString prefix;
    QString command;
    QStringList params; // The middle parameters, without the trailing one.
    QString trailing;   // Empty also if the line has none.
    QString nick;       // The prefix up to its first "!".
};

// Returns false if the line is a prefix and nothing else.
bool splitLine(const QString &text, Message &message)
{
    qsizetype pos = 0;
    if (text.startsWith(u':')) {
        const qsizetype end = text.indexOf(u' ', 1);
        if (end < 0)
            return false;
        message.prefix = text.mid(1, end - 1);
        message.nick = message.prefix.section(u'!', 0, 0);
        pos = end + 1;
    }

    const qsizetype commandEnd = text.indexOf(u' ', pos);
    message.command = text.mid(pos, commandEnd < 0 ? -1 : commandEnd - pos);
    // Intended: a lone command is also its first parameter.
    if (commandEnd >= 0)
        pos = commandEnd + 1;

    while (pos < text.size()) {
        if (text.at(pos) == u':') {
            message.trailing = text.mid(pos + 1);
            break;
        }
        const qsizetype end = text.indexOf(u' ', pos);
        message.params.append(text.mid(pos, end < 0 ? -1 : end - pos));
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

void answerPing(const QString &text, IRCConnection *connection)
{
    connection->sendRaw(u"PONG :"_s + withoutColon(text.mid(5).trimmed()));
}

void handlePrivmsg(const Message &message, IRCConnection *connection)
{
    if (message.params.isEmpty() || message.trailing.isEmpty())
        return;
    // The target of a private message is the user, so the sender is reported instead.
    const QString &target =
            ChannelNames::isChannel(message.params.at(0)) ? message.params.at(0) : message.nick;
    emit connection->privmsgReceived(message.nick, target, message.trailing);
}

void handleJoin(const Message &message, IRCConnection *connection)
{
    // Intended: a channel in the trailing parameter is ignored, which gives an empty name.
    const QString channel = withoutColon(message.params.value(0));
    emit connection->joinReceived(message.nick, channel);
    if (message.nick == connection->currentNick())
        connection->sendRaw(u"NAMES "_s + channel);
}

void handlePart(const Message &message, IRCConnection *connection)
{
    emit connection->partReceived(message.nick, message.params.value(0), message.trailing);
}

void handleQuit(const Message &message, IRCConnection *connection)
{
    emit connection->quitReceived(message.nick, message.trailing);
}

void handleKick(const Message &message, IRCConnection *connection)
{
    emit connection->kickReceived(message.params.value(0), message.params.value(1), message.nick,
                                  message.trailing);
}

void handleNick(const Message &message, IRCConnection *connection)
{
    const QString given = message.trailing.isEmpty() ? message.params.value(0) : message.trailing;
    emit connection->nickChanged(message.nick, withoutColon(given.trimmed()));
}

void handleNames(const Message &message, IRCConnection *connection)
{
    if (message.params.size() >= 3)
        emit connection->namesList(message.params.at(2),
                                   message.trailing.split(u' ', Qt::SkipEmptyParts));
}

void handleListStart(const Message &message, IRCConnection *connection)
{
    connection->resetListCounters();
    if (!message.prefix.isEmpty())
        connection->setListServerName(message.prefix);
    emit connection->listStartReceived();
}

void handleListRow(const Message &message, IRCConnection *connection)
{
    if (message.params.size() < 3)
        return;
    connection->addListChannel(message.params.at(2).toInt());
    emit connection->listChannelReceived(message.params.at(1), message.params.at(2),
                                         message.trailing);
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

void handleWhoisUser(const Message &message, IRCConnection *connection)
{
    const QStringList &params = message.params;
    if (params.size() >= 5)
        emit connection->whoisUserReceived(params.at(1), params.at(2), params.at(3),
                                           message.trailing);
}

// Intended: requires one parameter more than servers send, so their usual line is dropped.
void handleWhoisServer(const Message &message, IRCConnection *connection)
{
    const QStringList &params = message.params;
    if (params.size() >= 4)
        emit connection->whoisServerReceived(params.at(1), params.at(2), message.trailing);
}

void handleWhoisOperator(const Message &message, IRCConnection *connection)
{
    if (message.params.size() >= 2)
        emit connection->whoisOperatorReceived(message.params.at(1));
}

void handleWhoisIdle(const Message &message, IRCConnection *connection)
{
    const QStringList &params = message.params;
    if (params.size() >= 4)
        emit connection->whoisIdleReceived(params.at(1), params.at(2).toInt(), message.trailing);
}

void handleWhoisChannels(const Message &message, IRCConnection *connection)
{
    if (message.params.size() >= 2)
        emit connection->whoisChannelsReceived(message.params.at(1), message.trailing);
}

void handleWhoisEnd(const Message &message, IRCConnection *connection)
{
    const QString nick = message.params.value(1);
    emit connection->whoisEndReceived(message.params.size() >= 2 ? nick : u"Server"_s, nick);
}

void handleAway(const Message &message, IRCConnection *connection)
{
    if (message.params.size() >= 2)
        emit connection->whoisAwayReceived(message.params.at(1), message.trailing);
}

bool isWatchNumeric(const QString &command)
{
    return command == "600"_L1 || command == "601"_L1 || command == "602"_L1 || command == "604"_L1
           || command == "605"_L1 || command == "606"_L1;
}

// Intended: the fifth parameter decides who is online, and not the numeric.
void handleWatch(const Message &message, IRCConnection *connection)
{
    if (message.params.size() >= 5)
        emit connection->watchStatus(message.params.at(1), message.params.at(4) == "1"_L1);
}

void handleMessage(const QString &text, const Message &message, IRCConnection *connection)
{
    const QString command = message.command.toUpper();
    if (command == "PRIVMSG"_L1)
        handlePrivmsg(message, connection);
    else if (command == "JOIN"_L1)
        handleJoin(message, connection);
    else if (command == "PART"_L1)
        handlePart(message, connection);
    else if (command == "QUIT"_L1)
        handleQuit(message, connection);
    else if (command == "KICK"_L1)
        handleKick(message, connection);
    else if (command == "NICK"_L1)
        handleNick(message, connection);
    else if (command == "353"_L1)
        handleNames(message, connection);
    else if (command == "366"_L1)
        emit connection->namesListFinished(message.params.value(1));
    else if (command == "321"_L1)
        handleListStart(message, connection);
    else if (command == "322"_L1)
        handleListRow(message, connection);
    else if (command == "323"_L1)
        handleListEnd(connection);
    else if (command == "332"_L1)
        emit connection->topicReceived(message.params.value(1), message.trailing);
    else if (command == "433"_L1)
        connection->tryNextNick();
    else if (command == "001"_L1)
        handleWelcome(connection);
    else if (command == "311"_L1)
        handleWhoisUser(message, connection);
    else if (command == "312"_L1)
        handleWhoisServer(message, connection);
    else if (command == "313"_L1)
        handleWhoisOperator(message, connection);
    else if (command == "317"_L1)
        handleWhoisIdle(message, connection);
    else if (command == "319"_L1)
        handleWhoisChannels(message, connection);
    else if (command == "318"_L1)
        handleWhoisEnd(message, connection);
    else if (command == "301"_L1)
        handleAway(message, connection);
    else if (isWatchNumeric(command))
        handleWatch(message, connection);
    else if (!command.isEmpty() && command.front().isDigit())
        emit connection->serverMessage(text);
}

} // namespace

void IRCParser::parseLine(const QString &line, IRCConnection *connection)
{
    const QString text = line.trimmed();
    // Intended: only a line's first four letters are compared, so a prefix hides a PING.
    if (text.startsWith("PING"_L1)) {
        answerPing(text, connection);
        return;
    }
    if (text.isEmpty() || text.startsWith("PONG"_L1))
        return;

    Message message;
    if (splitLine(text, message))
        handleMessage(text, message, connection);
}
