#include "Preloading.h"
#include "RequiredTools.h"
#include "TestSession.h"
#include "TlsAuthority.h"
#include "Waiting.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QTcpSocket>
#include <QTest>
#include <QTextStream>
#include <QTimer>

#include <memory>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

using namespace Qt::StringLiterals;

namespace {

// With this argument, this program runs the sessions under an accelerated clock.
constexpr QLatin1StringView AcceleratedClock = "--under-a-fast-clock"_L1;

// Milliseconds of the accelerated clock.
constexpr qint64 SilenceBeforePing = 60000;
constexpr qint64 PongTimeout = 45000;
constexpr int TrafficInterval = 20000;

// More than twice the number of checks from the last traffic to a PING.
constexpr int EnoughChecks = 25;
constexpr int EnoughPings = 3;

// Runs a session with a server of a given behaviour, and prints what each check finds and does.
//
// Session and server share one process, so the times are independent of scheduling delays: code
// that runs before and after each check measures the least and the greatest possible silence.
class SessionMonitor final : public QObject
{
    Q_OBJECT

public:
    enum class Behaviour { Silent, AnswersPings, SendsNotices, ReceivesMessages, NoTls };

    SessionMonitor(const QString &label, Behaviour serverBehaviour);
    void begin();

    bool eventFilter(QObject *watched, QEvent *event) override;

signals:
    void finished();

private:
    void onBeforeCheck();
    void onAfterCheck();
    void sendNotice();
    void onDisconnected();
    [[nodiscard]] bool keepsConnection() const;
    [[nodiscard]] qint64 unsent() const;
    void write(const QString &what);

    QString name;
    Behaviour behaviour;
    QTimer trafficTimer;
    QElapsedTimer lastBegin; // Not later than the last traffic.
    QElapsedTimer lastEnd;   // Not earlier than the last traffic.
    QElapsedTimer lastNotice;
    QElapsedTimer checkStart;
    qint64 leastSilence = 0;
    qint64 unsentBeforeCheck = 0;
    bool isPongDue = false;
    bool hasClosed = false;
    int checkCount = 0;
    int pingCount = 0;
    TestSession session; // Destroyed first: it emits disconnected().
    QTimer *checks;
};

SessionMonitor::SessionMonitor(const QString &label, Behaviour serverBehaviour)
    : name(label)
    , behaviour(serverBehaviour)
    , checks(session.connection.findChild<QTimer *>())
{
    session.isSecure = behaviour == Behaviour::NoTls;
    checks->installEventFilter(this);
    connect(checks, &QTimer::timeout, this, &SessionMonitor::onAfterCheck);
    IRCConnection &connection = session.connection;
    connect(&connection, &IRCConnection::connected, this, [this] {
        lastEnd.start();
        isPongDue = false;
        if (behaviour == Behaviour::SendsNotices || behaviour == Behaviour::ReceivesMessages)
            trafficTimer.start(TrafficInterval);
    });
    connect(&connection, &IRCConnection::rawMessageReceived, this, [this] {
        lastBegin = lastNotice;
        lastEnd.start();
        isPongDue = false;
        write(u"receives"_s);
    });
    connect(&connection, &IRCConnection::errorOccurred, this, [this](const QString &error) {
        hasClosed = true;
        write(u"error "_s + error);
    });
    connect(&connection, &IRCConnection::disconnected, this, &SessionMonitor::onDisconnected);
    connect(&session.server, &ScriptedServer::lineReceived, this, [this](int, const QString &line) {
        if (!line.startsWith(u"PING"_s))
            return;
        write(u"line "_s + line);
        if (keepsConnection())
            sendNotice();
    });
    connect(&trafficTimer, &QTimer::timeout, this, [this] {
        if (behaviour == Behaviour::SendsNotices) {
            sendNotice();
            return;
        }
        lastBegin.start();
        session.connection.sendPrivmsg(u"#x"_s, u"anybody?"_s);
        lastEnd.start();
        write(u"sends"_s);
    });
}

void SessionMonitor::begin()
{
    lastBegin.start();
    session.startConnecting();
}

bool SessionMonitor::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == checks && event->type() == QEvent::Timer)
        onBeforeCheck();
    return QObject::eventFilter(watched, event);
}

void SessionMonitor::onBeforeCheck()
{
    checkStart.start();
    leastSilence = lastEnd.elapsed();
    unsentBeforeCheck = unsent();
    hasClosed = false;
}

