#include "IRCConnection.h"
#include "Interruptions.h"
#include "MyTabWidget.h"
#include "SessionOutput.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QListWidget>
#include <QSplitter>
#include <QTest>
#include <QTextBrowser>

using namespace Qt::StringLiterals;

namespace {

const auto Server = u"Server"_s;

void doubleClick(const MainWindowProbe &probe, const QString &entry)
{
    QWidget *viewport = probe.userList().viewport();
    const QPoint pos(10, probe.positionOfUser(entry).y());
    QTest::mouseClick(viewport, Qt::LeftButton, {}, pos);
    QTest::mouseDClick(viewport, Qt::LeftButton, {}, pos);
}

} // namespace

class TestUserList final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void opensAPrivateChat_data();
    void opensAPrivateChat();
    void appliesTheChatBackground();
    void showsAnOpenChat();
    void opensAnotherSpellingSeparately();
    void watchesANickOnce();
    void opensNoChatWithTheOwnNick_data();
    void opensNoChatWithTheOwnNick();
    void opensNoChatWithTheRequestedNick();
    void opensNoChatWhileDisconnected();
    void opensNoChatWithoutAnItem();
    void opensTheReservedTabs();
    void sendsAndReceivesInTheChat();

    void detectsOperators_data();
    void detectsOperators();
    void detectsOperatorsOfTheChannel();
    void detectsNoOperatorWhileDisconnected();
    void followsOnlyTheNameList();

    void isShownOnlyOnChannels_data();
    void isShownOnlyOnChannels();
    void isHiddenWhenItsTabCloses();
    void takesAFifthOfTheWidth_data();
    void takesAFifthOfTheWidth();
    void takesNoWidthWhileHidden();
    void leavesTheRatioAlone_data();
    void leavesTheRatioAlone();
    void showsHostileNicks_data();
    void showsHostileNicks();

private:
    TemporaryStore store;
};

void TestUserList::init()
{
    store.clear();
}

void TestUserList::opensAPrivateChat_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("nick");

    QTest::newRow("plain") << u"Alice"_s << u"Alice"_s;
    QTest::newRow("with a rank") << u"@alice"_s << u"alice"_s;
    QTest::newRow("with two ranks") << u"+@alice"_s << u"@alice"_s;
    QTest::newRow("with a presence mark") << u"\u25CF alice"_s << u"alice"_s;
    QTest::newRow("with a presence mark and a rank") << u"\u25CF ~alice"_s << u"alice"_s;
    QTest::newRow("with a presence mark after a rank") << u"@\u25CF alice"_s << u"\u25CF alice"_s;
}

void TestUserList::opensAPrivateChat()
{
    QFETCH(const QString, entry);
    QFETCH(const QString, nick);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"me"_s));
    session.probe.userList().addItem(entry);
    const SessionOutput output(session);
    doubleClick(session.probe, entry);

    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#c"_s, nick}));
    QCOMPARE(session.probe.tabWidget().tabToolTip(2), nick);
    QCOMPARE(session.probe.currentTabName(), nick);
    QCOMPARE(session.probe.tabWidget().currentIndex(), 2);
    const MainWindow::TabInfo tab = session.probe.tabs().value(nick);
    QCOMPARE(tab.page, session.probe.tabWidget().widget(2));
    QCOMPARE(tab.chatView, tab.page->findChild<QTextBrowser *>());
    QVERIFY(tab.chatView != nullptr);
    QCOMPARE(tab.peerNick, nick);
    QVERIFY(tab.table == nullptr);
    QVERIFY(tab.topicBar == nullptr);
    QVERIFY(!tab.highlighted);
    QCOMPARE(session.probe.watchedNicks(), QSet<QString>{nick.toLower()});
    QCOMPARE(output.sent(), QStringList{u"WATCH +"_s + nick});
    QCOMPARE(output.lines(), SessionOutput::Lines());
    QVERIFY(session.probe.closeButton(2) != nullptr);
}

void TestUserList::appliesTheChatBackground()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"me bob"_s));
    doubleClick(session.probe, u"bob"_s);
    const QString sheet = session.probe.tabs().value(Server).chatView->styleSheet();
    QVERIFY(!sheet.isEmpty());
    QCOMPARE(session.probe.tabs().value(u"bob"_s).chatView->styleSheet(), sheet);
}

