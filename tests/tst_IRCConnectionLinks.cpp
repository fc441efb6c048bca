#include "RequiredTools.h"
#include "TestSession.h"
#include "TlsAuthority.h"
#include "Waiting.h"

#include <QEventLoop>
#include <QRegularExpression>
#include <QTest>
#include <QTimer>

#include <memory>

using namespace Qt::StringLiterals;

// How connections end and are replaced.
class TestIRCConnectionLinks final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void sendsQuitOnDisconnecting();
    void disconnectingWithoutASocketDoesNothing();
    void disconnectingDoesNotStopAnAttempt();
    void reportsThatTheServerCloses();
    void reportsAReset();
    void reportsARefusedConnection();
    void reportsAnUnknownHost();

    void replacesTheOldSession_data();
    void replacesTheOldSession();
    void reportsTheOldSessionsEndFirst();
    void clearsRegistrationOnConnecting();
    void reconnectsFromItsOwnSignals();
    void destructorSendsQuitAndEmitsNothing_data();
    void destructorSendsQuitAndEmitsNothing();
    void canBeDestroyedAtAnyTime_data();
    void canBeDestroyedAtAnyTime();
};

void TestIRCConnectionLinks::init()
{
    QTest::failOnWarning(QRegularExpression(u"."_s));
}

void TestIRCConnectionLinks::sendsQuitOnDisconnecting()
{
    TestSession session;
    QVERIFY(session.open());
    session.server.send(u":s 001 me :Welcome"_s);
    QVERIFY(session.settle());
    session.log.clear();

    session.connection.disconnectFromServer();
    QVERIFY(session.log.waitFor(u"disconnected()"_s));
    QVERIFY(session.server.waitForEnd());
    QVERIFY(session.server.received().endsWith("\r\nQUIT :Velmora leaving\r\n"));
    QVERIFY(!session.connection.isConnected());
    QVERIFY(session.connection.isRegistered());

    session.connection.disconnectFromServer();
    QCOMPARE(session.log.entries(), QStringList{u"disconnected()"_s});
}

void TestIRCConnectionLinks::disconnectingWithoutASocketDoesNothing()
{
    TestSession session;
    session.connection.disconnectFromServer();
    QVERIFY(session.log.entries().isEmpty());
}

void TestIRCConnectionLinks::disconnectingDoesNotStopAnAttempt()
{
    TestSession session;
    session.startConnecting();
    session.connection.disconnectFromServer();
    QVERIFY(session.log.waitFor(u"connected()"_s));
    QVERIFY(session.sent().isEmpty());
    QCOMPARE(session.server.lines().mid(0, 2),
             (QStringList{u"NICK me"_s, u"USER me 0 * :Real Name"_s}));
}

void TestIRCConnectionLinks::reportsThatTheServerCloses()
{
    TestSession session;
    QVERIFY(session.open());
    session.server.sendBytes("ERROR :Closing link\r\n");
    session.server.close();
    QVERIFY(session.log.waitFor(u"disconnected()"_s));
    QCOMPARE(session.log.entries(),
             (QStringList{uR"(rawMessageReceived("ERROR :Closing link"))"_s,
                          uR"(errorOccurred("The remote host closed the connection"))"_s,
                          u"disconnected()"_s}));
}

void TestIRCConnectionLinks::reportsAReset()
{
    TestSession session;
    QVERIFY(session.open());
    session.connection.sendRaw(u"unread"_s);
    session.server.abort();
    QVERIFY(session.log.waitFor(u"disconnected()"_s));
    QCOMPARE(session.log.entries().size(), 2);
    QVERIFY(session.log.entries().constFirst().startsWith(u"errorOccurred("_s));
    QVERIFY(!session.connection.isConnected());
}

void TestIRCConnectionLinks::reportsARefusedConnection()
{
    TestSession session;
    session.server.stopListening();
    session.startConnecting();
    QVERIFY(session.log.waitFor(uR"(errorOccurred("Connection refused"))"_s));
    QCOMPARE(session.log.entries().size(), 1);
    QVERIFY(!session.connection.isConnected());

    QVERIFY(session.server.listenAgain());
    QVERIFY(session.open());
    QVERIFY(session.connection.isConnected());
}

