#include "FakeSleepService.h"
#include "Preloading.h"
#include "PrivateBus.h"
#include "RequiredTools.h"
#include "SleepInhibitor.h"
#include "TestSession.h"
#include "Waiting.h"

#include <QDir>
#include <QElapsedTimer>
#include <QLocalServer>
#include <QLocalSocket>
#include <QProcess>
#include <QRegularExpression>
#include <QSocketNotifier>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>

#include <memory>

using namespace Qt::StringLiterals;
using Kind = FakeSleepService::Kind;
using Manner = FakeSleepService::Manner;

namespace {

// With this argument, this program connects to a silent server and prints the session's events
// until its standard input is readable.
constexpr QLatin1StringView RunSession = "--run-session"_L1;

int runSession(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    TestSession session;
    QTextStream out(stdout);
    const auto print = [&out](const QString &what) { out << what << Qt::endl; };
    QObject::connect(&session.connection, &IRCConnection::connected, &application,
                     [print] { print(u"connected"_s); });
    QObject::connect(&session.connection, &IRCConnection::errorOccurred, &application, print);
    QObject::connect(&session.connection, &IRCConnection::disconnected, &application,
                     [print] { print(u"disconnected"_s); });
    const QSocketNotifier notifier(0, QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
    session.startConnecting();
    return QCoreApplication::exec();
}

// Waits for a line of output of `process`.
bool waitForOutput(QProcess &process, const QString &line)
{
    return QTest::qWaitFor(
            [&] { return process.canReadLine() && process.readLine().trimmed() == line.toUtf8(); },
            WaitTimeout);
}

qsizetype openFiles()
{
    return QDir(u"/proc/self/fd"_s).entryList(QDir::Files | QDir::System).size();
}

const QString PortalRequest =
        u"org.freedesktop.portal.Inhibit |  | 4 | reason=Maintaining IRC connection"_s;
const QString LogindRequest =
        u"org.freedesktop.login1.Manager | idle | Velmora | Maintaining IRC connection | block"_s;

} // namespace

class TestSleepInhibitor final : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void requestsFromThePortalFirst();
    void fallsBackOnLogind_data();
    void fallsBackOnLogind();
    void requestsNothingBeforeTheConnection();
    void releasesWhenTheSessionEnds_data();
    void releasesWhenTheSessionEnds();
    void releasesBeforeTheSocketCloses();
    void releasesAfterAPingTimeout();
    void releasesWhenTheProgramQuits_data();
    void releasesWhenTheProgramQuits();
    void requestsOnceAfterASecondConnect();
    void leaksNothingOverAHundredConnections_data();
    void leaksNothingOverAHundredConnections();
    void releasesALateGrant_data();
    void releasesALateGrant();

    void worksWithoutAService();
    void worksWithServicesThatRefuse();
    void worksAfterAServiceDies();
    void worksAfterTheBusDies();
    void requestsNothingWithoutABus();
    void isNotBlockedByASilentBus();
    void ignoresAnUnknownAssertion();

private:
    [[nodiscard]] std::unique_ptr<FakeSleepService>
    startService(Kind kind, Manner manner = Manner::Grants) const;
    [[nodiscard]] bool isSessionWorking();

    std::unique_ptr<PrivateBus> bus;
    std::unique_ptr<TestSession> session;
};

void TestSleepInhibitor::init()
{
    QTest::failOnWarning(QRegularExpression(u"."_s));
    REQUIRE_TOOLS(u"dbus-daemon"_s);
    bus = std::make_unique<PrivateBus>();
    QVERIFY(bus->start());
    session = std::make_unique<TestSession>();
}

void TestSleepInhibitor::cleanup()
{
    session.reset();
    bus.reset();
}

std::unique_ptr<FakeSleepService> TestSleepInhibitor::startService(Kind kind, Manner manner) const
{
    return std::make_unique<FakeSleepService>(bus->address(), kind, manner);
}

// Returns true if lines still arrive in both directions.
bool TestSleepInhibitor::isSessionWorking()
{
    return session->settle() && session->sent().isEmpty() && session->log.parsed().isEmpty();
}

void TestSleepInhibitor::requestsFromThePortalFirst()
{
    const auto portal = startService(Kind::Portal);
    const auto logind = startService(Kind::Logind);
    QVERIFY(session->open());
    QTRY_COMPARE_WITH_TIMEOUT(portal->heldGrants(), 1, WaitTimeout);
    QCOMPARE(portal->requestTexts(), QStringList{PortalRequest});
    QVERIFY(logind->requestTexts().isEmpty());
}

