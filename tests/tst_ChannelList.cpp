#include "IRCConnection.h"
#include "MyTabWidget.h"
#include "Ngircd.h"
#include "PlainClient.h"
#include "RequiredTools.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QTest>
#include <QTextBrowser>
#include <QTreeWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

const auto Server = u"Server"_s;
const auto List = u"List"_s;
const auto Loading = u"Server: loading..."_s;

} // namespace

class TestChannelList final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void requestsNothingBeforeRegistration();
    void requestsTheList_data();
    void requestsTheList();
    void laysOutTheTab();
    void laysOutTheTree();
    void setsTheThemesColours_data();
    void setsTheThemesColours();
    void listsAgainInTheSameTab();
    void keepsTheSearchTextForTheNextListing();
    void ignoresAConversationOfTheSameName();
    void showsTheSearchOnlyOnItsTab();
    void canBeClosedDuringAListing();
    void reopensAfterClosing();
    void canBeReopenedDuringAListing();
    void keepsItsRowsAfterADisconnect();
    void listsARealServer();

private:
    TemporaryStore store;
};

void TestChannelList::init()
{
    store.clear();
}

void TestChannelList::requestsNothingBeforeRegistration()
{
    WindowSession session;
    QVERIFY(session.acceptDialog(u"me"_s));
    QTRY_VERIFY_WITH_TIMEOUT(session.probe.connection().isConnected(), WaitTimeout);
    session.discardSent();
    const QStringList before = session.probe.lines(Server);
    session.choose(u"Channel &List"_s);
    QCOMPARE(session.readSent(), QStringList());
    QCOMPARE(session.probe.lines(Server), before);
    QCOMPARE(session.probe.tabTexts(), QStringList{Server});
    QCOMPARE(session.probe.listTree(), nullptr);
}

void TestChannelList::requestsTheList_data()
{
    QTest::addColumn<bool>("byMenu");

    QTest::newRow("by the menu") << true;
    QTest::newRow("by the command") << false;
}

void TestChannelList::requestsTheList()
{
    QFETCH(const bool, byMenu);
    WindowSession session;
    QVERIFY(session.registerAs());
    if (byMenu)
        session.choose(u"Channel &List"_s);
    else
        session.probe.typeLine(u"/list"_s);
    QCOMPARE(session.readSent(), QStringList{u"LIST"_s});
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, List}));
    QCOMPARE(session.probe.currentTabName(), List);
    QCOMPARE(session.probe.listInfoLabel()->text(), Loading);
    QCOMPARE(session.probe.listTree()->topLevelItemCount(), 0);
    QVERIFY(!session.probe.listReceiving());
}

void TestChannelList::laysOutTheTab()
{
    WindowSession session;
    const MainWindowProbe &probe = session.probe;
    probe.addListTab();
    QCOMPARE(probe.tabWidget().tabToolTip(1), List);
    // Requesting the list makes its tab current.
    QCOMPARE(probe.currentTabName(), Server);

    const MainWindow::TabInfo tab = probe.tabs().value(List);
    QCOMPARE(tab.page, probe.tabWidget().widget(1));
    QCOMPARE(tab.chatView, nullptr);
    QCOMPARE(tab.table, nullptr);
    QCOMPARE(tab.peerNick, QString());
    QCOMPARE(tab.topicBar, nullptr);
    QCOMPARE(tab.topicLabel, nullptr);
    QCOMPARE(tab.editTopicBtn, nullptr);
    QVERIFY(!tab.highlighted);

    const auto *layout = qobject_cast<QVBoxLayout *>(tab.page->layout());
    QVERIFY(layout != nullptr);
    QCOMPARE(layout->contentsMargins(), QMargins());
    QCOMPARE(layout->count(), 2);
    QCOMPARE(layout->itemAt(0)->widget(), probe.listInfoLabel());
    QCOMPARE(layout->itemAt(1)->widget(), probe.listTree());
    QCOMPARE(probe.listInfoLabel()->text(), Loading);
    QCOMPARE(probe.listInfoLabel()->styleSheet(), u"font-weight: bold; padding: 4px;"_s);
    QCOMPARE(probe.listInfoLabel()->textFormat(), Qt::PlainText);
}

void TestChannelList::laysOutTheTree()
{
    WindowSession session;
    session.probe.addListTab();
    const QTreeWidget &tree = *session.probe.listTree();
    QCOMPARE(tree.columnCount(), 3);
    QCOMPARE(tree.headerItem()->text(0), u"Channel"_s);
    QCOMPARE(tree.headerItem()->text(1), u"Users"_s);
    QCOMPARE(tree.headerItem()->text(2), u"Topic"_s);
    QVERIFY(!tree.rootIsDecorated());
    QVERIFY(tree.alternatingRowColors());
    QVERIFY(!tree.isSortingEnabled());
    QCOMPARE(tree.contextMenuPolicy(), Qt::CustomContextMenu);
    QVERIFY(tree.updatesEnabled());

    const QHeaderView &header = *tree.header();
    QCOMPARE(header.minimumHeight(), 30);
    QCOMPARE(header.styleSheet(), u"QHeaderView::section { padding: 4px; font-weight: bold; }"_s);
    QCOMPARE(header.sectionResizeMode(0), QHeaderView::Interactive);
    QCOMPARE(header.minimumSectionSize(), 120);
    QCOMPARE(header.sectionSize(0), 200);
}

