#include "FakeSleepService.h"
#include "Preloading.h"
#include "PrivateBus.h"
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

// With this argument the program is the one that holds a session with a silent server, until there
// is something to read for it. It writes down how the session goes.
constexpr QLatin1StringView HoldASession = "--hold-a-session"_L1;

int holdASession(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    TestSession session;
    QTextStream out(stdout);
    const auto say = [&out](const QString &what) { out << what << Qt::endl; };
    QObject::connect(&session.connection, &IRCConnection::connected, &application,
                     [say] { say(u"connected"_s); });
    QObject::connect(&session.connection, &IRCConnection::errorOccurred, &application, say);
    QObject::connect(&session.connection, &IRCConnection::disconnected, &application,
                     [say] { say(u"disconnected"_s); });
    const QSocketNotifier notifier(0, QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
    session.startConnecting();
    return QCoreApplication::exec();
}

// Waits for a line of a program that this test started.
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

const QString PortalAsking =
        u"org.freedesktop.portal.Inhibit |  | 4 | reason=Maintaining IRC connection"_s;
const QString LogindAsking =
        u"org.freedesktop.login1.Manager | idle | Velmora | Maintaining IRC connection | block"_s;

} // namespace

class TestSleepInhibitor final : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void asksThePortalFirst();
    void fallsBackOnLogind_data();
    void fallsBackOnLogind();
    void asksForNothingBeforeALinkIsUp();
    void releasesOnEachWayOut_data();
    void releasesOnEachWayOut();
    void releasesBeforeTheLinkIsGone();
    void releasesAtATimeout();
    void releasesWhenTheProgramQuits_data();
    void releasesWhenTheProgramQuits();
    void holdsOnceAfterASecondConnect();
    void leaksNothingOverAHundredConnections_data();
    void leaksNothingOverAHundredConnections();
    void givesBackWhatComesTooLate_data();
    void givesBackWhatComesTooLate();

    void livesWithoutAService();
    void livesWithServicesThatRefuse();
    void livesWithTheDeathOfAService();
    void livesWithTheDeathOfTheBus();
    void holdsNothingWithoutABus();
    void isNotHeldUpByABusThatDoesNotAnswer();
    void ignoresAStrangeNumber();

private:
    [[nodiscard]] std::unique_ptr<FakeSleepService> offer(Kind kind,
                                                          Manner manner = Manner::Grants) const;
    [[nodiscard]] bool isInOrder();

    std::unique_ptr<PrivateBus> bus;
    std::unique_ptr<TestSession> session;
};

void TestSleepInhibitor::init()
{
    QTest::failOnWarning(QRegularExpression(u"."_s));
    bus = std::make_unique<PrivateBus>();
    QVERIFY2(bus->start(), "dbus-daemon is not installed");
    session = std::make_unique<TestSession>();
}

void TestSleepInhibitor::cleanup()
{
    session.reset();
    bus.reset();
}

std::unique_ptr<FakeSleepService> TestSleepInhibitor::offer(Kind kind, Manner manner) const
{
    return std::make_unique<FakeSleepService>(bus->address(), kind, manner);
}

// Whatever becomes of the services, lines go both ways.
bool TestSleepInhibitor::isInOrder()
{
    return session->settle() && session->sent().isEmpty() && session->log.parsed().isEmpty();
}

void TestSleepInhibitor::asksThePortalFirst()
{
    const auto portal = offer(Kind::Portal);
    const auto logind = offer(Kind::Logind);
    QVERIFY(session->open());
    QTRY_COMPARE_WITH_TIMEOUT(portal->heldGrants(), 1, WaitTimeout);
    QCOMPARE(portal->requestTexts(), QStringList{PortalAsking});
    QVERIFY(logind->requestTexts().isEmpty());
}

void TestSleepInhibitor::fallsBackOnLogind_data()
{
    QTest::addColumn<bool>("hasPortal");
    QTest::newRow("no portal") << false;
    QTest::newRow("a portal that refuses") << true;
}

void TestSleepInhibitor::fallsBackOnLogind()
{
    QFETCH(const bool, hasPortal);
    const auto portal = hasPortal ? offer(Kind::Portal, Manner::Refuses) : nullptr;
    const auto logind = offer(Kind::Logind);
    QVERIFY(session->open());
    QTRY_COMPARE_WITH_TIMEOUT(logind->heldGrants(), 1, WaitTimeout);
    QCOMPARE(logind->requestTexts(), QStringList{LogindAsking});
    session->connection.disconnectFromServer();
    QTRY_COMPARE_WITH_TIMEOUT(logind->heldGrants(), 0, WaitTimeout);
    QCOMPARE(logind->requestTexts().size(), 1);
    if (hasPortal)
        QCOMPARE(portal->requestTexts(), QStringList{PortalAsking});
}

