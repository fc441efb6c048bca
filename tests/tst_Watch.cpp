#include "IRCConnection.h"
#include "InspIrcd.h"
#include "Interruptions.h"
#include "LoggingProxy.h"
#include "Ngircd.h"
#include "PlainClient.h"
#include "RecordedLines.h"
#include "RequiredTools.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

const QSet<QString> Bob{u"bob"_s};

const auto IsBack = u"bob|is back online"_s;
const auto HasQuit = u"bob|quit (WATCH)"_s;

// A server's status line about a watched nick. "1" as `presence` means online.
QString status(const QString &nick, const QString &presence)
{
    return u":irc.test 604 me %1 ident host %2 :is online"_s.arg(nick, presence);
}

// A session of "me" and a private conversation with bob.
bool begin(WindowSession &session)
{
    return session.registerAs() && session.receive(u":bob!u@h PRIVMSG me :hi"_s)
           && session.readSent() == QStringList{u"WATCH +bob"_s};
}

} // namespace

// Sequences of WATCH requests, and the replies. The tests of tabs cover single requests.
class TestWatch final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void watchesAgainAfterTheTabWasClosed();
    void watchesOnceForTwoSpellings();
    void watchesNobodyAgainAfterAReconnect();
    void keepsWatchingTheOldNick();
    void remembersAWatchRequestedWhileDisconnected();

    void showsAStatus_data();
    void showsAStatus();
    void showsAStatusInGreyWithTheTabsName();
    void showsNoStatusWithoutAConversation();
    void followsTheConversationToANewNick();
    void survivesOddStatuses_data();
    void survivesOddStatuses();
    void readsARecordedWatch();

    void watchesOnInspIrcd();
    void showsAnAbsentNickOnInspIrcd();
    void mixesJoinsWithWatching();
    void worksOnAServerWithoutWatch();

private:
    TemporaryStore store;
};

void TestWatch::init()
{
    store.clear();
}

void TestWatch::watchesAgainAfterTheTabWasClosed()
{
    WindowSession session;
    QVERIFY(begin(session));
    session.probe.closeTab(1);
    QCOMPARE(session.readSent(), QStringList{u"WATCH -bob"_s});
    session.probe.typeLine(u"/msg bob hello"_s);
    QCOMPARE(session.readSent(), (QStringList{u"PRIVMSG bob :hello"_s, u"WATCH +bob"_s}));
    QCOMPARE(session.probe.watchedNicks(), Bob);
}

void TestWatch::watchesOnceForTwoSpellings()
{
    WindowSession session;
    QVERIFY(begin(session));
    QVERIFY(session.receive(u":BOB!u@h PRIVMSG me :hi"_s));
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"bob"_s, u"BOB"_s}));
    QCOMPARE(session.readSent(), QStringList());
    // Closing either of the two ends the watch.
    session.probe.closeTab(2);
    QCOMPARE(session.readSent(), QStringList{u"WATCH -BOB"_s});
    session.probe.closeTab(1);
    QCOMPARE(session.readSent(), QStringList());
}

void TestWatch::watchesNobodyAgainAfterAReconnect()
{
    WindowSession session;
    QVERIFY(begin(session));
    QVERIFY(Interruptions::dropLink(session));
    QVERIFY(session.probe.watchedNicks().isEmpty());
    QVERIFY(session.registerAs());
    QVERIFY(session.receive(u":bob!u@h PRIVMSG me :here still"_s));
    QCOMPARE(session.readSent(), QStringList());
    QVERIFY(session.probe.watchedNicks().isEmpty());

    session.probe.closeTab(1);
    QCOMPARE(session.readSent(), QStringList());
    QVERIFY(session.receive(u":bob!u@h PRIVMSG me :and again"_s));
    QCOMPARE(session.readSent(), QStringList{u"WATCH +bob"_s});
}

void TestWatch::keepsWatchingTheOldNick()
{
    WindowSession session;
    QVERIFY(begin(session));
    QVERIFY(session.receive(u":bob!u@h NICK rob"_s));
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"rob"_s}));
    session.probe.closeTab(1);
    QCOMPARE(session.readSent(), QStringList());
    QCOMPARE(session.probe.watchedNicks(), Bob);
}

