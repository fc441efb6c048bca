// Measures the program in a session: floods and slow streams of lines through a real socket, the
// time to the first frame, and memory. Under X it runs the built program on a virtual screen. The
// offscreen platform passes no key press to another process, so there this executable opens the
// window itself.

#include "Child.h"
#include "ConnectDialog.h"
#include "IRCConnection.h"
#include "MainWindow.h"
#include "PreparedStore.h"
#include "Report.h"
#include "ScriptedServer.h"
#include "VirtualScreen.h"
#include "Waiting.h"

#include <QApplication>
#include <QBasicTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QMainWindow>
#include <QStyleFactory>
#include <QTcpSocket>
#include <QTest>
#include <QTextStream>
#include <QTimer>
#include <QTimerEvent>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <optional>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

constexpr int IdleTime = 400; // Time without work, in ms, after which a program counts as idle.

// Returns the processor time of all threads of another process, in milliseconds.
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
    static const QByteArray longest =
            "I did, and it works well here, apart from the usual trouble with the graphics driver, "
            "which has to be built again after every update and then fails at the first attempt";
    static const QByteArrayList texts{
            "yes",
            "has anybody tried the new kernel on one of these machines yet?",
            longest,
            "see https://example.org/wiki/Troubleshooting?page=12 for details",
            "thanks a lot",
            "that was broken for years and nobody had noticed, since everybody had a workaround",
            "lol",
            "ok, then let us do that tomorrow"};
    static const QByteArrayList nicks{"alice", "bob", "carol", "dave_the_great", "eve"};
    QByteArray result;
    for (int i = 0; i < count; ++i) {
        const QByteArray &nick = nicks.at(i % nicks.size());
        result += ':' + nick + '!' + nick + "@host.example PRIVMSG #bench :"
                  + texts.at(i % texts.size()) + ' ' + QByteArray::number(i) + "\r\n";
    }
    return result;
}

// A server that registers its client and confirms joining one channel.
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
    {
    }

    // Starts the program and waits until it has joined the channel.
    bool start()
    {
        prepare();
        if (!screen)
            return launchWindow() && join();
        return program.launch(QStringLiteral(VELMORA_PROGRAM))
               && QTest::qWaitFor(
                       [this] { return screen->activeTitle() == u"Connect to IRC Server"_s; },
                       WaitTimeout)
               && screen->press(u"Return"_s) && join();
    }

    // Does the same with this executable's window, which measures its event-loop iterations.
    bool startMeasuring()
    {
        prepare();
        return launchWindow({u"--iterations"_s}) && join();
    }

    // Returns the longest event-loop iteration since the last call, in ms of processor time.
    double longestIteration()
    {
        double longest = 0;
        for (const QByteArray &figure : program.readAllStandardOutput().split('\n'))
            longest = std::max(longest, figure.toDouble());
        return longest;
    }

    struct Cost
    {
        double processor = 0; // Both in ms.
        double wall = 0;
    };

    // Sends bytes in one go and waits until the program has nothing left to do.
    Cost send(const QByteArray &bytes)
    {
        const double before = processorTimeOf(program.processId());
        QElapsedTimer clock;
        clock.start();
        server.sendBytes(bytes);
        Cost cost;
        for (double known = before;
             double(clock.elapsed()) < cost.wall + IdleTime || cost.processor < 1;) {
            QTest::qWait(10);
            const double now = processorTimeOf(program.processId());
            // Ignores the blinking cursor.
            if (now - known > 0.5) {
                cost = {.processor = now - before, .wall = double(clock.elapsed())};
                known = now;
            }
            if (clock.elapsed() > WaitTimeout)
                break;
        }
        return cost;
    }

    // Returns the share of one processor, in percent, at a steady rate of lines.
    double load(int linesPerSecond, int seconds)
    {
        const QList<QByteArray> each = lines(linesPerSecond * seconds).split('\n');
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
    void prepare()
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
    }

    bool launchWindow(const QStringList &arguments = {})
    {
        return program.launch(QCoreApplication::applicationFilePath(),
                              QStringList{u"--window"_s} + arguments);
    }

    bool join()
    {
        const bool hasJoined = server.waitForClient() && server.waitForLine(u"JOIN #bench"_s);
        QTest::qWait(1000);
        return hasJoined;
    }

    VirtualScreen *screen;
    Server server;
    PreparedStore store;
    Child program;
};

void printCost(const QString &work, const Session::Cost &cost, std::optional<double> limit = {})
{
    Report::print({.work = work + u", processor"_s,
                   .unit = u"s"_s,
                   .value = cost.processor / 1000,
                   .limit = limit,
                   .stock = {}});
    Report::print({.work = work + u", wall clock"_s,
                   .unit = u"s"_s,
                   .value = cost.wall / 1000,
                   .limit = {},
                   .stock = {}});
}