void TestSleepInhibitor::fallsBackOnLogind_data()
{
    QTest::addColumn<bool>("hasPortal");
    QTest::newRow("no portal") << false;
    QTest::newRow("portal refuses") << true;
}

void TestSleepInhibitor::fallsBackOnLogind()
{
    QFETCH(const bool, hasPortal);
    const auto portal = hasPortal ? startService(Kind::Portal, Manner::Refuses) : nullptr;
    const auto logind = startService(Kind::Logind);
    QVERIFY(session->open());
    QTRY_COMPARE_WITH_TIMEOUT(logind->heldGrants(), 1, WaitTimeout);
    QCOMPARE(logind->requestTexts(), QStringList{LogindRequest});
    session->connection.disconnectFromServer();
    QTRY_COMPARE_WITH_TIMEOUT(logind->heldGrants(), 0, WaitTimeout);
    QCOMPARE(logind->requestTexts().size(), 1);
    if (hasPortal)
        QCOMPARE(portal->requestTexts(), QStringList{PortalRequest});
}

void TestSleepInhibitor::requestsNothingBeforeTheConnection()
{
    const auto portal = startService(Kind::Portal);
    session->server.stopListening();
    session->startConnecting();
    QVERIFY(session->log.waitFor(uR"(errorOccurred("Connection refused"))"_s));
    session->connection.disconnectFromServer();
    QVERIFY(session->server.listenAgain());
    QVERIFY(session->open());
    QTRY_COMPARE_WITH_TIMEOUT(portal->heldGrants(), 1, WaitTimeout);
    QCOMPARE(portal->requestTexts().size(), 1);
}

void TestSleepInhibitor::releasesWhenTheSessionEnds_data()
{
    QTest::addColumn<QString>("ending");
    QTest::newRow("the user disconnects") << u"disconnect"_s;
    QTest::newRow("the server closes") << u"close"_s;
    QTest::newRow("the connection breaks") << u"reset"_s;
    QTest::newRow("the session is destroyed") << u"destroy"_s;
}

void TestSleepInhibitor::releasesWhenTheSessionEnds()
{
    QFETCH(const QString, ending);
    const auto portal = startService(Kind::Portal);
    QVERIFY(session->open());
    QTRY_COMPARE_WITH_TIMEOUT(portal->heldGrants(), 1, WaitTimeout);
    if (ending == u"disconnect"_s)
        session->connection.disconnectFromServer();
    else if (ending == u"close"_s)
        session->server.close();
    else if (ending == u"reset"_s)
        session->server.abort();
    else
        session.reset();
    QTRY_COMPARE_WITH_TIMEOUT(portal->heldGrants(), 0, WaitTimeout);
    QCOMPARE(portal->releasedGrants(), 1);
    QCOMPARE(portal->requestTexts().size(), 1);
}

// The connection stays open because the server does not read.
void TestSleepInhibitor::releasesBeforeTheSocketCloses()
{
    const auto portal = startService(Kind::Portal);
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    session->connection.connectToServer(u"127.0.0.1"_s, server.serverPort(), u"me"_s, QString(),
                                        false);
    QTRY_VERIFY_WITH_TIMEOUT(server.hasPendingConnections(), WaitTimeout);
    server.nextPendingConnection()->setReadBufferSize(1);
    QTRY_COMPARE_WITH_TIMEOUT(portal->heldGrants(), 1, WaitTimeout);
    session->log.clear();
    session->connection.sendRaw(QString(20'000'000, u'x'));
    session->connection.disconnectFromServer();
    QTRY_COMPARE_WITH_TIMEOUT(portal->heldGrants(), 0, WaitTimeout);
    QVERIFY(session->log.entries().isEmpty());
}

void TestSleepInhibitor::releasesAfterAPingTimeout()
{
    REQUIRE_TOOLS(u"faketime"_s);
    const auto portal = startService(Kind::Portal);
    // The accelerated clock shortens QtDBus's timeout for the portal's reply to about one second. A
    // stall of that length needs another attempt.
    constexpr int Attempts = 5;
    for (int attempt = 1; portal->releasedGrants() == 0 && attempt <= Attempts; ++attempt) {
        QProcess program;
        program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        const QStringList clock = fastClockCommand();
        program.start(clock.first(),
                      clock.mid(1)
                              + QStringList{QCoreApplication::applicationFilePath(), RunSession});
        QVERIFY(waitForOutput(program, u"connected"_s));
        QTRY_COMPARE_WITH_TIMEOUT(portal->requestTexts().size(), attempt, WaitTimeout);
        QVERIFY(waitForOutput(program, u"Ping timeout: no response to PING for 45s"_s));
        QVERIFY(waitForOutput(program, u"disconnected"_s));
        static_cast<void>(QTest::qWaitFor([&] { return portal->releasedGrants() == 1; }));
        program.closeWriteChannel();
        QVERIFY(program.waitForFinished(WaitTimeout));
        QCOMPARE(program.exitCode(), 0);
    }
    QCOMPARE(portal->releasedGrants(), 1);
    QTRY_COMPARE_WITH_TIMEOUT(portal->heldGrants(), 0, WaitTimeout);
}