void TestUserList::showsAnOpenChat()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"me bob"_s));
    QVERIFY(session.receive(u":bob!u@h PRIVMSG me :hi"_s));
    const QWidget *page = session.probe.tabs().value(u"bob"_s).page;
    const SessionOutput output(session);
    doubleClick(session.probe, u"bob"_s);
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#c"_s, u"bob"_s}));
    QCOMPARE(session.probe.currentTabName(), u"bob"_s);
    QCOMPARE(session.probe.tabs().value(u"bob"_s).page, page);
    QCOMPARE(output.sent(), QStringList());
    QCOMPARE(session.probe.lines(u"bob"_s), QStringList{u"bob|hi"_s});
}

void TestUserList::opensAnotherSpellingSeparately()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"me Bob"_s));
    QVERIFY(session.receive(u":bob!u@h PRIVMSG me :hi"_s));
    const SessionOutput output(session);
    doubleClick(session.probe, u"Bob"_s);
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#c"_s, u"bob"_s, u"Bob"_s}));
    QCOMPARE(session.probe.currentTabName(), u"Bob"_s);
    QCOMPARE(session.probe.tabs().value(u"Bob"_s).peerNick, u"Bob"_s);
    // Watches ignore case.
    QCOMPARE(output.sent(), QStringList());
}

void TestUserList::watchesANickOnce()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"me Bob"_s));
    session.probe.watchedNicks() = {u"bob"_s};
    session.discardSent();
    doubleClick(session.probe, u"Bob"_s);
    QCOMPARE(session.probe.currentTabName(), u"Bob"_s);
    QCOMPARE(session.readSent(), QStringList());
    QCOMPARE(session.probe.watchedNicks(), QSet<QString>{u"bob"_s});
}

void TestUserList::opensNoChatWithTheOwnNick_data()
{
    QTest::addColumn<QString>("entry");

    QTest::newRow("the own nick") << u"me"_s;
    QTest::newRow("with a rank") << u"@me"_s;
    QTest::newRow("in another case") << u"ME"_s;
    QTest::newRow("with a presence mark") << u"\u25CF +Me"_s;
    QTest::newRow("a rank without a nick") << u"@"_s;
    QTest::newRow("a presence mark without a nick") << u"\u25CF "_s;
}

void TestUserList::opensNoChatWithTheOwnNick()
{
    QFETCH(const QString, entry);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"bob"_s));
    session.probe.userList().addItem(entry);
    doubleClick(session.probe, entry);
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#c"_s}));
    QCOMPARE(session.probe.currentTabName(), u"#c"_s);
    QCOMPARE(session.probe.watchedNicks(), QSet<QString>());
}

void TestUserList::opensNoChatWithTheRequestedNick()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"me @Newer"_s));
    session.probe.typeLine(u"/nick newer"_s);
    doubleClick(session.probe, u"@Newer"_s);
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#c"_s}));
    session.probe.pendingNick().clear();
    doubleClick(session.probe, u"@Newer"_s);
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#c"_s, u"Newer"_s}));
}

void TestUserList::opensNoChatWhileDisconnected()
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s, u"bob"_s});
    session.probe.userList().addItems({u"alice"_s, u"bob"_s});
    doubleClick(session.probe, u"alice"_s);
    doubleClick(session.probe, u"bob"_s);
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#c"_s, u"bob"_s}));
    QCOMPARE(session.probe.currentTabName(), u"#c"_s);
    QVERIFY(!session.probe.watchedNicks().contains(u"alice"_s));
}

void TestUserList::opensNoChatWithoutAnItem()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    session.probe.onUserDoubleClicked(nullptr);
    QCOMPARE(session.probe.tabTexts(), QStringList{Server});
}

// Intended: a nick that equals the name of an open tab shows that tab.
void TestUserList::opensTheReservedTabs()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"me Server #c"_s));
    session.discardSent();
    doubleClick(session.probe, u"#c"_s);
    QCOMPARE(session.probe.currentTabName(), u"#c"_s);
    doubleClick(session.probe, u"Server"_s);
    QCOMPARE(session.probe.currentTabName(), Server);
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#c"_s}));
    QCOMPARE(session.probe.tabs().value(Server).peerNick, QString());
    QCOMPARE(session.readSent(), QStringList());
}

void TestUserList::sendsAndReceivesInTheChat()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"me @bob"_s));
    doubleClick(session.probe, u"@bob"_s);
    const SessionOutput output(session);
    session.probe.typeLine(u"hello"_s);
    QCOMPARE(output.sent(), QStringList{u"PRIVMSG bob :hello"_s});
    QVERIFY(session.receive(u":bob!u@h PRIVMSG me :hi"_s));
    QCOMPARE(session.probe.lines(u"bob"_s), (QStringList{u"me|hello"_s, u"bob|hi"_s}));
}