void printMemory(const QString &work, double kilobytes, int rowCount)
{
    Report::print({.work = work,
                   .unit = u"kB"_s,
                   .value = kilobytes / rowCount,
                   .limit = 1.6,
                   .stock = {}});
}

bool reportFloods(VirtualScreen *screen)
{
    Session first(screen);
    if (!first.start())
        return false;
    double before = first.memory();
    Report::print({.work = u"memory when idle in a channel"_s,
                   .unit = u"MB"_s,
                   .value = before / 1024,
                   .limit = {},
                   .stock = {}});
    printCost(u"10,000 lines in one go"_s, first.send(lines(10000)), 0.5);
    printMemory(u"10,000 lines: memory a row"_s, first.memory() - before, 10000);
    printCost(u"10,000 lines into 10,000 rows"_s, first.send(lines(10000)), 1);

    Session second(screen);
    if (!second.start())
        return false;
    before = second.memory();
    printCost(u"50,000 lines in one go"_s, second.send(lines(50000)), 2.5);
    printMemory(u"50,000 lines: memory a row"_s, second.memory() - before, 50000);

    Session third(screen);
    if (!third.startMeasuring())
        return false;
    third.longestIteration();
    third.send(lines(50000));
    Report::print({.work = u"50,000 lines in one go, longest event-loop iteration"_s,
                   .unit = u"ms"_s,
                   .value = third.longestIteration(),
                   .limit = {},
                   .stock = {}});
    return true;
}

// Returns the processor time of one read of 1 MB in 20,000 lines, in milliseconds.
std::optional<double> readOfManyLines()
{
    ScriptedServer server;
    IRCConnection connection;
    connection.connectToServer(u"127.0.0.1"_s, server.port(), u"me"_s, u"Me"_s, false);
    if (!server.waitForLine(u"USER me 0 * :Me"_s))
        return {};
    const QByteArray bytes =
            QByteArray(":irc.test 372 me :" + QByteArray(30, 'x') + "\r\n").repeated(20000);
    auto *socket = connection.findChild<QTcpSocket *>();
    // The socket buffers the bytes without emitting readyRead.
    socket->blockSignals(true);
    server.sendBytes(bytes);
    if (!waitUntil([&] { return socket->bytesAvailable() == bytes.size(); }))
        return {};
    const double start = Report::processorTime();
    QMetaObject::invokeMethod(&connection, "onReadyRead");
    return Report::processorTime() - start;
}

bool reportReading()
{
    std::vector<double> times;
    for (int i = 0; i < 15; ++i) {
        const std::optional<double> time = readOfManyLines();
        if (!time)
            return false;
        times.push_back(*time);
    }
    std::sort(times.begin(), times.end());
    Report::print({.work = u"one read of 1 MB in 20,000 lines"_s,
                   .unit = u"ms"_s,
                   .value = times[times.size() / 2],
                   .limit = {},
                   .stock = {}});
    return true;
}

bool reportSteadyRate(VirtualScreen *screen)
{
    Session session(screen);
    if (!session.start())
        return false;
    session.send(lines(5000));
    Report::print({.work = u"20 lines a second into 5,000 rows, of one processor"_s,
                   .unit = u"%"_s,
                   .value = session.load(20, 10),
                   .limit = 3,
                   .stock = {}});
    return true;
}

bool reportNames(VirtualScreen *screen)
{
    Session session(screen);
    if (!session.start())
        return false;
    QByteArray names;
    for (int i = 0; i < 5000; i += 50) {
        names += ":irc.test 353 me = #bench :";
        for (int k = i; k < i + 50; ++k)
            names += (k % 100 == 0 ? "@user" : "user") + QByteArray::number(k) + ' ';
        names += "\r\n";
    }
    printCost(u"a list of 5,000 names"_s, session.send(names + ":irc.test 366 me #bench :End\r\n"));
    QByteArray changes;
    for (int i = 0; i < 1000; ++i) {
        const QByteArray source = ":guest" + QByteArray::number(i) + "!guest@host.example ";
        changes += source + "JOIN #bench\r\n" + source + "QUIT :bye\r\n";
    }
    printCost(u"1,000 joins and quits beside 5,000 names"_s, session.send(changes), 1);
    QByteArray quits;
    QByteArray joins;
    for (int i = 0; i < 5000; i += 5) {
        const QByteArray source = ":user" + QByteArray::number(i) + "!user@host.example ";
        quits += source + "QUIT :a.example b.example\r\n";
        joins += source + "JOIN #bench\r\n";
    }
    printCost(u"a net split: 1,000 of 5,000 quit and join"_s, session.send(quits + joins), 1);
    return true;
}

