#include "LoggingProxy.h"

#include "Waiting.h"

#include <QHostAddress>
#include <QTcpSocket>
#include <QTest>

using namespace Qt::StringLiterals;

LoggingProxy::LoggingProxy(quint16 port, Joins treatment, QObject *parent)
    : QObject(parent)
    , serverPort(port)
    , joins(treatment)
{
    connect(&programSide, &ScriptedServer::clientArrived, this, &LoggingProxy::connectToServer);
    connect(&programSide, &ScriptedServer::lineReceived, this,
            [this](int client, const QString &line) {
                log.append(u">> "_s + line);
                if (QTcpSocket *socket = serverSockets.value(client))
                    socket->write(line.toUtf8() + "\r\n");
            });
    connect(&programSide, &ScriptedServer::clientLeft, this, [this](int client) {
        if (QTcpSocket *socket = serverSockets.value(client))
            socket->disconnectFromHost();
    });
}

quint16 LoggingProxy::port() const
{
    return programSide.port();
}

void LoggingProxy::redirectTo(quint16 port)
{
    serverPort = port;
}

QByteArray LoggingProxy::bytesFromProgram() const
{
    return programSide.received();
}

QStringList LoggingProxy::lines() const
{
    return log;
}

qsizetype LoggingProxy::countFromProgram(const QString &line) const
{
    return log.count(u">> "_s + line);
}

bool LoggingProxy::waitForProgram(const QString &line, int times) const
{
    return QTest::qWaitFor([&] { return countFromProgram(line) >= times; }, WaitTimeout);
}

bool LoggingProxy::waitForServer(const QString &text) const
{
    return QTest::qWaitFor(
            [&] {
                for (const QString &line : log) {
                    if (line.startsWith("<< "_L1) && line.contains(text))
                        return true;
                }
                return false;
            },
            WaitTimeout);
}

bool LoggingProxy::waitForEnd(int connections) const
{
    return programSide.waitForClient(connections) && programSide.waitForEnd();
}

void LoggingProxy::connectToServer(int client)
{
    auto *socket = new QTcpSocket(this);
    serverSockets.insert(client, socket);
    connect(socket, &QTcpSocket::readyRead, this, [this, client, socket] {
        while (socket->canReadLine())
            forwardToProgram(client, socket->readLine());
    });
    connect(socket, &QTcpSocket::disconnected, this, [this, client] { programSide.close(client); });
    connect(socket, &QTcpSocket::errorOccurred, this,
            [this, client] { programSide.close(client); });
    socket->connectToHost(QHostAddress::LocalHost, serverPort);
}

void LoggingProxy::forwardToProgram(int client, QByteArray line)
{
    if (joins == Joins::Rewritten && line.contains('!'))
        line.replace(" JOIN :#", " JOIN #");
    log.append(u"<< "_s + QString::fromUtf8(line).chopped(2));
    programSide.sendBytes(line, client);
}
