#include "HighlightTabBar.h"
#include "IRCConnection.h"
#include "Interruptions.h"
#include "MyTabWidget.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSplitter>
#include <QStackedWidget>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const auto Server = u"Server"_s;

} // namespace

class TestTabs final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void derivesTheKindFromTheName_data();
    void derivesTheKindFromTheName();
    void keepsNamesThatDifferInCaseApart();
    void namesTabsByTheirKeys();
    void findsPrivateTabs_data();
    void findsPrivateTabs();
    void findsTheFirstPrivateTabInKeyOrder();
    void ignoresANegativeIndex();
    void keepsADraftForEachTab();
    void dropsTheDraftOfAClosedTab();
    void keepsNoDraftWithoutACurrentTab();
    void clearsTheHighlightOfTheCurrentTab();
    void showsTheUsersInTheStoredOrder();
    void clearsTheUserListOnOtherTabs();
    void showsTheTopicOfTheCurrentChannel();
    void showsTheTopicBarAgain();
    void stylesTheOwnUserOnTheCurrentChannel();
    void showsTheSearchFieldOnTheListTab();
    void setsTheRatioAfterTheLayout();
    void fillsTheUserListAgainAfterADisconnect();
    void removesNoTabOnADisconnect();
    void opensATabWithoutAName();

private:
    TemporaryStore store;
};

void TestTabs::init()
{
    store.clear();
}

void TestTabs::derivesTheKindFromTheName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("peerNick");
    QTest::addColumn<bool>("isChannel");
    QTest::addColumn<bool>("hasEmoji");
    QTest::addColumn<QString>("placeholder");

    const QString message = u"Type a message..."_s;
    QTest::newRow("server") << Server << QString() << false << false << u"Type a command..."_s;
    QTest::newRow("list") << u"List"_s << QString() << false << false << message;
    QTest::newRow("channel") << u"#c"_s << QString() << true << true << message;
    QTest::newRow("prefix alone") << u"#"_s << QString() << true << true << message;
    QTest::newRow("two prefixes") << u"##c"_s << QString() << true << true << message;
    QTest::newRow("private") << u"bob"_s << u"bob"_s << false << true << message;
    QTest::newRow("prefix inside") << u"a#c"_s << u"a#c"_s << false << true << message;
    QTest::newRow("local channel") << u"&c"_s << u"&c"_s << false << true << message;
    QTest::newRow("server in lower case") << u"server"_s << u"server"_s << false << true << message;
    QTest::newRow("list in upper case") << u"LIST"_s << u"LIST"_s << false << true << message;
}

void TestTabs::derivesTheKindFromTheName()
{
    QFETCH(const QString, name);
    QFETCH(const bool, isChannel);
    WindowSession session;
    const MainWindowProbe &probe = session.probe;
    if (name == "List"_L1)
        probe.addListTab();
    else
        probe.openTabs({name});
    probe.openTabs({u"zoe"_s});
    probe.showTab(u"zoe"_s);
    probe.showTab(name);

    QCOMPARE(probe.currentTabName(), name);
    const MainWindow::TabInfo tab = probe.tabs().value(name);
    QTEST(tab.peerNick, "peerNick");
    QCOMPARE(probe.userList().isVisible(), isChannel);
    QCOMPARE(probe.userListShown(), isChannel);
    QCOMPARE(tab.topicBar != nullptr, isChannel);
    QCOMPARE(tab.topicLabel != nullptr, isChannel);
    QCOMPARE(tab.editTopicBtn != nullptr, isChannel);
    // Not isVisible(): the List tab hides the whole row.
    QTEST(!probe.emojiButton().isHidden(), "hasEmoji");
    QTEST(probe.inputLine().placeholderText(), "placeholder");

    const int index = probe.tabWidget().currentIndex();
    probe.closeTab(index);
    QCOMPARE(probe.tabTexts().contains(name), name == Server);
    QCOMPARE(probe.tabs().contains(name), name == Server);
}