void TestWatch::remembersAWatchRequestedWhileDisconnected()
{
    WindowSession session;
    session.probe.openTabs({u"bob"_s});
    QCOMPARE(session.probe.watchedNicks(), Bob);
    QVERIFY(session.registerAs());
    QCOMPARE(session.readSent(), QStringList());
    session.probe.closeTab(1);
    QCOMPARE(session.readSent(), QStringList{u"WATCH -bob"_s});
}

void TestWatch::showsAStatus_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("shown"); // Nothing if empty.

    for (const char *numeric : {"600", "601", "602", "604", "605", "606"}) {
        const QString start = u":irc.test %1 me bob ident host "_s.arg(QLatin1StringView(numeric));
        QTest::addRow("%s with 1", numeric) << QString(start + u"1 :text"_s) << IsBack;
        QTest::addRow("%s with 0", numeric) << QString(start + u"0 :text"_s) << HasQuit;
        QTest::addRow("%s with a time", numeric) << QString(start + u"1795307363 :x"_s) << HasQuit;
    }
    QTest::newRow("one more parameter")
            << u":irc.test 604 me bob ident host 1 2 :is online"_s << IsBack;
    QTest::newRow("no text") << u":irc.test 604 me bob ident host 1"_s << IsBack;
    QTest::newRow("a leading zero") << status(u"bob"_s, u"01"_s) << HasQuit;
    QTest::newRow("more than one") << status(u"bob"_s, u"11"_s) << HasQuit;
    QTest::newRow("less than zero") << status(u"bob"_s, u"-1"_s) << HasQuit;
    QTest::newRow("an empty parameter") << u":irc.test 604 me bob ident host  1 :x"_s << HasQuit;
    QTest::newRow("another case") << status(u"BOB"_s, u"1"_s) << IsBack;
    QTest::newRow("1 as the text") << u":irc.test 604 me bob ident host :1"_s << QString();
    QTest::newRow("too short") << u":irc.test 604 me bob 1 :is online"_s << QString();
    QTest::newRow("nothing but a nick") << u":irc.test 604 me bob"_s << QString();
    QTest::newRow("nothing at all") << u":irc.test 604 me"_s << QString();
    QTest::newRow("another nick") << status(u"bo"_s, u"1"_s) << QString();
    QTest::newRow("another numeric")
            << u":irc.test 603 me bob ident host 1 :is online"_s << QString();
}

void TestWatch::showsAStatus()
{
    QFETCH(const QString, line);
    QFETCH(const QString, shown);

    WindowSession session;
    QVERIFY(begin(session));
    QVERIFY(session.receive(line));
    QStringList lines{u"bob|hi"_s};
    if (!shown.isEmpty())
        lines.append(shown);
    QCOMPARE(session.probe.lines(u"bob"_s), lines);
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"bob"_s}));
    QCOMPARE(session.readSent(), QStringList());
    QCOMPARE(session.probe.watchedNicks(), Bob);
}

void TestWatch::showsAStatusInGreyWithTheTabsName()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receive(u":Bob!u@h PRIVMSG me :hi"_s));
    QVERIFY(session.receive(status(u"bOB"_s, u"1"_s)));
    QCOMPARE(session.probe.lastLine(u"Bob"_s), u"Bob|is back online"_s);
    QCOMPARE(session.probe.lastTextColor(u"Bob"_s), QColor(136, 136, 136));
}

void TestWatch::showsNoStatusWithoutAConversation()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me bob"_s));
    session.probe.addListTab();
    const QStringList server = session.probe.lines(u"Server"_s);
    const QStringList channel = session.probe.lines(u"#a"_s);
    for (const QString &nick : {u"bob"_s, u"#a"_s, u"Server"_s, u"List"_s, u"me"_s, QString()}) {
        QVERIFY(session.receive(status(nick, u"1"_s)));
        QVERIFY(session.receive(status(nick, u"0"_s)));
    }
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s, u"List"_s}));
    QCOMPARE(session.probe.lines(u"Server"_s), server);
    QCOMPARE(session.probe.lines(u"#a"_s), channel);
}

