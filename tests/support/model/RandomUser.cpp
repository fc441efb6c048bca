#include "RandomUser.h"

#include "EmojiPicker.h"
#include "HighlightTabBar.h"
#include "IRCConnection.h"
#include "MyTabWidget.h"
#include "NickList.h"
#include "SessionInvariants.h"
#include "Waiting.h"

#include <QAbstractItemView>
#include <QAction>
#include <QCompleter>
#include <QCoreApplication>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QShortcut>
#include <QSplitter>
#include <QStackedWidget>
#include <QTest>
#include <QTreeWidget>

#include <numeric>

using namespace Qt::StringLiterals;

RandomUser::RandomUser(WindowSession &windowSession, RandomSource &source,
                       const QStringList &recording)
    : session(windowSession)
    , probe(windowSession.probe)
    , random(source)
    , lines(source, recording)
{
    answers.answerAllOthers([this](QWidget *shown) { answer(shown); });
}

const QList<RandomUser::Action> &RandomUser::actions()
{
    static const QList<Action> all{
            {300, "receives lines", &RandomUser::receiveLines},
            {8, "reconnects", &RandomUser::reconnect},
            {8, "loses the link", &RandomUser::loseLink},
            {4, "disconnects", &RandomUser::disconnectByMenu},
            {120, "switches tabs", &RandomUser::switchTab},
            {30, "clicks a close button", &RandomUser::clickCloseButton},
            {15, "requests to close a tab", &RandomUser::requestCloseTab},
            {15, "presses the shortcut", &RandomUser::pressCloseShortcut},
            {15, "double-clicks a tab", &RandomUser::doubleClickTab},
            {30, "opens a tab's menu", &RandomUser::openTabMenu},
            {60, "opens a user's menu", &RandomUser::openUserMenu},
            {30, "double-clicks a user", &RandomUser::doubleClickUser},
            {15, "requests the list", &RandomUser::requestList},
            {20, "filters the list", &RandomUser::filterList},
            {10, "double-clicks a row", &RandomUser::doubleClickListRow},
            {15, "opens a row's menu", &RandomUser::openListMenu},
            {150, "types a line", &RandomUser::typeLine},
            {40, "types a nick", &RandomUser::typeWithCompletion},
            {10, "picks an emoji", &RandomUser::insertEmoji},
            {15, "sets or clears away", &RandomUser::setAway},
            {12, "changes nick", &RandomUser::changeNick},
            {12, "joins a channel", &RandomUser::joinChannel},
            {25, "edits the topic", &RandomUser::editTopic},
            {4, "opens About or Help", &RandomUser::readInfo},
            {25, "uses the connect dialog", &RandomUser::useConnectDialog},
            {12, "uses the preferences", &RandomUser::usePreferences},
            {15, "resizes", &RandomUser::resize},
            {15, "drags the splitter", &RandomUser::dragSplitter},
    };
    return all;
}

QString RandomUser::step()
{
    static const int sum = std::accumulate(
            actions().cbegin(), actions().cend(), 0,
            [](int before, const Action &action) { return before + action.weight; });
    int number = random.below(sum);
    auto action = actions().cbegin();
    while (number >= action->weight)
        number -= (action++)->weight;

    latest = Answer();
    if (!isConnected() && random.chance(40)) {
        steps.append(u"connects"_s);
        reconnect();
    } else {
        steps.append(QString::fromLatin1(action->name));
        (this->*action->act)();
    }
    return check();
}

QString RandomUser::recentSteps() const
{
    return steps.mid(qMax(qsizetype(0), steps.size() - 15)).join(u"; "_s);
}

bool RandomUser::isConnected() const
{
    return probe.connection().isConnected();
}

QString RandomUser::check()
{
    if (failure.isEmpty() && isConnected() && !session.settle())
        failure = u"lines are not received any more"_s;
    // Posted events belong to the step.
    QCoreApplication::processEvents();
    const QStringList sent = session.readSent();
    const QStringList expected = model.readExpected();
    done.linesSent += static_cast<int>(sent.size());
    done.linksLost = model.disconnects;
    if (failure.isEmpty() && isConnected() && sent != expected) {
        failure = u"sent (%1) instead of (%2)"_s.arg(sent.join(u'|'), expected.join(u'|'));
    }
    if (failure.isEmpty())
        failure = SessionInvariants::findDifference(probe, model);
    // A conversation that is renamed to the name of another one leaves the page of that one without
    // a record. The model does the same, and the invariants still hold.
    if (failure.isEmpty())
        failure = SessionInvariants::findViolation(probe);
    if (failure.isEmpty())
        failure = answers.problems().join(u"; "_s);
    return failure;
}

int RandomUser::randomTab()
{
    return random.below(probe.tabWidget().count());
}

// ---------------------------------------------------------------------------------------------
// The server and the connection

void RandomUser::receiveLines()
{
    QByteArray bytes = lines.bytes(probe.connection().currentNick());
    steps.last() += u' ' + QString::fromUtf8(bytes.toPercentEncoding(" :!#@")).left(200);
    while (!bytes.isEmpty()) {
        const int size = random.chance(50) ? static_cast<int>(bytes.size()) : 1 + random.below(40);
        session.server.sendBytes(bytes.left(size));
        bytes.remove(0, size);
        QCoreApplication::processEvents();
    }
}

