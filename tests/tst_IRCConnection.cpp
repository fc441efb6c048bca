#include "TestSession.h"

#include <QMetaMethod>
#include <QRegularExpression>
#include <QTcpSocket>
#include <QTest>

#include <functional>

using namespace Qt::StringLiterals;

namespace {

using Operation = std::function<void(IRCConnection &)>;

// Returns "name(type argument, ...)" of each method of one type, in the order of declaration.
QStringList methodsOf(QMetaMethod::MethodType kind)
{
    QStringList methods;
    const QMetaObject &meta = IRCConnection::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        if (method.methodType() != kind)
            continue;
        QStringList arguments;
        for (int k = 0; k < method.parameterCount(); ++k) {
            arguments.append(QString::fromLatin1(method.parameterTypes().at(k) + ' '
                                                 + method.parameterNames().at(k)));
        }
        methods.append(QString::fromLatin1(method.name()) + u'(' + arguments.join(u", "_s) + u')');
    }
    return methods;
}

} // namespace

class TestIRCConnection final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void declaresItsSignalsInOrder();
    void declaresItsSlotsInOrder();
    void isNotConnectedAtFirst();

    void registersWithTwoLines();
    void emitsConnectedAfterTheRegistrationLines();
    void setsTheLowDelayOption();
    void registersWithAnEmptyRealName();
    void neverSendsThePassword();
    void sendsEachCommand_data();
    void sendsEachCommand();
    void reportsLinesSentWhileDisconnected_data();
    void reportsLinesSentWhileDisconnected();
    void sendsWatchOnlyWhenConnected();
    void keepsTheServerRecord();
    void readsTheAlternativeNickOnConnecting();
    void updatesTheOwnNickFirst();
};

void TestIRCConnection::init()
{
    QTest::failOnWarning(QRegularExpression(u"."_s));
}

void TestIRCConnection::declaresItsSignalsInOrder()
{
    QCOMPARE(methodsOf(QMetaMethod::Signal),
             (QStringList{
                     u"connected()"_s,
                     u"registered()"_s,
                     u"disconnected()"_s,
                     u"errorOccurred(QString error)"_s,
                     u"rawMessageReceived(QString message)"_s,
                     u"serverMessage(QString message)"_s,
                     u"privmsgReceived(QString from, QString target, QString text)"_s,
                     u"joinReceived(QString nick, QString channel)"_s,
                     u"partReceived(QString nick, QString channel, QString reason)"_s,
                     u"nickChanged(QString oldNick, QString newNick)"_s,
                     u"namesList(QString channel, QStringList names)"_s,
                     u"namesListFinished(QString channel)"_s,
                     u"topicReceived(QString channel, QString topic)"_s,
                     u"quitReceived(QString nick, QString reason)"_s,
                     u"kickReceived(QString channel, QString kickedNick, QString kickerNick, "
                     u"QString reason)"_s,
                     u"listStartReceived()"_s,
                     u"listChannelReceived(QString channel, QString userCount, QString topic)"_s,
                     u"listEndReceived()"_s,
                     u"listInfoReceived(QString serverName, int totalChannels, int totalUsers)"_s,
                     u"whoisUserReceived(QString nick, QString user, QString host, QString real)"_s,
                     u"whoisServerReceived(QString nick, QString server, QString serverInfo)"_s,
                     u"whoisOperatorReceived(QString nick)"_s,
                     u"whoisIdleReceived(QString nick, int idle, QString signon)"_s,
                     u"whoisChannelsReceived(QString nick, QString channels)"_s,
                     u"whoisEndReceived(QString targetTab, QString nick)"_s,
                     u"whoisAwayReceived(QString nick, QString msg)"_s,
                     u"watchStatus(QString nick, bool online)"_s,
                     u"ownNickChanged(QString newNick)"_s,
             }));
}