void TestWatch::followsTheConversationToANewNick()
{
    WindowSession session;
    QVERIFY(begin(session));
    QVERIFY(session.receive(u":bob!u@h NICK rob"_s));
    const QStringList before = session.probe.lines(u"rob"_s);
    QVERIFY(session.receive(status(u"bob"_s, u"0"_s)));
    QCOMPARE(session.probe.lines(u"rob"_s), before);
    QVERIFY(session.receive(status(u"rob"_s, u"1"_s)));
    QCOMPARE(session.probe.lastLine(u"rob"_s), u"rob|is back online"_s);
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"rob"_s}));
}

void TestWatch::survivesOddStatuses_data()
{
    QTest::addColumn<QString>("nick");

    QTest::newRow("long") << QString(10'000, u'n');
    QTest::newRow("markup") << u"<b>&amp;</b>"_s;
    QTest::newRow("control characters") << u"b\u0002\u000304\u001b\u0001b"_s;
    QTest::newRow("right to left") << u"\u202Eb\u05D0\u2066"_s;
    QTest::newRow("placeholders") << u"%1%2"_s;
    QTest::newRow("outside the BMP") << u"\U0001F642"_s;
}

void TestWatch::survivesOddStatuses()
{
    QFETCH(const QString, nick);

    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.receive(u':' + nick + u"!u@h PRIVMSG me :hi"_s));
    QCOMPARE(session.readSent(), QStringList{QString(u"WATCH +"_s + nick)});
    QVERIFY(session.receive(status(nick, u"1"_s)));
    QVERIFY(session.receive(status(nick, u"9"_s.repeated(1000))));
    const QStringList lines = session.probe.lines(nick);
    QCOMPARE(lines.size(), 3);
    QVERIFY(lines.at(1).endsWith(u"|is back online"_s));
    QVERIFY(lines.at(2).endsWith(u"|quit (WATCH)"_s));
    session.probe.closeTab(1);
    QCOMPARE(session.readSent(), QStringList{QString(u"WATCH -"_s + nick)});
}

// This server sends a time instead of the "1", so every status shows as a quit.
void TestWatch::readsARecordedWatch()
{
    const QStringList recorded = recordedLines(u"inspircd-watch.txt"_s);
    QCOMPARE(recorded.size(), 8);
    WindowSession session;
    QVERIFY(session.registerAs(u"alice"_s));
    QVERIFY(session.receive(u":bob!u@h PRIVMSG alice :hi"_s));
    QVERIFY(session.receiveAll(recorded));
    QCOMPARE(session.probe.lines(u"bob"_s),
             (QStringList{u"bob|hi"_s, HasQuit, HasQuit, HasQuit, HasQuit, HasQuit}));
    // The other numerics are shown raw.
    QCOMPARE(session.probe.lines(u"Server"_s).last(3),
             (QStringList{recorded.at(3), recorded.at(4), recorded.at(7)}));
}

void TestWatch::watchesOnInspIrcd()
{
    REQUIRE_TOOLS(u"inspircd"_s);
    InspIrcd server;
    QVERIFY(server.start());
    const LoggingProxy wire(server.port(), LoggingProxy::Joins::Unchanged);
    auto bob = std::make_unique<PlainClient>();
    QVERIFY(bob->registerAt(server.port(), u"bob"_s));
    WindowSession session;
    QVERIFY(session.registerAt(wire.port(), u"alice"_s));

    bob->send(u"PRIVMSG alice :hi"_s);
    QVERIFY(wire.waitForProgram(u"WATCH +bob"_s));
    QVERIFY(wire.waitForServer(u" 604 alice bob "_s));
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lines(u"bob"_s), (QStringList{u"bob|hi"_s, HasQuit}),
                              WaitTimeout);

    bob->send(u"QUIT :bye"_s);
    QVERIFY(wire.waitForServer(u" 601 alice bob "_s));
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lines(u"bob"_s),
                              (QStringList{u"bob|hi"_s, HasQuit, HasQuit}), WaitTimeout);

    bob = std::make_unique<PlainClient>();
    QVERIFY(bob->registerAt(server.port(), u"bob"_s));
    QVERIFY(wire.waitForServer(u" 600 alice bob "_s));
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lines(u"bob"_s),
                              (QStringList{u"bob|hi"_s, HasQuit, HasQuit, HasQuit}), WaitTimeout);

    session.probe.closeTab(1);
    QVERIFY(wire.waitForProgram(u"WATCH -bob"_s));
    QVERIFY(wire.waitForServer(u" 602 alice bob "_s));
    session.probe.typeLine(u"/msg bob once more"_s);
    QVERIFY(wire.waitForProgram(u"WATCH +bob"_s, 2));
    QVERIFY(bob->waitFor(u" PRIVMSG bob :once more"_s));
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lines(u"bob"_s),
                              (QStringList{u"alice|once more"_s, HasQuit}), WaitTimeout);
    QCOMPARE(wire.lines().filter(u">> WATCH "_s),
             (QStringList{u">> WATCH +bob"_s, u">> WATCH -bob"_s, u">> WATCH +bob"_s}));
}