void TestSleepInhibitor::asksForNothingBeforeALinkIsUp()
{
    const auto portal = offer(Kind::Portal);
    session->server.stopListening();
    session->startConnecting();
    QVERIFY(session->log.waitFor(uR"(errorOccurred("Connection refused"))"_s));
    session->connection.disconnectFromServer();
    QVERIFY(session->server.listenAgain());
    QVERIFY(session->open());
    QTRY_COMPARE_WITH_TIMEOUT(portal->heldGrants(), 1, WaitTimeout);
    QCOMPARE(portal->requestTexts().size(), 1);
}

void TestSleepInhibitor::releasesOnEachWayOut_data()
{
    QTest::addColumn<QString>("way");
    QTest::newRow("the user disconnects") << u"disconnect"_s;
    QTest::newRow("the server closes") << u"close"_s;
    QTest::newRow("the link breaks") << u"cut"_s;
    QTest::newRow("the session goes") << u"destroy"_s;
}

void TestSleepInhibitor::releasesOnEachWayOut()
{
    QFETCH(const QString, way);
    const auto portal = offer(Kind::Portal);
    QVERIFY(session->open());
    QTRY_COMPARE_WITH_TIMEOUT(portal->heldGrants(), 1, WaitTimeout);
    if (way == u"disconnect"_s)
        session->connection.disconnectFromServer();
    else if (way == u"close"_s)
        session->server.close();
    else if (way == u"cut"_s)
        session->server.abort();
    else
        session.reset();
    QTRY_COMPARE_WITH_TIMEOUT(portal->heldGrants(), 0, WaitTimeout);
    QCOMPARE(portal->releasedGrants(), 1);
    QCOMPARE(portal->requestTexts().size(), 1);
}

// A server that reads nothing keeps the link from closing.
void TestSleepInhibitor::releasesBeforeTheLinkIsGone()
{
    const auto portal = offer(Kind::Portal);
    QTcpServer deaf;
    QVERIFY(deaf.listen(QHostAddress::LocalHost));
    session->connection.connectToServer(u"127.0.0.1"_s, deaf.serverPort(), u"me"_s, QString(),
                                        false);
    QTRY_VERIFY_WITH_TIMEOUT(deaf.hasPendingConnections(), WaitTimeout);
    deaf.nextPendingConnection()->setReadBufferSize(1);
    QTRY_COMPARE_WITH_TIMEOUT(portal->heldGrants(), 1, WaitTimeout);
    session->log.clear();
    session->connection.sendRaw(QString(20'000'000, u'x'));
    session->connection.disconnectFromServer();
    QTRY_COMPARE_WITH_TIMEOUT(portal->heldGrants(), 0, WaitTimeout);
    QVERIFY(session->log.entries().isEmpty());
}

void TestSleepInhibitor::releasesAtATimeout()
{
    const auto portal = offer(Kind::Portal);
    QVERIFY2(hasFastClock(), "faketime is not installed");
    // The clock also shortens the time after which the portal's grant comes too late, to about one
    // second of ours. Who stalls for that long is asked anew.
    constexpr int Attempts = 5;
    for (int attempt = 1; portal->releasedGrants() == 0 && attempt <= Attempts; ++attempt) {
        QProcess program;
        program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        const QStringList clock = fastClockCommand();
        program.start(clock.first(),
                      clock.mid(1)
                              + QStringList{QCoreApplication::applicationFilePath(), HoldASession});
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
    const auto service = offer(kind);
    QProcess program;
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    program.start(QCoreApplication::applicationFilePath(), {HoldASession});
    QVERIFY(waitForOutput(program, u"connected"_s));
    QTRY_COMPARE_WITH_TIMEOUT(service->heldGrants(), 1, WaitTimeout);
    program.closeWriteChannel();
    QTRY_COMPARE_WITH_TIMEOUT(service->heldGrants(), 0, WaitTimeout);
    QVERIFY(program.state() == QProcess::NotRunning || program.waitForFinished(WaitTimeout));
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 0);
}

void TestSleepInhibitor::holdsOnceAfterASecondConnect()
{
    const auto portal = offer(Kind::Portal);
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
    const auto service = offer(kind);
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
    // The fake logind keeps its end of each lock. A link to the bus goes a little later.
    const qsizetype kept = kind == Kind::Logind ? 100 : 0;
    QTRY_VERIFY2_WITH_TIMEOUT(openFiles() <= before + kept,
                              qPrintable(QString::number(openFiles() - before)), WaitTimeout);
}

void TestSleepInhibitor::givesBackWhatComesTooLate_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::newRow("portal") << Kind::Portal;
    QTest::newRow("logind") << Kind::Logind;
}