void TestIRCConnection::declaresItsSlotsInOrder()
{
    QCOMPARE(
            methodsOf(QMetaMethod::Slot),
            (QStringList{u"onConnected()"_s, u"onDisconnected()"_s, u"onReadyRead()"_s,
                         u"onError(QAbstractSocket::SocketError error)"_s, u"checkKeepAlive()"_s}));
}

void TestIRCConnection::isNotConnectedAtFirst()
{
    const IRCConnection connection;
    QVERIFY(!connection.isConnected());
    QVERIFY(!connection.isRegistered());
    QVERIFY(!connection.isReading());
    QCOMPARE(connection.currentNick(), QString());
    QCOMPARE(connection.getHost(), QString());
    QCOMPARE(connection.getListServerName(), QString());
    QCOMPARE(connection.getTotalListChannels(), 0);
    QCOMPARE(connection.getTotalListUsers(), 0);
    QCOMPARE(connection.serverConfig().nickname, QString());
}

void TestIRCConnection::registersWithTwoLines()
{
    TestSession session;
    session.startConnecting(u"alice"_s);
    QCOMPARE(session.connection.currentNick(), u"alice"_s);
    QCOMPARE(session.connection.getHost(), u"localhost"_s);
    QVERIFY(!session.connection.isConnected());

    QVERIFY(session.log.waitFor(u"connected()"_s));
    QVERIFY(session.connection.isConnected());
    QVERIFY(!session.connection.isRegistered());
    QVERIFY(session.server.waitForLine(u"USER alice 0 * :Real Name"_s));

    session.server.send(u":irc.test 001 alice :Welcome"_s);
    QVERIFY(session.log.waitFor(u"registered()"_s));
    QVERIFY(session.connection.isRegistered());
    QCOMPARE(session.log.entries(),
             (QStringList{u"connected()"_s,
                          uR"(rawMessageReceived(":irc.test 001 alice :Welcome"))"_s,
                          uR"(serverMessage("Connected and registered."))"_s, u"registered()"_s}));
    QVERIFY(session.sent().isEmpty());
    QVERIFY(session.server.received().startsWith(
            "NICK alice\r\nUSER alice 0 * :Real Name\r\nMARK 1\r\n"));
}

void TestIRCConnection::emitsConnectedAfterTheRegistrationLines()
{
    TestSession session;
    connect(&session.connection, &IRCConnection::connected, this,
            [&] { session.connection.sendRaw(u"HELLO"_s); });
    session.startConnecting();
    QVERIFY(session.server.waitForLine(u"HELLO"_s));
    QCOMPARE(session.server.lines(),
             (QStringList{u"NICK me"_s, u"USER me 0 * :Real Name"_s, u"HELLO"_s}));
}

void TestIRCConnection::setsTheLowDelayOption()
{
    TestSession session;
    QVERIFY(session.open());
    auto *socket = session.connection.findChild<QTcpSocket *>();
    QVERIFY(socket);
    QCOMPARE(socket->socketOption(QAbstractSocket::LowDelayOption).toInt(), 1);
}

void TestIRCConnection::registersWithAnEmptyRealName()
{
    TestSession session;
    session.connection.connectToServer(u"127.0.0.1"_s, session.server.port(), u"alice"_s, QString(),
                                       false);
    QVERIFY(session.server.waitForClient());
    QVERIFY(session.server.waitForLine(u"USER alice 0 * :"_s));
}

void TestIRCConnection::neverSendsThePassword()
{
    TestSession session;
    for (const QString &method : {u"NickServ (/nickserv IDENTIFY)"_s, u"Server password"_s,
                                  u"SASL (username + password)"_s}) {
        ServerConfig config;
        config.authMethod = method;
        config.password = u"secret"_s;
        session.connection.setServerConfig(config);
        QVERIFY(session.open(u"alice"_s));
        session.server.send(u":irc.test 001 alice :Welcome"_s);
        QVERIFY(session.log.waitFor(u"registered()"_s));
        QVERIFY(session.sent().isEmpty());
        QCOMPARE(session.server.lines().mid(0, 2),
                 (QStringList{u"NICK alice"_s, u"USER alice 0 * :Real Name"_s}));
    }
}

