// The built program and a server that falls silent, with the minutes made short: the program's
// clocks and timers run faster than ours. All seconds here are the program's.
//
// Everybody may be late, the machine itself may stand still for whole seconds of ours. What the
// program must not do is therefore judged by the times that it stamps itself, which are right
// however late we see them. That it does something in time can be spoilt by a stall, and then
// something else follows by right, up to the end of the link: it is tried anew.

#include "DuplicatedSocket.h"
#include "Preloading.h"
#include "PreparedStore.h"
#include "ProgramOnScreen.h"
#include "ScriptedServer.h"
#include "VirtualScreen.h"
#include "Waiting.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <limits>
#include <memory>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int Attempts = 5;
constexpr int Lateness = 60; // What an attempt allows the program: three seconds of ours.

constexpr int ChatterInterval = 500; // In our own ms: ten seconds.

// The status bar, connected and not.
constexpr QRgb Green = qRgb(0xd4, 0xed, 0xda);
constexpr QRgb Red = qRgb(0xf8, 0xd7, 0xda);
constexpr int BarPoints = 5000; // A status bar has more points than this.

constexpr QPoint InConversation{300, 300}; // Of the main window.

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
    /// The server says something.
    void mutter();
    /// The times of all PINGs so far, by the program's clock.
    [[nodiscard]] QList<QTime> pings() const;

    ScriptedServer server;
    PreparedStore store;
    ProgramOnScreen program;
    QElapsedTimer clock;
    QList<Event> timeline;
    QTimer chatter; ///< While it is active, the server says something now and then.
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
    QObject::connect(&chatter, &QTimer::timeout, &server, [this] { mutter(); });
}

void Session::note(const QString &event)
{
    timeline.append(Event{now(), event});
}

double Session::now() const
{
    return double(clock.nsecsElapsed()) / 1e9 * ClockSpeed;
}

bool Session::waitUntil(double second) const
{
    return QTest::qWaitFor([&] { return now() >= second; }, WaitTimeout);
}

void Session::mutter()
{
    note(u"<< NOTICE"_s);
    server.send(u":irc.test NOTICE wanda :hm"_s);
}

// The times that the PINGs among the lines carry; one of another form has none.
QList<QTime> pingsAmong(const QStringList &lines)
{
    static const QRegularExpression form(uR"(^PING :(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d)$)"_s);
    QList<QTime> times;
    for (const QString &line : lines.filter(QRegularExpression(u"^PING"_s))) {
        const QString stamp = form.match(line).captured(1);
        times.append(QDateTime::fromString(stamp, Qt::ISODate).time());
    }
    return times;
}

QList<QTime> Session::pings() const
{
    QList<QTime> times;
    for (int client = 0; client < server.clientCount(); ++client)
        times += pingsAmong(server.lines(client));
    return times;
}

// From one time of day to the next time that it is the other one.
int secondsBetween(QTime first, QTime second)
{
    constexpr int Day = 24 * 60 * 60;
    return (first.secsTo(second) + Day) % Day;
}

// The times before the rows, all on one line, whose text the pattern fits.
QList<QTime> timesOf(const QString &rows, const QString &pattern)
{
    const QRegularExpression row(uR"(\[([\d:]+)\] )"_s + pattern);
    QList<QTime> times;
    for (const QRegularExpressionMatch &match : row.globalMatch(rows))
        times.append(QTime::fromString(match.captured(1)));
    return times;
}

// The shortest time from something said to a PING, by the program's clock. What was said within a
// PING's own second may have come after it and doesn't count.
int shortestSilence(const QList<QTime> &talk, const QList<QTime> &pings)
{
    int shortest = std::numeric_limits<int>::max();
    for (const QTime ping : pings) {
        for (const QTime said : talk) {
            if (said != ping)
                shortest = std::min(shortest, secondsBetween(said, ping));
        }
    }
    return shortest;
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
    /// Connects by the dialog that stands open; the server chatters from then on.
    bool connectByDialog();
    /// Connects anew if the link is gone.
    bool keepLink();
    /// Joins and says some lines, while the server says nothing; false if the link is lost.
    bool talkInRoom(int lines);
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
    QVERIFY2(hasFastClock(), "faketime is not installed");
    QVERIFY2(screen.start(), qPrintable(screen.failure()));
}

void TestSilentServer::init()
{
    session = std::make_unique<Session>(screen);
}

void TestSilentServer::cleanup()
{
    if (QTest::currentTestFailed())
        screen.saveScreenshot(QString::fromLatin1(QTest::currentTestFunction()));
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
    return session->program.start(fastClockCommand()) && connectByDialog();
}

bool TestSilentServer::connectByDialog()
{
    ScriptedServer &server = session->server;
    const int clients = server.clientCount();
    if (!session->program.pressConnect() || !server.waitForClient(clients + 1)
        || !server.waitForLine(u"USER wanda 0 * :Wanda Walker"_s))
        return false;
    session->note(u"<< 001"_s);
    server.send(u":irc.test 001 wanda :Welcome"_s);
    session->chatter.start(ChatterInterval);
    return QTest::qWaitFor([this] { return showsStatus(Green); }, WaitTimeout);
}