void TestIRCConnectionLinks::reportsAnUnknownHost()
{
    TestSession session;
    session.connection.connectToServer(QString(), session.server.port(), u"me"_s, QString(), false);
    QVERIFY(session.log.waitFor(uR"(errorOccurred("Host not found"))"_s));
    QCOMPARE(session.log.entries().size(), 1);
}

void TestIRCConnectionLinks::replacesTheOldSession_data()
{
    QTest::addColumn<bool>("fromTls");
    QTest::addColumn<bool>("toTls");
    QTest::newRow("plain to plain") << false << false;
    QTest::newRow("plain to tls") << false << true;
    QTest::newRow("tls to plain") << true << false;
    QTest::newRow("tls to tls") << true << true;
}

void TestIRCConnectionLinks::replacesTheOldSession()
{
    REQUIRE_TOOLS(u"openssl"_s);
    QFETCH(const bool, fromTls);
    QFETCH(const bool, toTls);
    const TlsAuthority trusted;
    trusted.makeTrusted();
    ScriptedServer plain;
    ScriptedServer secure(trusted.issue(u"localhost"_s));
    ScriptedServer &first = fromTls ? secure : plain;
    ScriptedServer &second = toTls ? secure : plain;

    IRCConnection connection;
    SessionLog log(connection);
    connection.connectToServer(u"localhost"_s, first.port(), u"me"_s, u"Real"_s, fromTls);
    QVERIFY(first.waitForClient());
    QVERIFY(first.waitForLine(u"USER me 0 * :Real"_s));
    first.send(u":s 001 me :Welcome"_s);
    QVERIFY(log.waitFor(u"registered()"_s));
    log.clear();
    const int old = first.clientCount() - 1;
    const int clients = second.clientCount();

    connection.connectToServer(u"localhost"_s, second.port(), u"you"_s, u"Real"_s, toTls);
    QVERIFY(!connection.isRegistered());
    QVERIFY(log.waitFor(u"connected()"_s));
    QVERIFY(second.waitForClient(clients + 1));
    QVERIFY(second.waitForLine(u"USER you 0 * :Real"_s));
    second.send(u":s 001 you :Welcome"_s);
    QVERIFY(log.waitFor(u"registered()"_s));
    QVERIFY(first.waitForEnd(old));

    QCOMPARE(first.lines(old), (QStringList{u"NICK me"_s, u"USER me 0 * :Real"_s}));
    // `disconnected` of the old connection.
    QCOMPARE(log.parsed().count(u"disconnected()"_s), 1);
    QCOMPARE(log.parsed().size(), 4);
    QVERIFY(connection.isConnected());
    QVERIFY(connection.isRegistered());
    QCOMPARE(connection.currentNick(), u"you"_s);
}

// Inside exec(), unlike in the test's own waits, a replaced socket is deleted at once.
void TestIRCConnectionLinks::reportsTheOldSessionsEndFirst()
{
    TestSession session;
    QVERIFY(session.open());
    connect(&session.server, &ScriptedServer::lineReceived, this,
            [&](int client, const QString &line) {
                if (line.startsWith(u"USER"_s))
                    session.server.send(u":s 001 me :Welcome"_s, client);
            });
    QEventLoop loop;
    connect(&session.connection, &IRCConnection::registered, &loop, &QEventLoop::quit);
    QTimer::singleShot(0, this, [&] { session.startConnecting(); });
    QTimer::singleShot(WaitTimeout, &loop, &QEventLoop::quit);
    loop.exec();
    QCOMPARE(session.log.parsed(),
             (QStringList{u"disconnected()"_s, u"connected()"_s,
                          uR"(serverMessage("Connected and registered."))"_s, u"registered()"_s}));
}

void TestIRCConnectionLinks::clearsRegistrationOnConnecting()
{
    TestSession session;
    QVERIFY(session.open());
    session.server.send(u":s 001 me :Welcome"_s);
    QVERIFY(session.settle());
    session.server.close();
    QVERIFY(session.log.waitFor(u"disconnected()"_s));
    QVERIFY(session.connection.isRegistered());
    session.startConnecting();
    QVERIFY(!session.connection.isRegistered());
}

