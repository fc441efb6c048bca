// The program in a session with a server: floods and slow streams of lines through a real socket,
// the time to its first frame, and its memory. Under X it is the built program itself on a screen in
// memory; on the platform without a screen, where no key reaches it, it is the same window made here.

#include "Child.h"
#include "ConnectDialog.h"
#include "MainWindow.h"
#include "PreparedStore.h"
#include "Report.h"
#include "ScriptedServer.h"
#include "VirtualScreen.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QSettings>
#include <QStyleFactory>
#include <QTest>
#include <QTimer>

#include <cstdlib>

using namespace Qt::StringLiterals;

namespace {

constexpr int Patience = 60000; // In ms.
constexpr int Quiet = 400;      // In ms without work, after which a program counts as idle.

// Processor time of another process in milliseconds, all of its threads together.
double processorTimeOf(qint64 process)
{
    double result = 0;
    QDir tasks(u"/proc/%1/task"_s.arg(process));
    for (const QString &task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile file(tasks.filePath(task + u"/schedstat"_s));
        if (file.open(QIODevice::ReadOnly))
            result += file.readAll().split(' ').value(0).toDouble() / 1e6;
    }
    return result;
}

QByteArray lines(int count)
{
    static const QByteArrayList texts{
            "yes", "has anybody tried the new kernel on one of these machines yet?",
            "I did, and it works well here, apart from the usual trouble with the graphics driver, "
            "which has to be built again after every update and then fails at the first attempt",
            "see https://example.org/wiki/Troubleshooting?page=12 for details", "thanks a lot",
            "that was broken for years and nobody had noticed, since everybody had a workaround",
            "lol", "ok, then let us do that tomorrow"};
    static const QByteArrayList nicks{"alice", "bob", "carol", "dave_the_great", "eve"};
    QByteArray result;
    for (int i = 0; i < count; ++i) {
        const QByteArray nick = nicks.at(i % nicks.size());
        result += ':' + nick + '!' + nick + "@host.example PRIVMSG #bench :"
                + texts.at(i % texts.size()) + ' ' + QByteArray::number(i) + "\r\n";
    }
    return result;
}

// A server that welcomes its client into one channel.
class Server final : public ScriptedServer
{
public:
    Server()
    {
        connect(this, &ScriptedServer::lineReceived, this,
                [this](int, const QString &line) { answer(line); });
    }

private:
    void answer(const QString &line)
    {
        if (line.startsWith(u"USER "_s)) {
            send(u":irc.test 001 me :Welcome"_s);
            send(u":irc.test 376 me :End of MOTD"_s);
        } else if (line.startsWith(u"JOIN "_s)) {
            send(u":me!me@host JOIN #bench"_s);
            send(u":irc.test 353 me = #bench :@alice bob carol dave_the_great eve me"_s);
            send(u":irc.test 366 me #bench :End"_s);
        } else if (line.startsWith(u"PING"_s)) {
            send(u":irc.test PONG irc.test "_s + line.section(u' ', 1));
        }
    }
};

class Session final
{
public:
    explicit Session(VirtualScreen *shownOn)
        : screen(shownOn)
    {}

    // Starts the program and brings it into the channel.
    bool start()
    {
        PreparedStore::Server record;
        record.host = u"127.0.0.1"_s;
        record.port = server.port();
        record.nickname = u"me"_s;
        record.realName = u"Me"_s;
        record.channels = QStringList{u"#bench"_s};
        store.addServer(record);
        QProcessEnvironment environment =
                screen ? screen->environment() : QProcessEnvironment::systemEnvironment();
        environment.insert(u"XDG_CONFIG_HOME"_s, store.configHome());
        program.setProcessEnvironment(environment);
        if (!screen)
            return program.launch(QCoreApplication::applicationFilePath(), {u"--window"_s}) && join();
        return program.launch(QStringLiteral(VELMORA_PROGRAM))
                && QTest::qWaitFor(
                        [this] { return screen->activeTitle() == u"Connect to IRC Server"_s; },
                        Patience)
                && screen->press(u"Return"_s) && join();
    }

    struct Cost
    {
        double processor = 0; // Both in ms.
        double wall = 0;
    };

