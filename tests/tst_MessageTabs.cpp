#include "IRCConnection.h"
#include "MyTabWidget.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTest>
#include <QTextBrowser>
#include <QTextTable>
#include <QTimer>
#include <QtMath>

using namespace Qt::StringLiterals;

namespace {

const auto Server = u"Server"_s;

const QTextTable &tableOf(const MainWindowProbe &probe, const QString &tabName)
{
    return *probe.tabs().value(tabName).table;
}

// The document's margin may be left to scroll: no cursor can be in it.
bool isAtEnd(const QTextBrowser &view)
{
    const int left = view.verticalScrollBar()->maximum() - view.verticalScrollBar()->value();
    return left <= qCeil(view.document()->documentMargin());
}

} // namespace

class TestMessageTabs final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void opensATabInTheBackground();
    void showsATabOpenedFromServer();
    void opensAChannelWithItsTopicWidgets();
    void opensAConversationWithItsPeer();
    void watchesAPeerOnce();
    void watchesAPeerAgainOnlyIfForgotten();
    void watchesNobodyForOtherTabs();
    void recordsAWatchWhileDisconnected();
    void showsNoTopicUntilTheTabIsCurrent();
    void dropsLinesForATabWithoutAView();
    void scrollsToTheEndOnANewLine();
    void scrollsBackgroundTabs();
    void writesTheLinesOfAReadInOrder();
    void writesTheLinesOfTwoReadsInOrder();
    void writesALineSplitAcrossTwoReads();
    void writesTheLinesOfAReadToTheirTabs();
    void writesTheLinesOfAReadWithANickChange();
    void writesTheLinesOfAReadThatEndsTheSession();
    void dropsTheRowsOfAReadForAClosedTab();

private:
    TemporaryStore store;
};

void TestMessageTabs::init()
{
    store.clear();
}

void TestMessageTabs::opensATabInTheBackground()
{
    WindowSession session;
    session.probe.appendMessageToTab(u"#a"_s, u"x"_s);
    session.probe.appendMessageToTab(u"#b"_s, u"x"_s);
    session.probe.appendMessageToTab(u"bob"_s, u"x"_s);
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#a"_s, u"#b"_s, u"bob"_s}));
    QCOMPARE(session.probe.currentTabName(), u"#a"_s);
    QCOMPARE(session.probe.tabWidget().currentIndex(), 1);
    QVERIFY(session.probe.closeButton(3) != nullptr);
}

void TestMessageTabs::showsATabOpenedFromServer()
{
    WindowSession session;
    session.probe.appendMessageToTab(u"bob"_s, u"x"_s);
    QCOMPARE(session.probe.currentTabName(), u"bob"_s);
    QCOMPARE(session.probe.tabWidget().currentIndex(), 1);
    session.probe.showTab(Server);
    session.probe.appendMessageToTab(u"bob"_s, u"y"_s); // Not a new tab.
    QCOMPARE(session.probe.currentTabName(), Server);
    session.probe.appendMessageToTab(u"#c"_s, u"x"_s);
    QCOMPARE(session.probe.currentTabName(), u"#c"_s);
    QCOMPARE(session.probe.tabWidget().currentIndex(), 2);
}

void TestMessageTabs::opensAChannelWithItsTopicWidgets()
{
    WindowSession session;
    session.probe.appendMessageToTab(u"#c"_s, u"x"_s);
    const MainWindow::TabInfo tab = session.probe.tabs().value(u"#c"_s);
    QCOMPARE(tab.page, session.probe.tabWidget().widget(1));
    QCOMPARE(session.probe.tabWidget().tabToolTip(1), u"#c"_s);
    QCOMPARE(tab.chatView, tab.page->findChild<QTextBrowser *>());
    QCOMPARE(tab.topicBar, tab.page->findChild<QWidget *>(u"topicBar"_s));
    QCOMPARE(tab.topicLabel, tab.page->findChild<QLabel *>(u"topicLabel"_s));
    QCOMPARE(tab.editTopicBtn, tab.page->findChild<QPushButton *>(u"editTopicBtn"_s));
    QVERIFY(tab.topicBar != nullptr && tab.topicLabel != nullptr && tab.editTopicBtn != nullptr);
    QCOMPARE(tab.peerNick, QString());
}

void TestMessageTabs::opensAConversationWithItsPeer()
{
    WindowSession session;
    session.probe.appendMessageToTab(u"Bob"_s, u"x"_s);
    const MainWindow::TabInfo tab = session.probe.tabs().value(u"Bob"_s);
    QCOMPARE(tab.peerNick, u"Bob"_s);
    QCOMPARE(tab.topicBar, nullptr);
    QCOMPARE(session.probe.tabWidget().tabToolTip(1), u"Bob"_s);
}

void TestMessageTabs::watchesAPeerOnce()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.receive(u":Bob!u@h PRIVMSG me :one"_s));
    QVERIFY(session.receive(u":Bob!u@h PRIVMSG me :two"_s));
    QVERIFY(session.receive(u":BOB!u@h PRIVMSG me :three"_s));
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"Bob"_s, u"BOB"_s}));
    QCOMPARE(session.readSent(), QStringList{u"WATCH +Bob"_s});
    QCOMPARE(session.probe.watchedNicks(), QSet<QString>{u"bob"_s});
}