// Connected to the timer after the session, so the check is done.
void SessionMonitor::onAfterCheck()
{
    const qint64 mostSilence = lastBegin.elapsed();
    const qint64 limit = isPongDue ? PongTimeout : SilenceBeforePing;
    const bool hasPinged = !hasClosed && unsent() > unsentBeforeCheck;
    const QString act = hasClosed ? u"closes"_s : hasPinged ? u"pings"_s : u"waits"_s;
    write(u"check %1 %2 %3 %4"_s.arg(limit).arg(leastSilence).arg(mostSilence).arg(act));
    if (hasPinged) {
        lastBegin = checkStart;
        lastEnd.start();
        isPongDue = true;
        ++pingCount;
    }
    ++checkCount;
    if (keepsConnection() && checkCount >= EnoughChecks
        && (behaviour != Behaviour::AnswersPings || pingCount >= EnoughPings))
        emit finished();
}

// Any data counts as an answer to PING.
void SessionMonitor::sendNotice()
{
    lastNotice.start();
    session.server.send(u":a!b@c NOTICE me :hm"_s);
}

void SessionMonitor::onDisconnected()
{
    trafficTimer.stop();
    write(u"disconnected"_s);
    // After a stall, the session may rightly close the connection; reconnect then.
    if (keepsConnection())
        QTimer::singleShot(0, this, &SessionMonitor::begin);
    else
        QTimer::singleShot(0, this, &SessionMonitor::finished);
}

bool SessionMonitor::keepsConnection() const
{
    return behaviour != Behaviour::Silent && behaviour != Behaviour::NoTls;
}

// Written bytes stay in the socket's buffer until the next event-loop iteration.
qint64 SessionMonitor::unsent() const
{
    return session.connection.findChild<QTcpSocket *>()->bytesToWrite();
}

void SessionMonitor::write(const QString &what)
{
    QTextStream(stdout) << name << u' ' << what << Qt::endl;
}

int runSessions(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    SessionMonitor silent(u"silent"_s, SessionMonitor::Behaviour::Silent);
    SessionMonitor answersPings(u"answersPings"_s, SessionMonitor::Behaviour::AnswersPings);
    SessionMonitor sendsNotices(u"sendsNotices"_s, SessionMonitor::Behaviour::SendsNotices);
    SessionMonitor receivesMessages(u"receivesMessages"_s,
                                    SessionMonitor::Behaviour::ReceivesMessages);
    SessionMonitor noTls(u"noTls"_s, SessionMonitor::Behaviour::NoTls);
    QSet<SessionMonitor *> unfinished{&silent, &answersPings, &sendsNotices, &receivesMessages,
                                      &noTls};
    for (SessionMonitor *monitor : std::as_const(unfinished)) {
        QObject::connect(monitor, &SessionMonitor::finished, &application, [&unfinished, monitor] {
            unfinished.remove(monitor);
            if (unfinished.isEmpty())
                QCoreApplication::quit();
        });
        monitor->begin();
    }
    return QCoreApplication::exec();
}

// The output of one SessionMonitor.
struct Timeline
{
    QStringList events; ///< Without times, and without checks that did nothing.
    QStringList faults; ///< Checks that did the wrong thing.
};

void addEntry(Timeline &timeline, const QString &entry)
{
    static const QRegularExpression form(uR"(^check (\d+) (\d+) (\d+) (\w+)$)"_s);
    const QRegularExpressionMatch check = form.match(entry);
    const QString act = check.hasMatch() ? check.captured(4) : entry;
    if (act != u"waits"_s)
        timeline.events.append(act);
    if (!check.hasMatch())
        return;
    const qint64 limit = check.captured(1).toLongLong();
    const bool isDue = check.captured(3).toLongLong() > limit; // Possibly due.
    const bool isOverdue = check.captured(2).toLongLong() > limit;
    const QString dueAct = limit == PongTimeout ? u"closes"_s : u"pings"_s;
    if (act == u"waits"_s ? isOverdue : !isDue || act != dueAct)
        timeline.faults.append(entry);
}

int optionOf(const IRCConnection &connection, int level, int option)
{
    const auto descriptor =
            static_cast<int>(connection.findChild<QTcpSocket *>()->socketDescriptor());
    int value = -1;
    socklen_t size = sizeof value;
    return getsockopt(descriptor, level, option, &value, &size) == 0 ? value : -1;
}

} // namespace

