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

// What may be left to scroll is the document's margin, which no cursor stands in.
bool isAtTheEnd(const QTextBrowser &view)
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

    void opensATabBehindTheShownOne();
    void opensATabInFrontOfServer();
    void opensAChannelWithItsTopicWidgets();
    void opensAConversationWithItsPeer();
    void watchesAPeerOnce();
    void watchesAPeerAgainOnlyIfItWasForgotten();
    void watchesNobodyForOtherTabs();
    void watchesWithoutAConnection();
    void showsNoTopicBeforeTheTabWasShown();
    void dropsLinesForATabWithoutAView();
    void bringsAReaderBackToTheEnd();
    void scrollsTabsThatAreNotShown();
    void writesTheLinesOfAReadInTheirOrder();
    void writesTheLinesOfTwoReadsInTheirOrder();
    void writesALineThatIsCutInTwoReads();
    void writesTheLinesOfAReadToTheirTabs();
    void writesTheLinesOfAReadThroughARename();
    void writesTheLinesOfAReadThatEndsTheSession();
    void writesTheRowsOfAReadForAClosedTab();

private:
    TemporaryStore store;
};

void TestMessageTabs::init()
{
    store.clear();
}

void TestMessageTabs::opensATabBehindTheShownOne()
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

void TestMessageTabs::opensATabInFrontOfServer()
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

void TestMessageTabs::watchesAPeerAgainOnlyIfItWasForgotten()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    QVERIFY(session.receive(u":Bob!u@h PRIVMSG me :one"_s));
    // Closing forgets the nick. One that is watched still, for whatever reason, is not asked for.
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

void TestMessageTabs::watchesWithoutAConnection()
{
    WindowSession session;
    session.probe.appendMessageToTab(u"Bob"_s, u"x"_s);
    QCOMPARE(session.probe.watchedNicks(), QSet<QString>{u"bob"_s});
    QVERIFY(session.probe.lines(Server).isEmpty()); // That nothing went out is no error.
}

void TestMessageTabs::showsNoTopicBeforeTheTabWasShown()
{
    WindowSession session;
    session.probe.appendMessageToTab(u"bob"_s, u"x"_s);
    session.probe.channelTopics().insert(u"#c"_s, u"topic"_s);
    session.probe.appendMessageToTab(u"#c"_s, u"x"_s);
    // The label is filled by name, and the name is known only once the tab stands.
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

void TestMessageTabs::bringsAReaderBackToTheEnd()
{
    WindowSession session;
    for (int number = 0; number < 60; ++number)
        session.probe.appendMessageToTab(u"#c"_s, QString::number(number), u"alice"_s);
    const QTextBrowser &view = *session.probe.tabs().value(u"#c"_s).chatView;
    QTRY_VERIFY_WITH_TIMEOUT(view.verticalScrollBar()->maximum() > 0, WaitTimeout);
    QTRY_VERIFY_WITH_TIMEOUT(isAtTheEnd(view), WaitTimeout);
    view.verticalScrollBar()->setValue(0);
    QVERIFY(!isAtTheEnd(view));
    session.probe.appendMessageToTab(u"#c"_s, u"last"_s, u"alice"_s);
    QTRY_VERIFY_WITH_TIMEOUT(isAtTheEnd(view), WaitTimeout);
    QVERIFY(view.textCursor().atEnd());
}

void TestMessageTabs::scrollsTabsThatAreNotShown()
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
    QTRY_VERIFY_WITH_TIMEOUT(isAtTheEnd(view), WaitTimeout);
}

void TestMessageTabs::writesTheLinesOfAReadInTheirOrder()
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

void TestMessageTabs::writesTheLinesOfTwoReadsInTheirOrder()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    // The second read comes while the first is being handled: a slot runs the loop meanwhile.
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
    // The loop within may come before or after the line that it was run for; nothing is lost, and
    // nothing is written twice.
    lines.sort();
    QCOMPARE(lines, (QStringList{u"a|one"_s, u"a|three"_s, u"a|two"_s, u"b|four"_s}));
}

void TestMessageTabs::writesALineThatIsCutInTwoReads()
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

void TestMessageTabs::writesTheLinesOfAReadThroughARename()
{
    WindowSession session;
    QVERIFY(session.registerAs(u"me"_s));
    session.server.sendBytes(":a!u@h PRIVMSG me :one\r\n:b!u@h PRIVMSG me :other\r\n"
                             ":a!u@h NICK b\r\n:b!u@h PRIVMSG me :two\r\n"_ba);
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.tabTexts(), (QStringList{Server, u"b"_s, u"b"_s}),
                              WaitTimeout);
    QCOMPARE(session.probe.lines(u"b"_s),
             (QStringList{u"a|one"_s, u"a|is now known as b"_s, u"b|two"_s}));
    // The conversation that lost its record keeps what was said in it.
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

void TestMessageTabs::writesTheRowsOfAReadForAClosedTab()
{
    // A tab that is closed before the read has ended takes its lines with it.
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
