// Checks lines that the user types between lines of the server: the tabs, the user list and the
// window's state must equal those of a model.
//
// The input is lines that end with LF. A line that starts with ":" comes from the server, a single
// digit selects that tab, and any other line is typed.

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
    Fuzzing::require(command.line == line && command.section(0) == line, "the line is unchanged");
    for (const QString &word : command.words)
        Fuzzing::require(!word.isEmpty() && !word.contains(u' '), "words contain no spaces");
    Fuzzing::require(command.name.isEmpty() == command.words.isEmpty(), "a command has a name");
}

/// A window with a registered session, a channel and a private conversation.
class Session final
{
public:
    Session();

    void process(const QString &line);
    void check() const;

private:
    void receive(const QString &line);

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
    Fuzzing::require(connection.findChild<QTcpSocket *>()->waitForConnected(),
                     "the session connects");
    probe.currentServerId() = u"127.0.0.1_6667"_s;
    receive(u":irc.test 001 me :Welcome"_s);
    receive(u":me!me@host JOIN #one"_s);
    receive(u":irc.test 353 me = #one :me @ann +bob"_s);
    receive(u":irc.test 366 me #one :End of NAMES list"_s);
    receive(u":ann!ann@host PRIVMSG me :hello"_s);
}

void Session::receive(const QString &line)
{
    emit probe.connection().rawMessageReceived(line);
    IRCParser::parseLine(line, &probe.connection());
}

void Session::process(const QString &line)
{
    if (line.startsWith(u':')) {
        receive(line);
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
    Fuzzing::require(difference.isEmpty(), qPrintable(difference));
    const QString violation = SessionInvariants::findViolation(probe);
    Fuzzing::require(violation.isEmpty(), qPrintable(violation));
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
        session.process(line);
    }
    QCoreApplication::processEvents();
    session.check();
    return 0;
}