void TestIRCConnection::sendsEachCommand_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QByteArray>("bytes");

    const auto row = [](const char *name, const Operation &operation, const QByteArray &bytes) {
        QTest::newRow(name) << operation << bytes;
    };
    row(
            "raw", [](IRCConnection &c) { c.sendRaw(u"MODE #x +o bob"_s); }, "MODE #x +o bob\r\n");
    row(
            "raw of nothing", [](IRCConnection &c) { c.sendRaw(QString()); }, "\r\n");
    row(
            "raw of two lines", [](IRCConnection &c) { c.sendRaw(u"A\r\nB\nC"_s); },
            "A\r\nB\nC\r\n");
    row(
            "raw with a zero", [](IRCConnection &c) { c.sendRaw(u"a\0b"_s); },
            QByteArray("a\0b\r\n", 5));
    row(
            "raw that is long", [](IRCConnection &c) { c.sendRaw(QString(5000, u'x')); },
            QByteArray(5000, 'x') + "\r\n");
    row(
            "join", [](IRCConnection &c) { c.joinChannel(u"#x key"_s); }, "JOIN #x key\r\n");
    row(
            "part", [](IRCConnection &c) { c.partChannel(u"#x"_s); }, "PART #x :Leaving\r\n");
    row(
            "message", [](IRCConnection &c) { c.sendPrivmsg(u"#x"_s, u"hi there"_s); },
            "PRIVMSG #x :hi there\r\n");
    row(
            "message of many scripts",
            [](IRCConnection &c) { c.sendPrivmsg(u"bob"_s, u"ß你🙂"_s); },
            "PRIVMSG bob :\xC3\x9F\xE4\xBD\xA0\xF0\x9F\x99\x82\r\n");
    row(
            "nick", [](IRCConnection &c) { c.changeNick(u"bob"_s); }, "NICK bob\r\n");
    row(
            "whois", [](IRCConnection &c) { c.sendWhois(u"bob"_s); }, "WHOIS bob\r\n");
    row(
            "watch", [](IRCConnection &c) { c.sendWatch(u"bob"_s, true); }, "WATCH +bob\r\n");
    row(
            "watch no more", [](IRCConnection &c) { c.sendWatch(u"bob"_s, false); },
            "WATCH -bob\r\n");
    row(
            "watch with a placeholder", [](IRCConnection &c) { c.sendWatch(u"%1%2"_s, true); },
            "WATCH +%1%2\r\n");
}

void TestIRCConnection::sendsEachCommand()
{
    QFETCH(const Operation, operation);
    QFETCH(const QByteArray, bytes);
    // Intended: the record's encoding has no effect on the wire.
    TestSession session;
    ServerConfig config;
    config.encoding = u"ISO-8859-1 (Western)"_s;
    session.connection.setServerConfig(config);
    QVERIFY(session.open());

    const qsizetype before = session.server.received().size();
    operation(session.connection);
    session.connection.sendRaw(u"END"_s);
    QVERIFY(session.server.waitForLine(u"END"_s));
    QCOMPARE(session.server.received().mid(before), bytes + "END\r\n");
    QVERIFY(session.log.entries().isEmpty());
    QCOMPARE(session.connection.currentNick(), u"me"_s);
}

void TestIRCConnection::reportsLinesSentWhileDisconnected_data()
{
    QTest::addColumn<Operation>("operation");
    const auto row = [](const char *name, const Operation &operation) {
        QTest::newRow(name) << operation;
    };
    row("raw", [](IRCConnection &c) { c.sendRaw(u"x"_s); });
    row("join", [](IRCConnection &c) { c.joinChannel(u"#x"_s); });
    row("part", [](IRCConnection &c) { c.partChannel(u"#x"_s); });
    row("message", [](IRCConnection &c) { c.sendPrivmsg(u"#x"_s, u"hi"_s); });
    row("nick", [](IRCConnection &c) { c.changeNick(u"bob"_s); });
    row("whois", [](IRCConnection &c) { c.sendWhois(u"bob"_s); });
}

