#include "ScriptedServer.h"

#include "Waiting.h"

#include <QSslServer>
#include <QTcpServer>
#include <QTcpSocket>

using namespace Qt::StringLiterals;

ScriptedServer::ScriptedServer(QObject *parent)
    : QObject(parent)
    , server(std::make_unique<QTcpServer>())
{
    listen();
}

ScriptedServer::ScriptedServer(const QSslConfiguration &tls, QObject *parent)
    : QObject(parent)
{
    auto secure = std::make_unique<QSslServer>();
    secure->setSslConfiguration(tls);
    server = std::move(secure);
    listen();
}

ScriptedServer::ScriptedServer(const QHostAddress &address, quint16 port, QObject *parent)
    : QObject(parent)
    , server(std::make_unique<QTcpServer>())
{
    listen(address, port);
}

ScriptedServer::~ScriptedServer()
{
    for (Client &client : clients) {
        if (client.socket != nullptr)
            client.socket->disconnect(this);
    }
}

void ScriptedServer::listen(const QHostAddress &address, quint16 port)
{
    // QSslServer emits only this signal, when the handshake is finished.
    connect(server.get(), &QTcpServer::pendingConnectionAvailable, this, [this] {
        while (QTcpSocket *socket = server->nextPendingConnection())
            addClient(socket);
    });
    if (server->listen(address, port))
        usedPort = server->serverPort();
    usedAddress = address;
}

quint16 ScriptedServer::port() const
{
    return usedPort;
}

void ScriptedServer::stopListening()
{
    server->close();
}

bool ScriptedServer::listenAgain()
{
    return server->listen(usedAddress, usedPort);
}

int ScriptedServer::clientCount() const
{
    return static_cast<int>(clients.size());
}

bool ScriptedServer::isConnected(int client) const
{
    return socketOf(client) != nullptr;
}

QByteArray ScriptedServer::received(int client) const
{
    const Client *found = find(client);
    return found != nullptr ? found->received : QByteArray();
}

QStringList ScriptedServer::lines(int client) const
{
    const Client *found = find(client);
    return found != nullptr ? found->lines : QStringList();
}

void ScriptedServer::send(const QString &line, int client)
{
    sendBytes(line.toUtf8() + "\r\n"_ba, client);
}

void ScriptedServer::sendBytes(const QByteArray &bytes, int client)
{
    if (QTcpSocket *socket = socketOf(client)) {
        socket->write(bytes);
        socket->flush();
    }
}

void ScriptedServer::close(int client)
{
    if (QTcpSocket *socket = socketOf(client))
        socket->disconnectFromHost();
}

void ScriptedServer::abort(int client)
{
    if (QTcpSocket *socket = socketOf(client))
        socket->abort();
}

bool ScriptedServer::waitForClient(int count) const
{
    return waitUntil([this, count] { return clientCount() >= count; });
}

bool ScriptedServer::waitForLine(const QString &line, int client, int times) const
{
    return waitUntil([&] { return lines(client).count(line) >= times; });
}

bool ScriptedServer::waitForEnd(int client) const
{
    return waitUntil([this, client] { return !isConnected(client); });
}

void ScriptedServer::addClient(QTcpSocket *socket)
{
    const int number = clientCount();
    clients.emplace_back().socket = socket;
    connect(socket, &QTcpSocket::readyRead, this, [this, number] { read(number); });
    connect(socket, &QTcpSocket::disconnected, this, [this, number] {
        if (QTcpSocket *gone =
                    std::exchange(clients.at(static_cast<size_t>(number)).socket, nullptr))
            gone->deleteLater();
        emit clientLeft(number);
    });
    emit clientArrived(number);
    // Data may have arrived before readyRead() was connected.
    if (socket->bytesAvailable() > 0)
        read(number);
}

void ScriptedServer::read(int number)
{
    const auto index = static_cast<size_t>(number);
    clients.at(index).received += clients.at(index).socket->readAll();
    // A slot connected to the signal may add a client, which moves the records.
    for (;;) {
        Client &client = clients.at(index);
        const qsizetype end = client.received.indexOf("\r\n", client.lineStart);
        if (end < 0)
            return;
        const QString line =
                QString::fromUtf8(client.received.mid(client.lineStart, end - client.lineStart));
        client.lineStart = end + 2;
        client.lines.append(line);
        emit lineReceived(number, line);
    }
}

const ScriptedServer::Client *ScriptedServer::find(int number) const
{
    if (clients.empty())
        return nullptr;
    return number == Latest ? &clients.back() : &clients.at(static_cast<size_t>(number));
}

QTcpSocket *ScriptedServer::socketOf(int number) const
{
    const Client *client = find(number);
    return client != nullptr ? client->socket : nullptr;
}