// The window may reconnect from a slot of any session event.
void TestIRCConnectionLinks::reconnectsFromItsOwnSignals()
{
    TestSession session;
    QVERIFY(session.open());
    const auto reconnect = [&] {
        if (session.server.clientCount() < 4)
            session.startConnecting();
    };
    connect(&session.connection, &IRCConnection::disconnected, this, reconnect);
    connect(&session.connection, &IRCConnection::errorOccurred, this, reconnect);
    connect(&session.connection, &IRCConnection::connected, this,
            [&] { session.connection.sendRaw(u"HELLO"_s); });
    session.server.abort();
    QVERIFY(session.server.waitForClient(2));
    QVERIFY(session.server.waitForLine(u"HELLO"_s));
    session.server.close();
    QVERIFY(session.server.waitForClient(3));
    QVERIFY(session.server.waitForLine(u"HELLO"_s));
}

void TestIRCConnectionLinks::destructorSendsQuitAndEmitsNothing_data()
{
    QTest::addColumn<bool>("isSecure");
    QTest::newRow("plain") << false;
    QTest::newRow("tls") << true;
}

void TestIRCConnectionLinks::destructorSendsQuitAndEmitsNothing()
{
    REQUIRE_TOOLS(u"openssl"_s);
    QFETCH(const bool, isSecure);
    const TlsAuthority trusted;
    trusted.makeTrusted();
    std::unique_ptr<ScriptedServer> server =
            isSecure ? std::make_unique<ScriptedServer>(trusted.issue(u"localhost"_s))
                     : std::make_unique<ScriptedServer>();

    auto connection = std::make_unique<IRCConnection>();
    SessionLog log(*connection);
    int batches = 0;
    connection->setReadFinishedHandler([&batches] { ++batches; });
    connection->connectToServer(u"localhost"_s, server->port(), u"me"_s, u"Real"_s, isSecure);
    QVERIFY(server->waitForClient());
    QVERIFY(server->waitForLine(u"USER me 0 * :Real"_s));
    server->send(u":s 001 me :Welcome"_s);
    QVERIFY(log.waitFor(u"registered()"_s));
    log.clear();
    batches = 0;

    // Unread lines are discarded with the session.
    for (int i = 0; i < 100; ++i)
        server->send(u":a!b@c PRIVMSG #x :late"_s);
    connection.reset();
    QVERIFY(log.entries().isEmpty());
    QCOMPARE(batches, 0);
    QVERIFY(server->waitForEnd());
    QCOMPARE(server->lines().constLast(), u"QUIT :Velmora leaving"_s);
    QVERIFY(log.entries().isEmpty());
}

void TestIRCConnectionLinks::canBeDestroyedAtAnyTime_data()
{
    QTest::addColumn<QString>("state");
    QTest::newRow("never connected") << u"idle"_s;
    QTest::newRow("connecting") << u"connecting"_s;
    QTest::newRow("reconnecting") << u"again"_s;
    QTest::newRow("disconnected") << u"disconnected"_s;
    QTest::newRow("disconnecting") << u"leaving"_s;
    QTest::newRow("in the TLS handshake") << u"handshake"_s;
}

void TestIRCConnectionLinks::canBeDestroyedAtAnyTime()
{
    QFETCH(const QString, state);
    ScriptedServer server;
    auto connection = std::make_unique<IRCConnection>();
    SessionLog log(*connection);
    const auto connectAgain = [&](bool isSecure) {
        connection->connectToServer(u"localhost"_s, server.port(), u"me"_s, u"Real"_s, isSecure);
    };
    if (state == u"connecting"_s || state == u"again"_s)
        connectAgain(false);
    if (state == u"again"_s || state == u"disconnected"_s || state == u"leaving"_s) {
        connectAgain(false);
        QVERIFY(log.waitFor(u"connected()"_s));
    }
    if (state == u"again"_s)
        connectAgain(true);
    if (state == u"disconnected"_s) {
        QVERIFY(server.waitForClient());
        server.abort();
        QVERIFY(log.waitFor(u"disconnected()"_s));
    }
    if (state == u"leaving"_s)
        connection->disconnectFromServer();
    if (state == u"handshake"_s) {
        connectAgain(true);
        QVERIFY(log.waitFor(u"connected()"_s));
    }
    log.clear();
    connection.reset();
    QVERIFY(log.entries().isEmpty());
}

QTEST_GUILESS_MAIN(TestIRCConnectionLinks)
#include "tst_IRCConnectionLinks.moc"
