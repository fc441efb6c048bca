#include "SessionLog.h"

#include "Waiting.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QString toText(const QString &text)
{
    return u'"' + text + u'"';
}

QString toText(int number)
{
    return QString::number(number);
}

QString toText(bool yes)
{
    return yes ? u"true"_s : u"false"_s;
}

QString toText(const QStringList &list)
{
    return u'[' + list.join(u' ') + u']';
}

} // namespace

template <typename... Arguments>
void SessionLog::record(const IRCConnection &session, void (IRCConnection::*signal)(Arguments...),
                        const QString &name)
{
    connect(&session, signal, this, [this, name](Arguments... arguments) {
        const QStringList texts{toText(arguments)...};
        calls.append(name + u'(' + texts.join(u", "_s) + u')');
    });
}

SessionLog::SessionLog(const IRCConnection &session)
{
    connect(&session, &IRCConnection::rawMessageReceived, this,
            [this](const QString &line) { rawLines.append(line); });
    record(session, &IRCConnection::connected, u"connected"_s);
    record(session, &IRCConnection::registered, u"registered"_s);
    record(session, &IRCConnection::disconnected, u"disconnected"_s);
    record(session, &IRCConnection::errorOccurred, u"errorOccurred"_s);
    record(session, &IRCConnection::rawMessageReceived, u"rawMessageReceived"_s);
    record(session, &IRCConnection::serverMessage, u"serverMessage"_s);
    record(session, &IRCConnection::privmsgReceived, u"privmsgReceived"_s);
    record(session, &IRCConnection::joinReceived, u"joinReceived"_s);
    record(session, &IRCConnection::partReceived, u"partReceived"_s);
    record(session, &IRCConnection::nickChanged, u"nickChanged"_s);
    record(session, &IRCConnection::namesList, u"namesList"_s);
    record(session, &IRCConnection::namesListFinished, u"namesListFinished"_s);
    record(session, &IRCConnection::topicReceived, u"topicReceived"_s);
    record(session, &IRCConnection::quitReceived, u"quitReceived"_s);
    record(session, &IRCConnection::kickReceived, u"kickReceived"_s);
    record(session, &IRCConnection::listStartReceived, u"listStartReceived"_s);
    record(session, &IRCConnection::listChannelReceived, u"listChannelReceived"_s);
    record(session, &IRCConnection::listEndReceived, u"listEndReceived"_s);
    record(session, &IRCConnection::listInfoReceived, u"listInfoReceived"_s);
    record(session, &IRCConnection::whoisUserReceived, u"whoisUserReceived"_s);
    record(session, &IRCConnection::whoisServerReceived, u"whoisServerReceived"_s);
    record(session, &IRCConnection::whoisOperatorReceived, u"whoisOperatorReceived"_s);
    record(session, &IRCConnection::whoisIdleReceived, u"whoisIdleReceived"_s);
    record(session, &IRCConnection::whoisChannelsReceived, u"whoisChannelsReceived"_s);
    record(session, &IRCConnection::whoisEndReceived, u"whoisEndReceived"_s);
    record(session, &IRCConnection::whoisAwayReceived, u"whoisAwayReceived"_s);
    record(session, &IRCConnection::watchStatus, u"watchStatus"_s);
    record(session, &IRCConnection::ownNickChanged, u"ownNickChanged"_s);
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
