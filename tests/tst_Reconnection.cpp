#include "IRCConnection.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QAbstractEventDispatcher>
#include <QStatusBar>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

const QString Green = u"QStatusBar { background-color: #d4edda; }"_s;
const QString Red = u"QStatusBar { background-color: #f8d7da; }"_s;

// Whether somebody waits for a single shot of one second: Qt keeps those with its event loop.
bool waitsForASecond()
{
    QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance();
    const QObjectList shots = dispatcher->children();
    for (QObject *shot : shots) {
        const auto timers = dispatcher->registeredTimers(shot);
        for (const auto &timer : timers) {
            if (timer.interval == 1000)
                return true;
        }
    }
    return false;
}

// A server on the port that a reconnect dials, on one of the loopback's addresses where that port
// is free.
std::unique_ptr<ScriptedServer> listenOnStandardPort(QHostAddress &address)
{
    const quint32 first = QHostAddress(QHostAddress::LocalHost).toIPv4Address();
    for (quint32 offset = 1; offset < 100; ++offset) {
        address = QHostAddress(first + offset);
        auto server = std::make_unique<ScriptedServer>(address, quint16(6667));
        if (server->port() != 0)
            return server;
    }
    return nullptr;
}

} // namespace

class TestReconnection final : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void replacesALiveSession();
    void staysDownWhenTheServerGoes_data();
    void staysDownWhenTheServerGoes();
    void doesNotReconnectALostSession();
    void reconnectsToTheStandardPort();
    void reconnectsWithTheRecordsTls();
    void goesInSilenceWithALiveSession();
    void mayGoBeforeItReconnects();

private:
    std::unique_ptr<TemporaryStore> store;
};

void TestReconnection::initTestCase()
{
    store = std::make_unique<TemporaryStore>();
}

void TestReconnection::init()
{
    store->clear();
}

void TestReconnection::replacesALiveSession()
{
    WindowSession session;
    QVERIFY(session.registerAs());
    QVERIFY(session.join(u"#a"_s, u"me alice"_s));
    const qsizetype before = session.probe.lines(u"Server"_s).size();

    QVERIFY(session.acceptDialog(u"again"_s));
    QVERIFY(session.server.waitForEnd(0));
    QVERIFY(!session.server.received(0).contains("QUIT"));
    QVERIFY(session.receive(u":irc.test 001 again :Welcome"_s));
    QCOMPARE(session.probe.lines(u"Server"_s).mid(before),
             (QStringList{u"*** Disconnected."_s, u"*** Connected to server."_s,
                          u"Connected and registered."_s}));
    QCOMPARE(session.window.statusBar()->styleSheet(), Green);
    QCOMPARE(session.window.statusBar()->currentMessage(), u"Connected to 127.0.0.1 as again"_s);
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s}));

    session.discardSent();
    QVERIFY(session.join(u"#a"_s, u"again"_s));
    session.probe.typeLine(u"still here"_s);
    QCOMPARE(session.readSent(), (QStringList{u"NAMES #a"_s, u"PRIVMSG #a :still here"_s}));
    QVERIFY(session.server.isConnected());
}

void TestReconnection::staysDownWhenTheServerGoes_data()
{
    QTest::addColumn<bool>("cut");

    QTest::newRow("closes the link") << false;
    QTest::newRow("resets the link") << true;
}

void TestReconnection::staysDownWhenTheServerGoes()
{
    QFETCH(const bool, cut);

    WindowSession session;
    QVERIFY(session.registerAs());
    const qsizetype before = session.probe.lines(u"Server"_s).size();
    if (cut)
        session.server.abort();
    else
        session.server.close();
    QTRY_COMPARE_WITH_TIMEOUT(session.window.statusBar()->styleSheet(), Red, WaitTimeout);
    const QStringList lines = session.probe.lines(u"Server"_s).mid(before);
    QCOMPARE(lines.size(), 2);
    QVERIFY2(lines.at(0).startsWith(u"*** Error: "_s), qUtf8Printable(lines.at(0)));
    QCOMPARE(lines.at(1), u"*** Disconnected."_s);
    QCOMPARE(session.window.statusBar()->currentMessage(), u"Disconnected"_s);
    QVERIFY(!waitsForASecond());
    QCOMPARE(session.server.clientCount(), 1);
}

void TestReconnection::doesNotReconnectALostSession()
{
    WindowSession session;
    session.choose(u"&Reconnect"_s);
    QVERIFY(!waitsForASecond());

    QVERIFY(session.registerAs());
    session.server.close();
    QTRY_COMPARE_WITH_TIMEOUT(session.window.statusBar()->styleSheet(), Red, WaitTimeout);
    const QStringList lines = session.probe.lines(u"Server"_s);
    session.choose(u"&Reconnect"_s);
    QVERIFY(!waitsForASecond());
    QCOMPARE(session.probe.lines(u"Server"_s), lines);
}