void TestSleepInhibitor::releasesWhenTheProgramQuits_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::newRow("portal") << Kind::Portal;
    QTest::newRow("logind") << Kind::Logind;
}

void TestSleepInhibitor::releasesWhenTheProgramQuits()
{
    QFETCH(const Kind, kind);
    const auto service = startService(kind);
    QProcess program;
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    program.start(QCoreApplication::applicationFilePath(), {RunSession});
    QVERIFY(waitForOutput(program, u"connected"_s));
    QTRY_COMPARE_WITH_TIMEOUT(service->heldGrants(), 1, WaitTimeout);
    program.closeWriteChannel();
    QTRY_COMPARE_WITH_TIMEOUT(service->heldGrants(), 0, WaitTimeout);
    QVERIFY(program.state() == QProcess::NotRunning || program.waitForFinished(WaitTimeout));
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 0);
}

void TestSleepInhibitor::requestsOnceAfterASecondConnect()
{
    const auto portal = startService(Kind::Portal);
    QVERIFY(session->open());
    QTRY_COMPARE_WITH_TIMEOUT(portal->heldGrants(), 1, WaitTimeout);
    QVERIFY(session->open());
    QVERIFY(session->server.waitForEnd(0));
    // The replaced socket ends before its successor connects, and releases the first grant.
    QTRY_COMPARE_WITH_TIMEOUT(portal->heldGrants(), 1, WaitTimeout);
    QCOMPARE(portal->requestTexts().size() - portal->releasedGrants(), 1);
    session->connection.disconnectFromServer();
    QTRY_COMPARE_WITH_TIMEOUT(portal->heldGrants(), 0, WaitTimeout);
}

void TestSleepInhibitor::leaksNothingOverAHundredConnections_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::newRow("portal") << Kind::Portal;
    QTest::newRow("logind") << Kind::Logind;
}

void TestSleepInhibitor::leaksNothingOverAHundredConnections()
{
    QFETCH(const Kind, kind);
    const auto service = startService(kind);
    qsizetype before = 0;
    for (int i = 1; i <= 101; ++i) {
        QVERIFY(session->open());
        QVERIFY(QTest::qWaitFor([&] { return service->heldGrants() == 1; }, WaitTimeout));
        QCOMPARE(service->requestTexts().size(), i);
        if (i % 2 == 0)
            session->connection.disconnectFromServer();
        else
            session->server.abort();
        QVERIFY(session->log.waitFor(u"disconnected()"_s));
        QVERIFY(QTest::qWaitFor([&] { return service->heldGrants() == 0; }, WaitTimeout));
        QVERIFY(session->server.waitForEnd());
        if (i == 1)
            before = openFiles();
    }
    QCOMPARE(service->releasedGrants(), 101);
    // The fake logind keeps its end of each lock. A bus connection closes a little later.
    const qsizetype kept = kind == Kind::Logind ? 100 : 0;
    QTRY_VERIFY2_WITH_TIMEOUT(openFiles() <= before + kept,
                              qPrintable(QString::number(openFiles() - before)), WaitTimeout);
}

void TestSleepInhibitor::releasesALateGrant_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::newRow("portal") << Kind::Portal;
    QTest::newRow("logind") << Kind::Logind;
}

void TestSleepInhibitor::releasesALateGrant()
{
    QFETCH(const Kind, kind);
    const auto service = startService(kind, Manner::Delays);
    QVERIFY(session->open());
    QTRY_COMPARE_WITH_TIMEOUT(service->requestTexts().size(), 1, WaitTimeout);
    session->connection.disconnectFromServer();
    QVERIFY(session->log.waitFor(u"disconnected()"_s));
    service->grantPending();
    QTRY_COMPARE_WITH_TIMEOUT(service->releasedGrants(), 1, WaitTimeout);
    QCOMPARE(service->heldGrants(), 0);
}

void TestSleepInhibitor::worksWithoutAService()
{
    QVERIFY(session->open());
    QVERIFY(isSessionWorking());
    session->connection.disconnectFromServer();
    QVERIFY(session->open());

    // A service that starts later is used for the next connection.
    const auto portal = startService(Kind::Portal);
    session->connection.disconnectFromServer();
    QVERIFY(session->log.waitFor(u"disconnected()"_s));
    QVERIFY(session->open());
    QTRY_COMPARE_WITH_TIMEOUT(portal->heldGrants(), 1, WaitTimeout);
}

