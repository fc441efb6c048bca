#include "TestSession.h"

#include "Waiting.h"

#include <QCoreApplication>
#include <QTest>

using namespace Qt::StringLiterals;

void TestSession::startConnecting(const QString &nick)
{
    connection.connectToServer(u"localhost"_s, server.port(), nick, u"Real Name"_s, isSecure);
}

bool TestSession::open(const QString &nick)
{
    const int clients = server.clientCount();
    startConnecting(nick);
    // Deletes the previous socket before the new one connects, as the program's event loop does;
    // qWaitFor() may do it later.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    const bool isUp = server.waitForClient(clients + 1)
                      && server.waitForLine(u"USER "_s + nick + u" 0 * :Real Name"_s)
                      && log.waitFor(u"connected()"_s);
    log.clear();
    return isUp;
}

QStringList TestSession::sent()
{
    const QString mark = u"MARK %1"_s.arg(++marks);
    connection.sendRaw(mark);
    if (!server.waitForLine(mark))
        return {u"<lost>"_s};
    return server.lines().mid(2).filter(QRegularExpression(u"^(?!MARK )"_s));
}

bool TestSession::settle()
{
    const QString mark = u"MARK %1"_s.arg(++marks);
    server.send(mark);
    return QTest::qWaitFor([&] { return log.raw().contains(mark); }, WaitTimeout);
}
