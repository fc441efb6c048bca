// The built program and a server that falls silent, with the minutes made short: the program's
// clocks and timers run twenty times as fast as ours. All seconds here are the program's.

#include "LiveSocket.h"
#include "PreparedStore.h"
#include "ProgramOnScreen.h"
#include "ScriptedServer.h"
#include "VirtualScreen.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTest>

#include <cmath>
#include <memory>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int Speed = 20;
constexpr int Patience = 15000; // In our own ms.

// A busy machine makes the program late, and what we see of it later still. These are a third of a
// second and one second of ours.
constexpr int Lateness = 7;
constexpr int OurLateness = 20;

// The status bar, connected and not.
constexpr QRgb Green = qRgb(0xd4, 0xed, 0xda);
constexpr QRgb Red = qRgb(0xf8, 0xd7, 0xda);
constexpr int BarPoints = 5000; // A status bar has more points than this.

constexpr QPoint InConversation{300, 300}; // Of the main window.

// A command that runs another under the fast clock. We put the clock in place ourselves: the tool
// that comes with it stays between us and the program. It stands in front of the sanitizers' own
// library, which else refuses to start.
QStringList underAFastClock()
{
    return {u"env"_s, u"LD_PRELOAD=/usr/$LIB/faketime/libfaketimeMT.so.1"_s,
            u"FAKETIME=+0 x%1"_s.arg(Speed), u"NO_FAKE_STAT=1"_s,
            u"ASAN_OPTIONS=%1:verify_asan_link_order=0:detect_leaks=0"_s.arg(
                    qEnvironmentVariable("ASAN_OPTIONS"))};
}

struct Event
{
    double second = 0; ///< Since the program came.
    QString text;
};

/// Everything that one session needs, made anew for each.
struct Session
{
    explicit Session(const VirtualScreen &screen);

    void note(const QString &event);
    [[nodiscard]] double now() const;
    /// Waits for a second that has not come yet; false if that takes too long.
    [[nodiscard]] bool waitUntil(double second) const;
    /// The next second that lies halfway between two of the program's checks, which it makes every
    /// ten seconds. Fifty seconds after it a line may be late by fifteen before a check minds.
    [[nodiscard]] double betweenChecks() const;
    /// The server says something.
    void mutter();
    /// All PINGs so far.
    [[nodiscard]] QList<Event> pings() const;
    [[nodiscard]] bool waitForPings(qsizetype count) const;

    ScriptedServer server;
    PreparedStore store;
    ProgramOnScreen program;
    QElapsedTimer clock;
    QList<Event> timeline;
};

Session::Session(const VirtualScreen &screen)
    : program(screen, store)
{
    clock.start();
    QObject::connect(&server, &ScriptedServer::clientArrived, &server, [this] {
        clock.start();
        note(u"the program comes"_s);
    });
    QObject::connect(&server, &ScriptedServer::lineReceived, &server,
                     [this](int, const QString &line) { note(u">> "_s + line); });
    QObject::connect(&server, &ScriptedServer::clientLeft, &server,
                     [this] { note(u"the link ends"_s); });
}

void Session::note(const QString &event)
{
    timeline.append(Event{now(), event});
}

double Session::now() const
{
    return double(clock.nsecsElapsed()) / 1e9 * Speed;
}

bool Session::waitUntil(double second) const
{
    return QTest::qWaitFor([&] { return now() >= second; }, Patience);
}

double Session::betweenChecks() const
{
    return std::ceil((now() - 5) / 10) * 10 + 5;
}

void Session::mutter()
{
    note(u"<< NOTICE"_s);
    server.send(u":irc.test NOTICE wanda :hm"_s);
}

QList<Event> Session::pings() const
{
    QList<Event> found;
    for (const Event &event : timeline) {
        if (event.text.startsWith(u">> PING"_s))
            found.append(event);
    }
    return found;
}

bool Session::waitForPings(qsizetype count) const
{
    return QTest::qWaitFor([&] { return pings().size() >= count; }, Patience);
}

// The time that a PING carries, by the program's clock; none if it has another form.
QDateTime stampOf(const Event &ping)
{
    static const QRegularExpression form(uR"(^>> PING :(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d)$)"_s);
    return QDateTime::fromString(form.match(ping.text).captured(1), Qt::ISODate);
}

// From one time of day to the next time that it is the other one.
int secondsBetween(QTime first, QTime second)
{
    constexpr int Day = 24 * 60 * 60;
    return (first.secsTo(second) + Day) % Day;
}

} // namespace