void TestSleepInhibitor::worksWithServicesThatRefuse()
{
    const auto portal = startService(Kind::Portal, Manner::Refuses);
    const auto logind = startService(Kind::Logind, Manner::Refuses);
    QVERIFY(session->open());
    QTRY_COMPARE_WITH_TIMEOUT(logind->requestTexts().size(), 1, WaitTimeout);
    QVERIFY(isSessionWorking());
    session->connection.disconnectFromServer();
    QVERIFY(session->log.waitFor(u"disconnected()"_s));
    QVERIFY(session->open());
    QTRY_COMPARE_WITH_TIMEOUT(logind->requestTexts().size(), 2, WaitTimeout);
    QCOMPARE(portal->requestTexts().size(), 2);
}

void TestSleepInhibitor::worksAfterAServiceDies()
{
    auto portal = startService(Kind::Portal);
    QVERIFY(session->open());
    QTRY_COMPARE_WITH_TIMEOUT(portal->heldGrants(), 1, WaitTimeout);
    portal.reset();
    QVERIFY(isSessionWorking());
    session->connection.disconnectFromServer();
    QVERIFY(session->log.waitFor(u"disconnected()"_s));

    portal = startService(Kind::Portal, Manner::Delays);
    QVERIFY(session->open());
    QTRY_COMPARE_WITH_TIMEOUT(portal->requestTexts().size(), 1, WaitTimeout);
    portal.reset();
    QVERIFY(isSessionWorking());
}

void TestSleepInhibitor::worksAfterTheBusDies()
{
    auto portal = startService(Kind::Portal);
    QVERIFY(session->open());
    QTRY_COMPARE_WITH_TIMEOUT(portal->heldGrants(), 1, WaitTimeout);
    bus->kill();
    QVERIFY(isSessionWorking());
    session->connection.disconnectFromServer();
    QVERIFY(session->log.waitFor(u"disconnected()"_s));
    QVERIFY(session->open());
    QVERIFY(isSessionWorking());
}

void TestSleepInhibitor::requestsNothingWithoutABus()
{
    for (const QString &address : {u"unix:path=/nonexistent"_s, u"autolaunch:"_s, u"nonsense"_s,
                                   u"unix:path=/dev/null;nonsense:x=y"_s}) {
        PrivateBus::useAddress(address);
        QCOMPARE(SleepInhibitor::acquire(u"reason"_s), 0U);
        QVERIFY(session->open());
        QVERIFY(isSessionWorking());
        session->connection.disconnectFromServer();
        QVERIFY(session->log.waitFor(u"disconnected()"_s));
    }
}

void TestSleepInhibitor::isNotBlockedByASilentBus()
{
    const QTemporaryDir folder;
    QLocalServer silent;
    QVERIFY(silent.listen(folder.filePath(u"bus"_s)));
    PrivateBus::useAddress(QString(u"unix:path="_s + silent.fullServerName()));

    // A blocking call would wait for 25 seconds each time.
    QElapsedTimer timer;
    timer.start();
    QVERIFY(session->open());
    QVERIFY(isSessionWorking());
    QTRY_VERIFY_WITH_TIMEOUT(silent.hasPendingConnections(), WaitTimeout);
    session->connection.disconnectFromServer();
    QVERIFY(session->log.waitFor(u"disconnected()"_s));
    QVERIFY(session->open());
    session.reset();
    QVERIFY(timer.elapsed() < 20000);
}

void TestSleepInhibitor::ignoresAnUnknownAssertion()
{
    const auto portal = startService(Kind::Portal);
    const quint32 assertion = SleepInhibitor::acquire(u"reason"_s);
    QVERIFY(assertion != 0);
    QTRY_COMPARE_WITH_TIMEOUT(portal->heldGrants(), 1, WaitTimeout);
    SleepInhibitor::release(0);
    SleepInhibitor::release(assertion + 1000);
    SleepInhibitor::release(assertion);
    SleepInhibitor::release(assertion);
    QTRY_COMPARE_WITH_TIMEOUT(portal->heldGrants(), 0, WaitTimeout);
    QCOMPARE(portal->releasedGrants(), 1);
}

int main(int argc, char **argv)
{
    if (argc > 1 && QLatin1StringView(argv[1]) == RunSession)
        return runSession(argc, argv);
    QCoreApplication application(argc, argv);
    TestSleepInhibitor test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_SleepInhibitor.moc"