void TestChannelList::setsTheThemesColours_data()
{
    QTest::addColumn<QString>("theme");
    QTest::addColumn<QString>("sheet");

    QTest::newRow("light") << u"light"_s << QString();
    QTest::newRow("glass") << u"glass"_s << QString();
    QTest::newRow("dark") << u"dark"_s
                          << u"QTreeWidget { background-color: #1E1E1E; color: #DDDDDD; "
                             "alternate-background-color: #252525; }QTreeWidget::item:hover "
                             "{ background-color: #3A3A3A; }QTreeWidget::item:selected "
                             "{ background-color: #505050; }"_s;
}

void TestChannelList::setsTheThemesColours()
{
    QFETCH(const QString, theme);
    WindowSession session;
    session.probe.applyTheme(theme);
    session.probe.addListTab();
    QTEST(session.probe.listTree()->styleSheet(), "sheet");
    session.probe.applyTheme(theme);
    QCOMPARE(session.probe.listTree()->styleSheet(), QString());
}

void TestChannelList::listsAgainInTheSameTab()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    session.choose(u"Channel &List"_s);
    QVERIFY(session.receiveAll({u":irc.test 321 me :Channels"_s, u":irc.test 322 me #a 5 :One"_s,
                                u":irc.test 323 me :End"_s}));
    QCOMPARE(session.probe.listInfoLabel()->text(), u"irc.test: 1 channels, 5 users"_s);
    const QWidget *page = session.probe.tabs().value(List).page;
    session.probe.showTab(Server);
    session.probe.typeLine(u"/list"_s);
    QCOMPARE(session.probe.listTree()->topLevelItemCount(), 0);
    QCOMPARE(session.probe.listInfoLabel()->text(), Loading);
    QCOMPARE(session.probe.currentTabName(), List);
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, List}));
    QCOMPARE(session.probe.tabs().value(List).page, page);
    QCOMPARE(session.readSent(), (QStringList{u"LIST"_s, u"LIST"_s}));
}

void TestChannelList::keepsTheSearchTextForTheNextListing()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    session.probe.listSearchEdit().setText(u"linux"_s);
    session.choose(u"Channel &List"_s);
    QCOMPARE(session.probe.listSearchEdit().text(), u"linux"_s);
    QVERIFY(session.receive(u":irc.test 322 me #music 5 :Songs"_s));
    // The search is applied when its text changes, not to new rows.
    QCOMPARE(session.probe.listColumn(0), QStringList{u"#music"_s});
}

void TestChannelList::ignoresAConversationOfTheSameName()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receive(u":List!u@h PRIVMSG me :hello"_s));
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, List}));
    session.choose(u"Channel &List"_s);
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, List}));
    QCOMPARE(session.probe.listTree(), nullptr);
    QCOMPARE(session.probe.listInfoLabel(), nullptr);
    QVERIFY(session.receiveAll({u":irc.test 321 me :Channels"_s, u":irc.test 322 me #a 5 :One"_s,
                                u":irc.test 323 me :End"_s}));
    session.probe.listSearchEdit().setText(u"a"_s);
    QCOMPARE(session.probe.lines(List), QStringList{u"List|hello"_s});
    QCOMPARE(session.probe.lastLine(Server), u"*** Channel list complete."_s);
}

void TestChannelList::showsTheSearchOnlyOnItsTab()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    session.choose(u"Channel &List"_s);
    QCOMPARE(session.probe.mainStack().currentWidget(), &session.probe.listSearchEdit());
    QVERIFY(session.probe.listTree()->isVisible());
    QVERIFY(!session.probe.emojiButton().isVisibleTo(&session.window));
    session.probe.showTab(Server);
    QCOMPARE(session.probe.mainStack().currentIndex(), 0);
}

