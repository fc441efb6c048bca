// The reactions of the model to the session's signals.

#include "IRCConnection.h"
#include "NickList.h"
#include "SessionModel.h"

using namespace Qt::StringLiterals;

namespace {

// Whether the "Server" tab does not show the raw line: messages of users and numerics.
bool isHiddenRaw(const QString &line)
{
    if (!line.startsWith(u':'))
        return false;
    if (line.contains(u'!'))
        return true;
    const qsizetype space = line.indexOf(u' ');
    if (line.size() <= 4 || line.at(1) == u' ' || space < 0 || space + 4 >= line.size())
        return false;
    bool isNumber = false;
    static_cast<void>(line.mid(space + 1, 3).toInt(&isNumber));
    return isNumber;
}

} // namespace

void SessionModel::connectSession()
{
    connect(&session, &IRCConnection::rawMessageReceived, this, &SessionModel::onRawLine);
    connect(&session, &IRCConnection::connected, this, &SessionModel::onConnected);
    connect(&session, &IRCConnection::registered, this, &SessionModel::onRegistered);
    connect(&session, &IRCConnection::disconnected, this, &SessionModel::onDisconnected);
    connect(&session, &IRCConnection::errorOccurred, this, &SessionModel::appendToServer);
    connect(&session, &IRCConnection::serverMessage, this, [this] {
        if (!listIsComing)
            appendToServer();
    });
    connect(&session, &IRCConnection::ownNickChanged, this, [this] { pendingNick.clear(); });
}

void SessionModel::connectPeople()
{
    connect(&session, &IRCConnection::privmsgReceived, this,
            [this](const QString &from, const QString &target) {
                append(target == session.currentNick() ? from : target);
            });
    connect(&session, &IRCConnection::joinReceived, this, &SessionModel::onJoin);
    connect(&session, &IRCConnection::partReceived, this, &SessionModel::onPart);
    connect(&session, &IRCConnection::quitReceived, this, &SessionModel::onQuit);
    connect(&session, &IRCConnection::kickReceived, this, &SessionModel::onKick);
    connect(&session, &IRCConnection::nickChanged, this, &SessionModel::onNick);
    connect(&session, &IRCConnection::namesList, this,
            [this](const QString &channel, const QList<QString> &names) {
                pendingNames[channel].append(names);
            });
    connect(&session, &IRCConnection::namesListFinished, this, &SessionModel::onNamesFinished);
    connect(&session, &IRCConnection::topicReceived, this,
            [this](const QString &channel, const QString &topic) {
                topics.insert(channel, topic);
            });
    connect(&session, &IRCConnection::watchStatus, this, [this](const QString &nick) {
        const QString tab = privateTabOf(nick);
        if (!tab.isEmpty())
            append(tab);
    });
}

void SessionModel::connectList()
{
    connect(&session, &IRCConnection::listStartReceived, this, [this] {
        listIsComing = true;
        appendToServer();
    });
    connect(&session, &IRCConnection::listChannelReceived, this,
            [this](const QString &channel, const QString &, const QString &topic) {
                if (hasList)
                    listRows.append({channel, topic, true});
            });
    connect(&session, &IRCConnection::listEndReceived, this, [this] {
        listIsComing = false;
        appendToServer();
    });
}

void SessionModel::connectWhois()
{
    connect(&session, &IRCConnection::whoisUserReceived, this,
            [this](const QString &nick) { whoisRecords.insert(nick, Whois()); });
    connect(&session, &IRCConnection::whoisOperatorReceived, this,
            [this](const QString &nick) { whoisRecords[nick].isOperator = true; });
    connect(&session, &IRCConnection::whoisIdleReceived, this,
            [this](const QString &nick, int idle) { whoisRecords[nick].idle = idle; });
    connect(&session, &IRCConnection::whoisChannelsReceived, this,
            [this](const QString &nick, const QString &channels) {
                whoisRecords[nick].hasChannels = !channels.isEmpty();
            });
    connect(&session, &IRCConnection::whoisAwayReceived, this,
            [this](const QString &nick, const QString &message) {
                whoisRecords[nick].isAway = !message.isEmpty();
            });
    connect(&session, &IRCConnection::whoisEndReceived, this,
            [this](const QString &, const QString &nick) { onWhoisEnd(nick); });
}

void SessionModel::onRawLine(const QString &line)
{
    if (!isHiddenRaw(line) && !listIsComing)
        appendToServer();
    const QString text = line.trimmed();
    if (text.startsWith("PING"_L1)) {
        QString token = text.mid(5).trimmed();
        if (token.startsWith(u':'))
            token.remove(0, 1);
        sendRaw(u"PONG :"_s + token);
    }
    lastCommand = text.section(u' ', text.startsWith(u':') ? 1 : 0).section(u' ', 0, 0);
}

void SessionModel::onConnected()
{
    const QString nick = session.currentNick();
    expected = QStringList{u"NICK "_s + nick,
                           u"USER %1 0 * :%2"_s.arg(nick, session.serverConfig().realName)};
    appendToServer();
}