class TestKeepAlive final : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void timerRunsWhileConnected();
    void timerDoesNotRunWhileConnecting();
    void timerStopsWhenTheUserDisconnects();
    void timerStopsWhenAReplacedSocketCloses();
    void checksNothingWithoutAConnection();
    void setsSocketOptions_data();
    void setsSocketOptions();

    void pingsASilentServerOnceAndDisconnects();
    void disconnectsFromAServerThatNeverAnswersTls();
    void staysConnectedToAServerThatAnswers();
    void sendsNoPingWhileTheServerSends();
    void sendsNoPingWhileTheUserSends();

private:
    [[nodiscard]] bool waitForTimelines();

    QProcess process;
    QMap<QString, Timeline> timelines;
};

void TestKeepAlive::initTestCase()
{
    REQUIRE_TOOLS(u"faketime"_s);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    const QStringList clock = fastClockCommand();
    process.start(clock.first(),
                  clock.mid(1)
                          + QStringList{QCoreApplication::applicationFilePath(), AcceleratedClock});
    QVERIFY(process.waitForStarted(WaitTimeout));
}

void TestKeepAlive::init()
{
    QTest::failOnWarning(QRegularExpression(u"."_s));
}

void TestKeepAlive::timerRunsWhileConnected()
{
    TestSession session;
    const auto *timer = session.connection.findChild<QTimer *>();
    QVERIFY(!timer->isActive());
    QVERIFY(session.open());
    QVERIFY(timer->isActive());
    QCOMPARE(timer->interval(), 10000);
    QVERIFY(!timer->isSingleShot());
    session.server.close();
    QVERIFY(session.log.waitFor(u"disconnected()"_s));
    QVERIFY(!timer->isActive());

    QVERIFY(session.open());
    QVERIFY(timer->isActive());
    session.connection.disconnectFromServer();
    QVERIFY(!timer->isActive());
}

void TestKeepAlive::timerDoesNotRunWhileConnecting()
{
    TestSession session;
    session.startConnecting();
    QVERIFY(!session.connection.findChild<QTimer *>()->isActive());
    session.connection.disconnectFromServer();
    QVERIFY(session.log.waitFor(u"connected()"_s));
    QVERIFY(session.connection.findChild<QTimer *>()->isActive());
}

// The socket closes later: it sends what was written before.
void TestKeepAlive::timerStopsWhenTheUserDisconnects()
{
    TestSession session;
    const auto *timer = session.connection.findChild<QTimer *>();
    QVERIFY(session.open());
    session.connection.sendRaw(QString(20'000'000, u'x'));
    session.connection.disconnectFromServer();
    QVERIFY(session.log.entries().isEmpty());
    QVERIFY(!timer->isActive());
    QVERIFY(session.log.waitFor(u"disconnected()"_s));

    // Also while a second connection is being established, which gets no QUIT.
    QVERIFY(session.open());
    session.startConnecting();
    QVERIFY(timer->isActive());
    session.connection.disconnectFromServer();
    QVERIFY(!timer->isActive());
}

// Intended: the end of a replaced socket stops the checks, although its successor is connected.
void TestKeepAlive::timerStopsWhenAReplacedSocketCloses()
{
    TestSession session;
    const auto *timer = session.connection.findChild<QTimer *>();
    QVERIFY(session.open());
    bool wasActive = false;
    connect(&session.connection, &IRCConnection::quitReceived, this, [&] {
        session.startConnecting();
        // The replaced socket is deleted when this loop has ended.
        QEventLoop loop;
        connect(&session.connection, &IRCConnection::connected, &loop, &QEventLoop::quit);
        QTimer::singleShot(WaitTimeout, &loop, &QEventLoop::quit);
        loop.exec();
        wasActive = timer->isActive();
    });
    session.server.send(u":a!b@c QUIT"_s);
    QVERIFY(session.log.waitFor(u"disconnected()"_s));
    QVERIFY(wasActive);
    QVERIFY(session.connection.isConnected());
    QVERIFY(!timer->isActive());
}

void TestKeepAlive::checksNothingWithoutAConnection()
{
    TestSession session;
    QVERIFY(QMetaObject::invokeMethod(&session.connection, "checkKeepAlive"));
    QVERIFY(session.open());
    QVERIFY(QMetaObject::invokeMethod(&session.connection, "checkKeepAlive"));
    QVERIFY(session.sent().isEmpty());
    session.server.close();
    QVERIFY(session.log.waitFor(u"disconnected()"_s));
    session.log.clear();
    QVERIFY(QMetaObject::invokeMethod(&session.connection, "checkKeepAlive"));
    QVERIFY(session.log.entries().isEmpty());
}