void TestSleepInhibitor::givesBackWhatComesTooLate()
{
    QFETCH(const Kind, kind);
    const auto service = offer(kind, Manner::Delays);
    QVERIFY(session->open());
    QTRY_COMPARE_WITH_TIMEOUT(service->requestTexts().size(), 1, WaitTimeout);
    session->connection.disconnectFromServer();
    QVERIFY(session->log.waitFor(u"disconnected()"_s));
    service->grantPending();
    QTRY_COMPARE_WITH_TIMEOUT(service->releasedGrants(), 1, WaitTimeout);
    QCOMPARE(service->heldGrants(), 0);
}

void TestSleepInhibitor::livesWithoutAService()
{
    QVERIFY(session->open());
    QVERIFY(isInOrder());
    session->connection.disconnectFromServer();
    QVERIFY(session->open());

    // One that comes in the meantime is asked for the next connection.
    const auto portal = offer(Kind::Portal);
    session->connection.disconnectFromServer();
    QVERIFY(session->log.waitFor(u"disconnected()"_s));
    QVERIFY(session->open());
    QTRY_COMPARE_WITH_TIMEOUT(portal->heldGrants(), 1, WaitTimeout);
}

void TestSleepInhibitor::livesWithServicesThatRefuse()
{
    const auto portal = offer(Kind::Portal, Manner::Refuses);
    const auto logind = offer(Kind::Logind, Manner::Refuses);
    QVERIFY(session->open());
    QTRY_COMPARE_WITH_TIMEOUT(logind->requestTexts().size(), 1, WaitTimeout);
    QVERIFY(isInOrder());
    session->connection.disconnectFromServer();
    QVERIFY(session->log.waitFor(u"disconnected()"_s));
    QVERIFY(session->open());
    QTRY_COMPARE_WITH_TIMEOUT(logind->requestTexts().size(), 2, WaitTimeout);
    QCOMPARE(portal->requestTexts().size(), 2);
}

void TestSleepInhibitor::livesWithTheDeathOfAService()
{
    auto portal = offer(Kind::Portal);
    QVERIFY(session->open());
    QTRY_COMPARE_WITH_TIMEOUT(portal->heldGrants(), 1, WaitTimeout);
    portal.reset();
    QVERIFY(isInOrder());
    session->connection.disconnectFromServer();
    QVERIFY(session->log.waitFor(u"disconnected()"_s));

    portal = offer(Kind::Portal, Manner::Delays);
    QVERIFY(session->open());
    QTRY_COMPARE_WITH_TIMEOUT(portal->requestTexts().size(), 1, WaitTimeout);
    portal.reset();
    QVERIFY(isInOrder());
}

void TestSleepInhibitor::livesWithTheDeathOfTheBus()
{
    auto portal = offer(Kind::Portal);
    QVERIFY(session->open());
    QTRY_COMPARE_WITH_TIMEOUT(portal->heldGrants(), 1, WaitTimeout);
    bus->kill();
    QVERIFY(isInOrder());
    session->connection.disconnectFromServer();
    QVERIFY(session->log.waitFor(u"disconnected()"_s));
    QVERIFY(session->open());
    QVERIFY(isInOrder());
}

void TestSleepInhibitor::holdsNothingWithoutABus()
{
    for (const QString &address : {u"unix:path=/nonexistent"_s, u"autolaunch:"_s, u"nonsense"_s,
                                   u"unix:path=/dev/null;nonsense:x=y"_s}) {
        PrivateBus::useAddress(address);
        QCOMPARE(SleepInhibitor::acquire(u"reason"_s), 0U);
        QVERIFY(session->open());
        QVERIFY(isInOrder());
        session->connection.disconnectFromServer();
        QVERIFY(session->log.waitFor(u"disconnected()"_s));
    }
}

void TestSleepInhibitor::isNotHeldUpByABusThatDoesNotAnswer()
{
    const QTemporaryDir folder;
    QLocalServer mute;
    QVERIFY(mute.listen(folder.filePath(u"bus"_s)));
    PrivateBus::useAddress(QString(u"unix:path="_s + mute.fullServerName()));

    // An answer would be waited for 25 seconds each time.
    QElapsedTimer timer;
    timer.start();
    QVERIFY(session->open());
    QVERIFY(isInOrder());
    QTRY_VERIFY_WITH_TIMEOUT(mute.hasPendingConnections(), WaitTimeout);
    session->connection.disconnectFromServer();
    QVERIFY(session->log.waitFor(u"disconnected()"_s));
    QVERIFY(session->open());
    session.reset();
    QVERIFY(timer.elapsed() < 20000);
}

void TestSleepInhibitor::ignoresAStrangeNumber()
{
    const auto portal = offer(Kind::Portal);
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
    if (argc > 1 && QLatin1StringView(argv[1]) == HoldASession)
        return holdASession(argc, argv);
    QCoreApplication application(argc, argv);
    TestSleepInhibitor test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_SleepInhibitor.moc"
