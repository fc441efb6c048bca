// Runs the built program against a server that falls silent. The program's clock and timers are
// accelerated. All seconds here are the program's.
//
// The tests are independent of scheduling delays: what the program must not do is judged by its own
// time stamps. What it must do in time is retried, since a stall may delay it.

#include "DuplicatedSocket.h"
#include "Preloading.h"
#include "PreparedStore.h"
#include "ProgramOnScreen.h"
#include "RequiredTools.h"
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
constexpr int AllowedDelay = 60; // Seconds; three of real time.

constexpr int NoticeInterval = 500; // Milliseconds of real time; ten seconds.

// Colours of the status bar, connected and disconnected.
constexpr QRgb Green = qRgb(0xd4, 0xed, 0xda);
constexpr QRgb Red = qRgb(0xf8, 0xd7, 0xda);
constexpr int StatusBarPixels = 5000; // A status bar has more pixels.

constexpr QPoint ConversationPoint{300, 300}; // Relative to the main window.

struct Event
{
    double second = 0; ///< Since the program connected.
    QString text;
};

/// Server, store and program of one test.
struct Session
{
    explicit Session(const VirtualScreen &screen);

    void note(const QString &event);
    [[nodiscard]] double now() const;
    /// Waits until `now` is `second`. Returns false on timeout.
    [[nodiscard]] bool waitUntil(double second) const;
    /// Sends a NOTICE to the program.
    void sendNotice();
    /// Returns the time stamps of all PINGs so far.
    [[nodiscard]] QList<QTime> pings() const;

    ScriptedServer server;
    PreparedStore store;
    ProgramOnScreen program;
    QElapsedTimer clock;
    QList<Event> timeline;
    QTimer noticeTimer; ///< Sends a NOTICE at each timeout.
};

Session::Session(const VirtualScreen &screen)
    : program(screen, store)
{
    clock.start();
    QObject::connect(&server, &ScriptedServer::clientArrived, &server, [this] {
        clock.start();
        note(u"the program connects"_s);
    });
    QObject::connect(&server, &ScriptedServer::lineReceived, &server,
                     [this](int, const QString &line) { note(u">> "_s + line); });
    QObject::connect(&server, &ScriptedServer::clientLeft, &server,
                     [this] { note(u"the connection closes"_s); });
    QObject::connect(&noticeTimer, &QTimer::timeout, &server, [this] { sendNotice(); });
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

void Session::sendNotice()
{
    note(u"<< NOTICE"_s);
    server.send(u":irc.test NOTICE wanda :hm"_s);
}

// Returns the time stamps of the PINGs among `lines`, invalid for a malformed one.
QList<QTime> pingTimes(const QStringList &lines)
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
        times += pingTimes(server.lines(client));
    return times;
}

// Returns the seconds from `first` to `second`, which may be on the next day.
int secondsBetween(QTime first, QTime second)
{
    constexpr int Day = 24 * 60 * 60;
    return (first.secsTo(second) + Day) % Day;
}

// Returns the times of those rows whose text matches `pattern`. `rows` is one line.
QList<QTime> timesOf(const QString &rows, const QString &pattern)
{
    const QRegularExpression row(uR"(\[([\d:]+)\] )"_s + pattern);
    QList<QTime> times;
    for (const QRegularExpressionMatch &match : row.globalMatch(rows))
        times.append(QTime::fromString(match.captured(1)));
    return times;
}

