// Long sessions must not leak: at the end, resources are compared with those near the start.
//
// The default numbers are small enough for every test run. Environment variables set larger ones,
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

// mallinfo2() knows nothing about the allocator of sanitizers.
#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__)
constexpr bool CanMeasureMemory = true;
#else
constexpr bool CanMeasureMemory = false;
#endif

const auto Descriptors = u"descriptors"_s;
const auto Timers = u"timers"_s;

const std::array Tabs{u"#a"_s, u"#b"_s, u"#c"_s, u"#d"_s, u"bob"_s};

int numberFromEnvironment(const char *variable, int defaultNumber)
{
    return qEnvironmentVariableIsSet(variable) ? qEnvironmentVariableIntValue(variable)
                                               : defaultNumber;
}

// Returns the allocated memory in kilobytes, or 0 if unknown. Resident memory would not do: it
// shrinks when a busy machine swaps pages out.
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

// Returns the numbers of file descriptors, of timers and of objects of each class. The objects are
// those below the application, the event dispatcher and the top-level widgets and windows.
QMap<QString, int> countResources()
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

// Returns descriptions of the resources that there are more of than in `before`. Fewer are fine:
// Qt may have released something temporary, for example for its search for the message bus.
QStringList increased(const QMap<QString, int> &before)
{
    const QMap<QString, int> now = countResources();
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

    void releasesTheResourcesOfASession();
    void growsOnlyByItsRows();
    void freesALongLine();
    void disconnectsFromAServerThatNeverAnswersTls();

private:
    std::unique_ptr<TemporaryStore> store;
};

void TestSoak::init()
{
    // A blinking cursor has a timer.
    QApplication::setCursorFlashTime(0);
    store = std::make_unique<TemporaryStore>();
}

