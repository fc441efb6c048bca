#include "SessionModel.h"

#include "Commands.h"
#include "IRCConnection.h"

#include <QTimer>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QString ServerTab = u"Server"_s;
const QString ListTab = u"List"_s;

bool isChannel(const QString &name)
{
    return name.startsWith(u'#');
}

bool isPrivate(const QString &name)
{
    return !isChannel(name) && name != ServerTab && name != ListTab;
}

QString asChannel(const QString &word)
{
    return isChannel(word) ? word : QString(u'#' + word);
}

} // namespace

SessionModel::SessionModel(const IRCConnection &modelled)
    : session(modelled)
{
    records.insert(ServerTab, {addPage(ServerTab), QString()});
    numberCloseButtons();
    connectSession();
    connectPeople();
    connectList();
    connectWhois();
}

QStringList SessionModel::readExpected()
{
    return std::exchange(expected, {});
}

bool SessionModel::isSame(const QString &left, const QString &right)
{
    return left.compare(right, Qt::CaseInsensitive) == 0;
}

bool SessionModel::isOwnNick(const QString &nick) const
{
    return isSame(nick, session.currentNick())
           || (!pendingNick.isEmpty() && isSame(nick, pendingNick));
}

// ---------------------------------------------------------------------------------------------
// Tabs

void SessionModel::showTab(int index)
{
    if (index < 0 || index == currentIndex)
        return;
    currentIndex = index;
    tabChanged();
}

void SessionModel::closeTab(int index)
{
    if (index < 0 || index >= pages.size())
        return;
    const QString name = pages.at(index)->text;
    if (name == ServerTab)
        return;
    if (isPrivate(name) && watched.remove(name.toLower()))
        sendRaw(u"WATCH -"_s + name);
    if (isChannel(name) && session.isConnected()) {
        sendRaw(u"PART %1 :Leaving"_s.arg(name));
        appendToServer();
    }
    if (name == ListTab) {
        hasList = false;
        listRows.clear();
    }
    pages.removeAt(index);
    // The tab to the right becomes current, or the last tab if there is none.
    if (index == currentIndex) {
        currentIndex = qMin(index, static_cast<int>(pages.size()) - 1);
        tabChanged();
    } else if (index < currentIndex) {
        --currentIndex;
        tabChanged();
    }
    records.remove(name);
    drafts.remove(name);
    topics.remove(name);
    if (current == name) {
        current = ServerTab;
        userListIsShown = false;
    }
}

void SessionModel::clickCloseButton(int index)
{
    closeTab(pages.at(index)->closeIndex);
}

void SessionModel::doubleClickTab(int index)
{
    showTab(index);
    closeTab(index);
}

void SessionModel::pressCloseShortcut()
{
    if (current != ServerTab)
        closeTab(currentIndex);
}

void SessionModel::toggleAutojoin(const QString &channel)
{
    setAutojoin(channel, !autojoin.contains(channel));
}

void SessionModel::setAutojoin(const QString &channel, bool enable)
{
    const QString name = asChannel(channel);
    if (!enable)
        autojoin.removeAll(name);
    else if (!autojoin.contains(name))
        autojoin.append(name);
    appendToServer();
}

void SessionModel::applyPreferences()
{
    numberCloseButtons();
}

void SessionModel::append(const QString &tab)
{
    if (!records.contains(tab))
        openTab(tab);
    Page *page = records.value(tab).page.get();
    if (page != nullptr && page->hasView)
        ++page->rows;
}

void SessionModel::appendToServer()
{
    append(ServerTab);
}

std::shared_ptr<SessionModel::Page> SessionModel::addPage(const QString &name)
{
    auto page = std::make_shared<Page>();
    page->text = name;
    pages.append(page);
    return page;
}

void SessionModel::openTab(const QString &name)
{
    if (isPrivate(name))
        watch(name);
    const Record record{addPage(name), isPrivate(name) ? name : QString()};
    records.insert(name, record);
    if (current == ServerTab)
        showPage(record.page);
    numberCloseButtons();
}

void SessionModel::tabChanged()
{
    if (!current.isEmpty())
        drafts.insert(current, input);
    current = pages.at(currentIndex)->text;
    userListIsShown = isChannel(current);
    searchIsShown = current == ListTab;
    shownUsers = isChannel(current) ? channelUsers.value(current) : QStringList();
    input = drafts.value(current);
    numberCloseButtons();
}

void SessionModel::showPage(const std::shared_ptr<Page> &page)
{
    showTab(static_cast<int>(pages.indexOf(page)));
}

void SessionModel::numberCloseButtons()
{
    for (int index = 0; index < pages.size(); ++index)
        pages.at(index)->closeIndex = index;
}

void SessionModel::watch(const QString &nick)
{
    if (watched.contains(nick.toLower()))
        return;
    sendRaw(u"WATCH +"_s + nick);
    watched.insert(nick.toLower());
}

