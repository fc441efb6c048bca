// What the window does with lines that the user types, between lines that the server sends: tabs,
// user list and all that the window remembers are what the rules make of the lines.
//
// The input is the lines, each ended by LF. One that starts with ":" comes from the server, one
// that is a single digit shows that tab, and any other is typed.

#include "Commands.h"
#include "Fuzzing.h"
#include "IRCConnection.h"
#include "IRCParser.h"
#include "MainWindowProbe.h"
#include "MyTabWidget.h"
#include "SessionInvariants.h"
#include "SessionModel.h"

#include <QCoreApplication>
#include <QLineEdit>
#include <QTcpServer>
#include <QTcpSocket>

using namespace Qt::StringLiterals;

namespace {

void checkCommand(const QString &line)
{
    const Commands::Command command = Commands::parse(line);
    Fuzzing::demand(command.line == line && command.section(0) == line, "the line stays as it is");
    for (const QString &word : command.words)
        Fuzzing::demand(!word.isEmpty() && !word.contains(u' '), "words hold no blanks");
    Fuzzing::demand(command.name.isEmpty() == command.words.isEmpty(), "a command has a name");
}

/// A window whose session is up, with a channel and a private conversation.
class Session final
{
public:
    Session();

    void take(const QString &line);
    void check() const;

private:
    void say(const QString &line);

    QTcpServer server;
    MainWindow window;
    MainWindowProbe probe{window};
    SessionModel model{probe.connection()};
};

Session::Session()
{
    IRCConnection &connection = probe.connection();
    server.listen(QHostAddress::LocalHost);
    connection.connectToServer(u"127.0.0.1"_s, server.serverPort(), u"me"_s, u"Me"_s, false);
    Fuzzing::demand(connection.findChild<QTcpSocket *>()->waitForConnected(), "a link comes up");
    probe.currentServerId() = u"127.0.0.1_6667"_s;
    say(u":irc.test 001 me :Welcome"_s);
    say(u":me!me@host JOIN #one"_s);
    say(u":irc.test 353 me = #one :me @ann +bob"_s);
    say(u":irc.test 366 me #one :End of NAMES list"_s);
    say(u":ann!ann@host PRIVMSG me :hello"_s);
}

void Session::say(const QString &line)
{
    emit probe.connection().rawMessageReceived(line);
    IRCParser::parseLine(line, &probe.connection());
}

void Session::take(const QString &line)
{
    if (line.startsWith(u':')) {
        say(line);
    } else if (line.size() == 1 && line.at(0).isDigit()) {
        const int index = line.at(0).digitValue();
        probe.tabWidget().setCurrentIndex(index);
        if (index < probe.tabWidget().count())
            model.showTab(index);
    } else {
        probe.inputLine().setText(line);
        const QString typed = probe.inputLine().text();
        emit probe.inputLine().returnPressed();
        model.typeLine(typed);
    }
}

void Session::check() const
{
    const QString difference = SessionInvariants::findDifference(probe, model);
    Fuzzing::demand(difference.isEmpty(), qPrintable(difference));
    const QString broken = SessionInvariants::findViolation(probe);
    Fuzzing::demand(broken.isEmpty(), qPrintable(broken));
}

} // namespace

int LLVMFuzzerInitialize(int * /*argc*/, char *** /*argv*/)
{
    Fuzzing::start();
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString input = QString::fromUtf8(Fuzzing::bytesOf(data, size));
    Session session;
    for (const QString &line : input.split(u'\n')) {
        checkCommand(line);
        session.take(line);
    }
    QCoreApplication::processEvents();
    session.check();
    return 0;
}