void TestKeepAlive::setsSocketOptions_data()
{
    QTest::addColumn<bool>("isSecure");
    QTest::newRow("plain") << false;
    QTest::newRow("tls") << true;
}

void TestKeepAlive::setsSocketOptions()
{
    REQUIRE_TOOLS(u"openssl"_s);
    QFETCH(const bool, isSecure);
    const TlsAuthority authority;
    authority.makeTrusted();
    const auto session = isSecure ? std::make_unique<TestSession>(authority.issue(u"localhost"_s))
                                  : std::make_unique<TestSession>();
    QVERIFY(session->open());
    const IRCConnection &connection = session->connection;
    QCOMPARE(optionOf(connection, SOL_SOCKET, SO_KEEPALIVE), 1);
    QCOMPARE(optionOf(connection, IPPROTO_TCP, TCP_KEEPIDLE), 60);
    QCOMPARE(optionOf(connection, IPPROTO_TCP, TCP_KEEPINTVL), 10);
    QCOMPARE(optionOf(connection, IPPROTO_TCP, TCP_KEEPCNT), 5);
}

bool TestKeepAlive::waitForTimelines()
{
    if (process.state() == QProcess::NotRunning)
        return !timelines.isEmpty();
    if (!process.waitForFinished(2 * WaitTimeout) || process.exitCode() != 0)
        return false;
    while (process.canReadLine()) {
        const QString line = QString::fromUtf8(process.readLine()).trimmed();
        addEntry(timelines[line.section(u' ', 0, 0)], line.section(u' ', 1));
    }
    return !timelines.isEmpty();
}

void TestKeepAlive::pingsASilentServerOnceAndDisconnects()
{
    QVERIFY(waitForTimelines());
    const Timeline timeline = timelines.value(u"silent"_s);
    QCOMPARE(timeline.faults, QStringList());
    // The server may receive the PING late, so only its number and form are checked.
    static const QRegularExpression ping(uR"(^line PING :\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d$)"_s);
    QCOMPARE(timeline.events.filter(ping).size(), 1);
    QStringList others = timeline.events;
    others.removeIf([](const QString &event) { return ping.match(event).hasMatch(); });
    QCOMPARE(others, (QStringList{u"pings"_s, u"error Ping timeout: no response to PING for 45s"_s,
                                  u"disconnected"_s, u"closes"_s}));
}

// The PING is queued until the handshake has finished, so the server never receives it.
void TestKeepAlive::disconnectsFromAServerThatNeverAnswersTls()
{
    QVERIFY(waitForTimelines());
    const Timeline timeline = timelines.value(u"noTls"_s);
    QCOMPARE(timeline.faults, QStringList());
    QCOMPARE(timeline.events,
             (QStringList{u"pings"_s, u"error Ping timeout: no response to PING for 45s"_s,
                          u"disconnected"_s, u"closes"_s}));
}

void TestKeepAlive::staysConnectedToAServerThatAnswers()
{
    QVERIFY(waitForTimelines());
    const Timeline timeline = timelines.value(u"answersPings"_s);
    QCOMPARE(timeline.faults, QStringList());
    QStringList acts = timeline.events;
    acts.removeIf([](const QString &event) { return event.startsWith(u"line "_s); });
    const QString all = acts.join(u' ');
    QVERIFY2(all.contains(u"pings receives pings"_s), qPrintable(all));
}

void TestKeepAlive::sendsNoPingWhileTheServerSends()
{
    QVERIFY(waitForTimelines());
    const Timeline timeline = timelines.value(u"sendsNotices"_s);
    QCOMPARE(timeline.faults, QStringList());
    QVERIFY(timeline.events.contains(u"receives"_s));
}

void TestKeepAlive::sendsNoPingWhileTheUserSends()
{
    QVERIFY(waitForTimelines());
    const Timeline timeline = timelines.value(u"receivesMessages"_s);
    QCOMPARE(timeline.faults, QStringList());
    QVERIFY(timeline.events.contains(u"sends"_s));
}

int main(int argc, char **argv)
{
    if (argc > 1 && QLatin1StringView(argv[1]) == AcceleratedClock)
        return runSessions(argc, argv);
    QCoreApplication application(argc, argv);
    TestKeepAlive test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_KeepAlive.moc"
