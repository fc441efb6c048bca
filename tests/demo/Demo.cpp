#include "Demo.h"

#include "Child.h"
#include "DemoServer.h"
#include "PreparedStore.h"
#include "ProgramOnScreen.h"
#include "VirtualScreen.h"
#include "Waiting.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QEventLoop>
#include <QMargins>
#include <QTextStream>
#include <QTimer>

#include <chrono>
#include <csignal>
#include <functional>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int TimeForAll =
        4 * WaitTimeout;            // In ms; it takes half a minute where nothing else runs.
constexpr auto SignalCheck = 200ms; // How soon a signal is noticed.

// The colours in which the program writes two of the nicks.
constexpr QRgb MaraColour = qRgb(0x2e, 0x7d, 0x32);
constexpr QRgb HugoColour = qRgb(0xad, 0x14, 0x57);
constexpr int ColourDistance = 24; // The edges of letters are mixed with the background.
constexpr int NickPoints = 40;     // A written nick has more points of its colour than this.

const auto Remark = u"I am, if I may. I'll bring the coffee."_s;

constexpr QRgb BlinkColour = qRgb(0xff, 0xb8, 0x00);
constexpr QRgb TextColour = qRgb(0x33, 0x33, 0x33);
constexpr int ListHeight = 150; // The server's channels take more than this.

constexpr QMargins Frame{1, 20, 1, 1}; // What the window manager draws around a window.
constexpr QPoint OutOfTheWay{1399, 899};

volatile std::sig_atomic_t interrupted = 0;

void tell(const QString &text)
{
    QTextStream(stdout) << text << Qt::endl;
}

PreparedStore::Server guest(const DemoServer &server)
{
    return {.host = u"127.0.0.1"_s,
            .port = server.port(),
            .nickname = u"ida"_s,
            .realName = u"Ida"_s,
            .channels = {u"#velmora"_s}};
}

/// The unattended demo. Each step gives back nothing when it worked, else the reason.
class Tour final
{
public:
    explicit Tour(const QString &pictures)
        : folder(pictures)
    {
    }

    QString connect();
    QString watchConversation();
    QString speak();
    QString lookAround();
    QString leave();

    /// Keeps a picture of the whole screen and names the file.
    void keepScreen(const QString &name) const;
    /// Says how the program is and what it has written to its error output.
    void tellAboutProgram();

private:
    /// Keeps a picture of the window that has the keyboard.
    void keepWindow(const QString &name) const;
    void keep(const QString &name, const QImage &picture) const;
    bool waitFor(const std::function<bool()> &condition) const;
    bool shows(QRgb colour, int before) const;
    bool seesBlink() const;

    QDir folder;
    QDeadlineTimer deadline{TimeForAll};
    VirtualScreen screen;
    DemoServer server;
    PreparedStore store;
    ProgramOnScreen program{screen, store};
    int maraBefore = 0;
    int hugoBefore = 0;
};

QString Tour::connect()
{
    if (!screen.start())
        return screen.failure();
    if (server.port() == 0)
        return u"the server found no free port"_s;
    store.addServer(guest(server));
    // Nothing is to look as if the mouse was on it.
    screen.moveMouse(OutOfTheWay);
    if (!program.start())
        return u"the program doesn't open its connect dialog"_s;
    keepWindow(u"connect-dialog"_s);
    maraBefore = screen.countPixels(MaraColour, ColourDistance);
    hugoBefore = screen.countPixels(HugoColour, ColourDistance);
    tell(u"Pressing Connect"_s);
    if (!program.pressConnect())
        return u"the connect dialog doesn't close"_s;
    if (!waitFor([this] { return server.hasHeard(u"JOIN #velmora"_s); }))
        return u"the program doesn't join #velmora"_s;
    return {};
}

QString Tour::watchConversation()
{
    tell(u"Watching the conversation"_s);
    if (!waitFor([this] { return server.conversationIsOver(); }))
        return u"the conversation doesn't come to its end"_s;
    if (!waitFor([this] { return shows(MaraColour, maraBefore) && shows(HugoColour, hugoBefore); }))
        return u"the conversation isn't seen on the screen"_s;
    return {};
}

QString Tour::speak()
{
    tell(u"Saying something"_s);
    const int before = screen.countPixels(MaraColour, ColourDistance);
    if (!program.typeLine(Remark)
        || !waitFor([this] { return server.hasHeard(u"PRIVMSG #velmora :"_s + Remark); }))
        return u"what is typed doesn't reach the server"_s;
    if (!waitFor([this] { return server.answerCount() > 0; }))
        return u"nobody answers"_s;
    if (!waitFor([&] { return shows(MaraColour, before); }))
        return u"the answer isn't seen on the screen"_s;
    if (!waitFor([this] { return !seesBlink(); }) || !waitFor([this] { return seesBlink(); }))
        return u"nothing blinks for what is said in private"_s;
    keepWindow(u"main-window"_s);
    return {};
}

QString Tour::lookAround()
{
    tell(u"Looking at the channel list and the preferences"_s);
    const auto showsList = [this] {
        return screen.findPixels(program.channelNames(), TextColour, ColourDistance).height()
               > ListHeight;
    };
    if (!program.typeLine(u"/list"_s) || !waitFor(showsList))
        return u"the channel list isn't seen on the screen"_s;
    keepWindow(u"channel-list"_s);
    if (!program.openPreferences())
        return u"the preferences don't open"_s;
    keepWindow(u"preferences"_s);
    return program.closeDialog() ? QString() : u"the preferences don't close"_s;
}

QString Tour::leave()
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

void Tour::keepScreen(const QString &name) const
{
    keep(name, screen.screenshot());
}

void Tour::keepWindow(const QString &name) const
{
    const QRect window = screen.activeWindow();
    screen.moveMouse(OutOfTheWay);
    keep(name, screen.screenshot().copy(window.marginsAdded(Frame)));
}

void Tour::keep(const QString &name, const QImage &picture) const
{
    const QString file = folder.absoluteFilePath(name + u".png");
    if (folder.mkpath(u"."_s) && picture.save(file))
        tell(u"Screenshot: %1"_s.arg(file));
}

void Tour::tellAboutProgram()
{
    if (!program.isRunning())
        tell(u"The program isn't running; its exit status was %1."_s.arg(program.exitStatus()));
    if (const QString errors = program.errorOutput(); !errors.isEmpty())
        tell(u"The program wrote:\n%1"_s.arg(errors));
}

bool Tour::waitFor(const std::function<bool()> &condition) const
{
    bool holds = false;
    const auto isOver = [&] {
        holds = condition();
        return holds || interrupted != 0 || deadline.hasExpired();
    };
    return screen.waitFor(isOver) && holds && interrupted == 0;
}

bool Tour::shows(QRgb colour, int before) const
{
    return screen.countPixels(colour, ColourDistance) >= before + NickPoints;
}

bool Tour::seesBlink() const
{
    return !screen.findPixels(program.tabBar(), BlinkColour, ColourDistance).isEmpty();
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
    store.addServer(guest(server));

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
    Tour tour(folder);
    for (const auto step : {&Tour::connect, &Tour::watchConversation, &Tour::speak,
                            &Tour::lookAround, &Tour::leave}) {
        const QString reason = (tour.*step)();
        if (reason.isEmpty())
            continue;
        tell(u"error: %1"_s.arg(interrupted != 0 ? u"interrupted"_s : reason));
        tour.keepScreen(u"failure"_s);
        tour.tellAboutProgram();
        return EXIT_FAILURE;
    }
    tell(u"The conversation was seen on the wire and on the screen."_s);
    return EXIT_SUCCESS;
}
