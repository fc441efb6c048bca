#include "Interruptions.h"

#include "IRCConnection.h"
#include "MyTabWidget.h"
#include "Waiting.h"
#include "WindowSession.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace Interruptions {

bool dropLink(WindowSession &session)
{
    session.server.close();
    return QTest::qWaitFor([&] { return !session.probe.connection().isConnected(); }, WaitTimeout);
}

bool flood(WindowSession &session)
{
    QStringList lines;
    for (int number = 0; number < 300; ++number) {
        const QString nick = u"n%1"_s.arg(number);
        lines << u":%1!u@h JOIN #a"_s.arg(nick) << u":%1!u@h PRIVMSG #a :hello me"_s.arg(nick)
              << u":%1!u@h PRIVMSG me :hello"_s.arg(u"p%1"_s.arg(number % 5));
    }
    return session.receiveAll(lines);
}

bool closeTabs(WindowSession &session)
{
    while (session.probe.tabWidget().count() > 1)
        session.probe.closeTab(1);
    return true;
}

bool loseChannel(WindowSession &session)
{
    return session.receive(u":op!u@h KICK #a me :out"_s) && closeTabs(session);
}

} // namespace Interruptions