QString SessionModel::privateTabOf(const QString &nick) const
{
    for (auto record = records.cbegin(); record != records.cend(); ++record) {
        const QString &peer = record->peerNick.isEmpty() ? record.key() : record->peerNick;
        if (isPrivate(record.key()) && isSame(peer, nick))
            return record.key();
    }
    return {};
}

// ---------------------------------------------------------------------------------------------
// Lines to the server

void SessionModel::sendRaw(const QString &line)
{
    if (session.isConnected())
        expected.append(line);
}

void SessionModel::enterText(const QString &text)
{
    input = text;
}

void SessionModel::typeLine(const QString &line)
{
    const QString text = line.trimmed();
    input.clear();
    drafts.insert(current, QString());
    if (text.isEmpty() || !session.isConnected())
        return;
    if (text.startsWith(u'/')) {
        runCommand(Commands::parse(text));
    } else if (current == ServerTab) {
        appendToServer();
    } else {
        sendRaw(u"PRIVMSG %1 :%2"_s.arg(current, text));
        append(current);
    }
}

void SessionModel::runCommand(const Commands::Command &command)
{
    const auto is = [&](QLatin1StringView name, int words = 0) {
        return command.name == name && command.words.size() >= words;
    };
    const QString word = command.words.value(1);
    if (is("join"_L1, 2)) {
        joinChannel(asChannel(word));
    } else if (is("part"_L1)) {
        sendRaw(u"PART %1 :Leaving"_s.arg(current));
    } else if (is("nick"_L1, 2)) {
        changeNick(word);
    } else if (is("msg"_L1, 3)) {
        sendRaw(u"PRIVMSG "_s + word + u" :"_s + command.section(2));
        append(word);
    } else if (is("raw"_L1, 2)) {
        sendRaw(command.section(1));
    } else if (is("list"_L1)) {
        if (session.isRegistered())
            requestChannelList();
        else
            appendToServer();
    } else if (is("away"_L1)) {
        const QString message = command.section(1).trimmed();
        goAway(message.isEmpty() ? u"Away"_s : message);
    } else if (is("back"_L1)) {
        returnFromAway();
    } else if (is("whois"_L1, 2)) {
        whois(word);
    } else if (is("autojoin"_L1, 2)) {
        toggleAutojoin(asChannel(word));
    } else {
        append(current);
    }
}

void SessionModel::connectByDialog()
{
    autojoin = session.serverConfig().autojoin;
}

void SessionModel::disconnectByMenu()
{
    sendRaw(u"QUIT :Velmora leaving"_s);
}

void SessionModel::goAway(const QString &message)
{
    isAway = true;
    sendRaw(u"AWAY :"_s + message);
    appendToServer();
    announceInConversations();
}

void SessionModel::returnFromAway()
{
    leaveAway();
    announceInConversations();
}

void SessionModel::leaveAway()
{
    sendRaw(u"AWAY"_s);
    isAway = false;
    appendToServer();
}

void SessionModel::announceInConversations()
{
    for (auto record = records.cbegin(); record != records.cend(); ++record) {
        const QString &name = record.key();
        if (name != ServerTab && name != ListTab)
            QTimer::singleShot(0, this, [this, name] { append(name); });
    }
}

void SessionModel::changeNick(const QString &nick)
{
    if (isAway)
        leaveAway();
    pendingNick = nick;
    sendRaw(u"NICK "_s + nick);
}

void SessionModel::joinChannel(const QString &channel)
{
    sendRaw(u"JOIN "_s + channel);
}

void SessionModel::setTopic(const QString &channel, const QString &topic)
{
    sendRaw(u"TOPIC %1 :%2"_s.arg(channel, topic));
    topics.insert(channel, topic);
}

void SessionModel::openPrivateChat(const QString &nick)
{
    if (!session.isConnected() || nick.isEmpty() || isOwnNick(nick))
        return;
    if (!records.contains(nick)) {
        records.insert(nick, {addPage(nick), nick});
        watch(nick);
    }
    showPage(records.value(nick).page);
}

void SessionModel::whois(const QString &nick)
{
    whoisTab = current;
    sendRaw(u"WHOIS "_s + nick);
}

// ---------------------------------------------------------------------------------------------
// The channel list

void SessionModel::requestChannelList()
{
    if (!records.contains(ListTab)) {
        hasList = true;
        const auto page = addPage(ListTab);
        page->hasView = false;
        records.insert(ListTab, {page, QString()});
    }
    listRows.clear();
    showPage(records.value(ListTab).page);
    sendRaw(u"LIST"_s);
}

void SessionModel::filterChannelList(const QString &text)
{
    for (ListRow &row : listRows) {
        row.isShown = row.channel.contains(text, Qt::CaseInsensitive)
                      || row.topic.contains(text, Qt::CaseInsensitive);
    }
}

void SessionModel::doubleClickListRow(const QString &channel)
{
    if (!session.isConnected())
        return;
    if (!channel.isEmpty() && !records.contains(channel))
        records.insert(channel, {addPage(channel), QString()});
    if (records.contains(channel))
        showPage(records.value(channel).page);
    joinChannel(channel);
}
