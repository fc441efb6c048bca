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

constexpr int DemoTimeout = 4 * WaitTimeout; // In ms; on an idle machine it takes half a minute.
constexpr auto SignalCheck = 200ms;          // Interval of the checks for a signal.

// The colours of two nicks.
constexpr QRgb MaraColour = qRgb(0x2e, 0x7d, 0x32);
constexpr QRgb HugoColour = qRgb(0xad, 0x14, 0x57);
constexpr int ColourDistance = 24; // Anti-aliasing blends the edges of letters.
constexpr int NickPixels = 40;     // A nick has more pixels of its colour than this.

const auto Remark = u"I am, if I may. I'll bring the coffee."_s;

constexpr QRgb BlinkColour = qRgb(0xff, 0xb8, 0x00);
constexpr QRgb TextColour = qRgb(0x33, 0x33, 0x33);
constexpr int ListHeight = 150; // The list of the server's channels is higher than this.

constexpr QMargins Frame{1, 20, 1, 1}; // The window manager's frame.
constexpr QPoint OutsideWindows{1399, 899};

volatile std::sig_atomic_t interrupted = 0;

void print(const QString &text)
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

// The unattended demo. Each step returns the reason for a failure; empty if it succeeded.
class UnattendedDemo final
{
public:
    explicit UnattendedDemo(const QString &screenshots)
        : folder(screenshots)
    {
    }

    QString connect();
    QString watchConversation();
    QString speak();
    QString lookAround();
    QString leave();

    // Saves a screenshot of the whole screen.
    void saveScreen(const QString &name) const;
    // Prints the program's exit status and standard error.
    void printProgramState();

private:
    // Saves a screenshot of the active window.
    void saveWindow(const QString &name) const;
    void save(const QString &name, const QImage &image) const;
    bool waitFor(const std::function<bool()> &condition) const;
    bool shows(QRgb colour, int before) const;
    bool hasBlinkingTab() const;

    QDir folder;
    QDeadlineTimer deadline{DemoTimeout};
    VirtualScreen screen;
    DemoServer server;
    PreparedStore store;
    ProgramOnScreen program{screen, store};
    int maraBefore = 0;
    int hugoBefore = 0;
};

QString UnattendedDemo::connect()
{
    if (!screen.start())
        return screen.failure();
    if (server.port() == 0)
        return u"the server found no free port"_s;
    store.addServer(guest(server));
    // No widget may be painted as hovered.
    screen.moveMouse(OutsideWindows);
    if (!program.start())
        return u"the program does not open its connect dialog"_s;
    saveWindow(u"connect-dialog"_s);
    maraBefore = screen.countPixels(MaraColour, ColourDistance);
    hugoBefore = screen.countPixels(HugoColour, ColourDistance);
    print(u"Pressing Connect"_s);
    if (!program.pressConnect())
        return u"the connect dialog does not close"_s;
    if (!waitFor([this] { return server.hasReceived(u"JOIN #velmora"_s); }))
        return u"the program does not join #velmora"_s;
    return {};
}

QString UnattendedDemo::watchConversation()
{
    print(u"Watching the conversation"_s);
    if (!waitFor([this] { return server.isConversationOver(); }))
        return u"the conversation does not end"_s;
    if (!waitFor([this] { return shows(MaraColour, maraBefore) && shows(HugoColour, hugoBefore); }))
        return u"the screen does not show the conversation"_s;
    return {};
}

QString UnattendedDemo::speak()
{
    print(u"Sending a message"_s);
    const int before = screen.countPixels(MaraColour, ColourDistance);
    if (!program.typeLine(Remark)
        || !waitFor([this] { return server.hasReceived(u"PRIVMSG #velmora :"_s + Remark); }))
        return u"the server does not receive the message"_s;
    if (!waitFor([this] { return server.answerCount() > 0; }))
        return u"the server does not answer"_s;
    if (!waitFor([&] { return shows(MaraColour, before); }))
        return u"the screen does not show the answer"_s;
    if (!waitFor([this] { return !hasBlinkingTab(); })
        || !waitFor([this] { return hasBlinkingTab(); }))
        return u"no tab blinks for the private message"_s;
    saveWindow(u"main-window"_s);
    return {};
}