void TestMessageTabs::watchesAPeerAgainOnlyIfForgotten()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.receive(u":Bob!u@h PRIVMSG me :one"_s));
    // Closing forgets the nick. A nick that is still recorded is not watched again.
    session.probe.closeTab(1);
    session.probe.watchedNicks().insert(u"bob"_s);
    QVERIFY(session.receive(u":BOB!u@h PRIVMSG me :two"_s));
    session.probe.closeTab(1);
    QVERIFY(session.receive(u":boB!u@h PRIVMSG me :three"_s));
    QCOMPARE(session.readSent(),
             (QStringList{u"WATCH +Bob"_s, u"WATCH -Bob"_s, u"WATCH -BOB"_s, u"WATCH +boB"_s}));
}

void TestMessageTabs::watchesNobodyForOtherTabs()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.receive(u":Bob!u@h PRIVMSG #c :one"_s));
    QVERIFY(session.receive(u":irc.test NOTICE * :hello"_s));
    QCOMPARE(session.readSent(), QStringList());
    QVERIFY(session.probe.watchedNicks().isEmpty());
}

void TestMessageTabs::recordsAWatchWhileDisconnected()
{
    WindowSession session;
    session.probe.appendMessageToTab(u"Bob"_s, u"x"_s);
    QCOMPARE(session.probe.watchedNicks(), QSet<QString>{u"bob"_s});
    QVERIFY(session.probe.lines(Server).isEmpty()); // No error, though nothing was sent.
}

void TestMessageTabs::showsNoTopicUntilTheTabIsCurrent()
{
    WindowSession session;
    session.probe.appendMessageToTab(u"bob"_s, u"x"_s);
    session.probe.channelTopics().insert(u"#c"_s, u"topic"_s);
    session.probe.appendMessageToTab(u"#c"_s, u"x"_s);
    // The label is found by the tab's record, which is added after the page.
    QCOMPARE(session.probe.tabs().value(u"#c"_s).topicLabel->text(), QString());
    session.probe.showTab(u"#c"_s);
    QCOMPARE(session.probe.tabs().value(u"#c"_s).topicLabel->text(), u"topic"_s);
}

void TestMessageTabs::dropsLinesForATabWithoutAView()
{
    WindowSession session;
    session.probe.addListTab();
    QTest::ignoreMessage(
            QtWarningMsg,
            QRegularExpression(u"^appendMessageToTab: chatView is null for tab \"?List\"?$"_s));
    session.probe.appendMessageToTab(u"List"_s, u"x"_s, u"alice"_s);
    QCOMPARE(session.probe.tabs().value(u"List"_s).table, nullptr);
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"List"_s}));
    QCOMPARE(session.probe.currentTabName(), Server);
    QVERIFY(session.probe.lines(Server).isEmpty());
}

void TestMessageTabs::scrollsToTheEndOnANewLine()
{
    WindowSession session;
    for (int number = 0; number < 60; ++number)
        session.probe.appendMessageToTab(u"#c"_s, QString::number(number), u"alice"_s);
    const QTextBrowser &view = *session.probe.tabs().value(u"#c"_s).chatView;
    QTRY_VERIFY_WITH_TIMEOUT(view.verticalScrollBar()->maximum() > 0, WaitTimeout);
    QTRY_VERIFY_WITH_TIMEOUT(isAtEnd(view), WaitTimeout);
    view.verticalScrollBar()->setValue(0);
    QVERIFY(!isAtEnd(view));
    session.probe.appendMessageToTab(u"#c"_s, u"last"_s, u"alice"_s);
    QTRY_VERIFY_WITH_TIMEOUT(isAtEnd(view), WaitTimeout);
    QVERIFY(view.textCursor().atEnd());
}

void TestMessageTabs::scrollsBackgroundTabs()
{
    WindowSession session;
    for (int number = 0; number < 60; ++number)
        session.probe.appendMessageToTab(u"#c"_s, QString::number(number), u"alice"_s);
    const QTextBrowser &view = *session.probe.tabs().value(u"#c"_s).chatView;
    QTRY_VERIFY_WITH_TIMEOUT(view.verticalScrollBar()->maximum() > 0, WaitTimeout);
    view.verticalScrollBar()->setValue(0);
    session.probe.showTab(Server);
    session.probe.appendMessageToTab(u"#c"_s, u"last"_s, u"alice"_s);
    QVERIFY(view.textCursor().atEnd());
    session.probe.showTab(u"#c"_s);
    QTRY_VERIFY_WITH_TIMEOUT(isAtEnd(view), WaitTimeout);
}

void TestMessageTabs::writesTheLinesOfAReadInOrder()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QByteArray read;
    QStringList expected;
    for (int number = 0; number < 50; ++number) {
        read += ":alice!u@h PRIVMSG #c :" + QByteArray::number(number) + "\r\n";
        expected.append(u"alice|"_s + QString::number(number));
    }
    session.server.sendBytes(read);
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lines(u"#c"_s), expected, WaitTimeout);
    QCOMPARE(tableOf(session.probe, u"#c"_s).rows(), 51);
}