void SessionModel::onRegistered()
{
    autojoin = session.serverConfig().autojoin;
    for (const QString &channel : std::as_const(autojoin)) {
        if (!channel.startsWith(u'#'))
            continue;
        joinChannel(channel);
        appendToServer();
    }
}

void SessionModel::onDisconnected()
{
    ++disconnects;
    appendToServer();
    shownUsers.clear();
    isAway = false;
    pendingNick.clear();
    watched.clear();
}

void SessionModel::onJoin(const QString &nick, const QString &channel)
{
    append(channel);
    if (nick == session.currentNick()) {
        sendRaw(u"NAMES "_s + channel);
        return;
    }
    QStringList &users = channelUsers[channel];
    if (!users.contains(nick, Qt::CaseInsensitive)) {
        NickList::insertSorted(users, nick);
        if (channel == current)
            shownUsers.append(nick);
    }
    const QString tab = privateTabOf(nick);
    if (!tab.isEmpty())
        append(tab);
}

void SessionModel::onPart(const QString &nick, const QString &channel)
{
    if (nick == session.currentNick() && !records.contains(channel))
        return;
    append(channel);
    QString entry;
    if (removeUser(channel, nick, &entry))
        hideUser(channel, entry);
}

void SessionModel::onQuit(const QString &nick)
{
    const QStringList channels = channelUsers.keys();
    for (const QString &channel : channels) {
        QString entry;
        if (!removeUser(channel, nick, &entry))
            continue;
        // This can reopen a closed tab as the current one, with a list already without the user.
        append(channel);
        hideUser(channel, entry);
    }
    const QString tab = privateTabOf(nick);
    if (!tab.isEmpty())
        append(tab);
}

void SessionModel::onKick(const QString &channel, const QString &kicked)
{
    append(channel);
    QString entry;
    if (removeUser(channel, kicked, &entry))
        hideUser(channel, entry);
    if (kicked != session.currentNick())
        return;
    if (channel == current)
        shownUsers.clear();
    channelUsers.remove(channel);
}

void SessionModel::onNick(const QString &oldNick, const QString &newNick)
{
    // After a refused nick the client requests the next one by itself.
    if (lastCommand == "433"_L1)
        sendRaw(u"NICK "_s + newNick);
    const QStringList channels = channelUsers.keys();
    for (const QString &channel : channels)
        renameUser(channel, oldNick, newNick);
    renamePrivateTab(oldNick, newNick);
}

void SessionModel::renameUser(const QString &channel, const QString &oldNick,
                              const QString &newNick)
{
    QStringList &users = channelUsers[channel];
    qsizetype index = users.indexOf(oldNick);
    const bool isBare = index >= 0;
    if (!isBare)
        index = NickList::indexOfNick(users, oldNick);
    if (index < 0)
        return;
    const QString oldEntry = users.at(index);
    const bool hasPrefix = !isBare && !oldEntry.isEmpty();
    const QString newEntry = hasPrefix ? QString(oldEntry.front() + newNick) : newNick;
    users[index] = newEntry;
    // This reopens a closed channel. If it becomes current, its list is filled with the new entries
    // and then contains the new entry twice.
    append(channel);
    if (channel == current) {
        shownUsers.removeOne(oldEntry);
        shownUsers.append(newEntry);
    }
}

void SessionModel::renamePrivateTab(const QString &oldNick, const QString &newNick)
{
    for (auto record = records.begin(); record != records.end(); ++record) {
        const QString key = record.key();
        if (key.startsWith(u'#') || record->peerNick.isEmpty()
            || !isSame(record->peerNick, oldNick))
            continue;
        const Record moved{record->page, newNick};
        records.erase(record);
        // A conversation that was open under the new name keeps its page and loses its record.
        records.insert(newNick, moved);
        if (pages.contains(moved.page))
            moved.page->text = newNick;
        if (isSame(current, key))
            current = newNick;
        append(newNick);
        return;
    }
}

bool SessionModel::removeUser(const QString &channel, const QString &nick, QString *entry)
{
    const auto users = channelUsers.find(channel);
    const qsizetype index = users == channelUsers.end() ? -1 : NickList::indexOfNick(*users, nick);
    if (index < 0)
        return false;
    *entry = users->takeAt(index);
    return true;
}

void SessionModel::hideUser(const QString &channel, const QString &entry)
{
    if (channel == current)
        shownUsers.removeOne(entry);
}

void SessionModel::onNamesFinished(const QString &channel)
{
    QStringList names = pendingNames.take(channel);
    NickList::sortByRank(names);
    channelUsers.insert(channel, names);
    if (channel == current)
        shownUsers = names;
}

void SessionModel::onWhoisEnd(const QString &nick)
{
    const Whois record = whoisRecords.take(nick);
    const int lines = 2 + int(record.isOperator) + int(record.idle >= 0) + int(record.hasChannels)
                      + int(record.isAway);
    for (int line = 0; line < lines; ++line)
        append(whoisTab);
}
