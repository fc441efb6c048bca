#include "Demo.h"

#include "Child.h"
#include "DemoServer.h"
#include "PreparedStore.h"
#include "ProgramOnScreen.h"
#include "VirtualScreen.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QEventLoop>
#include <QTest>
#include <QTextStream>
#include <QTimer>

#include <chrono>
#include <csignal>
#include <functional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto TimeForAll = 60s;
constexpr auto SignalCheck = 200ms; // How soon a signal is noticed.

// The colours in which the program writes the nicks of the two.
constexpr QRgb MaraColour = qRgb(0x2e, 0x7d, 0x32);
constexpr QRgb HugoColour = qRgb(0xad, 0x14, 0x57);
constexpr int ColourDistance = 24; // The edges of letters are mixed with the background.
constexpr int NickPoints = 40;     // A written nick has more points of its colour than this.

volatile std::sig_atomic_t interrupted = 0;

void tell(const QString &text)
{
    QTextStream(stdout) << text << Qt::endl;
}

PreparedStore::Server newcomer(const DemoServer &server)
{
    return {.host = u"127.0.0.1"_s,
            .port = server.port(),
            .nickname = u"newcomer"_s,
            .realName = u"A newcomer"_s,
            .channels = {u"#velmora"_s}};
}

/// The unattended demo. Each step gives back nothing when it worked, else the reason.
class Walk final
{
public:
    explicit Walk(const QString &pictures)
        : folder(pictures)
    {
    }

    QString connect();
    QString watchConversation();
    QString speak();
    QString leave();

    /// Keeps what the screen shows now and names the file.
    void keep(const QString &name);
    /// Says how the program is and what it has written to its error output.
    void tellAboutProgram();

private:
    bool waitFor(const std::function<bool()> &condition) const;
    bool shows(QRgb colour, int before) const;

    QDir folder;
    QDeadlineTimer deadline{TimeForAll};
    VirtualScreen screen;
    DemoServer server;
    PreparedStore store;
    ProgramOnScreen program{screen, store};
    int maraBefore = 0;
    int hugoBefore = 0;
};

QString Walk::connect()
{
    if (!screen.start())
        return screen.failure();
    if (server.port() == 0)
        return u"the server found no free port"_s;
    store.addServer(newcomer(server));
    if (!program.start())
        return u"the program doesn't open its connect dialog"_s;
    keep(u"1-connect-dialog"_s);
    maraBefore = screen.countPoints(MaraColour, ColourDistance);
    hugoBefore = screen.countPoints(HugoColour, ColourDistance);
    tell(u"Pressing Connect"_s);
    if (!program.pressConnect())
        return u"the connect dialog doesn't close"_s;
    if (!waitFor([this] { return server.hasHeard(u"JOIN #velmora"_s); }))
        return u"the program doesn't join #velmora"_s;
    return {};
}

QString Walk::watchConversation()
{
    tell(u"Watching the conversation"_s);
    if (!waitFor([this] { return server.conversationIsOver(); }))
        return u"the conversation doesn't come to its end"_s;
    if (!waitFor([this] { return shows(MaraColour, maraBefore) && shows(HugoColour, hugoBefore); }))
        return u"the conversation isn't seen on the screen"_s;
    keep(u"2-conversation"_s);
    return {};
}

QString Walk::speak()
{
    tell(u"Saying hello"_s);
    const int before = screen.countPoints(MaraColour, ColourDistance);
    if (!program.say(u"Hello, everybody!"_s)
        || !waitFor([this] { return server.hasHeard(u"PRIVMSG #velmora :Hello, everybody!"_s); }))
        return u"what is typed doesn't reach the server"_s;
    if (!waitFor([this] { return server.answerCount() > 0; }))
        return u"nobody answers"_s;
    if (!waitFor([&] { return shows(MaraColour, before); }))
        return u"the answer isn't seen on the screen"_s;
    keep(u"3-answer"_s);
    return {};
}

QString Walk::leave()
{
    tell(u"Closing the window"_s);
    if (!program.close())
        return u"the program doesn't end when its window is closed"_s;
    if (program.exitStatus() != 0)
        return u"the program ends with the exit status %1"_s.arg(program.exitStatus());
    if (!waitFor([this] { return server.hasHeard(u"QUIT :Velmora leaving"_s); }))
        return u"the program doesn't take its leave"_s;
    return {};
}

void Walk::keep(const QString &name)
{
    const QString file = folder.absoluteFilePath(name + u".png");
    if (folder.mkpath(u"."_s) && screen.picture().save(file))
        tell(u"Screenshot: %1"_s.arg(file));
}

void Walk::tellAboutProgram()
{
    if (!program.isRunning())
        tell(u"The program isn't running; its exit status was %1."_s.arg(program.exitStatus()));
    if (const QString errors = program.errorOutput(); !errors.isEmpty())
        tell(u"The program wrote:\n%1"_s.arg(errors));
}

bool Walk::waitFor(const std::function<bool()> &condition) const
{
    return QTest::qWaitFor([&] { return interrupted != 0 || condition(); },
                           int(deadline.remainingTime()))
           && interrupted == 0;
}

bool Walk::shows(QRgb colour, int before) const
{
    return screen.countPoints(colour, ColourDistance) >= before + NickPoints;
}

} // namespace

void Demo::endOnSignals()
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        std::signal(signal, [](int) { interrupted = 1; });
}

int Demo::runAttended()
{
    const DemoServer server;
    PreparedStore store;
    store.addServer(newcomer(server));

    Child program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"XDG_CONFIG_HOME"_s, store.configHome());
    program.setProcessEnvironment(environment);
    program.setProcessChannelMode(QProcess::ForwardedChannels);

    QEventLoop loop;
    QObject::connect(&program, &QProcess::finished, &loop, &QEventLoop::quit);
    QTimer check;
    QObject::connect(&check, &QTimer::timeout, &loop, [&loop] {
        if (interrupted != 0)
            loop.quit();
    });
    check.start(SignalCheck);

    if (server.port() == 0 || !program.launch(ProgramOnScreen::path())) {
        tell(u"error: the demo can't start: %1"_s.arg(program.errorString()));
        return EXIT_FAILURE;
    }
    tell(u"The server listens on 127.0.0.1, port %1."_s.arg(server.port()));
    tell(u"Press Connect in the dialog. The demo ends when you close Velmora's window."_s);
    loop.exec();
    if (interrupted != 0)
        return EXIT_FAILURE;
    return program.exitStatus() == QProcess::NormalExit ? program.exitCode() : EXIT_FAILURE;
}

int Demo::runUnattended(const QString &folder)
{
    Walk walk(folder);
    for (const auto step : {&Walk::connect, &Walk::watchConversation, &Walk::speak, &Walk::leave}) {
        const QString reason = (walk.*step)();
        if (reason.isEmpty())
            continue;
        tell(u"error: %1"_s.arg(interrupted != 0 ? u"interrupted"_s : reason));
        walk.keep(u"failure"_s);
        walk.tellAboutProgram();
        return EXIT_FAILURE;
    }
    tell(u"The conversation was seen on the wire and on the screen."_s);
    return EXIT_SUCCESS;
}