bool TestSilentServer::keepLink()
{
    return session->server.isConnected()
           || (session->program.openConnectDialog() && connectByDialog());
}

bool TestSilentServer::showsStatus(QRgb colour) const
{
    return screen.countPixels(colour) > BarPoints;
}

bool TestSilentServer::copyRows() const
{
    return screen.click(screen.activeWindow().topLeft() + InConversation)
           && screen.press(u"ctrl+a"_s) && screen.press(u"ctrl+c"_s);
}

QString TestSilentServer::tellCopy()
{
    const ScriptedServer &server = session->server;
    session->chatter.start(ChatterInterval);
    const auto told = [&server] {
        const QStringList lines = server.lines();
        const qsizetype start = lines.indexOf(u"TAKE THIS"_s) + 1;
        return start == 0 ? QStringList()
                          : lines.mid(start).filter(QRegularExpression(u"^(?!PING )"_s));
    };
    for (int attempt = 0; told().isEmpty() && attempt < Attempts; ++attempt) {
        // The first line takes the keyboard to the input line.
        if (!keepLink() || !session->program.typeLine(u"/raw TAKE THIS"_s))
            return {};
        // Nobody else speaks while a key is on its way.
        session->mutter();
        if (!screen.type(u"/raw "_s) || !screen.press(u"ctrl+v"_s))
            return {};
        session->mutter();
        if (!screen.press(u"Return"_s)
            || !QTest::qWaitFor([&] { return !server.isConnected() || !told().isEmpty(); },
                                WaitTimeout))
            return {};
    }
    return told().value(0).simplified();
}

void TestSilentServer::asksASilentServerOnceAndLeavesIt()
{
    QVERIFY(enter());
    const ScriptedServer &server = session->server;
    bool isInTime = false;
    for (int attempt = 0; !isInTime && attempt < Attempts; ++attempt) {
        session->chatter.stop();
        session->mutter();
        const double lastTraffic = session->timeline.last().second;
        QTRY_VERIFY_WITH_TIMEOUT(!server.isConnected(), WaitTimeout);
        QVERIFY(session->timeline.last().second - lastTraffic > 60 + 45);
        const QList<QTime> allPings = pingsAmong(server.lines());
        QTRY_VERIFY_WITH_TIMEOUT(showsStatus(Red), WaitTimeout);

        QVERIFY(copyRows());
        static const QRegularExpression expected(
                uR"( \[([\d:]+)\] << :irc\.test NOTICE wanda :hm)"
                uR"( \[([\d:]+)\] \*\*\* Error: Ping timeout: no response to PING for 45s)"
                uR"( \[[\d:]+\] \*\*\* Disconnected\.$)"_s);
        const QString rows = tellCopy();
        const QRegularExpressionMatch match = expected.match(rows);
        QVERIFY2(match.hasMatch(), qPrintable(rows));
        const QTime heard = QTime::fromString(match.captured(1));
        const QTime left = QTime::fromString(match.captured(2));
        // One that crossed the last traffic has been answered by that.
        QList<QTime> pings = allPings;
        pings.removeIf([&](QTime ping) {
            return ping.isValid() && secondsBetween(heard, left) <= secondsBetween(ping, left);
        });
        QCOMPARE(pings.size(), 1);
        QVERIFY(pings.first().isValid());
        const int silence = secondsBetween(heard, pings.first());
        QVERIFY2(silence >= 60, qPrintable(QString::number(silence)));
        const int patience = secondsBetween(pings.first(), left);
        QVERIFY2(patience >= 45, qPrintable(QString::number(patience)));
        isInTime = silence <= 70 + Lateness && patience <= 50 + Lateness;
        qInfo("asked after %d s, left %d s later", silence, patience);
    }
    QVERIFY(isInTime);
}

void TestSilentServer::staysWithAServerThatAnswersAnything()
{
    QVERIFY(enter());
    const ScriptedServer &server = session->server;
    bool stays = false;
    for (int attempt = 0; !stays && attempt < Attempts; ++attempt) {
        QVERIFY(keepLink());
        session->chatter.stop();
        const qsizetype before = pingsAmong(server.lines()).size();
        const auto isAsked = [&](int times) {
            return !server.isConnected() || pingsAmong(server.lines()).size() >= before + times;
        };
        QTRY_VERIFY_WITH_TIMEOUT(isAsked(1), WaitTimeout);
        session->mutter();
        // A server that is given up hears no second one.
        QTRY_VERIFY_WITH_TIMEOUT(isAsked(2), WaitTimeout);
        session->mutter();
        const QList<QTime> pings = pingsAmong(server.lines()).mid(before);
        if (pings.size() < 2)
            continue;
        const int apart = secondsBetween(pings.at(0), pings.at(1));
        QVERIFY2(apart >= 60, qPrintable(QString::number(apart)));
        stays = apart <= 70 + Lateness && showsStatus(Green) && server.isConnected();
    }
    QVERIFY(stays);
}

