#include "Preloading.h"
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

// The second half of this program: with this argument it is the one that waits for minutes, under
// a fast clock.
constexpr QLatin1StringView Sped = "--under-a-fast-clock"_L1;

// In ms by the fast clock.
constexpr qint64 SilenceBeforePing = 60000;
constexpr qint64 PongTimeout = 45000;
constexpr int TalkInterval = 20000;

// More checks than twice as many as there are up to a PING, and then up to another.
constexpr int EnoughChecks = 25;
constexpr int EnoughPings = 3;

// One session whose other side behaves in a certain way, writing down what each check finds and
// does. All of it is in one process, so that we know what the session knows: at a check we are
// asked before it and after it. What happens between the two, and what the session is told
// meanwhile, lies between two times of ours, however late anybody is.
class Watch final : public QObject
{
    Q_OBJECT

public:
    enum class Habit { Silent, Answers, Mutters, HearsTalk, KnowsNoTls };

    Watch(const QString &label, Habit otherSide);
    void begin();

    bool eventFilter(QObject *watched, QEvent *event) override;

signals:
    void finished();

private:
    void beginCheck();
    void endCheck();
    void speak();
    void onDisconnected();
    [[nodiscard]] bool keepsItsLink() const;
    [[nodiscard]] qint64 unsent() const;
    void write(const QString &what);

    QString name;
    Habit habit;
    QTimer talk;
    QElapsedTimer lastBegin; // Before the last traffic, or no later than it,
    QElapsedTimer lastEnd;   // and after it.
    QElapsedTimer spoken;
    QElapsedTimer checkBegin;
    qint64 leastSilence = 0;
    qint64 unsentBefore = 0;
    bool isAnswerDue = false;
    bool hasGivenUp = false;
    int checkCount = 0;
    int pingCount = 0;
    TestSession session; // Goes first, since it tells of its end.
    QTimer *checks;
};

Watch::Watch(const QString &label, Habit otherSide)
    : name(label)
    , habit(otherSide)
    , checks(session.connection.findChild<QTimer *>())
{
    session.isSecure = habit == Habit::KnowsNoTls;
    checks->installEventFilter(this);
    connect(checks, &QTimer::timeout, this, &Watch::endCheck);
    IRCConnection &connection = session.connection;
    connect(&connection, &IRCConnection::connected, this, [this] {
        lastEnd.start();
        isAnswerDue = false;
        if (habit == Habit::Mutters || habit == Habit::HearsTalk)
            talk.start(TalkInterval);
    });
    connect(&connection, &IRCConnection::rawMessageReceived, this, [this] {
        lastBegin = spoken;
        lastEnd.start();
        isAnswerDue = false;
        write(u"hears"_s);
    });
    connect(&connection, &IRCConnection::errorOccurred, this, [this](const QString &error) {
        hasGivenUp = true;
        write(u"error "_s + error);
    });
    connect(&connection, &IRCConnection::disconnected, this, &Watch::onDisconnected);
    connect(&session.server, &ScriptedServer::lineReceived, this, [this](int, const QString &line) {
        if (!line.startsWith(u"PING"_s))
            return;
        write(u"line "_s + line);
        if (keepsItsLink())
            speak();
    });
    connect(&talk, &QTimer::timeout, this, [this] {
        if (habit == Habit::Mutters) {
            speak();
            return;
        }
        lastBegin.start();
        session.connection.sendPrivmsg(u"#x"_s, u"anybody?"_s);
        lastEnd.start();
        write(u"talks"_s);
    });
}

void Watch::begin()
{
    lastBegin.start();
    session.startConnecting();
}

bool Watch::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == checks && event->type() == QEvent::Timer)
        beginCheck();
    return QObject::eventFilter(watched, event);
}

void Watch::beginCheck()
{
    checkBegin.start();
    leastSilence = lastEnd.elapsed();
    unsentBefore = unsent();
    hasGivenUp = false;
}

