// Sessions that go on for long: what they hold in the end is what they held near the beginning.
//
// The numbers are small enough for every run of the tests. Greater ones come from the environment,
// see CONTRIBUTING.md.

#include "IRCConnection.h"
#include "MyTabWidget.h"
#include "ServerStore.h"
#include "TemporaryStore.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QDir>
#include <QTest>
#include <QTextTable>
#include <QTimer>
#include <QWindow>

#include <array>
#include <malloc.h>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

// Sanitizers have an allocator of their own, which doesn't tell.
#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__)
constexpr bool MemoryTells = true;
#else
constexpr bool MemoryTells = false;
#endif

const auto Descriptors = u"descriptors"_s;
const auto Timers = u"timers"_s;

const std::array Tabs{u"#a"_s, u"#b"_s, u"#c"_s, u"#d"_s, u"bob"_s};

int amount(const char *variable, int usual)
{
    return qEnvironmentVariableIsSet(variable) ? qEnvironmentVariableIntValue(variable) : usual;
}

// What the process has allocated and not freed, in kilobytes, and 0 if nobody knows. What of it is
// in memory would be no measure: that falls when a busy machine takes its pages away.
double allocatedMemory()
{
#if defined(__GLIBC__)
    const struct mallinfo2 info = mallinfo2();
    return double(info.uordblks + info.hblkhd) / 1024;
#else
    return 0;
#endif
}

void count(QObject &object, QMap<QString, int> &counts)
{
    ++counts[QString::fromLatin1(object.metaObject()->className())];
    counts[Timers] += static_cast<int>(
            QAbstractEventDispatcher::instance()->registeredTimers(&object).size());
    for (QObject *child : object.children())
        count(*child, counts);
}

// What the process holds besides memory: how many file descriptors, timers, and objects of each
// class, the window's and all others that Qt knows the way to.
QMap<QString, int> holdings()
{
    QMap<QString, int> counts;
    counts[Descriptors] =
            static_cast<int>(QDir(u"/proc/self/fd"_s).entryList(QDir::AllEntries).size());
    count(*qApp, counts);
    count(*QAbstractEventDispatcher::instance(), counts);
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (widget->parent() == nullptr)
            count(*widget, counts);
    }
    for (QWindow *window : QGuiApplication::topLevelWindows())
        count(*window, counts);
    return counts;
}

// What there is more of than there was. Less is no fault: something that Qt does on the side, a
// look for the message bus say, may have been under way before.
QStringList grown(const QMap<QString, int> &before)
{
    const QMap<QString, int> now = holdings();
    QStringList result;
    for (auto entry = now.cbegin(); entry != now.cend(); ++entry) {
        const int earlier = before.value(entry.key());
        if (entry.value() > earlier)
            result.append(u"%1: %2, then %3"_s.arg(entry.key()).arg(earlier).arg(entry.value()));
    }
    return result;
}

} // namespace

class TestSoak final : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void keepsNothingOfASession();
    void growsByItsRowsAlone();
    void forgetsALongLine();
    void leavesAServerThatNeverAnswersTls();

private:
    std::unique_ptr<TemporaryStore> store;
};

void TestSoak::init()
{
    // A cursor that blinks is a timer.
    QApplication::setCursorFlashTime(0);
    store = std::make_unique<TemporaryStore>();
}

namespace {

// Connects, has some lines said, and lets the link end in one of five ways, the last of which is
// another connect.
bool visit(WindowSession &session, int round)
{
    const MainWindowProbe &probe = session.probe;
    if (!session.registerAs(u"me"_s, u"#a"_s) || !session.join(u"#a"_s, u"me @alice bob"_s)
        || !session.receiveAll({u":alice!a@h PRIVMSG #a :me: hello"_s,
                                u":bob!b@h PRIVMSG me :psst"_s, u":bob!b@h NICK bobby"_s,
                                u":bobby!b@h NICK bob"_s, u":bob!b@h QUIT :bye"_s}))
        return false;
    probe.clickTab(round % probe.tabWidget().count());
    probe.typeLine(u"/raw ROUND %1"_s.arg(round));
    ScriptedServer &server = session.server;
    if (!server.waitForLine(u"ROUND %1"_s.arg(round)))
        return false;
    switch (round % 5) {
    case 0:
        server.close();
        break;
    case 1:
        server.abort();
        break;
    case 2:
        session.choose(u"&Disconnect"_s);
        break;
    case 3:
        probe.typeLine(u"/raw QUIT :bye"_s);
        if (!server.waitForLine(u"QUIT :bye"_s))
            return false;
        server.close();
        break;
    default:
        return true;
    }
    return server.waitForEnd()
           && QTest::qWaitFor([&] { return !probe.connection().isConnected(); }, WaitTimeout);
}

} // namespace

void TestSoak::keepsNothingOfASession()
{
    constexpr int WarmUp = 20;
    constexpr int Stage = 100; // All stages end with a link that ended in the same way.
    const int last = WarmUp + amount("VELMORA_SOAK_RECONNECTS", Stage) / Stage * Stage;

    WindowSession session;
    QMap<QString, int> before;
    for (int round = 0; round <= last; ++round) {
        QVERIFY2(visit(session, round), qPrintable(u"round %1"_s.arg(round)));
        if (round % Stage != WarmUp)
            continue;
        QTRY_COMPARE_WITH_TIMEOUT(holdings().value(Timers), 0, WaitTimeout);
        if (before.isEmpty())
            before = holdings();
        QTRY_COMPARE_WITH_TIMEOUT(grown(before), QStringList(), WaitTimeout);
        qInfo("%d sessions: %d kB", round, int(allocatedMemory()));
    }
}

