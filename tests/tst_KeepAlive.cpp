#include "TestSession.h"
#include "TlsAuthority.h"

#include <QProcess>
#include <QRegularExpression>
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
// a clock that runs twenty times as fast.
constexpr QLatin1StringView Sped = "--under-a-fast-clock"_L1;
constexpr QLatin1StringView Speed = "+0 x20"_L1;
constexpr int Watched = 250000; // Ms by the fast clock.

// One session whose other side behaves in a certain way, writing down what happens at which tick.
class Watch final : public QObject
{
    Q_OBJECT

public:
    enum class Habit { Silent, Answers, Mutters, HearsTalk, KnowsNoTls };

    Watch(const QString &label, Habit otherSide);
    void begin();

private:
    void note(const QString &event);

    QString name;
    Habit habit;
    TestSession session;
    QTimer talk;
    QElapsedTimer lastTraffic;
    int ticks = 0;
};

Watch::Watch(const QString &label, Habit otherSide)
    : name(label)
    , habit(otherSide)
{
    session.isSecure = habit == Habit::KnowsNoTls;
    auto *timer = session.connection.findChild<QTimer *>();
    connect(timer, &QTimer::timeout, this, [this] { ++ticks; });
    connect(&session.connection, &IRCConnection::errorOccurred, this, &Watch::note);
    connect(&session.connection, &IRCConnection::disconnected, this,
            [this] { note(u"disconnected"_s); });
    connect(&session.server, &ScriptedServer::lineReceived, this, [this](int, const QString &line) {
        if (line.startsWith(u"PING"_s)) {
            note(line);
            // Anything at all counts as an answer.
            if (habit == Habit::Answers)
                session.server.send(u":s NOTICE me :alive"_s);
        }
        lastTraffic.start();
    });
    connect(&session.connection, &IRCConnection::rawMessageReceived, this,
            [this] { lastTraffic.start(); });
    connect(&talk, &QTimer::timeout, this, [this] {
        if (habit == Habit::Mutters)
            session.server.send(u":a!b@c NOTICE me :hm"_s);
        else
            session.connection.sendPrivmsg(u"#x"_s, u"anybody?"_s);
    });
}

void Watch::begin()
{
    session.dial();
    if (habit == Habit::Mutters || habit == Habit::HearsTalk)
        connect(&session.connection, &IRCConnection::connected, &talk,
                [this] { talk.start(50000); });
}

// "name tick silence event", the silence in ms.
void Watch::note(const QString &event)
{
    QTextStream(stdout) << u"%1 %2 %3 "_s.arg(name).arg(ticks).arg(lastTraffic.elapsed()) << event
                        << Qt::endl;
}

int watchUnderAFastClock(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    Watch silent(u"silent"_s, Watch::Habit::Silent);
    Watch answers(u"answers"_s, Watch::Habit::Answers);
    Watch mutters(u"mutters"_s, Watch::Habit::Mutters);
    Watch hears(u"hears"_s, Watch::Habit::HearsTalk);
    Watch shakesNoHands(u"shakesNoHands"_s, Watch::Habit::KnowsNoTls);
    for (Watch *watch : {&silent, &answers, &mutters, &hears, &shakesNoHands})
        watch->begin();
    QTimer::singleShot(Watched, &application, &QCoreApplication::quit);
    return QCoreApplication::exec();
}

struct Event
{
    int tick = 0;
    qint64 silence = 0;
    QString text;
};

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
    QMap<QString, QList<Event>> timelines;
};

void TestKeepAlive::initTestCase()
{
    // The fast clock is put in front of the sanitizers' own library, which else refuses to start.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"ASAN_OPTIONS"_s, environment.value(u"ASAN_OPTIONS"_s)
                                                  + u":verify_asan_link_order=0:detect_leaks=0"_s);
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(u"faketime"_s, {u"-f"_s, Speed, QCoreApplication::applicationFilePath(), Sped});
    QVERIFY2(process.waitForStarted(), "faketime is not installed");
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
    session.dial();
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
    session.dial();
    QVERIFY(timer->isActive());
    session.connection.disconnectFromServer();
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
    if (!process.waitForFinished(100000) || process.exitCode() != 0)
        return false;
    while (process.canReadLine()) {
        const QString line = QString::fromUtf8(process.readLine()).trimmed();
        timelines[line.section(u' ', 0, 0)].append(Event{line.section(u' ', 1, 1).toInt(),
                                                         line.section(u' ', 2, 2).toLongLong(),
                                                         line.section(u' ', 3)});
    }
    return !timelines.isEmpty();
}

void TestKeepAlive::asksASilentServerOnceAndGoes()
{
    QVERIFY(waitForTimelines());
    const QList<Event> events = timelines.value(u"silent"_s);
    QCOMPARE(events.size(), 3);
    const Event &ping = events.at(0);
    QVERIFY(QRegularExpression(uR"(^PING :\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d$)"_s)
                    .match(ping.text)
                    .hasMatch());
    QVERIFY2(ping.silence > 60000, qPrintable(QString::number(ping.silence)));
    // The ticks come about every ten seconds, so the sixth may lie on either side of the minute.
    QVERIFY2(ping.tick == 6 || ping.tick == 7, qPrintable(QString::number(ping.tick)));
    QCOMPARE(events.at(1).text, u"Ping timeout: no response to PING for 45s"_s);
    QCOMPARE(events.at(2).text, u"disconnected"_s);
    // The session acts within its tick, before that one is counted here.
    QCOMPARE(events.at(1).tick + 1, ping.tick + 5);
}

// What is asked waits for the handshake, with all that is to be sent.
void TestKeepAlive::leavesAServerThatNeverAnswersTls()
{
    QVERIFY(waitForTimelines());
    const QList<Event> events = timelines.value(u"shakesNoHands"_s);
    QCOMPARE(events.size(), 2);
    QCOMPARE(events.at(0).text, u"Ping timeout: no response to PING for 45s"_s);
    const int ticks = events.at(0).tick + 1;
    QVERIFY2(ticks == 11 || ticks == 12, qPrintable(QString::number(ticks)));
    QCOMPARE(events.at(1).text, u"disconnected"_s);
}

void TestKeepAlive::staysWithAServerThatAnswers()
{
    QVERIFY(waitForTimelines());
    const QList<Event> events = timelines.value(u"answers"_s);
    QVERIFY(events.size() >= 3);
    for (const Event &event : events) {
        QVERIFY(event.text.startsWith(u"PING :"_s));
        QVERIFY(event.silence > 60000);
    }
}

void TestKeepAlive::asksNothingWhileTheServerTalks()
{
    QVERIFY(waitForTimelines());
    QVERIFY(!timelines.contains(u"mutters"_s));
}

void TestKeepAlive::asksNothingWhileTheUserTalks()
{
    QVERIFY(waitForTimelines());
    QVERIFY(!timelines.contains(u"hears"_s));
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