    // Sends lines in one go and waits until the program has nothing left to do.
    Cost flood(int count)
    {
        const QByteArray bytes = lines(count);
        const double before = processorTimeOf(program.processId());
        QElapsedTimer clock;
        clock.start();
        server.sendBytes(bytes);
        Cost cost;
        for (double known = before; clock.elapsed() < cost.wall + Quiet || cost.processor < 1;) {
            QTest::qWait(10);
            const double now = processorTimeOf(program.processId());
            // A blinking cursor is no work.
            if (now - known > 0.5) {
                cost = {.processor = now - before, .wall = double(clock.elapsed())};
                known = now;
            }
            if (clock.elapsed() > Patience)
                break;
        }
        return cost;
    }

    // Share of one processor, in percent, at a steady pace of lines.
    double pace(int linesPerSecond, int seconds)
    {
        const QByteArrayList each = lines(linesPerSecond * seconds).split('\n');
        const double before = processorTimeOf(program.processId());
        QElapsedTimer clock;
        clock.start();
        for (qsizetype i = 0; i + 1 < each.size(); ++i) {
            const qint64 due = i * 1000 / linesPerSecond;
            QTest::qWait(int(std::max<qint64>(due - clock.elapsed(), 0)));
            server.sendBytes(each.at(i) + '\n');
        }
        return (processorTimeOf(program.processId()) - before) / double(clock.elapsed()) * 100;
    }

    [[nodiscard]] double memory() const { return Report::residentMemory(program.processId()); }

private:
    bool join()
    {
        const bool isThere = server.waitForClient() && server.waitForLine(u"JOIN #bench"_s);
        QTest::qWait(1000);
        return isThere;
    }

    VirtualScreen *screen;
    Server server;
    PreparedStore store;
    Child program;
};

void printFlood(const QString &work, const Session::Cost &cost, double limit)
{
    Report::print({.work = work + u": processor"_s, .unit = u"s"_s, .value = cost.processor / 1000, .limit = limit});
    Report::print({.work = work + u": wall clock"_s, .unit = u"s"_s, .value = cost.wall / 1000});
}

bool reportSessions(VirtualScreen *screen)
{
    if (qEnvironmentVariableIsSet("VELMORA_PACE_ONLY")) {
    Session third(screen);
    if (!third.start())
        return false;
    third.flood(5000);
    Report::print({.work = u"20 lines a second, 5,000 rows"_s, .unit = u"%"_s, .value = third.pace(20, 10), .limit = 3});
    return true;
    }
    Session first(screen);
    if (!first.start())
        return false;
    const double idle = first.memory();
    Report::print({.work = u"memory when idle in a channel"_s, .unit = u"MB"_s, .value = idle / 1024});
    printFlood(u"10,000 lines in one go"_s, first.flood(10000), 0.5);
    Report::print({.work = u"memory a row after that"_s, .unit = u"kB"_s, .value = (first.memory() - idle) / 10000, .limit = 1.6});
    printFlood(u"10,000 more into those"_s, first.flood(10000), 1);

    Session second(screen);
    if (!second.start())
        return false;
    const double before = second.memory();
    printFlood(u"50,000 lines in one go"_s, second.flood(50000), 2.5);
    Report::print({.work = u"memory a row after that"_s, .unit = u"kB"_s, .value = (second.memory() - before) / 50000, .limit = 1.6});

    Session third(screen);
    if (!third.start())
        return false;
    third.flood(5000);
    Report::print({.work = u"20 lines a second, 5,000 rows"_s, .unit = u"%"_s, .value = third.pace(20, 10), .limit = 3});
    return true;
}

// What main() of the program does, and Return in its connect dialog.
int runWindow(QApplication &application)
{
    QApplication::setApplicationName(u"Velmora"_s);
    QApplication::setOrganizationName(u"Velmora"_s);
    QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));
    MainWindow window;
    window.show();
    QTimer answer;
    QObject::connect(&answer, &QTimer::timeout, &window, [&] {
        if (auto *dialog = window.findChild<ConnectDialog *>()) {
            QTest::keyClick(dialog, Qt::Key_Return);
            answer.stop();
        }
    });
    answer.start(200);
    return QApplication::exec();
}

} // namespace

int main(int argc, char *argv[])
{
    if (QByteArray(argc > 1 ? argv[1] : "") == "--window") {
        QApplication application(argc, argv);
        return runWindow(application);
    }
    const bool hasScreen = qgetenv("QT_QPA_PLATFORM") == "xcb";
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    VirtualScreen screen;
    if (hasScreen && !screen.start())
        return EXIT_FAILURE;
    return reportSessions(hasScreen ? &screen : nullptr) ? EXIT_SUCCESS : EXIT_FAILURE;
}
