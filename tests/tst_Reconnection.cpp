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

constexpr auto ConnectedSheet = MainWindowProbe::ConnectedSheet;
constexpr auto DisconnectedSheet = MainWindowProbe::DisconnectedSheet;

// Whether a one-second single shot is pending. Qt makes those children of the event dispatcher.
bool isReconnectPending()
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

// Listens on the port that a reconnect uses, at the first loopback address where it is free.
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
    void init();

    void replacesALiveSession();
    void staysDisconnectedWhenTheServerCloses_data();
    void staysDisconnectedWhenTheServerCloses();
    void doesNotReconnectALostSession();
    void reconnectsToTheStandardPort();
    void reconnectsWithTheTlsOfTheRecord();
    void emitsNothingWhenDestroyedWhileConnected();
    void canBeDestroyedBeforeItReconnects();

private:
    TemporaryStore store;
};

void TestReconnection::init()
{
    store.clear();
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
    QCOMPARE(session.window.statusBar()->styleSheet(), ConnectedSheet);
    QCOMPARE(session.window.statusBar()->currentMessage(), u"Connected to 127.0.0.1 as again"_s);
    QCOMPARE(session.probe.tabTexts(), (QStringList{u"Server"_s, u"#a"_s}));

    session.discardSent();
    QVERIFY(session.join(u"#a"_s, u"again"_s));
    session.probe.typeLine(u"still here"_s);
    QCOMPARE(session.readSent(), (QStringList{u"NAMES #a"_s, u"PRIVMSG #a :still here"_s}));
    QVERIFY(session.server.isConnected());
}

void TestReconnection::staysDisconnectedWhenTheServerCloses_data()
{
    QTest::addColumn<bool>("isReset");

    QTest::newRow("closes the connection") << false;
    QTest::newRow("resets the connection") << true;
}

void TestReconnection::staysDisconnectedWhenTheServerCloses()
{
    QFETCH(const bool, isReset);

    WindowSession session;
    QVERIFY(session.registerAs());
    const qsizetype before = session.probe.lines(u"Server"_s).size();
    if (isReset)
        session.server.abort();
    else
        session.server.close();
    QTRY_COMPARE_WITH_TIMEOUT(session.window.statusBar()->styleSheet(), DisconnectedSheet,
                              WaitTimeout);
    const QStringList lines = session.probe.lines(u"Server"_s).mid(before);
    QCOMPARE(lines.size(), 2);
    QVERIFY2(lines.at(0).startsWith(u"*** Error: "_s), qUtf8Printable(lines.at(0)));
    QCOMPARE(lines.at(1), u"*** Disconnected."_s);
    QCOMPARE(session.window.statusBar()->currentMessage(), u"Disconnected"_s);
    QVERIFY(!isReconnectPending());
    QCOMPARE(session.server.clientCount(), 1);
}

void TestReconnection::doesNotReconnectALostSession()
{
    WindowSession session;
    session.choose(u"&Reconnect"_s);
    QVERIFY(!isReconnectPending());

    QVERIFY(session.registerAs());
    session.server.close();
    QTRY_COMPARE_WITH_TIMEOUT(session.window.statusBar()->styleSheet(), DisconnectedSheet,
                              WaitTimeout);
    const QStringList lines = session.probe.lines(u"Server"_s);
    session.choose(u"&Reconnect"_s);
    QVERIFY(!isReconnectPending());
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
    QVERIFY(isReconnectPending());
    // The record is read after the delay.
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

void TestReconnection::reconnectsWithTheTlsOfTheRecord()
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

void TestReconnection::emitsNothingWhenDestroyedWhileConnected()
{
    ScriptedServer server;
    int emitted = 0;
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
        connect(&connection, &IRCConnection::disconnected, this, [&] { ++emitted; });
        connect(&connection, &IRCConnection::errorOccurred, this, [&] { ++emitted; });
        connect(&connection, &IRCConnection::rawMessageReceived, this, [&] { ++emitted; });
        // In transit when the window is destroyed.
        server.send(u":alice!u@h PRIVMSG me :too late"_s);
    }
    QVERIFY(server.waitForEnd());
    QCOMPARE(server.lines().last(), u"QUIT :Velmora leaving"_s);
    QCOMPARE(emitted, 0);
}

void TestReconnection::canBeDestroyedBeforeItReconnects()
{
    {
        WindowSession session;
        QVERIFY(session.registerAs());
        session.choose(u"&Reconnect"_s);
        QVERIFY(isReconnectPending());
    }
    QTRY_VERIFY_WITH_TIMEOUT(!isReconnectPending(), WaitTimeout);
}

QTEST_MAIN(TestReconnection)
#include "tst_Reconnection.moc"