void TestTabs::keepsNamesThatDifferInCaseApart()
{
    WindowSession session;
    session.probe.appendMessageToTab(u"#x"_s, u"small"_s);
    session.probe.appendMessageToTab(u"#X"_s, u"large"_s);
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#x"_s, u"#X"_s}));
    QCOMPARE(session.probe.lines(u"#x"_s), QStringList{u"|small"_s});
    QCOMPARE(session.probe.lines(u"#X"_s), QStringList{u"|large"_s});
}

void TestTabs::namesTabsByTheirKeys()
{
    WindowSession session;
    const QStringList names{u"#b"_s, u"bob"_s, u"#a"_s};
    session.probe.openTabs(names);
    for (qsizetype i = 0; i < names.size(); ++i) {
        const int index = static_cast<int>(i) + 1;
        QCOMPARE(session.probe.tabWidget().tabText(index), names.at(i));
        QCOMPARE(session.probe.tabWidget().tabToolTip(index), names.at(i));
        QCOMPARE(session.probe.tabs().value(names.at(i)).page,
                 session.probe.tabWidget().widget(index));
    }
    QCOMPARE(session.probe.tabs().keys(), (QStringList{u"#a"_s, u"#b"_s, Server, u"bob"_s}));
}

void TestTabs::findsPrivateTabs_data()
{
    QTest::addColumn<QString>("nick");
    QTest::addColumn<QString>("key");

    QTest::newRow("in the same case") << u"bob"_s << u"bob"_s;
    QTest::newRow("in another case") << u"BOB"_s << u"bob"_s;
    QTest::newRow("unknown nick") << u"carol"_s << QString();
    QTest::newRow("part of a name") << u"bo"_s << QString();
    QTest::newRow("channel") << u"#c"_s << QString();
    QTest::newRow("server") << u"Server"_s << QString();
    QTest::newRow("server in lower case") << u"server"_s << QString();
    QTest::newRow("list") << u"list"_s << QString();
    QTest::newRow("by its peer") << u"Peer"_s << u"key"_s;
    QTest::newRow("not by the key of a tab with a peer") << u"key"_s << QString();
    QTest::newRow("by the key of a tab without a peer") << u"NOPEER"_s << u"nopeer"_s;
}

void TestTabs::findsPrivateTabs()
{
    QFETCH(const QString, nick);
    WindowSession session;
    session.probe.addListTab();
    session.probe.openTabs({u"#c"_s, u"bob"_s, u"key"_s, u"nopeer"_s});
    session.probe.tabs()[u"key"_s].peerNick = u"peer"_s;
    session.probe.tabs()[u"nopeer"_s].peerNick.clear();
    QTEST(session.probe.findPrivateChatTab(nick), "key");
}

void TestTabs::findsTheFirstPrivateTabInKeyOrder()
{
    WindowSession session;
    session.probe.openTabs({u"bob"_s, u"BOB"_s});
    QCOMPARE(session.probe.findPrivateChatTab(u"bob"_s), u"BOB"_s);
}

void TestTabs::ignoresANegativeIndex()
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s});
    session.probe.inputLine().setText(u"half"_s);
    QVERIFY(QMetaObject::invokeMethod(&session.window, "onTabChanged", Q_ARG(int, -1)));
    QCOMPARE(session.probe.currentTabName(), u"#c"_s);
    QCOMPARE(session.probe.inputLine().text(), u"half"_s);
    QVERIFY(!session.probe.inputDrafts().contains(u"#c"_s));
}

void TestTabs::keepsADraftForEachTab()
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s, u"bob"_s});
    session.probe.inputLine().setText(u"to the channel"_s);
    session.probe.clickTab(2);
    QCOMPARE(session.probe.inputLine().text(), QString());
    session.probe.inputLine().setText(u"to bob"_s);
    session.probe.clickTab(1);
    QCOMPARE(session.probe.inputLine().text(), u"to the channel"_s);
    session.probe.clickTab(0);
    QCOMPARE(session.probe.inputLine().text(), QString());
    session.probe.clickTab(2);
    QCOMPARE(session.probe.inputLine().text(), u"to bob"_s);
}