// Returns the shortest time in seconds from a message to a PING. Ignores a message in the same
// second as the PING, since it may have followed it.
int shortestSilence(const QList<QTime> &messages, const QList<QTime> &pings)
{
    int shortest = std::numeric_limits<int>::max();
    for (const QTime ping : pings) {
        for (const QTime sent : messages) {
            if (sent != ping)
                shortest = std::min(shortest, secondsBetween(sent, ping));
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

    void pingsASilentServerOnceAndDisconnects();
    void staysConnectedAfterAnyAnswer();
    void sendsNoPingWhileTheServerSends();
    void sendsNoPingWhileALineArrivesInBytes();
    void sendsNoPingWhileTheUserSends();
    void setsSocketOptions();

private:
    /// Starts the program, connects and registers.
    bool startAndConnect(const QStringList &channels = {});
    /// Connects with the open connect dialog. The server sends NOTICEs from then on.
    bool connectByDialog();
    /// Reconnects if the connection is closed.
    bool ensureConnected();
    /// Joins #room and sends some lines, while the server is silent. Returns false if the
    /// connection is lost.
    bool sendLinesInRoom(int lines);
    bool showsStatus(QRgb colour) const;
    /// Copies all rows of the current conversation, by mouse and keyboard.
    bool copyRows() const;
    /// Pastes the clipboard into the input line and returns what the server receives.
    QString pasteCopy();

    VirtualScreen screen;
    std::unique_ptr<Session> session;
};

void TestSilentServer::initTestCase()
{
    REQUIRE_TOOLS(u"faketime"_s);
    SKIP_IF_MISSING(VirtualScreen::missingParts());
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

bool TestSilentServer::startAndConnect(const QStringList &channels)
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
    session->noticeTimer.start(NoticeInterval);
    return QTest::qWaitFor([this] { return showsStatus(Green); }, WaitTimeout);
}

bool TestSilentServer::ensureConnected()
{
    return session->server.isConnected()
           || (session->program.openConnectDialog() && connectByDialog());
}

bool TestSilentServer::showsStatus(QRgb colour) const
{
    return screen.countPixels(colour) > StatusBarPixels;
}

bool TestSilentServer::copyRows() const
{
    return screen.click(screen.activeWindow().topLeft() + ConversationPoint)
           && screen.press(u"ctrl+a"_s) && screen.press(u"ctrl+c"_s);
}

QString TestSilentServer::pasteCopy()
{
    const ScriptedServer &server = session->server;
    session->noticeTimer.start(NoticeInterval);
    const auto received = [&server] {
        const QStringList lines = server.lines();
        const qsizetype start = lines.indexOf(u"COPY FOLLOWS"_s) + 1;
        return start == 0 ? QStringList()
                          : lines.mid(start).filter(QRegularExpression(u"^(?!PING )"_s));
    };
    for (int attempt = 0; received().isEmpty() && attempt < Attempts; ++attempt) {
        // Typing the first line moves the focus to the input line.
        if (!ensureConnected() || !session->program.typeLine(u"/raw COPY FOLLOWS"_s))
            return {};
        // Restarts the PING interval, so that no PING is sent between the keys.
        session->sendNotice();
        if (!screen.type(u"/raw "_s) || !screen.press(u"ctrl+v"_s))
            return {};
        session->sendNotice();
        if (!screen.press(u"Return"_s)
            || !QTest::qWaitFor([&] { return !server.isConnected() || !received().isEmpty(); },
                                WaitTimeout))
            return {};
    }
    return received().value(0).simplified();
}

void TestSilentServer::pingsASilentServerOnceAndDisconnects()
{
    QVERIFY(startAndConnect());
    const ScriptedServer &server = session->server;
    bool isInTime = false;
    for (int attempt = 0; !isInTime && attempt < Attempts; ++attempt) {
        session->noticeTimer.stop();
        session->sendNotice();
        const double lastTraffic = session->timeline.last().second;
        QTRY_VERIFY_WITH_TIMEOUT(!server.isConnected(), WaitTimeout);
        QVERIFY(session->timeline.last().second - lastTraffic > 60 + 45);
        const QList<QTime> allPings = pingTimes(server.lines());
        QTRY_VERIFY_WITH_TIMEOUT(showsStatus(Red), WaitTimeout);

        QVERIFY(copyRows());
        static const QRegularExpression expected(
                uR"( \[([\d:]+)\] << :irc\.test NOTICE wanda :hm)"
                uR"( \[([\d:]+)\] \*\*\* Error: Ping timeout: no response to PING for 45s)"
                uR"( \[[\d:]+\] \*\*\* Disconnected\.$)"_s);
        const QString rows = pasteCopy();
        const QRegularExpressionMatch match = expected.match(rows);
        QVERIFY2(match.hasMatch(), qPrintable(rows));
        const QTime lastNotice = QTime::fromString(match.captured(1));
        const QTime closed = QTime::fromString(match.captured(2));
        // The last traffic answered a PING sent before it.
        QList<QTime> pings = allPings;
        pings.removeIf([&](QTime ping) {
            return ping.isValid()
                   && secondsBetween(lastNotice, closed) <= secondsBetween(ping, closed);
        });
        QCOMPARE(pings.size(), 1);
        QVERIFY(pings.first().isValid());
        const int silence = secondsBetween(lastNotice, pings.first());
        QVERIFY2(silence >= 60, qPrintable(QString::number(silence)));
        const int pongWait = secondsBetween(pings.first(), closed);
        QVERIFY2(pongWait >= 45, qPrintable(QString::number(pongWait)));
        isInTime = silence <= 70 + AllowedDelay && pongWait <= 50 + AllowedDelay;
        qInfo("PING after %d s, disconnected %d s later", silence, pongWait);
    }
    QVERIFY(isInTime);
}

void TestSilentServer::staysConnectedAfterAnyAnswer()
{
    QVERIFY(startAndConnect());
    const ScriptedServer &server = session->server;
    bool stays = false;
    for (int attempt = 0; !stays && attempt < Attempts; ++attempt) {
        QVERIFY(ensureConnected());
        session->noticeTimer.stop();
        const qsizetype before = pingTimes(server.lines()).size();
        const auto isAsked = [&](int times) {
            return !server.isConnected() || pingTimes(server.lines()).size() >= before + times;
        };
        QTRY_VERIFY_WITH_TIMEOUT(isAsked(1), WaitTimeout);
        session->sendNotice();
        // There is no second PING if the program has disconnected.
        QTRY_VERIFY_WITH_TIMEOUT(isAsked(2), WaitTimeout);
        session->sendNotice();
        const QList<QTime> pings = pingTimes(server.lines()).mid(before);
        if (pings.size() < 2)
            continue;
        const int apart = secondsBetween(pings.at(0), pings.at(1));
        QVERIFY2(apart >= 60, qPrintable(QString::number(apart)));
        stays = apart <= 70 + AllowedDelay && showsStatus(Green) && server.isConnected();
    }
    QVERIFY(stays);
}

void TestSilentServer::sendsNoPingWhileTheServerSends()
{
    QVERIFY(startAndConnect());
    QVERIFY(session->waitUntil(session->now() + 250));
    const QList<QTime> pings = session->pings();
    QVERIFY(copyRows());
    const QString rows = pasteCopy();
    const QList<QTime> sent = timesOf(rows, u"<< :irc\\.test NOTICE wanda :hm"_s);
    QVERIFY2(sent.size() > 5, qPrintable(rows));
    const int silence = shortestSilence(sent, pings);
    QVERIFY2(silence >= 60, qPrintable(QString::number(silence)));
}

// One byte a second: a line takes longer than the silence before a PING.
void TestSilentServer::sendsNoPingWhileALineArrivesInBytes()
{
    QVERIFY(startAndConnect());
    ScriptedServer &server = session->server;
    const QString line = u":irc.test NOTICE wanda :"_s + QString(100, u'x');
    const QByteArray bytes = line.toLatin1() + "\r\n"_ba;
    bool isAsked = true;
    for (int attempt = 0; isAsked && attempt < Attempts; ++attempt) {
        QVERIFY(ensureConnected());
        session->noticeTimer.stop();
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
    const QString rows = pasteCopy();
    QVERIFY2(rows.contains(QString(u" << "_s + line + u" ["_s)), qPrintable(rows));
}

bool TestSilentServer::sendLinesInRoom(int lines)
{
    ScriptedServer &server = session->server;
    if (!ensureConnected() || !server.waitForLine(u"JOIN #room"_s))
        return false;
    server.send(u":wanda!w@host JOIN #room"_s);
    if (!server.waitForLine(u"NAMES #room"_s) || !session->program.typeLine(u"anybody here?"_s))
        return false;
    session->noticeTimer.stop();
    const double start = session->now();
    for (int i = 1; i <= lines; ++i) {
        // Typing takes long, so only Return is timed.
        if (!screen.type(u"still here"_s) || !session->waitUntil(start + 20 * i)
            || !screen.press(u"Return"_s))
            return false;
        const auto isReceived = [&] {
            return server.lines().count(u"PRIVMSG #room :still here"_s) >= i;
        };
        if (!QTest::qWaitFor([&] { return !server.isConnected() || isReceived(); }, WaitTimeout)
            || !isReceived())
            return false;
    }
    return true;
}

void TestSilentServer::sendsNoPingWhileTheUserSends()
{
    constexpr int Lines = 12;
    QVERIFY(startAndConnect({u"#room"_s}));
    // The user's own messages do not answer a PING.
    connect(&session->server, &ScriptedServer::lineReceived, &session->server,
            [this](int, const QString &line) {
                if (line.startsWith(u"PING"_s))
                    session->sendNotice();
            });
    bool hasSent = false;
    for (int attempt = 0; !hasSent && attempt < Attempts; ++attempt)
        hasSent = sendLinesInRoom(Lines);
    QVERIFY(hasSent);
    const QList<QTime> pings = session->pings();
    QVERIFY(copyRows());
    const QString rows = pasteCopy();
    const QList<QTime> sent = timesOf(rows, u"\\S+ still here"_s);
    QVERIFY2(sent.size() >= Lines, qPrintable(rows));
    const int silence = shortestSilence(sent, pings);
    QVERIFY2(silence >= 60, qPrintable(QString::number(silence)));
}

void TestSilentServer::setsSocketOptions()
{
    QVERIFY(startAndConnect());
    const DuplicatedSocket socket(session->program.processId(), session->server.port());
    QVERIFY2(socket.isValid(), "The program's sockets are not accessible");
    QCOMPARE(socket.option(SOL_SOCKET, SO_KEEPALIVE), 1);
    QCOMPARE(socket.option(IPPROTO_TCP, TCP_KEEPIDLE), 60);
    QCOMPARE(socket.option(IPPROTO_TCP, TCP_KEEPINTVL), 10);
    QCOMPARE(socket.option(IPPROTO_TCP, TCP_KEEPCNT), 5);
    QCOMPARE(socket.option(IPPROTO_TCP, TCP_NODELAY), 1);
}

QTEST_GUILESS_MAIN(TestSilentServer)

#include "tst_SilentServer.moc"