void TestSoak::growsByItsRowsAlone()
{
    constexpr int Batch = 500;
    const int lines = amount("VELMORA_SOAK_LINES", 20'000);

    WindowSession session;
    const MainWindowProbe &probe = session.probe;
    QVERIFY(session.registerAs());
    for (const QString &tab : Tabs) {
        if (tab.startsWith(u'#'))
            QVERIFY(session.join(tab, u"me @alice bob"_s));
    }
    int said = 0;
    const auto sayUpTo = [&](int end) {
        while (said < end) {
            QStringList batch;
            for (const int stop = std::min(said + Batch, end); said < stop; ++said) {
                const QString &tab = Tabs.at(size_t(said) % Tabs.size());
                batch.append(u":%1!u@h PRIVMSG %2 :line %3 %4"_s
                                     .arg(tab == u"bob"_s ? tab : u"alice"_s,
                                          tab == u"bob"_s ? u"me"_s : tab)
                                     .arg(said, 8, 10, QChar(u'0'))
                                     .arg(QString(said % 7 * 20, u'x')));
            }
            if (!session.receiveAll(batch))
                return false;
            probe.clickTab(said / Batch % probe.tabWidget().count());
        }
        return true;
    };
    QVERIFY(sayUpTo(lines / 4));
    // That of the link stays; what was started by the last lines ends within a few seconds.
    QTRY_COMPARE_WITH_TIMEOUT(holdings().value(Timers), 1, WaitTimeout);
    const QMap<QString, int> before = holdings();
    const double atFirst = allocatedMemory();
    QVERIFY(sayUpTo(lines / 2));
    const double halfway = allocatedMemory();
    QVERIFY(sayUpTo(lines));
    const double inTheEnd = allocatedMemory();
    QTRY_COMPARE_WITH_TIMEOUT(grown(before), QStringList(), WaitTimeout);

    int rows = 0;
    for (const QString &tab : Tabs)
        rows += probe.tabs().value(tab).table->rows();
    QVERIFY(rows > lines);
    // What grows by doubling does so once in either part.
    const double early = (halfway - atFirst) * 4 / lines;
    const double late = (inTheEnd - halfway) * 2 / lines;
    qInfo("%d rows: %.2f kB each in the second quarter, %.2f kB in the second half", rows, early,
          late);
    if (MemoryTells)
        QVERIFY(late < early * 1.5 && late < 1.6);
}

// A line has no greatest length; it costs its memory for as long as it lasts and no longer.
void TestSoak::forgetsALongLine()
{
    const int megabytes = amount("VELMORA_SOAK_MEGABYTES", 16);

    WindowSession session;
    QVERIFY(session.registerAs());
    const double before = allocatedMemory();
    const QByteArray piece(1 << 20, 'x');
    session.server.sendBytes(":somebody!u@h NOTICE me :");
    for (int i = 0; i < megabytes; ++i) {
        session.server.sendBytes(piece);
        // The user is heard meanwhile.
        session.probe.typeLine(u"/raw PIECE %1"_s.arg(i));
        QVERIFY(session.server.waitForLine(u"PIECE %1"_s.arg(i)));
    }
    const double atItsEnd = allocatedMemory();
    session.server.sendBytes("\r\n");
    QVERIFY(session.settle());
    const double after = allocatedMemory();
    qInfo("a line of %d MB: %.0f MB before, %.0f MB with it, %.0f MB after", megabytes,
          before / 1024, atItsEnd / 1024, after / 1024);
    if (MemoryTells)
        QVERIFY(after - before < megabytes * 1024 / 4);
}

void TestSoak::leavesAServerThatNeverAnswersTls()
{
    WindowSession session;
    const MainWindowProbe &probe = session.probe;
    const ScriptedServer &silent = session.server;
    ServerConfig config;
    config.useSsl = true;
    ServerStore::saveConfig(ServerStore::serverId(u"127.0.0.1"_s, silent.port()), config,
                            ServerStore::OddIdAddress::SameAsId);
    const auto dial = [&] {
        const int clients = silent.clientCount();
        QTimer::singleShot(0, &session.window,
                           [&session] { static_cast<void>(session.clickConnect(u"me"_s)); });
        return silent.waitForClient(clients + 1)
               && QTest::qWaitFor([&] { return probe.connection().isConnected(); }, WaitTimeout);
    };

    QMap<QString, int> before;
    for (int round = 0; round < 5; ++round) {
        QVERIFY(dial());
        QCOMPARE(probe.lastLine(u"Server"_s), u"*** Connected to server."_s);
        session.choose(u"&Disconnect"_s);
        QCOMPARE(probe.lastLine(u"Server"_s), u"*** Disconnected."_s);
        QVERIFY(silent.waitForEnd());
        QTRY_COMPARE_WITH_TIMEOUT(holdings().value(Timers), 0, WaitTimeout);
        if (round == 1)
            before = holdings();
    }
    QTRY_COMPARE_WITH_TIMEOUT(grown(before), QStringList(), WaitTimeout);

    // Another server takes its place, and the program ends beside it.
    QVERIFY(dial());
    ScriptedServer other;
    connect(&other, &ScriptedServer::lineReceived, &other, [&other](int, const QString &line) {
        if (line.startsWith(u"USER "_s))
            other.send(u":irc.test 001 me :Welcome"_s);
    });
    QVERIFY(session.registerAt(other.port(), u"me"_s));
    QVERIFY(silent.waitForEnd());
    QVERIFY(dial());
    session.destroyWindow();
    QVERIFY(silent.waitForEnd());
}

QTEST_MAIN(TestSoak)
#include "tst_Soak.moc"