void TestSilentServer::asksNothingWhileTheServerTalks()
{
    QVERIFY(enter());
    QVERIFY(session->waitUntil(session->now() + 250));
    const QList<QTime> pings = session->pings();
    QVERIFY(copyRows());
    const QString rows = tellCopy();
    const QList<QTime> talk = timesOf(rows, u"<< :irc\\.test NOTICE wanda :hm"_s);
    QVERIFY2(talk.size() > 5, qPrintable(rows));
    const int silence = shortestSilence(talk, pings);
    QVERIFY2(silence >= 60, qPrintable(QString::number(silence)));
}

// A byte a second: no line ends within the time after which a silent server is asked.
void TestSilentServer::hearsAServerThatSpellsItsLines()
{
    QVERIFY(enter());
    ScriptedServer &server = session->server;
    const QString line = u":irc.test NOTICE wanda :"_s + QString(100, u'x');
    const QByteArray bytes = line.toLatin1() + "\r\n"_ba;
    bool isAsked = true;
    for (int attempt = 0; isAsked && attempt < Attempts; ++attempt) {
        QVERIFY(keepLink());
        session->chatter.stop();
        const qsizetype before = session->pings().size();
        const double start = session->now();
        for (const char byte : bytes) {
            const double second = session->now();
            server.sendBytes(QByteArray(1, byte));
            QVERIFY(session->waitUntil(second + 1));
        }
        QVERIFY(session->now() - start > 120);
        isAsked = session->pings().size() > before;
    }
    QVERIFY(!isAsked);
    server.send(u"PING :spelt"_s);
    QVERIFY(server.waitForLine(u"PONG :spelt"_s));
    QVERIFY(copyRows());
    const QString rows = tellCopy();
    QVERIFY2(rows.contains(QString(u" << "_s + line + u" ["_s)), qPrintable(rows));
}

bool TestSilentServer::talkInRoom(int lines)
{
    ScriptedServer &server = session->server;
    if (!keepLink() || !server.waitForLine(u"JOIN #room"_s))
        return false;
    server.send(u":wanda!w@host JOIN #room"_s);
    if (!server.waitForLine(u"NAMES #room"_s) || !session->program.typeLine(u"anybody here?"_s))
        return false;
    session->chatter.stop();
    const double start = session->now();
    for (int i = 1; i <= lines; ++i) {
        // Typing takes its time, so only the last key is pressed when it is time.
        if (!screen.type(u"still here"_s) || !session->waitUntil(start + 20 * i)
            || !screen.press(u"Return"_s))
            return false;
        const auto isSaid = [&] {
            return server.lines().count(u"PRIVMSG #room :still here"_s) >= i;
        };
        if (!QTest::qWaitFor([&] { return !server.isConnected() || isSaid(); }, WaitTimeout)
            || !isSaid())
            return false;
    }
    return true;
}

void TestSilentServer::asksNothingWhileTheUserTalks()
{
    constexpr int Lines = 12;
    QVERIFY(enter({u"#room"_s}));
    // The user's own talk is no answer.
    connect(&session->server, &ScriptedServer::lineReceived, &session->server,
            [this](int, const QString &line) {
                if (line.startsWith(u"PING"_s))
                    session->mutter();
            });
    bool hasTalked = false;
    for (int attempt = 0; !hasTalked && attempt < Attempts; ++attempt)
        hasTalked = talkInRoom(Lines);
    QVERIFY(hasTalked);
    const QList<QTime> pings = session->pings();
    QVERIFY(copyRows());
    const QString rows = tellCopy();
    const QList<QTime> talk = timesOf(rows, u"\\S+ still here"_s);
    QVERIFY2(talk.size() >= Lines, qPrintable(rows));
    const int silence = shortestSilence(talk, pings);
    QVERIFY2(silence >= 60, qPrintable(QString::number(silence)));
}

void TestSilentServer::letsTheSystemWatchTheSocketToo()
{
    QVERIFY(enter());
    const DuplicatedSocket socket(session->program.processId(), session->server.port());
    QVERIFY2(socket.isValid(), "The system doesn't let us look at the program's sockets");
    QCOMPARE(socket.option(SOL_SOCKET, SO_KEEPALIVE), 1);
    QCOMPARE(socket.option(IPPROTO_TCP, TCP_KEEPIDLE), 60);
    QCOMPARE(socket.option(IPPROTO_TCP, TCP_KEEPINTVL), 10);
    QCOMPARE(socket.option(IPPROTO_TCP, TCP_KEEPCNT), 5);
    QCOMPARE(socket.option(IPPROTO_TCP, TCP_NODELAY), 1);
}

QTEST_GUILESS_MAIN(TestSilentServer)

#include "tst_SilentServer.moc"