void TestUserList::detectsOperators_data()
{
    QTest::addColumn<QStringList>("entries");
    QTest::addColumn<bool>("isOperator");

    const auto add = [](const char *name, const QStringList &entries, bool isOperator) {
        QTest::newRow(name) << entries << isOperator;
    };
    add("owner", {u"~me"_s}, true);
    add("administrator", {u"&me"_s}, true);
    add("operator", {u"bob"_s, u"@me"_s}, true);
    add("half-operator", {u"%me"_s}, true);
    add("voice", {u"+me"_s}, false);
    add("no rank", {u"me"_s}, false);
    add("another operator", {u"@bob"_s, u"me"_s}, false);
    add("not there", {u"@bob"_s}, false);
    add("in another case", {u"@ME"_s}, false);
    add("the first entry counts", {u"me"_s, u"@me"_s}, false);
    add("the first entry counts, ranked", {u"@me"_s, u"me"_s}, true);
    add("two ranks", {u"@+me"_s}, false);
    add("another prefix", {u"!me"_s, u"@bob"_s}, false);
    add("no entries", {}, false);
    add("empty entries", {QString(), u"@"_s}, false);
}

void TestUserList::detectsOperators()
{
    QFETCH(const QStringList, entries);
    WindowSession session;
    QVERIFY(session.registerAs());
    session.probe.channelUsers().insert(u"#c"_s, entries);
    QTEST(session.probe.isUserOperator(u"#c"_s), "isOperator");
}

void TestUserList::detectsOperatorsOfTheChannel()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    session.probe.channelUsers() = {{u"#c"_s, {u"@me"_s}}, {u"#d"_s, {u"me"_s}}};
    QVERIFY(session.probe.isUserOperator(u"#c"_s));
    QVERIFY(!session.probe.isUserOperator(u"#d"_s));
    QVERIFY(!session.probe.isUserOperator(u"#C"_s));
    QVERIFY(!session.probe.isUserOperator(u"#e"_s));
    QCOMPARE(session.probe.channelUsers().size(), 2);
    // A requested nick does not count before it is confirmed.
    session.probe.channelUsers().insert(u"#f"_s, {u"@newer"_s});
    session.probe.pendingNick() = u"newer"_s;
    QVERIFY(!session.probe.isUserOperator(u"#f"_s));
}

void TestUserList::detectsNoOperatorWhileDisconnected()
{
    WindowSession session;
    session.probe.channelUsers() = {{u"#c"_s, {u"@me"_s, u"@"_s, QString()}}};
    QVERIFY(!session.probe.isUserOperator(u"#c"_s));
    QVERIFY(session.registerAs());
    QVERIFY(session.probe.isUserOperator(u"#c"_s));
    QVERIFY(Interruptions::dropLink(session));
    QVERIFY(!session.probe.isUserOperator(u"#c"_s));
}

void TestUserList::followsOnlyTheNameList()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"me @bob"_s));
    QVERIFY(session.receive(u":bob!u@h MODE #c +o me"_s));
    QVERIFY(!session.probe.isUserOperator(u"#c"_s));
    QVERIFY(session.join(u"#c"_s, u"@me @bob"_s));
    QVERIFY(session.probe.isUserOperator(u"#c"_s));
    QVERIFY(session.receive(u":me!u@h NICK newer"_s));
    QVERIFY(session.probe.isUserOperator(u"#c"_s));
}

void TestUserList::isShownOnlyOnChannels_data()
{
    QTest::addColumn<QString>("tab");
    QTest::addColumn<bool>("isShown");

    QTest::newRow("channel") << u"#c"_s << true;
    QTest::newRow("server") << Server << false;
    QTest::newRow("private") << u"bob"_s << false;
    QTest::newRow("local channel") << u"&c"_s << false;
    QTest::newRow("list") << u"List"_s << false;
}

void TestUserList::isShownOnlyOnChannels()
{
    QFETCH(const QString, tab);
    QFETCH(const bool, isShown);
    WindowSession session;
    session.probe.openTabs({u"#before"_s, u"#c"_s, u"bob"_s, u"&c"_s});
    session.probe.addListTab();
    QVERIFY(session.probe.userList().isVisible());
    session.probe.showTab(tab);
    QCOMPARE(session.probe.currentTabName(), tab);
    QCOMPARE(session.probe.userListShown(), isShown);
    QCOMPARE(session.probe.userList().isVisible(), isShown);
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.shareOfUserList(), isShown ? 20 : 0, WaitTimeout);
}