void TestTabs::dropsTheDraftOfAClosedTab()
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s});
    session.probe.inputLine().setText(u"half"_s);
    session.probe.closeTab(1);
    QCOMPARE(session.probe.currentTabName(), Server);
    QCOMPARE(session.probe.inputLine().text(), QString());
    QVERIFY(!session.probe.inputDrafts().contains(u"#c"_s));
    session.probe.openTabs({u"#c"_s});
    session.probe.showTab(u"#c"_s);
    QCOMPARE(session.probe.inputLine().text(), QString());
}

void TestTabs::keepsNoDraftWithoutACurrentTab()
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s});
    session.probe.inputDrafts().clear();
    session.probe.currentTabName().clear();
    session.probe.inputLine().setText(u"half"_s);
    session.probe.showTab(Server);
    QCOMPARE(session.probe.inputDrafts(), (QMap<QString, QString>()));
}

void TestTabs::clearsTheHighlightOfTheCurrentTab()
{
    WindowSession session;
    const MainWindowProbe &probe = session.probe;
    probe.openTabs({u"#c"_s, u"#d"_s, u"#e"_s});
    for (const int index : {2, 3})
        probe.tabBar().highlightTab(index);
    probe.tabs()[u"#d"_s].highlighted = true;
    probe.tabs()[u"#e"_s].highlighted = true;
    probe.clickTab(2);
    QVERIFY(!probe.tabs().value(u"#d"_s).highlighted);
    QVERIFY(!probe.tabBar().isHighlighted(2));
    QVERIFY(probe.tabs().value(u"#e"_s).highlighted);
    QVERIFY(probe.tabBar().isHighlighted(3));

    // The bar's highlight is cleared only if the tab's record has one.
    probe.tabs()[u"#e"_s].highlighted = false;
    probe.clickTab(3);
    QVERIFY(probe.tabBar().isHighlighted(3));
}

void TestTabs::showsTheUsersInTheStoredOrder()
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s, u"#d"_s});
    const QStringList users{u"zoe"_s, u"@alice"_s, u"+bob"_s, u"~owner"_s};
    session.probe.channelUsers().insert(u"#d"_s, users);
    session.probe.clickTab(2);
    QCOMPARE(session.probe.users(), users);
}

void TestTabs::clearsTheUserListOnOtherTabs()
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s, u"#d"_s, u"bob"_s});
    session.probe.channelUsers().insert(u"#c"_s, {u"alice"_s});
    session.probe.channelUsers().insert(u"bob"_s, {u"nobody"_s});
    session.probe.clickTab(0);
    for (const int other : {2, 3, 0}) {
        session.probe.clickTab(1);
        QCOMPARE(session.probe.users(), QStringList{u"alice"_s});
        session.probe.clickTab(other);
        QCOMPARE(session.probe.users(), QStringList());
    }
    // Showing a channel without known users adds no entry for it.
    QVERIFY(!session.probe.channelUsers().contains(u"#d"_s));
}

void TestTabs::showsTheTopicOfTheCurrentChannel()
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s, u"#d"_s});
    const QLabel *label = session.probe.tabs().value(u"#d"_s).topicLabel;
    session.probe.channelTopics().insert(u"#d"_s, u"all about d"_s);
    QCOMPARE(label->text(), QString());
    session.probe.clickTab(2);
    QCOMPARE(label->text(), u"all about d"_s);
    session.probe.channelTopics().remove(u"#d"_s);
    session.probe.clickTab(1);
    session.probe.clickTab(2);
    QCOMPARE(label->text(), QString());
}

void TestTabs::showsTheTopicBarAgain()
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s, u"#d"_s});
    QWidget *bar = session.probe.tabs().value(u"#d"_s).topicBar;
    bar->hide();
    session.probe.clickTab(2);
    QVERIFY(bar->isVisible());
}