class TestSilentServer final : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void asksASilentServerOnceAndLeavesIt();
    void staysWithAServerThatAnswersAnything();
    void asksNothingWhileTheServerTalks();
    void hearsAServerThatSpellsItsLines();
    void asksNothingWhileTheUserTalks();
    void letsTheSystemWatchTheSocketToo();

private:
    /// Starts the program and lets it connect and register; the server says nothing after that.
    bool enter(const QStringList &channels = {});
    /// Connects by the dialog that stands open, as the `count`th client.
    bool connectByDialog(int count = 1);
    bool showsStatus(QRgb colour) const;
    /// Copies all rows of the conversation in front, by mouse and keyboard.
    bool copyRows() const;
    /// What was copied: the user pastes it into the input line, and the server hears it.
    QString tellCopy();

    VirtualScreen screen;
    std::unique_ptr<Session> session;
};

void TestSilentServer::initTestCase()
{
    QVERIFY2(!QStandardPaths::findExecutable(u"faketime"_s).isEmpty(), "faketime is not installed");
    QVERIFY2(screen.start(), qPrintable(screen.failure()));
}

void TestSilentServer::init()
{
    session = std::make_unique<Session>(screen);
}

void TestSilentServer::cleanup()
{
    if (QTest::currentTestFailed()) {
        const QString file = QDir::current().absoluteFilePath(
                u"%1.png"_s.arg(QString::fromLatin1(QTest::currentTestFunction())));
        if (screen.picture().save(file))
            qInfo("Screenshot: %s", qPrintable(file));
    }
    for (const Event &event : std::as_const(session->timeline))
        qInfo("%6.1f s  %s", event.second, qPrintable(event.text));
    if (session->program.isRunning()) {
        QVERIFY(session->program.close());
        QCOMPARE(session->program.exitStatus(), 0);
    }
    QCOMPARE(session->program.errorOutput(), QString());
    session.reset();
}

bool TestSilentServer::enter(const QStringList &channels)
{
    session->store.addServer({.host = u"127.0.0.1"_s,
                              .port = session->server.port(),
                              .nickname = u"wanda"_s,
                              .realName = u"Wanda Walker"_s,
                              .channels = channels});
    return session->program.start(underAFastClock()) && connectByDialog();
}

bool TestSilentServer::connectByDialog(int count)
{
    ScriptedServer &server = session->server;
    if (!session->program.pressConnect() || !server.waitForClient(count)
        || !server.waitForLine(u"USER wanda 0 * :Wanda Walker"_s))
        return false;
    session->note(u"<< 001"_s);
    server.send(u":irc.test 001 wanda :Welcome"_s);
    return QTest::qWaitFor([this] { return showsStatus(Green); }, Patience);
}

bool TestSilentServer::showsStatus(QRgb colour) const
{
    return screen.countPoints(colour) > BarPoints;
}

bool TestSilentServer::copyRows() const
{
    return screen.click(screen.activeWindow().topLeft() + InConversation)
           && screen.press(u"ctrl+a"_s) && screen.press(u"ctrl+c"_s);
}

QString TestSilentServer::tellCopy()
{
    const ScriptedServer &server = session->server;
    // The first line takes the keyboard to the input line.
    if (!session->program.say(u"/raw TAKE THIS"_s) || !screen.type(u"/raw "_s)
        || !screen.press(u"ctrl+v"_s) || !screen.press(u"Return"_s)
        || !server.waitForLine(u"TAKE THIS"_s))
        return {};
    const qsizetype before = server.lines().indexOf(u"TAKE THIS"_s);
    static_cast<void>(
            QTest::qWaitFor([&] { return server.lines().size() > before + 1; }, Patience));
    return server.lines().last().simplified();
}

void TestSilentServer::asksASilentServerOnceAndLeavesIt()
{
    QVERIFY(enter());
    ScriptedServer &server = session->server;
    QVERIFY(session->waitUntil(session->betweenChecks()));
    session->mutter();
    const double lastTraffic = session->timeline.last().second;

    QVERIFY(session->waitForPings(1));
    QVERIFY(server.waitForEnd());
    const double end = session->timeline.last().second;
    const Event ping = session->pings().first();
    QCOMPARE(server.lines().size(), 3);
    QVERIFY(ping.second - lastTraffic > 60 && ping.second - lastTraffic < 70 + OurLateness);
    QVERIFY(end - ping.second > 40 && end - ping.second < 50 + OurLateness);
    QTRY_VERIFY_WITH_TIMEOUT(showsStatus(Red), Patience);

    QVERIFY(copyRows());
    QVERIFY(session->program.openConnectDialog());
    QVERIFY(connectByDialog(2));
    static const QRegularExpression expected(
            uR"( \[([\d:]+)\] << :irc\.test NOTICE wanda :hm)"
            uR"( \[([\d:]+)\] \*\*\* Error: Ping timeout: no response to PING for 45s)"
            uR"( \[[\d:]+\] \*\*\* Disconnected\.$)"_s);
    const QString rows = tellCopy();
    const QRegularExpressionMatch match = expected.match(rows);
    QVERIFY2(match.hasMatch(), qPrintable(rows));
    const QTime pinged = stampOf(ping).time();
    QVERIFY(pinged.isValid());
    const auto timeOf = [&](int row) { return QTime::fromString(match.captured(row)); };
    const int silence = secondsBetween(timeOf(1), pinged);
    QVERIFY2(silence >= 60 && silence <= 70 + Lateness, qPrintable(QString::number(silence)));
    const int patience = secondsBetween(pinged, timeOf(2));
    QVERIFY2(patience >= 45 && patience <= 50 + Lateness, qPrintable(QString::number(patience)));
}