void TestUserList::isHiddenWhenItsTabCloses()
{
    WindowSession session;
    session.probe.openTabs({u"#c"_s});
    QVERIFY(session.probe.userListShown());
    session.probe.closeTab(1);
    QVERIFY(!session.probe.userListShown());
    QVERIFY(!session.probe.userList().isVisible());
    QCOMPARE(session.probe.shareOfUserList(), 0);
}

void TestUserList::takesAFifthOfTheWidth_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<QList<int>>("sizes");

    // QSplitter keeps the sum of its sizes only with a handle of no width.
    QTest::newRow("even") << 1000 << QList<int>{800, 200};
    QTest::newRow("a remainder") << 1004 << QList<int>{804, 200};
    QTest::newRow("nearly the next pixel") << 1009 << QList<int>{808, 201};
    QTest::newRow("hardly any width") << 4 << QList<int>{4, 0};
}

void TestUserList::takesAFifthOfTheWidth()
{
    QFETCH(const int, width);
    WindowSession session;
    session.probe.openTabs({u"#c"_s});
    QSplitter &splitter = session.probe.splitter();
    splitter.setHandleWidth(0);
    splitter.setFixedWidth(width);
    QTRY_COMPARE_WITH_TIMEOUT(splitter.width(), width, WaitTimeout);
    session.probe.adjustSplitterToRatio();
    QTEST(splitter.sizes(), "sizes");
}

void TestUserList::takesNoWidthWhileHidden()
{
    WindowSession session;
    QSplitter &splitter = session.probe.splitter();
    splitter.setSizes({500, 500});
    session.probe.adjustSplitterToRatio();
    QCOMPARE(splitter.sizes(), (QList<int>{splitter.width(), 0}));
}

void TestUserList::leavesTheRatioAlone_data()
{
    QTest::addColumn<bool>("isReady");
    QTest::addColumn<int>("width");

    QTest::newRow("not ready") << false << 1000;
    QTest::newRow("no width") << true << 0;
}

void TestUserList::leavesTheRatioAlone()
{
    QFETCH(const bool, isReady);
    QFETCH(const int, width);
    WindowSession session;
    session.probe.openTabs({u"#c"_s});
    QSplitter &splitter = session.probe.splitter();
    splitter.setHandleWidth(0);
    splitter.setFixedWidth(width);
    QTRY_COMPARE_WITH_TIMEOUT(splitter.width(), width, WaitTimeout);
    session.probe.splitterReady() = isReady;
    splitter.setSizes({width / 2, width / 2});
    const QByteArray before = splitter.saveState();
    session.probe.adjustSplitterToRatio();
    QCOMPARE(splitter.saveState(), before);
}

void TestUserList::showsHostileNicks_data()
{
    QTest::addColumn<QString>("nick");

    QTest::newRow("very long") << QString(10000, u'x');
    QTest::newRow("right to left") << u"\u202Eevil\u05D0\u05D1\u0627\u0628"_s;
    QTest::newRow("combining") << QString(u'a' + QString(200, u'\u0301'));
    QTest::newRow("control characters") << u"a\u0001\u0002\u001B[31m\u0007b"_s;
    QTest::newRow("markup") << u"<b>a</b><img/src='x'>&amp;"_s;
    QTest::newRow("outside the BMP") << u"a\uFFFD\U0001F60A"_s;
    QTest::newRow("a path") << u"../../etc/passwd"_s;
}

void TestUserList::showsHostileNicks()
{
    QFETCH(const QString, nick);
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#c"_s, u"me @"_s + nick));
    const QSize size = session.window.size();
    QCOMPARE(session.probe.users(), (QStringList{u'@' + nick, u"me"_s}));
    session.discardSent();
    session.probe.userList().grab();
    doubleClick(session.probe, u'@' + nick);
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#c"_s, nick}));
    QCOMPARE(session.probe.currentTabName(), nick);
    QCOMPARE(session.readSent(), QStringList{u"WATCH +"_s + nick});
    session.window.grab();
    QCOMPARE(session.window.size(), size);
}

QTEST_MAIN(TestUserList)
#include "tst_UserList.moc"
