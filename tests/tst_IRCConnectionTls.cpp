#include "RequiredTools.h"
#include "TemporaryStore.h"
#include "TestSession.h"
#include "TlsAuthority.h"

#include <QRegularExpression>
#include <QSettings>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

// Sessions over TLS with trusted and untrusted certificates.
class TestIRCConnectionTls final : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void registersOverTls();
    void refusesACertificate_data();
    void refusesACertificate();
    void failsWithAServerWithoutTls();
    void disconnectsDuringTheHandshake_data();
    void disconnectsDuringTheHandshake();

private:
    std::unique_ptr<TemporaryStore> store;
    std::unique_ptr<TlsAuthority> authority;
};

void TestIRCConnectionTls::initTestCase()
{
    REQUIRE_TOOLS(u"openssl"_s);
    store = std::make_unique<TemporaryStore>();
    authority = std::make_unique<TlsAuthority>();
    QVERIFY(!authority->issue(u"localhost"_s).localCertificate().isNull());
}

void TestIRCConnectionTls::init()
{
    QTest::failOnWarning(QRegularExpression(u"."_s));
    store->clear();
}

void TestIRCConnectionTls::registersOverTls()
{
    authority->makeTrusted();
    TestSession session(authority->issue(u"localhost"_s));
    session.startConnecting();
    QVERIFY(session.server.waitForClient());
    QVERIFY(session.server.waitForLine(u"USER me 0 * :Real Name"_s));
    session.server.send(u":s 001 me :Welcome"_s);
    QVERIFY(session.log.waitFor(u"registered()"_s));
    QVERIFY(session.sent().isEmpty());
    QCOMPARE(session.server.lines().mid(0, 2),
             (QStringList{u"NICK me"_s, u"USER me 0 * :Real Name"_s}));

    session.log.clear();
    session.connection.disconnectFromServer();
    QVERIFY(session.log.waitFor(u"disconnected()"_s));
    QVERIFY(session.server.waitForEnd());
    QVERIFY(session.server.received().endsWith("QUIT :Velmora leaving\r\n"));
    QCOMPARE(session.log.entries(), QStringList{u"disconnected()"_s});
}

void TestIRCConnectionTls::refusesACertificate_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("complaint");
    QTest::newRow("self-signed") << u"self-signed"_s
                                 << u"The certificate is self-signed, and untrusted"_s;
    QTest::newRow("another host")
            << u"other host"_s
            << u"The host name did not match any of the valid hosts for this certificate"_s;
    QTest::newRow("unknown authority")
            << u"unknown"_s
            << u"The issuer certificate of a locally looked up certificate could not be found"_s;
}

void TestIRCConnectionTls::refusesACertificate()
{
    QFETCH(const QString, kind);
    QFETCH(const QString, complaint);
    // Intended: the preference has no effect.
    QSettings().setValue(u"acceptInvalidSsl"_s, true);
    const TlsAuthority strange;
    authority->makeTrusted();
    const QSslConfiguration tls = kind == u"self-signed"_s ? authority->selfSigned(u"localhost"_s)
                                  : kind == u"other host"_s
                                          ? authority->issue(u"irc.elsewhere.test"_s)
                                          : strange.issue(u"localhost"_s);
    TestSession session(tls);
    session.startConnecting();
    QVERIFY(session.log.waitFor(u"disconnected()"_s));
    QCOMPARE(session.log.entries().size(), 3);
    QCOMPARE(session.log.entries().at(0), u"connected()"_s);
    QVERIFY2(session.log.entries().at(1).contains(complaint),
             qPrintable(session.log.entries().at(1)));
    QVERIFY(!session.connection.isConnected());
    QVERIFY(session.server.clientCount() == 0 || session.server.received().isEmpty());
}

void TestIRCConnectionTls::failsWithAServerWithoutTls()
{
    TestSession session;
    session.isSecure = true;
    session.startConnecting();
    QVERIFY(session.server.waitForClient());
    session.server.send(u":s NOTICE * :Looking up your hostname"_s);
    QVERIFY(session.log.waitFor(u"disconnected()"_s));
    QCOMPARE(session.log.parsed().size(), 3);
    QVERIFY(session.log.raw().isEmpty());
    QVERIFY(session.log.entries().at(1).startsWith(u"errorOccurred("_s));
}

void TestIRCConnectionTls::disconnectsDuringTheHandshake_data()
{
    QTest::addColumn<bool>("answers");
    QTest::newRow("never answered") << false;
    QTest::newRow("not answered yet") << true;
}

void TestIRCConnectionTls::disconnectsDuringTheHandshake()
{
    QFETCH(const bool, answers);
    authority->makeTrusted();
    const auto session = answers ? std::make_unique<TestSession>(authority->issue(u"localhost"_s))
                                 : std::make_unique<TestSession>();
    session->isSecure = true;
    connect(&session->connection, &IRCConnection::connected, &session->connection,
            &IRCConnection::disconnectFromServer);
    session->startConnecting();
    QVERIFY(session->log.waitFor(u"disconnected()"_s));
    QCOMPARE(session->log.entries(), (QStringList{u"connected()"_s, u"disconnected()"_s}));
    QVERIFY(!session->connection.isConnected());
    QVERIFY(answers || session->server.waitForClient());
    QVERIFY(session->server.waitForEnd());
    QVERIFY(!session->server.received().contains("QUIT"));
}

QTEST_GUILESS_MAIN(TestIRCConnectionTls)
#include "tst_IRCConnectionTls.moc"