void TestWatch::showsAnAbsentNickOnInspIrcd()
{
    REQUIRE_TOOLS(u"inspircd"_s);
    InspIrcd server;
    QVERIFY(server.start());
    const LoggingProxy wire(server.port(), LoggingProxy::Joins::Unchanged);
    WindowSession session;
    QVERIFY(session.registerAt(wire.port(), u"alice"_s));
    session.probe.typeLine(u"/msg bob anybody there?"_s);
    QVERIFY(wire.waitForServer(u" 605 alice bob * * 0 :"_s));
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lines(u"bob"_s),
                              (QStringList{u"alice|anybody there?"_s, HasQuit}), WaitTimeout);
}

// A user who never left is shown as back with every join.
void TestWatch::mixesJoinsWithWatching()
{
    REQUIRE_TOOLS(u"inspircd"_s);
    InspIrcd server;
    QVERIFY(server.start());
    const LoggingProxy wire(server.port(), LoggingProxy::Joins::Rewritten);
    PlainClient bob;
    QVERIFY(bob.registerAt(server.port(), u"bob"_s));
    WindowSession session;
    QVERIFY(session.registerAt(wire.port(), u"alice"_s, u"#room"_s));
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.users(), QStringList{u"@alice"_s}, WaitTimeout);
    session.probe.typeLine(u"/msg bob hello"_s);
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lines(u"bob"_s),
                              (QStringList{u"alice|hello"_s, HasQuit}), WaitTimeout);

    bob.send(u"JOIN #room"_s);
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lines(u"bob"_s),
                              (QStringList{u"alice|hello"_s, HasQuit, IsBack}), WaitTimeout);

    // The old nick goes offline after the conversation was renamed.
    bob.send(u"NICK rob"_s);
    QVERIFY(wire.waitForServer(u" 601 alice bob "_s));
    QTRY_COMPARE_WITH_TIMEOUT(
            session.probe.lines(u"rob"_s),
            (QStringList{u"alice|hello"_s, HasQuit, IsBack, u"bob|is now known as rob"_s}),
            WaitTimeout);
    QCOMPARE(session.probe.watchedNicks(), Bob);
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#room"_s, u"rob"_s}));
    session.probe.closeTab(2);
    session.probe.typeLine(u"/raw PRIVMSG rob :all sent"_s);
    QVERIFY(bob.waitFor(u" PRIVMSG rob :all sent"_s));
    QCOMPARE(wire.lines().filter(u">> WATCH "_s), QStringList{u">> WATCH +bob"_s});
}

void TestWatch::worksOnAServerWithoutWatch()
{
    REQUIRE_TOOLS(u"ngircd"_s);
    Ngircd server;
    QVERIFY(server.start());
    const LoggingProxy wire(server.port(), LoggingProxy::Joins::Unchanged);
    PlainClient bob;
    QVERIFY(bob.registerAt(server.port(), u"bob"_s));
    WindowSession session;
    QVERIFY(session.registerAt(wire.port(), u"alice"_s));
    session.probe.typeLine(u"/msg bob hello"_s);
    QVERIFY(wire.waitForServer(u" 421 alice WATCH :"_s));
    QTRY_VERIFY_WITH_TIMEOUT(session.probe.lastLine(u"Server"_s).contains(u" 421 alice WATCH :"_s),
                             WaitTimeout);
    QCOMPARE(session.probe.lines(u"bob"_s), QStringList{u"alice|hello"_s});
    QVERIFY(bob.waitFor(u" PRIVMSG bob :hello"_s));
}

QTEST_MAIN(TestWatch)
#include "tst_Watch.moc"
