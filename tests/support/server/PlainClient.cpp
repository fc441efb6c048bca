#include "PlainClient.h"

#include "Waiting.h"

#include <QHostAddress>
#include <QTest>

using namespace Qt::StringLiterals;

PlainClient::PlainClient()
{
    QObject::connect(&socket, &QTcpSocket::readyRead, &socket, [this] { read(); });
}

bool PlainClient::registerAt(quint16 port, const QString &nick)
{
    socket.connectToHost(QHostAddress::LocalHost, port);
    send(u"NICK %1"_s.arg(nick));
    send(u"USER %1 0 * :A plain client"_s.arg(nick));
    return waitFor(u" 001 "_s);
}

void PlainClient::send(const QString &line)
{
    socket.write(line.toUtf8() + "\r\n");
}

QStringList PlainClient::lines() const
{
    return received;
}

bool PlainClient::waitFor(const QString &text) const
{
    return QTest::qWaitFor([&] { return !received.filter(text).isEmpty(); }, WaitTimeout);
}

void PlainClient::read()
{
    while (socket.canReadLine()) {
        const QString line = QString::fromUtf8(socket.readLine()).chopped(2);
        received.append(line);
        if (line.startsWith("PING "_L1))
            send(u"PONG "_s + line.mid(5));
    }
}