QString UnattendedDemo::lookAround()
{
    print(u"Opening the channel list and the preferences"_s);
    const auto showsList = [this] {
        return screen.findPixels(program.channelNames(), TextColour, ColourDistance).height()
               > ListHeight;
    };
    if (!program.typeLine(u"/list"_s) || !waitFor(showsList))
        return u"the screen does not show the channel list"_s;
    saveWindow(u"channel-list"_s);
    if (!program.openPreferences())
        return u"the preferences do not open"_s;
    saveWindow(u"preferences"_s);
    return program.closeDialog() ? QString() : u"the preferences do not close"_s;
}

QString UnattendedDemo::leave()
{
    print(u"Closing the window"_s);
    if (!program.close())
        return u"the program does not exit when its window is closed"_s;
    if (program.exitStatus() != 0)
        return u"the program exits with status %1"_s.arg(program.exitStatus());
    if (!waitFor([this] { return server.hasReceived(u"QUIT :Velmora leaving"_s); }))
        return u"the program does not send QUIT"_s;
    return {};
}

void UnattendedDemo::saveScreen(const QString &name) const
{
    save(name, screen.screenshot());
}

void UnattendedDemo::saveWindow(const QString &name) const
{
    const QRect window = screen.activeWindow();
    screen.moveMouse(OutsideWindows);
    save(name, screen.screenshot().copy(window.marginsAdded(Frame)));
}

void UnattendedDemo::save(const QString &name, const QImage &image) const
{
    const QString file = folder.absoluteFilePath(name + u".png");
    if (folder.mkpath(u"."_s) && image.save(file))
        print(u"Screenshot: %1"_s.arg(file));
}

void UnattendedDemo::printProgramState()
{
    if (!program.isRunning())
        print(u"The program is not running; its exit status was %1."_s.arg(program.exitStatus()));
    if (const QString errors = program.errorOutput(); !errors.isEmpty())
        print(u"The program wrote:\n%1"_s.arg(errors));
}

bool UnattendedDemo::waitFor(const std::function<bool()> &condition) const
{
    bool holds = false;
    const auto isOver = [&] {
        holds = condition();
        return holds || interrupted != 0 || deadline.hasExpired();
    };
    return screen.waitFor(isOver) && holds && interrupted == 0;
}

bool UnattendedDemo::shows(QRgb colour, int before) const
{
    return screen.countPixels(colour, ColourDistance) >= before + NickPixels;
}

bool UnattendedDemo::hasBlinkingTab() const
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
        print(u"error: the demo cannot start: %1"_s.arg(program.errorString()));
        return EXIT_FAILURE;
    }
    print(u"The server listens on 127.0.0.1, port %1."_s.arg(server.port()));
    print(u"Press Connect in the dialog. The demo ends when you close Velmora's window."_s);
    loop.exec();
    if (interrupted != 0)
        return EXIT_FAILURE;
    return program.exitStatus() == QProcess::NormalExit ? program.exitCode() : EXIT_FAILURE;
}

int Demo::runUnattended(const QString &folder)
{
    UnattendedDemo tour(folder);
    for (const auto step :
         {&UnattendedDemo::connect, &UnattendedDemo::watchConversation, &UnattendedDemo::speak,
          &UnattendedDemo::lookAround, &UnattendedDemo::leave}) {
        const QString reason = (tour.*step)();
        if (reason.isEmpty())
            continue;
        print(u"error: %1"_s.arg(interrupted != 0 ? u"interrupted"_s : reason));
        tour.saveScreen(u"failure"_s);
        tour.printProgramState();
        return EXIT_FAILURE;
    }
    print(u"The server and the screen show the whole conversation."_s);
    return EXIT_SUCCESS;
}