void RandomUser::reconnect()
{
    if (!session.acceptDialog(u"me"_s, random.chance(50) ? u"#one, #two"_s : QString())) {
        failure = u"cannot connect"_s;
        return;
    }
    model.connectByDialog();
    // Ends the incomplete line that the previous connection may have left.
    session.server.sendBytes("\r\n");
    if (random.chance(90))
        session.server.send(u":irc.test 001 me :Welcome"_s);
    if (random.chance(70) && !session.join(lines.channel(), u"@me ann +bob"_s))
        failure = u"cannot join a channel"_s;
}

void RandomUser::loseLink()
{
    if (!isConnected())
        return;
    const int before = model.disconnects;
    if (random.chance(50)) {
        session.server.sendBytes("\xd0");
        session.server.abort();
    } else {
        session.server.sendBytes(lines.garbage().chopped(2));
        session.server.close();
    }
    if (!waitUntil([&] { return model.disconnects > before; }))
        failure = u"the end of the connection is not noticed"_s;
}

void RandomUser::disconnectByMenu()
{
    const int before = model.disconnects;
    const bool wasConnected = isConnected();
    session.choose(u"&Disconnect"_s);
    if (wasConnected && !waitUntil([&] { return model.disconnects > before; }))
        failure = u"the user cannot disconnect"_s;
}

// ---------------------------------------------------------------------------------------------
// Tabs

void RandomUser::switchTab()
{
    const int index = randomTab();
    if (probe.tabBar().rect().contains(probe.tabBar().tabRect(index).center()))
        probe.clickTab(index);
    else
        probe.tabWidget().setCurrentIndex(index);
    model.showTab(index);
}

void RandomUser::clickCloseButton()
{
    const int index = randomTab();
    QPushButton *button = probe.closeButton(index);
    if (button == nullptr)
        return;
    button->click();
    model.clickCloseButton(index);
}

void RandomUser::requestCloseTab()
{
    const int index = random.below(probe.tabWidget().count() + 2) - 1;
    session.window.requestCloseTab(index);
    model.closeTab(index);
}

void RandomUser::pressCloseShortcut()
{
    // By its signal, since the window may be inactive.
    emit session.window.findChild<QShortcut *>()->activated();
    model.pressCloseShortcut();
}

void RandomUser::doubleClickTab()
{
    const int index = randomTab();
    emit probe.tabBar().tabBarDoubleClicked(index);
    model.closeTab(index);
}

void RandomUser::openTabMenu()
{
    const int index = randomTab();
    const QString name = probe.tabWidget().tabText(index);
    emit probe.tabBar().customContextMenuRequested(probe.tabBar().tabRect(index).center());
    if (latest.entry == "Close"_L1)
        model.closeTab(index);
    else if (!latest.entry.isEmpty())
        model.toggleAutojoin(name);
}

// ---------------------------------------------------------------------------------------------
// People

void RandomUser::openUserMenu()
{
    QListWidget &list = probe.userList();
    if (list.isHidden() || list.count() == 0)
        return;
    const QListWidgetItem *item = list.item(random.below(list.count()));
    list.scrollToItem(item);
    const QPoint position = list.visualItemRect(item).center();
    item = list.itemAt(position);
    if (item == nullptr)
        return;
    const QString nick = NickList::stripPrefix(item->text());
    const QString channel = model.current;
    emit list.customContextMenuRequested(position);
    chooseInUserMenu(nick, channel);
}

void RandomUser::chooseInUserMenu(const QString &nick, const QString &channel)
{
    const QString entry = latest.entry;
    const QString ban = u"MODE %1 +b %2!*@*"_s.arg(channel, nick);
    if (entry == "Open Private Chat"_L1) {
        model.openPrivateChat(nick);
    } else if (entry == "Whois"_L1) {
        model.whois(nick);
    } else if (entry == "Kick"_L1) {
        model.sendRaw(u"KICK %1 %2 :Requested"_s.arg(channel, nick));
    } else if (entry == "Ban"_L1) {
        model.sendRaw(ban);
    } else if (entry == "Kick/Ban"_L1) {
        model.sendRaw(ban);
        model.sendRaw(u"KICK %1 %2 :Banned"_s.arg(channel, nick));
    } else if (entry == "Change Nick..."_L1) {
        applyNickToModel();
    } else if (!entry.isEmpty() && entry != "Copy Nickname"_L1) {
        applyAwayToModel();
    }
}

void RandomUser::doubleClickUser()
{
    QListWidget &list = probe.userList();
    if (list.isHidden() || list.count() == 0)
        return;
    QListWidgetItem *item = list.item(random.below(list.count()));
    const QString nick = NickList::stripPrefix(item->text());
    emit list.itemDoubleClicked(item);
    model.openPrivateChat(nick);
}

// ---------------------------------------------------------------------------------------------
// Channel list