// Returns the processor time of a new process until its window's first frame, in milliseconds.
double firstFrame(VirtualScreen *screen, const QString &kind)
{
    std::vector<double> times;
    for (int i = 0; i < 7; ++i) {
        const PreparedStore store;
        Child program;
        QProcessEnvironment environment =
                screen ? screen->environment() : QProcessEnvironment::systemEnvironment();
        environment.insert(u"XDG_CONFIG_HOME"_s, store.configHome());
        program.setProcessEnvironment(environment);
        if (!program.launch(QCoreApplication::applicationFilePath(), {u"--first-frame"_s, kind})
            || !program.waitForFinished(WaitTimeout))
            return 0;
        times.push_back(program.readAllStandardOutput().trimmed().toDouble());
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

void reportStart(VirtualScreen *screen)
{
    const double window = firstFrame(screen, u"window"_s);
    const double empty = firstFrame(screen, u"empty"_s);
    Report::print({.work = u"start to the first frame"_s,
                   .unit = u"ms"_s,
                   .value = window,
                   .limit = {},
                   .stock = {}});
    Report::print({.work = u"the same, as a ratio to an empty QMainWindow"_s,
                   .unit = u""_s,
                   .value = window / std::max(empty, 1e-9),
                   .limit = 1.5,
                   .stock = {}});
}

class FirstPaint final : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) {
            watched->removeEventFilter(this);
            QTimer::singleShot(0, watched, [] {
                QTextStream(stdout) << Report::processorTime() << Qt::endl;
                std::_Exit(EXIT_SUCCESS);
            });
        }
        return QObject::eventFilter(watched, event);
    }
};

// Does the same as main() of the program.
void prepareApplication()
{
    QApplication::setApplicationName(u"Velmora"_s);
    QApplication::setOrganizationName(u"Velmora"_s);
    QApplication::setStyle(QStyleFactory::create(u"Fusion"_s));
}

int runToFirstFrame(bool isEmpty)
{
    prepareApplication();
    const std::unique_ptr<QMainWindow> window(isEmpty ? new QMainWindow : new MainWindow);
    FirstPaint firstPaint;
    window->installEventFilter(&firstPaint);
    window->show();
    return QApplication::exec();
}

// Prints the processor time of each event-loop iteration of more than a millisecond.
class IterationMeter final : public QObject
{
public:
    IterationMeter() { timer.start(1, this); }

protected:
    void timerEvent(QTimerEvent * /*event*/) override
    {
        const double now = Report::processorTime();
        if (now - last > 1)
            QTextStream(stdout) << now - last << Qt::endl;
        last = now;
    }

private:
    QBasicTimer timer;
    double last = Report::processorTime();
};

// Runs the program's window and presses Return in its connect dialog.
int runWindow(bool isMeasured)
{
    prepareApplication();
    MainWindow window;
    window.show();
    std::optional<IterationMeter> meter;
    if (isMeasured)
        meter.emplace();
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

// Runs another program on the virtual screen.
int runOnScreen(const VirtualScreen &screen, const QStringList &command)
{
    Child program;
    program.setProcessEnvironment(screen.environment());
    program.setProcessChannelMode(QProcess::ForwardedChannels);
    if (!program.launch(command.first(), command.mid(1)) || !program.waitForFinished(-1))
        return EXIT_FAILURE;
    return program.exitCode();
}

bool report(const QString &part, VirtualScreen *screen)
{
    if (part == "floods"_L1)
        return reportFloods(screen);
    if (part == "reading"_L1)
        return reportReading();
    if (part == "pace"_L1)
        return reportSteadyRate(screen);
    if (part == "names"_L1)
        return reportNames(screen);
    if (part == "start"_L1) {
        reportStart(screen);
        return true;
    }
    return false;
}

} // namespace

int main(int argc, char *argv[])
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    const QString task = arguments.value(0);
    if (task == "--window"_L1 || task == "--first-frame"_L1) {
        const QApplication application(argc, argv);
        return task == "--window"_L1 ? runWindow(arguments.contains("--iterations"_L1))
                                     : runToFirstFrame(arguments.value(1) == "empty"_L1);
    }
    const bool hasScreen = qgetenv("QT_QPA_PLATFORM") == "xcb";
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    VirtualScreen screen;
    if (hasScreen && !screen.start())
        return EXIT_FAILURE;
    if (task == "--on-screen"_L1)
        return runOnScreen(screen, arguments.mid(1));
    return report(task, hasScreen ? &screen : nullptr) ? EXIT_SUCCESS : EXIT_FAILURE;
}