void TestIRCConnection::reportsLinesSentWhileDisconnected()
{
    QFETCH(const Operation, operation);
    const QStringList complaint{uR"(errorOccurred("Socket is not connected"))"_s};
    TestSession session;
    operation(session.connection);
    QCOMPARE(session.log.entries(), complaint);

    session.log.clear();
    session.startConnecting();
    operation(session.connection);
    QCOMPARE(session.log.entries(), complaint);

    QVERIFY(session.log.waitFor(u"connected()"_s));
    session.server.abort();
    QVERIFY(session.log.waitFor(u"disconnected()"_s));
    session.log.clear();
    operation(session.connection);
    QCOMPARE(session.log.entries(), complaint);
}

void TestIRCConnection::sendsWatchOnlyWhenConnected()
{
    TestSession session;
    session.connection.sendWatch(u"bob"_s, true);
    session.startConnecting();
    session.connection.sendWatch(u"bob"_s, false);
    QVERIFY(session.log.entries().isEmpty());
    QVERIFY(session.log.waitFor(u"connected()"_s));
    QVERIFY(session.sent().isEmpty());
}

void TestIRCConnection::keepsTheServerRecord()
{
    IRCConnection connection;
    ServerConfig config;
    config.nickname = u"alice"_s;
    config.autojoin = QStringList{u"#a"_s, u"#b"_s};
    config.useSsl = true;
    connection.setServerConfig(config);
    config.autojoin.append(u"#c"_s);

    ServerConfig copy = connection.serverConfig();
    QCOMPARE(copy.nickname, u"alice"_s);
    QCOMPARE(copy.autojoin, (QStringList{u"#a"_s, u"#b"_s}));
    QVERIFY(copy.useSsl);
    copy.nickname = u"bob"_s;
    QCOMPARE(connection.serverConfig().nickname, u"alice"_s);
}

void TestIRCConnection::readsTheAlternativeNickOnConnecting()
{
    TestSession session;
    ServerConfig config;
    config.nickname = u"ignored"_s;
    config.realName = u"ignored"_s;
    config.altNickname = u"other"_s;
    session.connection.setServerConfig(config);
    QVERIFY(session.open(u"alice"_s));
    config.altNickname = u"late"_s;
    session.connection.setServerConfig(config);
    session.server.send(u":s 433 * alice :in use"_s);
    QVERIFY(session.settle());
    QCOMPARE(session.sent(), QStringList{u"NICK other"_s});
}

void TestIRCConnection::updatesTheOwnNickFirst()
{
    TestSession session;
    QVERIFY(session.open(u"alice"_s));
    QStringList seen;
    connect(&session.connection, &IRCConnection::nickChanged, this,
            [&] { seen.append(session.connection.currentNick()); });
    session.server.send(u":bob!b@c NICK robert"_s);
    session.server.send(u":alice!b@c NICK :alicia"_s);
    session.server.send(u":alice!b@c NICK :impostor"_s);
    QVERIFY(session.settle());
    QCOMPARE(seen, (QStringList{u"alice"_s, u"alicia"_s, u"alicia"_s}));
    QCOMPARE(session.log.parsed(),
             (QStringList{uR"(nickChanged("bob", "robert"))"_s, uR"(ownNickChanged("alicia"))"_s,
                          uR"(nickChanged("alice", "alicia"))"_s,
                          uR"(nickChanged("alice", "impostor"))"_s}));
}

QTEST_GUILESS_MAIN(TestIRCConnection)
#include "tst_IRCConnection.moc"