void TestReconnection::reconnectsToTheStandardPort()
{
    QHostAddress address;
    const auto standard = listenOnStandardPort(address);
    QVERIFY(standard != nullptr);
    ScriptedServer first(address, 0);
    WindowSession session;
    IRCConnection &connection = session.probe.connection();
    ServerConfig config;
    config.nickname = u"me"_s;
    config.realName = u"My Self"_s;
    connection.setServerConfig(config);
    session.probe.currentServerId() = u"some.host_7000"_s;
    session.probe.autojoinChannels() = QStringList{u"#a"_s};
    connection.connectToServer(address.toString(), first.port(), u"me"_s, u"My Self"_s, false);
    QVERIFY(first.waitForLine(u"USER me 0 * :My Self"_s));

    session.choose(u"&Reconnect"_s);
    QVERIFY(waitsForASecond());
    // The record counts as it is when the second is over.
    config.realName = u"Her Self"_s;
    connection.setServerConfig(config);
    QVERIFY(first.waitForLine(u"QUIT :Velmora leaving"_s));
    QVERIFY(standard->waitForLine(u"USER me 0 * :Her Self"_s));
    QCOMPARE(standard->lines().first(), u"NICK me"_s);
    QTRY_COMPARE_WITH_TIMEOUT(session.probe.lines(u"Server"_s),
                              (QStringList{u"*** Connected to server."_s, u"*** Disconnected."_s,
                                           u"*** Connected to server."_s}),
                              WaitTimeout);
    QCOMPARE(session.probe.currentServerId(), u"some.host_7000"_s);

    standard->send(u":irc.test 001 me :Welcome"_s);
    QVERIFY(standard->waitForLine(u"JOIN #a"_s));
}

void TestReconnection::reconnectsWithTheRecordsTls()
{
    QHostAddress address;
    const auto standard = listenOnStandardPort(address);
    QVERIFY(standard != nullptr);
    ScriptedServer first(address, 0);
    WindowSession session;
    ServerConfig config;
    config.nickname = u"me"_s;
    config.useSsl = true;
    session.probe.connection().setServerConfig(config);
    session.probe.currentServerId() = u"some.host_7000"_s;
    session.probe.connection().connectToServer(address.toString(), first.port(), u"me"_s, QString(),
                                               false);
    QVERIFY(first.waitForLine(u"NICK me"_s));

    session.choose(u"&Reconnect"_s);
    QVERIFY(standard->waitForClient());
    // The first byte of a TLS handshake.
    QTRY_VERIFY_WITH_TIMEOUT(standard->received().startsWith('\x16'), WaitTimeout);
}

void TestReconnection::goesInSilenceWithALiveSession()
{
    ScriptedServer server;
    int told = 0;
    {
        MainWindow window;
        window.show();
        const MainWindowProbe probe(window);
        IRCConnection &connection = probe.connection();
        connection.connectToServer(u"127.0.0.1"_s, server.port(), u"me"_s, QString(), false);
        QVERIFY(server.waitForLine(u"NICK me"_s));
        server.send(u":irc.test 001 me :Welcome"_s);
        server.send(u":me!u@h JOIN #a"_s);
        server.send(u":alice!u@h PRIVMSG me :hi"_s);
        QVERIFY(server.waitForLine(u"NAMES #a"_s));
        QTRY_COMPARE_WITH_TIMEOUT(probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s, u"alice"_s}),
                                  WaitTimeout);
        connect(&connection, &IRCConnection::disconnected, this, [&] { ++told; });
        connect(&connection, &IRCConnection::errorOccurred, this, [&] { ++told; });
        connect(&connection, &IRCConnection::rawMessageReceived, this, [&] { ++told; });
        // On its way when the window goes.
        server.send(u":alice!u@h PRIVMSG me :too late"_s);
    }
    QVERIFY(server.waitForEnd());
    QCOMPARE(server.lines().last(), u"QUIT :Velmora leaving"_s);
    QCOMPARE(told, 0);
}

void TestReconnection::mayGoBeforeItReconnects()
{
    {
        WindowSession session;
        QVERIFY(session.registerAs());
        session.choose(u"&Reconnect"_s);
        QVERIFY(waitsForASecond());
    }
    QTRY_VERIFY_WITH_TIMEOUT(!waitsForASecond(), WaitTimeout);
}

QTEST_MAIN(TestReconnection)
#include "tst_Reconnection.moc"