void TestChannelList::canBeClosedDuringAListing()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    session.choose(u"Channel &List"_s);
    QVERIFY(session.receiveAll({u":irc.test 321 me :Channels"_s, u":irc.test 322 me #a 5 :One"_s}));
    const QTreeWidget *tree = session.probe.listTree();
    session.probe.closeTab(1);
    QCOMPARE(session.probe.listTree(), nullptr);
    QCOMPARE(session.probe.listInfoLabel(), nullptr);
    QVERIFY(session.receive(u":irc.test 322 me #late 5 :Two"_s));
    QVERIFY(session.probe.listReceiving());
    session.probe.listSearchEdit().setText(u"a"_s);
    QVERIFY(session.receive(u":irc.test 323 me :End"_s));
    QCOMPARE(tree->topLevelItemCount(), 1);
    QVERIFY(!session.probe.listReceiving());
    QCOMPARE(session.probe.tabTexts(), QStringList{Server});
    QCOMPARE(session.probe.lastLine(Server), u"*** Channel list complete."_s);
}

void TestChannelList::reopensAfterClosing()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    session.choose(u"Channel &List"_s);
    session.probe.closeTab(1);
    session.choose(u"Channel &List"_s);
    QVERIFY(session.receiveAll({u":irc.test 321 me :Channels"_s, u":irc.test 322 me #a 5 :One"_s,
                                u":irc.test 323 me :End"_s}));
    QCOMPARE(session.probe.listColumn(0), QStringList{u"#a"_s});
    QVERIFY(session.probe.listTree()->isVisible());
}

void TestChannelList::canBeReopenedDuringAListing()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    session.choose(u"Channel &List"_s);
    QVERIFY(session.receiveAll({u":irc.test 321 me :Channels"_s, u":irc.test 322 me #a 5 :One"_s}));
    session.probe.closeTab(1);
    session.choose(u"Channel &List"_s);
    QVERIFY(session.receiveAll({u":irc.test 322 me #b 6 :Two"_s, u":irc.test 323 me :End"_s}));
    QCOMPARE(session.probe.listColumn(0), QStringList{u"#b"_s});
    // The server sent two.
    QCOMPARE(session.probe.listInfoLabel()->text(), u"irc.test: 2 channels, 11 users"_s);
    QVERIFY(session.probe.listTree()->updatesEnabled());
}

void TestChannelList::keepsItsRowsAfterADisconnect()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    session.choose(u"Channel &List"_s);
    QVERIFY(session.receiveAll({u":irc.test 321 me :Channels"_s, u":irc.test 322 me #a 5 :One"_s,
                                u":irc.test 323 me :End"_s}));
    session.server.close();
    QTRY_VERIFY_WITH_TIMEOUT(!session.probe.connection().isConnected(), WaitTimeout);
    QCOMPARE(session.probe.listColumn(0), QStringList{u"#a"_s});
    QCOMPARE(session.probe.listInfoLabel()->text(), u"irc.test: 1 channels, 5 users"_s);
    session.probe.listSearchEdit().setText(u"nothing"_s);
    QCOMPARE(session.probe.listColumn(0), QStringList());
}

void TestChannelList::listsARealServer()
{
    REQUIRE_TOOLS(u"ngircd"_s);
    Ngircd ngircd;
    QVERIFY(ngircd.start());
    PlainClient bob;
    QVERIFY(bob.registerAt(ngircd.port(), u"bob"_s));
    bob.send(u"JOIN #velmora"_s);
    bob.send(u"JOIN #Ünder&over"_s);
    bob.send(u"TOPIC #velmora :\u00030,4Alle über <b>Velmora</b>"_s);
    QVERIFY(bob.waitFor(u"TOPIC #velmora"_s));
    PlainClient carol;
    QVERIFY(carol.registerAt(ngircd.port(), u"carol"_s));
    carol.send(u"JOIN #velmora"_s);
    QVERIFY(carol.waitFor(u" 366 "_s));

    WindowSession session;
    IRCConnection &connection = session.probe.connection();
    connection.connectToServer(u"127.0.0.1"_s, ngircd.port(), u"me"_s, u"Me"_s, false);
    QTRY_VERIFY_WITH_TIMEOUT(connection.isRegistered(), WaitTimeout);
    session.choose(u"Channel &List"_s);
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lastLine(Server), u"*** Channel list complete."_s,
                              WaitTimeout);
    QCOMPARE(session.probe.listColumn(0).mid(0, 2), (QStringList{u"#velmora"_s, u"#Ünder&over"_s}));
    QCOMPARE(session.probe.listColumn(1).mid(0, 2), (QStringList{u"2"_s, u"1"_s}));
    QCOMPARE(session.probe.listColumn(2).value(0), u"\u00030,4Alle über <b>Velmora</b>"_s);
    QCOMPARE(session.probe.listInfoLabel()->text(),
             u"%1: %2 channels, 3 users"_s.arg(
                     ngircd.name(), QString::number(session.probe.listColumn(0).size())));
    emit session.probe.listTree()->itemDoubleClicked(session.probe.listTree()->topLevelItem(0), 0);
    QVERIFY(bob.waitFor(u":me!"_s));
    QCOMPARE(session.probe.currentTabName(), u"#velmora"_s);
}

QTEST_MAIN(TestChannelList)
#include "tst_ChannelList.moc"