void TestSilentServer::staysWithAServerThatAnswersAnything()
{
    QVERIFY(enter());
    QVERIFY(session->waitForPings(1));
    session->mutter();

    // A server that is given up hears no second one.
    QVERIFY(session->waitForPings(2));
    QCOMPARE(session->server.clientCount(), 1);
    QVERIFY(session->server.isThere());
    QVERIFY(showsStatus(Green));
    const QList<Event> pings = session->pings();
    const qint64 apart = stampOf(pings.at(0)).secsTo(stampOf(pings.at(1)));
    QVERIFY2(apart >= 60 && apart <= 70 + Lateness, qPrintable(QString::number(apart)));
}

void TestSilentServer::asksNothingWhileTheServerTalks()
{
    QVERIFY(enter());
    const double start = session->betweenChecks();
    for (int i = 0; i < 5; ++i) {
        QVERIFY(session->waitUntil(start + 50 * i));
        session->mutter();
    }
    QVERIFY(session->pings().isEmpty());
    QVERIFY(session->server.isThere());
}

// A byte a second: no line ends within the time after which a silent server is asked.
void TestSilentServer::hearsAServerThatSpellsItsLines()
{
    QVERIFY(enter());
    const double start = session->now();
    const QByteArray line = ":irc.test NOTICE wanda :"_ba + QByteArray(100, 'x') + "\r\n"_ba;
    for (const char byte : line) {
        const double second = session->now();
        session->server.sendBytes(QByteArray(1, byte));
        QVERIFY(session->waitUntil(second + 1));
    }
    QVERIFY(session->now() - start > 120);
    QVERIFY(session->pings().isEmpty());
    QVERIFY(copyRows());
    const QString rows = tellCopy();
    QVERIFY2(rows.endsWith(u" << :irc.test NOTICE wanda :"_s + QString(100, u'x')),
             qPrintable(rows));
}

void TestSilentServer::asksNothingWhileTheUserTalks()
{
    QVERIFY(enter({u"#room"_s}));
    ScriptedServer &server = session->server;
    QVERIFY(server.waitForLine(u"JOIN #room"_s));
    server.send(u":wanda!w@host JOIN #room"_s);
    QVERIFY(server.waitForLine(u"NAMES #room"_s));
    QVERIFY(session->program.say(u"anybody here?"_s));
    const double start = session->betweenChecks();
    for (int i = 0; i < 5; ++i) {
        // Typing takes its time, so only the last key is pressed when it is time.
        QVERIFY(screen.type(u"still here"_s));
        QVERIFY(session->waitUntil(start + 50 * i));
        QVERIFY(screen.press(u"Return"_s));
        QVERIFY(server.waitForLine(u"PRIVMSG #room :still here"_s, ScriptedServer::Latest, i + 1));
    }
    QVERIFY(session->pings().isEmpty());
    QVERIFY(session->server.isThere());
}

void TestSilentServer::letsTheSystemWatchTheSocketToo()
{
    QVERIFY(enter());
    const LiveSocket socket(session->program.processId(), session->server.port());
    QVERIFY2(socket.isHeld(), "The system doesn't let us look at the program's sockets");
    QCOMPARE(socket.option(SOL_SOCKET, SO_KEEPALIVE), 1);
    QCOMPARE(socket.option(IPPROTO_TCP, TCP_KEEPIDLE), 60);
    QCOMPARE(socket.option(IPPROTO_TCP, TCP_KEEPINTVL), 10);
    QCOMPARE(socket.option(IPPROTO_TCP, TCP_KEEPCNT), 5);
    QCOMPARE(socket.option(IPPROTO_TCP, TCP_NODELAY), 1);
}

QTEST_GUILESS_MAIN(TestSilentServer)

#include "tst_SilentServer.moc"