void RandomUser::requestList()
{
    const bool isRegistered = probe.connection().isRegistered();
    session.choose(u"Channel &List"_s);
    if (isRegistered)
        model.requestChannelList();
}

void RandomUser::filterList()
{
    static const QStringList texts{QString(), u"o"_s, u"one"_s, u"КОФЕ"_s, u"nothing"_s, u"http"_s};
    const QString text = random.pick(texts);
    if (text == probe.listSearchEdit().text())
        return;
    probe.listSearchEdit().setText(text);
    model.filterChannelList(text);
}

void RandomUser::doubleClickListRow()
{
    QTreeWidget *tree = probe.listTree();
    if (tree == nullptr || tree->topLevelItemCount() == 0)
        return;
    QTreeWidgetItem *item = tree->topLevelItem(random.below(tree->topLevelItemCount()));
    const QString channel = item->text(0);
    emit tree->itemDoubleClicked(item, 0);
    model.doubleClickListRow(channel);
}

void RandomUser::openListMenu()
{
    QTreeWidget *tree = probe.listTree();
    if (tree == nullptr || tree->topLevelItemCount() == 0)
        return;
    QTreeWidgetItem *item = tree->topLevelItem(random.below(tree->topLevelItemCount()));
    tree->scrollToItem(item);
    const QPoint position = tree->visualItemRect(item).center();
    item = tree->itemAt(position);
    if (item == nullptr)
        return;
    const QString channel = item->text(0);
    const bool isAutojoined = model.autojoin.contains(channel);
    emit tree->customContextMenuRequested(position);
    if (latest.entry.startsWith("Join "_L1))
        model.joinChannel(channel);
    else if (!latest.entry.isEmpty())
        model.setAutojoin(channel, !isAutojoined);
}

// ---------------------------------------------------------------------------------------------
// Input

QString RandomUser::randomInput()
{
    const QString nick = lines.nick();
    const QString channel = lines.channel();
    const QStringList inputs{lines.text(),
                             lines.text(),
                             u"/join "_s + channel,
                             u"/j "_s + channel.mid(1) + u" key"_s,
                             u"/part"_s,
                             u"/p because"_s,
                             u"/nick "_s + random.pick(QStringList{u"me"_s, u"mine"_s, u"other"_s}),
                             u"/msg "_s + nick + u' ' + lines.text(),
                             u"/m  "_s + channel + u"  "_s + lines.text(),
                             u"/RAW PRIVMSG "_s + channel + u" :x"_s,
                             u"/raw  two spaces"_s,
                             u"/list"_s,
                             u"/away "_s + lines.text(),
                             u"/a"_s,
                             u"/back"_s,
                             u"/whois "_s + nick,
                             u"/wc "_s + channel,
                             u"/autojoin "_s + channel,
                             u"/topic x"_s,
                             u"/"_s,
                             u"//join #one"_s,
                             u"/msg "_s + nick,
                             u"   "_s};
    return random.pick(inputs);
}

void RandomUser::typeLine()
{
    if (!probe.inputLine().isVisible())
        return;
    const QString text = randomInput();
    steps.last() += u' ' + text.left(60);
    probe.nickCompleter().popup()->hide();
    probe.typeLine(text);
    model.typeLine(text);
}

void RandomUser::typeWithCompletion()
{
    QLineEdit &line = probe.inputLine();
    if (!line.isVisible())
        return;
    if (random.chance(50))
        line.clear();
    QTest::keyClicks(&line, random.pick(QStringList{u"a"_s, u"b"_s, u"m"_s, u"hi e"_s, u"@"_s}));
    QAbstractItemView *popup = probe.nickCompleter().popup();
    if (popup->isVisible()) {
        if (random.chance(30))
            interrupt();
        if (popup->isVisible() && random.chance(60)) {
            QTest::keyClick(popup, Qt::Key_Down);
            if (popup->currentIndex().isValid())
                QTest::keyClick(popup, Qt::Key_Return);
        }
        popup->hide();
    }
    if (random.chance(30))
        probe.completeNick();
    model.enterText(line.text());
}

void RandomUser::insertEmoji()
{
    if (!probe.emojiButton().isVisible())
        return;
    probe.emojiButton().click();
    auto *picker = session.window.findChild<EmojiPicker *>();
    if (picker == nullptr)
        return;
    if (random.chance(30))
        interrupt();
    const QList<QPushButton *> emojis = picker->findChildren<QPushButton *>();
    if (random.chance(80))
        random.pick(emojis)->click();
    else
        picker->close();
    model.enterText(probe.inputLine().text());
}

// ---------------------------------------------------------------------------------------------
// The window

void RandomUser::resize()
{
    session.window.resize(300 + random.below(1200), 200 + random.below(700));
}

void RandomUser::dragSplitter()
{
    QWidget *handle = probe.splitter().handle(1);
    if (!handle->isVisible())
        return;
    const QPoint middle = handle->rect().center();
    QTest::mousePress(handle, Qt::LeftButton, {}, middle);
    QTest::mouseMove(handle, middle + QPoint(random.below(200) - 100, 0));
    QTest::mouseRelease(handle, Qt::LeftButton, {}, middle);
}
