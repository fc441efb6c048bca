#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QObject>
#include <QSslConfiguration>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class QTcpServer;
class QTcpSocket;

/// A server on the loopback, by default on a free port, that sends only what the test sends and
/// records what its clients send.
///
/// Clients are numbered from 0 in the order of arrival, and keep their number after they have
/// disconnected. `Latest` is the last client that has connected. Sending to a disconnected client
/// does nothing.
///
/// Tests wait with `waitForClient`, `waitForLine` and `waitForEnd`. Servers with behaviour of their
/// own use the signals.
class ScriptedServer : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ScriptedServer)

public:
    static constexpr int Latest = -1;

    // The constructors start to listen.
    explicit ScriptedServer(QObject *parent = nullptr);

    /// Uses TLS with the certificate and the key of `tls`.
    explicit ScriptedServer(const QSslConfiguration &tls, QObject *parent = nullptr);

    ScriptedServer(const QHostAddress &address, quint16 port, QObject *parent = nullptr);

    ~ScriptedServer() override;

    /// Returns the port; 0 if the server could not listen.
    [[nodiscard]] quint16 port() const;

    /// Stops listening; clients stay connected. `listenAgain` uses the same port.
    void stopListening();
    [[nodiscard]] bool listenAgain();

    /// Returns how many clients have connected, including those that are disconnected.
    [[nodiscard]] int clientCount() const;
    [[nodiscard]] bool isConnected(int client = Latest) const;

    /// Returns all bytes that the client has sent.
    [[nodiscard]] QByteArray received(int client = Latest) const;
    /// Returns the complete lines that the client has sent, without CR LF.
    [[nodiscard]] QStringList lines(int client = Latest) const;

    /// Sends `line` followed by CR LF.
    void send(const QString &line, int client = Latest);
    /// Sends `bytes` unchanged, without waiting for the event loop.
    void sendBytes(const QByteArray &bytes, int client = Latest);
    /// Closes the connection when all data has been sent.
    void close(int client = Latest);
    /// Aborts the connection, so that the client receives a reset.
    void abort(int client = Latest);

    /// Waits until `count` clients have connected in all.
    [[nodiscard]] bool waitForClient(int count = 1) const;
    /// Waits until the client has sent exactly this line at least `times` times.
    [[nodiscard]] bool waitForLine(const QString &line, int client = Latest, int times = 1) const;
    /// Waits until the client is disconnected.
    [[nodiscard]] bool waitForEnd(int client = Latest) const;

signals:
    void clientArrived(int client);
    void lineReceived(int client, const QString &line);
    void clientLeft(int client);

private:
    struct Client
    {
        QTcpSocket *socket = nullptr; // Null after the disconnect; owned by the server.
        QByteArray received;
        qsizetype lineStart = 0; // Of the incomplete line.
        QStringList lines;
    };

    void listen(const QHostAddress &address = QHostAddress::LocalHost, quint16 port = 0);
    void addClient(QTcpSocket *socket);
    void read(int number);
    [[nodiscard]] const Client *find(int number) const;
    [[nodiscard]] QTcpSocket *socketOf(int number) const;

    std::unique_ptr<QTcpServer> server;
    std::vector<Client> clients;
    QHostAddress usedAddress;
    quint16 usedPort = 0;
};