void TestMessageTabs::writesTheLinesOfTwoReadsInOrder()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    // The second read arrives in a nested event loop of a slot that handles the first.
    bool nested = false;
    connect(&session.probe.connection(), &IRCConnection::rawMessageReceived, &session.window,
            [&](const QString &line) {
                if (!line.endsWith(u"two"_s) || nested)
                    return;
                nested = true;
                session.server.sendBytes(":b!u@h PRIVMSG #c :four\r\n:b!u@h PRIVMSG #d :x\r\n"_ba);
                QEventLoop loop;
                QTimer::singleShot(0, &loop, &QEventLoop::quit);
                loop.exec();
            });
    session.server.sendBytes(":a!u@h PRIVMSG #c :one\r\n:a!u@h PRIVMSG #c :two\r\n"
                             ":a!u@h PRIVMSG #c :three\r\n"_ba);
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lines(u"#d"_s), QStringList{u"b|x"_s}, WaitTimeout);
    QVERIFY(nested);
    QStringList lines = session.probe.lines(u"#c"_s);
    // The nested read may be written before or after the line whose slot ran the loop; no line is
    // lost or written twice.
    lines.sort();
    QCOMPARE(lines, (QStringList{u"a|one"_s, u"a|three"_s, u"a|two"_s, u"b|four"_s}));
}

void TestMessageTabs::writesALineSplitAcrossTwoReads()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    session.server.sendBytes(":a!u@h PRIVMSG #c :one\r\n:a!u@h PRIV"_ba);
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lines(u"#c"_s), QStringList{u"a|one"_s}, WaitTimeout);
    session.server.sendBytes("MSG #c :two\r\n"_ba);
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lines(u"#c"_s), (QStringList{u"a|one"_s, u"a|two"_s}),
                              WaitTimeout);
}

void TestMessageTabs::writesTheLinesOfAReadToTheirTabs()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    session.server.sendBytes(":a!u@h PRIVMSG #c :one\r\n:irc.test NOTICE * :hello\r\n"
                             ":a!u@h PRIVMSG me :two\r\n:a!u@h PRIVMSG #c :three\r\n"_ba);
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lines(u"#c"_s), (QStringList{u"a|one"_s, u"a|three"_s}),
                              WaitTimeout);
    QCOMPARE(session.probe.lines(u"a"_s), QStringList{u"a|two"_s});
    QCOMPARE(session.probe.lines(Server).last(), u"<< :irc.test NOTICE * :hello"_s);
}

void TestMessageTabs::writesTheLinesOfAReadWithANickChange()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    session.server.sendBytes(":a!u@h PRIVMSG me :one\r\n:b!u@h PRIVMSG me :other\r\n"
                             ":a!u@h NICK b\r\n:b!u@h PRIVMSG me :two\r\n"_ba);
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.tabTexts(), (QStringList{Server, u"b"_s, u"b"_s}),
                              WaitTimeout);
    QCOMPARE(session.probe.lines(u"b"_s),
             (QStringList{u"a|one"_s, u"a|is now known as b"_s, u"b|two"_s}));
    // The page whose record was replaced keeps its lines.
    const auto *view = session.probe.tabWidget().widget(2)->findChild<QTextBrowser *>();
    QVERIFY(view->toPlainText().contains(u"other"_s));
}

void TestMessageTabs::writesTheLinesOfAReadThatEndsTheSession()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    connect(&session.probe.connection(), &IRCConnection::rawMessageReceived, &session.window,
            [&session](const QString &line) {
                if (line.endsWith(u"two"_s))
                    session.probe.connection().disconnectFromServer();
            });
    session.server.sendBytes(":a!u@h PRIVMSG #c :one\r\n:a!u@h PRIVMSG #c :two\r\n"
                             ":a!u@h PRIVMSG #c :three\r\n"_ba);
    QTRY_VERIFY_WITH_TIMEOUT(session.probe.lines(Server).contains(u"*** Disconnected."_s),
                             WaitTimeout);
    QCOMPARE(session.probe.lines(u"#c"_s), (QStringList{u"a|one"_s, u"a|two"_s, u"a|three"_s}));
}

void TestMessageTabs::dropsTheRowsOfAReadForAClosedTab()
{
    // A tab that closes before the read ends loses its pending rows.
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    connect(&session.probe.connection(), &IRCConnection::rawMessageReceived, &session.window,
            [&session](const QString &line) {
                if (line.endsWith(u"two"_s))
                    session.probe.closeTab(1);
            });
    session.server.sendBytes(":a!u@h PRIVMSG #c :one\r\n:a!u@h PRIVMSG #c :two\r\n"_ba);
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lines(u"#c"_s), QStringList{u"a|two"_s}, WaitTimeout);
    QCOMPARE(session.probe.tabTexts(), (QStringList{Server, u"#c"_s}));
}

QTEST_MAIN(TestMessageTabs)
#include "tst_MessageTabs.moc"