void TestTabs::stylesTheOwnUserOnTheCurrentChannel()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    session.probe.openTabs({u"#c"_s, u"#d"_s});
    session.probe.channelUsers().insert(u"#d"_s, {u"alice"_s, u"@Me"_s});
    session.probe.isAway() = true;
    session.probe.clickTab(2);
    QVERIFY(!session.probe.userList().item(0)->font().italic());
    QVERIFY(session.probe.userList().item(1)->font().italic());
}

void TestTabs::showsTheSearchFieldOnTheListTab()
{
    WindowSession session;
    session.probe.addListTab();
    session.probe.openTabs({u"#c"_s});
    session.probe.showTab(u"List"_s);
    QCOMPARE(session.probe.mainStack().currentWidget(), &session.probe.listSearchEdit());
    QVERIFY(session.probe.listSearchEdit().isVisible());
    session.probe.showTab(u"#c"_s);
    QCOMPARE(session.probe.mainStack().currentIndex(), 0);
    QVERIFY(session.probe.inputLine().isVisible());
}

void TestTabs::setsTheRatioAfterTheLayout()
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s, u"#d"_s});
    QVERIFY(session.settleRatio());
    session.probe.showTab(u"#d"_s);
    // The ratio is set again after the layout has changed the sizes.
    session.probe.splitter().setSizes({500, 500});
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.shareOfUserList(), 20, WaitTimeout);
}

void TestTabs::fillsTheUserListAgainAfterADisconnect()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.join(u"#c"_s, u"@me alice"_s));
    QCOMPARE(session.probe.users(), (QStringList{u"@me"_s, u"alice"_s}));
    session.server.close();
    QTRY_VERIFY_WITH_TIMEOUT(session.probe.users().isEmpty(), WaitTimeout);
    session.probe.clickTab(0);
    session.probe.clickTab(1);
    QCOMPARE(session.probe.users(), (QStringList{u"@me"_s, u"alice"_s}));
}

void TestTabs::removesNoTabOnADisconnect()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.receive(u":me!u@h JOIN #c"_s));
    QVERIFY(session.receive(u":bob!u@h PRIVMSG me :hello"_s));
    const QStringList names{Server, u"#c"_s, u"bob"_s};
    QVERIFY(Interruptions::dropLink(session));
    QCOMPARE(session.probe.tabTexts(), names);
    QCOMPARE(session.probe.tabs().size(), 3);

    // A second join reuses the tab.
    QVERIFY(session.registerAs(u"me"_s));
    QCOMPARE(session.probe.tabTexts(), names);
    QVERIFY(session.receive(u":me!u@h JOIN #c"_s));
    QCOMPARE(session.probe.tabTexts(), names);
    QCOMPARE(session.probe.lines(u"#c"_s), (QStringList{u"me|joined #c"_s, u"me|joined #c"_s}));
}

void TestTabs::opensATabWithoutAName()
{
    // Some servers send the channel of JOIN as a trailing parameter.
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.receive(u":me!u@h JOIN :#x"_s));
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, QString()}));
    QCOMPARE(session.probe.currentTabName(), QString());
    QCOMPARE(session.probe.lines(QString()), QStringList{u"me|joined "_s});
    QVERIFY(!session.probe.userListShown());
    QVERIFY(session.probe.emojiButton().isVisible());
    QVERIFY(session.server.waitForLine(u"NAMES "_s));

    // The channel's own tab opens with its first message.
    QVERIFY(session.receive(u":bob!u@h PRIVMSG #x :hello"_s));
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, QString(), u"#x"_s}));
    session.probe.clickTab(2);
    session.probe.clickTab(1);
    QVERIFY(session.receive(u":me!u@h JOIN :#y"_s));
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, QString(), u"#x"_s}));
    QCOMPARE(session.probe.lines(QString()), (QStringList{u"me|joined "_s, u"me|joined "_s}));
}

QTEST_MAIN(TestTabs)
#include "tst_Tabs.moc"
