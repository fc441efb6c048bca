#include "SessionLog.h"

#include "Waiting.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QString shown(const QString &text)
{
    return u'"' + text + u'"';
}

QString shown(int number)
{
    return QString::number(number);
}

QString shown(bool yes)
{
    return yes ? u"true"_s : u"false"_s;
}

QString shown(const QStringList &list)
{
    return u'[' + list.join(u' ') + u']';
}

} // namespace

template <typename... Arguments>
void SessionLog::watch(const IRCConnection &session, void (IRCConnection::*signal)(Arguments...),
                       const QString &name)
{
    connect(&session, signal, this, [this, name](Arguments... arguments) {
        const QStringList texts{shown(arguments)...};
        calls.append(name + u'(' + texts.join(u", "_s) + u')');
    });
}

SessionLog::SessionLog(const IRCConnection &session)
{
    connect(&session, &IRCConnection::rawMessageReceived, this,
            [this](const QString &line) { rawLines.append(line); });
    watch(session, &IRCConnection::connected, u"connected"_s);
    watch(session, &IRCConnection::registered, u"registered"_s);
    watch(session, &IRCConnection::disconnected, u"disconnected"_s);
    watch(session, &IRCConnection::errorOccurred, u"errorOccurred"_s);
    watch(session, &IRCConnection::rawMessageReceived, u"rawMessageReceived"_s);
    watch(session, &IRCConnection::serverMessage, u"serverMessage"_s);
    watch(session, &IRCConnection::privmsgReceived, u"privmsgReceived"_s);
    watch(session, &IRCConnection::joinReceived, u"joinReceived"_s);
    watch(session, &IRCConnection::partReceived, u"partReceived"_s);
    watch(session, &IRCConnection::nickChanged, u"nickChanged"_s);
    watch(session, &IRCConnection::namesList, u"namesList"_s);
    watch(session, &IRCConnection::namesListFinished, u"namesListFinished"_s);
    watch(session, &IRCConnection::topicReceived, u"topicReceived"_s);
    watch(session, &IRCConnection::quitReceived, u"quitReceived"_s);
    watch(session, &IRCConnection::kickReceived, u"kickReceived"_s);
    watch(session, &IRCConnection::listStartReceived, u"listStartReceived"_s);
    watch(session, &IRCConnection::listChannelReceived, u"listChannelReceived"_s);
    watch(session, &IRCConnection::listEndReceived, u"listEndReceived"_s);
    watch(session, &IRCConnection::listInfoReceived, u"listInfoReceived"_s);
    watch(session, &IRCConnection::whoisUserReceived, u"whoisUserReceived"_s);
    watch(session, &IRCConnection::whoisServerReceived, u"whoisServerReceived"_s);
    watch(session, &IRCConnection::whoisOperatorReceived, u"whoisOperatorReceived"_s);
    watch(session, &IRCConnection::whoisIdleReceived, u"whoisIdleReceived"_s);
    watch(session, &IRCConnection::whoisChannelsReceived, u"whoisChannelsReceived"_s);
    watch(session, &IRCConnection::whoisEndReceived, u"whoisEndReceived"_s);
    watch(session, &IRCConnection::whoisAwayReceived, u"whoisAwayReceived"_s);
    watch(session, &IRCConnection::watchStatus, u"watchStatus"_s);
    watch(session, &IRCConnection::ownNickChanged, u"ownNickChanged"_s);
}

const QStringList &SessionLog::entries() const
{
    return calls;
}

QStringList SessionLog::parsed() const
{
    QStringList others;
    for (const QString &call : calls) {
        if (!call.startsWith("rawMessageReceived("_L1))
            others.append(call);
    }
    return others;
}

QStringList SessionLog::raw() const
{
    return rawLines;
}

bool SessionLog::waitFor(const QString &entry, int times) const
{
    return QTest::qWaitFor([&] { return calls.count(entry) >= times; }, WaitTimeout);
}

void SessionLog::clear()
{
    calls.clear();
    rawLines.clear();
}