// The session has acted within the same tick, before us.
void Watch::endCheck()
{
    const qint64 mostSilence = lastBegin.elapsed();
    const qint64 limit = isAnswerDue ? PongTimeout : SilenceBeforePing;
    const bool hasAsked = !hasGivenUp && unsent() > unsentBefore;
    const QString act = hasGivenUp ? u"leaves"_s : hasAsked ? u"asks"_s : u"waits"_s;
    write(u"check %1 %2 %3 %4"_s.arg(limit).arg(leastSilence).arg(mostSilence).arg(act));
    if (hasAsked) {
        lastBegin = checkBegin;
        lastEnd.start();
        isAnswerDue = true;
        ++pingCount;
    }
    ++checkCount;
    if (keepsItsLink() && checkCount >= EnoughChecks
        && (habit != Habit::Answers || pingCount >= EnoughPings))
        emit finished();
}

// Anything at all counts as an answer.
void Watch::speak()
{
    spoken.start();
    session.server.send(u":a!b@c NOTICE me :hm"_s);
}

void Watch::onDisconnected()
{
    talk.stop();
    write(u"disconnected"_s);
    // Who is too late to answer is left by right, and called again.
    if (keepsItsLink())
        QTimer::singleShot(0, this, &Watch::begin);
    else
        QTimer::singleShot(0, this, &Watch::finished);
}

bool Watch::keepsItsLink() const
{
    return habit != Habit::Silent && habit != Habit::KnowsNoTls;
}

// What is written stays with the socket until the event loop comes round.
qint64 Watch::unsent() const
{
    return session.connection.findChild<QTcpSocket *>()->bytesToWrite();
}

void Watch::write(const QString &what)
{
    QTextStream(stdout) << name << u' ' << what << Qt::endl;
}

int watchUnderAFastClock(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    Watch silent(u"silent"_s, Watch::Habit::Silent);
    Watch answers(u"answers"_s, Watch::Habit::Answers);
    Watch mutters(u"mutters"_s, Watch::Habit::Mutters);
    Watch hears(u"hears"_s, Watch::Habit::HearsTalk);
    Watch shakesNoHands(u"shakesNoHands"_s, Watch::Habit::KnowsNoTls);
    QSet<Watch *> unfinished{&silent, &answers, &mutters, &hears, &shakesNoHands};
    for (Watch *watch : std::as_const(unfinished)) {
        QObject::connect(watch, &Watch::finished, &application, [&unfinished, watch] {
            unfinished.remove(watch);
            if (unfinished.isEmpty())
                QCoreApplication::quit();
        });
        watch->begin();
    }
    return QCoreApplication::exec();
}

// What a watch has written down.
struct Timeline
{
    QStringList events; ///< Without the checks that found nothing to do, and without their times.
    QStringList faults; ///< The checks that did what was not due, or not what was.
};

void note(Timeline &timeline, const QString &entry)
{
    static const QRegularExpression form(uR"(^check (\d+) (\d+) (\d+) (\w+)$)"_s);
    const QRegularExpressionMatch check = form.match(entry);
    const QString act = check.hasMatch() ? check.captured(4) : entry;
    if (act != u"waits"_s)
        timeline.events.append(act);
    if (!check.hasMatch())
        return;
    const qint64 limit = check.captured(1).toLongLong();
    const bool isDue = check.captured(3).toLongLong() > limit; // Or may be.
    const bool isOverdue = check.captured(2).toLongLong() > limit;
    const QString dueAct = limit == PongTimeout ? u"leaves"_s : u"asks"_s;
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

    void ticksWhileConnected();
    void doesNotTickForAnAttempt();
    void stopsAtOnceWhenTheUserLeaves();
    void stopsWithAReplacedSocket();
    void checksNothingWithoutALink();
    void setsTheSocketsOptions_data();
    void setsTheSocketsOptions();

    void asksASilentServerOnceAndGoes();
    void leavesAServerThatNeverAnswersTls();
    void staysWithAServerThatAnswers();
    void asksNothingWhileTheServerTalks();
    void asksNothingWhileTheUserTalks();

private:
    [[nodiscard]] bool waitForTimelines();

    QProcess process;
    QMap<QString, Timeline> timelines;
};

void TestKeepAlive::initTestCase()
{
    QVERIFY2(hasFastClock(), "faketime is not installed");
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    const QStringList clock = fastClockCommand();
    process.start(clock.first(),
                  clock.mid(1) + QStringList{QCoreApplication::applicationFilePath(), Sped});
    QVERIFY(process.waitForStarted(WaitTimeout));
}

void TestKeepAlive::init()
{
    QTest::failOnWarning(QRegularExpression(u"."_s));
}

void TestKeepAlive::ticksWhileConnected()
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