namespace {

// Connects, exchanges some lines, and ends the connection in one of four ways. In every fifth
// round, the next connect ends it.
bool runSession(WindowSession &session, int round)
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

void TestSoak::releasesTheResourcesOfASession()
{
    constexpr int WarmUp = 20;
    constexpr int Stage = 100; // Multiple of 5, so that all stages end in the same way.
    const int last =
            WarmUp + numberFromEnvironment("VELMORA_SOAK_RECONNECTS", Stage) / Stage * Stage;

    WindowSession session;
    QMap<QString, int> before;
    for (int round = 0; round <= last; ++round) {
        QVERIFY2(runSession(session, round), qPrintable(u"round %1"_s.arg(round)));
        if (round % Stage != WarmUp)
            continue;
        QTRY_COMPARE_WITH_TIMEOUT(countResources().value(Timers), 0, WaitTimeout);
        if (before.isEmpty())
            before = countResources();
        QTRY_COMPARE_WITH_TIMEOUT(increased(before), QStringList(), WaitTimeout);
        qInfo("%d sessions: %d kB", round, int(allocatedMemory()));
    }
}

void TestSoak::growsOnlyByItsRows()
{
    constexpr int Batch = 500;
    const int lines = numberFromEnvironment("VELMORA_SOAK_LINES", 20'000);

    WindowSession session;
    const MainWindowProbe &probe = session.probe;
    QVERIFY(session.registerAs());
    for (const QString &tab : Tabs) {
        if (tab.startsWith(u'#'))
            QVERIFY(session.join(tab, u"me @alice bob"_s));
    }
    int sent = 0;
    const auto sendLinesUpTo = [&](int end) {
        while (sent < end) {
            QStringList batch;
            for (const int stop = std::min(sent + Batch, end); sent < stop; ++sent) {
                const QString &tab = Tabs.at(size_t(sent) % Tabs.size());
                batch.append(u":%1!u@h PRIVMSG %2 :line %3 %4"_s
                                     .arg(tab == u"bob"_s ? tab : u"alice"_s,
                                          tab == u"bob"_s ? u"me"_s : tab)
                                     .arg(sent, 8, 10, QChar(u'0'))
                                     .arg(QString(sent % 7 * 20, u'x')));
            }
            if (!session.receiveAll(batch))
                return false;
            probe.clickTab(sent / Batch % probe.tabWidget().count());
        }
        return true;
    };
    QVERIFY(sendLinesUpTo(lines / 4));
    // The connection's timer stays; those started by the last lines end within a few seconds.
    QTRY_COMPARE_WITH_TIMEOUT(countResources().value(Timers), 1, WaitTimeout);
    const QMap<QString, int> before = countResources();
    const double atFirst = allocatedMemory();
    QVERIFY(sendLinesUpTo(lines / 2));
    const double halfway = allocatedMemory();
    QVERIFY(sendLinesUpTo(lines));
    const double inTheEnd = allocatedMemory();
    QTRY_COMPARE_WITH_TIMEOUT(increased(before), QStringList(), WaitTimeout);

    int rows = 0;
    for (const QString &tab : Tabs)
        rows += probe.tabs().value(tab).table->rows();
    QVERIFY(rows > lines);
    // A container that grows by doubling does so once in each part.
    const double early = (halfway - atFirst) * 4 / lines;
    const double late = (inTheEnd - halfway) * 2 / lines;
    qInfo("%d rows: %.2f kB each in the second quarter, %.2f kB in the second half", rows, early,
          late);
    if (CanMeasureMemory)
        QVERIFY(late < early * 1.5 && late < 1.6);
}

// Lines have no maximum length. Their memory must be freed when they end.
void TestSoak::freesALongLine()
{
    const int megabytes = numberFromEnvironment("VELMORA_SOAK_MEGABYTES", 16);

    WindowSession session;
    QVERIFY(session.registerAs());
    const double before = allocatedMemory();
    const QByteArray piece(1 << 20, 'x');
    session.server.sendBytes(":somebody!u@h NOTICE me :");
    for (int i = 0; i < megabytes; ++i) {
        session.server.sendBytes(piece);
        // The user can send meanwhile.
        session.probe.typeLine(u"/raw PIECE %1"_s.arg(i));
        QVERIFY(session.server.waitForLine(u"PIECE %1"_s.arg(i)));
    }
    const double atItsEnd = allocatedMemory();
    session.server.sendBytes("\r\n");
    QVERIFY(session.settle());
    const double after = allocatedMemory();
    qInfo("a line of %d MB: %.0f MB before, %.0f MB with it, %.0f MB after", megabytes,
          before / 1024, atItsEnd / 1024, after / 1024);
    if (CanMeasureMemory)
        QVERIFY(after - before < megabytes * 1024 / 4);
}

void TestSoak::disconnectsFromAServerThatNeverAnswersTls()
{
    WindowSession session;
    const MainWindowProbe &probe = session.probe;
    const ScriptedServer &silent = session.server;
    ServerConfig config;
    config.useSsl = true;
    ServerStore::saveConfig(ServerStore::serverId(u"127.0.0.1"_s, silent.port()), config,
                            ServerStore::AddressFallback::UseId);
    const auto connectToSilentServer = [&] {
        const int clients = silent.clientCount();
        QTimer::singleShot(0, &session.window,
                           [&session] { static_cast<void>(session.clickConnect(u"me"_s)); });
        return silent.waitForClient(clients + 1)
               && QTest::qWaitFor([&] { return probe.connection().isConnected(); }, WaitTimeout);
    };

    QMap<QString, int> before;
    for (int round = 0; round < 5; ++round) {
        QVERIFY(connectToSilentServer());
        QCOMPARE(probe.lastLine(u"Server"_s), u"*** Connected to server."_s);
        session.choose(u"&Disconnect"_s);
        QCOMPARE(probe.lastLine(u"Server"_s), u"*** Disconnected."_s);
        QVERIFY(silent.waitForEnd());
        QTRY_COMPARE_WITH_TIMEOUT(countResources().value(Timers), 0, WaitTimeout);
        if (round == 1)
            before = countResources();
    }
    QTRY_COMPARE_WITH_TIMEOUT(increased(before), QStringList(), WaitTimeout);

    // A connect to another server and the end of the program disconnect, too.
    QVERIFY(connectToSilentServer());
    ScriptedServer other;
    connect(&other, &ScriptedServer::lineReceived, &other, [&other](int, const QString &line) {
        if (line.startsWith(u"USER "_s))
            other.send(u":irc.test 001 me :Welcome"_s);
    });
    QVERIFY(session.registerAt(other.port(), u"me"_s));
    QVERIFY(silent.waitForEnd());
    QVERIFY(connectToSilentServer());
    session.destroyWindow();
    QVERIFY(silent.waitForEnd());
}

QTEST_MAIN(TestSoak)
#include "tst_Soak.moc"
