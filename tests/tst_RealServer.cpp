#include "IRCParser.h"
#include "Ngircd.h"
#include "RecordedLines.h"
#include "RequiredTools.h"
#include "TestSession.h"

#include <QRegularExpression>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

// Sessions with a real server, and lines recorded from it.
class TestRealServer final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void readsRecordedLines_data();
    void readsRecordedLines();
    void reportsARecordedWelcome();
    void reportsRecordedErrors();

    void registersAndTalks();
    void fallsBackOnANickInUse();
    void survivesTheServersDeath();

private:
    std::unique_ptr<TestSession> session;
};

void TestRealServer::init()
{
    QTest::failOnWarning(QRegularExpression(u"."_s));
    session = std::make_unique<TestSession>();
}

// The lines were sent to alice, who is the session's user.
void TestRealServer::readsRecordedLines_data()
{
    QTest::addColumn<QStringList>("calls");
    QTest::addColumn<QStringList>("answers");

    const QStringList nothing;
    QTest::newRow("nick-in-use")
            << QStringList{uR"(nickChanged("alice", "alice_"))"_s,
                           uR"(serverMessage("Connected and registered."))"_s, u"registered()"_s,
                           u"serverMessage(\":irc.velmora.test 002 bob :Your host is "
                           u"irc.velmora.test, running version ngircd-26.1 "
                           u"(x86_64/pc/linux-gnu)\")"_s}
            << QStringList{u"NICK alice_"_s};
    // Intended: this server sends the channel as the trailing parameter, which the parser ignores.
    QTest::newRow("join")
            << QStringList{uR"(joinReceived("alice", ""))"_s,
                           uR"(topicReceived("#velmora", "All about Velmora"))"_s,
                           u"serverMessage(\":irc.velmora.test 333 alice #velmora bob "
                           u"1795296169\")"_s,
                           uR"(namesList("#velmora", [alice @bob]))"_s,
                           uR"(namesListFinished("#velmora"))"_s}
            << QStringList{u"NAMES "_s};
    QTest::newRow("mode") << nothing << nothing;
    QTest::newRow("names") << QStringList{uR"(namesList("#velmora", [+alice @bob]))"_s,
                                          uR"(namesListFinished("#velmora"))"_s}
                           << nothing;
    QTest::newRow("privmsg")
            << QStringList{uR"(privmsgReceived("bob", "#velmora", "Hello there: all"))"_s,
                           uR"(privmsgReceived("bob", "bob", "psst"))"_s,
                           u"privmsgReceived(\"bob\", \"bob\", \"\u0001ACTION waves\u0001\")"_s}
            << nothing;
    QTest::newRow("whois")
            << QStringList{uR"(whoisUserReceived("bob", "~bob", "127.0.0.1", "Bob Real"))"_s,
                           uR"(whoisChannelsReceived("bob", "@#velmora"))"_s,
                           uR"(whoisIdleReceived("bob", 0, "seconds idle, signon time"))"_s,
                           uR"(whoisEndReceived("bob", "bob"))"_s}
            << nothing;
    QTest::newRow("whois-away")
            << QStringList{uR"(whoisUserReceived("bob", "~bob", "127.0.0.1", "Bob Real"))"_s,
                           uR"(whoisChannelsReceived("bob", "@#velmora"))"_s,
                           uR"(whoisIdleReceived("bob", 0, "seconds idle, signon time"))"_s,
                           uR"(whoisAwayReceived("bob", "Gone fishing"))"_s,
                           uR"(whoisEndReceived("bob", "bob"))"_s}
            << nothing;
    QTest::newRow("away") << QStringList{uR"(whoisAwayReceived("bob", "Gone fishing"))"_s}
                          << nothing;
    QTest::newRow("list")
            << QStringList{u"listStartReceived()"_s,
                           uR"(listChannelReceived("#velmora", "2", "All about Velmora"))"_s,
                           uR"(listChannelReceived("&SERVER", "0", "Server Messages"))"_s,
                           uR"(listInfoReceived("irc.velmora.test", 2, 2))"_s,
                           u"listEndReceived()"_s}
            << nothing;
    QTest::newRow("topic") << QStringList{uR"(topicReceived("#velmora", "All about Velmora"))"_s,
                                          u"serverMessage(\":irc.velmora.test 333 alice #velmora "
                                          u"bob 1795296169\")"_s}
                           << nothing;
    QTest::newRow("nick") << QStringList{uR"(nickChanged("bob", "robert"))"_s} << nothing;
    QTest::newRow("own-nick") << QStringList{uR"(ownNickChanged("alicia"))"_s,
                                             uR"(nickChanged("alice", "alicia"))"_s}
                              << nothing;
    QTest::newRow("kick")
            << QStringList{uR"(kickReceived("#velmora", "alicia", "robert", "Out you go"))"_s}
            << nothing;
    QTest::newRow("part") << QStringList{uR"(partReceived("robert", "#velmora", "See you"))"_s}
                          << nothing;
    QTest::newRow("quit") << QStringList{uR"(quitReceived("robert", ""Good night""))"_s} << nothing;
    QTest::newRow("closing") << nothing << nothing;
}

void TestRealServer::readsRecordedLines()
{
    QVERIFY(session->open(u"alice"_s));
    const QStringList lines =
            recordedLines(u"ngircd-%1.txt"_s.arg(QString::fromUtf8(QTest::currentDataTag())));
    QVERIFY(!lines.isEmpty());
    for (const QString &line : lines)
        IRCParser::parseLine(line, &session->connection);
    QTEST(session->log.entries(), "calls");
    QTEST(session->sent(), "answers");
}

void TestRealServer::reportsARecordedWelcome()
{
    const QStringList lines = recordedLines(u"ngircd-registration.txt"_s);
    QStringList calls{uR"(serverMessage("Connected and registered."))"_s, u"registered()"_s};
    for (const QString &line : lines.mid(1))
        calls.append(u"serverMessage(\""_s + line + u"\")"_s);
    for (const QString &line : lines)
        IRCParser::parseLine(line, &session->connection);
    QVERIFY(lines.size() > 10);
    QCOMPARE(session->log.entries(), calls);
}

void TestRealServer::reportsRecordedErrors()
{
    const QStringList lines = recordedLines(u"ngircd-errors.txt"_s);
    QStringList calls;
    for (const QString &line : lines) {
        if (line.contains(u" 318 "_s))
            calls.append(uR"(whoisEndReceived("ghost", "ghost"))"_s);
        else
            calls.append(u"serverMessage(\""_s + line + u"\")"_s);
    }
    for (const QString &line : lines)
        IRCParser::parseLine(line, &session->connection);
    QVERIFY(lines.size() > 10);
    QCOMPARE(session->log.entries(), calls);
}

void TestRealServer::registersAndTalks()
{
    REQUIRE_TOOLS(u"ngircd"_s);
    Ngircd ngircd;
    QVERIFY(ngircd.start());
    IRCConnection alice;
    SessionLog log(alice);
    alice.connectToServer(u"127.0.0.1"_s, ngircd.port(), u"alice"_s, u"Alice Real"_s, false);
    QVERIFY(log.waitFor(u"registered()"_s));
    QVERIFY(alice.isRegistered());
    QCOMPARE(log.parsed().mid(0, 3),
             (QStringList{u"connected()"_s, uR"(serverMessage("Connected and registered."))"_s,
                          u"registered()"_s}));

    IRCConnection bob;
    SessionLog bobLog(bob);
    bob.connectToServer(u"127.0.0.1"_s, ngircd.port(), u"bob"_s, QString(), false);
    QVERIFY(bobLog.waitFor(u"registered()"_s));

    alice.joinChannel(u"#velmora"_s);
    QVERIFY(log.waitFor(uR"(joinReceived("alice", ""))"_s));
    bob.joinChannel(u"#velmora"_s);
    QVERIFY(log.waitFor(uR"(joinReceived("bob", ""))"_s));
    QVERIFY(bobLog.waitFor(uR"(namesListFinished("#velmora"))"_s));

    alice.sendPrivmsg(u"#velmora"_s, u"Grüße: 你好 🙂"_s);
    QVERIFY(bobLog.waitFor(uR"(privmsgReceived("alice", "#velmora", "Grüße: 你好 🙂"))"_s));
    bob.sendPrivmsg(u"alice"_s, u"psst"_s);
    QVERIFY(log.waitFor(uR"(privmsgReceived("bob", "bob", "psst"))"_s));

    alice.changeNick(u"alicia"_s);
    QVERIFY(log.waitFor(uR"(ownNickChanged("alicia"))"_s));
    QVERIFY(bobLog.waitFor(uR"(nickChanged("alice", "alicia"))"_s));

    bob.sendWhois(u"alicia"_s);
    QVERIFY(bobLog.waitFor(uR"(whoisEndReceived("alicia", "alicia"))"_s));
    QVERIFY(bobLog.parsed().contains(
            uR"(whoisUserReceived("alicia", "~alice", "127.0.0.1", "Alice Real"))"_s));

    bob.partChannel(u"#velmora"_s);
    QVERIFY(log.waitFor(uR"(partReceived("bob", "#velmora", "Leaving"))"_s));
    bob.joinChannel(u"#velmora"_s);
    QVERIFY(log.waitFor(uR"(joinReceived("bob", ""))"_s, 2));
    alice.disconnectFromServer();
    QVERIFY(log.waitFor(u"disconnected()"_s));
    QVERIFY(bobLog.waitFor(uR"(quitReceived("alicia", ""Velmora leaving""))"_s));
}

void TestRealServer::fallsBackOnANickInUse()
{
    REQUIRE_TOOLS(u"ngircd"_s);
    Ngircd ngircd;
    QVERIFY(ngircd.start());
    IRCConnection first;
    SessionLog firstLog(first);
    first.connectToServer(u"127.0.0.1"_s, ngircd.port(), u"alice"_s, u"One"_s, false);
    QVERIFY(firstLog.waitFor(u"registered()"_s));

    IRCConnection second;
    SessionLog log(second);
    ServerConfig config;
    config.altNickname = u"alina"_s;
    second.setServerConfig(config);
    second.connectToServer(u"127.0.0.1"_s, ngircd.port(), u"alice"_s, u"Two"_s, false);
    QVERIFY(log.waitFor(u"registered()"_s));
    QCOMPARE(log.parsed().mid(0, 4),
             (QStringList{u"connected()"_s, uR"(nickChanged("alice", "alina"))"_s,
                          uR"(serverMessage("Connected and registered."))"_s, u"registered()"_s}));
    QCOMPARE(second.currentNick(), u"alina"_s);

    IRCConnection third;
    SessionLog thirdLog(third);
    third.setServerConfig(config);
    third.connectToServer(u"127.0.0.1"_s, ngircd.port(), u"alice"_s, u"Three"_s, false);
    QVERIFY(thirdLog.waitFor(u"registered()"_s));
    QCOMPARE(third.currentNick(), u"alice_"_s);
}

void TestRealServer::survivesTheServersDeath()
{
    REQUIRE_TOOLS(u"ngircd"_s);
    auto ngircd = std::make_unique<Ngircd>();
    QVERIFY(ngircd->start());
    IRCConnection alice;
    SessionLog log(alice);
    alice.connectToServer(u"127.0.0.1"_s, ngircd->port(), u"alice"_s, u"Alice"_s, false);
    QVERIFY(log.waitFor(u"registered()"_s));
    log.clear();
    ngircd->kill();
    QVERIFY(log.waitFor(u"disconnected()"_s));
    QCOMPARE(log.parsed().filter(u"errorOccurred"_s).size(), 1);

    ngircd = std::make_unique<Ngircd>();
    QVERIFY(ngircd->start());
    alice.connectToServer(u"127.0.0.1"_s, ngircd->port(), u"alice"_s, u"Alice"_s, false);
    QVERIFY(log.waitFor(u"registered()"_s));
}

QTEST_GUILESS_MAIN(TestRealServer)
#include "tst_RealServer.moc"