void TestKeepAlive::doesNotTickForAnAttempt()
{
    TestSession session;
    session.startConnecting();
    QVERIFY(!session.connection.findChild<QTimer *>()->isActive());
    session.connection.disconnectFromServer();
    QVERIFY(session.log.waitFor(u"connected()"_s));
    QVERIFY(session.connection.findChild<QTimer *>()->isActive());
}

// The link itself may take its time: what was written before is sent first.
void TestKeepAlive::stopsAtOnceWhenTheUserLeaves()
{
    TestSession session;
    const auto *timer = session.connection.findChild<QTimer *>();
    QVERIFY(session.open());
    session.connection.sendRaw(QString(20'000'000, u'x'));
    session.connection.disconnectFromServer();
    QVERIFY(session.log.entries().isEmpty());
    QVERIFY(!timer->isActive());
    QVERIFY(session.log.waitFor(u"disconnected()"_s));

    // With a second link on its way, too, where there is nobody to say QUIT to.
    QVERIFY(session.open());
    session.startConnecting();
    QVERIFY(timer->isActive());
    session.connection.disconnectFromServer();
    QVERIFY(!timer->isActive());
}

// Intended: the end of a replaced socket stops the checks, although its successor is connected.
void TestKeepAlive::stopsWithAReplacedSocket()
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

void TestKeepAlive::checksNothingWithoutALink()
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

void TestKeepAlive::setsTheSocketsOptions_data()
{
    QTest::addColumn<bool>("isSecure");
    QTest::newRow("plain") << false;
    QTest::newRow("tls") << true;
}

void TestKeepAlive::setsTheSocketsOptions()
{
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
        note(timelines[line.section(u' ', 0, 0)], line.section(u' ', 1));
    }
    return !timelines.isEmpty();
}

void TestKeepAlive::asksASilentServerOnceAndGoes()
{
    QVERIFY(waitForTimelines());
    const Timeline timeline = timelines.value(u"silent"_s);
    QCOMPARE(timeline.faults, QStringList());
    // When the server sees the PING is another matter.
    static const QRegularExpression ping(uR"(^line PING :\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d$)"_s);
    QCOMPARE(timeline.events.filter(ping).size(), 1);
    QStringList others = timeline.events;
    others.removeIf([](const QString &event) { return ping.match(event).hasMatch(); });
    QCOMPARE(others, (QStringList{u"asks"_s, u"error Ping timeout: no response to PING for 45s"_s,
                                  u"disconnected"_s, u"leaves"_s}));
}

// What is asked waits for the handshake, with all that is to be sent.
void TestKeepAlive::leavesAServerThatNeverAnswersTls()
{
    QVERIFY(waitForTimelines());
    const Timeline timeline = timelines.value(u"shakesNoHands"_s);
    QCOMPARE(timeline.faults, QStringList());
    QCOMPARE(timeline.events,
             (QStringList{u"asks"_s, u"error Ping timeout: no response to PING for 45s"_s,
                          u"disconnected"_s, u"leaves"_s}));
}

void TestKeepAlive::staysWithAServerThatAnswers()
{
    QVERIFY(waitForTimelines());
    const Timeline timeline = timelines.value(u"answers"_s);
    QCOMPARE(timeline.faults, QStringList());
    QStringList acts = timeline.events;
    acts.removeIf([](const QString &event) { return event.startsWith(u"line "_s); });
    const QString all = acts.join(u' ');
    QVERIFY2(all.contains(u"asks hears asks"_s), qPrintable(all));
}

void TestKeepAlive::asksNothingWhileTheServerTalks()
{
    QVERIFY(waitForTimelines());
    const Timeline timeline = timelines.value(u"mutters"_s);
    QCOMPARE(timeline.faults, QStringList());
    QVERIFY(timeline.events.contains(u"hears"_s));
}

void TestKeepAlive::asksNothingWhileTheUserTalks()
{
    QVERIFY(waitForTimelines());
    const Timeline timeline = timelines.value(u"hears"_s);
    QCOMPARE(timeline.faults, QStringList());
    QVERIFY(timeline.events.contains(u"talks"_s));
}

int main(int argc, char **argv)
{
    if (argc > 1 && QLatin1StringView(argv[1]) == Sped)
        return watchUnderAFastClock(argc, argv);
    QCoreApplication application(argc, argv);
    TestKeepAlive test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_KeepAlive.moc"
